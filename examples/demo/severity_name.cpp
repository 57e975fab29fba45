#include "severity_name.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace audit
{
namespace
{

using velmoext::message_t;

struct name_t
{
    message_t::severity_t severity;
    const char* text;
};

const name_t names[] = {{message_t::info, "info"},
                        {message_t::warning, "warning"},
                        {message_t::error, "error"},
                        {message_t::critical, "critical"}};

} // namespace

std::string severity_name(message_t::severity_t severity)
{
    const auto* const found =
        std::find_if(std::begin(names), std::end(names),
                     [&](const name_t& name) { return name.severity == severity; });
    return found != std::end(names) ? found->text
                                    : std::to_string(static_cast<std::int32_t>(severity));
}

std::optional<message_t::severity_t> named_severity(const std::string& name)
{
    const auto* const found =
        std::find_if(std::begin(names), std::end(names),
                     [&](const name_t& candidate) { return candidate.text == name; });
    return found != std::end(names) ? std::make_optional(found->severity) : std::nullopt;
}

} // namespace audit
