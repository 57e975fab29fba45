#pragma once

#include <string>

/// Prints `what` on standard error and ends the process, unless the condition is true.
void require(bool condition, const char* what);

/// Prints both texts as well and ends the process, unless they are equal.
void require_equal(const std::string& actual, const std::string& expected, const char* what);
