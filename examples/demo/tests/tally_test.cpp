#include "tally.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace audit
{
namespace
{

using velmoext::message_t;

TEST(tally_test, counts_the_messages_that_pass)
{
    tally_t tally;
    EXPECT_EQ(tally.count(), 0U);
    EXPECT_FALSE(tally.on_message(nullptr, boost::make_shared<message_t>()));
    EXPECT_FALSE(tally.on_message(nullptr, boost::make_shared<message_t>()));
    EXPECT_EQ(tally.count(), 2U);
}

TEST(tally_test, a_text_that_is_not_a_message_does_not_count)
{
    tally_t tally;
    EXPECT_FALSE(tally.on_message(nullptr, boost::shared_ptr<message_t>()));
    EXPECT_EQ(tally.count(), 0U);
}

} // namespace
} // namespace audit
