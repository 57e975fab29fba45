/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/base_handler.h>

#include <boost/shared_ptr.hpp>

#include <functional>
#include <string>

namespace audit
{

/// Shows each message as one line: severity, type, source, and each argument as name=value. What is
/// empty or has a space or an equals sign in it stands in quotation marks. Progress goes to the
/// host's progress object.
class printer_t : public velmoext::base_handler_t
{
public:
    /// Takes one line, in UTF-8, without its end.
    typedef std::function<void(const std::string&)> line_sink_t;

    explicit printer_t(line_sink_t sink);

    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::progress_message_t> msg) override;

    /// A text that is no message is passed on unseen.
    bool on_message(boost::shared_ptr<velmoext::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext::message_t> msg) override;

private:
    const line_sink_t m_sink;
};

} // namespace audit
