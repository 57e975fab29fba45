#include "html_report.h"

#include "catalog_languages.h"
#include "catalog_support.h"
#include "page_data.h"

#include <velmoext1/extended_message.h>
#include <velmoext1/velmo_ex.h>

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include <filesystem>
#include <sstream>

using namespace velmolog;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;
using namespace velmoext_1_4_8;

namespace
{

/// Creates pages with the texts of catalogs in three languages.
class reporter_t
{
public:
    reporter_t()
    {
        m_catalogs.make("en", "disk", po_of({{"full", "{path} is full"}}));
        m_catalogs.make("de", "disk", po_of({{"full", "{path} voll"}}));
        m_catalogs.make("sr@latin", "disk", po_of({{"full", "{path} je pun"}}));
    }

    const catalogs_t& catalogs() const { return m_catalogs; }
    std::string directory() const { return utf16_to_utf8(m_catalogs.directory()); }
    int selected() const { return m_selected; }

    std::string page_of(const std::vector<std::string>& languages, int count)
    {
        std::ostringstream stream;
        html_page_t page(stream, languages, "a.xml");
        html_report_t report(
            page, languages,
            [this](const std::string& language) {
                m_catalogs.bind(utf8_to_utf16(language));
                ++m_selected;
            },
            [this](const entry_t& entry) { return present(entry); });
        for (int i = 0; i < count; ++i)
            report.add(make_entry(i));
        report.finish();
        return stream.str();
    }

private:
    texts_t present(const entry_t& entry) const
    {
        extended_message_t extended(m_ex, entry.message);
        return {"", utf16_to_utf8(extended.get_text())};
    }

    static entry_t make_entry(int i)
    {
        const auto message = boost::make_shared<message_t>();
        message->set_type(L"full");
        message->set_content({{{L"path", L"/m/" + std::to_wstring(i)}}, {}, {}, 1});
        message->set_source(L"disk");
        return {"a.xml", {i, i}, message, "", ""};
    }

    catalogs_t m_catalogs;
    boost::shared_ptr<velmo_ex_t> m_ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"page"), L"");
    int m_selected = 0;
};

} // namespace

TEST(html_report_test, each_message_has_its_text_in_every_language)
{
    reporter_t reporter;
    const auto data = data_of(reporter.page_of({"de", "en", "sr@latin"}, 10001));
    const std::size_t row = 7 + 2 + 6;
    ASSERT_EQ(10001 * row, data["rows"].size());
    for (const std::size_t i : {0UL, 1UL, 9999UL, 10000UL}) {
        EXPECT_EQ("/m/" + std::to_string(i), text_at(data, i * row + 7));
        const std::string mark = "\x7F"
                                 "a\x7F";
        EXPECT_EQ(mark + " voll", text_at(data, i * row + 10));
        EXPECT_EQ(mark + " is full", text_at(data, i * row + 12));
        EXPECT_EQ(mark + " je pun", text_at(data, i * row + 14));
    }
    EXPECT_EQ(6, reporter.selected());
}

TEST(html_report_test, without_languages_none_is_selected)
{
    reporter_t reporter;
    reporter.catalogs().bind(L"en");
    const auto data = data_of(reporter.page_of({}, 2));
    EXPECT_EQ(0, reporter.selected());
    EXPECT_EQ("\x7F"
              "a\x7F is full",
              text_at(data, 10));
}

TEST(html_report_test, folders_with_catalogs_are_languages)
{
    const reporter_t reporter;
    const std::string directory = reporter.directory();
    std::filesystem::create_directories(directory + "/fr/LC_MESSAGES");
    std::filesystem::create_directories(directory + "/it/LC_MESSAGES/disk.mo");
    for (const char* const folder : {"EN", "no such locale", "_", "templates", "de-AT"})
        reporter.catalogs().make(folder, "disk", po_of({{"full", "x"}}));
    EXPECT_EQ(std::vector<std::string>({"de", "en", "sr@latin"}), catalog_languages(directory));
}

TEST(html_report_test, a_missing_directory_has_no_languages)
{
    EXPECT_TRUE(catalog_languages("/missing").empty());
}

TEST(html_report_test, a_locale_shows_the_language_that_it_falls_back_to)
{
    const std::vector<std::string> languages = {"de", "en", "en_GB", "sr@latin"};
    EXPECT_EQ(0U, index_of_language(languages, "de_AT.UTF-8"));
    EXPECT_EQ(1U, index_of_language(languages, "en_US"));
    EXPECT_EQ(2U, index_of_language(languages, "en_GB.UTF-8"));
    EXPECT_EQ(3U, index_of_language(languages, "sr_Latn_RS"));
    EXPECT_EQ(0U, index_of_language(languages, "fr"));
    EXPECT_EQ(0U, index_of_language(languages, ""));
}
