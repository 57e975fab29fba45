// Thread safety: components of one process read configuration and texts concurrently.

#include "run_threads.h"
#include "scratch_folder.h"
#include "support.h"

#include <setbook2/message_catalog.h>
#include <setbook2/product_locations.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

using namespace velmoext_1_4_8;

namespace
{

typedef boost::shared_ptr<config_reader_t> reader_ptr_t;

const int thread_count = 8;
const int source_count = 3;

std::wstring source_name(int number)
{
    return L"src" + std::to_wstring(number % source_count);
}

boost::shared_ptr<velmo_ex_t> make_ex()
{
    return velmo_ex_t::get(velmo_ex_t::generate_id(L"config_threads_test."), L"p");
}

/// Expects the property with the source's name.
void expect_source(config_reader_t& reader, int number)
{
    const message_ptr_t message = make_message(L"t");
    message->set_source(source_name(number));
    EXPECT_EQ(reader.read_property(make_ex(), message, L"name"), source_name(number));
}

/// Files of a few sources in the host's directory, while in scope.
class config_threads_test : public testing::Test, private setbook2::IProductLocations
{
public:
    config_threads_test()
    {
        for (int i = 0; i < source_count; ++i) {
            const std::string source = "src" + std::to_string(i);
            m_folder.write(source + ".xml",
                           "<bag><message_type id='u' name='x'/><message_type id='t' name='" +
                               source + "' title_msgid='title'/></bag>");
        }
        set(this);
    }
    ~config_threads_test() override { set(nullptr); }

private:
    const wchar_t* get_install_dir() override { return L""; }
    const wchar_t* get_data_dir() override { return L""; }
    const wchar_t* get_config_dir() override { return m_directory.c_str(); }

    scratch_folder_t m_folder;
    std::wstring m_directory = m_folder.wide_name(".");
};

/// Returns the id and the argument "a".
class echo_catalog_t : public ROVA_2_18::i18n::catalog_t
{
public:
    ROVA_2_18::i18n::message_t message(const std::wstring& id) const override
    {
        return id == L"t" ? m_text : m_title;
    }

private:
    ROVA_2_18::i18n::message_t m_text{L"text {a, plural, one {# file} other {# files}}", "en"};
    ROVA_2_18::i18n::message_t m_title{L"title {a}"};
};

/// Registers a catalog under that name while in scope.
class registration_t
{
public:
    explicit registration_t(const std::wstring& name) : m_name(name)
    {
        setbook2::registerMessageCatalog(name, boost::make_shared<echo_catalog_t>());
    }
    ~registration_t() { setbook2::registerMessageCatalog(m_name, nullptr); }
    registration_t(const registration_t&) = delete;
    registration_t& operator=(const registration_t&) = delete;

private:
    std::wstring m_name;
};

} // namespace

TEST_F(config_threads_test, one_reader_serves_all_threads)
{
    const reader_ptr_t reader = config_reader_t::get();
    run_threads(thread_count, [&](int thread) {
        for (int i = 0; i < 300; ++i) {
            EXPECT_EQ(config_reader_t::get(), reader);
            expect_source(*reader, thread + i);
        }
    });
}

TEST_F(config_threads_test, one_reader_works_while_copies_of_another_are_created_and_destroyed)
{
    const reader_ptr_t reader = config_reader_t::get();
    config_reader_t other(*reader);
    expect_source(other, 0);
    const config_reader_t& original = other;
    run_threads(thread_count, [&](int thread) {
        for (int i = 0; i < 300; ++i) {
            if (thread % 2 == 0) {
                expect_source(*reader, i);
            } else {
                config_reader_t copy(original);
                expect_source(copy, i);
            }
        }
    });
}

TEST_F(config_threads_test, readers_with_one_owner_are_created_used_and_destroyed)
{
    const boost::weak_ptr<config_reader_t> watched = config_reader_t::get();
    run_threads(thread_count, [](int thread) {
        for (int i = 0; i < 300; ++i) {
            const reader_ptr_t reader = config_reader_t::get();
            EXPECT_TRUE(reader->get_cfg_dir().is_empty());
            expect_source(*reader, thread + i);
        }
    });
    EXPECT_TRUE(watched.expired());
}

TEST_F(config_threads_test, concurrent_calls_of_get_return_one_reader)
{
    for (int round = 0; round < 200; ++round) {
        std::vector<reader_ptr_t> readers(thread_count);
        run_threads(thread_count, [&](int thread) {
            readers[static_cast<std::size_t>(thread)] = config_reader_t::get();
        });
        EXPECT_EQ(std::count(readers.begin(), readers.end(), readers.front()), thread_count);
    }
}

TEST_F(config_threads_test, a_reader_with_files_outlives_the_owners_that_release_it)
{
    std::atomic<int> lookups{0};
    const reader_ptr_t reader = config_reader_t::get();
    run_threads(thread_count, [&](int thread) {
        for (int i = 0; i < 300; ++i) {
            reader_ptr_t own_reader = config_reader_t::get();
            expect_source(*own_reader, thread + i);
            own_reader.reset();
            ++lookups;
        }
    });
    expect_source(*reader, 0);
    EXPECT_EQ(lookups, thread_count * 300);
}

TEST_F(config_threads_test, texts_of_different_messages_are_composed_from_one_catalog)
{
    const registration_t catalog(L"src0");
    const auto ex = make_ex();
    run_threads(thread_count, [&](int thread) {
        for (int i = 2; i < 200; ++i) {
            const std::wstring number = std::to_wstring(thread * 200 + i);
            const message_ptr_t message = make_message(make_content({}, {{L"a", number}}));
            message->set_type(L"t");
            message->set_source(L"src0");
            extended_message_t shown(ex, message);
            EXPECT_EQ(shown.get_title(), L"title " + number);
            EXPECT_NE(shown.get_text().find(L" files"), std::wstring::npos) << number.size();
        }
    });
}

TEST_F(config_threads_test, texts_of_one_message_are_composed_by_all_threads)
{
    const registration_t catalog(L"src0");
    const auto ex = make_ex();
    const message_ptr_t message = make_message(make_content({}, {{L"a", L"1"}}));
    message->set_type(L"t");
    message->set_source(L"src0");
    run_threads(thread_count, [&](int /*thread*/) {
        for (int i = 0; i < 200; ++i) {
            extended_message_t shown(ex, message);
            EXPECT_EQ(shown.get_text(), L"text 1 file");
            EXPECT_EQ(shown.get_title(), L"title 1");
        }
    });
}
