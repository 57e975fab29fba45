/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

#include <cstdint>

namespace audit
{

/// Counts the messages that pass.
class counting_handler_t : public velmoext::base_handler_t
{
public:
    using velmoext::base_handler_t::on_message;

    /// Does not count a text that is not a message.
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;

    std::uint64_t count() const { return m_count; }

private:
    std::uint64_t m_count = 0;
};

} // namespace audit
