#include "encoding/document_parser.h"

#include "document_oracle.h"
#include "message_fields.h"
#include "repeated_text.h"
#include "usage.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace velmoext_1_4_8;

namespace
{

// Returns a comment of that many bytes.
std::string comment(std::size_t size)
{
    return "<!--" + std::string(size - 7, 'c') + "-->";
}

message_ptr_t read(const std::string& document)
{
    return parse_document(document).message;
}

// Expects the result of libxml2's text reader. A fault after the message may count or not.
void expect_same_as_text_reader(const std::string& document)
{
    const document_oracle_t oracle(ROVA_2_18::strings::utf8_to_utf16(document));
    const std::string difference = oracle.difference(read(document));
    EXPECT_EQ(difference.substr(0, 1000), "")
        << document.size() << " bytes, " << document.substr(0, 60);
}

// Also expects that a long document is not refused, which the oracle alone would allow.
void expect_same_as_text_reader_and_accepted(const std::string& document)
{
    expect_same_as_text_reader(document);
    EXPECT_TRUE(read(document)) << document.size() << " bytes, " << document.substr(0, 60);
}

refusal_t refusal_of(const std::string& document)
{
    const parsed_document_t parsed = parse_document(document);
    EXPECT_TRUE(!parsed.message || parsed.refusal == refusal_t::none);
    return parsed.refusal;
}

std::string in_message(const std::string& content)
{
    return "<msg>" + content + "<type>t</type></msg>";
}

std::string with_document_type(const std::string& declarations, const std::string& root)
{
    return "<!DOCTYPE msg [" + declarations + "]>" + root;
}

const char* const faults[] = {"<", "</x>", "x", "\x01", "<msg>", "&x;", "<!DOCTYPE x>", "<?xml?>"};

const std::size_t large_size = 9900000;

} // namespace

TEST(document_parser_test, a_fault_after_the_message_counts_as_in_libxml2s_reader)
{
    for (const char* const fault : faults)
        for (std::size_t distance = 0; distance != 1100; distance += distance < 8 ? 1 : 7)
            expect_same_as_text_reader(in_message("") + std::string(distance, ' ') + fault);
}

TEST(document_parser_test, a_fault_counts_wherever_the_message_begins)
{
    for (const char* const fault : {"<", "x"})
        for (std::size_t before = 7; before != 600; ++before) {
            expect_same_as_text_reader(comment(before) + in_message("") + fault);
            expect_same_as_text_reader(comment(before) + in_message("") + std::string(400, ' ') +
                                       fault);
        }
}

TEST(document_parser_test, a_fault_before_the_messages_end_gives_null)
{
    for (const char* const fault : {"<", "</x>", "\x01", "&x;"})
        for (std::size_t distance = 0; distance < 1100; distance += 13) {
            const std::string text(distance, 'x');
            EXPECT_FALSE(read("<msg><e>" + text + fault + "</e></msg>"));
            EXPECT_FALSE(read("<msg><e>" + text + "</e>" + fault + "</msg>"));
            EXPECT_FALSE(read("<msg>" + std::string(distance, ' ') + fault));
        }
}

TEST(document_parser_test, a_document_that_is_cut_anywhere_is_read_as_by_libxml2s_reader)
{
    const std::string document =
        "<?xml version='1.0'?><!DOCTYPE msg [<!ENTITY e 'x'>]>\n<msg a='b'><arg>&e;</arg>"
        "<type><![CDATA[t]]></type><!-- c --></msg>\n<?p?>";
    for (std::size_t size = 0; size <= document.size(); ++size)
        for (const std::size_t before : {0U, 505U, 65500U})
            expect_same_as_text_reader(
                (before == 0 ? "" : "<!--" + std::string(before, 'c') + "-->") +
                document.substr(before == 0 ? 0 : 21, size));
}

TEST(document_parser_test, a_message_is_read_wherever_long_documents_are_split)
{
    const std::string message =
        "<msg a='b'><arg name='n'>x<![CDATA[y]]>&amp;</arg><e>f<!-- g --></e><type>t</type></msg>";
    for (std::size_t before = 65536 - 600; before < 65536 + 60; before += 7) {
        expect_same_as_text_reader(comment(before) + message);
        expect_same_as_text_reader(comment(before) + message + " <");
        expect_same_as_text_reader(repeated(" ", before) + message + "<!-- -- -->");
    }
}

TEST(document_parser_test, a_fault_counts_in_the_chunk_in_which_the_message_ends)
{
    const std::string message = in_message("");
    for (const char* const fault : {"<", "x", "</x>"})
        for (const std::size_t before : {0U, 100U, 600U}) {
            const std::string begin = before == 0 ? message : comment(before) + message;
            EXPECT_FALSE(read(begin + fault)) << before << fault;
        }
}

TEST(document_parser_test, a_fault_far_after_the_message_counts_unless_a_comment_is_between_them)
{
    for (const std::string& text : {std::string(600, ' '), repeated("text<b/>", 20000)})
        for (const char* const fault : {"x", "<", "</x>", "<!-- c", "<a/>"}) {
            const std::string message = in_message("<e>" + text + "</e>");
            EXPECT_FALSE(read(message + fault)) << fault;
            EXPECT_FALSE(read(message + repeated(" ", 2000) + fault)) << fault;
            EXPECT_TRUE(read(message + repeated("<!-- c -->", 200) + fault)) << fault;
            expect_same_as_text_reader(message + "<?p?>" + repeated(" ", 2000) + fault);
            expect_same_as_text_reader(message + "<!-- c -->" + fault);
            expect_same_as_text_reader(message + repeated(" ", 2000) + fault);
        }
}

TEST(document_parser_test, malformed_xml_that_libxml2_accepts_is_read)
{
    for (const char* const begin :
         {"<?xml version=\"1.0\" encoding=\"UTF-8\"standalone=\"no\"?>",
          "<?xml version='1.0' encoding='ISO-8859-1'standalone='no'?>",
          "<?xml version='1.0'encoding='UTF-8'?>", "<!DOCTYPE msg>[<!ENTITY u 'y'>]>",
          "<!DOCTYPE msg>[<!--x--><!ENTITY u 'y'>]>", "<!DOCTYPE msg> [<!ENTITY u 'y'>]>",
          "<!DOCTYPE msg []>[]>"})
        for (const std::size_t blanks : {1U, 600U, 2000U})
            expect_same_as_text_reader(begin + std::string("<msg>") + std::string(blanks, ' ') +
                                       "<type>t</type></msg>");
}

TEST(document_parser_test, tokens_of_any_size_are_read_as_by_libxml2s_reader)
{
    const std::string text(large_size, 'x');
    expect_same_as_text_reader_and_accepted(in_message(comment(large_size)));
    expect_same_as_text_reader_and_accepted(in_message("<e><![CDATA[" + text + "]]></e>"));
    expect_same_as_text_reader_and_accepted(in_message("<e>" + text + "</e>"));
    expect_same_as_text_reader_and_accepted("<msg a='" + text + "'><type>t</type></msg>");
    const std::string blanks(1000000, ' ');
    expect_same_as_text_reader_and_accepted(comment(1000000) + in_message("") + comment(1000000));
    expect_same_as_text_reader_and_accepted(in_message("<?p " + blanks + "?>"));
    expect_same_as_text_reader_and_accepted(
        in_message("<e>" + repeated("\xC3\xA9", 500000) + "</e>"));
    expect_same_as_text_reader_and_accepted("<msg" + blanks + "a='b'><type>t</type></msg" + blanks +
                                            ">");
    expect_same_as_text_reader_and_accepted(blanks + in_message("") + blanks);
    const std::string name(49000, 'e');
    expect_same_as_text_reader_and_accepted(in_message("<" + name + ">x</" + name + ">"));
}

TEST(document_parser_test, a_document_that_libxml2_refuses_is_not_read)
{
    const std::string text(10100000, 'x');
    for (const std::string& document :
         {in_message("<e>" + text + "</e>"),
          in_message(repeated("<e>", 300) + repeated("</e>", 300)),
          "<msg a='" + text + "'><type>t</type></msg>", std::string("<other><msg/></other>"),
          std::string("<p:other xmlns:p='u'/>"), std::string(), std::string("<ms"),
          std::string(" "), std::string("<!DOCTYPE msg>")})
        EXPECT_FALSE(read(document)) << document.substr(0, 100);
}

TEST(document_parser_test, the_declared_encoding_is_ignored)
{
    for (const char* const encoding :
         {"UTF-8", "ISO-8859-1", "GBK", "UTF-16", "UTF-7", "x-unknown"})
        EXPECT_EQ(fields_of(read(std::string("<?xml version='1.0' encoding='") + encoding +
                                 "'?><msg><type>\xC3\xA9</type></msg>")),
                  fields_of(read("<msg><type>\xC3\xA9</type></msg>")))
            << encoding;
}

TEST(document_parser_test, a_document_beyond_a_limit_is_refused_with_the_reason)
{
    EXPECT_EQ(refusal_of("<msg" + numbered(" a", 25001, "=''") + "/>"), refusal_t::attributes);
    EXPECT_EQ(refusal_of(in_message(numbered("<a", 250001, "/>"))), refusal_t::names);
    EXPECT_EQ(refusal_of(with_document_type("<!ATTLIST a" + numbered(" a", 2000, " CDATA ''") + ">",
                                            in_message(repeated("<a/>", 501)))),
              refusal_t::defaults);
    EXPECT_EQ(refusal_of("<msg" + numbered(" xmlns:n", 2000, "='u'") + ">" +
                         repeated("<a/>", 200001) + "</msg>"),
              refusal_t::namespaces);
    EXPECT_EQ(refusal_of(with_document_type(std::string(163840, ' '), in_message(""))),
              refusal_t::document_type_size);
    EXPECT_EQ(refusal_of(with_document_type("%p;", in_message(""))), refusal_t::parameter_entities);
}

TEST(document_parser_test, entities_are_read_up_to_a_limit_for_each_message)
{
    // Later releases of libxml2 have a limit of their own, which grows with the document.
    const std::string long_comment = comment(4000000);
    const auto document = [&](std::size_t size, std::size_t references) {
        return with_document_type(
            "<!ENTITY e '" + std::string(size, 'x') + "'>",
            in_message(long_comment + "<e>" + repeated("&e;", references) + "</e>"));
    };
    EXPECT_EQ(refusal_of(document(100000, 100)), refusal_t::none);
    EXPECT_TRUE(read(document(100000, 100)));
    EXPECT_EQ(refusal_of(document(100000, 101)), refusal_t::entity_text);
    EXPECT_EQ(refusal_of(document(1, 100000)), refusal_t::none);
}

TEST(document_parser_test, a_malformed_document_is_not_refused)
{
    for (const char* const document : {"<msg", "<msg></msg", "<other/>", "", "x"})
        EXPECT_EQ(refusal_of(document), refusal_t::none) << document;
}

// Quadratic time would be minutes.
TEST(document_parser_test, the_time_is_linear_in_the_size)
{
    const std::size_t size = 2000000;
    static const struct
    {
        const char* before;
        const char* repeating;
    } cases[] = {{"", "<!---->"},
                 {"<!--", "- "},
                 {"<msg>", "<a/>"},
                 {"<msg>", "<a b='c'>x</a>"},
                 {"<msg><e>", "&amp;"},
                 {"<msg><e>", "&#233;"},
                 {"<msg><e>", "\xC3\xA9"},
                 {"<msg><e>", "x"},
                 {"<msg><e>", "]"},
                 {"<msg><e><![CDATA[", "]]"},
                 {"<msg><e>", "<![CDATA[x]]>"},
                 {"<msg><?p ", "?"},
                 {"<msg><?p ", "x"},
                 {"<msg a='", "x"},
                 {"<msg a='", "\n"},
                 {"<msg a='", "&lt;"},
                 {"<msg ", " "},
                 {"<", "m"},
                 {"<msg>", "<a>"},
                 {"<msg/>", "<!---->"},
                 {"<msg/>", "<?p?>"},
                 {"<msg>", "<a b='' b=''/>"},
                 {"<msg>", "<a/><"},
                 {"<!DOCTYPE msg [", "<!-- "},
                 {"<!DOCTYPE msg [", "<!ENTITY e 'x'>"},
                 {"<!DOCTYPE msg [<!ENTITY e 'x'>]><msg><e>", "&e;"},
                 {"<!DOCTYPE msg [<!ENTITY e '<a/>'>]><msg><e>", "&e;"},
                 {"<?xml ", "a='' "},
                 {"\xEF\xBB\xBF", "\xEF\xBB\xBF"}};
    for (const auto& [before, repeating] : cases) {
        const std::string document =
            before + repeated(repeating, size / std::string(repeating).size());
        const usage_t usage;
        parse_document(document);
        EXPECT_LT(usage.seconds(), 5) << before << repeating;
    }
}
