#include "counting_handler.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace audit
{
namespace
{

using velmoext::message_t;

TEST(counting_handler_test, counts_the_messages_that_pass)
{
    counting_handler_t counter;
    EXPECT_EQ(counter.count(), 0U);
    EXPECT_FALSE(counter.on_message(nullptr, boost::make_shared<message_t>()));
    EXPECT_FALSE(counter.on_message(nullptr, boost::make_shared<message_t>()));
    EXPECT_EQ(counter.count(), 2U);
}

TEST(counting_handler_test, a_text_that_is_not_a_message_does_not_count)
{
    counting_handler_t counter;
    EXPECT_FALSE(counter.on_message(nullptr, boost::shared_ptr<message_t>()));
    EXPECT_EQ(counter.count(), 0U);
}

} // namespace
} // namespace audit
