/// @file
#pragma once

#include "library_names.h"
#include "printer.h"

#include <velmoext1/base_handler.h>
#include <velmoext1/config_reader.h>
#include <velmoext1/velmo_adapter.h>
#include <velmoext1/velmo_ex.h>

#include <velmo2/messenger.h>

#include <boost/shared_ptr.hpp>

namespace audit
{

/// The component that receives messages: prints those that come through its messenger and are
/// severe enough.
class consumer_t
{
public:
    consumer_t(velmoext::message_t::severity_t least, printer_t::line_maker_t maker,
               printer_t::line_sink_t sink);

    velmo2::IMessenger& messenger() { return m_adapter; }
    boost::shared_ptr<velmoext::velmo_ex_t> ex() const { return m_ex; }
    boost::shared_ptr<velmoext::base_handler_t> progress_handler() const { return m_printer; }

private:
    /// Owned here, since a reader without an owner is destroyed and the next message reads the
    /// files again.
    const boost::shared_ptr<velmoext::config_reader_t> m_configuration;
    const boost::shared_ptr<velmoext::velmo_ex_t> m_ex;
    const boost::shared_ptr<printer_t> m_printer;
    velmoext::velmo_adapter_t m_adapter;
};

} // namespace audit
