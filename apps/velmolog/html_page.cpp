#include "html_page.h"

#include "html_json.h"
#include "page_source.h"
#include "text_pattern.h"

#include <rova/strings.h>

#include <map>

namespace velmolog
{
namespace
{

using ROVA_2_18::strings::utf16_to_utf8;
using velmoext_1_4_8::message_t;
typedef std::map<std::wstring, std::wstring> named_texts_t;

/// Returns the numbers of the names, as an array of JSON.
std::string numbers_of_names(const named_texts_t& texts, string_table_t& strings)
{
    std::string json;
    for (const auto& [name, text] : texts)
        json.append(json.empty() ? "[" : ",")
            .append(std::to_string(strings.number_of(utf16_to_utf8(name))));
    return json.empty() ? "[]" : json + "]";
}

std::string shape_of(const message_t::message_content_t& content, string_table_t& strings)
{
    std::string json;
    for (const named_texts_t* named : {&content.args, &content.elements, &content.attributes})
        json.append(json.empty() ? "[" : ",").append(numbers_of_names(*named, strings));
    return json + "]";
}

} // namespace

html_page_t::html_page_t(std::ostream& stream, const std::vector<std::string>& languages,
                         const std::string& title)
    : m_stream(stream), m_languages(languages), m_title(title)
{
    m_stream << page_before_data << "{\"rows\":[";
}

// A row is a sequence of numbers, mostly of texts. page/messages.js reads them in this order.
void html_page_t::add(const entry_t& entry, const std::vector<texts_t>& texts)
{
    const message_t& message = *entry.message;
    const message_t::message_content_t content = message.get_content();
    m_row = m_shapes.texts().empty() ? "\n" : ",\n";
    m_row += std::to_string(m_shapes.number_of(shape_of(content, m_strings)));
    append_position(entry);
    append(message.get_severity());
    append_text(utf16_to_utf8(message.get_type()));
    append_text(utf16_to_utf8(message.get_source()));
    const std::vector<std::string> arguments = append_content(content);
    for (const texts_t& in_language : texts) {
        append_text(text_pattern(in_language.title, arguments));
        append_text(text_pattern(in_language.text, arguments));
    }
    m_stream << m_row;
}

void html_page_t::finish()
{
    m_stream << "],\n";
    write_shapes();
    m_stream << "\"title\":" << json_in_html(m_title) << ",\n\"languages\":[";
    const char* separator = "";
    for (const std::string& language : m_languages) {
        m_stream << separator << json_in_html(language);
        separator = ",";
    }
    m_stream << "],\n\"language\":" << m_first_language << "}";
    m_stream << page_between_data;
    write_strings();
    m_stream << page_after_data;
}

void html_page_t::append(std::int64_t number)
{
    m_row.append(",").append(std::to_string(number));
}

void html_page_t::append_text(const std::string& text)
{
    append(static_cast<std::int64_t>(m_strings.number_of(text)));
}

/// Appends differences: they have fewer digits than positions.
void html_page_t::append_position(const entry_t& entry)
{
    append_text(entry.log);
    append(entry.begin.offset - m_previous.offset);
    append(entry.begin.line - m_previous.line);
    m_previous = entry.begin;
}

/// Appends all named texts. Returns those of the arguments.
std::vector<std::string> html_page_t::append_content(const message_t::message_content_t& content)
{
    std::vector<std::string> arguments;
    for (const auto& [name, text] : content.args)
        arguments.push_back(utf16_to_utf8(text));
    for (const std::string& text : arguments)
        append_text(text);
    for (const named_texts_t* named : {&content.elements, &content.attributes})
        for (const auto& [name, text] : *named)
            append_text(utf16_to_utf8(text));
    return arguments;
}

void html_page_t::write_shapes()
{
    m_stream << "\"shapes\":[";
    const char* separator = "";
    for (const std::string* shape : m_shapes.texts()) {
        m_stream << separator << *shape;
        separator = ",";
    }
    m_stream << "],\n";
}

/// Writes a line for each string. A browser splits lines faster than it reads an array of JSON.
void html_page_t::write_strings()
{
    for (const std::string* text : m_strings.texts()) {
        const std::string json = json_in_html(*text);
        m_stream << json.substr(1, json.size() - 2) << '\n';
    }
}

} // namespace velmolog
