#include "entry_format.h"

#include "common/escape_controls.h"
#include "common/utf8.h"
#include "entry_json.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace velmolog
{

const char log_beginning[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";
const char log_end[] = "</log>\n";
const char empty_log[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log/>\n";

namespace
{

using app_common::escape_controls;

struct level_t
{
    const char* name; ///< padded to one width
    const char* color;
};

// In the order of message_t::severity_t.
const std::array<level_t, 5> levels = {{{"NONE    ", ""},
                                        {"INFO    ", "\x1B[36m"},
                                        {"WARNING ", "\x1B[33m"},
                                        {"ERROR   ", "\x1B[31m"},
                                        {"CRITICAL", "\x1B[1;31m"}}};
const char bold[] = "\x1B[1m";
const char plain[] = "\x1B[0m";

std::string colored(const std::string& text, const std::string& color)
{
    return color.empty() ? text : color + text + plain;
}

bool begins_with(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

class line_format_t : public entry_format_t
{
public:
    explicit line_format_t(bool has_colors) : m_has_colors(has_colors) {}

    std::string text(candidate_t& candidate) const override
    {
        return line_of(candidate, m_has_colors) + "\n";
    }

private:
    bool m_has_colors;
};

class json_format_t : public entry_format_t
{
public:
    std::string text(candidate_t& candidate) const override
    {
        return text_of(json_of(candidate)) + "\n";
    }
};

/// Returns the markup with references instead of the characters that a terminal would execute or
/// hide.
std::string with_references(std::string_view markup)
{
    std::string result;
    for (std::size_t next = 0; next != markup.size();) {
        const std::size_t begin = next;
        const UChar32 character = app_common::next_character(markup, next);
        if (app_common::is_invisible(character) && character != '\n' && character != '\t')
            result.append("&#").append(std::to_string(character)).append(";");
        else
            result.append(markup, begin, next - begin);
    }
    return result;
}

class xml_format_t : public entry_format_t
{
public:
    std::string beginning() const override { return log_beginning; }
    std::string text(candidate_t& candidate) const override
    {
        const std::string_view element = candidate.element();
        return log_line_of(m_is_on_terminal ? with_references(element) : element);
    }
    std::string end(bool has_messages) const override { return has_messages ? log_end : empty_log; }

private:
    bool m_is_on_terminal = isatty(STDOUT_FILENO) != 0;
};

} // namespace

std::string line_of(candidate_t& candidate, bool has_colors)
{
    const level_t& level = levels.at(static_cast<std::size_t>(candidate.severity()));
    const texts_t& texts = candidate.texts();
    std::string head = escape_controls(texts.title.empty() ? candidate.type() : texts.title);
    const std::string text = escape_controls(texts.text);
    if (texts.title.empty() && (texts.is_plain || begins_with(text, head)))
        head.clear(); // the text has the type already
    if (!head.empty())
        head = colored(head + ":", has_colors ? bold : "") + " ";
    return colored(level.name, has_colors ? level.color : "") + "  " + head + text;
}

bool can_show_colors()
{
    const auto has_value = [](const char* name) {
        const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
        return value && *value;
    };
    const char* const terminal = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe)
    return isatty(STDOUT_FILENO) != 0 && !has_value("NO_COLOR") && terminal &&
           terminal != std::string_view("dumb");
}

std::string log_line_of(std::string_view element)
{
    std::string line = " ";
    line.append(element).append("\n");
    return line;
}

std::unique_ptr<entry_format_t> make_entry_format(format_t format, bool has_colors)
{
    if (format == format_t::json)
        return std::make_unique<json_format_t>();
    if (format == format_t::xml)
        return std::make_unique<xml_format_t>();
    return std::make_unique<line_format_t>(has_colors);
}

} // namespace velmolog
