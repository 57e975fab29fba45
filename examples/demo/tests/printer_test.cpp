#include "printer.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <rova/strings.h>
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

    std::vector<std::string> m_lines;
    boost::shared_ptr<progress_stub_t> m_progress = boost::make_shared<progress_stub_t>();
    printer_t m_printer{[](const auto& /*ex*/, const auto& message) {
                            return rova::strings::utf16_to_utf8(message->get_type());
                        },
                        [this](const std::string& line) {
                            m_lines.push_back(line);
                        }};
};

TEST_F(printer_test, a_message_is_printed_as_one_line_and_consumed)
{
    EXPECT_TRUE(print(make(message_t::error, L"file_lost", {})));
    EXPECT_EQ(m_lines, std::vector<std::string>{"file_lost"});
}

TEST_F(printer_test, a_text_that_is_not_a_message_is_passed_on_without_a_line)
{
    EXPECT_FALSE(print(nullptr));
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(printer_test, progress_goes_to_the_host_and_prints_no_line)
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
