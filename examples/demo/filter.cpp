#include "filter.h"

namespace audit
{

filter_t::filter_t(velmoext::message_t::severity_t least) : m_least(least) {}

// A text that is not a message has no severity, so the handlers below may handle it.
bool filter_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                          boost::shared_ptr<velmoext::message_t> msg)
{
    return msg && msg->get_severity() < m_least;
}

} // namespace audit
