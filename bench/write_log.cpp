// Records the messages of the workload, again and again: bench_write_log MESSAGES LOG
#include "workload.h"

#include <velmoext1/messages_storage.h>

#include <rova/strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>

namespace
{

using velmoext_1_4_8::messages_storage_t;
using velmoext_1_4_8::velmo_ex_t;

// All messages of a long log would not be in memory at once.
const std::size_t max_different = 100000;

bool write(std::size_t count, const std::wstring& file)
{
    const bench::workload_t workload(std::min(count, max_different));
    const auto storage = messages_storage_t::get(basekit2::path_t(file));
    if (!storage->start_recording())
        return false;
    for (std::size_t i = 0; i != count; ++i)
        storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                            workload.messages()[i % workload.size()]);
    return storage->stop_recording();
}

} // namespace

int main(int argc, char** argv)
{
    const std::size_t count = argc == 3 ? std::strtoull(argv[1], nullptr, 10) : 0;
    const bool is_written = count != 0 && write(count, ROVA_2_18::strings::utf8_to_utf16(argv[2]));
    if (!is_written)
        std::cerr << "bench_write_log: cannot write\n";
    return is_written ? EXIT_SUCCESS : EXIT_FAILURE;
}
