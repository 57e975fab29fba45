/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

namespace audit
{

/// Consumes messages that are not severe enough, so that the handlers below do not get them.
class filter_t : public velmoext::base_handler_t
{
public:
    /// Lets messages of at least this severity pass.
    explicit filter_t(velmoext::message_t::severity_t least);

    using velmoext::base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;

private:
    const velmoext::message_t::severity_t m_least;
};

} // namespace audit
