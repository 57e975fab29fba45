#include <rova/debug.h>

#include "run_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <string>

namespace
{

using ROVA_2_18::debug::assert_handler_t;
using ROVA_2_18::debug::set_assert_handler;

struct report_t
{
    std::string expression;
    std::string file;
    int line = 0;
    std::string function;
};

report_t last_report;
std::atomic<int> first_count{0};
std::atomic<int> second_count{0};

void keep_report(const char* expression, const char* file, int line, const char* function)
{
    last_report = {expression, file, line, function};
}

void count_first(const char*, const char*, int, const char*)
{
    ++first_count;
}

void count_second(const char*, const char*, int, const char*)
{
    ++second_count;
}

void count_first_and_set_second(const char*, const char*, int, const char*)
{
    ++first_count;
    set_assert_handler(count_second);
}

void report(const char* expression, const char* file, int line, const char* function)
{
    ROVA_2_18::debug::_private::____________________ASSERT____________________(expression, file,
                                                                               line, function);
}

void report_often(int times)
{
    for (int i = 0; i < times; ++i) {
        report("size < limit", "bag.cpp", 42, "add");
    }
}

/// Each test starts without a handler and restores the former one.
class rova_debug_test : public testing::Test
{
public:
    rova_debug_test() : m_former(set_assert_handler(nullptr))
    {
        last_report = report_t();
        first_count = 0;
        second_count = 0;
    }
    ~rova_debug_test() override { set_assert_handler(m_former); }

private:
    assert_handler_t m_former;
};

TEST_F(rova_debug_test, setting_a_handler_returns_the_former_one)
{
    EXPECT_EQ(set_assert_handler(count_first), nullptr);
    EXPECT_EQ(set_assert_handler(count_second), &count_first);
    EXPECT_EQ(set_assert_handler(nullptr), &count_second);
    EXPECT_EQ(set_assert_handler(nullptr), nullptr);
}

TEST_F(rova_debug_test, the_handler_gets_the_report)
{
    set_assert_handler(keep_report);
    report("index != 0 && \"a 100% text\"", "dir/file.cpp", 7, "void f(int)");
    EXPECT_EQ(last_report.expression, "index != 0 && \"a 100% text\"");
    EXPECT_EQ(last_report.file, "dir/file.cpp");
    EXPECT_EQ(last_report.line, 7);
    EXPECT_EQ(last_report.function, "void f(int)");
}

TEST_F(rova_debug_test, only_the_current_handler_is_called)
{
    set_assert_handler(count_first);
    set_assert_handler(count_second);
    report_often(3);
    EXPECT_EQ(first_count, 0);
    EXPECT_EQ(second_count, 3);
}

TEST_F(rova_debug_test, with_a_handler_nothing_goes_to_standard_error)
{
    set_assert_handler(count_first);
    testing::internal::CaptureStderr();
    report_often(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(rova_debug_test, without_a_handler_the_report_is_one_line_on_standard_error)
{
    testing::internal::CaptureStderr();
    report("ratio == 100%", "dir/file.cpp", 12, "void f(int)");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "dir/file.cpp:12: void f(int): assertion failed: ratio == 100%\n");
}

TEST_F(rova_debug_test, a_handler_that_was_removed_is_not_called)
{
    set_assert_handler(count_first);
    set_assert_handler(nullptr);
    testing::internal::CaptureStderr();
    report_often(1);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(first_count, 0);
}

TEST_F(rova_debug_test, a_handler_may_set_another_handler)
{
    set_assert_handler(count_first_and_set_second);
    report_often(3);
    EXPECT_EQ(first_count, 1);
    EXPECT_EQ(second_count, 2);
}

TEST_F(rova_debug_test, reports_of_several_threads_stay_whole_lines)
{
    testing::internal::CaptureStderr();
    run_threads(4, [](int) { report_often(100); });
    std::istringstream written(testing::internal::GetCapturedStderr());
    int lines = 0;
    for (std::string line; std::getline(written, line); ++lines) {
        EXPECT_EQ(line, "bag.cpp:42: add: assertion failed: size < limit");
    }
    EXPECT_EQ(lines, 400);
}

TEST_F(rova_debug_test, threads_report_while_another_sets_the_handler)
{
    set_assert_handler(count_first);
    run_threads(5, [](int thread) {
        if (thread != 0) {
            report_often(1000);
            return;
        }
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(set_assert_handler(count_second), &count_first);
            EXPECT_EQ(set_assert_handler(count_first), &count_second);
        }
    });
    EXPECT_EQ(first_count + second_count, 4000);
}

} // namespace
