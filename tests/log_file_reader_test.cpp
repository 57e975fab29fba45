#include "storage/log_file_reader.h"

#include "storage/file_descriptor.h"

#include "repeated_text.h"
#include "scratch_folder.h"
#include "support.h"
#include "usage.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace velmoext_1_4_8;

namespace
{

const std::size_t chunk = 262144;

const std::string long_type = "<!DOCTYPE log [" + std::string(163840, ' ') + "]>";
const std::string unknown_encoding = "<?xml version='1.0' encoding='x-unknown'?>";

std::string message(const std::string& type)
{
    return "<msg><type>" + type + "</type></msg>";
}

class log_file_reader_test : public testing::Test
{
protected:
    log_file_reader_test()
    {
        m_reader.set_callback(
            [this](const message_ptr_t& message) { m_types += message->get_type() + L";"; });
    }

    // Returns the types of the messages that a new reader finds.
    std::wstring types_in(const std::string& log)
    {
        m_folder.write("log.xml", log);
        log_file_reader reader(m_folder.name("log.xml"));
        std::wstring types;
        reader.set_callback(
            [&](const message_ptr_t& message) { types += message->get_type() + L";"; });
        reader.parse();
        m_refusal = reader.refusal();
        EXPECT_EQ(reader.position(), static_cast<std::int64_t>(log.size()));
        return types;
    }

    refusal_t refusal_of(const std::string& log)
    {
        EXPECT_EQ(types_in(log).find(L"last"), std::wstring::npos);
        return m_refusal;
    }

    void write(const std::string& log) const { m_folder.write("log.xml", log); }

    std::wstring take_types() { return std::exchange(m_types, std::wstring()); }

    scratch_folder_t m_folder;
    log_file_reader m_reader{m_folder.name("log.xml")};
    std::wstring m_types;
    refusal_t m_refusal = refusal_t::none;
};

} // namespace

TEST_F(log_file_reader_test, a_message_is_read_wherever_the_chunks_of_the_file_end)
{
    const std::string messages = "<msg a='b'>\n <type>own</type>\n</msg>text<!-- c --><msg><type>"
                                 "<![CDATA[other]]></type></msg>";
    for (std::size_t shift = 0; shift <= messages.size(); ++shift) {
        const std::string before = "<log><!--";
        const std::string log = before + std::string(chunk - before.size() - 3 - shift, 'c') +
                                "-->" + messages + message("last") + "</log>";
        ASSERT_EQ(types_in(log), L"own;other;last;") << shift;
    }
}

TEST_F(log_file_reader_test, elements_larger_than_chunks_are_read)
{
    const std::string text(3 * chunk, 'x');
    for (const std::string& content : {"<e>" + text + "</e>", "<e>\xC3\xA9" + text + "</e>",
                                       "<!--" + text + "-->", "<a b='" + text + "'/>"})
        EXPECT_EQ(types_in("<log>" + message("a") + "<msg>" + content + "<type>b</type></msg>" +
                           message("c") + "</log>"),
                  L"a;b;c;");
    EXPECT_EQ(types_in("<!--" + text + "--><log>" + message("a") + text + message("b") + "</log>"),
              L"a;b;");
}

TEST_F(log_file_reader_test, the_text_ends_at_a_zero)
{
    const std::string first = "<log>" + message("a") + "<msg><type>b";
    for (const std::size_t size : {first.size(), chunk - 1, chunk, chunk + 1, 2 * chunk}) {
        const std::string before = first + std::string(size - first.size(), 'x');
        EXPECT_EQ(types_in(before + std::string(1, '\0') + "</type></msg>" + message("c")), L"a;");
    }
    EXPECT_EQ(types_in("<log>" + message("a") + std::string(1, '\0') + message("b") +
                       std::string(chunk, ' ') + message("c")),
              L"a;");
}

TEST_F(log_file_reader_test, appended_text_is_read_as_a_log_of_its_own)
{
    const std::string one = "<log>" + message("a") + "</log>";
    write(one);
    EXPECT_TRUE(m_reader.parse());
    EXPECT_EQ(take_types(), L"a;");
    EXPECT_FALSE(m_reader.parse());
    write(one + message("b"));
    EXPECT_TRUE(m_reader.parse());
    EXPECT_EQ(take_types(), L"b;");
    EXPECT_EQ(m_reader.position(), static_cast<std::int64_t>((one + message("b")).size()));
}

TEST_F(log_file_reader_test, a_text_without_a_tag_is_skipped)
{
    for (const std::string& text : {std::string("text"), std::string(2 * chunk, 'x'),
                                    std::string(1, '\0') + "<log>" + message("a")}) {
        log_file_reader reader(m_folder.name("log.xml"));
        write(text);
        EXPECT_FALSE(reader.parse());
        EXPECT_EQ(reader.position(), static_cast<std::int64_t>(text.size()));
        EXPECT_EQ(reader.refusal(), refusal_t::none);
    }
}

TEST_F(log_file_reader_test, a_damaged_text_with_a_tag_is_read)
{
    for (const std::string& log :
         {std::string(">"), std::string("x>y"), std::string("<log"), message("a") + "<",
          "<log>" + std::string(2 * chunk, ' ') + "x"}) {
        log_file_reader reader(m_folder.name("log.xml"));
        reader.set_callback([](const message_ptr_t&) {});
        write(log);
        EXPECT_EQ(reader.parse(), log.find('>') != std::string::npos) << log.substr(0, 20);
    }
}

TEST_F(log_file_reader_test, a_file_that_is_missing_or_shorter_leaves_the_position)
{
    EXPECT_FALSE(m_reader.parse());
    EXPECT_EQ(m_reader.position(), 0);
    write("<log></log>");
    EXPECT_TRUE(m_reader.parse());
    write("<log>");
    EXPECT_FALSE(m_reader.parse());
    EXPECT_EQ(m_reader.position(), 11);
}

TEST_F(log_file_reader_test,
       an_exception_of_a_callback_propagates_and_leaves_the_position_at_the_end)
{
    const std::string log = "<log>" + message("a") + std::string(2 * chunk, ' ') + "</log>";
    write(log);
    m_reader.set_callback([](const message_ptr_t&) { throw 1; });
    EXPECT_THROW(m_reader.parse(), int);
    EXPECT_EQ(m_reader.position(), static_cast<std::int64_t>(log.size()));
    EXPECT_FALSE(m_reader.parse());
}

TEST_F(log_file_reader_test, a_log_beyond_a_limit_is_refused_with_the_reason)
{
    const std::string end = message("last") + "</log>";
    EXPECT_EQ(refusal_of("<log><e" + numbered(" a", 25001, "=''") + "/>" + end),
              refusal_t::attributes);
    EXPECT_EQ(refusal_of("<log><e>" + numbered("<a", 250001, "/>") + "</e>" + end),
              refusal_t::names);
    EXPECT_EQ(refusal_of(long_type + "<log>" + end), refusal_t::document_type_size);
    EXPECT_EQ(refusal_of(unknown_encoding + "<log>" + end), refusal_t::encoding);
}

TEST_F(log_file_reader_test, input_that_is_cheap_for_a_parse_of_events_is_not_limited)
{
    const std::string end = message("last") + "</log>";
    for (const std::string& log :
         {"<!DOCTYPE log [<!ATTLIST a" + numbered(" a", 2000, " CDATA ''") + ">]><log>" +
              repeated("<a/>", 501) + end,
          "<log><e" + numbered(" xmlns:n", 2000, "='u'") + ">" + repeated("<a/>", 200001) + "</e>" +
              end,
          "<log><e>" + repeated("<a xml:id='i'/>", 150001) + "</e>" + end}) {
        EXPECT_EQ(types_in(log), L"last;");
        EXPECT_EQ(m_refusal, refusal_t::none);
    }
}

TEST_F(log_file_reader_test, a_refusal_is_that_of_the_last_text_only)
{
    const std::string refused = long_type + "<log>" + message("a") + "</log>";
    write(refused);
    EXPECT_TRUE(m_reader.parse());
    EXPECT_EQ(m_reader.refusal(), refusal_t::document_type_size);
    write(refused + message("b"));
    EXPECT_TRUE(m_reader.parse());
    EXPECT_EQ(m_reader.refusal(), refusal_t::none);
    EXPECT_EQ(take_types(), L"b;");
    write(refused + message("b") + refused);
    EXPECT_TRUE(m_reader.parse());
    EXPECT_EQ(m_reader.refusal(), refusal_t::document_type_size);
    EXPECT_FALSE(m_reader.parse());
    EXPECT_EQ(m_reader.refusal(), refusal_t::none);
}

TEST_F(log_file_reader_test, a_refusal_is_found_wherever_it_is)
{
    const std::string rest = "<log><e" + numbered(" a", 25001, "=''") + "/></log>";
    const auto found = [&](const std::string& log) {
        write(log);
        log_file_reader reader(m_folder.name("log.xml"));
        reader.set_callback([](const boost::shared_ptr<message_t>&) {});
        reader.parse();
        return reader.refusal();
    };
    EXPECT_EQ(found(unknown_encoding + rest), refusal_t::encoding);
    EXPECT_EQ(found(long_type + rest), refusal_t::document_type_size);
    EXPECT_EQ(found("<!DOCTYPE log>" + rest), refusal_t::attributes);
    EXPECT_EQ(found("<log" + numbered(" a", 25001, "=''") + "></log>"), refusal_t::attributes);
    EXPECT_EQ(found("<log>" + std::string(2 * chunk, ' ') + rest), refusal_t::attributes);
    EXPECT_EQ(found("<log>" + message("a") + "<e/>" + message("&amp;") + "</log>"),
              refusal_t::none);
    EXPECT_EQ(found(""), refusal_t::none);
}

TEST_F(log_file_reader_test, an_open_file_is_read_after_its_name_was_removed)
{
    write("<log>" + message("a"));
    file_descriptor_t file;
    ASSERT_TRUE(file.open(true, basekit2::path_t(m_folder.wide_name("log.xml"))));
    std::filesystem::remove(m_folder.name("log.xml"));
    EXPECT_FALSE(m_reader.parse());
    EXPECT_TRUE(m_reader.parse(file));
    EXPECT_EQ(take_types(), L"a;");
    EXPECT_FALSE(m_reader.parse(file)) << "nothing is new";
}

TEST_F(log_file_reader_test, a_byte_that_is_invalid_in_the_encoding_prints_nothing)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(types_in("<?xml version='1.0' encoding='GBK'?><log>" + message("a") + "\xFF" +
                       message("last") + "</log>")
                  .find(L"last"),
              std::wstring::npos);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// With libxml2 alone each of them would take minutes.
TEST_F(log_file_reader_test, input_of_quadratic_cost_ends_the_delivery_at_once)
{
    const std::string names = numbered("<n", 400000, "/>");
    const std::string attributes = numbered(" a", 20000, "=''") + repeated(" a19999=''", 1000000);
    const std::string first = "<log>" + message("a");
    const std::string last = message("last") + "</log>";
    const usage_t usage;
    EXPECT_EQ(types_in(first + "<msg>" + names + "</msg>" + last), L"a;");
    EXPECT_EQ(m_refusal, refusal_t::names);
    EXPECT_EQ(types_in(first + "<msg" + attributes + "><type>b</type></msg>" + last), L"a;");
    EXPECT_EQ(m_refusal, refusal_t::attributes);
    for (const char* const fault : {"<!--\xC3\xA9 -- x-->", "&u;"}) {
        EXPECT_EQ(types_in(first + fault + "<msg>" + names + "</msg>" + last), L"a;") << fault;
        EXPECT_EQ(m_refusal, refusal_t::none) << fault;
    }
    EXPECT_LT(usage.seconds(), 60);
}

// Quadratic time would be minutes.
TEST_F(log_file_reader_test, the_time_is_linear_in_the_size)
{
    const std::size_t size = 1000000;
    static const struct
    {
        const char* before;
        const char* repeating;
    } cases[] = {{"", "<!---->"},
                 {"", "<?p?>"},
                 {"", " "},
                 {"<log ", " "},
                 {"<log a='", "x"},
                 {"<log>", "<!---->"},
                 {"<log>", "<!-- "},
                 {"<log>", "x"},
                 {"<log>", "\xC3\xA9"},
                 {"<log>", "&amp;"},
                 {"<log>", "&u;"},
                 {"<log>", "]"},
                 {"<log>", "<e/>"},
                 {"<log>", "<e/>x"},
                 {"<log>", "<e>"},
                 {"<log>", "</e>"},
                 {"<log>", "<msg>"},
                 {"<log>", "<msg/>"},
                 {"<log>", "<msg><type>&lt;</type></msg>"},
                 {"<log><msg>", "<arg name='a'>x</arg>"},
                 {"<log><msg>", "<arg>x</arg>"},
                 {"<log><msg><type>", "x"},
                 {"<log><msg><type>", "&lt;"},
                 {"<log><msg><e>", "<![CDATA[x]]>"},
                 {"<log><msg a='", "x"},
                 {"<log><e a='", "\n"},
                 {"<log><![CDATA[", "]]"},
                 {"<!DOCTYPE log>", "<e/>"},
                 {"<!DOCTYPE log [", "<!-- "},
                 {"<?xml version='1.0' encoding='GBK'?><log>", "<e/>"},
                 {"<?xml version='1.0' encoding='GBK'?><log>", "\xFF"},
                 {"<?xml version='1.0' encoding='ISO-8859-1'?><log><e>", "\xE9"}};
    for (const auto& [before, repeating] : cases) {
        m_folder.write("log.xml",
                       before + repeated(repeating, size / std::string(repeating).size()) + ">");
        log_file_reader reader(m_folder.name("log.xml"));
        reader.set_callback([](const message_ptr_t&) {});
        const usage_t usage;
        reader.parse();
        EXPECT_LT(usage.seconds(), 3) << before << repeating;
    }
}
