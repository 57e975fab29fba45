#include <velmoext1/config_reader.h>

#include "config_lookup.h"
#include "scratch_folder.h"
#include "support.h"

#include <setbook2/product_locations.h>

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

typedef boost::shared_ptr<config_reader_t> reader_ptr_t;

std::string bag_of(const std::string& entries)
{
    return "<bag>" + entries + "</bag>";
}

std::string entry_of(const std::string& value)
{
    return "<message_type id='t' p='" + value + "'/>";
}

/// The process's reader, with the test's own folder set.
class config_reader_test : public testing::Test
{
protected:
    config_reader_test() { m_reader->set_cfg_dir(folder()); }

    basekit2::path_t folder(const std::string& leaf = ".") const
    {
        return basekit2::path_t(m_folder.wide_name(leaf));
    }

    void write(const std::string& entries, const std::string& leaf = "src.xml") const
    {
        m_folder.write(leaf, bag_of(entries));
    }

    std::wstring read(const lookup_t& lookup = lookup_t()) const
    {
        return read_from(*m_reader, lookup);
    }

    void renew_reader()
    {
        m_reader.reset();
        m_reader = config_reader_t::get();
        m_reader->set_cfg_dir(folder());
    }

    scratch_folder_t m_folder;
    reader_ptr_t m_reader = config_reader_t::get();
};

/// The product's locations while in scope.
class locations_t : public setbook2::IProductLocations
{
public:
    explicit locations_t(const scratch_folder_t& folder)
        : m_install(folder.wide_name("install")), m_data(folder.wide_name("data")),
          m_config(folder.wide_name("config"))
    {
        for (const char* leaf : {"install", "data", "config"})
            std::filesystem::create_directory(folder.name(leaf));
        set(this);
    }
    ~locations_t() override { set(nullptr); }
    locations_t(const locations_t&) = delete;
    locations_t& operator=(const locations_t&) = delete;

    const wchar_t* get_install_dir() override { return m_install.c_str(); }
    const wchar_t* get_data_dir() override { return m_data.c_str(); }
    const wchar_t* get_config_dir() override { return m_config.c_str(); }

private:
    std::wstring m_install;
    std::wstring m_data;
    std::wstring m_config;
};

/// The process's working directory while in scope.
class working_directory_t
{
public:
    explicit working_directory_t(const std::string& path) { std::filesystem::current_path(path); }
    ~working_directory_t() { std::filesystem::current_path(m_former); }
    working_directory_t(const working_directory_t&) = delete;
    working_directory_t& operator=(const working_directory_t&) = delete;

private:
    std::filesystem::path m_former = std::filesystem::current_path();
};

void expect_nothing_printed(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace

// ---- one reader per process, as long as it has an owner

TEST_F(config_reader_test, all_callers_get_the_same_reader_while_it_has_an_owner)
{
    EXPECT_EQ(config_reader_t::get(), m_reader);
}

TEST_F(config_reader_test, the_process_does_not_own_the_reader)
{
    const boost::weak_ptr<config_reader_t> watched = m_reader;
    m_reader.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(config_reader_test, a_directory_is_forgotten_with_its_reader)
{
    m_reader.reset();
    EXPECT_TRUE(config_reader_t::get()->get_cfg_dir().is_empty());
}

TEST_F(config_reader_test, a_directory_stays_set_while_the_reader_has_an_owner)
{
    const reader_ptr_t other = config_reader_t::get();
    m_reader.reset();
    EXPECT_EQ(config_reader_t::get()->get_cfg_dir(), folder());
}

TEST_F(config_reader_test, a_copy_is_not_the_reader_of_the_process)
{
    const config_reader_t copy(*m_reader);
    m_reader.reset();
    EXPECT_TRUE(config_reader_t::get()->get_cfg_dir().is_empty());
    EXPECT_EQ(copy.get_cfg_dir(), folder());
}

// ---- the name of the file

TEST_F(config_reader_test, the_file_is_named_after_the_source)
{
    write(entry_of("a"), "one.xml");
    write(entry_of("b"), "two.xml");
    EXPECT_EQ(read(of_source(L"one")), L"a");
    EXPECT_EQ(read(of_source(L"two")), L"b");
}

TEST_F(config_reader_test, messages_of_one_source_with_different_types_share_a_file)
{
    write("<message_type id='t' p='a'/><message_type id='u' p='b'/>");
    EXPECT_EQ(read(of_type(L"t")), L"a");
    EXPECT_EQ(read(of_type(L"u")), L"b");
}

TEST_F(config_reader_test, the_file_name_depends_on_neither_type_nor_prefix)
{
    write(entry_of("a"), "t.xml");
    write(entry_of("b"), "x.xml");
    write(entry_of("c"), "x.src.xml");
    EXPECT_EQ(read(of_prefix(L"x")), L"");
}

TEST_F(config_reader_test, the_case_of_a_source_counts)
{
    write(entry_of("a"), "SRC.xml");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, an_empty_source_has_a_file_too)
{
    write(entry_of("a"), ".xml");
    EXPECT_EQ(read(of_source(L"")), L"a");
}

TEST_F(config_reader_test, a_source_is_appended_to_the_directory_unchanged)
{
    std::filesystem::create_directory(m_folder.name("below"));
    m_reader->set_cfg_dir(folder("below"));
    write(entry_of("up"), "x.xml");
    write(entry_of("down"), "below/x.xml");
    EXPECT_EQ(read(of_source(L"../x")), L"up");
    EXPECT_EQ(read(of_source(L"/x")), L"down");
}

TEST_F(config_reader_test, a_source_with_a_zero_inside_has_no_file)
{
    write(entry_of("a"), "src");
    write(entry_of("a"));
    EXPECT_EQ(read(of_source(L"src" + units({0}))), L"");
    EXPECT_EQ(read(of_source(L"src.xml" + units({0}))), L"");
}

TEST_F(config_reader_test, a_change_of_directory_reads_the_files_of_the_new_one)
{
    std::filesystem::create_directory(m_folder.name("other"));
    write(entry_of("a"));
    write(entry_of("b"), "other/src.xml");
    EXPECT_EQ(read(), L"a");
    m_reader->set_cfg_dir(folder("other"));
    EXPECT_EQ(read(), L"b");
}

TEST_F(config_reader_test, a_change_of_directory_keeps_the_files_that_were_read)
{
    write(entry_of("a"));
    EXPECT_EQ(read(), L"a");
    m_reader->set_cfg_dir(folder("other"));
    write(entry_of("b"));
    m_reader->set_cfg_dir(folder());
    EXPECT_EQ(read(), L"a");
}

// ---- the host's directory

TEST_F(config_reader_test, without_a_directory_the_hosts_configuration_directory_is_used)
{
    const locations_t locations(m_folder);
    for (const char* leaf : {"install", "data", "config"})
        write(entry_of(leaf), std::string(leaf) + "/src.xml");
    m_reader->set_cfg_dir(basekit2::path_t());
    EXPECT_EQ(read(), L"config");
}

TEST_F(config_reader_test, a_directory_that_is_set_is_preferred_to_the_hosts)
{
    const locations_t locations(m_folder);
    write(entry_of("host"), "config/src.xml");
    EXPECT_EQ(read(), L"");
    write(entry_of("set"));
    EXPECT_EQ(read(), L"set");
}

TEST_F(config_reader_test, get_cfg_dir_does_not_return_the_hosts_directory)
{
    const locations_t locations(m_folder);
    write(entry_of("host"), "config/src.xml");
    m_reader->set_cfg_dir(basekit2::path_t());
    EXPECT_EQ(read(), L"host");
    EXPECT_TRUE(m_reader->get_cfg_dir().is_empty());
}

TEST_F(config_reader_test, without_any_directory_nothing_is_configured)
{
    write(entry_of("a"));
    write(entry_of("a"), ".xml");
    const working_directory_t inside(m_folder.name("."));
    m_reader->set_cfg_dir(basekit2::path_t());
    EXPECT_EQ(read(), L"");
    EXPECT_EQ(read(of_source(L"")), L"");
}

TEST_F(config_reader_test, locations_that_are_set_later_are_used_by_the_next_call)
{
    m_reader->set_cfg_dir(basekit2::path_t());
    EXPECT_EQ(read(), L"");
    const locations_t locations(m_folder);
    write(entry_of("host"), "config/src.xml");
    EXPECT_EQ(read(), L"host");
}

TEST_F(config_reader_test, a_new_directory_of_the_host_is_used_by_the_next_call)
{
    const scratch_folder_t other;
    m_reader->set_cfg_dir(basekit2::path_t());
    {
        const locations_t locations(m_folder);
        write(entry_of("a"), "config/src.xml");
        EXPECT_EQ(read(), L"a");
    }
    const locations_t locations(other);
    other.write("config/src.xml", bag_of(entry_of("b")));
    EXPECT_EQ(read(), L"b");
}

TEST_F(config_reader_test, nothing_is_configured_after_the_locations_are_reset)
{
    m_reader->set_cfg_dir(basekit2::path_t());
    {
        const locations_t locations(m_folder);
        write(entry_of("a"), "config/src.xml");
        EXPECT_EQ(read(), L"a");
    }
    EXPECT_EQ(read(), L"");
}

// ---- the entry: by prefix first, then only by type

TEST_F(config_reader_test, an_entry_with_the_prefix_is_preferred_to_an_earlier_one_without)
{
    write("<message_type id='t' p='bare'/><message_type id='t' prefix='P' p='prefixed'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"prefixed");
}

TEST_F(config_reader_test, without_an_entry_of_the_prefix_one_without_a_prefix_is_used)
{
    write("<message_type id='t' p='bare'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"bare");
}

TEST_F(config_reader_test, without_an_entry_of_the_prefix_one_of_another_prefix_is_used_too)
{
    write("<message_type id='t' prefix='Q' p='other'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"other");
}

TEST_F(config_reader_test, the_second_search_takes_the_first_entry_with_any_prefix)
{
    write("<message_type id='t' prefix='Q' p='other'/><message_type id='t' p='bare'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"other");
}

TEST_F(config_reader_test, an_empty_prefix_takes_the_first_entry_with_any_prefix)
{
    write("<message_type id='t' prefix='Q' p='other'/><message_type id='t' p='bare'/>");
    EXPECT_EQ(read(), L"other");
}

TEST_F(config_reader_test, an_entry_with_an_empty_prefix_has_no_prefix)
{
    write("<message_type id='t' prefix='' p='bare'/><message_type id='t' prefix='P' p='a'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"a");
}

TEST_F(config_reader_test, an_entry_without_the_property_does_not_end_the_search)
{
    write("<message_type id='t' q='x'/><message_type id='t' p=''/>" + entry_of("a"));
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_reader_test,
       an_entry_of_the_prefix_without_the_property_does_not_end_the_search_either)
{
    write("<message_type id='t' prefix='P' q='x'/><message_type id='t' prefix='P' p='a'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"a");
}

TEST_F(config_reader_test, other_entries_are_used_if_those_of_the_prefix_do_not_have_the_property)
{
    write("<message_type id='t' prefix='P' q='x'/><message_type id='t' p='bare'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"bare");
}

TEST_F(config_reader_test, the_first_of_several_entries_in_the_file_counts)
{
    write(entry_of("a") + entry_of("b"));
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_reader_test, the_order_of_one_type_is_kept_among_others)
{
    write("<message_type id='u' p='u1'/><message_type id='t' q='-'/>"
          "<message_type id='u' p='u2'/><message_type id='t' p='t1'/>"
          "<message_type id='s' p='s1'/><message_type id='t' p='t2'/>");
    EXPECT_EQ(read(of_type(L"t")), L"t1");
    EXPECT_EQ(read(of_type(L"u")), L"u1");
    EXPECT_EQ(read(of_type(L"s")), L"s1");
}

TEST_F(config_reader_test, an_entry_without_an_id_matches_nothing)
{
    write("<message_type p='a'/><message_type id='' p='b'/>");
    EXPECT_EQ(read(of_type(L"t")), L"");
    EXPECT_EQ(read(of_type(L"")), L"");
    EXPECT_EQ(read(of_type(L"", L"P")), L"");
}

TEST_F(config_reader_test, an_empty_type_matches_nothing_not_even_with_the_prefix)
{
    write("<message_type id='' prefix='P' p='a'/><message_type prefix='P' p='b'/>");
    EXPECT_EQ(read(of_type(L"", L"P")), L"");
}

TEST_F(config_reader_test, types_are_compared_exactly)
{
    write("<message_type id='T' p='upper'/><message_type id='t ' p='blank'/>"
          "<message_type id='tt' p='longer'/>");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, prefixes_are_compared_exactly)
{
    write("<message_type id='t' p='bare'/><message_type id='t' prefix='p' p='lower'/>"
          "<message_type id='t' prefix='PP' p='longer'/>");
    EXPECT_EQ(read(of_prefix(L"P")), L"bare");
}

TEST_F(config_reader_test, names_of_properties_are_compared_exactly)
{
    write("<message_type id='t' P='upper' pp='longer'/>");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, types_that_differ_only_in_unicode_normalization_are_different)
{
    write("<message_type id='\xC3\xA9' p='composed'/><message_type id='e\xCC\x81' p='two'/>");
    EXPECT_EQ(read(of_type(units({'e', 0x301}))), L"two");
}

TEST_F(config_reader_test, other_elements_are_ignored)
{
    write("text<other id='t' p='a'/><Message_type id='t' p='b'/>"
          "<other><message_type id='t' p='c'/></other><message_type id='t' p='d'/>");
    EXPECT_EQ(read(), L"d");
}

TEST_F(config_reader_test, an_attribute_of_the_root_is_not_an_entry)
{
    m_folder.write("src.xml", "<bag id='t' p='a' message_type='t'/>");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, id_and_prefix_are_properties_too)
{
    write("<message_type id='t' prefix='P'/>");
    EXPECT_EQ(read(of_name(L"id")), L"t");
    EXPECT_EQ(read(of_name(L"prefix")), L"P");
}

TEST_F(config_reader_test, thousands_of_entries_of_other_types_change_nothing)
{
    std::string entries = "<message_type id='t' q='-'/>";
    for (int i = 0; i < 5000; ++i)
        entries += "<message_type id='t" + std::to_string(i) + "' p='wrong'/>";
    write(entries + entry_of("right") + entries);
    EXPECT_EQ(read(), L"right");
}

TEST_F(config_reader_test, a_lookup_does_not_iterate_over_the_entries_of_other_types)
{
    const int count = 50000;
    std::string entries;
    for (int i = 0; i < count; ++i)
        entries += "<message_type id='t" + std::to_string(i) + "'/>";
    write(entries + entry_of("a"));
    const std::clock_t before = std::clock();
    const message_ptr_t message = make_message(L"t");
    message->set_source(L"src");
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"config_reader_test."), L"P");
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(m_reader->read_property(ex, message, L"p"), L"a");
    EXPECT_LT((std::clock() - before) / CLOCKS_PER_SEC, 30) << "seconds";
}

// ---- the two forms of a property

TEST_F(config_reader_test, a_child_elements_text_is_a_property)
{
    write("<message_type id='t'><p>a</p></message_type>");
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_reader_test, id_and_prefix_may_be_child_elements)
{
    write("<message_type><id>t</id><p>bare</p></message_type>"
          "<message_type><id>t</id><prefix>P</prefix><p>prefixed</p></message_type>");
    EXPECT_EQ(read(of_prefix(L"P")), L"prefixed");
}

TEST_F(config_reader_test, an_attribute_is_preferred_to_a_child_element)
{
    write("<message_type id='t' p='attribute'><p>child</p></message_type>");
    EXPECT_EQ(read(), L"attribute");
}

TEST_F(config_reader_test, an_empty_attribute_hides_a_child_element)
{
    write("<message_type id='t' p=''><p>child</p></message_type>");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, an_attribute_is_preferred_to_a_child_element_for_an_id_too)
{
    write("<message_type id='u'><id>t</id><p>a</p></message_type>");
    EXPECT_EQ(read(of_type(L"t")), L"");
    EXPECT_EQ(read(of_type(L"u")), L"a");
}

TEST_F(config_reader_test, a_child_element_without_a_text_is_skipped)
{
    for (const std::string empty :
         {"<p/>", "<p></p>", "<p> \n</p>", "<p a='x'/>", "<p><b>x</b></p>"}) {
        renew_reader();
        write("<message_type id='t'>" + empty + "<p>a</p></message_type>");
        EXPECT_EQ(read(), L"a") << empty;
    }
}

TEST_F(config_reader_test, the_first_child_element_with_a_text_counts)
{
    write("<message_type id='t'><p>a</p><p>b</p></message_type>");
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_reader_test, child_elements_of_other_names_do_not_set_the_property)
{
    write("<message_type id='t'>text<P>a</P><q><p>b</p></q></message_type>");
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, white_space_around_a_value_stays)
{
    write("<message_type id='t' q=' a '><p> b </p></message_type>");
    EXPECT_EQ(read(of_name(L"p")), L" b ");
    EXPECT_EQ(read(of_name(L"q")), L" a ");
}

TEST_F(config_reader_test, references_and_cdata_sections_are_read)
{
    write("<message_type id='t'><p>a&lt;&#x42;<![CDATA[<c>]]></p></message_type>");
    EXPECT_EQ(read(), L"a<B<c>");
}

TEST_F(config_reader_test, non_ascii_text_works_in_all_names_and_values)
{
    const std::string word = "gr\xC3\xB6\xC3\x9F"
                             "e";
    const std::string face = "\xF0\x9F\x98\x80";
    write("<message_type id='" + face + "' prefix='" + word + "' " + word + "='" + face + "'/>",
          word + face + ".xml");
    const std::wstring wide_word = L"gr" + units({0xF6, 0xDF}) + L"e";
    const std::wstring wide_face = units({0xD83D, 0xDE00});
    EXPECT_EQ(read({wide_face, wide_word, wide_word, wide_word + wide_face}), wide_face);
    EXPECT_EQ(read({wide_word, wide_word, wide_word, wide_word + wide_face}), L"");
}

// ---- a file is read once

TEST_F(config_reader_test, a_file_that_is_edited_later_is_not_read_again)
{
    write(entry_of("old"));
    EXPECT_EQ(read(), L"old");
    write(entry_of("new"));
    EXPECT_EQ(read(), L"old");
}

TEST_F(config_reader_test, a_file_that_is_removed_later_is_still_used)
{
    write("<message_type id='t' p='a' q='b'/>");
    EXPECT_EQ(read(), L"a");
    std::filesystem::remove(m_folder.name("src.xml"));
    EXPECT_EQ(read(of_name(L"q")), L"b");
}

TEST_F(config_reader_test, a_new_reader_reads_the_file_again)
{
    write(entry_of("old"));
    EXPECT_EQ(read(), L"old");
    write(entry_of("new"));
    renew_reader();
    EXPECT_EQ(read(), L"new");
}

TEST_F(config_reader_test, a_file_without_the_property_is_kept_as_well)
{
    write("");
    EXPECT_EQ(read(), L"");
    write(entry_of("a"));
    EXPECT_EQ(read(), L"");
}

TEST_F(config_reader_test, a_file_that_is_created_after_a_failed_lookup_is_found)
{
    EXPECT_EQ(read(), L"");
    write(entry_of("a"));
    EXPECT_EQ(read(), L"a");
}

// ---- copies

TEST_F(config_reader_test, a_copy_shares_the_files_that_were_read)
{
    write(entry_of("old"));
    EXPECT_EQ(read(), L"old");
    config_reader_t copy(*m_reader);
    write(entry_of("new"));
    EXPECT_EQ(read_from(copy), L"old");
}

TEST_F(config_reader_test, a_copy_works_after_the_original_is_destroyed)
{
    write(entry_of("old"));
    EXPECT_EQ(read(), L"old");
    config_reader_t copy(*m_reader);
    m_reader.reset();
    std::filesystem::remove(m_folder.name("src.xml"));
    EXPECT_EQ(read_from(copy), L"old");
}

TEST_F(config_reader_test, the_original_works_after_a_copy_is_destroyed)
{
    write(entry_of("old"));
    EXPECT_EQ(read(), L"old");
    {
        config_reader_t copy(*m_reader);
        EXPECT_EQ(read_from(copy), L"old");
    }
    write(entry_of("new"));
    EXPECT_EQ(read(), L"old");
}

TEST_F(config_reader_test, files_that_a_copy_reads_later_are_its_own)
{
    config_reader_t copy(*m_reader);
    write(entry_of("old"));
    EXPECT_EQ(read_from(copy), L"old");
    write(entry_of("new"));
    EXPECT_EQ(read(), L"new");
}

TEST_F(config_reader_test, a_copy_has_a_directory_of_its_own)
{
    config_reader_t copy(*m_reader);
    EXPECT_EQ(copy.get_cfg_dir(), folder());
    copy.set_cfg_dir(folder("other"));
    EXPECT_EQ(m_reader->get_cfg_dir(), folder());
}

TEST_F(config_reader_test, an_assigned_reader_has_the_others_files_and_directory)
{
    write(entry_of("old"));
    config_reader_t other(*m_reader);
    EXPECT_EQ(read_from(other), L"old");
    write(entry_of("new"));
    EXPECT_EQ(read(), L"new");
    other.set_cfg_dir(folder("other"));
    other = *m_reader;
    m_reader.reset();
    EXPECT_EQ(other.get_cfg_dir(), folder());
    EXPECT_EQ(read_from(other), L"new");
}

// ---- files that others can write

namespace
{

const char secret[] = "secret.txt";

std::string entity_bomb()
{
    std::string declarations = "<!ENTITY e0 'aaaaaaaaaa'>";
    for (int i = 1; i < 12; ++i) {
        declarations += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            declarations += "&e" + std::to_string(i - 1) + ";";
        declarations += "'>";
    }
    return "<!DOCTYPE bag [" + declarations +
           "]><bag><message_type id='t'><p>&e11;</p></message_type></bag>";
}

// Returns a well-formed file of that many bytes.
std::string padded_to(std::size_t size)
{
    const std::string start = "<bag>" + entry_of("a");
    const std::string end = "</bag>";
    const std::size_t max_comment = 1U << 20U;
    std::string text = start;
    while (text.size() + end.size() < size) {
        const std::size_t remaining = size - text.size() - end.size();
        text += remaining < 2 * max_comment ? "<!--" + std::string(remaining - 7, ' ') + "-->"
                                            : "<!--" + std::string(max_comment, ' ') + "-->";
    }
    return text + end;
}

struct hostile_file_t
{
    const char* name;
    std::string bytes;
};

const std::size_t max_file_bytes = 16U << 20U;

std::vector<hostile_file_t> hostile_files()
{
    const std::string bag_with_reference =
        "<bag><message_type id='t'><p>&e;</p></message_type></bag>";
    const std::string good = bag_of(entry_of("a"));
    return {
        {"empty", ""},
        {"text", "plain text"},
        {"binary", std::string("\x7F"
                               "ELF\0\1\2\xFF\xFE<bag>",
                               13)},
        {"zero", std::string(4096, '\0')},
        {"zero_inside", good + std::string(1, '\0')},
        {"bad_utf8", bag_of(entry_of("\xC3("))},
        {"external_entity",
         "<!DOCTYPE bag [<!ENTITY e SYSTEM '" + std::string(secret) + "'>]>" + bag_with_reference},
        {"external_parameter",
         "<!DOCTYPE bag [<!ENTITY % d SYSTEM '" + std::string(secret) + "'>%d;]>" + good},
        {"external_subset", "<!DOCTYPE bag SYSTEM '" + std::string(secret) + "'>" + good},
        {"internal_entity", "<!DOCTYPE bag [<!ENTITY e 'a'>]>" + bag_with_reference},
        {"defaulted",
         "<!DOCTYPE bag [<!ATTLIST message_type p CDATA 'a'>]><bag><message_type id='t'/></bag>"},
        {"bomb", entity_bomb()},
        {"undeclared_entity", bag_with_reference},
        {"too_long", padded_to(max_file_bytes + 1)},
        {"wrong_root", "<bags>" + entry_of("a") + "</bags>"},
        {"upper_root", "<BAG>" + entry_of("a") + "</BAG>"},
        {"bag_below", "<root>" + good + "</root>"},
        {"two_roots", good + good},
        {"mismatched", "<bag>" + entry_of("a") + "</gab>"},
        {"repeated_attribute", bag_of("<message_type id='t' p='a' p='a'/>")},
        {"text_after", good + "text"},
        {"text_after_an_error", "<bag a='1' a='1'>text" + entry_of("a") + "</bag>"},
        {"text_not_as_declared", "<?xml version='1.0' encoding='UTF-16'?>" + bag_of("text")},
        {"errors", "<bag>" + std::string(5000000, '&')},
        {"deep", "<bag>" + entry_of("a") +
                     [] {
                         std::string deep;
                         for (int i = 0; i < 100000; ++i)
                             deep += "<a>";
                         return deep;
                     }()},
    };
}

} // namespace

TEST_F(config_reader_test, a_file_that_is_not_a_configuration_gives_nothing_and_is_not_kept)
{
    m_folder.write(secret, "secret");
    for (const hostile_file_t& row : hostile_files()) {
        const std::string leaf = row.name + std::string(".xml");
        const lookup_t lookup = of_source(std::wstring(row.name, row.name + std::strlen(row.name)));
        m_folder.write(leaf, row.bytes);
        expect_nothing_printed([&] { EXPECT_EQ(read(lookup), L"") << row.name; });
        write(entry_of("good"), leaf);
        EXPECT_EQ(read(lookup), L"good") << row.name;
    }
}

TEST_F(config_reader_test, a_file_of_16_mib_is_read)
{
    m_folder.write("src.xml", padded_to(max_file_bytes));
    ASSERT_EQ(std::filesystem::file_size(m_folder.name("src.xml")), max_file_bytes);
    EXPECT_EQ(read(), L"a");
}

TEST_F(config_reader_test, a_file_that_is_cut_anywhere_gives_nothing_and_is_not_kept)
{
    const std::string whole =
        "<?xml version='1.0' encoding='UTF-8'?>\n<!-- c --><bag>\n" + entry_of("g\xC3\xBC") +
        "<message_type id='u'><p>a&amp;b<![CDATA[c]]></p></message_type>\n</bag>";
    for (std::size_t size = 0; size < whole.size(); ++size) {
        m_folder.write("src.xml", whole.substr(0, size));
        expect_nothing_printed([&] { EXPECT_EQ(read(), L"") << size; });
    }
    m_folder.write("src.xml", whole);
    EXPECT_EQ(read(), L"g" + units({0xFC}));
}

TEST_F(config_reader_test, a_directory_instead_of_the_file_gives_nothing_and_is_not_kept)
{
    std::filesystem::create_directory(m_folder.name("src.xml"));
    expect_nothing_printed([&] { EXPECT_EQ(read(), L""); });
    std::filesystem::remove(m_folder.name("src.xml"));
    write(entry_of("good"));
    EXPECT_EQ(read(), L"good");
}

TEST_F(config_reader_test, a_fifo_instead_of_the_file_gives_nothing_and_is_not_kept)
{
    ASSERT_EQ(mkfifo(m_folder.name("src.xml").c_str(), 0600), 0);
    expect_nothing_printed([&] { EXPECT_EQ(read(), L""); });
    std::filesystem::remove(m_folder.name("src.xml"));
    write(entry_of("good"));
    EXPECT_EQ(read(), L"good");
}

TEST_F(config_reader_test, a_device_instead_of_the_file_gives_nothing)
{
    ASSERT_EQ(symlink("/dev/zero", m_folder.name("src.xml").c_str()), 0);
    expect_nothing_printed([&] { EXPECT_EQ(read(), L""); });
}

TEST_F(config_reader_test, a_missing_file_prints_nothing_either)
{
    expect_nothing_printed([&] { EXPECT_EQ(read(), L""); });
}

TEST_F(config_reader_test, a_link_to_a_file_is_followed)
{
    write(entry_of("a"), "elsewhere");
    ASSERT_EQ(symlink(m_folder.name("elsewhere").c_str(), m_folder.name("src.xml").c_str()), 0);
    EXPECT_EQ(read(), L"a");
}
