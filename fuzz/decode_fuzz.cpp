// Whatever a text holds, the message that it gives is the one that its rules say, or none, and it
// comes through being written and read again.
#include "fuzz_target.h"
#include "message_model.h"
#include "quiet_xml.h"
#include "require.h"
#include "round_trip.h"

#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

#include <algorithm>
#include <string>

namespace
{

using velmoext_1_4_8::message_t;

boost::shared_ptr<message_t> decode(const std::wstring& text)
{
    return velmoext_1_4_8::string_message_serializer_t::xml_string_to_message(text);
}

bool is_reading(const message_t* message, const message_t* reading)
{
    return message && reading ? is_same(*message, *reading) : message == reading;
}

void require_expected(const message_t* message, const message_model_t& expected)
{
    const auto& readings = expected.readings;
    if (expected.may_be_refused ||
        std::any_of(readings.begin(), readings.end(),
                    [&](const auto& reading) { return is_reading(message, reading.get()); }))
        return;
    require(message, "a message that is there is read");
    require(readings.front() != nullptr, "where no message is, none is read");
    require_same(*message, *readings.front());
}

// A long text is read in pieces of other sizes, which counts only where it has a fault.
void require_expected_of_long(const std::wstring& text)
{
    const std::wstring longer = text + std::wstring(65536, L' ');
    const message_model_t expected = message_model_t::read(longer);
    if (expected.readings.size() == 1)
        require_expected(decode(longer).get(), expected);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const std::wstring text = ROVA_2_18::strings::utf8_to_utf16(std::string(data, data + size));
    const message_model_t expected = message_model_t::read(text);
    // What reads a text has read one before only where that was a message.
    for (const wchar_t* const earlier : {L"", L"<msg/>"}) {
        decode(earlier);
        const auto message = decode(text);
        require_expected(message.get(), expected);
        if (message)
            require_round_trip(message);
    }
    require_expected_of_long(text);
    return 0;
}
