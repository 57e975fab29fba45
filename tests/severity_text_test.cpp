#include "encoding/severity_text.h"

#include "support.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

TEST(severity_text_test, each_severity_has_its_word)
{
    EXPECT_STREQ(severity_text(message_t::info), "INFO");
    EXPECT_STREQ(severity_text(message_t::warning), "WARNING");
    EXPECT_STREQ(severity_text(message_t::error), "ERROR");
    EXPECT_STREQ(severity_text(message_t::critical), "CRITICAL");
}

TEST(severity_text_test, none_and_unknown_severities_have_no_word)
{
    for (const int value : {0, -1, 5, 1000})
        EXPECT_STREQ(severity_text(static_cast<message_t::severity_t>(value)), "") << value;
}

TEST(severity_text_test, texts_are_read_by_the_table)
{
    const struct
    {
        std::wstring text;
        message_t::severity_t severity;
    } cases[] = {{L"CRITICAL", message_t::critical},
                 {L"ERROR", message_t::error},
                 {L"WARNING", message_t::warning},
                 {L"INFO", message_t::info},
                 {L"warning", message_t::warning},
                 {L"Info", message_t::info},
                 {L"cRiTiCaL", message_t::critical},
                 {L"0", message_t::critical}, // never error
                 {L"1", message_t::warning},
                 {L"2", message_t::info},
                 {L"3", message_t::none},
                 {L"4", message_t::none},
                 {L"", message_t::none},
                 {L" ERROR", message_t::none},
                 {L"ERROR ", message_t::none},
                 {L"\nINFO", message_t::none},
                 {L"INFORMATION", message_t::none},
                 {L"ERR", message_t::none},
                 {L"DEBUG", message_t::none},
                 {L"00", message_t::none},
                 {L"-1", message_t::none},
                 {units({'I', 'N', 'F', 'O', 0}), message_t::none},
                 {units({0xD800}), message_t::none},
                 {L"\x0131nfo", message_t::info}}; // its upper case is a plain I
    for (const auto& c : cases)
        EXPECT_EQ(parse_severity(ROVA_2_18::strings::utf16_to_utf8(c.text)), c.severity)
            << testing::PrintToString(c.text);
}
