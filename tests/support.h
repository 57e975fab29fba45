#pragma once

#include <velmoext1/velmoext1.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace velmoext_1_4_8
{

typedef std::map<std::wstring, std::wstring> string_map_t;
typedef boost::shared_ptr<message_t> message_ptr_t;

inline message_ptr_t make_message(const std::wstring& type,
                                  message_t::severity_t severity = message_t::none)
{
    auto message = boost::make_shared<message_t>();
    message->set_type(type);
    message->set_severity(severity);
    return message;
}

inline message_ptr_t make_message(const message_t::message_content_t& content)
{
    auto message = boost::make_shared<message_t>();
    message->set_content(content);
    return message;
}

inline message_t::message_content_t make_content(string_map_t attributes, string_map_t args = {},
                                                 string_map_t elements = {})
{
    message_t::message_content_t content;
    content.attributes = std::move(attributes);
    content.args = std::move(args);
    content.elements = std::move(elements);
    return content;
}

/// Returns a string of these elements, for example a surrogate pair or a part of it.
inline std::wstring units(std::initializer_list<unsigned> values)
{
    std::wstring text;
    for (const unsigned value : values)
        text.push_back(static_cast<wchar_t>(value));
    return text;
}

/// Records the messages, and consumes them if requested.
class recording_handler_t : public base_handler_t
{
public:
    explicit recording_handler_t(bool consumes = false) : m_consumes(consumes) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> ex, message_ptr_t msg) override
    {
        m_exs.push_back(ex.get());
        m_messages.push_back(std::move(msg));
        return m_consumes;
    }

    const std::vector<message_ptr_t>& messages() const { return m_messages; }
    /// The extension objects that delivered. Not owned.
    const std::vector<velmo_ex_t*>& exs() const { return m_exs; }

private:
    bool m_consumes;
    std::vector<message_ptr_t> m_messages;
    std::vector<velmo_ex_t*> m_exs;
};

/// Compares the owner of each pointer that it is called with to that of the extension object.
class owner_handler_t : public base_handler_t
{
public:
    explicit owner_handler_t(const boost::weak_ptr<velmo_ex_t>& owned) : m_owned(owned) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> ex, message_ptr_t /*msg*/) override
    {
        m_results.push_back(ex && !ex.owner_before(m_owned) && !m_owned.owner_before(ex));
        return true;
    }

    /// True for each call with a pointer that shares ownership of the object.
    const std::vector<bool>& results() const { return m_results; }

private:
    boost::weak_ptr<velmo_ex_t> m_owned;
    std::vector<bool> m_results;
};

/// Sends any text to an extension object through an adapter, as a host does.
inline void say_to(const boost::shared_ptr<velmo_ex_t>& ex, const std::wstring& text)
{
    velmo_adapter_t adapter;
    adapter.set_output_velmoext(ex);
    static_cast<velmo2::IMessenger&>(adapter).say(velmo2::info, text.c_str());
}

inline void deliver(const boost::shared_ptr<velmo_ex_t>& ex, const message_ptr_t& message)
{
    say_to(ex, string_message_serializer_t::message_to_xml_string(message));
}

} // namespace velmoext_1_4_8
