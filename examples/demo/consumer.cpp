#include "consumer.h"

#include "filter.h"

#include <boost/make_shared.hpp>

#include <utility>

namespace audit
{

using velmoext::velmo_ex_t;

consumer_t::consumer_t(velmoext::message_t::severity_t least, printer_t::line_maker_t maker,
                       printer_t::line_sink_t sink)
    : m_configuration(velmoext::config_reader_t::get()),
      m_ex(velmo_ex_t::get(velmo_ex_t::generate_id(L"audit"), L"console")),
      m_printer(boost::make_shared<printer_t>(std::move(maker), std::move(sink)))
{
    m_ex->push_handler(m_printer);
    m_ex->push_handler(boost::make_shared<filter_t>(least)); // called first
    m_adapter.set_output_velmoext(m_ex);
}

} // namespace audit
