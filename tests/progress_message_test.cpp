#include <velmoext1/progress_message.h>

#include "support.h"

#include <rova/debug.h>

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

namespace
{

struct progress_t : velmo2::IProgress
{
    void set_percent(int /*percent*/) override {}
    bool is_canceled() const override { return false; }
};

struct report_t
{
    std::string expression;
    std::string file;
    int line;
    std::string function;
};

// Collects assertions while in scope.
class assertions_t
{
public:
    assertions_t() : m_former(ROVA_2_18::debug::set_assert_handler(on_assertion))
    {
        reports().clear();
    }
    ~assertions_t() { ROVA_2_18::debug::set_assert_handler(m_former); }
    assertions_t(const assertions_t&) = delete;
    assertions_t& operator=(const assertions_t&) = delete;

    static std::vector<report_t>& reports()
    {
        static std::vector<report_t> collected;
        return collected;
    }

private:
    static void on_assertion(const char* expression, const char* file, int line,
                             const char* function)
    {
        reports().push_back({expression, file, line, function});
    }

    ROVA_2_18::debug::assert_handler_t m_former;
};

} // namespace

TEST(progress_message_test, a_new_progress_message_is_cancelable_and_has_no_message)
{
    const assertions_t assertions;
    progress_message_t progress;
    EXPECT_TRUE(progress.is_cancelable());
    EXPECT_FALSE(progress.get_message());
    EXPECT_TRUE(assertions_t::reports().empty());
}

TEST(progress_message_test, getting_a_missing_progress_object_is_reported_once)
{
    const assertions_t assertions;
    progress_message_t progress;
    EXPECT_FALSE(progress.get_progress());
    ASSERT_EQ(assertions_t::reports().size(), 1U);
    const report_t& report = assertions_t::reports().front();
    EXPECT_EQ(report.expression, "m_progress");
    EXPECT_EQ(report.file, "velmoext1/src/progress_message");
    EXPECT_EQ(report.line, 37);
    EXPECT_EQ(report.function, "velmoext_1_4_8::progress_message_t::get_progress");
}

TEST(progress_message_test, getting_an_existing_progress_object_reports_nothing)
{
    const assertions_t assertions;
    progress_message_t progress;
    const boost::shared_ptr<velmo2::IProgress> object = boost::make_shared<progress_t>();
    progress.set_progress(object);
    EXPECT_EQ(progress.get_progress(), object);
    EXPECT_TRUE(assertions_t::reports().empty());
}

TEST(progress_message_test, null_is_accepted_as_message_and_progress_object)
{
    const assertions_t assertions;
    progress_message_t progress;
    progress.set_message(make_message(L"t"));
    progress.set_progress(boost::make_shared<progress_t>());
    progress.set_message(message_ptr_t());
    progress.set_progress(boost::shared_ptr<velmo2::IProgress>());
    EXPECT_FALSE(progress.get_message());
    EXPECT_FALSE(progress.get_progress());
    EXPECT_EQ(assertions_t::reports().size(), 1U);
}

TEST(progress_message_test, a_copy_of_a_message_that_is_not_cancelable_is_not_cancelable)
{
    progress_message_t original;
    original.set_cancelable(false);
    const progress_message_t constructed(original);
    EXPECT_FALSE(constructed.is_cancelable());
    progress_message_t assigned;
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_FALSE(assigned.is_cancelable());
}

TEST(progress_message_test, copies_share_the_message_and_the_progress_object)
{
    progress_message_t original;
    original.set_message(make_message(L"before"));
    original.set_progress(boost::make_shared<progress_t>());
    progress_message_t constructed(original);
    progress_message_t assigned;
    assigned = original;
    constructed.get_message()->set_type(L"after");
    EXPECT_EQ(original.get_message()->get_type(), L"after");
    EXPECT_EQ(assigned.get_message()->get_type(), L"after");
    EXPECT_EQ(constructed.get_progress(), original.get_progress());
    EXPECT_EQ(assigned.get_progress(), original.get_progress());
}

TEST(progress_message_test, a_new_message_in_one_copy_does_not_change_the_others)
{
    progress_message_t original;
    original.set_message(make_message(L"old"));
    progress_message_t copy(original);
    copy.set_message(make_message(L"new"));
    EXPECT_EQ(original.get_message()->get_type(), L"old");
}

TEST(progress_message_test, releases_its_message)
{
    const message_ptr_t message = make_message(L"t");
    {
        progress_message_t progress;
        progress.set_message(message);
        EXPECT_EQ(message.use_count(), 2);
    }
    EXPECT_EQ(message.use_count(), 1);
}
