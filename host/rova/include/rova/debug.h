/// @file
/// Reports of violated requirements.
#pragma once

#include <rova/export.h>

namespace ROVA_2_18
{
namespace debug
{

/// Receives the text and the source location of a violated condition. If it returns, the reporting
/// operation continues.
typedef void (*assert_handler_t)(const char* expression, const char* file, int line,
                                 const char* function);

/// Sets the handler of the process, or null for none. Returns the previous one. Any thread may call
/// it at any time.
ROVA_API assert_handler_t set_assert_handler(assert_handler_t handler);

namespace _private
{

/// Calls the handler. If none is set, writes the report to standard error, as one line.
ROVA_API void ____________________ASSERT____________________(const char* expression,
                                                             const char* file, int line,
                                                             const char* function);

} // namespace _private
} // namespace debug
} // namespace ROVA_2_18
