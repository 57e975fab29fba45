#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// Reads a log with one libxml2 parse of the whole text and the rules for its callbacks. One object
/// reads the input of one storage. The text of each replay is a document of its own. Nevertheless
/// an element of a later one can change the last message of an earlier one.
class log_oracle_t
{
public:
    /// The result of a start on the log.
    enum class start_t
    {
        succeeds,
        fails, ///< The system has no converter for the declared encoding; the log stays as it is.
        either ///< The text may declare an encoding, but not in the way that it is written in.
    };

    struct reading_t
    {
        bool is_read = false; ///< The result of the replay.
        start_t start = start_t::succeeds;
        std::vector<velmoext_1_4_8::message_t> delivered; ///< As they were at delivery.
        std::vector<boost::shared_ptr<velmoext_1_4_8::message_t>> messages; ///< After the parse.
    };

    /// Reads the bytes that are new in the file.
    reading_t read(const std::string& new_bytes);

private:
    friend struct log_callbacks_t;

    enum state_t
    {
        outside,
        in_log,
        in_message,
        in_child
    };

    int parse(const std::string& text);
    void start_element(const std::string& name, const unsigned char** attributes);
    void start_message(const unsigned char** attributes);
    void start_arg(const unsigned char** attributes);
    void end_element(const std::string& name);
    void characters(const char* text);
    void add_text(const std::string& utf8);

    boost::shared_ptr<velmoext_1_4_8::message_t> m_message;
    state_t m_state = outside;
    std::string m_element;
    std::wstring m_arg_name;
    bool m_has_begun = false; ///< whether the text's declaration has been read
    reading_t m_reading;
};

/// Returns the fields of the messages at their delivery and in the end.
std::string text_of(const log_oracle_t::reading_t& reading);
