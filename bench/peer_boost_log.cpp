// Boost.Log: an element per message into a text file, its text escaped as XML asks for.

#include "peers.h"
#include "scratch_log.h"

#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/expressions/formatters/xml_decorator.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_file_backend.hpp>
#include <boost/log/sources/logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/make_shared.hpp>

#include <memory>

namespace
{

namespace logging = boost::log;
namespace expressions = boost::log::expressions;

typedef logging::sinks::text_file_backend backend_t;
typedef logging::sinks::synchronous_sink<backend_t> sink_t;

// Gives up the sink where it goes.
class open_log_t
{
public:
    explicit open_log_t(const std::string& name)
    {
        m_sink->locked_backend()->set_file_name_pattern(name);
        m_sink->set_formatter(
            expressions::stream
            << " <msg>" << expressions::xml_decor[expressions::stream << expressions::smessage]
            << "</msg>");
        logging::core::get()->add_sink(m_sink);
    }
    open_log_t(const open_log_t&) = delete;
    open_log_t& operator=(const open_log_t&) = delete;
    ~open_log_t()
    {
        logging::core::get()->remove_sink(m_sink);
        m_sink->flush();
    }

private:
    const boost::shared_ptr<sink_t> m_sink =
        boost::make_shared<sink_t>(boost::make_shared<backend_t>());
};

void log(const std::string& name, const std::vector<std::string>& lines, std::size_t count)
{
    const open_log_t open(name);
    logging::sources::logger logger;
    for (std::size_t i = 0; i < count; ++i)
        BOOST_LOG(logger) << lines[i];
}

bench::candidate_t make_record(const bench::workload_t& workload)
{
    return {"Boost.Log", [&](std::size_t) -> bench::work_t {
                const auto file = std::make_shared<bench::scratch_log_t>();
                return [file, lines = workload.lines()](std::size_t count) {
                    log(file->name(), lines, count);
                    return file->size();
                };
            }};
}

const bool is_registered = bench::register_peer("record", make_record);

} // namespace
