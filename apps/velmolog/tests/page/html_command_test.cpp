#include "commands.h"

#include "catalog_support.h"
#include "page_data.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace velmolog;
using ROVA_2_18::strings::utf16_to_utf8;

namespace
{

/// A log and message catalogs, of which `velmolog html` writes a page.
class html_runner_t
{
public:
    explicit html_runner_t(const std::string& messages)
    {
        m_catalogs.make("en", "disk", po_of({{"full", "{path} is full"}}));
        m_catalogs.make("de", "disk", po_of({{"full", "{path} voll"}}));
        m_folder.write("a.xml", "<?xml version='1.0'?>\n<log>\n" + messages);
        m_options.command = command_t::html;
        m_options.logs = {m_folder.name("a.xml")};
        m_options.output = m_folder.name("a.html");
    }

    options_t& options() { return m_options; }
    const scratch_folder_t& folder() const { return m_folder; }

    void use_catalogs(const std::string& language)
    {
        m_options.catalogs.locale_directory = utf16_to_utf8(m_catalogs.directory());
        m_options.catalogs.config_directory = m_folder.name("");
        m_options.catalogs.language = language;
    }

    exit_status_t run() const
    {
        std::ostringstream output;
        const exit_status_t status = html(m_options, output);
        EXPECT_EQ("", output.str());
        return status;
    }

    nlohmann::json data() const { return data_of(m_folder.read("a.html")); }

private:
    catalogs_t m_catalogs;
    scratch_folder_t m_folder;
    options_t m_options;
};

std::string message_with(const std::string& path)
{
    return "<msg tool='disk'><type>full</type><arg name='path'>" + path + "</arg></msg>\n";
}

constexpr std::size_t row_of_two_languages = 7 + 2 + 4;

} // namespace

TEST(html_command_test, a_page_has_texts_in_each_language_of_the_catalogs)
{
    html_runner_t runner(message_with("/m/1") + "</log>\n");
    runner.use_catalogs("en_US.UTF-8");
    EXPECT_EQ(fine, runner.run());
    const auto data = runner.data();
    EXPECT_EQ(nlohmann::json({"de", "en"}), data["languages"]);
    EXPECT_EQ(1, data["language"]);
    EXPECT_EQ(runner.options().logs.front(), data["title"]);
    ASSERT_EQ(row_of_two_languages, data["rows"].size());
    EXPECT_EQ("/m/1", text_at(data, 7));
    EXPECT_EQ("\x7F"
              "a\x7F voll",
              text_at(data, 10));
    EXPECT_EQ("\x7F"
              "a\x7F is full",
              text_at(data, 12));
}

TEST(html_command_test, without_catalogs_the_text_is_type_and_arguments)
{
    html_runner_t runner(message_with("/m/1") + "</log>\n");
    EXPECT_EQ(fine, runner.run());
    EXPECT_TRUE(runner.data()["languages"].empty());
    EXPECT_EQ("full path=\x7F"
              "a\x7F",
              text_at(runner.data(), 10));
}

TEST(html_command_test, filters_compare_texts_in_the_language_that_is_asked_for)
{
    std::string messages;
    for (int i = 0; i < 10005; ++i)
        messages += message_with("/m/" + std::to_string(i));
    html_runner_t runner(messages + "</log>\n");
    runner.use_catalogs("de");
    runner.options().filter.wanted.texts = {"*voll"};
    EXPECT_EQ(fine, runner.run());
    EXPECT_EQ(10005 * row_of_two_languages, runner.data()["rows"].size());
}

TEST(html_command_test, the_last_messages_are_those_of_the_page)
{
    html_runner_t runner(message_with("/m/1") + message_with("/m/2") + "</log>\n");
    runner.options().last = 1;
    EXPECT_EQ(fine, runner.run());
    EXPECT_EQ("/m/2", text_at(runner.data(), 7));
}

TEST(html_command_test, damage_is_reported_and_the_page_is_whole)
{
    html_runner_t runner(message_with("/m/1") + "<msg></damage>\n" + message_with("/m/2") +
                         "</log>\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(found, runner.run());
    EXPECT_NE("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("/m/2", text_at(runner.data(), 11 + 7));
}

TEST(html_command_test, a_file_is_not_overwritten)
{
    html_runner_t runner(message_with("/m/1") + "</log>\n");
    runner.folder().write("a.html", "mine");
    EXPECT_THROW(runner.run(), usage_error_t);
    EXPECT_EQ("mine", runner.folder().read("a.html"));
}
