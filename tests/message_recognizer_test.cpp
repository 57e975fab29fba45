#include "encoding/message_recognizer.h"

#include "encoding/document_parser.h"
#include "encoding/element_composer.h"
#include "message_fields.h"
#include "random_documents.h"
#include "random_messages.h"
#include "repeated_text.h"
#include "storage/log_sax_reader.h"
#include "usage.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;

namespace
{

const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// Returns the message that a parse of a log with only this element delivers.
message_ptr_t parse_in_log(const std::string& element)
{
    message_ptr_t delivered;
    log_sax_reader reader;
    reader.set_callback([&](const message_ptr_t& message) { delivered = message; });
    reader.parse("<log>" + element + "</log>");
    return delivered;
}

message_ptr_t recognize_in_log(const std::string& text, std::size_t& size)
{
    const recognized_t recognized = recognize_log_message(text);
    EXPECT_TRUE(recognized.size != 0 || !recognized.message) << text;
    size = recognized.size;
    return recognized.message;
}

bool is_recognized_in_log(const std::string& text)
{
    std::size_t size = 0;
    return recognize_in_log(text, size) != nullptr;
}

void expect_equal_to_parse(const std::string& document)
{
    const message_ptr_t recognized = recognize_document(document);
    const message_ptr_t parsed = recognized ? parse_document(document).message : recognized;
    ASSERT_EQ(fields_of(recognized), fields_of(parsed)) << document;
}

// If the message is recognized, expects the one that the parse delivers. The parse does not deliver
// a message without type and severity.
void expect_equal_to_parse_in_log(const std::string& text)
{
    std::size_t size = 0;
    const message_ptr_t recognized = recognize_in_log(text, size);
    if (!recognized)
        return;
    const message_ptr_t parsed = parse_in_log(text.substr(0, size));
    ASSERT_EQ(fields_of(recognized), fields_of(recognized->empty() ? recognized : parsed)) << text;
    ASSERT_EQ(recognized->empty(), parsed == nullptr) << text;
}

std::string composed_element(const message_t& message)
{
    text_buffer_t<char> element;
    append_message_element(message, 1, element);
    return std::string(element.begin(), element.end());
}

// Drops the keys that libxml2 splits or takes for declarations, and the names of other children.
message_t with_simple_keys(const message_t& message)
{
    static const std::set<std::wstring> others = {L"xmlns", L"arg", L"type", L"severity"};
    message_t::message_content_t content = message.get_content();
    for (string_map_t* const texts : {&content.attributes, &content.elements})
        for (auto at = texts->begin(); at != texts->end();)
            at = others.count(at->first) != 0 || at->first.find(L':') != std::wstring::npos
                     ? texts->erase(at)
                     : std::next(at);
    message_t simple = message;
    simple.set_content(content);
    return simple;
}

// A text that is not in the written form, and must be reported as such.
struct deviation_t
{
    const char* name;
    std::string document;
};

std::ostream& operator<<(std::ostream& out, const deviation_t& deviation)
{
    return out << deviation.document;
}

std::string name_of(const testing::TestParamInfo<deviation_t>& info)
{
    return info.param.name;
}

std::string in_message(const std::string& content)
{
    return "<msg>" + content + "</msg>";
}

std::string with_type(const std::string& before, const std::string& after = std::string())
{
    return in_message(before + "<type>t</type>" + after);
}

typedef testing::TestWithParam<deviation_t> recognizer_deviation_test;
typedef testing::TestWithParam<deviation_t> recognizer_document_deviation_test;
typedef testing::TestWithParam<deviation_t> recognizer_log_deviation_test;

} // namespace

// Quadratic time would be a minute.
TEST(message_recognizer_test, many_references_take_linear_time)
{
    const std::string text = repeated("a&amp;", 150000);
    const usage_t usage;
    for (const std::string& element :
         {"<type>" + text + "</type>", "<arg name='" + text + "'>" + text + "</arg><type>t</type>",
          "<e>" + text + "</e><type>t</type>"}) {
        EXPECT_NE(recognize_log_message("<msg>" + element + "</msg>").size, 0U);
        EXPECT_TRUE(recognize_document("<msg>" + element + "</msg>"));
    }
    EXPECT_LT(usage.seconds(), 10);
}

TEST(message_recognizer_test, a_composed_document_is_recognized_with_and_without_declaration)
{
    std::uint64_t recognized = 0;
    const random_seeds_t seeds(3000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const message_t message = random_message(random);
        const std::string any = utf16_to_utf8(compose_document(message));
        expect_equal_to_parse(any);
        const std::string simple = utf16_to_utf8(compose_document(with_simple_keys(message)));
        ASSERT_TRUE(recognize_document(simple)) << "seed " << seed << "\n" << simple;
        expect_equal_to_parse(simple);
        const std::string bare = simple.substr(declaration.size() + 1);
        ASSERT_EQ(fields_of(recognize_document(bare)), fields_of(recognize_document(simple)));
        recognized += recognize_document(any) ? 1U : 0U;
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(recognized, seeds.count / 10);
}

TEST(message_recognizer_test, a_message_of_a_log_is_recognized_like_its_parse)
{
    std::uint64_t recognized = 0;
    const random_seeds_t seeds(6000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string element = composed_element(random_message(random));
        const std::size_t begin = element.find('<');
        expect_equal_to_parse_in_log(element.substr(begin));
        recognized += is_recognized_in_log(element.substr(begin)) ? 1U : 0U;
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(recognized, seeds.count / 60);
}

TEST(message_recognizer_test, a_recognized_message_is_equal_to_its_parse)
{
    const random_seeds_t seeds(6000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        expect_equal_to_parse(random_document(random));
        const std::string log = random_log(random);
        for (std::size_t at = log.find("<msg"); at != std::string::npos;
             at = log.find("<msg", at + 1))
            expect_equal_to_parse_in_log(log.substr(at));
        if (HasFatalFailure())
            return;
    }
}

TEST(message_recognizer_test, variants_of_the_written_form_are_recognized_like_their_parse)
{
    for (const std::string& document :
         {with_type(""), with_type("", "<severity>error</severity>"),
          with_type("", "<severity></severity>"), with_type("", "<severity> INFO</severity>"),
          with_type("<e>1</e><arg name='n'>2</arg><e>3</e><arg name=\"n\">4</arg>"),
          with_type("<arg name=''>1</arg><arg name=''>2</arg>"),
          with_type("<arg name='a'></arg><arg name=''></arg><e></e>"),
          with_type("<e> \n\t </e><name>n</name><xml>x</xml><timestamp>t</timestamp>"),
          std::string("<msg\ta = 'b\"' \n c=\"d'\" >\r\n\t<arg\nname\n=\n'n' >x</arg\n> <type\n>t"
                      "</type >\n</msg\t>\r\n \n"),
          std::string("<msg source='s'><type>t</type></msg>"),
          std::string("<msg source='s' tool='t'><type>a ]] > b</type></msg>"),
          with_type("<type-x>1</type-x><ms>2</ms><msgs>3</msgs><ar>4</ar><_>5</_>")}) {
        std::size_t size = 0;
        EXPECT_TRUE(recognize_document(document)) << document;
        EXPECT_TRUE(recognize_document(declaration + "\n" + document)) << document;
        expect_equal_to_parse(document);
        expect_equal_to_parse(declaration + document);
        const std::string element = document.substr(0, document.rfind('>') + 1);
        EXPECT_TRUE(recognize_in_log(element, size)) << document;
        EXPECT_EQ(size, element.rfind('>') + 1);
        expect_equal_to_parse_in_log(element);
    }
}

TEST(message_recognizer_test, text_beyond_ascii_and_references_are_recognized_like_their_parse)
{
    for (const std::string text :
         {"\xC3\xA9", "a&amp;b", "&#13;", "&lt;\xF0\x9F\x98\x80", "a&lt;", "&lt;a", "&lt;&gt;",
          "\xC3\xA9 and &quot;more", "a \xC3\xA9&#x41;\xC3\xA9", "&amp;&amp;&lt;", " ]] \xC3\xA9"})
        for (const std::string& element :
             {in_message("<type>" + text + "</type>"), with_type("<e>" + text + "</e>"),
              with_type("<arg name='a'>" + text + "</arg><arg name='b'>" + text + "</arg>")}) {
            EXPECT_TRUE(recognize_document(element)) << element;
            EXPECT_TRUE(is_recognized_in_log(element)) << element;
            expect_equal_to_parse(element);
            expect_equal_to_parse_in_log(element);
        }
}

TEST(message_recognizer_test, text_of_many_bytes_beyond_ascii_is_left_to_libxml2_in_a_log)
{
    std::string text = "a";
    for (int i = 0; i < 150; ++i)
        text += "\xC3\xA9";
    EXPECT_TRUE(recognize_document(with_type("<e>" + text + "</e>")));
    EXPECT_FALSE(is_recognized_in_log(with_type("<e>" + text + "</e>")));
    EXPECT_TRUE(is_recognized_in_log(with_type("<e>" + text.substr(0, 289) + "</e>")));
}

TEST(message_recognizer_test, children_with_the_names_of_a_log_are_recognized_only_in_a_document)
{
    for (const std::string& document : {with_type("<msg>m</msg>"), with_type("<log>l</log>"),
                                        std::string("<msg log='l'><type>t</type></msg>"),
                                        std::string("<msg msg='m'><type>t</type></msg>")}) {
        EXPECT_TRUE(recognize_document(document)) << document;
        expect_equal_to_parse(document);
        EXPECT_FALSE(is_recognized_in_log(document)) << document;
    }
}

TEST(message_recognizer_test, names_with_a_prefix_are_recognized_like_their_parse)
{
    for (const std::string& element :
         {with_type("<p:e>x</p:e>"), with_type("<arg:e>x</arg:e><msg:e>x</msg:e>"),
          std::string("<msg p:a='b' q:a='c' a='d'><p:type>x</p:type><type>t</type></msg>")}) {
        EXPECT_TRUE(recognize_document(element)) << element;
        EXPECT_TRUE(is_recognized_in_log(element)) << element;
        expect_equal_to_parse(element);
        expect_equal_to_parse_in_log(element);
    }
}

TEST(message_recognizer_test, names_that_libxml2_splits_are_recognized_only_in_a_log)
{
    for (const std::string& element :
         {with_type("<xml:e>x</xml:e>"), with_type("<xmlns>x</xmlns>"), with_type("<a:>x</a:>"),
          with_type("<:a>x</:a>"), with_type("<a:b:c>x</a:b:c>"), with_type("<a:1>x</a:1>"),
          std::string("<msg xmlns='u'><type>t</type></msg>"),
          std::string("<msg xmlns:p='u'><type>t</type></msg>"),
          std::string("<msg xml:id='u'><type>t</type></msg>")}) {
        EXPECT_FALSE(recognize_document(element)) << element;
        EXPECT_TRUE(is_recognized_in_log(element)) << element;
        expect_equal_to_parse_in_log(element);
    }
}

TEST(message_recognizer_test, attributes_and_names_of_a_log_can_be_beyond_ascii)
{
    for (const std::string& element :
         {std::string("<msg \xC3\xA9='\xC3\xA9&amp;&#xE9;&#38;'><type>t</type></msg>"),
          with_type("<arg name='\xC3\xA9&lt;'>x</arg><\xC3\xA9>y</\xC3\xA9>")}) {
        EXPECT_TRUE(is_recognized_in_log(element)) << element;
        expect_equal_to_parse_in_log(element);
        expect_equal_to_parse(element);
    }
}

TEST(message_recognizer_test, the_size_of_an_element_includes_its_end_tag)
{
    const std::string element = with_type("<e>x</e>");
    for (const char* const after : {"", " ", "<", "</log>", "x", "\xFF", "<msg>"}) {
        std::size_t size = 0;
        EXPECT_TRUE(recognize_in_log(element + after, size)) << after;
        EXPECT_EQ(size, element.size()) << after;
    }
}

TEST(message_recognizer_test, an_element_that_is_cut_anywhere_is_not_recognized)
{
    const std::string element =
        "<msg a='b'>\n <arg name='n'>x</arg>\n <type>t</type>\n <severity>INFO</severity>\n</msg>";
    ASSERT_TRUE(is_recognized_in_log(element));
    for (std::size_t size = 0; size != element.size(); ++size) {
        EXPECT_FALSE(is_recognized_in_log(element.substr(0, size))) << size;
        EXPECT_FALSE(recognize_document(element.substr(0, size))) << size;
        EXPECT_FALSE(recognize_document(declaration + element.substr(0, size))) << size;
    }
}

TEST(message_recognizer_test, texts_names_and_attributes_of_any_size_are_recognized)
{
    const std::string text(10100000, 'x');
    std::string element = "<msg a='" + text + "'";
    for (int number = 0; number != 30000; ++number)
        element += " a" + std::to_string(number) + "='v'";
    const std::string name(60000, 'e');
    element += "><" + name + ">x</" + name + "><type>" + text + "</type></msg>";
    std::size_t size = 0;
    const message_ptr_t in_log = recognize_in_log(element, size);
    const message_ptr_t in_document = recognize_document(element);
    ASSERT_TRUE(in_log && in_document);
    EXPECT_EQ(in_document->get_content().attributes.size(), 30001U);
    EXPECT_EQ(in_document->get_content().elements.begin()->first.size(), name.size());
    EXPECT_EQ(in_document->get_type().size(), text.size());
    EXPECT_TRUE(in_log->get_content().attributes == in_document->get_content().attributes);
}

TEST_P(recognizer_deviation_test, is_left_to_libxml2)
{
    EXPECT_FALSE(recognize_document(GetParam().document));
    EXPECT_FALSE(recognize_document(declaration + "\n" + GetParam().document));
    EXPECT_FALSE(is_recognized_in_log(GetParam().document));
}

TEST_P(recognizer_document_deviation_test, is_left_to_libxml2)
{
    EXPECT_FALSE(recognize_document(GetParam().document));
}

TEST_P(recognizer_log_deviation_test, is_left_to_libxml2)
{
    EXPECT_FALSE(is_recognized_in_log(GetParam().document));
}

INSTANTIATE_TEST_SUITE_P(
    message_recognizer, recognizer_deviation_test,
    testing::Values(
        deviation_t{"nothing", ""}, deviation_t{"blanks", " \n"}, deviation_t{"text", "msg"},
        deviation_t{"another_root", "<message><type>t</type></message>"},
        deviation_t{"a_root_with_a_prefix", "<p:msg><type>t</type></p:msg>"},
        deviation_t{"a_log", "<log>" + with_type("") + "</log>"},
        deviation_t{"an_end_tag", "</msg>"}, deviation_t{"an_empty_root", "<msg/>"},
        deviation_t{"a_comment_before", "<!-- c -->" + with_type("")},
        deviation_t{"a_comment_between", with_type("<!-- c -->")},
        deviation_t{"a_comment_at_the_end", with_type("", "<!-- c -->")},
        deviation_t{"a_comment_in_a_text", with_type("<e>a<!-- c -->b</e>")},
        deviation_t{"an_instruction", with_type("<?p q?>")},
        deviation_t{"a_section", with_type("<e><![CDATA[a]]></e>")},
        deviation_t{"a_section_between", with_type("<![CDATA[a]]>")},
        deviation_t{"a_document_type", "<!DOCTYPE msg>" + with_type("")},
        deviation_t{"text_between", with_type("x")},
        deviation_t{"text_at_the_end", with_type("", "x")},
        deviation_t{"a_nested_element", with_type("<e>a<b>c</b></e>")},
        deviation_t{"a_nested_element_in_a_type", in_message("<type><b>c</b></type>")},
        deviation_t{"no_type", in_message("<e>x</e>")}, deviation_t{"no_children", in_message("")},
        deviation_t{"a_severity_alone", in_message("<severity>INFO</severity>")},
        deviation_t{"a_severity_before_the_type", with_type("<severity>INFO</severity>")},
        deviation_t{"two_types", with_type("<type>u</type>")},
        deviation_t{"two_severities",
                    with_type("", "<severity>INFO</severity><severity>ERROR</severity>")},
        deviation_t{"an_element_after_the_type", with_type("", "<e>x</e>")},
        deviation_t{"an_argument_after_the_type", with_type("", "<arg name='a'>x</arg>")},
        deviation_t{"an_element_after_the_severity",
                    with_type("", "<severity>INFO</severity><e>x</e>")},
        deviation_t{"an_argument_without_a_name", with_type("<arg>x</arg>")},
        deviation_t{"an_argument_with_another_attribute", with_type("<arg names='a'>x</arg>")},
        deviation_t{"an_argument_with_two_attributes", with_type("<arg name='a' b='c'>x</arg>")},
        deviation_t{"an_argument_whose_name_is_second", with_type("<arg b='c' name='a'>x</arg>")},
        deviation_t{"an_attribute_of_a_type", in_message("<type a='b'>t</type>")},
        deviation_t{"an_attribute_of_a_severity", with_type("", "<severity a='b'>INFO</severity>")},
        deviation_t{"an_attribute_of_an_element", with_type("<e a='b'>x</e>")},
        deviation_t{"an_empty_type", in_message("<type/>")},
        deviation_t{"an_empty_severity", with_type("", "<severity/>")},
        deviation_t{"an_empty_argument", with_type("<arg name='a'/>")},
        deviation_t{"an_empty_element", with_type("<e/>")},
        deviation_t{"an_empty_element_with_an_end_tag", with_type("<e/></e>")},
        deviation_t{"an_empty_argument_with_an_end_tag", with_type("<arg name='a'/></arg>")},
        deviation_t{"an_empty_type_with_an_end_tag", in_message("<type/></type>")},
        deviation_t{"an_empty_root_with_content", "<msg/><type>t</type></msg>"},
        deviation_t{"a_wrong_end_tag", "<msg><type>t</type></msh>"},
        deviation_t{"a_wrong_end_tag_of_a_type", in_message("<type>t</typo>")},
        deviation_t{"a_wrong_end_tag_of_an_element", with_type("<e>x</f>")},
        deviation_t{"a_wrong_end_tag_of_a_severity", with_type("", "<severity>INFO</e>")},
        deviation_t{"a_repeated_attribute", "<msg a='b' a='c'><type>t</type></msg>"},
        deviation_t{"an_attribute_without_a_value", "<msg a><type>t</type></msg>"},
        deviation_t{"attributes_without_a_blank", "<msg a='b'c='d'><type>t</type></msg>"},
        deviation_t{"an_attribute_with_an_invalid_name", "<msg 1='b'><type>t</type></msg>"},
        deviation_t{"an_element_with_an_invalid_name", with_type("<1>x</1>")},
        deviation_t{"an_unknown_entity", with_type("<e>&x;</e>")},
        deviation_t{"an_unknown_entity_in_an_attribute", "<msg a='&x;'><type>t</type></msg>"},
        deviation_t{"an_ampersand", with_type("<e>a & b</e>")},
        deviation_t{"a_line_end_in_an_attribute", "<msg a='b\nc'><type>t</type></msg>"},
        deviation_t{"a_tab_in_an_attribute", "<msg a='b\tc'><type>t</type></msg>"},
        deviation_t{"a_tab_in_an_arguments_name", with_type("<arg name='\t'>x</arg>")},
        deviation_t{"a_carriage_return", with_type("<e>a\r\nb</e>")},
        deviation_t{"a_control_character", with_type("<e>\x01</e>")},
        deviation_t{"the_end_of_a_section", with_type("<e>a]]>b</e>")},
        deviation_t{"malformed_utf8", with_type("<e>\xFF</e>")},
        deviation_t{"malformed_utf8_in_a_name", with_type("<e\xFF>x</e\xFF>")},
        deviation_t{"malformed_utf8_in_an_attribute", "<msg a='\xFF'><type>t</type></msg>"},
        deviation_t{"a_reference_in_a_severity", with_type("", "<severity>INF&#79;</severity>")},
        deviation_t{"a_severity_beyond_ascii", with_type("", "<severity>\xC3\xA9</severity>")}),
    name_of);

INSTANTIATE_TEST_SUITE_P(
    message_recognizer, recognizer_document_deviation_test,
    testing::Values(
        deviation_t{"text_before", "x" + with_type("")},
        deviation_t{"text_after", with_type("") + "x"},
        deviation_t{"a_comment_after", with_type("") + "<!-- c -->"},
        deviation_t{"a_second_root", with_type("") + with_type("")},
        deviation_t{"a_fault_after", with_type("") + "<"},
        deviation_t{"a_fault_after_blanks", with_type("") + " \n<"},
        deviation_t{"a_byte_order_mark", "\xEF\xBB\xBF" + with_type("")},
        deviation_t{"a_blank_before_the_declaration", " " + declaration + with_type("")},
        deviation_t{"two_declarations", declaration + declaration + with_type("")},
        deviation_t{"a_declaration_alone", declaration},
        deviation_t{"another_version",
                    "<?xml version=\"1.1\" encoding=\"UTF-8\"?>" + with_type("")},
        deviation_t{"another_encoding",
                    "<?xml version=\"1.0\" encoding=\"UTF-7\"?>" + with_type("")},
        deviation_t{"another_quote", "<?xml version='1.0' encoding='UTF-8'?>" + with_type("")},
        deviation_t{"no_encoding", "<?xml version=\"1.0\"?>" + with_type("")}),
    name_of);

INSTANTIATE_TEST_SUITE_P(message_recognizer, recognizer_log_deviation_test,
                         testing::Values(deviation_t{"a_blank_before", " " + with_type("")},
                                         deviation_t{"a_declaration", declaration + with_type("")},
                                         deviation_t{"text_before", "x" + with_type("")}),
                         name_of);
