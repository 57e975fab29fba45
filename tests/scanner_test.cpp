#include "xml/scanner.h"

#include "random_documents.h"
#include "xml/encodings.h"
#include "xml/error_scope.h"
#include "xml/handles.h"

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

typedef scanner_t::token_t token_t;
typedef std::vector<std::string> strings_t;

// A document with every construct. Each one contains text that would end another one.
const std::string rich_document =
    "<?xml version=\"1.0\" encoding='UTF-8' ?>\n"
    "<!-- <a> ]]> ?> - - \" ' -->"
    "<?p <a> --> ' ?>\n"
    "<!DOCTYPE a PUBLIC \"[>\" '<[>' [\n"
    "<!-- it's ]> \" --><?p?><?q ]> ' ?><!ENTITY e \"]>'\"><!ENTITY f ']>\"'><!ELEMENT a ANY>\n"
    "]  >\n"
    "<a b=\"c>'/\" d = '\"/>' e\n=\n''>text ]] > ' \" = /\n"
    "<![CDATA[</a> --> ?> ]] > <!]]><b/><c d='e' /><f\n></f\t></a\n>\n"
    "<!----><?r?>";

std::string text_of(std::string_view text)
{
    return std::string(text);
}

std::string attributes_of(scanner_t& scanner)
{
    std::string text;
    for (attribute_t attribute; scanner.next_attribute(attribute);)
        text += " " + text_of(attribute.name) + "=[" + text_of(attribute.value) + "]";
    return text;
}

// Returns the token that the scanner has passed, with the attributes of a start tag.
std::string token_text(token_t token, const scanner_t& scanner, const std::string& attributes,
                       const std::string& document)
{
    const std::string at = std::to_string(scanner.position() - document.data());
    switch (token) {
    case token_t::text:
        return "text(" + text_of(scanner.token()) + ")";
    case token_t::start_tag:
        return "<" + text_of(scanner.name()) + attributes +
               (scanner.is_empty_element() ? "/>" : ">");
    case token_t::end_tag:
        return "</" + text_of(scanner.name()) + ">";
    case token_t::comment:
        return "comment(" + text_of(scanner.token()) + ")";
    case token_t::section:
        return "section(" + text_of(scanner.token()) + ")";
    case token_t::instruction:
        return "instruction " + text_of(scanner.name()) + "(" + text_of(scanner.token()) + ")";
    case token_t::document_type:
        return "type(" + text_of(scanner.token()) + ")";
    case token_t::malformed:
        return "malformed at " + at;
    case token_t::unfinished:
        return "unfinished at " + at;
    case token_t::end:
        return "end at " + at;
    }
    return std::string();
}

bool is_last(token_t token)
{
    return token == token_t::malformed || token == token_t::unfinished || token == token_t::end;
}

strings_t tokens_of(const std::string& document)
{
    strings_t tokens;
    scanner_t scanner(document);
    token_t token = token_t::text;
    while (!is_last(token)) {
        token = scanner.next();
        const std::string attributes = attributes_of(scanner);
        if (token == token_t::start_tag)
            token = scanner.finish_start_tag();
        tokens.push_back(token_text(token, scanner, attributes, document));
    }
    EXPECT_EQ(scanner.next(), token_t::end) << document;
    return tokens;
}

// The names and attributes of a document's tags, one string each.
class tag_recorder_t
{
public:
    // Returns nothing if libxml2 finds an error.
    static strings_t by_libxml2(const std::string& document)
    {
        const xml_parser_t parser(xmlNewParserCtxt());
        tag_recorder_t recorder;
        xmlSAXHandler table = {};
        table.initialized = 1;
        table.startElement = on_start;
        table.endElement = on_end;
        const xml_error_scope_t errors;
        *parser->sax = table;
        parser->userData = &recorder;
        xmlFreeDoc(xmlCtxtReadMemory(parser.get(), document.data(),
                                     static_cast<int>(document.size()), nullptr, nullptr, 0));
        // After a namespace error, later releases report no fault.
        return parser->wellFormed && parser->errNo == XML_ERR_OK ? recorder.m_tags : strings_t();
    }

    static strings_t by_scanner(const std::string& document)
    {
        strings_t tags;
        scanner_t scanner(document);
        for (auto token = scanner.next(); !is_last(token); token = scanner.next())
            if (token == token_t::end_tag)
                tags.push_back("</" + text_of(scanner.name()));
            else if (token == token_t::start_tag)
                add_start_tag(scanner, tags);
        return tags;
    }

private:
    static void add_start_tag(scanner_t& scanner, strings_t& tags)
    {
        const std::string name = text_of(scanner.name());
        tags.push_back("<" + name);
        for (attribute_t attribute; scanner.next_attribute(attribute);)
            tags.push_back(text_of(attribute.name) + "=" + text_of(attribute.value));
        scanner.finish_start_tag();
        if (scanner.is_empty_element())
            tags.push_back("</" + name);
    }

    static void on_start(void* context, const xmlChar* name, const xmlChar** attributes)
    {
        strings_t& tags = static_cast<tag_recorder_t*>(context)->m_tags;
        tags.push_back(std::string("<") + from_xml(name));
        for (; attributes && *attributes; attributes += 2)
            tags.push_back(std::string(from_xml(attributes[0])) + "=" + from_xml(attributes[1]));
    }

    static void on_end(void* context, const xmlChar* name)
    {
        static_cast<tag_recorder_t*>(context)->m_tags.push_back(std::string("</") + from_xml(name));
    }

    strings_t m_tags;
};

// libxml2 changes a value with references or line ends: only its name is compared.
bool is_same_tag(const std::string& scanned, const std::string& parsed)
{
    return scanned.find_first_of("&\t\r\n") == std::string::npos
               ? scanned == parsed
               : scanned.substr(0, scanned.find('=')) == parsed.substr(0, parsed.find('='));
}

// libxml2 adds the declarations of document types, changes text in other encodings, accepts an
// encoding without a blank after it, and ends at a zero.
bool is_comparable(const std::string& document)
{
    const std::string encoding = declared_encoding(document);
    return (encoding.empty() || encoding == "UTF-8") &&
           document.find("<!ENTITY") == std::string::npos &&
           document.find("<!ATTLIST") == std::string::npos &&
           document.find("\"standalone") == std::string::npos &&
           document.find('\0') == std::string::npos;
}

document_type_facts_t facts_of(const std::string& declarations)
{
    return scan_document_type("<!DOCTYPE a [" + declarations + "]>");
}

bool has_parameter_entity_references(const std::string& declarations)
{
    return facts_of(declarations).has_parameter_entity_references;
}

} // namespace

TEST(scanner_test, a_document_is_split_into_its_tokens)
{
    const std::string type =
        "type(<!DOCTYPE a PUBLIC \"[>\" '<[>' [\n"
        "<!-- it's ]> \" --><?p?><?q ]> ' ?><!ENTITY e \"]>'\"><!ENTITY f ']>\"'>"
        "<!ELEMENT a ANY>\n]  >)";
    EXPECT_EQ(
        tokens_of(rich_document),
        (strings_t{"instruction xml(<?xml version=\"1.0\" encoding='UTF-8' ?>)", "text(\n)",
                   "comment(<!-- <a> ]]> ?> - - \" ' -->)", "instruction p(<?p <a> --> ' ?>)",
                   "text(\n)", type, "text(\n)", "<a b=[c>'/] d=[\"/>] e=[]>",
                   "text(text ]] > ' \" = /\n)", "section(<![CDATA[</a> --> ?> ]] > <!]]>)", "<b/>",
                   "<c d=[e]/>", "<f>", "</f>", "</a>", "text(\n)", "comment(<!---->)",
                   "instruction r(<?r?>)", "end at " + std::to_string(rich_document.size())}));
}

TEST(scanner_test, a_document_truncated_at_any_byte_is_never_malformed)
{
    const strings_t whole = tokens_of(rich_document);
    for (std::size_t size = 0; size != rich_document.size(); ++size) {
        strings_t tokens = tokens_of(rich_document.substr(0, size));
        const std::string last = tokens.back();
        EXPECT_TRUE(last == "unfinished at " + std::to_string(size) ||
                    last == "end at " + std::to_string(size))
            << size << ": " << last;
        tokens.pop_back();
        // The last text or tag can continue after the cut.
        if (!tokens.empty())
            tokens.pop_back();
        ASSERT_LT(tokens.size(), whole.size());
        EXPECT_TRUE(std::equal(tokens.begin(), tokens.end(), whole.begin())) << size;
    }
}

TEST(scanner_test, a_fault_is_reported_at_its_first_byte)
{
    static const struct
    {
        const char* before; ///< up to the fault
        const char* after;
    } cases[] = {{"<", " a>"},
                 {"<", ">"},
                 {"<", "<a>"},
                 {"<", "='b'>"},
                 {"<a", "=b>"},
                 {"<a/", "/>"},
                 {"<a/", " >"},
                 {"<a ", "<b>"},
                 {"<a ", "='b'>"},
                 {"<a ", "\"b\">"},
                 {"<a ", "b>"},
                 {"<a ", "b c='d'>"},
                 {"<a ", "b=c>"},
                 {"<a ", "b=>"},
                 {"<a b='", "<'>"},
                 {"<a b='\"", "<\">"},
                 {"<a b='c'", "d='e'>"},
                 {"<a b='c'", "'>"},
                 {"</a ", "b>"},
                 {"</a", "/>"},
                 {"</a", "<b>"},
                 {"<!-- a --", " >"},
                 {"<!-- a --", "->"},
                 {"<!", "a>"},
                 {"<!", "[cdata[]]>"},
                 {"<!", "DOCTYPa>"},
                 {"<!", "-a->"},
                 {"<?xml ", "a?>"},
                 {"<?xml version='1.0'", ">"},
                 {"<?xml version='1.0' ", "?a='b'?>"},
                 {"<a", "?b='c'>"}};
    for (const auto& [before, after] : cases) {
        const std::string document = std::string("text<x y='z'/>") + before + after;
        const std::string fault =
            "malformed at " + std::to_string(document.size() - std::string(after).size());
        EXPECT_EQ(tokens_of(document).back(), fault) << document;
    }
}

TEST(scanner_test, a_declaration_may_have_no_blanks_between_its_attributes)
{
    const std::string declaration = "<?xml version='1.0'encoding=\"UTF-8\"standalone='no'?>";
    EXPECT_EQ(tokens_of(declaration).front(), "instruction xml(" + declaration + ")");
}

TEST(scanner_test, a_document_type_may_have_its_subset_after_its_end)
{
    for (const std::string type :
         {"<!DOCTYPE a>[<!--]>--> <!ENTITY e ']>'>]>", "<!DOCTYPE a SYSTEM 's'>[]>",
          "<!DOCTYPE a>[<!ENTITY e '>'>]  >", "<!DOCTYPE a [<!ENTITY e 'x'>]>", "<!DOCTYPE a>"})
        EXPECT_EQ(tokens_of(type + "[<a/>").front(),
                  type == "<!DOCTYPE a>" ? "unfinished at 17" : "type(" + type + ")");
    EXPECT_EQ(tokens_of("<!DOCTYPE a> [").front(), "type(<!DOCTYPE a>)");
}

TEST(scanner_test, a_hyphen_at_the_start_of_a_comment_does_not_end_it)
{
    EXPECT_EQ(tokens_of("<!--->-->"), (strings_t{"comment(<!--->-->)", "end at 9"}));
    EXPECT_EQ(tokens_of("<!-->"), (strings_t{"unfinished at 5"}));
}

TEST(scanner_test, only_the_xml_declaration_has_attributes)
{
    EXPECT_EQ(tokens_of("<?xml a='?>'?>"),
              (strings_t{"instruction xml(<?xml a='?>'?>)", "end at 14"}));
    for (const char* const name : {"XML", "xml-a", "xmla", "p"}) {
        const std::string instruction = std::string("<?") + name + " a='?>";
        EXPECT_EQ(tokens_of(instruction).front(),
                  std::string("instruction ") + name + "(" + instruction + ")");
    }
}

TEST(scanner_test, attributes_that_are_not_read_are_skipped)
{
    scanner_t scanner("<a b='>' c='/>'>d<e f='>'/>");
    ASSERT_EQ(scanner.next(), token_t::start_tag);
    EXPECT_EQ(scanner.token(), "<a");
    attribute_t attribute;
    ASSERT_TRUE(scanner.next_attribute(attribute));
    EXPECT_EQ(scanner.finish_start_tag(), token_t::start_tag);
    EXPECT_FALSE(scanner.next_attribute(attribute));
    EXPECT_FALSE(scanner.is_empty_element());
    EXPECT_EQ(scanner.token(), "<a b='>' c='/>'>");
    ASSERT_EQ(scanner.next(), token_t::text);
    EXPECT_FALSE(scanner.next_attribute(attribute));
    EXPECT_EQ(scanner.finish_start_tag(), token_t::start_tag);
    EXPECT_EQ(scanner.token(), "d");
    ASSERT_EQ(scanner.next(), token_t::start_tag);
    EXPECT_EQ(scanner.next(), token_t::end);
    EXPECT_TRUE(scanner.is_empty_element());
}

TEST(scanner_test, an_unfinished_or_malformed_start_tag_is_reported_at_its_end)
{
    scanner_t unfinished("<a b='c'");
    ASSERT_EQ(unfinished.next(), token_t::start_tag);
    EXPECT_EQ(unfinished.finish_start_tag(), token_t::unfinished);
    EXPECT_EQ(unfinished.token(), "<a b='c'");
    scanner_t malformed("<a b='c'!");
    ASSERT_EQ(malformed.next(), token_t::start_tag);
    EXPECT_EQ(malformed.next(), token_t::malformed);
    EXPECT_EQ(malformed.next(), token_t::end);
}

TEST(scanner_test, tags_and_attributes_are_those_that_libxml2_finds)
{
    std::uint64_t compared = 0;
    const random_seeds_t seeds(6000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string document =
            random.one_in(2) ? random_document(random) : random_log(random);
        if (!is_comparable(document))
            continue;
        const strings_t parsed = tag_recorder_t::by_libxml2(document);
        if (parsed.empty())
            continue;
        const strings_t scanned = tag_recorder_t::by_scanner(document);
        ASSERT_TRUE(
            std::equal(scanned.begin(), scanned.end(), parsed.begin(), parsed.end(), is_same_tag))
            << "seed " << seed << "\n"
            << document;
        ++compared;
    }
    EXPECT_GT(compared, seeds.count / 6);
}

// ---- document types

TEST(scanner_test, defaults_of_attributes_are_counted)
{
    const auto facts = facts_of("<!ATTLIST a b CDATA 'x' c CDATA \"'\" d (SYSTEM |y) 'y' e CDATA "
                                "#FIXED 'z' f CDATA #IMPLIED><!ENTITY g 'x'>");
    EXPECT_EQ(facts.defaults, 4U);
    EXPECT_GE(facts.declared_attributes, 5U);
    EXPECT_EQ(facts.declared_ids, 0U);
}

TEST(scanner_test, declarations_in_comments_instructions_and_literals_are_not_counted)
{
    const auto facts = facts_of("<!-- <!ATTLIST a b CDATA 'x'> %p; ID --><?p <!ATTLIST a b CDATA "
                                "'%p;'> ID ?><!ENTITY e \"<!ATTLIST a b ID 'x'>\">"
                                "<!NOTATION n PUBLIC '%p;'><!ELEMENT a (b)>");
    EXPECT_EQ(facts.defaults, 0U);
    EXPECT_EQ(facts.declared_attributes, 0U);
    EXPECT_EQ(facts.declared_ids, 0U);
    EXPECT_FALSE(facts.has_parameter_entity_references);
}

TEST(scanner_test, declared_ids_are_counted)
{
    const auto facts = facts_of("<!ATTLIST a b ID #IMPLIED c ID\n#REQUIRED>");
    EXPECT_EQ(facts.declared_ids, 2U);
    EXPECT_EQ(facts.declared_attributes, 2U);
}

TEST(scanner_test, references_to_parameter_entities_are_found)
{
    for (const char* const declarations :
         {"%p;", "<!ENTITY % p 'x'>\n%p;", "<!ENTITY e 'x%p;'>", "<!ENTITY e \"%p;\">",
          "<!ENTITY % q '%p;'>", "<!ELEMENT a %p;>", "<!ATTLIST a %p;>", "<!ENTITY eSYSTEM '%p;'>",
          "<!ENTITY e SYSTEM 'f'><!ENTITY e '%p;'>"})
        EXPECT_TRUE(has_parameter_entity_references(declarations)) << declarations;
}

TEST(scanner_test, other_percent_signs_are_not_references)
{
    for (const char* const declarations :
         {"", "<!ENTITY % p 'x'>", "<!ENTITY\n%\np 'x'>", "<!ENTITY e '100 % x'>",
          "<!ENTITY e SYSTEM '%20;'>", "<!ENTITY e SYSTEM\n'%20;'>",
          "<!ENTITY e PUBLIC\t'%p;' '%20;'>", "<!ENTITY % p SYSTEM '%20;'>",
          "<!ATTLIST a b CDATA '%p;'>", "<!NOTATION n SYSTEM '%p;'>"})
        EXPECT_FALSE(has_parameter_entity_references(declarations)) << declarations;
}

TEST(scanner_test, an_unfinished_document_type_is_scanned)
{
    for (const char* const text :
         {"<!DOCTYPE a [<!ATTLIST a b CDATA 'x' c CDATA 'y", "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'",
          "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'><!-- ", "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'><?p"})
        EXPECT_GE(scan_document_type(text).defaults, 1U) << text;
    EXPECT_TRUE(scan_document_type("<!DOCTYPE a [<!ENTITY e '%p").has_parameter_entity_references);
    EXPECT_FALSE(scan_document_type("<!DOCTYPE a [%").has_parameter_entity_references);
}
