#include "message_fields.h"
#include "random_messages.h"
#include "storage_support.h"
#include "usage.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

typedef log_reader_t::result_t result_t;
typedef log_reader_t::damage_t damage_t;
typedef std::vector<std::size_t> sizes_t;

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";

// A source that can be given more text, and hands out at most some bytes at a time.
class growing_text_t
{
public:
    explicit growing_text_t(std::string text = "", std::size_t most = 1000000)
        : m_text(std::move(text)), m_most(most)
    {}

    void append(const std::string& text) { m_text += text; }

    log_reader_t::source_t source(std::size_t offset = 0)
    {
        m_offset = offset;
        return [this](char* bytes, std::size_t size) {
            const std::size_t count = std::min({size, m_most, m_text.size() - m_offset});
            m_text.copy(bytes, count, m_offset);
            m_offset += count;
            return count;
        };
    }

private:
    std::string m_text;
    std::size_t m_most;
    std::size_t m_offset = 0;
};

std::string name_of(damage_t damage)
{
    const char* const names[] = {"none",      "markup",   "end tag", "character",
                                 "reference", "encoding", "limit"};
    return names[static_cast<int>(damage)];
}

std::string where(const log_reader_t& reader)
{
    const auto begin = reader.get_begin();
    return " at " + std::to_string(begin.offset) + " in line " + std::to_string(begin.line);
}

std::string name_of(const log_reader_t& reader, result_t result)
{
    switch (result) {
    case result_t::message:
        return std::string(reader.get_type());
    case result_t::damage:
        return name_of(reader.get_damage()) + where(reader);
    case result_t::unfinished:
        return "unfinished" + where(reader);
    case result_t::end:
        return "end";
    default:
        return "unreadable";
    }
}

bool is_last(result_t result)
{
    return result != result_t::message && result != result_t::damage;
}

/// Returns all results up to the last one, separated by commas.
std::string read_on(log_reader_t& reader)
{
    std::string results;
    result_t result = result_t::damage;
    while (!is_last(result)) {
        result = reader.next();
        results += (results.empty() ? "" : ", ") + name_of(reader, result);
    }
    return results;
}

std::string read_all(const std::string& text, std::size_t most = 1000000)
{
    growing_text_t log(text, most);
    log_reader_t reader(log.source());
    return read_on(reader);
}

std::string read_types(log_reader_t& reader)
{
    std::string types;
    for (result_t result = reader.next(); !is_last(result); result = reader.next())
        if (result == result_t::message)
            types += std::string(reader.get_type()) + ";";
    return types;
}

std::string types_of(const std::string& text)
{
    growing_text_t log(text);
    log_reader_t reader(log.source());
    return read_types(reader);
}

std::string repeat(const std::string& text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i != count; ++i)
        result += text;
    return result;
}

class log_reader_test : public storage_test_t
{
protected:
    basekit2::path_t path() const { return basekit2::path_t(m_folder.wide_name("log.xml")); }

    /// Records the messages in one recording, whatever their flags.
    void record_messages(const std::vector<message_t>& messages) const
    {
        const storage_ptr_t storage = get();
        ASSERT_TRUE(storage->start_recording());
        for (message_t message : messages) {
            message.set_flags(1);
            storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                                boost::make_shared<message_t>(message));
        }
        ASSERT_TRUE(storage->stop_recording());
    }
};

} // namespace

TEST_F(log_reader_test, returns_each_message_and_then_the_end)
{
    EXPECT_EQ("a, b, end", read_all(log_of(message_of("a") + message_of("b"))));
}

TEST_F(log_reader_test, a_log_that_is_read_byte_by_byte_has_the_same_messages)
{
    EXPECT_EQ("a, b, end", read_all(log_of(message_of("a") + message_of("b")), 1));
    EXPECT_EQ("a, markup at 62 in line 4, b, end",
              read_all("<log><msg><type>a</type></msg>\n <msg>\n  <type>broken</type>\n <\n"
                       "<msg><type>b</type></msg></log>",
                       1));
    EXPECT_EQ("markup at 6 in line 1, a, end",
              read_all("<log/><msg><type>a</type></msg></log>", 1));
}

TEST_F(log_reader_test, reads_a_file)
{
    record_all(L"abc");
    log_reader_t reader(path());
    EXPECT_EQ("a, b, c, end", read_on(reader));
}

TEST_F(log_reader_test, a_path_without_a_regular_file_is_unreadable)
{
    log_reader_t missing(path());
    EXPECT_EQ(result_t::unreadable, missing.next());
    EXPECT_EQ(result_t::unreadable, missing.next());
    log_reader_t folder(basekit2::path_t(m_folder.wide_name("")));
    EXPECT_EQ(result_t::unreadable, folder.next());
}

TEST_F(log_reader_test, an_empty_file_is_unfinished)
{
    EXPECT_EQ("unfinished at 0 in line 1", read_all(""));
}

TEST_F(log_reader_test, a_log_without_messages_has_its_end)
{
    EXPECT_EQ("end", read_all(empty_log));
    EXPECT_EQ("end", read_all("<log></log>"));
}

TEST_F(log_reader_test, each_text_is_as_it_was_recorded)
{
    auto content = make_content({{L"tool", L"a & b"}},
                                {{L"", L"no name"}, {L"empty", L""}, {L"path", L"/Tom & Jerry"}},
                                {{L"home", L"/home/\u017Dofie\r\n"}});
    content.args[L"markup"] = L"<b>\"quoted\"</b>";
    const message_ptr_t message = make_message(content);
    message->set_type(L"\u00C4 & b");
    message->set_severity(message_t::critical);
    record_messages({*message});

    log_reader_t reader(path());
    ASSERT_EQ(result_t::message, reader.next());
    EXPECT_EQ(fields_of(string_message_serializer_t::xml_string_to_message(
                  string_message_serializer_t::message_to_xml_string(message))),
              fields_of(reader.get_message()));
    EXPECT_EQ("\u00C4 & b", reader.get_type());
    EXPECT_EQ("a & b", reader.get_source());
    EXPECT_EQ(message_t::critical, reader.get_severity());
}

TEST_F(log_reader_test, a_message_without_type_and_severity_is_returned)
{
    const message_ptr_t message = make_message(make_content({}, {{L"a", L"b"}}));
    record_messages({*message});
    log_reader_t reader(path());
    ASSERT_EQ(result_t::message, reader.next());
    EXPECT_EQ(fields_of(*message), fields_of(reader.get_message()));
}

TEST_F(log_reader_test, random_messages_are_as_the_channel_has_them)
{
    const random_seeds_t seeds(2000);
    std::vector<message_t> messages;
    for (std::uint64_t seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        messages.push_back(random_message(random));
    }
    record_messages(messages);

    log_reader_t reader(path());
    for (const message_t& message : messages) {
        const auto expected = string_message_serializer_t::xml_string_to_message(
            string_message_serializer_t::message_to_xml_string(
                boost::make_shared<message_t>(message)));
        if (!expected)
            continue;
        ASSERT_EQ(result_t::message, reader.next()) << fields_of(message);
        ASSERT_EQ(fields_of(expected), fields_of(reader.get_message()));
    }
    EXPECT_EQ(result_t::end, reader.next());
}

TEST_F(log_reader_test, type_source_and_severity_are_those_of_the_message)
{
    const std::string messages =
        " <msg tool=\"audit\">\n  <arg name=\"n\">1</arg>\n  <type>plain</type>\n"
        "  <severity>WARNING</severity>\n </msg>\n"
        " <msg source=\"other\" tool=\"audit\">\n  <type>two</type>\n </msg>\n"
        " <msg tool=\"a\" x=\"y\">\n  <type>three</type>\n </msg>\n"
        " <msg tool=\"a\" x=\"y\"><type>short</type><severity>0</severity></msg>\n";
    growing_text_t log(log_of(messages));
    log_reader_t reader(log.source());
    for (int i = 0; i != 4; ++i) {
        ASSERT_EQ(result_t::message, reader.next());
        const message_ptr_t message = reader.get_message();
        using ROVA_2_18::strings::utf16_to_utf8;
        EXPECT_EQ(utf16_to_utf8(message->get_type()), reader.get_type());
        EXPECT_EQ(utf16_to_utf8(message->get_source()), reader.get_source());
        EXPECT_EQ(message->get_severity(), reader.get_severity());
    }
}

TEST_F(log_reader_test, the_text_of_a_message_is_its_element)
{
    const std::string log = log_of(message_of("a") + "<msg><type>b</type></msg>");
    growing_text_t text(log);
    log_reader_t reader(text.source());
    for (const std::string type : {"a", "b"}) {
        ASSERT_EQ(result_t::message, reader.next());
        const std::string element(reader.get_text());
        EXPECT_EQ("<msg>", element.substr(0, 5));
        EXPECT_EQ("</msg>", element.substr(element.size() - 6));
        const auto begin = static_cast<std::size_t>(reader.get_begin().offset);
        const auto end = static_cast<std::size_t>(reader.get_end().offset);
        EXPECT_EQ(log.substr(begin, end - begin), element);
        EXPECT_EQ(type, reader.get_type());
    }
    ASSERT_EQ(result_t::end, reader.next());
    EXPECT_EQ("", reader.get_text());
    EXPECT_FALSE(reader.get_message());
}

TEST_F(log_reader_test, positions_count_bytes_and_lines)
{
    growing_text_t log(head + message_of("a") + "\n\n" + message_of("\u00C4") + message_of("b"));
    log_reader_t reader(log.source());
    std::string positions;
    while (reader.next() == result_t::message)
        positions += std::to_string(reader.get_begin().offset) + "/" +
                     std::to_string(reader.get_begin().line) + "-" +
                     std::to_string(reader.get_end().offset) + "/" +
                     std::to_string(reader.get_end().line) + " ";
    EXPECT_EQ("46/3-104/6 108/9-167/12 169/13-227/16 ", positions);
}

TEST_F(log_reader_test, a_reader_continues_between_two_messages)
{
    const std::string log = log_of(message_of("a") + message_of("\u00C4") + message_of("b"));
    growing_text_t text(log);
    log_reader_t first(text.source());
    first.next();
    first.next();
    const auto position = first.get_end();
    log_reader_t second(text.source(static_cast<std::size_t>(position.offset)), position);
    EXPECT_EQ("b", name_of(second, second.next()));
    EXPECT_EQ(11, second.get_begin().line);
    EXPECT_EQ(log.find("<msg>\n  <type>b"), static_cast<std::size_t>(second.get_begin().offset));
    EXPECT_EQ("end", read_on(second));
}

TEST_F(log_reader_test, text_that_is_appended_is_read_too)
{
    growing_text_t log(head);
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 45 in line 3", read_on(reader));
    log.append(message_of("a") + " <msg>\n  <ty");
    EXPECT_EQ("a, unfinished at 106 in line 7", read_on(reader));
    EXPECT_EQ("<msg>\n  <ty", reader.get_text());
    log.append("pe>b</type>\n </msg>\n</lo");
    EXPECT_EQ("b, unfinished at 137 in line 10", read_on(reader));
    log.append("g>\n");
    EXPECT_EQ("end", read_on(reader));
    EXPECT_EQ("end", read_on(reader));
}

TEST_F(log_reader_test, a_message_is_returned_before_the_text_after_it_is_read)
{
    const std::vector<std::string> parts = {head + " <msg>\n  <type>a</type>\n", " </msg>\n", " ",
                                            "</log>\n"};
    std::size_t next = 0;
    log_reader_t reader([&parts, &next](char* bytes, std::size_t size) {
        return next == parts.size() ? 0 : parts[next++].copy(bytes, size);
    });
    EXPECT_EQ("a", name_of(reader, reader.next()));
    EXPECT_EQ(2U, next);
    EXPECT_EQ("end", read_on(reader));
}

TEST_F(log_reader_test, a_log_is_read_while_it_is_recorded)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    log_reader_t reader(path());
    std::size_t recorded = 0;
    std::size_t read = 0;
    while (read < 100) {
        record(storage, L"a");
        ++recorded;
        while (reader.next() == result_t::message)
            ++read;
    }
    EXPECT_LE(read, recorded);
    storage->stop_recording();
    while (reader.next() == result_t::message)
        ++read;
    EXPECT_EQ(recorded, read);
}

TEST_F(log_reader_test, a_truncated_message_is_unfinished)
{
    EXPECT_EQ("a, unfinished at 105 in line 7",
              read_all(head + message_of("a") + "<msg>\n  <type>b</typ"));
}

TEST_F(log_reader_test, messages_in_a_message_without_an_end_are_read_on_request)
{
    growing_text_t log(head + "<msg><arg name='a'>t\n" + message_of("b") + message_of("c") +
                       "<msg><arg na");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 45 in line 3", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("b, c, unfinished at 198 in line 12", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("unfinished at 198 in line 12", read_on(reader));
    log.append(message_of("d"));
    EXPECT_EQ("d, unfinished at 258 in line 16", read_on(reader));
}

TEST_F(log_reader_test, messages_in_unfinished_markup_are_read_on_request)
{
    growing_text_t log("<log><? </log><? <msg><type>b</type></msg><msg><![CDATA[ <msg>"
                       "<type>c</type></msg>");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 5 in line 1", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("b, c, unfinished at 82 in line 1", read_on(reader));
}

TEST_F(log_reader_test, damage_is_where_the_first_fault_is)
{
    const struct
    {
        std::string message;
        std::string damage;
    } rows[] = {
        {"<msg><type>a</typo></msg>", "end tag at 57 in line 3"},
        {"<msg><type>a</type><arg name=x/></msg>", "markup at 69 in line 3"},
        {"<msg><type>a & b</type></msg>", "reference at 58 in line 3"},
        {"<msg><type>a\n&unknown;</type></msg>", "reference at 58 in line 4"},
        {"<msg tool='&unknown;'><type>a</type></msg>", "reference at 56 in line 3"},
        {"<msg tool='<'><type>a</type></msg>", "markup at 56 in line 3"},
        {"<msg><type>a\x01</type></msg>", "character at 57 in line 3"},
        {"<msg><type>a\xFF</type></msg>", "character at 57 in line 3"},
        {std::string("<msg><type>a\0</type></msg>", 26), "character at 57 in line 3"},
        {"<msg><type>\xEF\xBF\xBF</type></msg>", "character at 56 in line 3"},
        {"</msg>", "end tag at 45 in line 3"},
        {"text & more", "reference at 50 in line 3"},
        {"<!DOCTYPE log><msg><type>a</type></msg>", "markup at 45 in line 3"},
        {"<!-- a -- b -->", "markup at 54 in line 3"},
        {"<?xml version='1.0'?>", "markup at 45 in line 3"},
        {"<msg 1='x'><type>a</type></msg>", "markup at 45 in line 3"},
        {"<msg><!-- \x01 --><type>a</type></msg>", "character at 55 in line 3"},
        {"<msg><!DOCTYPE log [<type>a</type></msg>", "markup at 50 in line 3"},
        {"<msg><type>a ]]> b</type></msg>", "markup at 58 in line 3"},
        {"<msg><type>a</type><b x='1' x='2'/></msg>", "markup at 45 in line 3"},
        {"<msg><type>\xED\xA0\x80</type></msg>", "character at 56 in line 3"},
        {"<msg><type>\xC0\x80</type></msg>", "character at 56 in line 3"},
        {"<!-- \x01 -->", "character at 50 in line 3"},
        {"<![CDATA[\x01]]>", "character at 54 in line 3"},
        {"<?x \xFF?>", "character at 49 in line 3"},
        {"a ]]> b", "markup at 47 in line 3"},
        {"<other a=x/>", "markup at 52 in line 3"},
        {"<other a='&unknown;'/>", "reference at 55 in line 3"},
        {"<other a='<'/>", "markup at 55 in line 3"},
        {"<other a='\xFF'></other>", "character at 55 in line 3"},
        {"<msg><type>\xE0\xA4\x85\xFF</type></msg>", "character at 59 in line 3"},
        {"<msg><type>\xF0\x9F\x98\x80\xFF</type></msg>", "character at 60 in line 3"},
        {"<msg><!-- & --><type>a & b</type></msg>", "reference at 68 in line 3"},
        {"a &#99999999999999999999; b", "markup at 45 in line 3"},
    };
    for (const auto& row : rows) {
        const std::string results = read_all(head + row.message + message_of("z") + "</log>\n");
        EXPECT_EQ(row.damage, results.substr(0, results.find(", "))) << row.message;
        EXPECT_EQ(", z, end", results.substr(results.rfind(", z, end"))) << row.message;
    }
}

TEST_F(log_reader_test, nothing_is_left_of_the_item_before)
{
    growing_text_t log(head + "<msg tool='t'><type>a</type><severity>ERROR</severity></msg>a & b" +
                       message_of("b"));
    log_reader_t reader(log.source());
    ASSERT_EQ(result_t::message, reader.next());
    ASSERT_EQ(result_t::damage, reader.next());
    EXPECT_EQ("", reader.get_type());
    EXPECT_EQ("", reader.get_source());
    EXPECT_EQ(message_t::none, reader.get_severity());
    ASSERT_EQ(result_t::message, reader.next());
    EXPECT_EQ(damage_t::none, reader.get_damage());
}

TEST_F(log_reader_test, damage_is_reported_after_text_that_was_skipped)
{
    growing_text_t log(head);
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 45 in line 3", read_on(reader));
    reader.skip_unfinished();
    log.append("a & b<!-- -->");
    EXPECT_EQ("reference at 47 in line 3, unfinished at 58 in line 3", read_on(reader));
    log.append(" <msg>\n  <ty");
    EXPECT_EQ("unfinished at 59 in line 3", read_on(reader));
    log.append("pe>c</type>\n </msg>\n<msg><ty");
    EXPECT_EQ("c, unfinished at 90 in line 6", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("unfinished at 98 in line 6", read_on(reader));
    log.append("\n <msg>\n  <ty");
    EXPECT_EQ("unfinished at 100 in line 7", read_on(reader));
    log.append("pe>d</type>\n </msg>\n");
    EXPECT_EQ("d, unfinished at 131 in line 10", read_on(reader));
}

TEST_F(log_reader_test, a_skipped_message_that_is_completed_is_read)
{
    growing_text_t log(head + " <msg>\n  <ty");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 46 in line 3", read_on(reader));
    reader.skip_unfinished();
    log.append("pe>a</type>\n </msg>\n&" + message_of("b"));
    EXPECT_EQ("a, reference at 77 in line 6, b, unfinished at 138 in line 10", read_on(reader));
}

TEST_F(log_reader_test, what_is_left_of_a_tag_is_skipped_too)
{
    growing_text_t log(head + "<msg>x<m");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 45 in line 3", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("unfinished at 53 in line 3", read_on(reader));
}

TEST_F(log_reader_test, damage_outside_the_root_is_where_it_begins)
{
    const struct
    {
        std::string log;
        std::string results;
    } rows[] = {
        {"\n\xEF\xBB\xBF<log/>", "markup at 1 in line 2, unfinished at 10 in line 2"},
        {"  x<log/>", "markup at 2 in line 1, unfinished at 9 in line 1"},
        {"x<log></log>", "markup at 0 in line 1, end"},
        {"<log/><![CDATA[x]]>", "markup at 6 in line 1, unfinished at 19 in line 1"},
        {"<log/> <!-- z", "unfinished at 7 in line 1"},
        {"<log>&</log>x", "reference at 5 in line 1, markup at 12 in line 1, "
                          "unfinished at 13 in line 1"},
        {"<logs>&</logs>", "reference at 6 in line 1, end"},
        {"<log>&<msgs>" + message_of("a") + "</log>", "reference at 5 in line 1, a, end"},
        {"<!DOCTYPE log>", "unfinished at 0 in line 1"},
        {"<log/>" + message_of("a"), "markup at 7 in line 1, a, unfinished at 66 in line 5"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.results, read_all(row.log)) << row.log;
}

TEST_F(log_reader_test, a_declaration_is_stronger_than_a_byte_order_mark)
{
    EXPECT_EQ("\u00C3\u0084, end",
              read_all("\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?>"
                       "<log><msg><type>\u00C4</type></msg></log>"));
}

TEST_F(log_reader_test, markup_without_an_end_is_damage_after_16_megabytes)
{
    const std::string text(40000000, 'x');
    EXPECT_EQ("markup at 45 in line 3, a, end",
              read_all(head + "<!-- " + text + message_of("a") + "</log>"));
    EXPECT_EQ("limit at 45 in line 3, a, a, a, a, a, a, a, a, a, b, end",
              read_all(head + "<msg><arg name='a'>" + repeat(message_of("a"), 9) + text +
                       message_of("b") + "</log>"));
}

TEST_F(log_reader_test, messages_in_a_message_are_limited_in_depth_only)
{
    std::string nested;
    std::string listed;
    for (int i = 0; i != 9; ++i) {
        nested += "<msg>";
        listed += "<msg>b</msg>";
    }
    EXPECT_EQ("unfinished at 45 in line 3", read_all(head + nested.substr(5)));
    EXPECT_EQ("limit at 85 in line 3, unfinished at 50 in line 3", read_all(head + nested));
    EXPECT_EQ("a, end", read_all(log_of("<msg>" + listed + "<type>a</type></msg>")));
}

TEST_F(log_reader_test, elements_are_limited_in_depth)
{
    const auto begin_tags = [](std::size_t count) {
        return repeat("<b>", count);
    };
    const auto end_tags = [](std::size_t count) {
        return repeat("</b>", count);
    };
    const std::string message = "<msg><type>a</type></msg>";
    EXPECT_EQ("a, end", read_all("<log>" + begin_tags(253) + message + end_tags(253) + "</log>"));
    EXPECT_EQ("limit at 772 in line 1, end",
              read_all("<log>" + begin_tags(254) + message + end_tags(254) + "</log>"));
    EXPECT_EQ("limit at 770 in line 1, a, end",
              read_all("<log>" + begin_tags(256) + message + "</log>"));
    EXPECT_EQ("a, end", read_all("<log><msg><type>a</type>" + begin_tags(254) + end_tags(254) +
                                 "</msg></log>"));
    EXPECT_EQ("limit at 786 in line 1, a, end",
              read_all("<log><msg><type>a</type>" + begin_tags(254) + "<c/>" + end_tags(254) +
                       "</msg>" + message + "</log>"));
}

TEST_F(log_reader_test, markup_that_never_ends_needs_little_memory)
{
    const std::string filling(100000, 'x');
    for (const std::string beginning :
         {"<log a='", "<a", "<!--", "<?x ", "<msg><!--", "<msg><![CDATA[", "<msg><type>a</type>"}) {
        std::string next = "<log>" + beginning + message_of("a");
        std::size_t bytes_left = 300000000;
        log_reader_t reader([&](char* bytes, std::size_t size) {
            const std::size_t count = std::min(next.copy(bytes, size), bytes_left);
            next.erase(0, count);
            next += next.empty() ? message_of("b") + filling : "";
            bytes_left -= count;
            return count;
        });
        const usage_t usage;
        EXPECT_EQ(result_t::damage, reader.next()) << beginning;
        EXPECT_EQ(result_t::message, reader.next()) << beginning;
        EXPECT_LT(usage.megabytes(), 100) << beginning;
    }
}

TEST_F(log_reader_test, a_long_message_with_few_messages_in_it_is_read_from_any_chunks)
{
    const std::string element = "<e>" + std::string(1000000, 'x') + "</e>";
    const std::string begin = "<msg>" + repeat("<msg></msg>", 8);
    const std::string end = repeat(element, 20) + "<type>a</type></msg>";
    for (const std::size_t chunk : sizes_t{1000, 1100, 100000, 1500000, 100000000}) {
        EXPECT_EQ("a, end", read_all("<log>" + begin + end + "</log>", chunk)) << chunk;
        EXPECT_EQ(
            "limit at 5 in line 1",
            read_all("<log>" + begin + "<msg/><msg></msg>" + end + "</log>", chunk).substr(0, 20))
            << chunk;
    }
}

TEST_F(log_reader_test, a_text_beyond_a_limit_of_the_parser_costs_no_other_message)
{
    const std::string text(10000001, 'x');
    EXPECT_EQ("a, markup at 70 in line 3, b, end",
              read_all(head + "<msg><type>a</type></msg><msg><type>\r" + text + "</type></msg>" +
                       message_of("b") + "</log>"));
}

TEST_F(log_reader_test, a_log_has_one_document_type_before_its_root)
{
    EXPECT_EQ("end", read_all("<!DOCTYPE log><log/>"));
    EXPECT_EQ("markup at 14 in line 1, unfinished at 34 in line 1",
              read_all("<!DOCTYPE log><!DOCTYPE log><log/>"));
    EXPECT_EQ("markup at 21 in line 1, unfinished at 41 in line 1",
              read_all("<!DOCTYPE log><!---->"
                       "<!DOCTYPE log><log/>"));
}

TEST_F(log_reader_test, messages_in_the_written_form_are_limited_in_depth_too)
{
    const auto log = [](std::size_t depth) {
        return "<log>\n" + repeat("<b>", depth - 1) + "\n" + message_of("a") +
               repeat("</b>", depth - 1) + "</log>";
    };
    for (const std::size_t chunk : sizes_t{1, 1000000}) {
        EXPECT_EQ("a, end", read_all(log(254), chunk));
        EXPECT_EQ("limit at 778 in line 4, end", read_all(log(255), chunk));
    }
}

TEST_F(log_reader_test, a_long_message_is_read_from_short_chunks)
{
    const std::string element = "<e>" + std::string(9000000, 'x') + "</e>";
    const std::string type(1000000, 'y');
    const std::string message =
        "<msg><!-- -->" + repeat(element, 4) + "<type>" + type + "</type></msg>";
    growing_text_t log(log_of(message + message_of("b")), 5000);
    log_reader_t reader(log.source());
    ASSERT_EQ(result_t::message, reader.next());
    EXPECT_EQ(type, reader.get_type());
    EXPECT_EQ("b, end", read_on(reader));
}

TEST_F(log_reader_test, white_space_at_the_end_is_not_unfinished_text)
{
    growing_text_t log(head + "  ");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 47 in line 3", read_on(reader));
    EXPECT_EQ("", reader.get_text());
}

TEST_F(log_reader_test, a_message_with_too_many_attributes_exceeds_a_limit)
{
    std::string attributes;
    for (int i = 0; i != 30000; ++i)
        attributes += " a" + std::to_string(i) + "='x'";
    EXPECT_EQ("limit at 45 in line 3, b, end",
              read_all(head + "<msg><type>a</type><x" + attributes + "/></msg>" + message_of("b") +
                       "</log>"));
}

TEST_F(log_reader_test, text_before_or_after_the_root_is_damage)
{
    EXPECT_EQ("markup at 1 in line 2, a, end",
              read_all("\nx" + log_of(message_of("a")).substr(39)));
    EXPECT_EQ("a, markup at 112 in line 8, b, end",
              read_all(log_of(message_of("a")) + log_of(message_of("b")).substr(39)));
    EXPECT_EQ("a, markup at 112 in line 8, unfinished at 116 in line 8",
              read_all(log_of(message_of("a")) + "more"));
    EXPECT_EQ("a, markup at 112 in line 8, unfinished at 118 in line 8",
              read_all(log_of(message_of("a")) + "</log>"));
}

TEST_F(log_reader_test, a_damaged_message_costs_no_other)
{
    const std::string log = log_of(message_of("a") + message_of("b") + message_of("c"));
    const std::string whole = types_of(log);
    ASSERT_EQ("a;b;c;", whole);
    for (std::size_t at = 0; at != log.size(); ++at)
        for (const char byte : {'<', '>', '&', '"', '/', 'x', ' ', '\0', '\x01', '\xFF'}) {
            std::string damaged = log;
            damaged[at] = byte;
            const std::string types = types_of(damaged);
            const auto is_damaged = [&](const std::string& type) {
                const std::size_t begin = log.find("<msg>\n  <type>" + type);
                return begin <= at && at < log.find("</msg>", begin) + 6;
            };
            for (const std::string type : {"a", "b", "c"})
                EXPECT_TRUE(is_damaged(type) || types.find(type + ";") != std::string::npos)
                    << type << " after " << int(byte) << " at " << at << ": " << types;
        }
}

TEST_F(log_reader_test, a_log_that_lacks_a_part_has_all_other_messages)
{
    const std::string log = log_of(message_of("a") + message_of("b") + message_of("c"));
    for (std::size_t begin = 0; begin != log.size(); ++begin)
        for (std::size_t end = begin + 1; end <= log.size(); end += 3) {
            const std::string left = log.substr(0, begin) + log.substr(end);
            growing_text_t text(left);
            log_reader_t reader(text.source());
            std::string types;
            for (bool is_over = false; !is_over;) {
                const result_t result = reader.next();
                if (result == result_t::message)
                    types += std::string(reader.get_type()) + ";";
                is_over = result == result_t::end ||
                          (result == result_t::unfinished && reader.get_text().empty());
                reader.skip_unfinished();
            }
            for (const std::string type : {"a", "b", "c"}) {
                const std::size_t message = log.find("<msg>\n  <type>" + type);
                const std::size_t message_end = log.find("</msg>", message) + 6;
                EXPECT_TRUE((begin < message_end && message < end) ||
                            types.find(type + ";") != std::string::npos)
                    << type << " without " << begin << " to " << end << ": " << types;
            }
        }
}

TEST_F(log_reader_test, messages_within_other_elements_are_read)
{
    EXPECT_EQ("a, b, end", read_all("<logs><log><msg><type>a</type></msg></log><log>\n" +
                                    message_of("b") + "</log></logs>"));
    EXPECT_EQ("a, end", read_all("<msg><type>a</type></msg>\n"));
}

TEST_F(log_reader_test, other_markup_between_messages_is_passed_over)
{
    EXPECT_EQ("a, b, end",
              read_all("\xEF\xBB\xBF<?xml version='1.0'?><!DOCTYPE log><!-- a --><log>"
                       "text &amp; more <![CDATA[<msg>]]><?pi?>\r\n" +
                       message_of("a") + "<empty/>" + message_of("b") + "</log><!-- z -->\n"));
}

TEST_F(log_reader_test, an_element_named_msg_in_a_message_is_not_a_message)
{
    EXPECT_EQ("a, end", read_all(log_of(" <msg>\n  <msg>b</msg>\n  <type>a</type>\n </msg>\n")));
}

TEST_F(log_reader_test, a_log_in_another_encoding_is_read)
{
    growing_text_t log(
        "<?xml version='1.0' encoding='ISO-8859-1'?><log><msg><type>\xC4</type></msg>"
        "</log>");
    log_reader_t reader(log.source());
    EXPECT_EQ("\u00C4, end", read_on(reader));
    EXPECT_EQ("encoding at 0 in line 1, a, character at 83 in line 1, end",
              read_all("<?xml version='1.0' encoding='x-unknown'?><log><msg><type>a</type></msg>"
                       "<msg><type>\xC4</type></msg></log>"));
    EXPECT_EQ("encoding at 0 in line 1, a, end",
              read_all("<?xml version='1.0' encoding='UTF-16'?><log><msg><type>a</type></msg>"
                       "</log>"));
    EXPECT_EQ("a, character at 83 in line 1, end",
              read_all("<?xml version='1.0' encoding='Shift_JIS'?><log><msg><type>a</type></msg>"
                       "<msg><type>\xFF</type></msg></log>"));
}

TEST_F(log_reader_test, an_exception_of_the_source_passes_and_loses_nothing)
{
    growing_text_t log(log_of(message_of("a") + message_of("b")), 50);
    int calls = 0;
    log_reader_t reader([&calls, source = log.source()](char* bytes, std::size_t size) {
        if (++calls % 2 == 0)
            throw std::runtime_error("source");
        return source(bytes, size);
    });
    std::string types;
    for (int i = 0; i != 20; ++i)
        try {
            if (reader.next() == result_t::message)
                types += reader.get_type();
        } catch (const std::runtime_error&) {
            types += "!";
        }
    types.erase(std::remove(types.begin(), types.end(), '!'), types.end());
    EXPECT_EQ("ab", types);
}

TEST_F(log_reader_test, a_long_text_between_messages_needs_little_memory)
{
    const std::string texts[] = {std::string(50000000, '\0'), std::string(50000000, 'x')};
    for (const std::string& text : texts) {
        const std::string log = log_of(message_of("a") + text + message_of("b"));
        std::size_t offset = 0;
        log_reader_t reader([&log, &offset](char* bytes, std::size_t size) {
            const std::size_t count = log.copy(bytes, size, offset);
            offset += count;
            return count;
        });
        const usage_t usage;
        EXPECT_EQ("a;b;", read_types(reader));
        EXPECT_LT(usage.megabytes(), 20);
    }
}

TEST_F(log_reader_test, the_parts_of_a_long_text_end_between_its_characters)
{
    for (const std::string unit : {"\u00C4", "\U0001F4C1", "&#228;", "&amp;", "]]"}) {
        std::string text;
        while (text.size() < 200000)
            text += unit;
        for (std::size_t shift = 0; shift != 40; ++shift)
            EXPECT_EQ("a, end", read_all("<log>" + std::string(shift, 'x') + text +
                                         message_of("a") + "</log>"))
                << unit << shift;
    }
}

TEST_F(log_reader_test, hostile_text_costs_linear_time)
{
    const std::size_t count = 300000;
    const std::string beginnings[] = {"<msg>",
                                      "<msg ",
                                      "<!-- ",
                                      "<msg><a>",
                                      "</msg>",
                                      "<msg a='",
                                      "<",
                                      "&",
                                      "<![CDATA[",
                                      "<x>",
                                      std::string(1, '\0'),
                                      "<msg><?x ]]]",
                                      "<msg><![CDATA[",
                                      "</log><?x ",
                                      "</log>&",
                                      "<!DOCTYPE[<msg/>",
                                      "<msg><!DOCTYPE[",
                                      "<!---->",
                                      "<?x?>",
                                      "<![CDATA[]]>",
                                      "<!--" + std::string(40, ' ') + "-->"};
    for (const std::string& beginning : beginnings) {
        const std::string text = head + "&<msg/>" + repeat(beginning, count);
        const usage_t usage;
        growing_text_t log(text);
        log_reader_t reader(log.source());
        for (result_t result = reader.next(); result != result_t::end;) {
            if (result == result_t::unfinished && reader.get_text().empty())
                break;
            reader.skip_unfinished();
            result = reader.next();
        }
        EXPECT_LT(usage.seconds(), 10) << beginning;
    }
}

TEST_F(log_reader_test, a_declaration_after_blank_lines_is_damage)
{
    EXPECT_EQ("markup at 3 in line 4, z, end",
              read_all("\n\n\n<?xml version=\"1.0\"?>\n<log>\n" + message_of("z") + "</log>\n"));
}

TEST_F(log_reader_test, markup_hides_a_message_after_damage_only)
{
    const std::string filling(5000, 'x');
    const std::string damage = "reference at 47 in line 3, a, ";
    const struct
    {
        std::string markup;
        std::string results;
    } rows[] = {
        {"<!--" + filling + "<msg/> -->", "markup at 110 in line 7, , z, end"},
        {"<!--" + filling + "</a> -->", "markup at 110 in line 7, z, end"},
        {"<!--" + filling + "<a> -->", "z, end"},
        {"<!--" + std::string(4000, 'x') + "<msg/> -->", "z, end"},
        {"<![CDATA[" + filling + "<msg/> ]]>",
         "markup at 110 in line 7, , markup at 5126 in line 7, z, end"},
        {"<?p " + filling + "<msg/> ?>", "markup at 110 in line 7, , z, end"},
        {"<msg><!--" + filling + "</msg> --><type>a</type></msg>",
         "markup at 115 in line 7, z, end"},
        {"<!--" + filling + "<msg/>" + filling, "markup at 110 in line 7, , z, end"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(damage + row.results, read_all(head + "a & b" + message_of("a") + row.markup +
                                                 message_of("z") + repeat(" ", 5000) + "</log>\n"))
            << row.markup.substr(0, 20);
    EXPECT_EQ("a, z, end",
              read_all(head + "<msg><!--" + filling + "</msg> --><type>a</type></msg>" +
                       message_of("z") + "</log>\n"));
    EXPECT_EQ("z, end",
              read_all(head + "<!--" + filling + "<msg/> -->" + message_of("z") + "</log>\n"));
}

TEST_F(log_reader_test, a_long_text_of_trail_bytes_is_damage)
{
    EXPECT_EQ("character at 45 in line 3, z, end",
              read_all(head + repeat("\x80", 200000) + message_of("z") + "</log>\n"));
}

TEST_F(log_reader_test, only_an_unfinished_text_is_skipped)
{
    growing_text_t log(head + message_of("a") + message_of("b"));
    log_reader_t reader(log.source());
    ASSERT_EQ(result_t::message, reader.next());
    const std::string text(reader.get_text());
    reader.skip_unfinished();
    EXPECT_EQ(text, reader.get_text());
    EXPECT_EQ("b, unfinished at 165 in line 11", read_on(reader));
}

TEST_F(log_reader_test, skipped_text_is_not_damage)
{
    growing_text_t log(head + "<msg><!--" + std::string(5000, 'x') + "</a>");
    log_reader_t reader(log.source());
    EXPECT_EQ("unfinished at 45 in line 3", read_on(reader));
    reader.skip_unfinished();
    EXPECT_EQ("unfinished at 5058 in line 3", read_on(reader));
}

TEST_F(log_reader_test, a_message_has_no_damage_after_others_that_are_passed_over)
{
    growing_text_t log(head + "a & b<msg>&</msg>" + message_of("z"));
    log_reader_t reader(log.source());
    ASSERT_EQ(result_t::damage, reader.next());
    ASSERT_EQ(result_t::message, reader.next());
    EXPECT_EQ(damage_t::none, reader.get_damage());
}
