#include "storage/log_output.h"

#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmoext_1_4_8;

namespace
{

// More bytes at once than libxml2's writer passes on, and than are compared at once.
class log_output_test : public testing::Test
{
protected:
    log_output_test()
    {
        for (int i = 0; m_log.size() < 50000; ++i)
            m_log += std::to_string(i) + ' ';
        m_log.resize(50000);
        m_folder.write("log.xml", m_log);
    }

    basekit2::path_t path(const std::string& leaf = "log.xml") const
    {
        return basekit2::path_t(m_folder.wide_name(leaf));
    }

    bool has_same_bytes_as_log(const std::string& bytes) const
    {
        m_folder.write("other.xml", bytes);
        file_descriptor_t log;
        file_descriptor_t other;
        EXPECT_TRUE(log.open(true, path()));
        EXPECT_TRUE(other.open(true, path("other.xml")));
        const bool is_same = have_same_bytes(log, other);
        EXPECT_EQ(have_same_bytes(other, log), is_same);
        return is_same;
    }

    scratch_folder_t m_folder;
    std::string m_log;
};

} // namespace

TEST_F(log_output_test, any_number_of_bytes_is_compared_with_the_log)
{
    file_descriptor_t file;
    ASSERT_TRUE(file.open(false, path()));
    log_output_t output(file);
    for (const std::size_t size : {1U, 16383U, 16384U, 16385U, 32768U, 40000U, 50000U}) {
        ASSERT_TRUE(output.begin_comparison(path()));
        output.write(m_log.data(), size);
        EXPECT_TRUE(output.is_in_log()) << size;
        EXPECT_EQ(output.has_whole_log(), size == m_log.size());
        for (const std::size_t changed : {std::size_t(0), size / 2, size - 1}) {
            std::string bytes = m_log.substr(0, size);
            bytes[changed] = 'x';
            ASSERT_TRUE(output.begin_comparison(path()));
            output.write(bytes.data(), size);
            EXPECT_FALSE(output.is_in_log()) << size << ' ' << changed;
            EXPECT_FALSE(output.has_whole_log()) << size << ' ' << changed;
        }
    }
    output.end_comparison();
    EXPECT_EQ(m_folder.read("log.xml"), m_log);
}

TEST_F(log_output_test, bytes_after_the_end_of_the_log_are_not_in_it)
{
    file_descriptor_t file;
    ASSERT_TRUE(file.open(false, path()));
    log_output_t output(file);
    const std::string longer = m_log + m_log;
    for (const std::size_t size : {50001U, 65536U, 100000U}) {
        ASSERT_TRUE(output.begin_comparison(path()));
        output.write(longer.data(), size);
        EXPECT_FALSE(output.is_in_log()) << size;
        EXPECT_TRUE(output.has_whole_log()) << size;
    }
}

TEST_F(log_output_test, files_have_the_same_bytes_only_if_all_are_equal)
{
    EXPECT_TRUE(has_same_bytes_as_log(m_log));
    EXPECT_FALSE(has_same_bytes_as_log(""));
    EXPECT_FALSE(has_same_bytes_as_log(m_log + 'x'));
    EXPECT_FALSE(has_same_bytes_as_log(m_log.substr(0, 49999)));
    for (const std::size_t changed : {0U, 16383U, 16384U, 40000U, 49999U}) {
        std::string bytes = m_log;
        bytes[changed] = 'x';
        EXPECT_FALSE(has_same_bytes_as_log(bytes)) << changed;
    }
}
