#include "filter.h"

#include "library_names.h"

#include <velmoext1/velmo_ex.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace audit
{
namespace
{

using velmoext::message_t;

bool consumes(message_t::severity_t least, message_t::severity_t severity)
{
    const auto message = boost::make_shared<message_t>();
    message->set_severity(severity);
    return filter_t(least).on_message(nullptr, message);
}

TEST(filter_test, consumes_messages_below_the_least_severity)
{
    EXPECT_TRUE(consumes(message_t::warning, message_t::info));
    EXPECT_TRUE(consumes(message_t::critical, message_t::error));
    EXPECT_TRUE(consumes(message_t::info, message_t::none));
}

TEST(filter_test, passes_messages_of_the_least_severity_and_above)
{
    EXPECT_FALSE(consumes(message_t::info, message_t::info));
    EXPECT_FALSE(consumes(message_t::warning, message_t::warning));
    EXPECT_FALSE(consumes(message_t::warning, message_t::critical));
}

TEST(filter_test, passes_a_text_that_is_not_a_message)
{
    EXPECT_FALSE(filter_t(message_t::critical).on_message(nullptr, boost::shared_ptr<message_t>()));
}

TEST(filter_test, passes_progress)
{
    filter_t filter(message_t::critical);
    EXPECT_FALSE(filter.on_message(nullptr, boost::make_shared<velmoext::progress_message_t>()));
}

} // namespace
} // namespace audit
