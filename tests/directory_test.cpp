#include "storage/directory.h"

#include "process_support.h"
#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace velmoext_1_4_8;

namespace
{

/// A folder with the directories "a" and "b".
class directory_test : public testing::Test
{
protected:
    directory_test()
    {
        std::filesystem::create_directory(m_folder.name("a"));
        std::filesystem::create_directory(m_folder.name("b"));
    }

    directory_t directory_of(const std::string& leaf) const
    {
        const current_directory_scope_t current(m_folder.name(leaf));
        return directory_t::current();
    }

    // Returns the path as resolved from another directory.
    std::wstring resolve_from_b(const directory_t& directory, const std::wstring& path) const
    {
        const current_directory_scope_t current(m_folder.name("b"));
        return directory.resolve(basekit2::path_t(path)).as_string();
    }

    scratch_folder_t m_folder;
};

} // namespace

TEST_F(directory_test, a_relative_path_is_absolute_from_another_directory)
{
    EXPECT_EQ(resolve_from_b(directory_of("a"), L"log.xml"), m_folder.wide_name("a/log.xml"));
}

TEST_F(directory_test, a_relative_path_is_relative_in_its_own_directory)
{
    EXPECT_EQ(resolve_from_b(directory_of("b"), L"log.xml"), L"log.xml");
    const directory_t directory = directory_of("b");
    std::filesystem::rename(m_folder.name("a"), m_folder.name("c"));
    EXPECT_EQ(resolve_from_b(directory, L"log.xml"), L"log.xml");
}

TEST_F(directory_test, a_relative_path_is_relative_in_its_own_directory_under_another_name)
{
    const current_directory_scope_t current(m_folder.name("a"));
    const directory_t directory = directory_t::current();
    std::filesystem::rename(m_folder.name("a"), m_folder.name("c"));
    EXPECT_EQ(directory.resolve(basekit2::path_t(L"log.xml")).as_string(), L"log.xml");
}

TEST_F(directory_test, an_absolute_path_stays)
{
    EXPECT_EQ(resolve_from_b(directory_of("a"), L"/log.xml"), L"/log.xml");
}

TEST_F(directory_test, a_relative_path_stays_if_its_directory_has_no_name_in_utf_8)
{
    std::filesystem::create_directory(m_folder.name("\xE9"));
    EXPECT_EQ(resolve_from_b(directory_of("\xE9"), L"log.xml"), L"log.xml");
}

TEST_F(directory_test, a_relative_path_stays_if_its_directory_was_removed)
{
    directory_t directory;
    EXPECT_EQ(resolve_from_b(directory, L"log.xml"), L"log.xml");
    {
        const current_directory_scope_t current(m_folder.name("a"));
        std::filesystem::remove(m_folder.name("a"));
        directory = directory_t::current();
    }
    EXPECT_EQ(resolve_from_b(directory, L"log.xml"), L"log.xml");
}
