#include "plain_line.h"

#include "escape.h"
#include "severity_name.h"
#include "terminal_text.h"

namespace audit
{
namespace
{

using velmoext::message_t;

// Escapes quotation marks, so that a value cannot end its own.
std::string escape_quotes(const std::wstring& text)
{
    std::string shown;
    for (const char letter : terminal_text(text))
        shown += letter == '"' ? escape("\"") : std::string(1, letter);
    return shown;
}

std::string field(const std::wstring& text)
{
    const std::string shown = escape_quotes(text);
    const bool is_plain = !shown.empty() && shown.find_first_of(" =") == std::string::npos;
    return is_plain ? shown : '"' + shown + '"';
}

} // namespace

std::string plain_line(const message_t& message)
{
    std::string line = severity_name(message.get_severity()) + ' ' + field(message.get_type()) +
                       ' ' + field(message.get_source());
    const message_t::message_content_t content = message.get_content();
    for (const auto& [name, value] : content.args)
        line += ' ' + field(name) + '=' + field(value);
    return line;
}

} // namespace audit
