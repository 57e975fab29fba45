#include "counting_handler.h"

namespace audit
{

bool counting_handler_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                                    boost::shared_ptr<velmoext::message_t> msg)
{
    if (msg)
        ++m_count;
    return false;
}

} // namespace audit
