#include <setbook2/product_locations.h>

#include "run_threads.h"

#include <gtest/gtest.h>

#include <atomic>

namespace
{

using setbook2::IProductLocations;

class locations_t : public IProductLocations
{
public:
    const wchar_t* get_install_dir() override { return L"install"; }
    const wchar_t* get_data_dir() override { return L"data"; }
    const wchar_t* get_config_dir() override { return L"config"; }
};

class setbook2_product_locations_test : public testing::Test
{
public:
    ~setbook2_product_locations_test() override { IProductLocations::set(nullptr); }

protected:
    locations_t m_first;
    locations_t m_second;
};

} // namespace

TEST_F(setbook2_product_locations_test, nothing_is_set_at_first)
{
    EXPECT_EQ(IProductLocations::get(), nullptr);
}

TEST_F(setbook2_product_locations_test, get_returns_the_object_that_was_set)
{
    IProductLocations::set(&m_first);
    EXPECT_EQ(IProductLocations::get(), &m_first);
}

TEST_F(setbook2_product_locations_test, get_returns_the_object_that_was_set_last)
{
    IProductLocations::set(&m_first);
    IProductLocations::set(&m_second);
    EXPECT_EQ(IProductLocations::get(), &m_second);
}

TEST_F(setbook2_product_locations_test, setting_null_removes_the_object)
{
    IProductLocations::set(&m_first);
    IProductLocations::set(nullptr);
    EXPECT_EQ(IProductLocations::get(), nullptr);
}

TEST_F(setbook2_product_locations_test, threads_that_set_and_get_see_only_objects_that_were_set)
{
    std::atomic<int> unknown_objects{0};
    run_threads(8, [&](int thread) {
        for (int i = 0; i < 10000; ++i) {
            if (thread < 4)
                IProductLocations::set(i % 2 == 0 ? &m_first : &m_second);
            IProductLocations* const found = IProductLocations::get();
            if (found && found != &m_first && found != &m_second)
                ++unknown_objects;
        }
    });
    EXPECT_EQ(unknown_objects, 0);
    EXPECT_TRUE(IProductLocations::get());
}
