// Boost.Log: writes an element per message into a text file. The names and texts are streamed one
// by one and escaped together for XML.

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
#include <utility>

namespace
{

namespace logging = boost::log;
namespace expressions = boost::log::expressions;

typedef logging::sinks::text_file_backend backend_t;
typedef logging::sinks::synchronous_sink<backend_t> sink_t;

// Adds a sink while in scope.
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

void put(logging::record_ostream& stream, const bench::string_pairs_t& texts)
{
    for (const auto& [name, text] : texts)
        stream << ' ' << name << '=' << text;
}

void log(logging::sources::logger& logger, const bench::plain_message_t& message)
{
    logging::record record = logger.open_record();
    bench::require(static_cast<bool>(record), "Boost.Log drops the message");
    logging::record_ostream stream(record);
    stream << message.type << ' ' << message.severity;
    put(stream, message.attributes);
    put(stream, message.args);
    put(stream, message.elements);
    stream.flush();
    logger.push_record(std::move(record));
}

bench::candidate_t make_record(const bench::workload_t& workload)
{
    return {"Boost.Log", [&](std::size_t) -> bench::work_t {
                return [&, file = std::make_shared<bench::scratch_log_t>()](std::size_t count) {
                    {
                        const open_log_t open(file->name());
                        logging::sources::logger logger;
                        for (std::size_t i = 0; i < count; ++i)
                            log(logger, *workload.plain()[i]);
                    }
                    return file->size();
                };
            }};
}

const bool is_registered = bench::register_peer("record", make_record);

} // namespace
