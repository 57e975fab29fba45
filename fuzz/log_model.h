#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <map>
#include <string>
#include <vector>

/// A second reader of logs, which follows the rules word by word and heeds no cost. It first lists
/// what libxml2 reports of a text, and then goes through the list.
class log_model_t
{
public:
    struct reading_t
    {
        bool is_read = false; ///< what a replay answers
        std::vector<velmoext_1_4_8::message_t> messages;
    };

    /// What a replay makes of the bytes that are new in the file.
    reading_t read(const std::string& new_bytes);

private:
    struct event_t
    {
        enum kind_t
        {
            start,
            end,
            characters
        };

        kind_t kind;
        std::string text; ///< the element's name, or what stands at the place of the characters
        std::map<std::string, std::string> attributes;
    };

    typedef std::vector<event_t> events_t;
    typedef std::map<std::wstring, std::wstring> texts_t;

    struct collector_t;

    static bool collect(const std::string& document, events_t& events);

    void on_start(const event_t& event);
    void on_arg(const event_t& event);
    void on_characters(const event_t& event);
    void on_end(const event_t& event, std::vector<velmoext_1_4_8::message_t>& messages);

    boost::shared_ptr<velmoext_1_4_8::message_t> m_message;
    int m_state = 0;
    std::string m_element;
    std::wstring m_arg_name;
};
