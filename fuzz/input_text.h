#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Returns the parts between the separators, at least one.
std::vector<std::string> split(const std::string& text, char separator);

/// Returns the text before the first separator and the text after it. Without a separator, the
/// second is empty.
std::pair<std::string, std::string> split_once(const std::string& text, char separator);

/// Returns the input's wide text. Replaces each `\uHHHH` and `\UHHHHHHHH` with the element of that
/// hexadecimal number, so that a readable input can contain elements that UTF-8 cannot encode.
std::wstring to_wide(const std::string& bytes);
