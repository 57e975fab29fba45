#pragma once

#include <string>

/// Prints what does not hold on standard error and ends the process, unless the condition holds.
void require(bool condition, const char* what);

/// The same for two texts that must be equal; prints both.
void require_equal(const std::string& actual, const std::string& expected, const char* what);
