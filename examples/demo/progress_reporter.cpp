#include "progress_reporter.h"

#include "message_words.h"

#include <velmoext1/progress_message.h>

#include <boost/make_shared.hpp>

#include <string>
#include <utility>

namespace audit
{
namespace
{

using velmoext::message_t;
using velmoext::progress_message_t;

boost::shared_ptr<message_t> make_message(int percent)
{
    message_t::message_content_t content;
    content.args[percent_word] = std::to_wstring(percent);
    auto message = boost::make_shared<message_t>();
    message->set_type(L"walk_progress");
    message->set_severity(message_t::info);
    message->set_content(content);
    return message;
}

} // namespace

progress_reporter_t::progress_reporter_t(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                                         boost::shared_ptr<velmoext::base_handler_t> handler,
                                         boost::shared_ptr<velmo2::IProgress> progress)
    : m_ex(std::move(ex)), m_handler(std::move(handler)), m_progress(std::move(progress))
{}

void progress_reporter_t::report(std::size_t done, std::size_t all)
{
    const int percent = all == 0 ? 100 : static_cast<int>(done * 100 / all);
    if (percent == m_reported_percent)
        return;
    m_reported_percent = percent;
    send(percent);
}

void progress_reporter_t::send(int percent)
{
    const auto progress = boost::make_shared<progress_message_t>();
    progress->set_message(make_message(percent));
    progress->set_progress(m_progress);
    progress->set_cancelable(true);
    m_handler->on_message(m_ex, progress);
}

} // namespace audit
