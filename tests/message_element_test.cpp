#include "encoding/message_element.h"

#include "encoding/element_names.h"
#include "support.h"
#include "xml/handles.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <limits>
#include <sstream>

using namespace velmoext_1_4_8;

namespace
{

// A writer into memory, with what it has written so far.
class memory_writer_t
{
public:
    xmlTextWriterPtr get() { return m_writer.get(); }

    std::string text()
    {
        xmlTextWriterFlush(m_writer.get());
        return from_xml(xmlBufferContent(m_buffer.get()));
    }

private:
    xml_buffer_t m_buffer{xmlBufferCreate()};
    xml_writer_t m_writer{xmlNewTextWriterMemory(m_buffer.get(), 0)};
};

// A writer that cannot write anything.
xml_writer_t make_failing_writer()
{
    const auto refuse = [](void*, const char*, int) {
        return -1;
    };
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(refuse, nullptr, nullptr, nullptr);
    return xml_writer_t(xmlNewTextWriter(buffer));
}

// Returns each line without its indentation and end.
std::string write(const message_ptr_t& message)
{
    memory_writer_t writer;
    EXPECT_TRUE(write_message_element(message, writer.get()));
    std::istringstream lines(writer.text());
    std::string text;
    for (std::string line; std::getline(lines >> std::ws, line);)
        text += line;
    return text;
}

class element_t
{
public:
    explicit element_t(const std::string& text)
        : m_document(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                   XML_PARSE_NOERROR | XML_PARSE_NOWARNING))
    {}
    ~element_t() { xmlFreeDoc(m_document); }
    element_t(const element_t&) = delete;
    element_t& operator=(const element_t&) = delete;

    const xmlNode* root() const { return xmlDocGetRootElement(m_document); }

private:
    xmlDocPtr m_document;
};

message_ptr_t read(const std::string& text)
{
    return read_message_element(element_t(text).root());
}

} // namespace

TEST(message_element_test, the_parts_are_written_in_their_order)
{
    const auto message =
        make_message(make_content({{L"tool", L"s"}, {L"a", L"1"}}, {{L"y", L"2"}, {L"x", L"3"}},
                                  {{L"d", L"4"}, {L"c", L"5"}}));
    message->set_type(L"t");
    message->set_severity(message_t::warning);
    EXPECT_EQ(write(message), "<msg a=\"1\" tool=\"s\"><arg name=\"x\">3</arg>"
                              "<arg name=\"y\">2</arg><c>5</c><d>4</d><type>t</type>"
                              "<severity>WARNING</severity></msg>");
}

TEST(message_element_test, a_default_message_has_only_an_empty_type)
{
    EXPECT_EQ(write(boost::make_shared<message_t>()), "<msg><type></type></msg>");
}

TEST(message_element_test, a_severity_without_a_name_is_not_written)
{
    for (const int severity : {0, -1, 5})
        EXPECT_EQ(write(make_message(L"t", static_cast<message_t::severity_t>(severity))),
                  "<msg><type>t</type></msg>");
}

TEST(message_element_test, flags_and_the_argument_counter_are_not_written)
{
    const auto message = make_message(L"t");
    auto content = message->get_content();
    content.next_arg_number = 9;
    message->set_content(content);
    message->set_flags(3);
    EXPECT_EQ(write(message), "<msg><type>t</type></msg>");
}

TEST(message_element_test, an_empty_attribute_name_ends_the_content_but_not_the_element)
{
    EXPECT_EQ(write(make_message(make_content({{L"", L"1"}, {L"a", L"2"}}, {{L"x", L"3"}}))),
              "<msg><type></type></msg>");
}

TEST(message_element_test, an_empty_element_name_ends_the_content_but_not_the_element)
{
    EXPECT_EQ(write(make_message(make_content({{L"a", L"1"}}, {}, {{L"", L"2"}, {L"b", L"3"}}))),
              "<msg a=\"1\"><type></type></msg>");
}

TEST(message_element_test, a_missing_writer_is_reported)
{
    EXPECT_FALSE(write_message_element(make_message(L"t"), nullptr));
}

TEST(message_element_test, a_writer_that_refuses_the_element_is_reported)
{
    // A text that exceeds libxml2's buffer is written at once, which fails.
    const auto message = make_message(std::wstring(100000, L'x'));
    EXPECT_FALSE(write_message_element(message, make_failing_writer().get()));
}

TEST(message_element_test, a_null_node_gives_null)
{
    EXPECT_FALSE(read_message_element(nullptr));
}

TEST(message_element_test, all_attributes_of_a_msg_are_read)
{
    EXPECT_EQ(read("<msg tool='a' source='b' other=''/>")->get_content().attributes,
              (string_map_t{{L"other", L""}, {L"source", L"b"}, {L"tool", L"a"}}));
}

TEST(message_element_test, a_source_attribute_does_not_set_the_tool)
{
    EXPECT_EQ(read("<msg source='b'/>")->get_content().attributes,
              (string_map_t{{L"source", L"b"}}));
}

TEST(message_element_test, attributes_of_another_element_are_not_read)
{
    const message_ptr_t message = read("<other tool='a'><type>t</type></other>");
    EXPECT_TRUE(message->get_content().attributes.empty());
    EXPECT_EQ(message->get_type(), L"t");
}

TEST(message_element_test, the_last_type_and_severity_count)
{
    const message_ptr_t message = read("<msg><type>a</type><severity>INFO</severity>"
                                       "<type>b</type><severity>nothing</severity></msg>");
    EXPECT_EQ(message->get_type(), L"b");
    EXPECT_EQ(message->get_severity(), message_t::none);
}

TEST(message_element_test, unnamed_arguments_are_counted_and_named_ones_take_no_number)
{
    EXPECT_EQ(read("<msg><arg>1</arg><arg name='n'>2</arg><arg name=''>3</arg></msg>")
                  ->get_content()
                  .args,
              (string_map_t{{L"arg1", L"1"}, {L"arg2", L"3"}, {L"n", L"2"}}));
}

TEST(message_element_test, the_counter_follows_the_last_unnamed_argument)
{
    EXPECT_EQ(read("<msg><arg/><arg/></msg>")->get_content().next_arg_number, 3);
}

TEST(message_element_test, the_counter_wraps_to_the_smallest_number_after_the_largest)
{
    std::int32_t number = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(generate_arg_name(number), L"arg2147483647");
    EXPECT_EQ(generate_arg_name(number), L"arg-2147483648");
    EXPECT_EQ(number, std::numeric_limits<std::int32_t>::min() + 1);
}

TEST(message_element_test, a_generated_name_that_is_taken_keeps_the_first_text)
{
    EXPECT_EQ(read("<msg><arg name='arg1'>first</arg><arg>second</arg></msg>")->get_content().args,
              (string_map_t{{L"arg1", L"first"}}));
}

TEST(message_element_test, the_first_of_several_arguments_or_elements_of_a_name_stays)
{
    const auto content = read("<msg><arg name='a'>1</arg><arg name='a'>2</arg>"
                              "<e>3</e><e>4</e></msg>")
                             ->get_content();
    EXPECT_EQ(content.args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(content.elements, (string_map_t{{L"e", L"3"}}));
}

TEST(message_element_test, an_argument_without_text_has_an_empty_text)
{
    EXPECT_EQ(read("<msg><arg name='a'/><arg name='b'></arg></msg>")->get_content().args,
              (string_map_t{{L"a", L""}, {L"b", L""}}));
}

TEST(message_element_test, texts_are_not_trimmed)
{
    EXPECT_EQ(read("<msg><type> t\n</type></msg>")->get_type(), L" t\n");
}

TEST(message_element_test, all_text_below_a_child_counts_and_comments_do_not)
{
    EXPECT_EQ(read("<msg><type>a<b>c<d/>e</b><!-- no -->f<![CDATA[<g>]]><?pi no?>&#104;&amp;"
                   "</type></msg>")
                  ->get_type(),
              L"acef<g>h&");
}

TEST(message_element_test, text_and_other_nodes_between_the_children_are_skipped)
{
    const message_ptr_t message = read("<msg>x<!-- c --><type>t</type>y<![CDATA[z]]></msg>");
    EXPECT_EQ(message->get_type(), L"t");
    EXPECT_TRUE(message->get_content().elements.empty());
}

TEST(message_element_test, a_timestamp_is_an_element_like_any_other)
{
    const message_ptr_t message = read("<msg><timestamp>now</timestamp><type>t</type></msg>");
    EXPECT_EQ(message->get_content().elements, (string_map_t{{L"timestamp", L"now"}}));
    EXPECT_EQ(write(message), "<msg><timestamp>now</timestamp><type>t</type></msg>");
}

TEST(message_element_test, the_entities_of_the_document_are_resolved)
{
    EXPECT_EQ(read("<!DOCTYPE msg [<!ENTITY e 'x<b>y</b>'><!ENTITY f '&e;&e;'>]>"
                   "<msg a='&f2;'><type>1&e;2&f;3</type></msg>"),
              message_ptr_t())
        << "an unknown entity is not well-formed";
    const message_ptr_t message = read("<!DOCTYPE msg [<!ENTITY e 'x<b>y</b>'><!ENTITY f '&e;&e;'>"
                                       "<!ENTITY g 'z'>]>"
                                       "<msg a='&g;!'><type>1&e;2&f;3</type></msg>");
    EXPECT_EQ(message->get_type(), L"1xy2xyxy3");
    EXPECT_EQ(message->get_content().attributes, (string_map_t{{L"a", L"z!"}}));
}
