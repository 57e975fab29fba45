// The loader of the host's library is replaced, so that each load is seen, and so that it returns
// bags and statuses that the bundled loader does not.

#include <velmoext1/config_reader.h>

#include "background.h"
#include "config_lookup.h"
#include "host_functions.h"
#include "support.h"

#include <setbook2/product_locations.h>

#include <rova/debug.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>

using namespace velmoext_1_4_8;

namespace
{

using basekit2::load_failed;
using basekit2::path_t;
using basekit2::variant_bag_t;
using basekit2::variant_t;

typedef std::vector<std::wstring> files_t;

/// Appends an entry; the reference stays valid until the next one.
variant_bag_t& add_entry(variant_bag_t& bag, const std::wstring& id = L"t",
                         const std::wstring& prefix = std::wstring())
{
    variant_bag_t& entry = bag.add_bag(L"message_type");
    entry.add_value(L"id", id);
    if (!prefix.empty())
        entry.add_value(L"prefix", prefix);
    return entry;
}

void add_child(variant_bag_t& entry, const std::wstring& name, const std::wstring& text)
{
    entry.add_bag(name).add_value(L"", text);
}

/// The process's reader with the directory "/dir". Each file is a copy of m_bag.
class config_loader_test : public testing::Test
{
protected:
    config_loader_test() { m_reader->set_cfg_dir(path_t(L"/dir")); }

    std::wstring read(const lookup_t& lookup = lookup_t()) const
    {
        return read_from(*m_reader, lookup);
    }

    void add_property(const std::wstring& value = L"a") { add_entry(m_bag).add_value(L"p", value); }

    /// Drops the files that were loaded.
    void renew_reader()
    {
        m_reader.reset();
        m_reader = config_reader_t::get();
        m_reader->set_cfg_dir(path_t(L"/dir"));
        m_files.clear();
    }

    variant_bag_t m_bag;
    std::uint32_t m_status = 0;
    files_t m_files; ///< that were loaded, failed loads included
    const loader_scope_t m_loader{
        [this](variant_bag_t& bag, const std::wstring& file, const wchar_t*, bool) {
            m_files.push_back(file);
            bag = m_bag;
            return m_status;
        }};
    boost::shared_ptr<config_reader_t> m_reader = config_reader_t::get();
};

const files_t once = {L"/dir/src.xml"};
const files_t twice = {L"/dir/src.xml", L"/dir/src.xml"};

static_assert(std::has_virtual_destructor_v<config_reader_t>);
static_assert(!std::is_default_constructible_v<config_reader_t>);
static_assert(std::is_copy_constructible_v<config_reader_t>);
static_assert(std::is_copy_assignable_v<config_reader_t>);
static_assert(
    std::is_same_v<decltype(std::declval<const config_reader_t&>().get_cfg_dir()), path_t>);

} // namespace

// ---- the call of the loader

TEST_F(config_loader_test, the_loader_gets_an_empty_bag_and_the_root_and_must_not_miss_the_file)
{
    int loads = 0;
    const loader_scope_t loader(
        [&](variant_bag_t& bag, const std::wstring& file, const wchar_t* root, bool allow_missing) {
            ++loads;
            EXPECT_TRUE(bag.begin_values().at_end());
            EXPECT_TRUE(bag.begin_bags().at_end());
            EXPECT_EQ(file, L"/dir/src.xml");
            EXPECT_STREQ(root, L"bag");
            EXPECT_FALSE(allow_missing);
            bag = m_bag;
            return m_status;
        });
    add_property();
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(loads, 1);
}

TEST_F(config_loader_test, a_load_after_a_failed_one_gets_an_empty_bag_too)
{
    add_property();
    int loads = 0;
    const loader_scope_t loader([&](variant_bag_t& bag, const std::wstring&, const wchar_t*, bool) {
        EXPECT_TRUE(bag.begin_bags().at_end()) << loads;
        bag = m_bag;
        return ++loads < 4 ? load_failed : 0;
    });
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(loads, 4);
}

TEST_F(config_loader_test, only_reading_a_property_loads_a_file)
{
    add_property();
    config_reader_t copy(*m_reader);
    copy = *m_reader;
    copy.get_cfg_dir();
    renew_reader();
    EXPECT_EQ(m_files, files_t());
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(m_files, once);
}

TEST_F(config_loader_test, an_exception_of_the_loader_reaches_the_caller_and_nothing_is_kept)
{
    {
        const loader_scope_t loader(
            [](variant_bag_t&, const std::wstring&, const wchar_t*, bool) -> std::uint32_t {
                throw std::runtime_error("load");
            });
        EXPECT_THROW(read(), std::runtime_error);
    }
    const loader_scope_t loader([&](variant_bag_t& bag, const std::wstring&, const wchar_t*, bool) {
        add_entry(bag).add_value(L"p", L"a");
        return 0U;
    });
    EXPECT_EQ(read(), L"a");
}

// ---- the status

TEST_F(config_loader_test, a_status_with_all_bits_but_that_of_failure_is_a_success)
{
    add_property();
    m_status = 0xBFFFFFFFU;
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(m_files, once);
}

TEST_F(config_loader_test, a_status_with_only_the_bit_of_failure_is_a_failure)
{
    add_property();
    m_status = 0x40000000U;
    EXPECT_EQ(read(), L"");
    m_status = 0;
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_loader_test, a_status_with_all_bits_is_a_failure)
{
    add_property();
    m_status = 0xFFFFFFFFU;
    EXPECT_EQ(read(), L"");
}

TEST_F(config_loader_test, no_bit_but_the_30th_is_a_failure)
{
    add_property();
    for (unsigned bit = 0; bit < 32; ++bit) {
        renew_reader();
        m_status = 1U << bit;
        EXPECT_EQ(read(), bit == 30 ? L"" : L"a") << bit;
    }
}

// ---- how often a file is loaded

TEST_F(config_loader_test, a_loaded_file_is_not_loaded_again)
{
    add_property();
    EXPECT_EQ(read(), L"a");
    EXPECT_EQ(read(of_prefix(L"P")), L"a");
    EXPECT_EQ(read(of_name(L"other")), L"");
    EXPECT_EQ(m_files, once);
}

TEST_F(config_loader_test, an_empty_file_is_loaded_once)
{
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(m_files, once);
}

TEST_F(config_loader_test, both_searches_of_each_call_try_a_file_that_cannot_be_loaded)
{
    m_status = load_failed;
    for (const wchar_t* prefix : {L"P", L""}) {
        m_files.clear();
        EXPECT_EQ(read(of_prefix(prefix)), L"");
        EXPECT_EQ(m_files, twice) << prefix;
        EXPECT_EQ(read(of_prefix(prefix)), L"");
        EXPECT_EQ(m_files.size(), 4U) << prefix;
    }
}

TEST_F(config_loader_test, without_any_directory_the_loader_gets_an_empty_path)
{
    m_reader->set_cfg_dir(path_t());
    m_status = load_failed;
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(m_files, (files_t{L"", L""}));
    m_status = 0;
    add_property();
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_loader_test, a_file_that_only_the_second_search_can_load_is_searched_by_type_only)
{
    add_entry(m_bag, L"t", L"Q").add_value(L"p", L"other");
    add_entry(m_bag, L"t", L"P").add_value(L"p", L"own");
    int loads = 0;
    const loader_scope_t loader([&](variant_bag_t& bag, const std::wstring&, const wchar_t*, bool) {
        bag = m_bag;
        return ++loads == 1 ? load_failed : 0;
    });
    EXPECT_EQ(read(of_prefix(L"P")), L"other");
    EXPECT_EQ(read(of_prefix(L"P")), L"own");
    EXPECT_EQ(loads, 2);
}

TEST_F(config_loader_test, files_are_known_by_their_whole_paths)
{
    add_property();
    m_reader->set_cfg_dir(path_t(L"/dir"));
    EXPECT_EQ(read(of_source(L"below/src")), L"a");
    m_reader->set_cfg_dir(path_t(L"/dir/below"));
    EXPECT_EQ(read(of_source(L"src")), L"a");
    EXPECT_EQ(m_files, files_t({L"/dir/below/src.xml"}));
}

TEST_F(config_loader_test, a_change_of_directory_drops_no_file)
{
    add_property();
    for (int i = 0; i < 2; ++i) {
        for (const wchar_t* dir : {L"/one", L"/two"}) {
            m_reader->set_cfg_dir(path_t(dir));
            EXPECT_EQ(read(), L"a");
        }
    }
    EXPECT_EQ(m_files, files_t({L"/one/src.xml", L"/two/src.xml"}));
}

TEST_F(config_loader_test, paths_are_compared_exactly)
{
    add_property();
    for (const wchar_t* dir : {L"/dir", L"/DIR", L"/./dir", L"/dir/."}) {
        m_reader->set_cfg_dir(path_t(dir));
        read();
    }
    EXPECT_EQ(m_files,
              files_t({L"/dir/src.xml", L"/DIR/src.xml", L"/./dir/src.xml", L"/dir/./src.xml"}));
}

TEST_F(config_loader_test, a_copy_has_the_loaded_files_and_loads_others_for_itself)
{
    add_property();
    read(of_source(L"one"));
    config_reader_t copy(*m_reader);
    read_from(copy, of_source(L"one"));
    EXPECT_EQ(m_files, files_t({L"/dir/one.xml"}));
    read_from(copy, of_source(L"two"));
    read(of_source(L"two"));
    EXPECT_EQ(m_files, files_t({L"/dir/one.xml", L"/dir/two.xml", L"/dir/two.xml"}));
}

// ---- names are used as they are spelled

namespace
{

// Texts that differ only in case, in Unicode normalization, in width, in white space, or in a part
// of a character.
const std::pair<std::wstring, std::wstring> similar_texts[] = {
    {L"t", L"T"},
    {units({0xE9}), units({0xC9})},
    {units({0xE9}), units({'e', 0x301})},
    {units({0xC5}), units({0x212B})},
    {units({0xDF}), L"ss"},
    {units({0xFB01}), L"fi"},
    {L"A", units({0xFF21})},
    {L"t", L" t"},
    {L"t", L"t "},
    {L"t", L"t" + units({0})},
    {L"t", L"t" + units({0, 't'})},
    {units({0xD83D, 0xDE00}), units({0xD83D})},
    {units({0xD800}), units({0xFFFD})},
};

} // namespace

TEST_F(config_loader_test, a_source_is_part_of_the_path_as_it_is_spelled)
{
    add_property();
    for (const auto& [one, other] : similar_texts) {
        renew_reader();
        EXPECT_EQ(read(of_source(one)), L"a");
        EXPECT_EQ(read(of_source(other)), L"a");
        EXPECT_EQ(m_files, files_t({L"/dir/" + one + L".xml", L"/dir/" + other + L".xml"}));
    }
}

TEST_F(config_loader_test, a_source_is_not_escaped)
{
    const std::wstring source = L"a b%20&amp;\\n\"'*?|<>:~" + units({'\n', 1});
    EXPECT_EQ(read(of_source(source)), L"");
    EXPECT_EQ(m_files, files_t({L"/dir/" + source + L".xml"}));
}

TEST_F(config_loader_test, a_source_with_an_extension_gets_another)
{
    read(of_source(L"src.xml"));
    EXPECT_EQ(m_files, files_t({L"/dir/src.xml.xml"}));
}

TEST_F(config_loader_test, similar_types_are_different)
{
    for (const auto& [one, other] : similar_texts) {
        renew_reader();
        m_bag = variant_bag_t();
        add_entry(m_bag, one).add_value(L"p", L"a");
        EXPECT_EQ(read({one, L"", L"p", L"src"}), L"a");
        EXPECT_EQ(read({other, L"", L"p", L"src"}), L"");
    }
}

TEST_F(config_loader_test, similar_prefixes_are_different)
{
    for (const auto& [one, other] : similar_texts) {
        renew_reader();
        m_bag = variant_bag_t();
        add_entry(m_bag).add_value(L"p", L"bare");
        add_entry(m_bag, L"t", one).add_value(L"p", L"prefixed");
        EXPECT_EQ(read(of_prefix(one)), L"prefixed");
        EXPECT_EQ(read(of_prefix(other)), L"bare");
    }
}

TEST_F(config_loader_test, similar_names_of_properties_are_different)
{
    for (const auto& [one, other] : similar_texts) {
        for (const bool is_child : {false, true}) {
            renew_reader();
            m_bag = variant_bag_t();
            if (is_child)
                add_child(add_entry(m_bag), one, L"a");
            else
                add_entry(m_bag).add_value(one, L"a");
            EXPECT_EQ(read(of_name(one)), L"a");
            EXPECT_EQ(read(of_name(other)), L"");
        }
    }
}

// ---- the value of a property

TEST_F(config_loader_test, a_child_with_an_empty_text_ends_the_search_in_its_entry)
{
    variant_bag_t& entry = add_entry(m_bag);
    add_child(entry, L"p", L"");
    add_child(entry, L"p", L"second child");
    EXPECT_EQ(read(), L"");
    renew_reader();
    add_property(L"next entry");
    EXPECT_EQ(read(), L"next entry");
}

TEST_F(config_loader_test, an_empty_text_hides_a_later_one_of_the_same_child)
{
    variant_bag_t& child = add_entry(m_bag).add_bag(L"p");
    child.add_value(L"", L"");
    child.add_value(L"", L"later");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_loader_test, an_empty_id_in_a_child_hides_a_later_one)
{
    variant_bag_t& entry = m_bag.add_bag(L"message_type");
    add_child(entry, L"id", L"");
    add_child(entry, L"id", L"t");
    entry.add_value(L"p", L"a");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_loader_test, an_empty_prefix_in_a_child_hides_a_later_one)
{
    add_property(L"bare");
    variant_bag_t& entry = add_entry(m_bag);
    add_child(entry, L"prefix", L"");
    add_child(entry, L"prefix", L"P");
    entry.add_value(L"p", L"prefixed");
    EXPECT_EQ(read(of_prefix(L"P")), L"bare");
}

TEST_F(config_loader_test, an_empty_name_reads_the_text_of_the_entry)
{
    add_entry(m_bag);
    add_entry(m_bag).add_value(L"", L"text");
    EXPECT_EQ(read(of_name(L"")), L"text");
}

TEST_F(config_loader_test, an_empty_name_reads_a_child_without_a_name_too)
{
    add_child(add_entry(m_bag), L"", L"text");
    EXPECT_EQ(read(of_name(L"")), L"text");
}

TEST_F(config_loader_test, an_attribute_of_an_entry_hides_a_child_in_each_of_its_searches)
{
    variant_bag_t& entry = add_entry(m_bag, L"t", L"P");
    entry.add_value(L"p", L"");
    add_child(entry, L"p", L"child");
    add_property(L"next");
    EXPECT_EQ(read(of_prefix(L"P")), L"next");
}

namespace
{

int assertions = 0;

void count_assertion(const char* expression, const char* /*file*/, int /*line*/,
                     const char* /*function*/)
{
    ++assertions;
    EXPECT_STREQ(expression, "can_get<const wchar_t*>()");
}

} // namespace

TEST_F(config_loader_test, each_search_reports_a_value_that_is_not_a_text)
{
    const auto former = ROVA_2_18::debug::set_assert_handler(count_assertion);
    assertions = 0;
    add_entry(m_bag, L"t", L"P").add_value(L"p", variant_t(true));
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(assertions, 2);
    EXPECT_EQ(read(of_prefix(L"P")), L"");
    EXPECT_EQ(assertions, 4);
    EXPECT_EQ(read(of_prefix(L"Q")), L"");
    EXPECT_EQ(assertions, 5);
    EXPECT_EQ(read(of_name(L"q")), L"");
    EXPECT_EQ(assertions, 5);
    ROVA_2_18::debug::set_assert_handler(former);
}

TEST_F(config_loader_test, a_value_that_is_not_a_text_does_not_end_the_search)
{
    const auto former = ROVA_2_18::debug::set_assert_handler(count_assertion);
    assertions = 0;
    add_entry(m_bag).add_value(L"p", variant_t(true));
    add_property(L"next");
    EXPECT_EQ(read(), L"next");
    EXPECT_EQ(assertions, 1);
    ROVA_2_18::debug::set_assert_handler(former);
}

// ---- locks

TEST_F(config_loader_test, while_a_file_is_loaded_another_reader_waits)
{
    add_property();
    config_reader_t copy(*m_reader);
    copy.set_cfg_dir(path_t(L"/other"));
    std::wstring value;
    background_t other;
    const loader_scope_t loader(
        [&](variant_bag_t& bag, const std::wstring& file, const wchar_t*, bool) {
            bag = m_bag;
            if (file == L"/dir/src.xml") {
                other.start([&] { value = read_from(copy); });
                EXPECT_TRUE(other.waits());
            }
            return m_status;
        });
    EXPECT_EQ(read(), L"a");
    EXPECT_TRUE(other.ends());
    EXPECT_EQ(value, L"a");
}

TEST_F(config_loader_test, while_a_file_is_loaded_get_returns_the_reader)
{
    boost::shared_ptr<config_reader_t> got;
    background_t getter;
    const loader_scope_t loader([&](variant_bag_t&, const std::wstring&, const wchar_t*, bool) {
        getter.start([&] { got = config_reader_t::get(); });
        EXPECT_TRUE(getter.ends());
        return m_status;
    });
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(got, m_reader);
}

namespace
{

background_t* getter_of_assertion = nullptr;

void get_reader(const char* /*expression*/, const char* /*file*/, int /*line*/,
                const char* /*function*/)
{
    getter_of_assertion->start([] { EXPECT_TRUE(config_reader_t::get()); });
    EXPECT_TRUE(getter_of_assertion->ends());
}

} // namespace

TEST_F(config_loader_test, while_a_value_is_read_get_returns_the_reader)
{
    background_t getter;
    getter_of_assertion = &getter;
    const auto former = ROVA_2_18::debug::set_assert_handler(get_reader);
    add_entry(m_bag).add_value(L"p", variant_t(true));
    EXPECT_EQ(read(), L"");
    ROVA_2_18::debug::set_assert_handler(former);
    EXPECT_TRUE(getter.has_started());
}

TEST_F(config_loader_test, while_a_file_is_loaded_another_reader_is_set_copied_and_destroyed)
{
    auto other = std::make_unique<config_reader_t>(*m_reader);
    background_t user;
    const loader_scope_t loader([&](variant_bag_t&, const std::wstring&, const wchar_t*, bool) {
        user.start([&] {
            other->set_cfg_dir(path_t(L"/other"));
            config_reader_t copy(*other);
            EXPECT_EQ(copy.get_cfg_dir(), path_t(L"/other"));
            *other = copy;
            other.reset();
        });
        EXPECT_TRUE(user.ends());
        return m_status;
    });
    EXPECT_EQ(read(), L"");
    EXPECT_TRUE(user.has_started());
}
