#include <velmoext1/base_handler.h>

#include <velmoext1/velmo_ex.h>

namespace velmoext_1_4_8
{

base_handler_t::~base_handler_t() = default;

bool base_handler_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                boost::shared_ptr<progress_message_t> /*msg*/)
{
    return false;
}

bool base_handler_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                boost::shared_ptr<message_t> /*msg*/)
{
    return false;
}

} // namespace velmoext_1_4_8
