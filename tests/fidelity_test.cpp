// Which parts of a message survive the channel and a log, as docs/fidelity.md documents it.

#include "message_text.h"
#include "storage_support.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

std::string text_of(const message_t& message)
{
    return message_text(message, "", "; ");
}

message_ptr_t string_and_back(const message_ptr_t& message)
{
    return string_message_serializer_t::xml_string_to_message(
        string_message_serializer_t::message_to_xml_string(message));
}

// Sends messages through a log.
class log_transport_t
{
public:
    explicit log_transport_t(const std::wstring& file) : m_path(file) {}

    std::vector<message_ptr_t> log_and_replay(const message_ptr_t& message) const
    {
        record(boost::make_shared<message_t>(*message));
        return replay();
    }

    std::vector<message_ptr_t> log_carry_over_and_replay(const message_ptr_t& message,
                                                         int times = 1) const
    {
        record(boost::make_shared<message_t>(*message));
        for (; times > 0; --times)
            record(message_ptr_t());
        return replay();
    }

    message_ptr_t log_and_reader(const message_ptr_t& message) const
    {
        record(boost::make_shared<message_t>(*message));
        log_reader_t reader(m_path);
        reader.next();
        return reader.get_message();
    }

private:
    void record(const message_ptr_t& message) const
    {
        const storage_ptr_t storage = messages_storage_t::get(m_path);
        EXPECT_TRUE(storage->start_recording());
        if (message)
            message->set_flags(1);
        storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
        EXPECT_TRUE(storage->stop_recording());
    }

    std::vector<message_ptr_t> replay() const
    {
        const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"fidelity_test."), L"");
        const auto handler = boost::make_shared<recording_handler_t>();
        ex->push_handler(handler);
        const storage_ptr_t storage = messages_storage_t::get(m_path);
        EXPECT_TRUE(storage->start_reading());
        EXPECT_TRUE(storage->replay(ex));
        return handler->messages();
    }

    basekit2::path_t m_path;
};

std::string text_of(const message_ptr_t& message)
{
    return message ? text_of(*message) : "no message";
}

std::string text_of(const std::vector<message_ptr_t>& messages)
{
    std::string all;
    for (const message_ptr_t& message : messages)
        all += text_of(*message);
    return all;
}

const char* const unchanged = "unchanged";
const char* const nothing = "";

struct row_t
{
    const char* name; ///< a sentence
    message_ptr_t message;
    std::string string;
    std::string log;
    std::string carried_over;
};

// Prints the row's name if a test fails.
void PrintTo(const row_t& row, std::ostream* stream) // NOLINT(readability-identifier-naming)
{
    *stream << text_of(*row.message);
}

bool have_same_content(const message_ptr_t& one, const message_ptr_t& other)
{
    const message_t::message_content_t content = one->get_content();
    const message_t::message_content_t others = other->get_content();
    return content.attributes == others.attributes && content.args == others.args &&
           content.elements == others.elements;
}

class fidelity_test : public storage_test_t
{
protected:
    // Does not print the content, which can be long.
    void expect_content_survives(const message_ptr_t& sent)
    {
        const message_ptr_t read = string_and_back(sent);
        EXPECT_TRUE(read && have_same_content(read, sent)) << "string";
        EXPECT_TRUE(have_same_content(m_log.log_and_replay(sent).at(0), sent)) << "log";
        m_folder.write("log.xml", empty_log);
        EXPECT_TRUE(have_same_content(m_log.log_carry_over_and_replay(sent).at(0), sent))
            << "carry-over";
    }

    log_transport_t m_log{m_folder.wide_name("log.xml")};
};

class fidelity_table_test : public fidelity_test, public testing::WithParamInterface<row_t>
{
protected:
    static std::string expectation(const std::string& text)
    {
        return text == unchanged ? text_of(*GetParam().message) : text;
    }
};

// ---- the messages of the table

message_ptr_t with(string_map_t attributes, string_map_t args, string_map_t elements = {})
{
    const message_ptr_t message = make_message(L"t");
    message->set_content(make_content(std::move(attributes), std::move(args), std::move(elements)));
    return message;
}

message_ptr_t with_arg(const std::wstring& text)
{
    return with({}, {{L"n", text}});
}

message_ptr_t with_attribute(const std::wstring& text)
{
    return with({{L"a", text}}, {});
}

message_ptr_t with_element(const std::wstring& name, const std::wstring& text)
{
    return with({}, {}, {{name, text}});
}

message_ptr_t with_source(const std::wstring& source)
{
    const message_ptr_t message = make_message(L"t");
    message->set_source(source);
    return message;
}

message_ptr_t with_severity(const std::wstring& type, int severity)
{
    return make_message(type, static_cast<message_t::severity_t>(severity));
}

message_ptr_t with_severity_and_element(int severity, const std::wstring& name,
                                        const std::wstring& text)
{
    const message_ptr_t message = with_element(name, text);
    message->set_severity(static_cast<message_t::severity_t>(severity));
    return message;
}

message_ptr_t with_element_alone(const std::wstring& name, const std::wstring& text)
{
    const message_ptr_t message = with_element(name, text);
    message->set_type(L"");
    return message;
}

// Returns the line of a message of the type "t" with these further parts.
std::string t(const std::string& parts = "")
{
    return R"(type "t"; severity none; )" + parts;
}

const std::wstring smile = units({0xD83D, 0xDE00});
const std::wstring xs(298, L'x');
const std::string narrow_xs(298, 'x');

const row_t types_and_severities[] = {
    {"a_type_of_ascii_survives", make_message(L"t"), unchanged, unchanged, unchanged},
    {"a_type_with_markup_keeps_only_its_last_chunk_in_a_log", make_message(L"a & b"), unchanged,
     R"(type " b"; severity none; )", R"(type " b"; severity none; )"},
    {"a_type_with_a_quote_keeps_only_its_last_chunk_in_a_log", make_message(L"\"a\""), unchanged,
     R"(type "\""; severity none; )", R"(type "\""; severity none; )"},
    {"a_type_with_a_carriage_return_keeps_only_its_last_chunk_in_a_log", make_message(L"a\rb"),
     unchanged, R"(type "b"; severity none; )", R"(type "b"; severity none; )"},
    {"a_message_whose_type_ends_with_a_less_than_sign_is_lost_in_a_log", make_message(L"a<"),
     unchanged, nothing, nothing},
    {"a_type_loses_the_text_before_its_first_non_ascii_character_in_a_log",
     make_message(L"gr\xFCn"), unchanged, R"(type "\u00FCn"; severity none; )",
     R"(type "\u00FCn"; severity none; )"},
    {"a_type_that_begins_with_a_non_ascii_character_survives", make_message(L"\xE4 plain"),
     unchanged, unchanged, unchanged},
    {"a_type_that_begins_with_a_non_ascii_character_keeps_only_the_text_after_300_bytes_in_a_log",
     make_message(L"\xE4" + xs + L"tail"), unchanged, R"(type "tail"; severity none; )",
     R"(type "tail"; severity none; )"},
    {"an_empty_type_survives_beside_a_severity", with_severity(L"", 1), unchanged, unchanged,
     unchanged},
    {"a_message_without_type_and_severity_is_lost_in_a_log", with_severity(L"", 0), unchanged,
     nothing, nothing},
    {"the_severity_info_survives", with_severity(L"t", 1), unchanged, unchanged, unchanged},
    {"the_severity_warning_survives", with_severity(L"t", 2), unchanged, unchanged, unchanged},
    {"the_severity_error_survives", with_severity(L"t", 3), unchanged, unchanged, unchanged},
    {"the_severity_critical_survives", with_severity(L"t", 4), unchanged, unchanged, unchanged},
    {"the_severity_5_becomes_none", with_severity(L"t", 5), t(), t(), t()},
    {"the_severity_minus_1_becomes_none", with_severity(L"t", -1), t(), t(), t()},
    {"the_greatest_severity_becomes_none", with_severity(L"t", 2147483647), t(), t(), t()},
    {"a_message_with_an_unknown_severity_and_no_type_is_lost_in_a_log", with_severity(L"", 5),
     R"(type ""; severity none; )", nothing, nothing},
};

const row_t arguments[] = {
    {"arguments_survive", with({}, {{L"b", L"1"}, {L"a", L"2"}}), unchanged, unchanged, unchanged},
    {"an_argument_without_text_is_lost_in_a_log", with_arg(L""), unchanged, t(), t()},
    {"an_argument_of_blanks_survives", with_arg(L" "), unchanged, unchanged, unchanged},
    {"an_argument_with_an_empty_name_gets_a_number", with({}, {{L"", L"x"}}),
     t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )")},
    {"an_argument_with_an_empty_name_replaces_arg1", with({}, {{L"", L"x"}, {L"arg1", L"y"}}),
     t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )")},
    {"any_argument_name_without_an_ampersand_survives",
     with({}, {{L"two words <\"'>\n\t\r\xE4" + smile, L"1"}}), unchanged, unchanged, unchanged},
    {"an_ampersand_in_an_argument_name_becomes_a_reference_in_a_log", with({}, {{L"p&q", L"1"}}),
     unchanged, t(R"(arg "p&#38;q" = "1"; )"), t(R"(arg "p&#38;#38;q" = "1"; )")},
};

const row_t texts[] = {
    {"an_ampersand_stays_escaped_in_a_log", with_arg(L"a & b"), unchanged,
     t(R"(arg "" = "&"; arg "n" = "a &amp; b"; )"),
     t(R"(arg "" = "&"; arg "arg1" = "&"; arg "n" = "a &amp;amp; b"; )")},
    {"a_less_than_sign_stays_escaped_in_a_log", with_arg(L"a < b"), unchanged,
     t(R"(arg "" = ""; arg "n" = "a &lt; b"; )"), t(R"(arg "" = "&"; arg "n" = "a &amp;lt; b"; )")},
    {"a_greater_than_sign_stays_escaped_in_a_log", with_arg(L"a > b"), unchanged,
     t(R"(arg "" = ">"; arg "n" = "a &gt; b"; )"),
     t(R"(arg "" = "&"; arg "arg1" = ">"; arg "n" = "a &amp;gt; b"; )")},
    {"a_quote_stays_escaped_in_a_log", with_arg(L"say \"x\""), unchanged,
     t(R"(arg "" = "\""; arg "n" = "say &quot;x&quot;"; )"),
     t(R"(arg "" = "&"; arg "arg1" = "\""; arg "n" = "say &amp;quot;x&amp;quot;"; )")},
    {"a_text_that_begins_with_markup_is_split_in_a_log", with_arg(L"&b"), unchanged,
     t(R"(arg "" = "b"; arg "n" = "&"; )"), t(R"(arg "arg1" = "b"; arg "n" = "&"; )")},
    {"a_text_that_begins_with_a_less_than_sign_is_lost_in_a_log", with_arg(L"<b"), unchanged,
     t(R"(arg "" = "b"; arg "n" = ""; )"), t(R"(arg "arg1" = "b"; )")},
    {"an_apostrophe_survives", with_arg(L"it's"), unchanged, unchanged, unchanged},
    {"only_one_chunk_of_all_arguments_stays_in_a_log", with({}, {{L"a", L"1>"}, {L"b", L"2&"}}),
     unchanged, t(R"(arg "" = ">"; arg "a" = "1&gt;"; arg "b" = "2&amp;"; )"),
     t(R"(arg "" = "&"; arg "a" = "1&amp;gt;"; arg "arg1" = ">"; arg "b" = "2&amp;amp;"; )")},
    {"line_breaks_and_tabs_survive", with_arg(L"\na\nb\tc\t"), unchanged, unchanged, unchanged},
    {"a_carriage_return_becomes_a_reference_in_a_log", with_arg(L"a\rb"), unchanged,
     t(R"(arg "" = "\r"; arg "n" = "a&#13;b"; )"),
     t(R"(arg "" = "&"; arg "arg1" = "\r"; arg "n" = "a&amp;#13;b"; )")},
    {"a_non_ascii_start_survives", with_arg(L"\xE4 plain"), unchanged, unchanged, unchanged},
    {"a_later_non_ascii_character_adds_an_argument_in_a_log", with_arg(L"plain \xE4 b"), unchanged,
     t(R"(arg "" = "\u00E4 b"; arg "n" = "plain \u00E4 b"; )"),
     t(R"(arg "" = "\u00E4 b"; arg "arg1" = "\u00E4 b"; arg "n" = "plain \u00E4 b"; )")},
    {"a_non_ascii_start_loses_the_text_after_300_bytes_in_a_log", with_arg(L"\xE4" + xs + L"tail"),
     unchanged, t(R"(arg "" = "tail"; arg "n" = "\u00E4)" + narrow_xs + R"("; )"),
     t(R"(arg "arg1" = "tail"; arg "n" = "\u00E4)" + narrow_xs + R"("; )")},
    {"a_non_ascii_start_loses_the_text_after_an_ampersand_in_a_log", with_arg(L"\xE4 & b"),
     unchanged, t(R"(arg "" = "&"; arg "n" = "\u00E4 "; )"),
     t(R"(arg "arg1" = "&"; arg "n" = "\u00E4 "; )")},
    {"a_character_beyond_the_bmp_survives_at_the_start", with_arg(smile + L" a"), unchanged,
     unchanged, unchanged},
    {"a_later_character_beyond_the_bmp_adds_an_argument_in_a_log", with_arg(L"a " + smile),
     unchanged, t(R"(arg "" = "\uD83D\uDE00"; arg "n" = "a \uD83D\uDE00"; )"),
     t(R"(arg "" = "\uD83D\uDE00"; arg "arg1" = "\uD83D\uDE00"; arg "n" = "a \uD83D\uDE00"; )")},
    {"a_character_beyond_the_bmp_in_one_element_comes_back_as_two", with_arg(units({0x1F600})),
     t(R"(arg "n" = "\uD83D\uDE00"; )"), t(R"(arg "n" = "\uD83D\uDE00"; )"),
     t(R"(arg "n" = "\uD83D\uDE00"; )")},
    {"a_character_that_xml_does_not_allow_is_replaced", with_arg(L"\x01"),
     t(R"(arg "n" = "\uFFFD"; )"), t(R"(arg "n" = "\uFFFD"; )"), t(R"(arg "n" = "\uFFFD"; )")},
    {"a_zero_is_replaced_and_does_not_end_the_text", with_arg(units({0, 'a'})),
     t(R"(arg "n" = "\uFFFDa"; )"), t(R"(arg "n" = "\uFFFDa"; )"), t(R"(arg "n" = "\uFFFDa"; )")},
    {"an_unpaired_surrogate_is_replaced", with_arg(units({0xD83D})), t(R"(arg "n" = "\uFFFD"; )"),
     t(R"(arg "n" = "\uFFFD"; )"), t(R"(arg "n" = "\uFFFD"; )")},
    {"the_replacement_character_is_not_ascii", with_arg(L"a\x01"), t(R"(arg "n" = "a\uFFFD"; )"),
     t(R"(arg "" = "\uFFFD"; arg "n" = "a\uFFFD"; )"),
     t(R"(arg "" = "\uFFFD"; arg "arg1" = "\uFFFD"; arg "n" = "a\uFFFD"; )")},
};

const row_t attributes[] = {
    {"attributes_survive", with({{L"b", L"1"}, {L"a", L""}}, {}), unchanged, unchanged, unchanged},
    {"any_text_of_an_attribute_without_an_ampersand_survives",
     with_attribute(L" <\"'>\n\t\r\xE4 " + smile + L" "), unchanged, unchanged, unchanged},
    {"an_ampersand_in_an_attribute_becomes_a_reference_in_a_log", with_attribute(L"a&b"), unchanged,
     t(R"(attribute "a" = "a&#38;b"; )"), t(R"(attribute "a" = "a&#38;#38;b"; )")},
    {"an_unwritable_character_in_an_attribute_is_replaced", with_attribute(L"a\x01"),
     t(R"(attribute "a" = "a\uFFFD"; )"), t(R"(attribute "a" = "a\uFFFD"; )"),
     t(R"(attribute "a" = "a\uFFFD"; )")},
    {"an_attribute_whose_name_is_not_an_xml_name_is_left_out",
     with({{L"two words", L"1"}, {L"9", L"2"}, {L"z", L"3"}}, {}), t(R"(attribute "z" = "3"; )"),
     t(R"(attribute "z" = "3"; )"), t(R"(attribute "z" = "3"; )")},
    {"an_attribute_with_an_empty_name_drops_the_whole_content",
     with({{L"", L"1"}, {L"a", L"2"}}, {{L"n", L"3"}}, {{L"e", L"4"}}), t(), t(), t()},
    {"a_source_survives_as_the_tool", with_source(L"audit"), unchanged, unchanged, unchanged},
    {"a_source_with_an_ampersand_changes_like_any_attribute", with_source(L"a&b"), unchanged,
     t(R"(attribute "tool" = "a&#38;b"; )"), t(R"(attribute "tool" = "a&#38;#38;b"; )")},
    {"an_attribute_source_becomes_the_tool_too_in_a_log", with({{L"source", L"s"}}, {}), unchanged,
     t(R"(attribute "source" = "s"; attribute "tool" = "s"; )"),
     t(R"(attribute "source" = "s"; attribute "tool" = "s"; )")},
    {"a_tool_beside_an_attribute_source_survives", with({{L"source", L"s"}, {L"tool", L"t"}}, {}),
     unchanged, unchanged, unchanged},
};

const row_t elements[] = {
    {"elements_survive", with({}, {}, {{L"b", L"1"}, {L"a", L"2"}}), unchanged, unchanged,
     unchanged},
    {"an_element_without_text_is_lost_in_a_log", with_element(L"e", L""), unchanged, t(), t()},
    {"an_element_with_an_ampersand_stays_escaped_in_a_log", with_element(L"e", L"a & b"), unchanged,
     t(R"(element "e" = "a &amp; b"; )"), t(R"(element "e" = "a &amp;amp; b"; )")},
    {"an_element_that_begins_with_an_ampersand_keeps_only_it_in_a_log", with_element(L"e", L"&b"),
     unchanged, t(R"(element "e" = "&"; )"), t(R"(element "e" = "&"; )")},
    {"an_element_that_begins_with_a_less_than_sign_is_emptied_in_a_log", with_element(L"e", L"<b"),
     unchanged, t(R"(element "e" = ""; )"), t()},
    {"an_element_with_a_carriage_return_gets_a_reference_in_a_log", with_element(L"e", L"a\rb"),
     unchanged, t(R"(element "e" = "a&#13;b"; )"), t(R"(element "e" = "a&amp;#13;b"; )")},
    {"an_element_with_a_non_ascii_start_is_cut_before_markup_in_a_log",
     with_element(L"e", L"\xE4 > b"), unchanged, t(R"(element "e" = "\u00E4 "; )"),
     t(R"(element "e" = "\u00E4 "; )")},
    {"an_element_with_a_later_non_ascii_character_survives", with_element(L"e", L"plain \xE4 b"),
     unchanged, unchanged, unchanged},
    {"an_element_with_a_non_ascii_start_is_cut_after_300_bytes_in_a_log",
     with_element(L"e", L"\xE4" + xs + L"tail"), unchanged,
     t(R"(element "e" = "\u00E4)" + narrow_xs + R"("; )"),
     t(R"(element "e" = "\u00E4)" + narrow_xs + R"("; )")},
    {"a_timestamp_survives", with_element(L"timestamp", L"now"), unchanged, unchanged, unchanged},
    {"an_element_whose_name_is_not_an_xml_name_is_left_out",
     with({}, {}, {{L"two words", L"1"}, {L"z", L"2"}}), t(R"(element "z" = "2"; )"),
     t(R"(element "z" = "2"; )"), t(R"(element "z" = "2"; )")},
    {"an_element_with_an_empty_name_drops_the_other_elements",
     with({}, {{L"n", L"1"}}, {{L"", L"2"}, {L"e", L"3"}}), t(R"(arg "n" = "1"; )"),
     t(R"(arg "n" = "1"; )"), t(R"(arg "n" = "1"; )")},
    {"an_element_named_type_is_replaced_by_the_type", with_element(L"type", L"x"), t(), t(), t()},
    {"an_element_named_type_replaces_an_empty_type_in_a_log", with_element_alone(L"type", L"x"),
     R"(type ""; severity none; )", R"(type "x"; severity none; )", R"(type "x"; severity none; )"},
    {"an_element_named_severity_becomes_the_severity_if_there_is_none",
     with_element(L"severity", L"error"), R"(type "t"; severity error; )",
     R"(type "t"; severity error; )", R"(type "t"; severity error; )"},
    {"an_element_named_severity_is_replaced_by_the_severity",
     with_severity_and_element(1, L"severity", L"error"), R"(type "t"; severity info; )",
     R"(type "t"; severity info; )", R"(type "t"; severity info; )"},
    {"an_element_named_arg_becomes_an_argument_with_a_number", with_element(L"arg", L"x"),
     t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )"), t(R"(arg "arg1" = "x"; )")},
    {"an_element_named_msg_drops_the_content_before_it_in_a_log",
     with({{L"a", L"1"}}, {{L"n", L"2"}}, {{L"e", L"3"}, {L"msg", L"4"}, {L"z", L"5"}}), unchanged,
     t(R"(element "z" = "5"; )"), t(R"(element "z" = "5"; )")},
    {"an_element_named_log_is_lost_in_a_log", with({}, {}, {{L"log", L"1"}, {L"z", L"2"}}),
     unchanged, t(R"(element "z" = "2"; )"), t(R"(element "z" = "2"; )")},
};

const row_t prefixed_names[] = {
    {"undeclared_prefixes_survive", with({{L"p:a", L"1"}}, {}, {{L"p:e", L"2"}}), unchanged,
     unchanged, unchanged},
    {"a_prefix_that_the_message_declares_is_lost_in_a_string",
     with({{L"p:a", L"1"}, {L"xmlns:p", L"u"}}, {}, {{L"p:e", L"2"}}),
     t(R"(attribute "a" = "1"; element "e" = "2"; )"), unchanged, unchanged},
    {"the_prefix_xml_is_lost_in_a_string", with({{L"xml:lang", L"de"}}, {}),
     t(R"(attribute "lang" = "de"; )"), unchanged, unchanged},
    {"a_name_that_libxml2_cannot_split_is_left_out",
     with({{L"a:b:1", L"1"}, {L"z", L"2"}}, {}, {{L"a:b:1", L"3"}}), t(R"(attribute "z" = "2"; )"),
     t(R"(attribute "z" = "2"; )"), t(R"(attribute "z" = "2"; )")},
    {"the_first_of_two_attributes_with_the_same_utf8_name_stays",
     with({{L"a" + smile, L"1"}, {L"a" + units({0x1F600}), L"2"}}, {}),
     t(R"(attribute "a\uD83D\uDE00" = "1"; )"), t(R"(attribute "a\uD83D\uDE00" = "1"; )"),
     t(R"(attribute "a\uD83D\uDE00" = "1"; )")},
};

} // namespace

TEST_P(fidelity_table_test, a_string_transports_it_as_documented)
{
    EXPECT_EQ(text_of(*string_and_back(GetParam().message)), expectation(GetParam().string));
}

TEST_P(fidelity_table_test, a_log_and_a_reader_transport_it_as_a_string)
{
    EXPECT_EQ(text_of(m_log.log_and_reader(GetParam().message)), expectation(GetParam().string));
}

TEST_P(fidelity_table_test, a_log_and_a_replay_transport_it_as_documented)
{
    EXPECT_EQ(text_of(m_log.log_and_replay(GetParam().message)), expectation(GetParam().log));
}

TEST_P(fidelity_table_test, a_carried_over_log_and_a_replay_transport_it_as_documented)
{
    EXPECT_EQ(text_of(m_log.log_carry_over_and_replay(GetParam().message)),
              expectation(GetParam().carried_over));
}

const auto name_of_row = [](const auto& row) {
    return row.param.name;
};
INSTANTIATE_TEST_SUITE_P(types_and_severities, fidelity_table_test,
                         testing::ValuesIn(types_and_severities), name_of_row);
INSTANTIATE_TEST_SUITE_P(arguments, fidelity_table_test, testing::ValuesIn(arguments), name_of_row);
INSTANTIATE_TEST_SUITE_P(texts, fidelity_table_test, testing::ValuesIn(texts), name_of_row);
INSTANTIATE_TEST_SUITE_P(attributes, fidelity_table_test, testing::ValuesIn(attributes),
                         name_of_row);
INSTANTIATE_TEST_SUITE_P(elements, fidelity_table_test, testing::ValuesIn(elements), name_of_row);
INSTANTIATE_TEST_SUITE_P(prefixed_names, fidelity_table_test, testing::ValuesIn(prefixed_names),
                         name_of_row);

// ---- facts that are not in the table

TEST_F(fidelity_test, flags_never_survive)
{
    const message_ptr_t message = make_flagged(L"t", 7);
    EXPECT_EQ(string_and_back(message)->get_flags(), 0);
    EXPECT_EQ(m_log.log_and_replay(message).at(0)->get_flags(), 0);
    EXPECT_EQ(m_log.log_carry_over_and_replay(message).at(0)->get_flags(), 0);
}

TEST_F(fidelity_test, a_message_without_the_flags_of_recording_is_not_logged)
{
    record_all(L"");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a", 4);
    storage->stop_recording();
    EXPECT_EQ(m_folder.read("log.xml"), empty_log);
}

TEST_F(fidelity_test, the_number_of_the_next_argument_never_survives)
{
    message_t::message_content_t content;
    content.next_arg_number = 7;
    const message_ptr_t message = make_message(L"t");
    message->set_content(content);
    EXPECT_EQ(string_and_back(message)->get_content().next_arg_number, 1);
    EXPECT_EQ(m_log.log_and_replay(message).at(0)->get_content().next_arg_number, 1);
    EXPECT_EQ(m_log.log_carry_over_and_replay(message).at(0)->get_content().next_arg_number, 1);
}

TEST_F(fidelity_test, the_next_argument_is_counted_again_after_every_transport)
{
    const message_ptr_t message = with({}, {{L"", L"x"}});
    EXPECT_EQ(string_and_back(message)->get_content().next_arg_number, 2);
    EXPECT_EQ(m_log.log_and_replay(message).at(0)->get_content().next_arg_number, 2);
    EXPECT_EQ(m_log.log_carry_over_and_replay(message).back()->get_content().next_arg_number, 1)
        << "it has a name now";
}

TEST_F(fidelity_test, each_carrying_over_escapes_a_text_once_more)
{
    EXPECT_EQ(text_of(m_log.log_carry_over_and_replay(with_arg(L"a & b"), 3)),
              t(R"(arg "" = "&"; arg "arg1" = "&"; arg "n" = "a &amp;amp;amp;amp; b"; )"));
}

TEST_F(fidelity_test, each_carrying_over_lengthens_an_attribute_with_an_ampersand)
{
    EXPECT_EQ(text_of(m_log.log_carry_over_and_replay(with_attribute(L"&"), 3)),
              t(R"(attribute "a" = "&#38;#38;#38;#38;"; )"));
}

TEST_F(fidelity_test, names_of_any_length_survive)
{
    const std::wstring name(50001, L'x');
    const message_ptr_t sent = with({{name, L"1"}}, {{L"n", L"3"}}, {{name, L"4"}});
    const std::string expected = text_of(*sent);
    EXPECT_TRUE(text_of(string_and_back(sent)) == expected);
    EXPECT_TRUE(text_of(m_log.log_and_replay(sent)) == expected);
    m_folder.write("log.xml", empty_log);
    EXPECT_TRUE(text_of(m_log.log_carry_over_and_replay(sent)) == expected);
}

TEST_F(fidelity_test, any_number_of_names_survives)
{
    string_map_t names;
    for (int i = 100; i < 180; ++i) {
        std::wstring name = L"x" + std::to_wstring(i);
        name.resize(50000, L'x');
        names.emplace(name, L"1");
    }
    expect_content_survives(with({}, {}, names));
}

TEST_F(fidelity_test, more_than_a_thousand_attributes_survive)
{
    string_map_t many;
    for (int i = 0; i < 1200; ++i)
        many.emplace(L"a" + std::to_wstring(i), L"1");
    const message_ptr_t sent = with(many, {{L"n", L"2"}});
    EXPECT_EQ(text_of(string_and_back(sent)), text_of(*sent));
    EXPECT_EQ(text_of(m_log.log_and_replay(sent)), text_of(*sent));
    m_folder.write("log.xml", empty_log);
    EXPECT_EQ(text_of(m_log.log_carry_over_and_replay(sent)), text_of(*sent));
}

TEST_F(fidelity_test, an_argument_name_of_any_length_survives)
{
    expect_content_survives(with({}, {{std::wstring(10000001, L'x'), L"1"}, {L"y", L"3"}}));
}

TEST_F(fidelity_test, a_text_of_any_length_survives)
{
    expect_content_survives(with_arg(std::wstring(10000001, L'x')));
}

TEST_F(fidelity_test, a_longer_text_beside_a_namespace_survives_only_in_a_log)
{
    const message_ptr_t sent = with({{L"xmlns", L"u"}}, {{L"n", std::wstring(10000001, L'x')}});
    const string_map_t expected = sent->get_content().args;
    EXPECT_FALSE(string_and_back(sent));
    EXPECT_TRUE(m_log.log_and_replay(sent).at(0)->get_content().args == expected);
    m_folder.write("log.xml", empty_log);
    EXPECT_TRUE(m_log.log_carry_over_and_replay(sent).at(0)->get_content().args == expected);
}

TEST_F(fidelity_test, attributes_of_any_length_survive)
{
    expect_content_survives(with({{L"a", std::wstring(10000001, L'x')}, {L"b", L"1"}}, {}));
}

TEST_F(fidelity_test, a_message_that_is_dropped_does_not_affect_the_others)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const message_ptr_t empty = with_element_alone(L"e", L"x");
    empty->set_flags(1);
    storage->on_message(boost::shared_ptr<velmo_ex_t>(), empty);
    record(storage, L"b");
    storage->stop_recording();
    EXPECT_EQ(types_in(), L"a;b;");
}
