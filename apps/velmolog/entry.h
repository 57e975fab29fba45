#pragma once

#include <velmoext1/log_reader.h>
#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmolog
{

/// A message of a log.
struct entry_t
{
    std::string log; ///< as named on the command line
    velmoext_1_4_8::log_reader_t::position_t begin;
    boost::shared_ptr<velmoext_1_4_8::message_t> message;
    std::string observed; ///< when it was read; empty if that is not shown
    std::string element;  ///< as it is in the log; empty if it is not shown
};

} // namespace velmolog
