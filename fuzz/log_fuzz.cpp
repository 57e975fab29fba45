// Whatever a log holds, only messages that say something are handed over, and they can be recorded
// again.
#include "fuzz_target.h"
#include "round_trip.h"

#include "log_sax_reader.h"

#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velmoext_1_4_8::log_sax_reader reader;
    reader.set_callback([](boost::shared_ptr<velmoext_1_4_8::message_t> message) {
        require(message && !message->empty(), "a message that is handed over says something");
        require_round_trip(message);
    });
    reader.parse(std::string(data, data + size));
    return 0;
}
