#include "xml/cost.h"

#include "repeated_text.h"
#include "usage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

std::string element(const std::string& content)
{
    return "<a>" + content + "</a>";
}

std::string with_document_type(const std::string& declarations, const std::string& root)
{
    return "<!DOCTYPE a [" + declarations + "]>" + root;
}

refusal_t refusal_of(const std::string& document)
{
    return inspect_markup(document, parse_t::tree).refusal;
}

// Limits the time for a long document, to show that it is linear in the size.
void expect_linear(const std::string& name, const std::string& before, const std::string& repeating,
                   const std::string& after = std::string())
{
    const std::size_t size = 2000000;
    const std::string document = before + repeated(repeating, size / repeating.size()) + after;
    const usage_t usage;
    inspect_markup(document, parse_t::tree);
    EXPECT_LT(usage.seconds(), 3) << name;
}

} // namespace

TEST(cost_test, an_ordinary_document_is_within_all_limits)
{
    for (const char* const document :
         {"", "<a/>", "<?xml version='1.0'?><a b='c'><!-- d --><e>f<![CDATA[g]]></e></a>",
          "<!DOCTYPE a [<!ATTLIST a b CDATA 'c'><!ENTITY d 'e'>]><a/>"}) {
        const markup_t markup = inspect_markup(document, parse_t::tree);
        EXPECT_EQ(markup.refusal, refusal_t::none) << document;
        EXPECT_EQ(markup.well_formed_bytes, std::string(document).size()) << document;
    }
}

TEST(cost_test, a_document_is_well_formed_up_to_its_fault)
{
    for (const char* const before : {"<", "<a b='c'", "<a><b/></a ", "<!-- --", "text<a b='"}) {
        const std::string document = std::string(before) + "<x/>";
        EXPECT_EQ(inspect_markup(document, parse_t::tree).well_formed_bytes,
                  std::string(before).size())
            << document;
    }
    EXPECT_EQ(inspect_markup("<a b='c", parse_t::tree).well_formed_bytes, 7U);
}

TEST(cost_test, attributes_are_compared_up_to_a_limit)
{
    const auto tag = [](std::size_t count) {
        return "<a" + numbered(" a", count, "=''") + "/>";
    };
    EXPECT_EQ(refusal_of(tag(25000)), refusal_t::none);
    EXPECT_EQ(refusal_of(tag(25001)), refusal_t::attributes);
    // The sum of all tags counts.
    const std::string tags = repeated(tag(10000), 6);
    EXPECT_EQ(refusal_of(tags + tag(5000)), refusal_t::none);
    EXPECT_EQ(refusal_of(tags + tag(5000) + "<a b='' c=''/>"), refusal_t::attributes);
    EXPECT_EQ(refusal_of("<a" + numbered(" a", 25001, "=''")), refusal_t::attributes);
}

TEST(cost_test, different_names_are_counted_up_to_a_limit)
{
    EXPECT_EQ(refusal_of(numbered("<a", 249999, "/>") + "<b c='' a1=''/><a2/>"), refusal_t::names);
    EXPECT_EQ(refusal_of(numbered("<a", 249999, "/>") + "<b a1=''/><a2/></c>"), refusal_t::none);
    EXPECT_EQ(refusal_of(numbered("<a b", 249999, "=''/>")), refusal_t::none);
    EXPECT_EQ(refusal_of(numbered("<a b", 250000, "=''/>")), refusal_t::names);
    EXPECT_EQ(refusal_of(repeated("<a b=''/>", 300000)), refusal_t::none);
}

TEST(cost_test, ids_are_counted_up_to_a_limit)
{
    EXPECT_EQ(refusal_of(numbered("<a xml:id='", 150000, "'/>")), refusal_t::none);
    EXPECT_EQ(refusal_of(numbered("<a xml:id='", 150001, "'/>")), refusal_t::names);
    EXPECT_EQ(refusal_of(numbered("<a xml:ie='", 150001, "'/>")), refusal_t::none);
}

TEST(cost_test, defaults_are_compared_up_to_a_limit)
{
    const std::string defaults = "<!ATTLIST a" + numbered(" a", 1000, " CDATA ''") + ">";
    EXPECT_EQ(refusal_of(with_document_type(defaults, repeated("<a/>", 2000))), refusal_t::none);
    EXPECT_EQ(refusal_of(with_document_type(defaults, repeated("<a/>", 2001))),
              refusal_t::defaults);
    const std::string attributes = "<a" + numbered(" b", 200, "=''") + "/>";
    EXPECT_EQ(refusal_of(with_document_type(defaults, repeated(attributes, 1666))),
              refusal_t::none);
    EXPECT_EQ(refusal_of(with_document_type(defaults, repeated(attributes, 1667))),
              refusal_t::defaults);
}

TEST(cost_test, namespace_lookups_are_counted_up_to_a_limit)
{
    const std::string root = "<a" + numbered(" xmlns:n", 999, "='u'") + " xmlns='v'>";
    // The root counts as 1001 of these.
    EXPECT_EQ(refusal_of(root + repeated("<b/>", 398999)), refusal_t::none);
    EXPECT_EQ(refusal_of(root + repeated("<b/>", 399000)), refusal_t::namespaces);
    EXPECT_EQ(refusal_of(root + repeated("<b c=''/>", 199499) + "<d/>"), refusal_t::none);
    EXPECT_EQ(refusal_of(root + repeated("<b c=''/>", 199500)), refusal_t::namespaces);
}

TEST(cost_test, a_namespace_counts_only_within_its_element)
{
    const std::string scoped = "<a" + numbered(" xmlns:n", 100, "='u'") + ">";
    EXPECT_EQ(refusal_of(element(scoped + "</a>" + repeated("<b></b>", 240000))), refusal_t::none);
    EXPECT_EQ(refusal_of(element(repeated(scoped + "</a>", 10000))), refusal_t::none);
    EXPECT_EQ(refusal_of(element(repeated(scoped + "<c></c></a>", 10000))), refusal_t::none);
    EXPECT_EQ(refusal_of(repeated("<a" + numbered(" xmlns:n", 200, "='u'") + ">", 200)),
              refusal_t::namespaces);
    const std::string similar = "<a" + numbered(" xmlnsn", 1000, "='u'") + ">";
    EXPECT_EQ(refusal_of(similar + repeated("<b/>", 240000)), refusal_t::none);
}

TEST(cost_test, elements_of_any_depth_are_examined)
{
    const std::string deep = repeated("<a xmlns='u'>", 1000);
    EXPECT_EQ(refusal_of(deep), refusal_t::none);
    EXPECT_EQ(refusal_of(deep + repeated("</a>", 2000) + deep), refusal_t::none);
}

TEST(cost_test, the_size_of_a_document_type_is_limited)
{
    const std::size_t frame = std::string("<!DOCTYPE a []>").size();
    const std::string blanks(163840 - frame, ' ');
    EXPECT_EQ(refusal_of(with_document_type(blanks, "<a/>")), refusal_t::none);
    EXPECT_EQ(refusal_of(with_document_type(blanks + " ", "<a/>")), refusal_t::document_type_size);
    EXPECT_EQ(refusal_of("<!DOCTYPE a [" + blanks + "   "), refusal_t::document_type_size);
}

TEST(cost_test, declared_ids_are_compared_up_to_a_limit)
{
    const auto list = [](std::size_t others) {
        return with_document_type("<!ATTLIST a" + numbered(" i", 1000, " ID #IMPLIED") +
                                      numbered(" a", others, " CDATA #IMPLIED") + ">",
                                  "<a/>");
    };
    EXPECT_EQ(refusal_of(list(2000)), refusal_t::none);
    EXPECT_EQ(refusal_of(list(2001)), refusal_t::document_type_size);
}

TEST(cost_test, a_reference_to_a_parameter_entity_is_refused)
{
    EXPECT_EQ(refusal_of(with_document_type("<!ENTITY % p ''>", "<a>%p;</a>")), refusal_t::none);
    EXPECT_EQ(refusal_of(with_document_type("<!ENTITY % p ''>%p;", "<a/>")),
              refusal_t::parameter_entities);
    EXPECT_EQ(refusal_of("<!DOCTYPE a [%p; "), refusal_t::parameter_entities);
    EXPECT_EQ(refusal_of("<a b='<!DOCTYPE a [%p;]>'/><![CDATA[<!DOCTYPE a [%p;]>]]>"),
              refusal_t::none);
    EXPECT_EQ(refusal_of("<!-- <!DOCTYPE a [%p;"), refusal_t::none);
}

TEST(cost_test, a_parse_of_events_has_fewer_limits)
{
    const auto refusal = [](const std::string& document) {
        return inspect_markup(document, parse_t::events).refusal;
    };
    EXPECT_EQ(refusal(numbered("<a xml:id='", 150001, "'/>")), refusal_t::none);
    EXPECT_EQ(refusal(with_document_type("%p;<!ATTLIST a" + numbered(" i", 2000, " ID #IMPLIED") +
                                             numbered(" a", 2000, " CDATA ''") + ">",
                                         repeated("<a/>", 100))),
              refusal_t::none);
    EXPECT_EQ(refusal(repeated("<a" + numbered(" xmlns:n", 100, "='u'") + ">", 200)),
              refusal_t::none);
    EXPECT_EQ(refusal("<a" + numbered(" a", 25001, "=''") + "/>"), refusal_t::attributes);
    EXPECT_EQ(refusal(numbered("<a", 250001, "/>")), refusal_t::names);
    EXPECT_EQ(refusal(with_document_type(std::string(163840, ' '), "<a/>")),
              refusal_t::document_type_size);
}

TEST(cost_test, the_time_is_linear_in_the_size)
{
    expect_linear("comments", "", "<!---->");
    expect_linear("open comment", "<!--", "- ");
    expect_linear("open sections", "", "<![CDATA[");
    expect_linear("brackets in a section", "<![CDATA[", "]]");
    expect_linear("open instructions", "", "<?p ");
    expect_linear("question marks", "<?p ", "?");
    expect_linear("xml declaration", "<?xml ", "a='' ");
    expect_linear("xml declarations", "", "<?xml ?>");
    expect_linear("text", "", "x");
    expect_linear("tags", "", "<a>");
    expect_linear("closing tags", "", "</a>");
    expect_linear("closing tag", "</a", " ");
    expect_linear("empty tags", "", "<a/>");
    expect_linear("name", "<", "a");
    expect_linear("blanks in a tag", "<a", " ");
    expect_linear("blanks before an equals sign", "<a b", " ");
    expect_linear("blanks after an equals sign", "<a b=", " ");
    expect_linear("value", "<a b='", "\"");
    expect_linear("short tags with attributes", "", "<a b='c'/>");
    expect_linear("long tags with attributes", "", "<a b='' c='' d='' e='' f='' g='' h='' i=''>");
    expect_linear("document types", "", "<!DOCTYPE a>");
    expect_linear("quotes of a type", "<!DOCTYPE a [", "'\"");
    expect_linear("comments of a type", "<!DOCTYPE a [", "<!---->");
    expect_linear("open comments of a type", "<!DOCTYPE a [", "<!-- ");
    expect_linear("instructions of a type", "<!DOCTYPE a [", "<?p?>");
    expect_linear("brackets of a type", "<!DOCTYPE a ", "[]");
    expect_linear("percent signs of a type", "<!DOCTYPE a [", "% ");
    expect_linear("quoted percent signs", "<!DOCTYPE a [<!ENTITY e '", "% ");
    expect_linear("entities of a type", "<!DOCTYPE a [", "<!ENTITY a '% '>");
    expect_linear("words of a type", "<!DOCTYPE a [<!ENTITY a ", "SYSTEM ID ");
    expect_linear("less-than signs", "", "<");
    expect_linear("exclamation marks", "", "<!");
}
