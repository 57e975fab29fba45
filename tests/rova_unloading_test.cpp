// A host that is not linked with rova loads and unloads it.

#include <gtest/gtest.h>

#include <dlfcn.h>

TEST(rova_unloading_test, rova_stays_loaded_with_its_caches_after_its_last_user_closes_it)
{
    ASSERT_EQ(dlopen(ROVA, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was loaded before";
    void* const rova = dlopen(ROVA, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(rova, nullptr) << dlerror();
    EXPECT_EQ(dlclose(rova), 0);
    EXPECT_EQ(dlopen(ROVA, RTLD_NOW | RTLD_NOLOAD), rova);
}
