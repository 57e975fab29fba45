#include "consumer.h"

#include "library_names.h"
#include "severity_name.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace audit
{
namespace
{

using velmoext::message_t;

std::string severity_of(const boost::shared_ptr<velmoext::velmo_ex_t>& /*ex*/,
                        const boost::shared_ptr<message_t>& message)
{
    return severity_name(message->get_severity());
}

class consumer_test : public testing::Test
{
protected:
    void say(const std::wstring& text) { m_consumer.messenger().say(velmo2::info, text.c_str()); }

    void say(message_t::severity_t severity)
    {
        const auto message = boost::make_shared<message_t>();
        message->set_type(L"t");
        message->set_severity(severity);
        say(velmoext::velmo_adapter_t().encode_to_velmo(message));
    }

    std::vector<std::string> m_lines;
    consumer_t m_consumer{message_t::error, severity_of, [this](const std::string& line) {
                              m_lines.push_back(line);
                          }};
};

TEST_F(consumer_test, shows_messages_of_the_least_severity_and_above)
{
    for (const auto severity :
         {message_t::critical, message_t::warning, message_t::error, message_t::info})
        say(severity);
    EXPECT_EQ(m_lines, (std::vector<std::string>{"critical", "error"}));
}

TEST_F(consumer_test, a_text_that_is_not_a_message_is_ignored)
{
    for (const wchar_t* const text : {L"", L"hello", L"<msg", L"<other/>"})
        say(text);
    say(message_t::error);
    EXPECT_EQ(m_lines, std::vector<std::string>{"error"});
}

TEST_F(consumer_test, the_configuration_is_kept_from_one_message_to_the_next)
{
    velmoext::config_reader_t::get()->set_cfg_dir(L"kept");
    say(message_t::error);
    EXPECT_EQ(velmoext::config_reader_t::get()->get_cfg_dir(), basekit2::path_t(L"kept"));
}

TEST_F(consumer_test, two_consumers_do_not_see_each_other_s_messages)
{
    consumer_t other(message_t::info, severity_of,
                     [](const std::string& line) { ADD_FAILURE() << line; });
    say(message_t::error);
    EXPECT_EQ(m_lines.size(), 1U);
}

} // namespace
} // namespace audit
