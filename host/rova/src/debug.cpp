#include <rova/debug.h>

#include <atomic>
#include <cstdio>

namespace ROVA_2_18
{
namespace debug
{

namespace
{

std::atomic<assert_handler_t> current_handler{nullptr};

/// Writes the line in one call: the stream's lock then keeps reports of several threads apart.
void write_report(const char* expression, const char* file, int line, const char* function)
{
    std::fprintf(stderr, "%s:%d: %s: assertion failed: %s\n", file, line, function, expression);
}

} // namespace

assert_handler_t set_assert_handler(assert_handler_t handler)
{
    return current_handler.exchange(handler);
}

namespace _private
{

void ____________________ASSERT____________________(const char* expression, const char* file,
                                                    int line, const char* function)
{
    const assert_handler_t handler = current_handler.load();
    (handler != nullptr ? handler : write_report)(expression, file, line, function);
}

} // namespace _private
} // namespace debug
} // namespace ROVA_2_18
