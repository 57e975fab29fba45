/// @file
/// How a library of the host reports that a caller broke its rules.
#pragma once

#include <rova/export.h>

namespace ROVA_2_18
{
namespace debug
{

/// Takes the broken condition's text and the place where it stands. May return: the one who
/// reported then goes on.
typedef void (*assert_handler_t)(const char* expression, const char* file, int line,
                                 const char* function);

/// Puts a handler in place for the whole process, null for none, and answers the former one. Any
/// thread may call at any time.
ROVA_API assert_handler_t set_assert_handler(assert_handler_t handler);

namespace _private
{

/// Reports to the handler in place. Where there is none, the report goes to standard error as one
/// line. Returns when the handler returns.
ROVA_API void ____________________ASSERT____________________(const char* expression,
                                                             const char* file, int line,
                                                             const char* function);

} // namespace _private
} // namespace debug
} // namespace ROVA_2_18
