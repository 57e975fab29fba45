#include "carried_form.h"

#include <velmoext1/log_reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::log_reader_t;
using velmoext_1_4_8::message_t;

typedef std::map<std::wstring, std::wstring> string_map_t;

bool is_plain(const std::wstring& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](wchar_t character) {
        return character >= L' ' && character <= L'~' &&
               std::wstring(L"&<>\"").find(character) == std::wstring::npos;
    });
}

bool has_plain_texts_of(const string_map_t& texts, const string_map_t& rewritten)
{
    return std::all_of(texts.begin(), texts.end(), [&](const auto& text) {
        const auto found = rewritten.find(text.first);
        return !is_plain(text.first) || !is_plain(text.second) || text.first == L"arg1" ||
               (found != rewritten.end() && found->second == text.second);
    });
}

} // namespace

boost::shared_ptr<message_t> first_message(const descriptor_t& file)
{
    std::int64_t offset = 0;
    log_reader_t reader([&](char* bytes, std::size_t size) {
        const std::size_t count = read_at(file.get(), offset, bytes, size);
        offset += static_cast<std::int64_t>(count);
        return count;
    });
    while (reader.next() == log_reader_t::result_t::damage) {
    }
    return reader.get_message();
}

bool is_carried_form(const message_t& message, const message_t& rewritten)
{
    const auto content = message.get_content();
    const auto now = rewritten.get_content();
    return message.get_severity() == rewritten.get_severity() &&
           (!is_plain(message.get_type()) || message.get_type() == rewritten.get_type()) &&
           has_plain_texts_of(content.attributes, now.attributes) &&
           has_plain_texts_of(content.args, now.args) &&
           has_plain_texts_of(content.elements, now.elements);
}

} // namespace velmolog
