#pragma once

#include <velmoext1/message.h>

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace velmolog
{

typedef nlohmann::ordered_json json_t;

/// Returns the value in one line, or with this indentation. Escapes each character that has an
/// effect instead of a shape.
std::string text_of(const json_t& value, int indentation = -1);

/// Returns an object of the texts.
json_t object_of(const std::map<std::wstring, std::wstring>& texts);

/// Returns the severity in lower case.
std::string name_of(velmoext_1_4_8::message_t::severity_t severity);

} // namespace velmolog
