#include <velmoext1/velmo_ex.h>

#include <gtest/gtest.h>

#include <limits>

using namespace velmoext_1_4_8;

namespace
{

// Returns the counter, so that the test can set it: reaching its end would take years of calls. An
// explicit instantiation may name a private member, which gives access to the counter.
std::int32_t& id_counter();

template <std::int32_t* Counter>
struct member_access_t
{
    friend std::int32_t& id_counter() { return *Counter; }
};

template struct member_access_t<&velmo_ex_t::m_id_counter>;

} // namespace

TEST(id_counter_test, wraps_to_the_smallest_number_after_the_largest)
{
    const std::int32_t former = id_counter();
    id_counter() = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(velmo_ex_t::generate_id(L"job"), L"job2147483647");
    EXPECT_EQ(velmo_ex_t::generate_id(L"job"), L"job-2147483648");
    EXPECT_EQ(velmo_ex_t::generate_id(L""), L"-2147483647");
    id_counter() = former;
}
