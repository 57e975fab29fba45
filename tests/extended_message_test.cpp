#include <velmoext1/extended_message.h>

#include "catalog_support.h"
#include "scratch_folder.h"
#include "support.h"

#include <velmoext1/config_reader.h>

#include <gtest/gtest.h>

#include <utility>

using namespace velmoext_1_4_8;

namespace
{

using ROVA_2_18::i18n::catalog_t;

/// The ids that were requested from catalogs, each as "CATALOG:ID".
typedef std::vector<std::wstring> requests_t;

/// Finds its patterns by their ids, and records each requested id.
class recording_catalog_t : public catalog_t
{
public:
    recording_catalog_t(const std::wstring& name, const string_map_t& patterns,
                        requests_t& requests)
        : m_name(name), m_patterns(patterns), m_requests(&requests)
    {}

    ROVA_2_18::i18n::message_t message(const std::wstring& id) const override
    {
        m_requests->push_back(m_name + L":" + id);
        const auto found = m_patterns.find(id);
        return found == m_patterns.end() ? ROVA_2_18::i18n::message_t()
                                         : ROVA_2_18::i18n::message_t(found->second);
    }

private:
    std::wstring m_name;
    string_map_t m_patterns;
    requests_t* m_requests;
};

/// Gives tests access to the protected members.
class exposed_message_t : public extended_message_t
{
public:
    using extended_message_t::extended_message_t;
    using extended_message_t::generate_filename;
    using extended_message_t::update_text;
    using extended_message_t::update_title;
};

/// A message of type "t" and source "src", which is sent with the prefix "p".
class extended_message_test : public testing::Test
{
protected:
    extended_message_test()
    {
        m_reader->set_cfg_dir(basekit2::path_t(m_folder.wide_name(".")));
        set_source(L"src");
    }

    void add(const std::wstring& name, const string_map_t& patterns = {})
    {
        m_catalogs.add(name, boost::make_shared<recording_catalog_t>(name, patterns, m_requests));
    }

    void configure(const std::string& entries) const
    {
        m_folder.write("src.xml", "<bag>" + entries + "</bag>");
    }

    void configure_title() const { configure("<message_type id='t' title_msgid='title'/>"); }

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

    exposed_message_t make(const std::wstring& prefix = L"p") const
    {
        return exposed_message_t(
            velmo_ex_t::get(velmo_ex_t::generate_id(L"extended_message_test."), prefix), m_message);
    }

    /// Returns the requests since the last call.
    requests_t take_requests() { return std::exchange(m_requests, {}); }

    scratch_folder_t m_folder;
    requests_t m_requests;
    catalogs_t m_catalogs;
    boost::shared_ptr<config_reader_t> m_reader = config_reader_t::get();
    message_ptr_t m_message = make_message(L"t");
};

} // namespace

// ---- the catalog and the id

TEST_F(extended_message_test, the_text_is_the_message_of_the_type_in_the_prefixed_catalog)
{
    add(L"p.src", {{L"t", L"prefixed"}});
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(make().get_text(), L"prefixed");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:t"}));
}

TEST_F(extended_message_test, an_empty_text_of_the_prefixed_catalog_falls_back_to_the_bare_one)
{
    add(L"p.src");
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(make().get_text(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:t", L"src:t"}));
}

TEST_F(extended_message_test, a_missing_prefixed_catalog_falls_back_to_the_bare_one)
{
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(make().get_text(), L"bare");
}

TEST_F(extended_message_test, a_pattern_that_arguments_leave_empty_falls_back_to_the_bare_catalog)
{
    set_args({{L"a", L""}});
    add(L"p.src", {{L"t", L"{a}"}});
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(make().get_text(), L"bare");
}

TEST_F(extended_message_test, the_fallback_of_the_text_is_remembered)
{
    add(L"p.src");
    add(L"src", {{L"t", L"bare"}});
    exposed_message_t message = make();
    message.get_text();
    take_requests();
    add(L"p.src", {{L"t", L"prefixed"}});
    EXPECT_EQ(message.get_text(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L"src:t"}));
}

TEST_F(extended_message_test, the_fallback_of_the_title_is_remembered)
{
    configure_title();
    add(L"p.src");
    add(L"src", {{L"title", L"bare"}});
    exposed_message_t message = make();
    message.get_title();
    EXPECT_EQ(take_requests(), requests_t({L"p.src:title", L"src:title"}));
    EXPECT_EQ(message.get_title(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L"src:title"}));
}

TEST_F(extended_message_test, title_and_text_fall_back_independently)
{
    configure_title();
    add(L"p.src", {{L"t", L"text"}});
    add(L"src", {{L"title", L"title"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"title");
    EXPECT_EQ(message.get_text(), L"text");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:title", L"src:title", L"p.src:t"}));
}

TEST_F(extended_message_test,
       without_a_text_both_catalogs_are_searched_first_and_then_only_the_bare_one)
{
    add(L"p.src");
    add(L"src");
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:t", L"src:t"}));
    EXPECT_EQ(message.get_text(), L"");
    EXPECT_EQ(take_requests(), requests_t({L"src:t", L"src:t"}));
}

TEST_F(extended_message_test, without_any_catalog_title_and_text_are_empty)
{
    configure_title();
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"");
    EXPECT_EQ(message.get_text(), L"");
}

TEST_F(extended_message_test, a_catalog_that_is_registered_later_is_found)
{
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"");
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(message.get_text(), L"bare");
}

TEST_F(extended_message_test, an_empty_prefix_searches_the_catalog_of_a_dot_and_the_source_first)
{
    add(L".src");
    add(L"src", {{L"t", L"bare"}});
    EXPECT_EQ(make(L"").get_text(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L".src:t", L"src:t"}));
}

TEST_F(extended_message_test, catalogs_are_named_by_prefix_and_source)
{
    EXPECT_EQ(make().generate_filename(true), L"p.src");
    EXPECT_EQ(make().generate_filename(false), L"src");
    EXPECT_EQ(make(L"").generate_filename(true), L".src");
    set_source(L"");
    EXPECT_EQ(make().generate_filename(true), L"p.");
    EXPECT_EQ(make().generate_filename(false), L"");
}

TEST_F(extended_message_test, the_id_of_the_title_is_the_configured_one)
{
    configure("<message_type id='t' title_msgid='bare'/>"
              "<message_type id='t' prefix='p' title_msgid='prefixed'/>");
    add(L"p.src", {{L"prefixed", L"title"}});
    EXPECT_EQ(make().get_title(), L"title");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:prefixed"}));
}

TEST_F(extended_message_test, without_a_configured_id_the_title_is_looked_up_with_an_empty_one)
{
    add(L"p.src");
    add(L"src", {{L"", L"whatever"}});
    EXPECT_EQ(make().get_title(), L"whatever");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:", L"src:"}));
}

TEST_F(extended_message_test, an_id_configured_for_another_type_is_not_used_for_the_title)
{
    configure("<message_type id='u' title_msgid='title'/>");
    add(L"p.src", {{L"title", L"title"}});
    EXPECT_EQ(make().get_title(), L"");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:"}));
}

// ---- arguments

TEST_F(extended_message_test, arguments_fill_the_placeholders_of_their_names)
{
    configure_title();
    set_args({{L"a", L"1"}, {L"b", L"2"}});
    add(L"p.src", {{L"t", L"{b}, {a}"}, {L"title", L"{a} of {b}"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"2, 1");
    EXPECT_EQ(message.get_title(), L"1 of 2");
}

TEST_F(extended_message_test, attributes_and_elements_are_not_arguments)
{
    m_message->set_content(make_content({{L"a", L"attribute"}}, {}, {{L"e", L"element"}}));
    set_source(L"src");
    add(L"p.src", {{L"t", L"{a}{e}"}});
    EXPECT_EQ(make().get_text(), L"{a}{e}");
}

// If several arguments have one name, the first one counts. These two have one name in UTF-8.
TEST_F(extended_message_test, arguments_are_appended_in_the_order_of_their_names)
{
    set_args({{units({0xFFFD}), L"later"}, {units({0xD800}), L"first"}});
    add(L"p.src", {{L"t", L"{" + units({0xFFFD}) + L"}"}});
    EXPECT_EQ(make().get_text(), L"first");
}

TEST_F(extended_message_test, getting_the_text_twice_adds_no_arguments)
{
    set_args({{L"a", L"1"}});
    add(L"p.src", {{L"t", L"{a}{b}"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"1{b}");
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(message.get_text(), L"1{b}");
}

TEST_F(extended_message_test, getting_the_title_twice_adds_no_arguments)
{
    configure_title();
    add(L"p.src", {{L"title", L"{b}"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"{b}");
    set_args({{L"b", L"3"}});
    EXPECT_EQ(message.get_title(), L"{b}");
}

TEST_F(extended_message_test, updating_the_text_adds_to_the_existing_arguments)
{
    set_args({{L"a", L"1"}});
    add(L"p.src", {{L"t", L"{a}{b}"}});
    exposed_message_t message = make();
    message.update_text();
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    message.update_text();
    EXPECT_EQ(message.get_text(), L"13");
}

TEST_F(extended_message_test, updating_the_title_adds_to_the_existing_arguments)
{
    configure_title();
    set_args({{L"a", L"1"}});
    add(L"p.src", {{L"title", L"{a}{b}"}});
    exposed_message_t message = make();
    message.update_title();
    set_args({{L"a", L"2"}, {L"b", L"3"}});
    message.update_title();
    EXPECT_EQ(message.get_title(), L"13");
}

TEST_F(extended_message_test, updating_the_text_returns_to_the_prefixed_catalog)
{
    add(L"p.src");
    add(L"src", {{L"t", L"bare"}});
    exposed_message_t message = make();
    message.get_text();
    take_requests();
    message.update_text();
    message.get_text();
    EXPECT_EQ(take_requests(), requests_t({L"p.src:t", L"src:t"}));
}

// ---- when the texts are read

TEST_F(extended_message_test, construction_and_updates_search_no_catalog)
{
    configure_title();
    add(L"p.src");
    exposed_message_t message = make();
    message.update_text();
    message.update_title();
    EXPECT_EQ(take_requests(), requests_t());
}

TEST_F(extended_message_test, construction_does_no_lookup)
{
    add(L"p.later", {{L"u", L"{a}"}});
    exposed_message_t message = make();
    m_message->set_type(L"u");
    set_source(L"later");
    set_args({{L"a", L"1"}});
    EXPECT_EQ(message.get_text(), L"1");
}

TEST_F(extended_message_test, a_later_change_of_the_type_has_no_effect_on_the_text)
{
    add(L"p.src", {{L"t", L"old"}, {L"u", L"new"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"old");
    m_message->set_type(L"u");
    EXPECT_EQ(message.get_text(), L"old");
}

TEST_F(extended_message_test, a_later_change_of_the_type_has_no_effect_on_the_title)
{
    configure("<message_type id='t' title_msgid='old'/><message_type id='u' title_msgid='new'/>");
    add(L"p.src", {{L"old", L"old"}, {L"new", L"new"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_title(), L"old");
    m_message->set_type(L"u");
    EXPECT_EQ(message.get_title(), L"old");
}

TEST_F(extended_message_test, title_and_text_are_each_looked_up_at_the_first_call)
{
    configure("<message_type id='t' title_msgid='old'/><message_type id='u' title_msgid='new'/>");
    add(L"p.src", {{L"t", L"text {a}"}, {L"old", L"old {a}"}, {L"new", L"new {a}"}});
    exposed_message_t message = make();
    set_args({{L"a", L"1"}});
    EXPECT_EQ(message.get_text(), L"text 1");
    m_message->set_type(L"u");
    set_args({{L"a", L"2"}});
    EXPECT_EQ(message.get_title(), L"new 2");
    EXPECT_EQ(message.get_text(), L"text 1");
}

TEST_F(extended_message_test, a_later_change_of_the_source_has_no_effect_until_the_fallback)
{
    add(L"p.src", {{L"t", L"old"}});
    add(L"p.other", {{L"t", L"wrong"}});
    add(L"other", {{L"t", L"new"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"old");
    set_source(L"other");
    EXPECT_EQ(message.get_text(), L"old");
    add(L"p.src");
    take_requests();
    EXPECT_EQ(message.get_text(), L"new");
    EXPECT_EQ(take_requests(), requests_t({L"p.src:t", L"other:t"}));
}

TEST_F(extended_message_test, a_fallback_to_the_bare_catalog_keeps_the_type_and_the_arguments)
{
    set_args({{L"a", L"1"}});
    add(L"p.src", {{L"t", L"old"}});
    add(L"src", {{L"t", L"bare {a}"}, {L"u", L"wrong"}});
    exposed_message_t message = make();
    message.get_text();
    m_message->set_type(L"u");
    set_args({{L"a", L"2"}});
    add(L"p.src");
    EXPECT_EQ(message.get_text(), L"bare 1");
}

TEST_F(extended_message_test, the_text_is_composed_again_at_each_call)
{
    add(L"p.src", {{L"t", L"old"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"old");
    add(L"p.src", {{L"t", L"new"}});
    EXPECT_EQ(message.get_text(), L"new");
}

TEST_F(extended_message_test,
       without_source_and_type_the_catalogs_are_searched_and_no_argument_is_added)
{
    set_source(L"");
    m_message->set_type(L"");
    add(L"p.");
    add(L"", {{L"", L"{a}"}});
    exposed_message_t message = make();
    EXPECT_EQ(message.get_text(), L"{a}");
    EXPECT_EQ(take_requests(), requests_t({L"p.:", L":"}));
    set_args({{L"a", L"1"}});
    EXPECT_EQ(message.get_text(), L"{a}");
    EXPECT_EQ(take_requests(), requests_t({L":"}));
}

// ---- configuration and message

TEST_F(extended_message_test, a_configured_property_is_the_one_that_the_reader_returns)
{
    configure("<message_type id='t' help='bare'/><message_type id='t' prefix='p' help='own'/>");
    EXPECT_EQ(make().get_cfg_prop(L"help"), L"own");
    EXPECT_EQ(make(L"q").get_cfg_prop(L"help"), L"bare");
    EXPECT_EQ(make().get_cfg_prop(L"other"), L"");
}

TEST_F(extended_message_test, a_property_is_that_of_the_current_type)
{
    configure("<message_type id='t' help='old'/><message_type id='u' help='new'/>");
    exposed_message_t message = make();
    message.get_title();
    m_message->set_type(L"u");
    EXPECT_EQ(message.get_cfg_prop(L"help"), L"new");
}

TEST_F(extended_message_test, get_cfg_props_returns_nothing)
{
    configure("<message_type id='t' help='a'><help>b</help></message_type>");
    EXPECT_TRUE(make().get_cfg_props(L"help").empty());
    EXPECT_TRUE(make().get_cfg_props(L"other").empty());
    EXPECT_TRUE(make().get_cfg_props(L"").empty());
}

TEST_F(extended_message_test, get_cfg_props_reads_no_configuration)
{
    configure("<message_type id='t' help='old'/>");
    make().get_cfg_props(L"help");
    configure("<message_type id='t' help='new'/>");
    EXPECT_EQ(make().get_cfg_prop(L"help"), L"new");
}

TEST_F(extended_message_test, the_message_is_shared_with_the_caller)
{
    EXPECT_EQ(make().get_message(), m_message);
}

TEST_F(extended_message_test, message_and_extension_object_are_owned)
{
    add(L"p.src", {{L"t", L"text"}});
    exposed_message_t message = make();
    const boost::weak_ptr<message_t> watched = m_message;
    m_message.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_EQ(message.get_text(), L"text");
}

// ---- copies

TEST_F(extended_message_test, a_copy_keeps_the_fallback)
{
    add(L"p.src");
    add(L"src", {{L"t", L"bare"}});
    exposed_message_t message = make();
    message.get_text();
    take_requests();
    exposed_message_t copy(message);
    EXPECT_EQ(copy.get_text(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L"src:t"}));
}

TEST_F(extended_message_test, a_copy_keeps_the_results_of_the_lookup)
{
    set_args({{L"a", L"1"}});
    add(L"p.src", {{L"t", L"{a}"}});
    exposed_message_t message = make();
    message.get_text();
    set_args({{L"a", L"2"}});
    exposed_message_t copy(message);
    EXPECT_EQ(copy.get_text(), L"1");
}

TEST_F(extended_message_test, a_copy_falls_back_independently)
{
    add(L"p.src", {{L"t", L"prefixed"}});
    add(L"src", {{L"t", L"bare"}});
    exposed_message_t message = make();
    message.get_text();
    exposed_message_t copy(message);
    add(L"p.src");
    EXPECT_EQ(copy.get_text(), L"bare");
    add(L"p.src", {{L"t", L"prefixed"}});
    EXPECT_EQ(message.get_text(), L"prefixed");
    EXPECT_EQ(copy.get_text(), L"bare");
}

TEST_F(extended_message_test, an_assigned_message_equals_its_original)
{
    add(L"p.src");
    add(L"src", {{L"t", L"bare"}});
    exposed_message_t message = make();
    message.get_text();
    take_requests();
    exposed_message_t other = make(L"q");
    other = message;
    EXPECT_EQ(other.get_message(), m_message);
    EXPECT_EQ(other.get_text(), L"bare");
    EXPECT_EQ(take_requests(), requests_t({L"src:t"}));
}

// ---- from files to the user's language

namespace
{

const char face[] = "\xF0\x9F\x98\x80";

/// A component's configuration and its catalogs in three languages, as files.
class extended_message_files_test : public extended_message_test
{
protected:
    extended_message_files_test()
    {
        configure("<message_type id='t' title_msgid='title.t'/>");
        make_catalog("en", "File scanned",
                     "{gr\xC3\xB6\xC3\x9F"
                     "e, plural, one {# byte} other {# bytes}} in {\xF0\x9F\x98\x80}");
        make_catalog("de",
                     "Datei gepr\xC3\xBC"
                     "ft",
                     "{gr\xC3\xB6\xC3\x9F"
                     "e, plural, one {# Zeichen} other {# Zeichen}} in {\xF0\x9F\x98\x80}");
        make_catalog("pl", "Plik",
                     "{gr\xC3\xB6\xC3\x9F"
                     "e, plural, one {# bajt} few {# bajty} many {# bajt\xC3\xB3w} "
                     "other {# bajta}} w {\xF0\x9F\x98\x80}");
    }

    void make_catalog(const char* locale, const char* title, const char* text) const
    {
        m_catalogs.make(locale, "src", po_of({{"title.t", title}, {"t", text}}));
    }

    /// Returns title and text for that many bytes.
    std::wstring show(const std::wstring& locale, const std::wstring& size) const
    {
        m_catalogs.bind(locale);
        const std::wstring name = wide(face);
        set_args({{wide("gr\xC3\xB6\xC3\x9F"
                        "e"),
                   size},
                  {name, L"/" + name}});
        exposed_message_t message = make();
        return message.get_title() + L": " + message.get_text();
    }

    static std::wstring wide(const std::string& text)
    {
        return ROVA_2_18::strings::utf8_to_utf16(text);
    }
};

} // namespace

TEST_F(extended_message_files_test, title_and_text_are_in_english)
{
    EXPECT_EQ(show(L"en_GB.UTF-8", L"1"), L"File scanned: 1 byte in /" + wide(face));
    EXPECT_EQ(show(L"en_GB.UTF-8", L"1234"), L"File scanned: 1,234 bytes in /" + wide(face));
}

TEST_F(extended_message_files_test, title_and_text_are_in_german)
{
    EXPECT_EQ(show(L"de_DE.UTF-8", L"1234"), wide("Datei gepr\xC3\xBC"
                                                  "ft: 1.234 Zeichen in /") +
                                                 wide(face));
}

TEST_F(extended_message_files_test, plural_forms_are_those_of_the_language)
{
    EXPECT_EQ(show(L"pl", L"1"), L"Plik: 1 bajt w /" + wide(face));
    EXPECT_EQ(show(L"pl", L"2"), L"Plik: 2 bajty w /" + wide(face));
    EXPECT_EQ(show(L"pl", L"5"), wide("Plik: 5 bajt\xC3\xB3w w /") + wide(face));
    EXPECT_EQ(show(L"pl", L"22"), L"Plik: 22 bajty w /" + wide(face));
    EXPECT_EQ(show(L"en", L"22"), L"File scanned: 22 bytes in /" + wide(face));
}

TEST_F(extended_message_files_test, the_files_of_the_prefix_are_preferred_to_those_of_the_source)
{
    m_catalogs.make("de", "p.src", po_of({{"t", "eigener Text"}}));
    EXPECT_EQ(show(L"de", L"1"), wide("Datei gepr\xC3\xBC"
                                      "ft: eigener Text"));
}

TEST_F(extended_message_files_test,
       without_a_configured_id_the_title_is_empty_never_the_files_header)
{
    m_message->set_type(L"u");
    EXPECT_EQ(show(L"en", L"1"), L": ");
}

TEST_F(extended_message_files_test, in_a_language_without_files_title_and_text_are_empty)
{
    EXPECT_EQ(show(L"fr", L"1"), L": ");
}
