#pragma once

#include <velmoext1/message.h>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <libxml/parser.h>

#include <cstddef>
#include <exception>
#include <map>
#include <string>

namespace velmoext_1_4_8
{

class xml_error_scope_t;

/// Builds messages from the events of a log's parse, and hands each over as soon as its element has
/// ended. Works on the events as libxml2 reports them: text in several events is not
/// joined, and nothing is decoded twice.
///
/// Its state stays from one parse to the next. Callers must serialize access.
class log_sax_reader
{
public:
    typedef boost::function<void(boost::shared_ptr<message_t>)> message_callback_t;

    /// Replaces the callback. A message that finds an empty one ends the parse with
    /// boost::bad_function_call.
    void set_callback(const message_callback_t& callback);

    /// Which sizes libxml2 accepts.
    enum class sizes_t
    {
        limited, ///< texts of 10,000,000 bytes, names of 50,000
        unlimited
    };

    /// Reads a document up to its first fault. Returns libxml2's result: 0 if the document is
    /// well-formed, a positive number if it is not, a negative one if no parse could begin, as for
    /// an empty text. Propagates the callback's exceptions, and hands over no later message. Throws
    /// std::bad_alloc if libxml2 runs out of memory. The size must not exceed an int.
    int parse(const std::string& document, sizes_t sizes = sizes_t::limited);

    /// Hands over a message that was read without a parse, as if parse() had just built it.
    void take(const boost::shared_ptr<message_t>& message);

private:
    typedef std::map<std::wstring, std::wstring> string_map_t;

    enum parse_state_t
    {
        outside = 0,
        in_log = 1,
        in_message = 2,
        in_child = 3 ///< also between the children, from the first one on
    };

    /// Other names are in m_other_name.
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
    static xmlSAXHandler make_table();
    int parse(xmlParserCtxt& parser, sizes_t sizes);

    static void on_document(void* reader);
    static void on_start_element(void* reader, const xmlChar* name, const xmlChar** attributes);
    static void on_end_element(void* reader, const xmlChar* name);
    static void on_characters(void* reader, const xmlChar* text, int length);

    template <typename Step>
    void guard(const Step& step) noexcept;

    void start_element(const char* name, const xmlChar** attributes);
    void start_message(const xmlChar** attributes);
    void start_arg(const xmlChar** attributes);
    void end_element(const char* name);
    void end_message();
    bool is_in_text() const;
    void characters(const char* text, std::size_t length);
    void set_type(const char* text, std::size_t length);
    void set_severity(const char* text);
    void add_arg(const char* text);
    void add_element(const char* text);
    static void add_text(string_map_t& texts, std::wstring&& key, const char* text);

    boost::shared_ptr<message_t> current_message;
    int parse_state = outside;
    element_t current_element = element_t::other;
    std::wstring m_other_name;
    std::size_t m_look_ahead_left = 0; ///< bytes, of the type that is being read
    std::wstring pending_arg_name;
    message_callback_t message_callback;
    xml_error_scope_t* m_errors = nullptr;   ///< of the parse in progress
    const xmlParserCtxt* m_parser = nullptr; ///< of the parse in progress
    std::exception_ptr m_failure;            ///< the first one; all further events are ignored
};

} // namespace velmoext_1_4_8
