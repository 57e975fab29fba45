#include <velmoext1/readable_text.h>

#include "catalog_support.h"
#include "support.h"

#include <velmoext1/config_reader.h>

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

namespace
{

/// A message of type "file_large" with two arguments, from the source "audit".
class readable_text_test : public testing::Test
{
protected:
    readable_text_test()
    {
        m_message->set_content(
            make_content({{L"tool", L"audit"}}, {{L"path", L"/a"}, {L"size", L"4096"}}));
    }

    // Creates catalogs in English with these texts.
    void make_catalog(const po_entries_t& entries)
    {
        m_catalogs.make("en", "audit", po_of(entries));
        ASSERT_TRUE(m_catalogs.bind(L"en"));
    }

    std::wstring text() const { return readable_text(m_ex, m_message); }

    catalogs_t m_catalogs;
    const boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"readable_text_test."), L"p");
    const message_ptr_t m_message = make_message(L"file_large", message_t::warning);
};

} // namespace

TEST_F(readable_text_test, a_text_of_a_catalog_is_shown)
{
    make_catalog({{"file_large", "The file {path} is large."}});
    EXPECT_EQ(text(), L"The file /a is large.");
}

TEST_F(readable_text_test, a_title_precedes_the_text)
{
    // No title is configured, so the text of the empty id is used: a registered catalog has one.
    struct catalog_t : ROVA_2_18::i18n::catalog_t
    {
        ROVA_2_18::i18n::message_t message(const std::wstring& id) const override
        {
            return ROVA_2_18::i18n::message_t(id.empty() ? L"Large file" : L"{path} is large.");
        }
    };
    m_catalogs.add(L"audit", boost::make_shared<catalog_t>());
    EXPECT_EQ(text(), L"Large file: /a is large.");
}

TEST_F(readable_text_test, without_a_text_the_type_and_the_arguments_are_shown)
{
    EXPECT_EQ(text(), L"file_large path=/a size=4096");
    EXPECT_EQ(plain_text(*m_message), L"file_large path=/a size=4096");
}

TEST_F(readable_text_test, the_text_of_an_empty_message_is_not_empty)
{
    EXPECT_EQ(plain_text(message_t()), L"message");
    EXPECT_EQ(readable_text(m_ex, boost::make_shared<message_t>()), L"message");
}
