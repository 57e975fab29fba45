#pragma once

#include "xml/error_scope.h"
#include "xml/handles.h"

#include <velmoext1/message.h>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <exception>
#include <map>
#include <string>
#include <vector>

namespace velmoext_1_4_8
{

/// Builds messages from the events of a log's parse, and hands each over as soon as its element has
/// ended. Works on the events as libxml2 gives them: text that arrives in several pieces is not put
/// together again, and nothing is decoded twice.
///
/// What was read last stays from one parse to the next. One thread at a time may use it.
class log_sax_reader
{
public:
    typedef boost::function<void(boost::shared_ptr<message_t>)> message_callback_t;

    /// Who gets the messages from now on. A message that finds an empty callback ends the parse
    /// with boost::bad_function_call.
    void set_callback(const message_callback_t& callback);

    /// Reads the document up to its first fault. The answer is libxml2's: 0 for a well-formed
    /// document, a positive number for one that is not, a negative one where no parse could begin,
    /// as for an empty text. What the callback throws passes out, and no message behind it is
    /// handed over. The text must not be longer than an int can tell.
    int parse(const std::string& text);

    /// Whether the last parse() ended early, or left something out, for lack of memory.
    bool has_lacked_memory() const { return m_has_lacked_memory; }

private:
    typedef std::map<std::wstring, std::wstring> texts_t;

    enum parse_state_t
    {
        outside = 0,
        in_log = 1,
        in_message = 2,
        in_child = 3 ///< also between the children, from the first one on
    };

    /// Which element it is; other names stand in m_other_name.
    enum class element_t
    {
        log,
        msg,
        arg,
        type,
        severity,
        other
    };

    static element_t element_of(const char* name);
    int parse_document(const std::string& text);
    static xmlSAXHandler make_table();

    static void on_document(void* reader);
    static void on_start_element(void* reader, const xmlChar* name, const xmlChar** attributes);
    static void on_end_element(void* reader, const xmlChar* name);
    static void on_characters(void* reader, const xmlChar* text, int length);
    static void on_instruction(void* reader, const xmlChar* target, const xmlChar* text);

    template <typename Step>
    void guard(const Step& step) noexcept;

    void make_room_for_names();

    void start_element(const char* name, const xmlChar** attributes);
    void start_message(const xmlChar** attributes);
    void start_arg(const xmlChar** attributes);
    void end_element(const char* name);
    bool is_in_text() const;
    void characters(const char* text, int length);
    void deliver_message();
    void set_type(const char* text, std::size_t length);
    void set_severity(const char* text);
    void add_arg(const char* text);
    void add_element(const char* text);
    static void add_text(texts_t& texts, std::wstring&& key, const char* text);

    boost::shared_ptr<message_t> current_message;
    int parse_state = outside;
    element_t current_element = element_t::other;
    std::wstring m_other_name;
    std::size_t m_looked_ahead = 0; ///< bytes behind the pieces of the type that is being read
    std::wstring pending_arg_name;
    message_callback_t message_callback;
    xml_error_scope_t* m_silence = nullptr;            ///< of the parse that runs
    xmlParserCtxt* m_parser = nullptr;                 ///< that runs
    std::vector<xml_dictionary_t> m_full_dictionaries; ///< which it has names of
    bool m_has_lacked_memory = false;
    std::exception_ptr m_failure; ///< what was thrown first; all further events are ignored
};

} // namespace velmoext_1_4_8
