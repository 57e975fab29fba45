#include "printer.h"

#include "message_words.h"
#include "severity_name.h"
#include "terminal_text.h"

#include <algorithm>
#include <cwchar>
#include <utility>

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

std::string line_of(const message_t& message)
{
    std::string line = severity_name(message.get_severity()) + ' ' + field(message.get_type()) +
                       ' ' + field(message.get_source());
    const message_t::message_content_t content = message.get_content();
    for (const auto& [name, value] : content.args)
        line += ' ' + field(name) + '=' + field(value);
    return line;
}

// What is no number counts as nothing done.
int percent_of(const message_t& message)
{
    const std::wstring text = message.get_content().args[percent_word];
    const long number = std::wcstol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp(number, 0L, 100L));
}

} // namespace

printer_t::printer_t(line_sink_t sink) : m_sink(std::move(sink)) {}

bool printer_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                           boost::shared_ptr<velmoext::progress_message_t> msg)
{
    if (!msg || !msg->get_message())
        return false;
    msg->get_progress()->set_percent(percent_of(*msg->get_message()));
    return true;
}

bool printer_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                           boost::shared_ptr<velmoext::message_t> msg)
{
    if (!msg)
        return false;
    m_sink(line_of(*msg));
    return true;
}

} // namespace audit
