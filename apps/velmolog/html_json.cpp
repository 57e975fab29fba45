#include "html_json.h"

#include <nlohmann/json.hpp>

namespace velmolog
{

std::string json_in_html(const std::string& text)
{
    const std::string json =
        nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::string result;
    result.reserve(json.size());
    for (const char character : json) {
        if (character == '<')
            result += "\\u003c";
        else
            result += character;
    }
    return result;
}

} // namespace velmolog
