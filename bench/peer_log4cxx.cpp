// log4cxx: writes an event per message into a file, with the XML layout. The event's text is the
// type; all other fields are named values of its context.

#include "peers.h"
#include "scratch_log.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/fileappender.h>
#include <log4cxx/helpers/pool.h>
#include <log4cxx/logger.h>
#include <log4cxx/mdc.h>
#include <log4cxx/xml/xmllayout.h>

#include <memory>

namespace
{

using bench::workload_t;

void add_context(const bench::string_pairs_t& texts)
{
    for (const auto& [name, text] : texts)
        log4cxx::MDC::put(name, text);
}

void log(const log4cxx::LoggerPtr& logger, const bench::plain_message_t& message)
{
    log4cxx::MDC::put("severity", message.severity);
    add_context(message.attributes);
    add_context(message.args);
    add_context(message.elements);
    LOG4CXX_INFO(logger, message.type);
    log4cxx::MDC::clear();
}

std::shared_ptr<log4cxx::FileAppender> open(const std::string& name)
{
    const auto layout = std::make_shared<log4cxx::xml::XMLLayout>();
    layout->setProperties(true);
    auto appender = std::make_shared<log4cxx::FileAppender>();
    appender->setLayout(layout);
    appender->setFile(name);
    appender->setBufferedIO(true);
    log4cxx::helpers::Pool pool;
    appender->activateOptions(pool);
    return appender;
}

bench::candidate_t make_record(const workload_t& workload)
{
    return {"log4cxx", [&](std::size_t) -> bench::work_t {
                const auto file = std::make_shared<bench::scratch_log_t>();
                return [&, file](std::size_t count) {
                    const auto appender = open(file->name());
                    const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("bench");
                    logger->setAdditivity(false);
                    logger->addAppender(appender);
                    for (std::size_t i = 0; i < count; ++i)
                        log(logger, *workload.plain()[i]);
                    logger->removeAllAppenders();
                    appender->close();
                    return file->size();
                };
            }};
}

const bool is_registered = bench::register_peer("record", make_record);

} // namespace
