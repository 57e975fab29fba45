#pragma once

#include "support.h"

#include <velmoext1/config_reader.h>

#include <string>

namespace velmoext_1_4_8
{

/// The input of one lookup. The defaults are those of most cases.
struct lookup_t
{
    std::wstring type = L"t";
    std::wstring prefix;
    std::wstring name = L"p";
    std::wstring source = L"src";
};

inline lookup_t of_prefix(const std::wstring& prefix)
{
    lookup_t lookup;
    lookup.prefix = prefix;
    return lookup;
}

inline lookup_t of_type(const std::wstring& type, const std::wstring& prefix = std::wstring())
{
    lookup_t lookup;
    lookup.type = type;
    lookup.prefix = prefix;
    return lookup;
}

inline lookup_t of_name(const std::wstring& name)
{
    lookup_t lookup;
    lookup.name = name;
    return lookup;
}

inline lookup_t of_source(const std::wstring& source)
{
    lookup_t lookup;
    lookup.source = source;
    return lookup;
}

inline std::wstring read_from(config_reader_t& reader, const lookup_t& lookup = lookup_t())
{
    const message_ptr_t message = make_message(lookup.type);
    message->set_source(lookup.source);
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"config_lookup."), lookup.prefix);
    return reader.read_property(ex, message, lookup.name);
}

} // namespace velmoext_1_4_8
