#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <sstream>
#include <string>

/// Returns the text of an element of a page, as a parser of HTML reads it.
inline std::string element_of(const std::string& page, const std::string& id)
{
    const std::string begin = "id=\"" + id + "\">";
    const std::size_t first = page.find(begin) + begin.size();
    return page.substr(first, page.find("</script", first) - first);
}

/// Returns the data of a page, and the strings of their lines as its member "strings".
inline nlohmann::json data_of(const std::string& page)
{
    nlohmann::json data = nlohmann::json::parse(element_of(page, "data"));
    std::istringstream lines(element_of(page, "strings"));
    for (std::string line; std::getline(lines, line);)
        data["strings"].push_back(nlohmann::json::parse('"' + line + '"'));
    return data;
}

/// Returns the text that a number of a row means.
inline std::string text_at(const nlohmann::json& data, std::size_t index)
{
    return data.at("strings").at(data.at("rows").at(index).get<std::size_t>());
}
