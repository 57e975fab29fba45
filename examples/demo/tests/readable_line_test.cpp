#include "readable_line.h"

#include "catalogs.h"
#include "library_names.h"
#include "plain_line.h"

#include <rova/strings.h>
#include <velmoext1/config_reader.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace audit
{
namespace
{

using velmoext::config_reader_t;
using velmoext::message_t;
using velmoext::velmo_ex_t;
typedef std::map<std::wstring, std::wstring> args_t;

std::wstring shared(const char* name)
{
    return rova::strings::utf8_to_utf16(std::string(SHARE "/") + name);
}

class readable_line_test : public testing::Test
{
protected:
    readable_line_test()
    {
        m_reader->set_cfg_dir(shared("config"));
        bind_catalogs(shared("locale"), "en");
    }

    static boost::shared_ptr<message_t> make(const std::wstring& type, const args_t& args,
                                             message_t::severity_t severity = message_t::warning)
    {
        message_t::message_content_t content;
        content.args = args;
        auto message = boost::make_shared<message_t>();
        message->set_type(type);
        message->set_severity(severity);
        message->set_content(content);
        message->set_source(L"audit");
        return message;
    }

    static std::string line_of(const boost::shared_ptr<message_t>& message,
                               const std::wstring& prefix = L"console")
    {
        return readable_line(velmo_ex_t::get(velmo_ex_t::generate_id(L"t"), prefix), message);
    }

    const boost::shared_ptr<config_reader_t> m_reader = config_reader_t::get();
};

TEST_F(readable_line_test, a_message_has_severity_title_and_text)
{
    EXPECT_EQ(line_of(make(L"file_empty", {{L"path", L"/a"}})), "warning: Content: /a is empty.");
}

TEST_F(readable_line_test, numbers_and_plurals_follow_the_language)
{
    const auto one = make(L"file_large", {{L"path", L"/a"}, {L"size", L"1"}});
    const auto many = make(L"file_large", {{L"path", L"/a"}, {L"size", L"1234567"}});
    EXPECT_EQ(line_of(one), "warning: Content: /a has 1 byte.");
    EXPECT_EQ(line_of(many), "warning: Content: /a has 1,234,567 bytes.");
    bind_catalogs(shared("locale"), "de");
    EXPECT_EQ(line_of(one), "Warnung: Inhalt: /a hat 1 Byte.");
    EXPECT_EQ(line_of(many), "Warnung: Inhalt: /a hat 1.234.567 Bytes.");
}

TEST_F(readable_line_test, a_mode_keeps_its_leading_zero)
{
    EXPECT_EQ(line_of(make(L"file_world_writable", {{L"path", L"/a"}, {L"mode", L"0666"}},
                           message_t::error)),
              "error: Access rights: /a can be changed by everybody (mode 0666).");
}

TEST_F(readable_line_test, the_console_has_texts_and_titles_of_its_own)
{
    const auto seen = make(L"file_seen", {{L"path", L"/a"}, {L"size", L"2"}, {L"mode", L"0644"}},
                           message_t::info);
    EXPECT_EQ(line_of(seen), "info: File: /a (2 bytes, 0644)");
    EXPECT_EQ(line_of(seen, L"other"), "info: File: /a has 2 bytes and the mode 0644.");
    const auto summary = make(L"tree_summary", {{L"path", L"/a"}}, message_t::info);
    EXPECT_EQ(line_of(summary).rfind("info: Tree /a: ", 0), 0U);
    EXPECT_EQ(line_of(summary, L"other").rfind("info: Summary: ", 0), 0U);
}

TEST_F(readable_line_test, a_message_without_a_text_is_shown_as_it_is)
{
    const auto unknown = make(L"disk_lost", {{L"path", L"/a"}});
    EXPECT_EQ(line_of(unknown), plain_line(*unknown));
    const auto foreign = boost::make_shared<message_t>();
    foreign->set_type(L"file_empty");
    foreign->set_source(L"other");
    EXPECT_EQ(line_of(foreign), plain_line(*foreign));
    EXPECT_EQ(line_of(boost::make_shared<message_t>()), "0 \"\" \"\"");
}

TEST_F(readable_line_test, without_catalogs_every_message_is_shown_as_it_is)
{
    bind_catalogs(shared("none"), "en");
    const auto message = make(L"file_empty", {{L"path", L"/a"}});
    EXPECT_EQ(line_of(message), plain_line(*message));
}

TEST_F(readable_line_test, without_a_configured_title_the_text_is_shown_alone)
{
    m_reader->set_cfg_dir(shared("none"));
    EXPECT_EQ(line_of(make(L"file_empty", {{L"path", L"/a"}})), "warning: /a is empty.");
}

TEST_F(readable_line_test, a_severity_without_a_name_is_a_number)
{
    const auto message =
        make(L"file_empty", {{L"path", L"/a"}}, static_cast<message_t::severity_t>(-7));
    EXPECT_EQ(line_of(message), "-7: Content: /a is empty.");
}

TEST_F(readable_line_test, no_part_of_a_message_reaches_the_terminal_raw)
{
    EXPECT_EQ(line_of(make(L"file_empty", {{L"path", L"/\x1b]0;x\a\n\x202E"}})),
              "warning: Content: /\\x1b]0;x\\x07\\x0a\\xe2\\x80\\xae is empty.");
}

TEST_F(readable_line_test, quotation_marks_stay)
{
    EXPECT_EQ(line_of(make(L"file_empty", {{L"path", L"/\"a\""}})),
              "warning: Content: /\"a\" is empty.");
}

TEST_F(readable_line_test, an_error_without_a_text_is_shown_by_its_name)
{
    EXPECT_EQ(line_of(make(L"file_unreadable", {{L"path", L"/a"}, {L"error", L"EXDEV"}})),
              "warning: Access rights: /a cannot be read: EXDEV.");
}

TEST_F(readable_line_test, a_value_cannot_be_a_placeholder)
{
    EXPECT_EQ(line_of(make(L"link_dangling", {{L"path", L"{target}"}, {L"target", L"'{x}'"}})),
              "warning: Symbolic link: {target} leads to '{x}', which is not there.");
}

TEST_F(readable_line_test, a_missing_argument_keeps_its_placeholder)
{
    EXPECT_EQ(line_of(make(L"link_dangling", {{L"path", L"/a"}})),
              "warning: Symbolic link: /a leads to {target}, which is not there.");
}

} // namespace
} // namespace audit
