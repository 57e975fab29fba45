#include "storage/log_sax_reader.h"

#include "own_memory.h"
#include "support.h"
#include "usage.h"

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <stdexcept>

using namespace velmoext_1_4_8;

namespace
{

class log_sax_reader_test : public testing::Test
{
protected:
    log_sax_reader_test()
    {
        m_reader.set_callback([this](message_ptr_t message) {
            m_messages.push_back(message);
            m_types += message->get_type() + L";";
        });
    }

    // Returns the message that the elements give inside a "msg" of a "log".
    message_t::message_content_t read(const std::string& elements)
    {
        const std::size_t before = m_messages.size();
        m_reader.parse("<log><msg>" + elements + "<type>t</type></msg></log>");
        if (m_messages.size() == before + 1)
            return m_messages.back()->get_content();
        ADD_FAILURE() << "not one message, but " << m_messages.size() - before;
        return message_t::message_content_t();
    }

    std::wstring read_type(const std::string& text)
    {
        m_reader.parse("<log><msg><severity>INFO</severity><type>" + text + "</type></msg></log>");
        if (!m_messages.empty())
            return m_messages.back()->get_type();
        ADD_FAILURE() << "no message";
        return std::wstring();
    }

    log_sax_reader m_reader;
    std::vector<message_ptr_t> m_messages;
    std::wstring m_types; ///< of the messages at their delivery, each with a semicolon
};

// An operation that is quadratic in the size of a log would take minutes here.
class log_sax_reader_cost_test : public log_sax_reader_test
{
protected:
    void TearDown() override { EXPECT_LT(m_usage.seconds(), 10); }

private:
    const usage_t m_usage;
};

} // namespace

TEST_F(log_sax_reader_test, delivers_every_message_of_a_log_in_its_order)
{
    EXPECT_EQ(m_reader.parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n"
                             " <msg tool=\"x\">\n  <arg name=\"a\">1</arg>\n  <type>one</type>\n"
                             "  <severity>ERROR</severity>\n </msg>\n"
                             " <msg>\n  <type>two</type>\n </msg>\n</log>\n"),
              0);
    EXPECT_EQ(m_types, L"one;two;");
    const message_ptr_t one = m_messages.at(0);
    EXPECT_EQ(one->get_severity(), message_t::error);
    EXPECT_EQ(one->get_content().args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(one->get_content().attributes, (string_map_t{{L"tool", L"x"}}));
    EXPECT_EQ(m_messages.at(1)->get_severity(), message_t::none);
}

TEST_F(log_sax_reader_test, a_message_without_a_log_element_is_delivered_too)
{
    EXPECT_EQ(m_reader.parse("<msg><type>t</type></msg>"), 0);
    EXPECT_EQ(m_types, L"t;");
}

TEST_F(log_sax_reader_test, a_message_without_type_and_severity_is_dropped)
{
    m_reader.parse("<log><msg tool='x'><arg name='a'>1</arg></msg><msg/></log>");
    EXPECT_EQ(m_messages.size(), 0U);
}

TEST_F(log_sax_reader_test, a_message_with_a_severity_alone_is_delivered)
{
    m_reader.parse("<log><msg><severity>warning</severity></msg></log>");
    ASSERT_EQ(m_messages.size(), 1U);
    EXPECT_EQ(m_messages.front()->get_severity(), message_t::warning);
}

TEST_F(log_sax_reader_test, a_source_attribute_is_kept_as_tool_too)
{
    m_reader.parse("<log><msg source='s'><type>t</type></msg></log>");
    EXPECT_EQ(m_messages.at(0)->get_content().attributes,
              (string_map_t{{L"source", L"s"}, {L"tool", L"s"}}));
    EXPECT_NE(string_message_serializer_t::message_to_xml_string(m_messages.at(0))
                  .find(L"<msg source=\"s\" tool=\"s\">"),
              std::wstring::npos);
}

TEST_F(log_sax_reader_test, a_source_attribute_does_not_replace_a_tool)
{
    m_reader.parse("<log><msg source='s' tool='t'><type>t</type></msg></log>");
    EXPECT_EQ(m_messages.at(0)->get_content().attributes,
              (string_map_t{{L"source", L"s"}, {L"tool", L"t"}}));
}

TEST_F(log_sax_reader_test, an_empty_source_attribute_gives_an_empty_tool)
{
    m_reader.parse("<log><msg source=''><type>t</type></msg></log>");
    EXPECT_EQ(m_messages.at(0)->get_content().attributes,
              (string_map_t{{L"source", L""}, {L"tool", L""}}));
}

TEST_F(log_sax_reader_test, unnamed_arguments_are_counted_and_named_ones_take_no_number)
{
    const auto content = read("<arg>1</arg><arg name='n'>2</arg><arg name=''>3</arg>");
    EXPECT_EQ(content.args, (string_map_t{{L"arg1", L"1"}, {L"arg2", L"3"}, {L"n", L"2"}}));
    EXPECT_EQ(content.next_arg_number, 3);
}

TEST_F(log_sax_reader_test, an_unnamed_argument_without_text_takes_a_number)
{
    EXPECT_EQ(read("<arg/><arg>2</arg>").args, (string_map_t{{L"arg2", L"2"}}));
}

TEST_F(log_sax_reader_test, an_argument_without_text_is_dropped)
{
    EXPECT_TRUE(read("<arg name='a'></arg><arg name='b'/>").args.empty());
    EXPECT_EQ(string_message_serializer_t::xml_string_to_message(
                  L"<msg><arg name='a'></arg><arg name='b'/></msg>")
                  ->get_content()
                  .args,
              (string_map_t{{L"a", L""}, {L"b", L""}}));
}

TEST_F(log_sax_reader_test, the_first_of_several_arguments_or_elements_of_a_name_stays)
{
    const auto content = read("<arg name='a'>1</arg><arg name='a'>2</arg><e>3</e><e>4</e>");
    EXPECT_EQ(content.args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(content.elements, (string_map_t{{L"e", L"3"}}));
}

TEST_F(log_sax_reader_test, a_text_that_is_dropped_drops_the_name_of_its_argument_too)
{
    EXPECT_EQ(read("<arg name='a'>1</arg><arg name='a'>2&amp;3</arg>").args,
              (string_map_t{{L"", L"&"}, {L"a", L"1"}}));
}

TEST_F(log_sax_reader_test, a_timestamp_is_an_element_like_any_other)
{
    EXPECT_EQ(read("<timestamp>now</timestamp>").elements, (string_map_t{{L"timestamp", L"now"}}));
}

TEST_F(log_sax_reader_test, text_between_the_children_is_ignored)
{
    const auto content = read("x<arg name='a'>1</arg>y<e>2</e>z");
    EXPECT_EQ(content.args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(content.elements, (string_map_t{{L"e", L"2"}}));
}

TEST_F(log_sax_reader_test, text_outside_of_any_message_is_ignored)
{
    m_reader.parse("<log>a<msg>b<type>t</type>c</msg>d</log>");
    EXPECT_EQ(m_types, L"t;");
    EXPECT_TRUE(m_messages.at(0)->get_content().elements.empty());
}

TEST_F(log_sax_reader_test, white_space_alone_is_a_text)
{
    EXPECT_EQ(read("<arg name='a'>  \n</arg>").args, (string_map_t{{L"a", L"  \n"}}));
}

TEST_F(log_sax_reader_test, a_text_that_only_begins_like_a_severity_is_not_a_severity)
{
    for (const char* const text : {"criticality", "ERROR ERROR", "INFO\n", "WARNING&amp;"}) {
        m_reader.parse("<msg><type>t</type><severity>" + std::string(text) + "</severity></msg>");
        EXPECT_EQ(m_messages.back()->get_severity(), message_t::none) << text;
    }
}

// ---- text that arrives in chunks

TEST_F(log_sax_reader_test, an_entity_in_an_argument_stays_as_it_is_written)
{
    EXPECT_EQ(read("<arg name='n'>a &amp; b</arg>").args,
              (string_map_t{{L"", L"&"}, {L"n", L"a &amp; b"}}));
}

TEST_F(log_sax_reader_test, a_character_reference_in_an_argument_stays_as_it_is_written)
{
    EXPECT_EQ(read("<arg name='n'>a&#10;b</arg>").args,
              (string_map_t{{L"", L"\n"}, {L"n", L"a&#10;b"}}));
}

TEST_F(log_sax_reader_test, an_entity_in_an_element_stays_as_it_is_written)
{
    EXPECT_EQ(read("<e>a &lt; b</e>").elements, (string_map_t{{L"e", L"a &lt; b"}}));
}

TEST_F(log_sax_reader_test, the_last_chunk_of_a_type_counts)
{
    EXPECT_EQ(read_type("a &amp; b"), L" b");
    EXPECT_EQ(read_type("a &amp;"), L"&");
    EXPECT_EQ(read_type("&lt;a"), L"a");
}

TEST_F(log_sax_reader_test, non_ascii_text_is_kept_up_to_the_end_of_its_chunk)
{
    const auto content = read("<arg name='n'>\xC3\xA4 plain</arg><e>plain</e>");
    EXPECT_EQ(content.args, (string_map_t{{L"n", L"\xE4 plain"}}));
    const auto broken = read("<arg name='n'>plain \xC3\xA4</arg>");
    EXPECT_EQ(broken.args, (string_map_t{{L"", L"\xE4"}, {L"n", L"plain \xE4"}}));
}

TEST_F(log_sax_reader_test, a_character_beyond_ascii_is_read_at_every_position_of_a_text)
{
    for (std::size_t size = 1; size <= 20; ++size)
        for (std::size_t position = 0; position != size; ++position) {
            const std::string before(position, 'a');
            const std::string after(size - position - 1, 'z');
            const auto read_attribute =
                read("<arg name='" + before + "\xC3\xA9" + after + "'>x</arg>");
            EXPECT_EQ(read_attribute.args,
                      (string_map_t{{std::wstring(position, L'a') + L'\xE9' +
                                         std::wstring(size - position - 1, L'z'),
                                     L"x"}}))
                << position << " of " << size;
        }
}

TEST_F(log_sax_reader_test, a_long_text_is_one_chunk_wherever_it_begins)
{
    const std::wstring text(9000, L'x');
    const std::string utf8(text.begin(), text.end());
    for (const std::size_t before : {0U, 3900U, 4096U, 9000U}) {
        const std::string comment = "<!--" + std::string(before, 'c') + "-->";
        EXPECT_EQ(read(comment + "<arg name='n'>" + utf8 + "</arg>").args,
                  (string_map_t{{L"n", text}}));
        EXPECT_EQ(read_type(comment + utf8), text);
    }
}

TEST_F(log_sax_reader_test, a_cdata_section_is_a_chunk)
{
    EXPECT_EQ(read("<arg name='n'><![CDATA[a <b]]></arg>").args, (string_map_t{{L"n", L"a "}}));
    EXPECT_EQ(read("<arg name='n'>x<![CDATA[y]]></arg>").args,
              (string_map_t{{L"", L"y"}, {L"n", L"x"}}));
}

TEST_F(log_sax_reader_test, a_comment_ends_a_chunk)
{
    EXPECT_EQ(read("<arg name='n'>a<!-- c -->b</arg>").args,
              (string_map_t{{L"", L"b"}, {L"n", L"a"}}));
}

TEST_F(log_sax_reader_test, an_ampersand_in_an_attribute_stays_a_reference)
{
    EXPECT_EQ(read("<arg name='a&amp;b'>1</arg>").args, (string_map_t{{L"a&#38;b", L"1"}}));
}

TEST_F(log_sax_reader_test, an_element_within_a_child_is_a_child_too)
{
    const auto content = read("<arg name='n'>a<b>c</b>d</arg>");
    EXPECT_EQ(content.args, (string_map_t{{L"n", L"a"}}));
    EXPECT_EQ(content.elements, (string_map_t{{L"b", L"c"}}));
}

TEST_F(log_sax_reader_test, namespaces_are_not_resolved)
{
    const auto content = read("<p:e xmlns:p='u'>1</p:e>");
    EXPECT_EQ(content.elements, (string_map_t{{L"p:e", L"1"}}));
}

// ---- unusual or damaged logs

TEST_F(log_sax_reader_test, elements_before_any_message_have_no_effect)
{
    m_reader.parse("<log><arg name='a'>1</arg><arg>2</arg><type>x</type><severity>INFO</severity>"
                   "<e>3</e><msg><type>t</type></msg></log>");
    EXPECT_EQ(m_types, L"t;");
    EXPECT_TRUE(m_messages.at(0)->get_content().args.empty());
    EXPECT_TRUE(m_messages.at(0)->get_content().elements.empty());
}

TEST_F(log_sax_reader_test, a_foreign_root_delivers_nothing)
{
    EXPECT_EQ(m_reader.parse("<type>x</type>"), 0);
    EXPECT_EQ(m_messages.size(), 0U);
}

TEST_F(log_sax_reader_test, elements_after_a_message_are_still_added_to_it)
{
    m_reader.parse("<log><msg><type>t</type></msg><arg name='a'>1</arg><type>late</type></log>");
    EXPECT_EQ(m_types, L"t;");
    EXPECT_EQ(m_messages.at(0)->get_type(), L"late");
    EXPECT_EQ(m_messages.at(0)->get_content().args, (string_map_t{{L"a", L"1"}}));
}

TEST_F(log_sax_reader_test, a_message_within_a_message_replaces_it_and_is_delivered_at_both_ends)
{
    m_reader.parse("<log><msg><type>outer</type><msg><type>inner</type></msg></msg></log>");
    EXPECT_EQ(m_types, L"inner;inner;");
    EXPECT_EQ(m_messages.at(0), m_messages.at(1));
}

TEST_F(log_sax_reader_test, a_log_without_its_end_delivers_its_complete_messages)
{
    EXPECT_GT(m_reader.parse("<log><msg><type>a</type></msg><msg><type>b</type>"), 0);
    EXPECT_EQ(m_types, L"a;");
}

TEST_F(log_sax_reader_test, damage_ends_the_delivery)
{
    EXPECT_GT(m_reader.parse("<log><msg><type>a</type></msg><msg><type>b</tipe></msg>"
                             "<msg><type>c</type></msg></log>"),
              0);
    EXPECT_EQ(m_types, L"a;");
}

// libxml2 scans the text once more after this fault.
TEST_F(log_sax_reader_test, damage_in_a_long_log_ends_the_delivery)
{
    const own_mappings_scope_t own_mappings;
    EXPECT_GT(
        m_reader.parse("<log><msg><type>a</type></msg><msg><arg>]]></arg><type>b</type></msg>" +
                       std::string(40000000, ' ') + "</log>"),
        0);
    EXPECT_EQ(m_types, L"a;");
}

TEST_F(log_sax_reader_test, a_log_that_is_cut_anywhere_delivers_the_messages_before_the_cut)
{
    const std::string one = "<log>\n <msg a='1'>\n  <arg name='x'>\xC3\xA4&amp;</arg>\n"
                            "  <type>a</type>\n </msg>";
    const std::string two = one + "\n <msg>\n  <type>b</type>\n </msg>";
    const std::string whole = two + "\n</log>\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        m_types.clear();
        log_sax_reader reader;
        reader.set_callback([this](message_ptr_t message) { m_types += message->get_type(); });
        reader.parse(whole.substr(0, size));
        EXPECT_EQ(m_types, size < one.size() ? L"" : size < two.size() ? L"a" : L"ab") << size;
    }
}

TEST_F(log_sax_reader_test, an_empty_text_cannot_be_parsed)
{
    EXPECT_LT(m_reader.parse(""), 0);
}

TEST_F(log_sax_reader_test, one_reader_reads_one_text_after_the_other)
{
    m_reader.parse("<log><msg><type>a</type></msg>");
    m_reader.parse("<msg><type>b</type></msg>");
    m_reader.parse("</log>");
    EXPECT_EQ(m_types, L"a;b;");
}

TEST_F(log_sax_reader_test,
       elements_outside_of_messages_in_a_later_text_are_added_to_the_last_message)
{
    m_reader.parse("<msg><type>a</type></msg>");
    m_reader.parse("<arg>1</arg>");
    m_reader.parse("<arg>2</arg>");
    EXPECT_EQ(m_types, L"a;");
    EXPECT_EQ(m_messages.at(0)->get_content().args,
              (string_map_t{{L"arg1", L"1"}, {L"arg2", L"2"}}));
}

TEST_F(log_sax_reader_test, nothing_is_printed_for_any_input)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    for (const char* text : {"plain", "<log>", "<log><msg a='1' a='2'>", "<log>&e;</log>",
                             "<log xml:id='1 2' p:x='1'/>", "<log>\xFF</log>", "<log>\x01</log>",
                             "<!DOCTYPE log SYSTEM '/nowhere'><log>&e;</log>",
                             "<!DOCTYPE log [<!ENTITY amp 'x'>]><log/>",
                             "<?xml version='1.0' encoding='UTF-7'?><log>\xC3\xA9</log>",
                             "<?xml version='1.0' encoding='UTF-32'?><log>\xC3\xA9</log>"})
        m_reader.parse(text);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(log_sax_reader_test, the_error_handler_of_the_process_is_restored)
{
    static int error_count = 0;
    error_count = 0;
    const auto on_error = [](void*, auto* /*constant since libxml2 2.12*/) {
        ++error_count;
    };
    void* const former_context = xmlStructuredErrorContext;
    const xmlStructuredErrorFunc former = xmlStructuredError;
    xmlSetStructuredErrorFunc(nullptr, on_error);
    m_reader.parse("<log>");
    string_message_serializer_t::xml_string_to_message(L"<log>");
    EXPECT_EQ(xmlStructuredError, static_cast<xmlStructuredErrorFunc>(on_error));
    EXPECT_EQ(error_count, 0);
    m_reader.set_callback([](message_ptr_t) { xmlReadDoc(BAD_CAST "<", nullptr, nullptr, 0); });
    m_reader.parse("<msg><type>t</type></msg>");
    EXPECT_GT(error_count, 0) << "the process receives the errors of a handler";
    xmlSetStructuredErrorFunc(former_context, former);
}

// ---- callbacks

TEST_F(log_sax_reader_test, a_message_without_a_callback_is_reported)
{
    log_sax_reader reader;
    try {
        reader.parse("<log><msg><type>t</type></msg></log>");
        FAIL() << "nothing was thrown";
    } catch (const boost::bad_function_call& error) {
        EXPECT_STREQ(error.what(), "call to empty boost::function");
    }
}

TEST_F(log_sax_reader_test, without_a_callback_a_log_without_messages_is_read)
{
    EXPECT_EQ(log_sax_reader().parse("<log><msg/></log>"), 0);
}

TEST_F(log_sax_reader_test, an_exception_of_the_callback_propagates_and_ends_the_delivery)
{
    int calls = 0;
    m_reader.set_callback([&](message_ptr_t) {
        ++calls;
        throw std::runtime_error("first");
    });
    const std::string log = "<log><msg><type>a</type></msg><msg><type>b</type></msg></log>";
    EXPECT_THROW(m_reader.parse(log), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST_F(log_sax_reader_test, an_exception_leaves_the_last_error_of_the_thread_unchanged)
{
    m_reader.set_callback([](message_ptr_t) { throw 1; });
    xmlResetLastError();
    EXPECT_THROW(m_reader.parse("<log><msg><type>a</type></msg></lag>"), int);
    EXPECT_EQ(xmlGetLastError(), nullptr);
}

TEST_F(log_sax_reader_test, a_reader_whose_callback_threw_can_be_used_again)
{
    m_reader.set_callback([](message_ptr_t) { throw 1; });
    EXPECT_THROW(m_reader.parse("<log><msg><type>a</type></msg></log>"), int);
    m_reader.set_callback([this](message_ptr_t message) { m_types += message->get_type(); });
    EXPECT_EQ(m_reader.parse("<log><msg><type>b</type></msg></log>"), 0);
    EXPECT_EQ(m_types, L"b");
}

TEST_F(log_sax_reader_test, a_new_callback_replaces_the_former_and_releases_it)
{
    const auto owned = boost::make_shared<int>(0);
    m_reader.set_callback([owned](message_ptr_t) {});
    EXPECT_EQ(owned.use_count(), 2);
    m_reader.set_callback([](message_ptr_t) {});
    EXPECT_EQ(owned.use_count(), 1);
}

// ---- cost

TEST_F(log_sax_reader_cost_test, a_long_log_takes_linear_time)
{
    std::string log = "<log>";
    for (int i = 0; i < 100000; ++i)
        log += "<msg><arg name='a'>text</arg><type>t</type></msg>\n";
    m_reader.parse(log + "</log>");
    EXPECT_EQ(m_messages.size(), 100000U);
}

TEST_F(log_sax_reader_cost_test, many_arguments_take_linear_time)
{
    std::string args;
    for (int i = 0; i < 100000; ++i)
        args += "<arg>x</arg>";
    EXPECT_EQ(read(args).args.size(), 100000U);
}

TEST_F(log_sax_reader_cost_test, many_entities_in_a_type_take_linear_time)
{
    std::string text = "x";
    for (int i = 0; i < 200000; ++i)
        text += "&amp;&lt;&gt;&quot;&#13;&apos;";
    EXPECT_EQ(read_type(text), L"'");
    EXPECT_EQ(read_type(text + "end"), L"end");
}

TEST_F(log_sax_reader_cost_test, many_chunks_of_a_type_take_linear_time)
{
    for (const char* const chunk : {"a&#65;", "a\r\n", "&#65;\r\n"}) {
        std::string text;
        for (int i = 0; i < 300000; ++i)
            text += chunk;
        EXPECT_EQ(read_type(text + "&#65;end"), L"end");
        EXPECT_EQ(read_type(text + "&#66;"), L"B");
    }
}

TEST_F(log_sax_reader_cost_test, many_chunks_of_an_element_take_linear_time)
{
    const std::string name(49000, 'n');
    std::string text = "x";
    for (int i = 0; i < 200000; ++i)
        text += "a&#65;";
    EXPECT_EQ(read("<" + name + ">" + text + "</" + name + ">").elements.size(), 1U);
}

TEST_F(log_sax_reader_cost_test, many_chunks_of_a_severity_take_linear_time)
{
    std::string text = "x";
    for (int i = 0; i < 200000; ++i)
        text += "a&amp;";
    m_reader.parse("<log><msg><severity>" + text +
                   "</severity><type>t</type></msg><msg><severity>" + text +
                   "error</severity></msg></log>");
    ASSERT_EQ(m_messages.size(), 2U);
    EXPECT_EQ(m_messages.at(0)->get_severity(), message_t::none);
    EXPECT_EQ(m_messages.at(1)->get_severity(), message_t::error);
}

TEST_F(log_sax_reader_cost_test, many_chunks_of_an_argument_take_linear_time)
{
    std::string text = "x";
    for (int i = 0; i < 200000; ++i)
        text += "a&amp;";
    EXPECT_EQ(read("<arg name='a'>" + text + "</arg>").args.size(), 2U);
}
