// The host's function that finds catalogs is replaced, so that each request is seen. The loader of
// configuration files is replaced too.

#include <velmoext1/extended_message.h>

#include "host_functions.h"
#include "support.h"

#include <velmoext1/config_reader.h>

#include <setbook2/product_locations.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <utility>

using namespace velmoext_1_4_8;

namespace
{

using basekit2::path_t;
using basekit2::variant_bag_t;

typedef std::vector<std::wstring> names_t;

/// Finds its patterns by their ids, and records each requested id.
class recording_catalog_t : public ROVA_2_18::i18n::catalog_t
{
public:
    ROVA_2_18::i18n::message_t message(const std::wstring& id) const override
    {
        m_ids.push_back(id);
        const auto found = m_patterns.find(id);
        return found == m_patterns.end() ? ROVA_2_18::i18n::message_t()
                                         : ROVA_2_18::i18n::message_t(found->second);
    }

    void set(const string_map_t& patterns) { m_patterns = patterns; }

    const names_t& ids() const { return m_ids; }

private:
    string_map_t m_patterns;
    mutable names_t m_ids;
};

/// Gives tests access to the protected members.
class exposed_message_t : public extended_message_t
{
public:
    using extended_message_t::extended_message_t;
    using extended_message_t::update_text;
    using extended_message_t::update_title;
};

/// A message of type "t" and source "src", which is sent with the prefix "p". The title of each
/// type is configured.
class catalog_requests_test : public testing::Test, private setbook2::IProductLocations
{
public:
    catalog_requests_test()
    {
        set(this);
        set_source(L"src");
    }
    ~catalog_requests_test() override { set(nullptr); }

protected:
    /// Replaces the source, since message_t::set_source() keeps a source that is set already.
    void set_source(const std::wstring& source) const
    {
        message_t::message_content_t content = m_message->get_content();
        content.attributes[L"source"] = source;
        m_message->set_content(content);
    }

    void set_args(const string_map_t& args) const
    {
        message_t::message_content_t content = m_message->get_content();
        content.args = args;
        m_message->set_content(content);
    }

    exposed_message_t make() const { return exposed_message_t(m_ex, m_message); }

    /// Returns the names of the catalogs that were requested since the last call.
    names_t take_names() { return std::exchange(m_names, {}); }

    int m_loads = 0;
    int m_host_calls = 0;
    names_t m_names;
    std::map<std::wstring, recording_catalog_t> m_catalogs;
    string_map_t m_titles = {{L"t", L"title"}}; ///< ids by types
    message_ptr_t m_message = make_message(L"t");
    boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"catalog_requests_test."), L"p");

private:
    const wchar_t* get_install_dir() override { return L""; }
    const wchar_t* get_data_dir() override { return L""; }
    const wchar_t* get_config_dir() override
    {
        ++m_host_calls;
        return L"/dir";
    }

    const loader_scope_t m_loader{
        [this](variant_bag_t& bag, const std::wstring&, const wchar_t*, bool) {
            ++m_loads;
            for (const auto& [type, id] : m_titles) {
                variant_bag_t& entry = bag.add_bag(L"message_type");
                entry.add_value(L"id", type);
                entry.add_value(L"title_msgid", id);
            }
            return 0U;
        }};
    const catalog_finder_scope_t m_finder{
        [this](const std::wstring& name) -> const ROVA_2_18::i18n::catalog_t* {
            m_names.push_back(name);
            const auto found = m_catalogs.find(name);
            return found == m_catalogs.end() ? nullptr : &found->second;
        }};
};

const names_t both = {L"p.src", L"src"};

static_assert(!std::is_polymorphic_v<extended_message_t>);
static_assert(std::is_copy_constructible_v<extended_message_t>);
static_assert(std::is_copy_assignable_v<extended_message_t>);
static_assert(!std::is_default_constructible_v<extended_message_t>);

} // namespace

// ---- which catalogs are requested

TEST_F(catalog_requests_test, a_text_of_the_prefixed_catalog_requests_no_other)
{
    m_catalogs[L"p.src"].set({{L"t", L"text"}, {L"title", L"title"}});
    m_catalogs[L"src"].set({{L"t", L"wrong"}, {L"title", L"wrong"}});
    exposed_message_t message = make();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(message.get_text(), L"text");
        EXPECT_EQ(take_names(), names_t({L"p.src"})) << i;
        EXPECT_EQ(message.get_title(), L"title");
        EXPECT_EQ(take_names(), names_t({L"p.src"})) << i;
    }
}

TEST_F(catalog_requests_test, a_missing_prefixed_catalog_is_followed_by_the_bare_one)
{
    m_catalogs[L"src"].set({{L"t", L"text"}, {L"title", L"title"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), both);
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(take_names(), both);
}

TEST_F(catalog_requests_test, an_empty_text_of_the_prefixed_catalog_is_followed_by_the_bare_one)
{
    m_catalogs[L"p.src"].set({{L"t", L""}});
    m_catalogs[L"src"].set({{L"t", L"text"}, {L"title", L"title"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), both);
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(take_names(), both);
}

TEST_F(catalog_requests_test, after_the_fallback_only_the_bare_catalog_is_requested)
{
    m_catalogs[L"src"].set({{L"t", L"text"}, {L"title", L"title"}});
    exposed_message_t message = make();
    message.get_text();
    message.get_title();
    m_catalogs[L"p.src"].set({{L"t", L"prefixed"}, {L"title", L"prefixed"}});
    take_names();
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), names_t({L"src"}));
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(take_names(), names_t({L"src"}));
}

TEST_F(catalog_requests_test, without_any_text_the_bare_catalog_is_requested_twice_by_later_calls)
{
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"");
    EXPECT_EQ(take_names(), both);
    EXPECT_EQ(message.get_text(), L"");
    EXPECT_EQ(take_names(), names_t({L"src", L"src"}));
}

TEST_F(catalog_requests_test, an_empty_prefix_requests_the_name_with_the_dot_first)
{
    m_ex->set_prefix(L"");
    exposed_message_t message = make();
    message.get_title();
    EXPECT_EQ(take_names(), names_t({L".src", L"src"}));
}

TEST_F(catalog_requests_test, an_empty_source_requests_the_prefix_with_the_dot_and_the_empty_name)
{
    set_source(L"");
    exposed_message_t message = make();
    message.get_text();
    EXPECT_EQ(take_names(), names_t({L"p.", L""}));
}

TEST_F(catalog_requests_test, prefix_and_source_are_used_as_they_are_spelled)
{
    m_ex->set_prefix(L"P/ a." + units({'e', 0x301}));
    set_source(L"../S.x" + units({0xD800}));
    exposed_message_t message = make();
    message.get_text();
    const std::wstring source = L"../S.x" + units({0xD800});
    EXPECT_EQ(take_names(), names_t({L"P/ a." + units({'e', 0x301}) + L"." + source, source}));
}

TEST_F(catalog_requests_test, only_titles_and_texts_request_catalogs)
{
    exposed_message_t message = make();
    message.update_text();
    message.update_title();
    message.get_cfg_prop(L"title_msgid");
    message.get_cfg_props(L"title_msgid");
    message.get_message();
    exposed_message_t copy(message);
    copy = message;
    EXPECT_EQ(take_names(), names_t());
}

// ---- ids

TEST_F(catalog_requests_test, the_title_has_the_configured_id_in_both_catalogs)
{
    m_catalogs[L"p.src"];
    m_catalogs[L"src"];
    make().get_title();
    EXPECT_EQ(m_catalogs[L"p.src"].ids(), names_t({L"title"}));
    EXPECT_EQ(m_catalogs[L"src"].ids(), names_t({L"title"}));
}

TEST_F(catalog_requests_test, an_empty_configured_id_is_requested_from_both_catalogs)
{
    for (const string_map_t& titles : {string_map_t{{L"t", L""}}, string_map_t()}) {
        m_titles = titles;
        m_catalogs.clear();
        m_catalogs[L"p.src"];
        m_catalogs[L"src"].set({{L"", L"nothing"}});
        EXPECT_EQ(make().get_title(), L"nothing");
        EXPECT_EQ(m_catalogs[L"p.src"].ids(), names_t({L""}));
        EXPECT_EQ(m_catalogs[L"src"].ids(), names_t({L""}));
    }
}

TEST_F(catalog_requests_test, an_empty_type_is_requested_from_both_catalogs)
{
    m_message->set_type(L"");
    m_catalogs[L"p.src"];
    m_catalogs[L"src"].set({{L"", L"nothing"}});
    EXPECT_EQ(make().get_text(), L"nothing");
    EXPECT_EQ(m_catalogs[L"p.src"].ids(), names_t({L""}));
    EXPECT_EQ(m_catalogs[L"src"].ids(), names_t({L""}));
}

// ---- a title is filled once

TEST_F(catalog_requests_test, the_prefix_of_the_first_call_counts_for_the_title)
{
    m_catalogs[L"q.src"].set({{L"title", L"title"}});
    exposed_message_t message = make();
    m_ex->set_prefix(L"q");
    EXPECT_EQ(message.get_title(), L"title");
    m_ex->set_prefix(L"r");
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(take_names(), names_t({L"q.src", L"q.src"}));
}

TEST_F(catalog_requests_test, the_prefix_of_the_first_call_counts_for_the_text)
{
    m_catalogs[L"q.src"].set({{L"t", L"text"}});
    exposed_message_t message = make();
    m_ex->set_prefix(L"q");
    EXPECT_EQ(message.get_text(), L"text");
    m_ex->set_prefix(L"r");
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), names_t({L"q.src", L"q.src"}));
}

TEST_F(catalog_requests_test, the_source_of_the_first_call_counts_for_the_title)
{
    m_catalogs[L"p.later"].set({{L"title", L"title"}});
    exposed_message_t message = make();
    set_source(L"later");
    EXPECT_EQ(message.get_title(), L"title");
    set_source(L"latest");
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(take_names(), names_t({L"p.later", L"p.later"}));
}

TEST_F(catalog_requests_test, the_id_of_the_first_call_counts_for_the_title)
{
    m_titles = {{L"t", L"one"}, {L"u", L"two"}, {L"v", L"three"}};
    m_catalogs[L"p.src"].set({{L"one", L"1"}, {L"two", L"2"}, {L"three", L"3"}});
    exposed_message_t message = make();
    m_message->set_type(L"u");
    EXPECT_EQ(message.get_title(), L"2");
    m_message->set_type(L"v");
    EXPECT_EQ(message.get_title(), L"2");
}

TEST_F(catalog_requests_test, the_arguments_of_the_first_call_count_for_the_title)
{
    m_catalogs[L"p.src"].set({{L"title", L"{a} {b}"}});
    exposed_message_t message = make();
    set_args({{L"a", L"1"}});
    EXPECT_EQ(message.get_title(), L"1 {b}");
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(message.get_title(), L"1 {b}");
}

TEST_F(catalog_requests_test, a_title_without_an_id_is_filled_once_too)
{
    m_titles.clear();
    m_catalogs[L"p.src"].set({{L"", L"{a}"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"{a}");
    set_args({{L"a", L"1"}});
    m_titles = {{L"t", L"title"}};
    EXPECT_EQ(message.get_title(), L"{a}");
    EXPECT_EQ(m_loads, 1);
}

TEST_F(catalog_requests_test, the_title_does_not_fill_the_text)
{
    m_catalogs[L"p.src"].set({{L"title", L"{a}"}});
    m_catalogs[L"p.later"].set({{L"u", L"{a}"}});
    exposed_message_t message = make();
    set_args({{L"a", L"1"}});
    EXPECT_EQ(message.get_title(), L"1");
    m_message->set_type(L"u");
    set_source(L"later");
    set_args({{L"a", L"2"}});
    EXPECT_EQ(message.get_text(), L"2");
    EXPECT_EQ(message.get_title(), L"1");
}

TEST_F(catalog_requests_test, each_object_of_one_message_is_filled_for_itself)
{
    m_catalogs[L"p.src"].set({{L"title", L"{a}"}});
    set_args({{L"a", L"1"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"1");
    set_args({{L"a", L"2"}});
    EXPECT_EQ(make().get_title(), L"2");
    EXPECT_EQ(message.get_title(), L"1");
}

TEST_F(catalog_requests_test, a_copy_is_not_filled_again)
{
    m_catalogs[L"src"].set({{L"title", L"{a}{b}"}});
    set_args({{L"a", L"1"}});
    exposed_message_t message = make();
    message.get_title();
    take_names();
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    exposed_message_t copy(message);
    EXPECT_EQ(copy.get_title(), L"1{b}");
    EXPECT_EQ(take_names(), names_t({L"src"}));
    EXPECT_EQ(m_loads, 1);
}

TEST_F(catalog_requests_test, updating_the_title_reads_all_but_former_arguments_again)
{
    m_catalogs[L"src"].set({{L"title", L"wrong"}});
    set_args({{L"a", L"1"}});
    exposed_message_t message = make();
    message.get_title();
    m_titles = {{L"t", L"new"}};
    m_ex->set_prefix(L"q");
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    m_catalogs[L"q.src"].set({{L"new", L"{a}{b}"}});
    message.update_title();
    take_names();
    EXPECT_EQ(message.get_title(), L"13");
    EXPECT_EQ(take_names(), names_t({L"q.src"}));
    EXPECT_EQ(m_loads, 2);
}

TEST_F(catalog_requests_test, a_title_that_could_not_be_filled_is_filled_by_the_next_call)
{
    m_catalogs[L"p.src"].set({{L"title", L"{a}{b}"}});
    set_args({{L"a", L"1"}});
    exposed_message_t message = make();
    {
        const loader_scope_t loader(
            [](variant_bag_t&, const std::wstring&, const wchar_t*, bool) -> std::uint32_t {
                throw std::runtime_error("load");
            });
        EXPECT_THROW(message.get_title(), std::runtime_error);
    }
    EXPECT_EQ(take_names(), names_t());
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(message.get_title(), L"23");
}

TEST_F(catalog_requests_test, an_exception_of_the_host_reaches_the_caller_and_takes_no_fallback)
{
    m_catalogs[L"p.src"].set({{L"t", L"{a}{b}"}});
    set_args({{L"a", L"1"}});
    exposed_message_t message = make();
    {
        const catalog_finder_scope_t finder(
            [](const std::wstring&) -> const ROVA_2_18::i18n::catalog_t* {
                throw std::runtime_error("catalog");
            });
        EXPECT_THROW(message.get_text(), std::runtime_error);
    }
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(message.get_text(), L"1{b}");
    EXPECT_EQ(take_names(), names_t({L"p.src"}));
}

// ---- the fallback is named after the source at its time

TEST_F(catalog_requests_test, the_fallback_of_the_title_has_the_name_of_the_present_source)
{
    m_catalogs[L"p.src"].set({{L"title", L"title"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"title");
    m_catalogs.clear();
    m_catalogs[L"later"].set({{L"title", L"later"}});
    set_source(L"later");
    take_names();
    EXPECT_EQ(message.get_title(), L"later");
    EXPECT_EQ(take_names(), names_t({L"p.src", L"later"}));
}

TEST_F(catalog_requests_test, a_fallback_that_gave_a_text_keeps_its_name)
{
    m_catalogs[L"src"].set({{L"t", L"text"}, {L"title", L"title"}});
    m_catalogs[L"later"].set({{L"t", L"wrong"}, {L"title", L"wrong"}});
    exposed_message_t message = make();
    message.get_title();
    message.get_text();
    set_source(L"later");
    take_names();
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), names_t({L"src", L"src"}));
}

TEST_F(catalog_requests_test, an_empty_text_of_the_fallback_is_followed_by_that_of_the_new_source)
{
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"");
    set_source(L"later");
    m_catalogs[L"later"].set({{L"t", L"text"}});
    take_names();
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), names_t({L"src", L"later"}));
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_names(), names_t({L"later"}));
}

// ---- when the configuration is read

TEST_F(catalog_requests_test, a_text_reads_no_configuration)
{
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"");
    m_catalogs[L"src"].set({{L"t", L"text"}});
    EXPECT_EQ(message.get_text(), L"text");
    message.update_text();
    EXPECT_EQ(m_loads, 0);
    EXPECT_EQ(m_host_calls, 0);
}

TEST_F(catalog_requests_test, construction_copies_and_lists_of_properties_read_no_configuration)
{
    exposed_message_t message = make();
    exposed_message_t copy(message);
    copy = message;
    EXPECT_EQ(copy.get_message(), m_message);
    EXPECT_TRUE(copy.get_cfg_props(L"title_msgid").empty());
    EXPECT_EQ(m_loads, 0);
    EXPECT_EQ(m_host_calls, 0);
}

TEST_F(catalog_requests_test, the_first_title_reads_the_configuration_and_later_ones_do_not)
{
    m_catalogs[L"p.src"].set({{L"title", L"title"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(m_loads, 1);
    m_host_calls = 0;
    EXPECT_EQ(message.get_title(), L"title");
    m_catalogs.clear();
    EXPECT_EQ(message.get_title(), L"");
    EXPECT_EQ(m_loads, 1);
    EXPECT_EQ(m_host_calls, 0);
}

TEST_F(catalog_requests_test, a_property_is_read_by_each_call)
{
    exposed_message_t message = make();
    EXPECT_EQ(message.get_cfg_prop(L"title_msgid"), L"title");
    m_titles = {{L"t", L"other"}};
    EXPECT_EQ(message.get_cfg_prop(L"title_msgid"), L"other");
    EXPECT_EQ(m_loads, 2);
}

TEST_F(catalog_requests_test, a_property_is_read_by_the_reader_of_the_process)
{
    const auto reader = config_reader_t::get();
    reader->set_cfg_dir(path_t(L"/own"));
    exposed_message_t message = make();
    EXPECT_EQ(message.get_cfg_prop(L"title_msgid"), L"title");
    EXPECT_EQ(message.get_cfg_prop(L"title_msgid"), L"title");
    EXPECT_EQ(m_loads, 1);
    EXPECT_EQ(m_host_calls, 0);
}

TEST_F(catalog_requests_test, a_message_does_not_own_the_reader)
{
    exposed_message_t message = make();
    message.get_title();
    config_reader_t::get()->set_cfg_dir(path_t(L"/own"));
    EXPECT_TRUE(config_reader_t::get()->get_cfg_dir().is_empty());
}
