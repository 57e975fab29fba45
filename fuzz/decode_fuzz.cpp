// Whatever message a text gives, it comes through being written and read again.
#include "fuzz_target.h"
#include "quiet_xml.h"
#include "round_trip.h"

#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const std::string bytes(data, data + size);
    const auto message = velmoext_1_4_8::string_message_serializer_t::xml_string_to_message(
        ROVA_2_18::strings::utf8_to_utf16(bytes));
    if (message)
        require_round_trip(message);
    return 0;
}
