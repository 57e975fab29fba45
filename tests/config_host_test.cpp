// The configuration directory comes from the host, which sees each call and can act meanwhile.

#include <velmoext1/config_reader.h>

#include "background.h"
#include "process_support.h"
#include "scratch_folder.h"
#include "support.h"
#include "system_faults.h"

#include <setbook2/product_locations.h>

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <stdexcept>

using namespace velmoext_1_4_8;

namespace
{

using basekit2::path_t;

std::wstring read_from(config_reader_t& reader, const std::wstring& prefix = std::wstring(),
                       const std::wstring& source = L"src")
{
    const message_ptr_t message = make_message(L"t");
    message->set_source(source);
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"config_host_test."), prefix);
    return reader.read_property(ex, message, L"p");
}

/// The product's locations while in scope. Counts the calls.
class host_t : public setbook2::IProductLocations
{
public:
    explicit host_t(std::function<std::wstring()> action) : m_action(std::move(action))
    {
        set(this);
    }
    ~host_t() override { set(nullptr); }
    host_t(const host_t&) = delete;
    host_t& operator=(const host_t&) = delete;

    const wchar_t* get_install_dir() override
    {
        ++m_other_calls;
        return L"";
    }
    const wchar_t* get_data_dir() override
    {
        ++m_other_calls;
        return L"";
    }
    const wchar_t* get_config_dir() override
    {
        ++m_calls;
        return m_results.emplace_back(m_action()).c_str();
    }

    int calls() const { return m_calls; }
    /// Calls of the other two operations.
    int other_calls() const { return m_other_calls; }

private:
    std::function<std::wstring()> m_action;
    std::list<std::wstring> m_results; ///< stay valid, as a host's directories do
    int m_calls = 0;
    int m_other_calls = 0;
};

/// The process's reader without a directory. The host has the directories "one" and "two".
class config_host_test : public testing::Test
{
protected:
    config_host_test()
    {
        for (const char* leaf : {"one", "two"})
            std::filesystem::create_directory(m_folder.name(leaf));
    }

    void write(const std::string& dir, const std::string& attributes) const
    {
        m_folder.write(dir + "/src.xml", "<bag><message_type id='t' " + attributes + "/></bag>");
    }

    std::wstring dir(const std::string& leaf) const { return m_folder.wide_name(leaf); }

    std::wstring read(const std::wstring& prefix = std::wstring()) const
    {
        return read_from(*m_reader, prefix);
    }

    scratch_folder_t m_folder;
    boost::shared_ptr<config_reader_t> m_reader = config_reader_t::get();
};

} // namespace

// ---- how often the host is asked

TEST_F(config_host_test, the_host_is_asked_once_if_the_first_search_finds_the_property)
{
    write("one", "prefix='P' p='a'");
    for (const wchar_t* prefix : {L"P", L""}) {
        const host_t host([&] { return dir("one"); });
        EXPECT_EQ(read(prefix), L"a");
        EXPECT_EQ(host.calls(), 1) << prefix;
    }
}

TEST_F(config_host_test, the_host_is_asked_twice_if_only_the_second_search_finds_the_property)
{
    write("one", "p='a'");
    const host_t host([&] { return dir("one"); });
    EXPECT_EQ(read(L"P"), L"a");
    EXPECT_EQ(host.calls(), 2);
}

TEST_F(config_host_test, the_host_is_asked_twice_if_nothing_is_found)
{
    write("one", "q='a'");
    for (const char* leaf : {"one", "two"}) {
        for (const wchar_t* prefix : {L"P", L""}) {
            const host_t host([&] { return dir(leaf); });
            EXPECT_EQ(read(prefix), L"");
            EXPECT_EQ(host.calls(), 2) << leaf << prefix;
        }
    }
}

TEST_F(config_host_test, the_host_is_asked_by_each_call_even_if_the_file_is_known)
{
    write("one", "p='a'");
    const host_t host([&] { return dir("one"); });
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(host.calls(), 2);
}

TEST_F(config_host_test, the_host_is_not_asked_if_a_directory_is_set)
{
    write("one", "p='a'");
    write("two", "p='b'");
    const host_t host([&] { return dir("two"); });
    m_reader->set_cfg_dir(path_t(dir("one")));
    EXPECT_EQ(read(), L"a");
    m_reader->set_cfg_dir(path_t(dir("missing")));
    EXPECT_EQ(read(L"P"), L"");
    EXPECT_EQ(host.calls(), 0);
}

TEST_F(config_host_test, only_reading_a_property_asks_the_host)
{
    const host_t host([&] { return dir("one"); });
    config_reader_t copy(*config_reader_t::get());
    copy = *m_reader;
    EXPECT_TRUE(copy.get_cfg_dir().is_empty());
    copy.set_cfg_dir(path_t());
    EXPECT_EQ(host.calls(), 0);
}

TEST_F(config_host_test, the_host_is_never_asked_for_the_directories_of_program_and_data)
{
    write("one", "p='a'");
    for (const char* leaf : {"one", "two", "missing"}) {
        const host_t host([&] { return dir(leaf); });
        read();
        read(L"P");
        m_reader->set_cfg_dir(path_t(dir("two")));
        read();
        m_reader->set_cfg_dir(path_t());
        EXPECT_EQ(host.other_calls(), 0) << leaf;
    }
}

// ---- the second search determines the file again

TEST_F(config_host_test, another_directory_of_the_second_search_is_searched_by_type_only)
{
    write("one", "q='a'");
    write("two", "prefix='Q' p='other'");
    int calls = 0;
    const host_t host([&] { return dir(++calls == 1 ? "one" : "two"); });
    EXPECT_EQ(read(L"P"), L"other");
}

TEST_F(config_host_test, an_entry_with_the_prefix_in_the_first_directory_is_not_searched_again)
{
    write("one", "prefix='Q' p='other'");
    write("two", "q='a'");
    int calls = 0;
    const host_t host([&] { return dir(++calls == 1 ? "one" : "two"); });
    EXPECT_EQ(read(L"P"), L"");
}

TEST_F(config_host_test, locations_that_are_replaced_meanwhile_are_used_by_the_second_search)
{
    write("two", "p='b'");
    std::unique_ptr<host_t> second;
    const host_t first([&] {
        second = std::make_unique<host_t>([&] { return dir("two"); });
        return dir("one");
    });
    EXPECT_EQ(read(), L"b");
    EXPECT_EQ(first.calls(), 1);
    EXPECT_EQ(second->calls(), 1);
}

TEST_F(config_host_test, the_second_search_finds_nothing_if_the_locations_are_reset_meanwhile)
{
    write("one", "p='a'");
    const host_t host([&] {
        setbook2::IProductLocations::set(nullptr);
        return dir("one");
    });
    EXPECT_EQ(read(L"P"), L"");
    EXPECT_EQ(host.calls(), 1);
}

TEST_F(config_host_test, a_directory_that_is_set_meanwhile_is_used_by_the_second_search)
{
    write("two", "p='b'");
    const host_t host([&] {
        m_reader->set_cfg_dir(path_t(dir("two")));
        return dir("one");
    });
    EXPECT_EQ(read(), L"b");
    EXPECT_EQ(host.calls(), 1);
}

TEST_F(config_host_test, a_source_that_is_changed_meanwhile_is_used_by_the_second_search)
{
    const std::string one = "one/a source that is longer than a text without memory of its own";
    const std::string two = "one/another source that is longer than a text without memory";
    m_folder.write(one + ".xml", "<bag><message_type id='t' p='a'/></bag>");
    m_folder.write(two + ".xml", "<bag><message_type id='t' p='b' q='c'/></bag>");
    const message_ptr_t message = make_message(make_content({{L"source", dir(one)}}));
    message->set_type(L"t");
    const host_t host([&] {
        message->set_content(make_content({{L"source", dir(two)}}));
        return L"";
    });
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"config_host_test."), L"");
    EXPECT_EQ(m_reader->read_property(ex, message, L"p"), L"a");
    message->set_content(make_content({{L"source", dir(one)}}));
    EXPECT_EQ(m_reader->read_property(ex, message, L"q"), L"c");
}

TEST_F(config_host_test, a_file_that_is_created_before_the_second_search_is_found)
{
    int calls = 0;
    const host_t host([&] {
        if (++calls == 2)
            write("one", "p='a'");
        return dir("one");
    });
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_host_test, a_file_that_cannot_be_opened_once_is_found_by_the_same_call)
{
    write("one", "prefix='Q' p='a'");
    m_reader->set_cfg_dir(path_t(dir("one")));
    int opens = 0;
    const faults_scope_t faults(
        [&](const std::string& call, int) { return call == "open" && ++opens == 1 ? EMFILE : 0; });
    EXPECT_EQ(read(L"P"), L"a");
    EXPECT_EQ(opens, 2);
}

TEST_F(config_host_test, a_file_that_cannot_be_opened_twice_is_tried_again_by_the_next_call_only)
{
    write("one", "p='a'");
    m_reader->set_cfg_dir(path_t(dir("one")));
    int opens = 0;
    const faults_scope_t faults(
        [&](const std::string& call, int) { return call == "open" && ++opens <= 2 ? EMFILE : 0; });
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(opens, 2);
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(opens, 3);
}

// ---- the host's directory

TEST_F(config_host_test, an_empty_directory_of_the_host_is_the_current_directory)
{
    write("one", "p='a'");
    const current_directory_scope_t inside(m_folder.name("one"));
    const host_t host([] { return L""; });
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(host.calls(), 1);
}

TEST_F(config_host_test, with_an_empty_directory_of_the_host_a_source_may_be_an_absolute_path)
{
    write("one", "p='a'");
    const host_t host([] { return L""; });
    EXPECT_EQ(read_from(*m_reader, L"", dir("one/src")), L"a");
}

TEST_F(config_host_test, a_relative_directory_of_the_host_is_below_the_current_directory)
{
    write("one", "p='a'");
    const current_directory_scope_t inside(m_folder.name("."));
    const host_t host([] { return L"one"; });
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_host_test, a_file_of_the_hosts_directory_is_kept_while_another_directory_is_set)
{
    write("one", "p='a'");
    const host_t host([&] { return dir("one"); });
    EXPECT_EQ(read(), L"a");
    write("one", "p='changed'");
    m_reader->set_cfg_dir(path_t(dir("two")));
    EXPECT_EQ(read(), L"");
    m_reader->set_cfg_dir(path_t(dir("one")));
    EXPECT_EQ(read(), L"a");
    m_reader->set_cfg_dir(path_t());
    EXPECT_EQ(read(), L"a");
}

// ---- locks

TEST_F(config_host_test, while_the_host_is_asked_another_reader_waits)
{
    write("one", "p='a'");
    write("two", "p='b'");
    config_reader_t copy(*m_reader);
    copy.set_cfg_dir(path_t(dir("two")));
    std::wstring value;
    background_t other;
    const host_t host([&] {
        other.start([&] { value = read_from(copy); });
        EXPECT_TRUE(other.waits());
        return dir("one");
    });
    EXPECT_EQ(read(), L"a");
    EXPECT_TRUE(other.ends());
    EXPECT_EQ(value, L"b");
}

TEST_F(config_host_test, the_host_may_get_the_reader)
{
    write("one", "p='a'");
    boost::shared_ptr<config_reader_t> got;
    background_t getter;
    const host_t host([&] {
        getter.start([&] { got = config_reader_t::get(); });
        EXPECT_TRUE(getter.ends());
        return dir("one");
    });
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(got, m_reader);
}

TEST_F(config_host_test, the_host_may_create_the_reader_while_a_copy_is_used)
{
    write("one", "p='a'");
    config_reader_t copy(*m_reader);
    m_reader.reset();
    boost::shared_ptr<config_reader_t> got;
    background_t getter;
    const host_t host([&] {
        getter.start([&] { got = config_reader_t::get(); });
        EXPECT_TRUE(getter.ends());
        return dir("one");
    });
    EXPECT_EQ(read_from(copy), L"a");
    EXPECT_TRUE(got);
}

TEST_F(config_host_test, an_exception_of_the_host_reaches_the_caller_and_ends_the_call)
{
    write("one", "p='a'");
    {
        const host_t host([]() -> std::wstring { throw std::runtime_error("host"); });
        EXPECT_THROW(read(), std::runtime_error);
        EXPECT_EQ(host.calls(), 1);
    }
    const host_t host([&] { return dir("one"); });
    std::wstring value;
    background_t reader;
    reader.start([&] { value = read(); });
    EXPECT_TRUE(reader.ends());
    EXPECT_EQ(value, L"a");
}
