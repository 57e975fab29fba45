/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

namespace audit
{

/// Flags the messages that a storage below is to record: all but those about files that were merely
/// seen. The sender's flags do not cross a channel.
class flagger_t : public velmoext::base_handler_t
{
public:
    using velmoext::base_handler_t::on_message;

    /// Passes everything on, including a text that is not a message.
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;
};

} // namespace audit
