#include "readable_line.h"

#include "catalogs.h"
#include "plain_line.h"
#include "severity_name.h"
#include "terminal_text.h"

#include <rova/strings.h>
#include <velmoext1/extended_message.h>

namespace audit
{
namespace
{

using velmoext::message_t;

std::string severity_text(message_t::severity_t severity)
{
    const std::string name = severity_name(severity);
    const std::wstring text = catalog_text(L"severity_" + rova::strings::utf8_to_utf16(name));
    return text.empty() ? name : terminal_text(text);
}

} // namespace

std::string readable_line(const boost::shared_ptr<velmoext::velmo_ex_t>& ex,
                          const boost::shared_ptr<message_t>& message)
{
    velmoext::extended_message_t extended(ex, message);
    const std::wstring text = extended.get_text();
    if (text.empty())
        return plain_line(*message);
    const std::wstring title = extended.get_title();
    std::string line = severity_text(message->get_severity()) + ": ";
    if (!title.empty())
        line += terminal_text(title) + ": ";
    return line + terminal_text(text);
}

} // namespace audit
