#include "plain_line.h"

#include "severity_name.h"
#include "terminal_text.h"

namespace audit
{
namespace
{

using velmoext::message_t;

std::string field(const std::wstring& text)
{
    const std::string shown = terminal_text(text);
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
