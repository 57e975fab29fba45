#include "flagger.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <string>

namespace audit
{
namespace
{

using velmoext::message_t;

/// Returns the flags of a message after the handler.
int flags_after(const std::wstring& type, int flags)
{
    const auto message = boost::make_shared<message_t>();
    message->set_type(type);
    message->set_flags(flags);
    EXPECT_FALSE(flagger_t().on_message(nullptr, message));
    return message->get_flags();
}

TEST(flagger_test, flags_every_finding)
{
    for (const wchar_t* const type : {L"link_dangling", L"tree_summary", L"", L"file_seen_too"})
        EXPECT_EQ(flags_after(type, 0), 1);
}

TEST(flagger_test, does_not_flag_a_file_that_was_only_seen)
{
    EXPECT_EQ(flags_after(L"file_seen", 0), 0);
}

TEST(flagger_test, leaves_other_flags_alone)
{
    EXPECT_EQ(flags_after(L"link_dangling", 6), 7);
    EXPECT_EQ(flags_after(L"file_seen", 6), 6);
}

TEST(flagger_test, passes_a_text_that_is_not_a_message)
{
    EXPECT_FALSE(flagger_t().on_message(nullptr, boost::shared_ptr<message_t>()));
}

} // namespace
} // namespace audit
