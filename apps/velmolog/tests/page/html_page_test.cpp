#include "html_page.h"

#include "page_data.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <sstream>

using namespace velmolog;
using velmoext_1_4_8::message_t;

static entry_t entry_of(const message_t::message_content_t& content, std::int64_t offset = 73)
{
    const auto message = boost::make_shared<message_t>();
    message->set_severity(message_t::error);
    message->set_type(L"lost");
    message->set_content(content);
    return {"a.xml", {offset, offset / 10}, message, "", ""};
}

static std::string page_of(const message_t::message_content_t& content, const texts_t& texts)
{
    std::ostringstream stream;
    html_page_t page(stream, {}, "a.xml");
    page.add(entry_of(content), {texts});
    page.finish();
    return stream.str();
}

TEST(html_page_test, a_row_has_all_of_a_message)
{
    const auto data = data_of(page_of(
        {{{L"b", L"2"}, {L"a", L"1"}}, {{L"source", L"disk"}}, {{L"note", L"n"}}, 1}, {"T", "t"}));
    EXPECT_EQ(nlohmann::json::parse("[[0,1],[2],[3]]"), data["shapes"][0]);
    EXPECT_EQ("a", data["strings"][0]);
    EXPECT_EQ("note", data["strings"][2]);
    EXPECT_EQ("source", data["strings"][3]);
    ASSERT_EQ(13U, data["rows"].size());
    EXPECT_EQ("a.xml", text_at(data, 1));
    EXPECT_EQ(73, data["rows"][2]);
    EXPECT_EQ(7, data["rows"][3]);
    EXPECT_EQ(3, data["rows"][4]);
    EXPECT_EQ("lost", text_at(data, 5));
    EXPECT_EQ("disk", text_at(data, 6));
    EXPECT_EQ("1", text_at(data, 7));
    EXPECT_EQ("2", text_at(data, 8));
    EXPECT_EQ("n", text_at(data, 9));
    EXPECT_EQ("disk", text_at(data, 10));
    EXPECT_EQ("T", text_at(data, 11));
    EXPECT_EQ("t", text_at(data, 12));
}

TEST(html_page_test, positions_are_differences)
{
    std::ostringstream stream;
    html_page_t page(stream, {}, "a.xml");
    for (const std::int64_t offset : {73, 173, 20})
        page.add(entry_of({}, offset), {{"", "t"}});
    page.finish();
    const auto rows = data_of(stream.str())["rows"];
    ASSERT_EQ(27U, rows.size());
    EXPECT_EQ(73, rows[2]);
    EXPECT_EQ(100, rows[11]);
    EXPECT_EQ(-153, rows[20]);
}

TEST(html_page_test, no_text_ends_the_element_of_the_data)
{
    const std::string end = "</script><!--<script>";
    const std::string page = page_of({{{L"</script>", L"</SCRIPT >"}}, {}, {}, 1}, {end, end});
    for (const char* const id : {"data", "strings"})
        EXPECT_EQ(std::string::npos, element_of(page, id).find('<')) << id;
    EXPECT_NE(std::string::npos, element_of(page, "strings").find("\\u003c/SCRIPT"));
    EXPECT_EQ(end, text_at(data_of(page), 8));
}

TEST(html_page_test, malformed_text_is_replaced)
{
    const auto data = data_of(page_of({{{L"a", std::wstring(1, 0xD800)}}, {}, {}, 1},
                                      {std::string("zero\0", 5), "byte \xFF"}));
    EXPECT_EQ("\xEF\xBF\xBD", text_at(data, 7));
    EXPECT_EQ(std::string("zero\0", 5), text_at(data, 8));
    EXPECT_EQ("byte \xEF\xBF\xBD", text_at(data, 9));
}

TEST(html_page_test, rows_are_written_while_they_are_added)
{
    std::ostringstream stream;
    html_page_t page(stream, {}, "a.xml");
    page.add(entry_of({}), {{"", "t"}});
    const auto one = stream.tellp();
    for (int i = 0; i < 1000; ++i)
        page.add(entry_of({}), {{"", "t"}});
    EXPECT_GT(stream.tellp() - one, 1000 * 9);
}

TEST(html_page_test, a_page_without_messages_is_a_page)
{
    std::ostringstream stream;
    html_page_t page(stream, {"de", "en"}, "a.xml");
    page.set_first_language(1);
    page.finish();
    const auto data = data_of(stream.str());
    EXPECT_TRUE(data["rows"].empty());
    EXPECT_EQ(nlohmann::json({"de", "en"}), data["languages"]);
    EXPECT_EQ(1, data["language"]);
    EXPECT_EQ("a.xml", data["title"]);
}
