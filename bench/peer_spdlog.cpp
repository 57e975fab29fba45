// spdlog: writes the same text into a file as the library, formatted by spdlog and not escaped.

#include "peers.h"
#include "scratch_log.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <iterator>
#include <memory>

namespace
{

void add(spdlog::memory_buf_t& text, const std::string& name, const std::string& value)
{
    fmt::format_to(std::back_inserter(text), "  <{}>{}</{}>\n", name, value, name);
}

void compose(const bench::plain_message_t& message, spdlog::memory_buf_t& text)
{
    text.clear();
    const auto end = std::back_inserter(text);
    fmt::format_to(end, " <msg");
    for (const auto& [name, value] : message.attributes)
        fmt::format_to(end, " {}=\"{}\"", name, value);
    fmt::format_to(end, ">\n");
    for (const auto& [name, value] : message.args)
        fmt::format_to(end, "  <arg name=\"{}\">{}</arg>\n", name, value);
    for (const auto& [name, value] : message.elements)
        add(text, name, value);
    add(text, "type", message.type);
    add(text, "severity", message.severity);
    fmt::format_to(end, " </msg>");
}

bench::candidate_t make_record(const bench::workload_t& workload)
{
    return {"spdlog", [&](std::size_t) -> bench::work_t {
                return [&, log = std::make_shared<bench::scratch_log_t>()](std::size_t count) {
                    const auto sink =
                        std::make_shared<spdlog::sinks::basic_file_sink_mt>(log->name());
                    spdlog::logger logger("bench", sink);
                    logger.set_pattern("%v");
                    spdlog::memory_buf_t text;
                    for (std::size_t i = 0; i < count; ++i) {
                        compose(*workload.plain()[i], text);
                        logger.info(spdlog::string_view_t(text.data(), text.size()));
                    }
                    logger.flush();
                    return log->size();
                };
            }};
}

const bool is_registered = bench::register_peer("record", make_record);

} // namespace
