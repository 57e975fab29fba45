#include <rova/strings.h>

#include "run_threads.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{

using ROVA_2_18::strings::to_upper;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;
using namespace std::string_literals;

constexpr std::uint32_t last_character = 0x10FFFF;

struct text_pair_t
{
    std::wstring wide;
    std::string bytes;
};

struct upper_pair_t
{
    std::wstring text;
    std::wstring upper;
};

std::wstring element(std::int64_t value)
{
    return {static_cast<wchar_t>(value)};
}

bool is_surrogate(std::uint32_t code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

/// Returns the bytes by arithmetic alone, including those of a surrogate, so that the library is
/// not compared with itself.
std::string bytes_of(std::uint32_t code)
{
    const auto trail = [code](int shift) {
        return static_cast<char>(0x80 | ((code >> shift) & 0x3F));
    };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0 | (code >> 6)), trail(0)};
    }
    if (code < 0x10000) {
        return {static_cast<char>(0xE0 | (code >> 12)), trail(6), trail(0)};
    }
    return {static_cast<char>(0xF0 | (code >> 18)), trail(12), trail(6), trail(0)};
}

std::wstring units_of(std::uint32_t code)
{
    if (code < 0x10000) {
        return element(code);
    }
    return element(0xD800 + ((code - 0x10000) >> 10)) + element(0xDC00 + (code & 0x3FF));
}

std::wstring replacements(std::size_t count)
{
    return std::wstring(count, L'\xFFFD');
}

/// Sets the process's language while in scope, also in the environment. ICU reads the environment
/// while the process's locale is "C", as on a machine without the requested locale.
class process_language_scope_t
{
public:
    explicit process_language_scope_t(const char* locale)
        : m_locale(std::setlocale(LC_ALL, nullptr))
    {
        const char* const former = std::getenv("LC_ALL");
        m_had_environment = former != nullptr;
        m_environment = m_had_environment ? former : "";
        setenv("LC_ALL", locale, 1);
        std::setlocale(LC_ALL, locale);
    }
    process_language_scope_t(const process_language_scope_t&) = delete;
    process_language_scope_t& operator=(const process_language_scope_t&) = delete;
    ~process_language_scope_t()
    {
        std::setlocale(LC_ALL, m_locale.c_str());
        if (m_had_environment) {
            setenv("LC_ALL", m_environment.c_str(), 1);
        } else {
            unsetenv("LC_ALL");
        }
    }

private:
    std::string m_locale;
    std::string m_environment;
    bool m_had_environment = false;
};

/// Uses a new process, since ICU sets its default locale once, at the first use.
void expect_upper_in(const char* locale, const std::wstring& text, const std::wstring& upper)
{
    const process_language_scope_t language(locale);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(to_upper(text) == upper ? EXIT_SUCCESS : EXIT_FAILURE),
                testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST(rova_strings_test, well_formed_text_converts_both_ways)
{
    const text_pair_t rows[] = {
        {L""s, ""s},
        {L"plain"s, "plain"s},
        {L"\x7F\x80"s, "\x7F\xC2\x80"s},
        {L"\x7FF\x800"s, "\xDF\xBF\xE0\xA0\x80"s},
        {L"\xD7FF\xE000"s, "\xED\x9F\xBF\xEE\x80\x80"s},
        {L"\xFFFD\xFFFE\xFFFF"s, "\xEF\xBF\xBD\xEF\xBF\xBE\xEF\xBF\xBF"s},
        {L"\xFEFFz"s, "\xEF\xBB\xBFz"s},
        {L"\xD800\xDC00"s, "\xF0\x90\x80\x80"s},
        {L"\xD83D\xDE00"s, "\xF0\x9F\x98\x80"s},
        {L"\xDBFF\xDFFF"s, "\xF4\x8F\xBF\xBF"s},
        {L"a\0b\0"s, "a\0b\0"s},
        {L"\0\xE9\0"s, "\0\xC3\xA9\0"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf16_to_utf8(row.wide), row.bytes) << testing::PrintToString(row.wide);
        EXPECT_EQ(utf8_to_utf16(row.bytes), row.wide) << testing::PrintToString(row.bytes);
    }
}

TEST(rova_strings_test, every_character_converts_both_ways)
{
    for (std::uint32_t code = 0; code <= last_character; ++code) {
        if (!is_surrogate(code)) {
            ASSERT_EQ(utf16_to_utf8(units_of(code)), bytes_of(code)) << std::hex << code;
            ASSERT_EQ(utf8_to_utf16(bytes_of(code)), units_of(code)) << std::hex << code;
        }
    }
}

TEST(rova_strings_test, a_single_element_beyond_the_bmp_is_written_as_its_character)
{
    EXPECT_EQ(utf16_to_utf8(L"\U0001F600"), "\xF0\x9F\x98\x80");
    for (std::uint32_t code = 0x10000; code <= last_character; ++code) {
        ASSERT_EQ(utf16_to_utf8(element(code)), bytes_of(code)) << std::hex << code;
    }
}

TEST(rova_strings_test, an_unpaired_surrogate_becomes_the_replacement_character)
{
    for (std::uint32_t code = 0xD800; code <= 0xDFFF; ++code) {
        ASSERT_EQ(utf16_to_utf8(element(code)), "\xEF\xBF\xBD") << std::hex << code;
        ASSERT_EQ(utf16_to_utf8(L"a" + element(code) + L"z"), "a\xEF\xBF\xBDz") << std::hex << code;
    }
}

TEST(rova_strings_test, an_invalid_element_is_replaced_and_its_neighbours_stay)
{
    const text_pair_t rows[] = {
        {L"\xDC00\xD800"s, "\xEF\xBF\xBD\xEF\xBF\xBD"s},
        {L"\xD83D\xD83D\xDE00"s, "\xEF\xBF\xBD\xF0\x9F\x98\x80"s},
        {L"\xD83D\xDE00\xDE00"s, "\xF0\x9F\x98\x80\xEF\xBF\xBD"s},
        {L"\xD800\xE9"s, "\xEF\xBF\xBD\xC3\xA9"s},
        {L"\xD800\0"s, "\xEF\xBF\xBD\0"s},
        // Trail surrogates in the low 16 bits only.
        {L"\xD800\x1DC00"s, "\xEF\xBF\xBD\xF0\x9D\xB0\x80"s},
        {L"\xDBFF\x10DFFF"s, "\xEF\xBF\xBD\xF4\x8D\xBF\xBF"s},
        {L"\xD800" + element(0x11DC00), "\xEF\xBF\xBD\xEF\xBF\xBD"s},
        {L"\xD800" + element(-0x2400), "\xEF\xBF\xBD\xEF\xBF\xBD"s},
        // A lead surrogate in the low 16 bits only.
        {L"\x1D800\xDC00"s, "\xF0\x9D\xA0\x80\xEF\xBF\xBD"s},
        {L"a" + element(0x110000) + L"z", "a\xEF\xBF\xBDz"s},
        {element(0x7FFFFFFF), "\xEF\xBF\xBD"s},
        {element(-1), "\xEF\xBF\xBD"s},
        {element(INT32_MIN), "\xEF\xBF\xBD"s},
        // ASCII in the low 8 bits only.
        {element(INT32_MIN + 'a'), "\xEF\xBF\xBD"s},
        {L"\x161\x10061"s, "\xC5\xA1\xF0\x90\x81\xA1"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf16_to_utf8(row.wide), row.bytes) << testing::PrintToString(row.wide);
    }
}

TEST(rova_strings_test, each_maximal_subpart_of_malformed_utf8_is_replaced_once)
{
    const text_pair_t rows[] = {
        // Trail bytes without a lead byte.
        {replacements(1), "\x80"s},
        {L"a\xFFFD\xFFFDz"s, "a\x80\xBFz"s},
        {L"\xE9\xFFFD"s, "\xC3\xA9\xA9"s},
        // Bytes that are invalid anywhere in UTF-8.
        {replacements(2), "\xC0\xC1"s},
        {replacements(11), "\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF"s},
        {L"a\xFFFDz"s, "a\xFFz"s},
        // Overlong forms.
        {replacements(2), "\xC0\x80"s},
        {replacements(2), "\xC1\xBF"s},
        {replacements(3), "\xE0\x80\x80"s},
        {replacements(3), "\xE0\x9F\xBF"s},
        {replacements(4), "\xF0\x80\x80\x80"s},
        {replacements(4), "\xF0\x8F\xBF\xBF"s},
        {replacements(5), "\xF8\x80\x80\x80\x80"s},
        {replacements(6), "\xFC\x80\x80\x80\x80\x80"s},
        // Surrogates, alone and as a pair.
        {replacements(3), "\xED\xA0\x80"s},
        {replacements(3), "\xED\xBF\xBF"s},
        {replacements(6), "\xED\xA0\xBD\xED\xB8\x80"s},
        // Past the last character.
        {replacements(4), "\xF4\x90\x80\x80"s},
        {replacements(4), "\xF5\x80\x80\x80"s},
        // Truncated by the end, by ASCII, by another character, by a zero.
        {replacements(1), "\xC3"s},
        {replacements(1), "\xE2\x82"s},
        {replacements(1), "\xF0\x9F\x98"s},
        {L"\xFFFDz"s, "\xC3z"s},
        {L"\xFFFD(\xFFFD"s, "\xE2(\xA1"s},
        {L"\xFFFDz"s, "\xE2\x82z"s},
        {L"\xFFFD\0"s, "\xF0\x9F\x98\0"s},
        {L"\xFFFD\x20AC"s, "\xF0\x9F\xE2\x82\xAC"s},
        {replacements(3), "\xC3\xE2\x82\xF0\x9F"s},
        {L"w\xFFFD\xFFFD\xFFFDx\xFFFDy\xFFFD\xFFFDz"s, "w\xF1\x80\x80\xE1\x80\xC2x\x80y\x80\xBFz"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf8_to_utf16(row.bytes), row.wide) << testing::PrintToString(row.bytes);
    }
}

TEST(rova_strings_test, every_surrogate_in_utf8_is_replaced_byte_by_byte)
{
    for (std::uint32_t code = 0xD800; code <= 0xDFFF; ++code) {
        ASSERT_EQ(utf8_to_utf16(bytes_of(code)), replacements(3)) << std::hex << code;
    }
}

TEST(rova_strings_test, utf8_cut_at_any_byte_keeps_the_whole_characters)
{
    const std::uint32_t codes[] = {'a', 0xE9, 0x20AC, 0x1F600, 0xFFFF, 0x10FFFF, 'z'};
    std::string before;
    std::wstring wide_before;
    for (const auto code : codes) {
        const std::string bytes = bytes_of(code);
        EXPECT_EQ(utf8_to_utf16(before), wide_before);
        for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
            const std::string text = before + bytes.substr(0, cut);
            EXPECT_EQ(utf8_to_utf16(text), wide_before + L'\xFFFD') << testing::PrintToString(text);
        }
        before += bytes;
        wide_before += units_of(code);
    }
}

TEST(rova_strings_test, a_character_converts_after_a_run_of_ascii_of_any_length)
{
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string run(length, 'a');
        const std::wstring wide_run(length, L'a');
        EXPECT_EQ(utf16_to_utf8(wide_run + L"\xE9" + wide_run), run + "\xC3\xA9" + run) << length;
        EXPECT_EQ(utf8_to_utf16(run + "\xC3\xA9" + run), wide_run + L"\xE9" + wide_run) << length;
    }
}

TEST(rova_strings_test, a_text_of_the_longest_characters_fits)
{
    const std::size_t count = 10000;
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += "\xF4\x8F\xBF\xBF";
    }
    EXPECT_EQ(utf16_to_utf8(std::wstring(count, static_cast<wchar_t>(last_character))), bytes);
    EXPECT_EQ(utf8_to_utf16(std::string(count, '\xFF')), replacements(count));
}

const upper_pair_t upper_rows[] = {
    {L""s, L""s},
    {L"azAZ09[`{~"s, L"AZAZ09[`{~"s},
    {L"i\x131I\x130"s, L"III\x130"s},
    {L"ma\xDFlos"s, L"MASSLOS"s},
    {L"\xE9\xFF\xB5"s, L"\xC9\x178\x39C"s},
    {L"\x149n"s, L"\x2BCNN"s},
    {L"\x1C4\x1C5\x1C6"s, L"\x1C4\x1C4\x1C4"s},
    {L"\xFB03"s, L"FFI"s},
    // Greek: accents stay, a final sigma is like any other, one letter may become three.
    {L"\x3BC\x3AC\x3C3\x3C2 \x3C3\x3B1"s, L"\x39C\x386\x3A3\x3A3 \x3A3\x391"s},
    {L"\x390"s, L"\x399\x308\x301"s},
    {L"\x1F80"s, L"\x1F08\x399"s},
    {L"\x436\x451"s, L"\x416\x401"s},
    {L"i\x307"s, L"I\x307"s},
    {L"\x6F22\x5B57"s, L"\x6F22\x5B57"s},
    {L"a\0b"s, L"A\0B"s},
    // Deseret and an emoji, as pairs and as native elements.
    {L"\xD801\xDC28\xD83D\xDE00"s, L"\xD801\xDC00\xD83D\xDE00"s},
    {L"\x10428\x1F600"s, L"\xD801\xDC00\xD83D\xDE00"s},
};

TEST(rova_strings_test, to_upper_gives_the_full_upper_case)
{
    for (const auto& row : upper_rows) {
        EXPECT_EQ(to_upper(row.text), row.upper) << testing::PrintToString(row.text);
    }
}

TEST(rova_strings_test, to_upper_of_upper_case_changes_nothing)
{
    for (const auto& row : upper_rows) {
        EXPECT_EQ(to_upper(row.upper), row.upper) << testing::PrintToString(row.upper);
    }
}

TEST(rova_strings_test, to_upper_leaves_invalid_elements_unchanged)
{
    const upper_pair_t rows[] = {
        {L"a\xD800z"s, L"A\xD800Z"s},
        {L"a\xDC00z"s, L"A\xDC00Z"s},
        {L"\xDC28\xD801"s, L"\xDC28\xD801"s},
        {L"\xD801\x10428"s, L"\xD801\xD801\xDC00"s},
        {L"a" + element(0x110000), L"A" + element(0x110000)},
        {element(-1) + L"z", element(-1) + L"Z"},
        {element(INT32_MIN + 'a'), element(INT32_MIN + 'a')},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(to_upper(row.text), row.upper) << testing::PrintToString(row.text);
    }
}

TEST(rova_strings_test, to_upper_does_not_use_turkish_rules_in_a_turkish_process)
{
    expect_upper_in("tr_TR.UTF-8", L"title", L"TITLE");
}

TEST(rova_strings_test, to_upper_keeps_accents_in_a_greek_process)
{
    expect_upper_in("el_GR.UTF-8", L"\x3AC", L"\x386");
}

TEST(rova_strings_test, threads_convert_at_the_same_time)
{
    run_threads(4, [](int) {
        EXPECT_EQ(to_upper(utf8_to_utf16(utf16_to_utf8(L"ma\xDFlos"))), L"MASSLOS");
    });
}

} // namespace
