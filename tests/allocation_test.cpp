// Messages and extension objects while memory runs out.

#include "failing_allocations.h"
#include "message_text.h"
#include "support.h"

#include <rova/strings.h>

#include <memory>

using namespace velmoext_1_4_8;

namespace
{

using ROVA_2_18::strings::utf16_to_utf8;

const std::wstring long_text(9000, L'l');

// ---- the operations, each ready to run

std::function<attempt_t()> decode(const std::wstring& text)
{
    return [=]() -> attempt_t {
        const auto message = std::make_shared<message_ptr_t>();
        return {[=] { *message = string_message_serializer_t::xml_string_to_message(text); },
                [=] {
                    return *message ? message_text(**message, "", ";") : std::string();
                }};
    };
}

std::function<attempt_t()> encode(const message_t::message_content_t& content)
{
    const message_ptr_t message = make_message(content);
    message->set_severity(message_t::warning);
    return [=]() -> attempt_t {
        const auto text = std::make_shared<std::wstring>();
        return {[=] { *text = string_message_serializer_t::message_to_xml_string(message); },
                [=] {
                    return utf16_to_utf8(*text);
                }};
    };
}

attempt_t generate_id()
{
    const std::wstring base = L"a long enough base to be allocated ";
    const auto id = std::make_shared<std::wstring>();
    return {[=] { *id = velmo_ex_t::generate_id(base); },
            [=] {
                return utf16_to_utf8(id->substr(0, base.size()));
            }};
}

attempt_t get_ex()
{
    const std::wstring id = velmo_ex_t::generate_id(L"a long enough id to be allocated ");
    const auto ex = std::make_shared<boost::shared_ptr<velmo_ex_t>>();
    return {[=] { *ex = velmo_ex_t::get(id, L"a long enough prefix to be allocated"); },
            [=]() -> std::string {
                if (*ex)
                    return utf16_to_utf8((*ex)->get_prefix());
                return velmo_ex_t::get(id, L"") ? "" : "an id without an object";
            }};
}

attempt_t push_handler()
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"allocation_test."), L"");
    const auto first = boost::make_shared<base_handler_t>();
    const auto second = boost::make_shared<base_handler_t>();
    ex->push_handler(first);
    return {[=] { ex->push_handler(second); },
            [=]() -> std::string {
                const auto top = ex->pop_handler();
                const auto next = ex->pop_handler();
                if (top == second && next == first)
                    return "pushed";
                return top == first && !next ? "" : "damaged";
            }};
}

// A message has either its former fields or the new ones.
message_ptr_t make_full_message(const std::wstring& word, int number)
{
    string_map_t texts;
    for (int i = 0; i < number; ++i)
        texts[word + L" that is too long for its string object " + std::to_wstring(i)] = word;
    const message_ptr_t message = make_message(word + L" that is too long for its string object",
                                               static_cast<message_t::severity_t>(number));
    message_t::message_content_t content = make_content(texts, texts, texts);
    content.next_arg_number = number;
    message->set_content(content);
    message->set_flags(number);
    return message;
}

std::string fields_of(const message_t& message)
{
    return message_text(message, "", ";") + std::to_string(message.get_content().next_arg_number) +
           ";" + std::to_string(message.get_flags());
}

typedef message_t::message_content_t content_t;
typedef void (*replace_t)(message_t& message, const message_t& other, const content_t& content);

void set_content(message_t& message, const message_t& /*other*/, const content_t& content)
{
    message.set_content(content);
}

void assign(message_t& message, const message_t& other, const content_t& /*content*/)
{
    message = other;
}

std::function<attempt_t()> replace_fields(replace_t replace, int former_count, int new_count)
{
    return [=]() -> attempt_t {
        const message_ptr_t message = make_full_message(L"former", former_count);
        const message_ptr_t other = make_full_message(L"new", new_count);
        const auto content = std::make_shared<content_t>(other->get_content());
        const std::string former = fields_of(*message);
        message_t replaced(*message);
        replace(replaced, *other, *content);
        const std::string expected = fields_of(replaced);
        return {[=] { replace(*message, *other, *content); },
                [=]() -> std::string {
                    const std::string fields = fields_of(*message);
                    return fields == expected ? "replaced" : fields == former ? "" : fields;
                }};
    };
}

// ---- the table

const std::vector<memory_t> cxx = {memory_t::cxx};
const std::vector<memory_t> both = {memory_t::cxx, memory_t::libxml2};

struct document_t
{
    std::string name;
    std::wstring text;
    std::string right;
};

const std::vector<document_t> documents = {
    {"all",
     L"<?xml version='1.0'?>\n<!-- before it -->\n"
     L"<msg tool='a long source that is allocated' name\xE9='v\xE9 &lt;&#233;' last='x'>"
     L"<arg name='a long name that is allocated'>and its text &amp; more</arg>\n<arg/>"
     L"<e a='1'>x<f>y</f><![CDATA[z]]></e><severity>error</severity>"
     L"<type>a long type that is allocated</type></msg>",
     R"(type "a long type that is allocated";severity error;attribute "last" = "x";)"
     "attribute \"name\\u00E9\" = \"v\\u00E9 <\\u00E9\";"
     R"(attribute "tool" = "a long source that is allocated";)"
     R"(arg "a long name that is allocated" = "and its text & more";arg "arg1" = "";)"
     R"(element "e" = "xyz";)"},
    {"declarations",
     L"<!DOCTYPE msg [<!ENTITY e 'an entity&apos;s text'><!ENTITY f 'a &e; b'>"
     L"<!ATTLIST msg tool CDATA 'a default'>]>"
     L"<msg name='&e;'><arg name='&e;'>&f; and &e;</arg><type>&e;</type></msg>",
     R"(type "an entity's text";severity none;attribute "name" = "an entity's text";)"
     R"(arg "an entity's text" = "a an entity's text b and an entity's text";)"},
    {"unknown_namespaces", L"<msg tool='a'><e a:b='x'>c</e><d:arg>t</d:arg></msg>",
     R"(type "";severity none;attribute "tool" = "a";)"
     R"(element "d:arg" = "t";element "e" = "c";)"},
    {"chunks", L"<msg a='" + long_text + L"'><e>" + long_text + L"&lt;</e></msg>",
     R"(type "";severity none;attribute "a" = ")" + std::string(9000, 'l') +
         R"(";element "e" = ")" + std::string(9000, 'l') + R"(<";)"},
};

const std::vector<operation_t> others = {
    {"generate_id", cxx, generate_id, "a long enough base to be allocated "},
    {"get", cxx, get_ex, "a long enough prefix to be allocated"},
    {"push_handler", cxx, push_handler, "pushed"},
    {"set_content_with_more", cxx, replace_fields(set_content, 1, 4), "replaced"},
    {"set_content_with_less", cxx, replace_fields(set_content, 4, 1), "replaced"},
    {"assign_more", cxx, replace_fields(assign, 1, 4), "replaced"},
    {"assign_less", cxx, replace_fields(assign, 4, 1), "replaced"},
    {"encode", cxx,
     encode(make_content({{L"tool", L"x"}, {L"name\xE9", L"a \"value\" & more"}},
                         {{L"a", L"1 < 2"}, {L"", L"unnamed"}}, {{L"e", L"text"}})),
     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
     "<msg name\xC3\xA9=\"a &quot;value&quot; &amp; more\" tool=\"x\">\n"
     " <arg name=\"\">unnamed</arg>\n <arg name=\"a\">1 &lt; 2</arg>\n <e>text</e>\n"
     " <type></type>\n <severity>WARNING</severity>\n</msg>\n"},
    {"encode_a_long_text", cxx,
     encode(make_content({{L"a", long_text}}, {}, {{L"e", long_text + L"<"}})),
     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<msg a=\"" + std::string(9000, 'l') +
         "\">\n <e>" + std::string(9000, 'l') +
         "&lt;</e>\n <type></type>\n <severity>WARNING</severity>\n</msg>\n"},
};

// With white space appended the document is long, and is read in another way.
std::vector<operation_t> make_operations()
{
    std::vector<operation_t> operations = others;
    for (const document_t& one : documents) {
        operations.push_back({"decode_" + one.name, both, decode(one.text), one.right});
        operations.push_back({"decode_long_" + one.name, both,
                              decode(one.text + std::wstring(65536, L' ')), one.right});
    }
    return operations;
}

} // namespace

TEST_P(allocation_test, a_failed_allocation_never_gives_a_wrong_result)
{
    fail_each_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(messages, allocation_test, testing::ValuesIn(cases_of(make_operations())),
                         name_of_case);
