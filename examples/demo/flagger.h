/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

namespace audit
{

/// Flags again what is worth recording, for a storage that stands beneath: all but the files that
/// were merely seen. What flags the sender set does not cross a channel.
class flagger_t : public velmoext::base_handler_t
{
public:
    using velmoext::base_handler_t::on_message;

    /// Passes everything on, a text that is no message too.
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;
};

} // namespace audit
