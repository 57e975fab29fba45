#include "printer.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <velmo2/progress.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace audit
{
namespace
{

using velmoext::message_t;
using velmoext::progress_message_t;
typedef std::map<std::wstring, std::wstring> args_t;

class progress_stub_t : public velmo2::IProgress
{
public:
    void set_percent(int percent) override { percents.push_back(percent); }
    bool is_canceled() const override { return false; }

    std::vector<int> percents;
};

class printer_test : public testing::Test
{
protected:
    boost::shared_ptr<message_t> make(message_t::severity_t severity, const std::wstring& type,
                                      const args_t& args)
    {
        message_t::message_content_t content;
        content.args = args;
        auto message = boost::make_shared<message_t>();
        message->set_severity(severity);
        message->set_type(type);
        message->set_content(content);
        message->set_source(L"here");
        return message;
    }

    bool print(const boost::shared_ptr<message_t>& message)
    {
        return m_printer.on_message(nullptr, message);
    }

    bool print_progress(const boost::shared_ptr<message_t>& message)
    {
        const auto progress = boost::make_shared<progress_message_t>();
        progress->set_message(message);
        progress->set_progress(m_progress);
        return m_printer.on_message(nullptr, progress);
    }

    std::string line_of(const args_t& args)
    {
        print(make(message_t::info, L"type", args));
        return m_lines.back();
    }

    std::vector<std::string> m_lines;
    boost::shared_ptr<progress_stub_t> m_progress = boost::make_shared<progress_stub_t>();
    printer_t m_printer{[this](const std::string& line) {
        m_lines.push_back(line);
    }};
};

TEST_F(printer_test, a_message_is_one_line_and_consumed)
{
    EXPECT_TRUE(print(make(message_t::error, L"file_lost", {{L"path", L"/a"}, {L"count", L"3"}})));
    EXPECT_EQ(m_lines, std::vector<std::string>{"error file_lost here count=3 path=/a"});
}

TEST_F(printer_test, each_severity_is_shown_by_name_and_any_other_as_a_number)
{
    for (const int severity : {0, 1, 2, 3, 4, -7})
        print(make(static_cast<message_t::severity_t>(severity), L"t", {}));
    EXPECT_EQ(m_lines, (std::vector<std::string>{"0 t here", "info t here", "warning t here",
                                                 "error t here", "critical t here", "-7 t here"}));
}

TEST_F(printer_test, a_text_that_is_no_message_is_passed_on_unseen)
{
    EXPECT_FALSE(print(nullptr));
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(printer_test, an_empty_message_is_a_line_of_empty_fields)
{
    EXPECT_TRUE(print(boost::make_shared<message_t>()));
    EXPECT_EQ(m_lines.back(), "0 \"\" \"\"");
}

TEST_F(printer_test, what_could_be_taken_apart_is_quoted)
{
    EXPECT_EQ(line_of({{L"a", L"b c"}}), "info type here a=\"b c\"");
    EXPECT_EQ(line_of({{L"a", L""}}), "info type here a=\"\"");
    EXPECT_EQ(line_of({{L"a=b", L"c=d"}}), "info type here \"a=b\"=\"c=d\"");
    EXPECT_EQ(line_of({{L"a b", L"c"}}), "info type here \"a b\"=c");
}

TEST_F(printer_test, a_value_cannot_end_its_quotation_marks)
{
    EXPECT_EQ(line_of({{L"a", L"x\" b=\"y"}}), R"(info type here a="x\x22 b=\x22y")");
}

TEST_F(printer_test, no_part_of_a_message_reaches_the_terminal_raw)
{
    const auto message = make(message_t::info, L"t\x1b]0;x\a", {{L"n\n", L"v\x9b\x202E"}});
    message_t::message_content_t content = message->get_content();
    content.attributes[L"source"] = L"s\r";
    message->set_content(content);
    print(message);
    EXPECT_EQ(m_lines.back(), R"(info t\x1b]0;x\x07 s\x0d n\x0a=v\xc2\x9b\xe2\x80\xae)");
}

TEST_F(printer_test, text_is_shown_in_utf8)
{
    EXPECT_EQ(line_of({{L"a", {wchar_t{0xE4}, wchar_t{0xD83D}, wchar_t{0xDE00}}}}),
              "info type here a=\xc3\xa4\xf0\x9f\x98\x80");
}

TEST_F(printer_test, progress_goes_to_the_host_and_is_no_line)
{
    EXPECT_TRUE(print_progress(make(message_t::info, L"t", {{L"percent", L"42"}})));
    EXPECT_EQ(m_progress->percents, std::vector<int>{42});
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(printer_test, progress_stays_between_0_and_100)
{
    for (const wchar_t* const text : {L"-1", L"101", L"99999999999999999999", L"half", L""})
        print_progress(make(message_t::info, L"t", {{L"percent", text}}));
    EXPECT_EQ(m_progress->percents, (std::vector<int>{0, 100, 100, 0, 0}));
}

TEST_F(printer_test, progress_without_a_message_is_passed_on)
{
    EXPECT_FALSE(print_progress(nullptr));
    EXPECT_FALSE(m_printer.on_message(nullptr, boost::shared_ptr<progress_message_t>()));
    EXPECT_TRUE(m_progress->percents.empty());
}

} // namespace
} // namespace audit
