#include "flagger.h"

#include "message_words.h"

namespace audit
{
namespace
{

const int worth_recording = 1;

} // namespace

bool flagger_t::on_message(boost::shared_ptr<velmoext::velmo_ex_t> /*ex*/,
                           boost::shared_ptr<velmoext::message_t> msg)
{
    if (msg && msg->get_type() != file_seen_type)
        msg->set_flags(msg->get_flags() | worth_recording);
    return false;
}

} // namespace audit
