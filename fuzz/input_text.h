#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The parts between the separators, at least one.
std::vector<std::string> split(const std::string& text, char separator);

/// What stands before the first separator, and what behind it; all of it and nothing where there is
/// none.
std::pair<std::string, std::string> split_once(const std::string& text, char separator);

/// The input's wide text, each `\uHHHH` and `\UHHHHHHHH` in it as the element of that hexadecimal
/// number: so an input can be read, and yet hold what UTF-8 cannot.
std::wstring to_wide(const std::string& bytes);
