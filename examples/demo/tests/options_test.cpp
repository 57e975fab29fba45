#include "options.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace audit
{
namespace
{

using velmoext::message_t;
typedef std::vector<std::string> arguments_t;

std::string usage_error_of(const arguments_t& arguments)
{
    try {
        parse_options(arguments);
        return "none";
    } catch (const usage_error_t& error) {
        return error.what();
    }
}

TEST(options_test, without_arguments_the_documentation_is_walked_for_warnings)
{
    const options_t options = parse_options({});
    EXPECT_EQ(options.action, options_t::walk);
    EXPECT_EQ(options.directory, "/usr/share/doc");
    EXPECT_EQ(options.severity, message_t::warning);
    EXPECT_EQ(options.large, 104857600U);
    EXPECT_FALSE(options.progress);
    EXPECT_FALSE(options.plain);
    EXPECT_FALSE(options.language);
}

TEST(options_test, every_option_may_precede_or_follow_the_directory)
{
    const arguments_t orders[] = {
        {"--severity", "error", "--large", "7", "--lang", "de", "--plain", "--progress", "dir"},
        {"dir", "--progress", "--plain", "--lang=de", "--large=7", "--severity=error"}};
    for (const arguments_t& arguments : orders) {
        const options_t options = parse_options(arguments);
        EXPECT_EQ(options.directory, "dir");
        EXPECT_EQ(options.severity, message_t::error);
        EXPECT_EQ(options.large, 7U);
        EXPECT_TRUE(options.progress);
        EXPECT_TRUE(options.plain);
        EXPECT_EQ(options.language, "de");
    }
}

TEST(options_test, each_severity_has_a_name)
{
    EXPECT_EQ(parse_options({"--severity", "info"}).severity, message_t::info);
    EXPECT_EQ(parse_options({"--severity", "warning"}).severity, message_t::warning);
    EXPECT_EQ(parse_options({"--severity", "error"}).severity, message_t::error);
    EXPECT_EQ(parse_options({"--severity", "critical"}).severity, message_t::critical);
}

TEST(options_test, a_size_counts_in_powers_of_1024)
{
    const struct
    {
        const char* text;
        std::uint64_t size;
    } cases[] = {{"0", 0},
                 {"1023", 1023},
                 {"1K", 1024},
                 {"64k", 65536},
                 {"10M", 10485760},
                 {"2G", 2147483648},
                 {"2g", 2147483648},
                 {"18446744073709551615", UINT64_MAX},
                 {"17179869183G", UINT64_MAX - 0x3FFFFFFF}};
    for (const auto& given : cases)
        EXPECT_EQ(parse_options({"--large", given.text}).large, given.size) << given.text;
}

TEST(options_test, a_size_must_be_a_number_that_fits)
{
    for (const char* const text : {"", "K", "-1", "+1", " 1", "1 ", "1KB", "1T", "0x10", "1.5",
                                   "18446744073709551616", "17179869184G"})
        EXPECT_NE(usage_error_of({"--large", text}).find("--large takes"), std::string::npos)
            << text;
}

TEST(options_test, an_unknown_severity_is_refused_with_the_list_of_severities)
{
    for (const char* const name : {"", "Warning", "none", "2", "fatal"})
        EXPECT_EQ(usage_error_of({"--severity", name}),
                  "--severity takes info, warning, error or critical, not '" + std::string(name) +
                      "'");
}

TEST(options_test, an_option_without_its_required_value_is_refused)
{
    EXPECT_EQ(usage_error_of({"--severity"}), "--severity needs a value");
    EXPECT_EQ(usage_error_of({"dir", "--large"}), "--large needs a value");
    EXPECT_EQ(usage_error_of({"--log"}), "--log needs a value");
    EXPECT_EQ(usage_error_of({"--replay"}), "--replay needs a value");
}

TEST(options_test, an_unknown_option_is_refused)
{
    for (const char* const option : {"-x", "---", "--sever", "--Help", "--progress=1"})
        EXPECT_EQ(usage_error_of({option}), "unknown option '" + std::string(option) + "'");
}

TEST(options_test, a_second_directory_is_refused)
{
    EXPECT_EQ(usage_error_of({"one", "two"}), "one directory at a time, not also 'two'");
    EXPECT_EQ(usage_error_of({"one", "--", "two"}), "one directory at a time, not also 'two'");
}

TEST(options_test, a_walk_is_recorded_only_if_requested)
{
    EXPECT_FALSE(parse_options({"dir"}).log.has_value());
    for (const arguments_t& arguments :
         {arguments_t{"--log", "file", "dir"}, arguments_t{"dir", "--log=file"}}) {
        const options_t options = parse_options(arguments);
        EXPECT_EQ(options.action, options_t::walk);
        EXPECT_EQ(options.log, "file");
        EXPECT_EQ(options.directory, "dir");
    }
}

TEST(options_test, an_empty_log_name_is_accepted)
{
    EXPECT_EQ(parse_options({"--log="}).log, "");
    EXPECT_EQ(parse_options({"--replay="}).action, options_t::replay);
}

TEST(options_test, a_replay_may_choose_its_severity)
{
    const options_t options = parse_options({"--replay", "file", "--severity", "info"});
    EXPECT_EQ(options.action, options_t::replay);
    EXPECT_EQ(options.replayed_log, "file");
    EXPECT_EQ(options.severity, message_t::info);
}

TEST(options_test, a_replay_has_no_directory)
{
    for (const arguments_t& arguments :
         {arguments_t{"--replay", "file", "dir"}, arguments_t{"dir", "--replay", "file"}})
        EXPECT_EQ(usage_error_of(arguments), "--replay walks no directory, so not also 'dir'");
}

TEST(options_test, a_replay_is_not_recorded)
{
    for (const arguments_t& arguments :
         {arguments_t{"--replay", "a", "--log", "b"}, arguments_t{"--log", "a", "--replay", "b"}})
        EXPECT_EQ(usage_error_of(arguments), "either --log or --replay");
}

TEST(options_test, help_is_accepted_with_a_replay)
{
    EXPECT_EQ(parse_options({"dir", "--replay", "file", "--help"}).action, options_t::help);
}

TEST(options_test, a_log_name_must_be_utf_8)
{
    EXPECT_EQ(parse_options({"--log", "\xc3\xa4"}).log, "\xc3\xa4");
    for (const char* const option : {"--log", "--replay"})
        EXPECT_EQ(usage_error_of({option, "a\xff"}),
                  std::string(option) + R"( takes a name in UTF-8, not 'a\xff')");
}

TEST(options_test, an_argument_after_two_dashes_is_a_directory)
{
    EXPECT_EQ(parse_options({"--", "--help"}).directory, "--help");
    EXPECT_EQ(parse_options({"--progress", "--", "--"}).directory, "--");
}

TEST(options_test, one_dash_and_an_empty_text_are_directories)
{
    EXPECT_EQ(parse_options({"-"}).directory, "-");
    EXPECT_EQ(parse_options({""}).directory, "");
}

TEST(options_test, help_and_version_end_the_parsing)
{
    EXPECT_EQ(parse_options({"--help", "--bogus"}).action, options_t::help);
    EXPECT_EQ(parse_options({"dir", "--version", "dir"}).action, options_t::version);
}

TEST(options_test, an_error_message_escapes_the_argument)
{
    EXPECT_EQ(usage_error_of({"--\x1b[31m\xff"}), R"(unknown option '--\x1b[31m\xff')");
}

TEST(options_test, the_usage_names_every_option)
{
    for (const char* const option :
         {"--severity LEVEL", "--large BYTES", "--log FILE", "--replay FILE", "--lang LANG",
          "--plain", "--progress", "--help", "--version", "/usr/share/doc"})
        EXPECT_NE(usage_text().find(option), std::string::npos) << option;
}

} // namespace
} // namespace audit
