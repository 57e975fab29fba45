// The title and text of a message are read from files. The system may refuse to open them,
// interrupt a call, or read less than requested. The message is then shown without them, and the
// next attempt finds them.

#include "catalog_support.h"
#include "process_support.h"
#include "support.h"
#include "system_faults.h"

#include <setbook2/message_catalog.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

using namespace velmoext_1_4_8;

namespace
{

class presentation_faults_test : public testing::Test
{
protected:
    presentation_faults_test()
    {
        m_folder.write("src.xml", "<bag><message_type id='t' title_msgid='title'/></bag>");
        m_catalogs.make("en", "p.src", po_of({{"title", "The title"}, {"t", "The text"}}));
        m_catalogs.bind(L"en");
        renew_reader();
    }

    // Drops the configuration and the catalogs that were read.
    void renew_reader()
    {
        m_reader.reset();
        m_reader = config_reader_t::get();
        m_reader->set_cfg_dir(basekit2::path_t(m_folder.wide_name("")));
        m_catalogs.bind(L"en");
    }

    // Returns title and text, as a component shows them.
    static std::wstring shown()
    {
        const auto ex =
            velmo_ex_t::get(velmo_ex_t::generate_id(L"presentation_faults_test."), L"p");
        const message_ptr_t message = make_message(L"t");
        message->set_source(L"src");
        extended_message_t extended(ex, message);
        return extended.get_title() + L'|' + extended.get_text();
    }

    scratch_folder_t m_folder;
    catalogs_t m_catalogs;
    boost::shared_ptr<config_reader_t> m_reader;
};

} // namespace

TEST_F(presentation_faults_test, files_that_cannot_be_opened_are_found_the_next_time)
{
    for (const int error : {EMFILE, ENFILE, EACCES, EIO, ENOMEM, ENOENT, ENAMETOOLONG}) {
        {
            const faults_scope_t faults(
                [&](const std::string& call, int) { return call == "open" ? error : 0; });
            EXPECT_EQ(shown(), L"|") << std::strerror(error);
        }
        EXPECT_EQ(shown(), L"The title|The text") << std::strerror(error);
        renew_reader();
    }
}

TEST_F(presentation_faults_test, files_that_cannot_be_read_are_found_the_next_time)
{
    for (const int error : {EIO, EISDIR, ENOMEM}) {
        {
            const faults_scope_t faults(
                [&](const std::string& call, int) { return call == "pread" ? error : 0; });
            EXPECT_EQ(shown(), L"|") << std::strerror(error);
        }
        EXPECT_EQ(shown(), L"The title|The text") << std::strerror(error);
        renew_reader();
    }
}

TEST_F(presentation_faults_test, short_and_interrupted_reads_are_continued)
{
    const short_io_scope_t short_reads(3, SIZE_MAX);
    int calls = 0;
    const faults_scope_t faults([&](const std::string& call, int) {
        return (call == "open" || call == "pread") && ++calls % 3 != 0 ? EINTR : 0;
    });
    EXPECT_EQ(shown(), L"The title|The text");
    EXPECT_GT(calls, 10);
}

TEST_F(presentation_faults_test, a_directory_that_is_too_long_for_the_system_has_no_files)
{
    for (const std::size_t size : {4095U, 4096U, 100000U}) {
        std::wstring name = m_folder.wide_name("");
        while (name.size() < size)
            name += L"abcdefg/";
        m_reader->set_cfg_dir(basekit2::path_t(name));
        ASSERT_TRUE(setbook2::bindCatalogDirectory(name, L"en"));
        EXPECT_EQ(shown(), L"|") << size;
    }
    renew_reader();
    EXPECT_EQ(shown(), L"The title|The text");
}

TEST_F(presentation_faults_test, only_absolute_paths_are_found_in_a_removed_working_directory)
{
    std::filesystem::create_directory(m_folder.name("gone"));
    const current_directory_scope_t removed(m_folder.name("gone"));
    std::filesystem::remove(m_folder.name("gone"));
    EXPECT_EQ(shown(), L"The title|The text");
    renew_reader();
    m_reader->set_cfg_dir(basekit2::path_t(L"."));
    ASSERT_TRUE(setbook2::bindCatalogDirectory(L".", L"en"));
    EXPECT_EQ(shown(), L"|");
}
