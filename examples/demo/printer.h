/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

#include <functional>
#include <string>

namespace audit
{

/// Shows each message as one line. Progress goes to the host's progress object.
class printer_t : public velmoext::base_handler_t
{
public:
    /// Returns one line for a message, in UTF-8, without a line end.
    typedef std::function<std::string(const boost::shared_ptr<velmoext::velmo_ex_t>&,
                                      const boost::shared_ptr<velmoext::message_t>&)>
        line_maker_t;
    /// Receives a line.
    typedef std::function<void(const std::string&)> line_sink_t;

    printer_t(line_maker_t maker, line_sink_t sink);

    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::progress_message_t> msg) override;

    /// Passes a text that is not a message on, and shows nothing.
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;

private:
    const line_maker_t m_maker;
    const line_sink_t m_sink;
};

} // namespace audit
