#include "printer.h"

#include "message_words.h"

#include <algorithm>
#include <cwchar>
#include <utility>

namespace audit
{
namespace
{

using velmoext::message_t;

// A text that is not a number counts as 0.
int percent_of(const message_t& message)
{
    const std::wstring text = message.get_content().args[percent_word];
    const long number = std::wcstol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp(number, 0L, 100L));
}

} // namespace

printer_t::printer_t(line_maker_t maker, line_sink_t sink)
    : m_maker(std::move(maker)), m_sink(std::move(sink))
{}

bool printer_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                           boost::shared_ptr<velmoext::progress_message_t> msg)
{
    if (!msg || !msg->get_message())
        return false;
    msg->get_progress()->set_percent(percent_of(*msg->get_message()));
    return true;
}

bool printer_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                           boost::shared_ptr<velmoext::message_t> msg)
{
    if (!msg)
        return false;
    m_sink(m_maker(ex, msg));
    return true;
}

} // namespace audit
