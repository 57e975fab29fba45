// A message of a log that a start has rewritten is recognized by the texts that a start keeps.

#include "candidate.h"
#include "carried_form.h"
#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmolog;

namespace
{

const char message[] = "<msg tool='t' note='n'><arg name='a'>x</arg><arg name='arg1'>y</arg>"
                       "<e>z</e><type>type</type><severity>ERROR</severity></msg>";

/// Returns whether the second element is the first one, rewritten.
bool is_carried(const std::string& element, const std::string& rewritten)
{
    const auto first = message_of_element(element);
    const auto second = message_of_element(rewritten);
    EXPECT_TRUE(first && second);
    return first && second && is_carried_form(*first, *second);
}

std::string replaced(const std::string& from, const std::string& to)
{
    std::string element = message;
    return element.replace(element.find(from), from.size(), to);
}

class carried_form_test : public testing::Test
{
protected:
    /// Returns the type of the first message, or "none".
    std::string first_type_of(const std::string& log) const
    {
        m_folder.write("log.xml", log);
        const descriptor_t file = open_regular_file(m_folder.name("log.xml"));
        const auto first = first_message(file);
        return first ? ROVA_2_18::strings::utf16_to_utf8(first->get_type()) : "none";
    }

    scratch_folder_t m_folder;
};

} // namespace

TEST_F(carried_form_test, a_message_is_its_own_carried_form)
{
    EXPECT_TRUE(is_carried(message, message));
}

TEST_F(carried_form_test, a_plain_text_that_differs_is_that_of_another_message)
{
    EXPECT_FALSE(is_carried(message, replaced("ERROR", "INFO")));
    EXPECT_FALSE(is_carried(message, replaced("<type>type", "<type>other")));
    EXPECT_FALSE(is_carried(message, replaced("note='n'", "note='m'")));
    EXPECT_FALSE(is_carried(message, replaced(" note='n'", "")));
    EXPECT_FALSE(is_carried(message, replaced("name='a'>x", "name='a'>w")));
    EXPECT_FALSE(is_carried(message, replaced("<arg name='a'>x</arg>", "")));
    EXPECT_FALSE(is_carried(message, replaced("<e>z</e>", "<e>w</e>")));
    EXPECT_FALSE(is_carried(message, replaced("<e>z</e>", "<f>z</f>")));
}

TEST_F(carried_form_test, what_is_added_does_not_count)
{
    EXPECT_TRUE(is_carried(message, replaced("<e>", "<f>w</f><e>")));
}

TEST_F(carried_form_test, an_argument_that_a_start_can_add_to_does_not_count)
{
    EXPECT_TRUE(is_carried(message, replaced("name='arg1'>y", "name='arg1'>w")));
}

TEST_F(carried_form_test, texts_that_a_start_can_change_do_not_count)
{
    for (const std::string text :
         {"", "a &amp; b", "&lt;", "&gt;", "&quot;", "\u00C4", "&#10;", "a&#127;"}) {
        EXPECT_TRUE(is_carried(replaced("name='a'>x", "name='a'>" + text), message)) << text;
        EXPECT_TRUE(is_carried(replaced("<e>z", "<e>" + text), message)) << text;
        EXPECT_TRUE(is_carried(replaced("note='n'", "note='" + text + "'"), message)) << text;
        EXPECT_TRUE(is_carried(replaced("<type>type", "<type>" + text), message)) << text;
        EXPECT_TRUE(is_carried(replaced("name='a'", "name='" + text + "'"), message)) << text;
    }
}

TEST_F(carried_form_test, the_first_message_can_follow_damage)
{
    EXPECT_EQ(first_type_of("<log><msg><type>a</type></msg></log>"), "a");
    EXPECT_EQ(first_type_of("<log>& &<msg><type>a</type></msg></log>"), "a");
    EXPECT_EQ(first_type_of("<log>&</log>"), "none");
    EXPECT_EQ(first_type_of("<log><msg><type>a</ty"), "none");
    EXPECT_EQ(first_type_of(""), "none");
}
