#include "storage/log_walker.h"

#include "encoding/element_composer.h"
#include "log_oracle.h"
#include "message_fields.h"
#include "random_documents.h"
#include "random_messages.h"
#include "repeated_text.h"
#include "storage/log_sax_reader.h"
#include "usage.h"
#include "writer_oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

// Messages in the written form, others, and all that can be between them.
const std::string rich_log =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- c --><?p?>\n<log>\n"
    " <msg a=\"b\">\n  <arg name=\"n\">x</arg>\n  <type>one</type>\n </msg>\n"
    "<!-- <msg> --> text &amp; more <arg>late</arg><![CDATA[</log>]]><e/>\n"
    " <msg>\n  <arg name=\"\">\xC3\xA9&amp;</arg>\n  <type>two</type>\n </msg>\n"
    "<list><msg><type>in</type></msg><type>last</type></list><log><msg/></log>"
    "<msg c='d'/><msg><type/><severity>INFO</severity></msg>"
    " <msg>\n  <type>three</type>\n  <severity>ERROR</severity>\n </msg>\n"
    "<arg>later</arg><?p </log>?></log>\n<!-- d -->\n<?q?>\n";

// A walk over one log whose text becomes available gradually.
class walk_t
{
public:
    explicit walk_t(const std::string& log) : m_log(log)
    {
        m_log.resize(m_log.rfind('>') + 1);
        m_reader.set_callback([this](const message_ptr_t& message) {
            m_fields += fields_of(message);
            m_messages.push_back(message);
        });
    }

    // Collects stable lines unchanged, and other messages as they are written.
    walk_t& with_lines()
    {
        m_reader.set_callback([this](const message_ptr_t& message) {
            text_buffer_t<char> element;
            append_message_element(*message, 1, element);
            m_written.append(element.begin(), element.end());
        });
        m_takes_lines = true;
        return *this;
    }

    // Walks in parts that end at these offsets, and then to the end of the log.
    walk_t& through(std::vector<std::size_t> ends)
    {
        log_walker_t::lines_callback_t on_lines;
        if (m_takes_lines)
            on_lines = [this](std::string_view lines) {
                m_written += lines;
            };
        m_walker.emplace(m_reader, on_lines);
        ends.push_back(m_log.size());
        for (const std::size_t end : ends) {
            if (m_walker->is_finished() || end < m_walked)
                continue;
            const std::string text = m_log.substr(m_walked, end - m_walked);
            m_walked += m_walker->walk(text, end == m_log.size());
            EXPECT_LE(m_walked, end);
        }
        EXPECT_TRUE(m_walker->is_finished());
        return *this;
    }

    walk_t& byte_by_byte()
    {
        std::vector<std::size_t> ends(m_log.size());
        for (std::size_t end = 0; end != ends.size(); ++end)
            ends[end] = end;
        return through(ends);
    }

    // Returns the fields of the messages at their delivery, and in the end.
    std::string fields() const
    {
        std::string all = m_fields + "afterwards\n";
        for (const message_ptr_t& message : m_messages)
            all += fields_of(message);
        return all;
    }

    // Returns the log that is written from the messages and lines.
    std::string written() const
    {
        const std::string begin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        return begin + (m_written.empty() ? "<log/>\n" : "<log>\n" + m_written + "</log>\n");
    }

    refusal_t refusal() const { return m_walker->refusal(); }
    std::size_t size() const { return m_log.size(); }

private:
    std::string m_log;
    std::string m_fields;
    std::vector<message_ptr_t> m_messages;
    log_sax_reader m_reader;
    std::optional<log_walker_t> m_walker;
    bool m_takes_lines = false;
    std::string m_written;
    std::size_t m_walked = 0;
};

std::vector<std::size_t> random_ends(random_source_t& random, const std::string& log)
{
    const std::size_t size = walk_t(log).size();
    std::vector<std::size_t> ends;
    for (std::size_t end = 0; end < size; end += random.between(1, 1 + size / 8))
        ends.push_back(end);
    return ends;
}

// Returns the result of one parse of the whole log.
std::string parsed(const std::string& log)
{
    return text_of(log_oracle_t().read(log));
}

void expect_as_parsed(const std::string& log)
{
    const std::string expected = parsed(log);
    ASSERT_EQ(walk_t(log).through({}).fields(), expected) << log;
    ASSERT_EQ(walk_t(log).byte_by_byte().fields(), expected) << log;
}

} // namespace

TEST(log_walker_test, a_log_that_is_split_anywhere_gives_the_result_of_one_parse)
{
    const std::string expected = parsed(rich_log);
    EXPECT_NE(expected.find("three"), std::string::npos);
    for (std::size_t end = 0; end <= rich_log.size(); ++end)
        ASSERT_EQ(walk_t(rich_log).through({end}).fields(), expected) << end;
    EXPECT_EQ(walk_t(rich_log).byte_by_byte().fields(), expected);
}

TEST(log_walker_test, a_log_that_is_split_twice_anywhere_gives_the_result_of_one_parse)
{
    const std::string log = "<log> <msg>\n <type>a</type>\n</msg><e>x</e>\n<msg><type>&lt;</type>"
                            "</msg>y <msg><type>c</type></msg></log>";
    const std::string expected = parsed(log);
    for (std::size_t first = 0; first <= log.size(); ++first)
        for (std::size_t second = first; second <= log.size(); ++second)
            ASSERT_EQ(walk_t(log).through({first, second}).fields(), expected)
                << first << ", " << second;
}

TEST(log_walker_test, a_log_that_is_cut_anywhere_gives_the_result_of_one_parse)
{
    for (std::size_t size = 0; size <= rich_log.size(); ++size) {
        const std::string log = rich_log.substr(0, size);
        ASSERT_EQ(walk_t(log).through({size / 2}).fields(), parsed(log)) << size;
    }
}

TEST(log_walker_test, a_fault_anywhere_ends_the_walk_as_it_ends_a_parse)
{
    for (const std::string fault : {"\x01", "<", "&", "&u;", "]]>", "</log>", "<!DOCTYPE a>",
                                    "<a b='1' b='2'/>", "\xFF", "</msg>", "<log>", "<!-- -- -->"})
        for (std::size_t at = 0; at <= rich_log.size(); at += 3) {
            const std::string log = rich_log.substr(0, at) + fault + rich_log.substr(at);
            ASSERT_EQ(walk_t(log).through({at, at + fault.size()}).fields(), parsed(log)) << log;
        }
}

TEST(log_walker_test, random_logs_give_the_result_of_one_parse_however_they_are_split)
{
    const random_seeds_t seeds(1500);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log = random_log(random);
        const std::string expected = parsed(log);
        ASSERT_EQ(walk_t(log).through(random_ends(random, log)).fields(), expected)
            << "seed " << seed << "\n"
            << log;
    }
}

TEST(log_walker_test, random_logs_are_rewritten_from_lines_and_messages_as_from_one_parse)
{
    const random_seeds_t seeds(1500);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        std::vector<message_t> messages(random.below(6));
        for (message_t& message : messages)
            message = random_message(random);
        for (const std::string& log : {random_log(random), written_log(messages)}) {
            const std::string expected = written_log(log_oracle_t().read(log).delivered);
            ASSERT_EQ(walk_t(log).with_lines().through({}).written(), expected)
                << "seed " << seed << "\n"
                << log;
            ASSERT_EQ(walk_t(log).with_lines().through(random_ends(random, log)).written(),
                      expected)
                << "seed " << seed << "\n"
                << log;
        }
    }
}

TEST(log_walker_test, beginnings_of_all_kinds_are_read)
{
    const std::string rest = "<msg><type>a</type></msg><e>&lt;</e><msg><type>b</type></msg>";
    for (const char* const beginning :
         {"<log>",
          " <log>",
          "<log a='b'>",
          "<log\n>",
          "<?xml version='1.0'?><log>",
          "<?xml version='1.0' encoding='utf-8'?>\n<log>",
          "<!-- c -->\n<?p?><log xmlns='u'>",
          "<?xml version='1.0' encoding='ISO-8859-1'?><log>",
          "<!DOCTYPE log><log>",
          "<!DOCTYPE log [<!ENTITY e 'x'><!ATTLIST msg a CDATA 'd'>]><log>",
          "<other>",
          "<msg>",
          "\xEF\xBB\xBF<log>",
          "x<log>",
          "<log/>",
          "<log a=b>",
          "</log>",
          "",
          "<logs>",
          "<?xml version='1.0' encoding='x-unknown'?><log>",
          "\n<?xml version='1.0'?><log>",
          "<?xml version='1.1'?><log>",
          "<?xml encoding='UTF-8'?><log>",
          "<log a='1' a='2'>",
          "<?xml version='1.0' encoding='UTF-16'?><log>",
          "<lo",
          "<!-- -- --><log>",
          "<?xml version='1.0' encoding='UTF-8'standalone='no'?><log>",
          "<?xml version='1.0' encoding='ISO-8859-1'standalone='no'?><log>",
          "<!DOCTYPE log>[<!--x--><!ENTITY u 'y'>]><log>",
          "<!DOCTYPE log>[<!ENTITY u 'y'>]><log>"}) {
        expect_as_parsed(beginning + std::string(600, ' ') + rest + "</log>");
        expect_as_parsed(beginning + rest + "</log>");
        expect_as_parsed(beginning + rest + "</other>");
        expect_as_parsed(beginning + rest);
    }
}

TEST(log_walker_test, nothing_after_the_root_counts)
{
    for (const char* const after :
         {"", "<msg><type>x</type></msg>", "<log><msg><type>x</type></msg></log>", "<", "\x01",
          "<!-- c --><msg><type>x</type></msg>", "</log><msg><type>x</type></msg>", "&x;"})
        expect_as_parsed("<log><msg><type>a</type></msg><e>\xC3\xA9</e></log>" +
                         std::string(after));
}

TEST(log_walker_test, the_end_of_the_root_ends_the_walk_before_any_further_text)
{
    for (const char* const between : {"", "<e>&lt;</e>", "<msg><type>a</type></msg>"}) {
        log_sax_reader reader;
        reader.set_callback([](const message_ptr_t&) {});
        log_walker_t walker(reader);
        const std::string log = std::string("<log>") + between + "</log>";
        EXPECT_EQ(walker.walk(log.substr(0, log.size() - 1), false), log.size() - 6);
        EXPECT_FALSE(walker.is_finished());
        walker.walk("</log><e" + numbered(" a", 25001, "=''") + "/>", false);
        EXPECT_TRUE(walker.is_finished());
        EXPECT_EQ(walker.refusal(), refusal_t::none);
    }
}

TEST(log_walker_test, an_end_tag_of_another_element_ends_the_log)
{
    for (const char* const tag : {"</lag>", "</msg>", "</LOG>", "</log x>", "</ log>", "</log\n>"})
        expect_as_parsed("<log><msg><type>a</type></msg><msg><type>&lt;</type></msg>" +
                         std::string(tag) + "<msg><type>b</type></msg></log>");
}

TEST(log_walker_test, the_state_between_elements_is_that_of_one_parse)
{
    const std::string own = "<msg><arg name='n'>x</arg><type>a</type></msg>";
    for (const char* const between :
         {"<arg>x</arg>", "<arg/>", "<arg name='m'/>", "<arg name='m'/>text<arg>y</arg>",
          "<type>t</type>", "<severity>ERROR</severity>", "<e>x</e>text", "text<e/>text",
          "<log>text</log>", "<e><log/>text</e>", "<e>x<log/>y</e>z", "<msg/>text", "<e/>&lt;",
          "<![CDATA[x]]>", "<e/><![CDATA[x]]>", "<!-- c --><arg>x</arg>", "<e>a</e><e>b</e>"}) {
        expect_as_parsed("<log>" + own + between + own + between + "</log>");
        expect_as_parsed("<log>" + std::string(between) + own + "</log>");
        expect_as_parsed("<log><msg><type>&#65;</type></msg>" + std::string(between) + own +
                         "<msg>" + between + "</msg></log>");
    }
}

TEST(log_walker_test, many_elements_for_libxml2_are_read_in_their_order)
{
    const std::string message = "<msg><arg name='n'>\xC3\xA9</arg><type>a</type></msg>\n";
    const std::string own = "<msg><type>own</type></msg>";
    for (const std::size_t count : {1300U, 5000U})
        for (const char* const fault : {"", "<a b='1' b='2'/>", "\xFF", "</lag>", "&"}) {
            const std::string log = "<log>" + repeated(message, count) + own +
                                    repeated(message, count) + fault + repeated(message, count) +
                                    "</log>";
            ASSERT_TRUE(walk_t(log).through({100000, 150000}).fields() == parsed(log))
                << count << fault;
        }
}

TEST(log_walker_test, a_fault_is_found_in_a_long_log)
{
    const std::string message = "<msg><type>a</type></msg>";
    for (const std::string& fault :
         {std::string("&u;"), std::string("]]>"), std::string("\x01"), std::string("<!-- --"),
          std::string("<a b=c>"), std::string("<!DOCTYPE log>")})
        for (const std::size_t before : {0U, 600U, 70000U}) {
            const std::string log = "<log>" + message + "<e>" + std::string(before, 'x') + "</e>" +
                                    fault + std::string(2000, 'y') + message + "</log>";
            EXPECT_EQ(walk_t(log).through({before / 2}).fields(), parsed(log)) << fault << before;
        }
}

// Later events change a message that was delivered, which a handler may have kept.
TEST(log_walker_test, the_text_before_a_fault_counts_up_to_the_next_tag)
{
    for (const char* const fault : {"&u;", "\x01", "&#0;", "]]>"})
        for (const std::size_t size : {0U, 500U, 510U, 520U, 70000U})
            for (const char* const beginning : {"<log>", "<!DOCTYPE log><log>"}) {
                const std::string log = beginning + std::string("<msg><type>t</type></msg><x>a") +
                                        fault + std::string(size, 'y') + "</x></log>";
                const std::string expected = parsed(log);
                for (const std::size_t end : {0U, 40U, 300U, 560U, 600U})
                    EXPECT_EQ(walk_t(log).through({std::min(end, log.size())}).fields(), expected)
                        << fault << size;
            }
}

TEST(log_walker_test, a_fault_ends_the_walk_before_the_text_does)
{
    for (const char* const fault : {"<a b=c>", "<!-- -- -->", "<!DOCTYPE a>", "&u;<e/>", "]]><e/>",
                                    "\x01<e/>", "<a b='1' b='2'/>", "<e>\xFF</e>", "<1/>"}) {
        log_sax_reader reader;
        reader.set_callback([](const message_ptr_t&) {});
        log_walker_t walker(reader);
        walker.walk("<log><msg><type>a</type></msg>" + std::string(fault) + std::string(600, 'x') +
                        "<e/>",
                    false);
        EXPECT_TRUE(walker.is_finished()) << fault;
    }
}

TEST(log_walker_test, complete_messages_are_delivered_before_the_text_ends)
{
    for (const char* const before :
         {"", "<e/>", "text", "text<e/>text", "<e>text<f/></e> <!-- c -->"}) {
        std::wstring types;
        log_sax_reader reader;
        reader.set_callback([&](const message_ptr_t& message) { types += message->get_type(); });
        log_walker_t walker(reader);
        const std::string complete =
            "<log>" + std::string(before) + "<msg><type>a<!-- c --></type></msg>";
        EXPECT_EQ(walker.walk(complete + "<msg><type>b", false), complete.size()) << before;
        EXPECT_EQ(types, L"a") << before;
    }
}

TEST(log_walker_test, a_reference_of_many_digits_does_not_end_the_walk)
{
    expect_as_parsed("<log><msg><type>a</type></msg>&#" + std::string(100, '0') +
                     "65;<msg><type>b</type></msg></log>");
}

TEST(log_walker_test, a_log_in_another_encoding_is_read_whole)
{
    for (const char* const encoding : {"ISO-8859-1", "windows-1252", "US-ASCII", "latin1"})
        for (const char* const text : {"a", "\xE9", "\x80", "\xFF"})
            expect_as_parsed(std::string("<?xml version='1.0' encoding='") + encoding +
                             "'?><log><msg><type>" + text + "</type></msg></log>");
    // The second byte of a character can be one of markup.
    expect_as_parsed("<?xml version='1.0' encoding='Shift_JIS'?><log><msg><type>\x83<\x83&</type>"
                     "</msg><msg><type>b</type></msg></log>");
}

TEST(log_walker_test, a_fault_is_found_after_characters_whose_bytes_look_like_markup)
{
    const std::string character = "\x1B$B<!\x1B(B";
    for (const std::size_t size : {0U, 480U, 520U, 5000U}) {
        const std::string log = "<?xml version='1.0' encoding='ISO-2022-JP'?><log><msg><type>" +
                                character + "</type></msg><!--" + std::string(size, 'c') +
                                "--><msg><type>second</type></msg>< x></log>";
        EXPECT_EQ(walk_t(log).through({}).fields(), parsed(log)) << size;
    }
}

TEST(log_walker_test, an_unknown_encoding_is_refused)
{
    walk_t walk("<?xml version='1.0' encoding='x-unknown'?><log><msg><type>a</type></msg></log>");
    EXPECT_EQ(walk.through({}).fields(), "afterwards\n");
    EXPECT_EQ(walk.refusal(), refusal_t::encoding);
}

// Parsing the root again for each element would take a minute.
TEST(log_walker_test, many_attributes_of_the_root_do_not_slow_down_the_elements)
{
    const usage_t usage;
    walk_t("<log" + numbered(" a", 4000, "=''") + ">" +
           repeated("<a/><msg><type>t</type></msg>", 2000) + "</log>")
        .through({});
    EXPECT_LT(usage.seconds(), 10);
}

TEST(log_walker_test, an_element_beyond_a_limit_ends_the_walk)
{
    std::string attributes;
    for (int number = 0; number != 25001; ++number)
        attributes += " a" + std::to_string(number) + "='&lt;'";
    const std::string first = "<log><msg><type>first</type></msg>";
    const std::string last = "<msg><type>last</type></msg></log>";
    for (const std::string& foreign :
         {"<e" + attributes + "/>", "<e" + attributes + ">", "<e" + attributes + "/>&u;",
          "<e" + attributes + "><f>", "<f><e" + attributes + ">&u;", "<e" + attributes + "/><"}) {
        walk_t walk(first + foreign + last);
        EXPECT_EQ(walk.through({}).fields(), parsed(first));
        EXPECT_EQ(walk.refusal(), refusal_t::attributes) << walk.size();
    }
    walk_t beginning("<log" + attributes + ">" + last);
    EXPECT_EQ(beginning.through({}).fields(), "afterwards\n");
    EXPECT_EQ(beginning.refusal(), refusal_t::attributes);
    walk_t whole("<!DOCTYPE log>" + first + "<e" + attributes + "/>" + last);
    EXPECT_EQ(whole.through({}).fields(), "afterwards\n");
    EXPECT_EQ(whole.refusal(), refusal_t::attributes);
}

TEST(log_walker_test, an_element_of_the_written_form_has_no_limit_or_is_dropped_alone)
{
    const std::string first = "<log><msg><type>first</type></msg>";
    const std::string last = "<msg><type>&amp;last</type></msg></log>";
    const auto message = [](std::size_t attributes, const std::string& type) {
        std::string text = "<msg";
        for (std::size_t number = 0; number != attributes; ++number)
            text += " a" + std::to_string(number) + "='&lt;'";
        return text + "><type>" + type + "</type></msg>";
    };
    walk_t read(first + message(25001, "own") + message(25000, "\rother") + last);
    const std::string fields = read.through({}).fields();
    EXPECT_NE(fields.find("own"), std::string::npos);
    EXPECT_NE(fields.find("other"), std::string::npos);
    EXPECT_NE(fields.find("last"), std::string::npos);
    EXPECT_EQ(read.refusal(), refusal_t::none);
    const std::string small = message(0, "&amp;own");
    walk_t skipped(first + small + message(25001, "\rother") + small + last);
    EXPECT_EQ(skipped.through({}).fields(), parsed(first + small + small + last));
    EXPECT_EQ(skipped.refusal(), refusal_t::attributes);
    const std::string text(10100000, 'x');
    walk_t large(first + message(1, text + "\rother") + "<msg/>" + last);
    EXPECT_EQ(large.through({}).fields(), parsed(first + message(1, "\rother") + "<msg/>" + last));
    EXPECT_EQ(large.refusal(), refusal_t::none);
    const std::string foreign = "<msg><!-- c --><type>foreign</type></msg>";
    walk_t between(first + foreign + message(25001, "\rother") + foreign + last);
    EXPECT_EQ(between.through({}).fields(), parsed(first + foreign + foreign + last));
}

TEST(log_walker_test, a_foreign_element_keeps_the_limits_of_libxml2)
{
    const std::string text(10100000, 'x');
    for (const std::string& element :
         {"<msg a='" + text + "'><!-- c --><type>b</type></msg>", "<e><!--" + text + "--></e>"}) {
        const std::string log =
            "<log><msg><type>a</type></msg>" + element + "<msg><type>c</type></msg></log>";
        EXPECT_EQ(walk_t(log).through({}).fields(), parsed(log));
    }
}

TEST(log_walker_test, a_written_log_of_any_messages_is_read)
{
    const random_seeds_t seeds(300);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log =
            written_log({random_message(random), random_message(random), random_message(random)});
        ASSERT_EQ(walk_t(log).through({random.below(log.size())}).fields(), parsed(log)) << seed;
    }
}

TEST(log_walker_test, an_exception_of_the_callback_propagates)
{
    for (const char* const text : {"a", "&amp;"}) {
        log_sax_reader reader;
        reader.set_callback([](const message_ptr_t&) { throw 1; });
        log_walker_t walker(reader);
        EXPECT_THROW(
            walker.walk("<log><msg><type>" + std::string(text) + "</type></msg></log>", true), int);
    }
}
