#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>

/// Returns the data of a page, as a parser of HTML and then one of JSON read it.
inline nlohmann::json data_of(const std::string& page)
{
    const std::string begin = "id=\"data\">";
    const std::size_t first = page.find(begin) + begin.size();
    const std::size_t last = page.find("</script", first);
    return nlohmann::json::parse(page.substr(first, last - first));
}

/// Returns the text that a number of a row means.
inline std::string text_at(const nlohmann::json& data, std::size_t index)
{
    return data.at("strings").at(data.at("rows").at(index).get<std::size_t>());
}
