#include "xml/encodings.h"

#include "repeated_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace velmoext_1_4_8;

namespace
{

std::string converted(const std::string& text, const std::string& encoding)
{
    std::string utf8 = "former";
    return convert_to_utf8(text, encoding, utf8) ? utf8 : "unknown, " + utf8;
}

} // namespace

TEST(encodings_test, the_declared_encoding_is_found)
{
    for (const char* const declaration :
         {"<?xml version='1.0' encoding='x-Y'?>", "<?xml version=\"1.0\" encoding=\"x-Y\" ?><a/>",
          "<?xml version='1.0'\n encoding\t=\r'x-Y' standalone='yes'?>",
          "\xEF\xBB\xBF<?xml version='1.0' encoding='x-Y'?>"})
        EXPECT_EQ(declared_encoding(declaration), "x-Y") << declaration;
}

TEST(encodings_test, no_encoding_is_found_without_a_declaration)
{
    for (const char* const document :
         {"", "<", "<?xml", "<?xml encoding='a'", "<?xml version='1.0'?><a encoding='b'/>",
          "<a encoding='b'/>", "<?xml-a encoding='b'?>", "<?p encoding='b'?>",
          " <?xml version='1.0' encoding='a'?>", "<!--?xml encoding='a'?-->", "</xml encoding='a'>",
          "<xml encoding='a'/>", "\xEF\xBB<?xml encoding='a'?>",
          "\xEF\xBB\xBF\xEF\xBB\xBF<?xml encoding='a'?>", "<?xml version='1.0' a='encoding'?>",
          "<?xml encoding=a?>", "<?xml version='encoding=\"a\"'?>"})
        EXPECT_EQ(declared_encoding(document), "") << document;
}

TEST(encodings_test, a_declared_encoding_must_be_a_valid_name)
{
    const auto declared = [](const std::string& name) {
        return declared_encoding("<?xml version='1.0' encoding='" + name + "'?>");
    };
    for (const char* const name : {"a", "z", "A", "Z", "azAZ09._-", "UTF-8"})
        EXPECT_EQ(declared(name), name);
    for (const char* const name : {"", "0", ".a", "_a", "-a", "a b", " a", "a/b", "a:b", "a@", "a[",
                                   "a`", "a{", "\xC3\xA9", "a\xC3\xA9"})
        EXPECT_EQ(declared(name), "") << name;
}

TEST(encodings_test, a_text_in_any_known_encoding_is_converted)
{
    EXPECT_EQ(converted("<a>\xE9</a>", "ISO-8859-1"), "<a>\xC3\xA9</a>");
    EXPECT_EQ(converted("\x80", "windows-1252"), "\xE2\x82\xAC");
    EXPECT_EQ(converted("\x93\xFA\x96{", "Shift_JIS"), "\xE6\x97\xA5\xE6\x9C\xAC");
    EXPECT_EQ(converted("\xD6\xD0", "GBK"), "\xE4\xB8\xAD");
    EXPECT_EQ(converted("\x1B$B;0\x1B(B", "ISO-2022-JP"), "\xE4\xB8\x89");
    EXPECT_EQ(converted("abc", "US-ASCII"), "abc");
    EXPECT_EQ(converted("", "GBK"), "");
}

TEST(encodings_test, a_long_text_is_converted_wherever_its_characters_are)
{
    // A character of two bytes, after an odd and an even number of others.
    for (const char* const before : {"", "x"}) {
        const std::string text = before + repeated("\xD6\xD0", 150000);
        EXPECT_TRUE(converted(text, "GBK") == before + repeated("\xE4\xB8\xAD", 150000)) << before;
    }
    EXPECT_TRUE(converted(repeated("\xE9", 1000000), "ISO-8859-1") ==
                repeated("\xC3\xA9", 1000000));
}

TEST(encodings_test, the_conversion_ends_at_a_byte_that_is_invalid_in_the_encoding)
{
    EXPECT_EQ(converted("abc\xFFxyz", "GBK"), "abc");
    EXPECT_EQ(converted("abc\xE9xyz", "US-ASCII"), "abc");
    const std::string before = repeated("\xD6\xD0", 100000);
    EXPECT_TRUE(converted(before + "\xFF" + before, "GBK") == repeated("\xE4\xB8\xAD", 100000));
    EXPECT_EQ(converted("abc\xD6", "GBK"), "abc");
}

TEST(encodings_test, nothing_is_printed)
{
    testing::internal::CaptureStderr();
    converted("abc\xFFxyz", "GBK");
    converted("abc", "x-unknown");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(encodings_test, an_unknown_encoding_leaves_the_result_as_it_was)
{
    for (const char* const encoding : {"x-unknown", "UTF-9", "a b"})
        EXPECT_EQ(converted("abc", encoding), "unknown, former") << encoding;
}
