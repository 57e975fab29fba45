// A new file appears with its whole content, also on a file system that cannot rename without
// replacing.

#include "new_file.h"

#include "options.h"
#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <system_error>

using namespace velmolog;

namespace
{

/// Returns an error, or 0 if the system is to be called.
std::function<int()> on_rename; // NOLINT(cert-err58-cpp)

class new_file_test : public testing::Test
{
protected:
    void TearDown() override { on_rename = nullptr; }

    std::string path() const { return m_folder.name("new.xml"); }

    std::size_t count_files() const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.name("")))
            count += entry.exists() ? 1 : 0;
        return count;
    }

    /// Creates the file with the content "new".
    void create() const
    {
        new_file_t file(path());
        file.stream() << "new";
        file.finish();
    }

    scratch_folder_t m_folder;
};

} // namespace

extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to,
                         unsigned flags) noexcept
{
    errno = on_rename ? on_rename() : 0;
    return errno != 0
               ? -1
               : static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

TEST_F(new_file_test, the_name_appears_with_the_content)
{
    {
        new_file_t file(path());
        file.stream() << "new" << std::flush;
        EXPECT_FALSE(std::filesystem::exists(path()));
        file.finish();
    }
    EXPECT_EQ(m_folder.read("new.xml"), "new");
    EXPECT_EQ(count_files(), 1U);
}

TEST_F(new_file_test, a_file_that_is_not_finished_leaves_nothing)
{
    {
        new_file_t file(path());
        file.stream() << "new" << std::flush;
        EXPECT_EQ(count_files(), 1U);
    }
    EXPECT_EQ(count_files(), 0U);
}

TEST_F(new_file_test, a_file_system_without_that_operation_has_a_link)
{
    for (const int error : {EINVAL, ENOSYS}) {
        on_rename = [error] {
            return error;
        };
        create();
        EXPECT_EQ(m_folder.read("new.xml"), "new");
        EXPECT_EQ(count_files(), 1U);
        EXPECT_THROW(create(), usage_error_t);
        std::filesystem::remove(path());
    }
}

TEST_F(new_file_test, a_file_that_appears_meanwhile_is_not_replaced)
{
    for (const int error : {0, EINVAL}) {
        on_rename = [this, error] {
            m_folder.write("new.xml", "other");
            return error;
        };
        EXPECT_THROW(create(), usage_error_t);
        EXPECT_EQ(m_folder.read("new.xml"), "other");
        EXPECT_EQ(count_files(), 1U);
        std::filesystem::remove(path());
    }
}

TEST_F(new_file_test, a_refused_name_leaves_nothing)
{
    on_rename = [] {
        return EACCES;
    };
    EXPECT_THROW(create(), output_error_t);
    EXPECT_EQ(count_files(), 0U);
}

TEST_F(new_file_test, a_missing_folder_is_an_error)
{
    EXPECT_THROW(new_file_t(m_folder.name("missing/new.xml")), std::system_error);
}
