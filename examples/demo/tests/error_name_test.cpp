#include "error_name.h"

#include <gtest/gtest.h>

namespace audit
{
namespace
{

TEST(error_name_test, an_error_has_the_system_s_name)
{
    EXPECT_EQ(error_name(std::make_error_code(std::errc::permission_denied)), L"EACCES");
    EXPECT_EQ(error_name(std::error_code(ELOOP, std::system_category())), L"ELOOP");
}

TEST(error_name_test, an_error_without_a_name_is_its_number)
{
    EXPECT_EQ(error_name(std::error_code(99999, std::generic_category())), L"99999");
}

} // namespace
} // namespace audit
