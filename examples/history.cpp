// Shows the messages of a log as they were recorded, also after damage: history LOG
#include <velmoext1/velmoext1.h>

#include <rova/strings.h>

#include <cstdlib>
#include <iostream>

using namespace velmoext1;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

namespace
{

typedef log_reader_t::result_t result_t;

void show(log_reader_t& log)
{
    const auto position = log.get_begin();
    std::cout << "line " << position.line << ": " << utf16_to_utf8(plain_text(*log.get_message()))
              << '\n';
}

/// Returns whether the log was read to its end, or to the point that its recorder has reached.
bool show_all(log_reader_t& log)
{
    bool is_undamaged = true;
    result_t result = log.next();
    while (result == result_t::message || result == result_t::damage) {
        if (result == result_t::message)
            show(log);
        else
            std::cout << "line " << log.get_begin().line << " is damaged\n";
        is_undamaged = is_undamaged && result == result_t::message;
        result = log.next();
    }
    return is_undamaged && result != result_t::unreadable;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return EXIT_FAILURE;
    log_reader_t log{basekit2::path_t(utf8_to_utf16(argv[1]))};
    return show_all(log) ? EXIT_SUCCESS : EXIT_FAILURE;
}
