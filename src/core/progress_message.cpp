#include <velmoext1/progress_message.h>

#include <rova/debug.h>

#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// The location that the host's tools expect. It does not depend on the lines of this file.
const char* const assertion_file = "velmoext1/src/progress_message";
const int assertion_line = 37;
const char* const assertion_function = "velmoext_1_4_8::progress_message_t::get_progress";

} // namespace

progress_message_t::progress_message_t() = default;
progress_message_t::progress_message_t(const progress_message_t& other) = default;
progress_message_t& progress_message_t::operator=(const progress_message_t& other) = default;
progress_message_t::~progress_message_t() = default;

boost::shared_ptr<message_t> progress_message_t::get_message()
{
    return m_message;
}

void progress_message_t::set_message(boost::shared_ptr<message_t> message)
{
    m_message = std::move(message);
}

boost::shared_ptr<velmo2::IProgress> progress_message_t::get_progress()
{
    if (!m_progress)
        ROVA_2_18::debug::_private::____________________ASSERT____________________(
            "m_progress", assertion_file, assertion_line, assertion_function);
    return m_progress;
}

void progress_message_t::set_progress(boost::shared_ptr<velmo2::IProgress> progress)
{
    m_progress = std::move(progress);
}

void progress_message_t::set_cancelable(bool cancelable)
{
    m_cancelable = cancelable;
}

bool progress_message_t::is_cancelable() const
{
    return m_cancelable;
}

} // namespace velmoext_1_4_8
