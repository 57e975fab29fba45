#include "own_memory.h"
#include "run_threads.h"
#include "scratch_folder.h"
#include "usage.h"

#include <basekit2/variant_bag.h>

#include <rova/debug.h>
#include <rova/strings.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace
{

using basekit2::load_failed;
using basekit2::load_variant_bag2;
using basekit2::variant_bag_t;
using basekit2::variant_t;
using ROVA_2_18::debug::assert_handler_t;
using ROVA_2_18::debug::set_assert_handler;
using ROVA_2_18::strings::utf16_to_utf8;
using namespace std::string_literals;

std::string reported;

void on_assertion(const char* expression, const char*, int, const char*)
{
    reported += expression;
}

class reports_scope_t
{
public:
    reports_scope_t() : m_former(set_assert_handler(on_assertion)) { reported.clear(); }
    reports_scope_t(const reports_scope_t&) = delete;
    reports_scope_t& operator=(const reports_scope_t&) = delete;
    ~reports_scope_t() { set_assert_handler(m_former); }

private:
    assert_handler_t m_former;
};

/// Returns each value as name=[text] and each bag as name(content), in the order of the iteration.
std::string text_of(const variant_bag_t& bag)
{
    std::string text;
    for (auto at = bag.begin_values(); !at.at_end(); at.next())
        text += utf16_to_utf8(at.get_name()) + "=[" +
                utf16_to_utf8(at.get_value().get<std::wstring>()) + "]";
    for (auto at = bag.begin_bags(); !at.at_end(); at.next())
        text += utf16_to_utf8(at.get_name()) + "(" + text_of(at.get_value()) + ")";
    return text;
}

variant_bag_t make_former_bag()
{
    variant_bag_t bag;
    bag.add_value(L"before", L"1");
    bag.add_bag(L"child").add_value(L"", L"2");
    return bag;
}

const std::string former_text = "before=[1]child(=[2])";

std::string repeated(const std::string& unit, std::size_t times)
{
    std::string text;
    text.reserve(unit.size() * times);
    for (std::size_t i = 0; i != times; ++i)
        text += unit;
    return text;
}

std::string nested(std::size_t depth)
{
    return repeated("<a>", depth) + repeated("</a>", depth);
}

std::string attributes(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i != count; ++i)
        text += " n" + std::to_string(i) + "=''";
    return text;
}

std::string three_letters(std::size_t number)
{
    const auto letter = [](std::size_t value) {
        return static_cast<char>('a' + value % 26);
    };
    return {letter(number / 676), letter(number / 26), letter(number)};
}

/// Returns one tag of nearly 16 MiB: as many names as a file may have, then the last one
/// repeatedly.
std::string tag_with_repeats()
{
    const std::size_t names = 16000;
    std::string tag = "<bag";
    for (std::size_t i = 0; i != names; ++i)
        tag += " " + three_letters(i) + "=''";
    const std::string repeat = " " + three_letters(names - 1) + "=''";
    const std::size_t remaining = (std::size_t{16} << 20U) - tag.size() - 2;
    return tag + repeated(repeat, remaining / repeat.size()) + "/>";
}

std::string named_elements(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i != count; ++i)
        text += "<n" + std::to_string(i) + "/>";
    return text;
}

/// Returns the text in UTF-16LE, after a byte order mark.
std::string utf16(const std::wstring& text)
{
    std::string bytes = "\xFF\xFE";
    for (const wchar_t unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>((unit >> 8) & 0xFF));
    }
    return bytes;
}

class basekit2_variant_bag_test : public testing::Test
{
protected:
    /// Returns the content of the file, or "failed".
    /// Returns whether the bytes can be loaded. Use for results that are too long to print.
    bool is_loaded(const std::string& bytes) const { return load_bytes(bytes) != "failed"; }

    std::string load_bytes(const std::string& bytes, const wchar_t* root = nullptr) const
    {
        m_folder.write("file.xml", bytes);
        return load_name(m_folder.wide_name("file.xml"), root);
    }
    static std::string load_name(const std::wstring& name, const wchar_t* root = nullptr,
                                 bool allow_missing = false)
    {
        variant_bag_t bag = make_former_bag();
        const std::uint32_t status = load_variant_bag2(bag, name, root, allow_missing);
        if (status == 0)
            return text_of(bag);
        EXPECT_EQ(status, load_failed);
        EXPECT_EQ(text_of(bag), former_text);
        return "failed";
    }
    void bind_socket(const std::string& leaf) const
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const std::string name = m_folder.name(leaf);
        ASSERT_LT(name.size(), sizeof address.sun_path);
        name.copy(&address.sun_path[0], name.size());
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(descriptor);
    }

    scratch_folder_t m_folder;
};

/// Returns all that the action writes to the process's two outputs.
template <typename Action>
std::string printed_by(const Action& action)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    const std::string error = testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout() + error;
}

std::atomic<int> host_calls{0};

void on_generic_error(void* /*context*/, const char* /*format*/, ...) // NOLINT(cert-dcl50-cpp)
{
    ++host_calls;
}

// Constant since libxml2 2.12.
#if LIBXML_VERSION >= 21200
typedef const xmlError xml_error_t;
#else
typedef xmlError xml_error_t;
#endif

void on_structured_error(void* /*context*/, xml_error_t* /*error*/)
{
    ++host_calls;
}

/// The test's own handlers, as a host may have set them on its thread.
class host_handlers_scope_t
{
public:
    host_handlers_scope_t()
    {
        host_calls = 0;
        xmlSetGenericErrorFunc(&m_context, on_generic_error);
        xmlSetStructuredErrorFunc(this, on_structured_error);
    }
    host_handlers_scope_t(const host_handlers_scope_t&) = delete;
    host_handlers_scope_t& operator=(const host_handlers_scope_t&) = delete;
    ~host_handlers_scope_t()
    {
        xmlSetGenericErrorFunc(nullptr, nullptr);
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        xmlResetLastError();
    }

    bool are_set() const
    {
        return xmlGenericError == on_generic_error && xmlGenericErrorContext == &m_context &&
               xmlStructuredError == on_structured_error && xmlStructuredErrorContext == this;
    }

private:
    int m_context = 0;
};

struct form_t
{
    const char* bytes;
    const char* result;
};

// GoogleTest looks for this name.
void PrintTo(const form_t& form, std::ostream* stream) // NOLINT(readability-identifier-naming)
{
    *stream << form.bytes;
}

class basekit2_variant_bag_forms_test : public basekit2_variant_bag_test,
                                        public testing::WithParamInterface<form_t>
{};

} // namespace

TEST(basekit2_variant_test, a_default_value_is_empty)
{
    const variant_t value;
    EXPECT_FALSE(value.can_get<const wchar_t*>());
    EXPECT_FALSE(value.can_get<std::wstring>());
    EXPECT_FALSE(value.can_get<bool>());
    EXPECT_FALSE(value.can_get<std::int64_t>());
    EXPECT_FALSE(value.can_get<double>());
}

TEST(basekit2_variant_test, a_text_can_be_read_in_both_forms_and_as_no_other_type)
{
    for (const variant_t& value : {variant_t(L"text"), variant_t(L"text"s)}) {
        EXPECT_TRUE(value.can_get<const wchar_t*>());
        EXPECT_TRUE(value.can_get<std::wstring>());
        EXPECT_FALSE(value.can_get<bool>());
        EXPECT_FALSE(value.can_get<std::int64_t>());
        EXPECT_FALSE(value.can_get<double>());
        EXPECT_STREQ(value.get<const wchar_t*>(), L"text");
        EXPECT_EQ(value.get<std::wstring>(), L"text");
    }
}

TEST(basekit2_variant_test, a_boolean_is_not_a_number_or_a_text)
{
    const variant_t value(true);
    EXPECT_TRUE(value.get<bool>());
    EXPECT_FALSE(value.can_get<std::int64_t>());
    EXPECT_FALSE(value.can_get<double>());
    EXPECT_FALSE(value.can_get<std::wstring>());
    EXPECT_FALSE(value.can_get<const wchar_t*>());
}

TEST(basekit2_variant_test, an_integer_keeps_all_its_bits)
{
    for (const std::int64_t number : {INT64_MIN, INT64_MAX, std::int64_t{0}, std::int64_t{-1}}) {
        const variant_t value(number);
        EXPECT_EQ(value.get<std::int64_t>(), number);
        EXPECT_FALSE(value.can_get<bool>());
        EXPECT_FALSE(value.can_get<double>());
    }
}

TEST(basekit2_variant_test, a_floating_point_number_is_not_an_integer)
{
    const variant_t value(1.0);
    EXPECT_EQ(value.get<double>(), 1.0);
    EXPECT_FALSE(value.can_get<std::int64_t>());
}

TEST(basekit2_variant_test, a_null_text_is_an_empty_text)
{
    const variant_t value(static_cast<const wchar_t*>(nullptr));
    EXPECT_STREQ(value.get<const wchar_t*>(), L"");
    EXPECT_EQ(value.get<std::wstring>(), L"");
}

TEST(basekit2_variant_test, a_text_keeps_the_characters_after_a_zero_character)
{
    EXPECT_EQ(variant_t(L"a\0b"s).get<std::wstring>(), L"a\0b"s);
}

TEST(basekit2_variant_test, reading_a_value_as_its_type_reports_nothing)
{
    const reports_scope_t reports;
    EXPECT_EQ(variant_t(L"text").get<std::wstring>(), L"text");
    EXPECT_FALSE(variant_t(false).get<bool>());
    EXPECT_EQ(reported, "");
}

TEST(basekit2_variant_test, reading_another_type_as_a_pointer_to_a_text_is_reported)
{
    const reports_scope_t reports;
    EXPECT_STREQ(variant_t(true).get<const wchar_t*>(), L"");
    EXPECT_EQ(reported, "can_get<const wchar_t*>()");
}

TEST(basekit2_variant_test, reading_another_type_as_a_text_is_reported)
{
    const reports_scope_t reports;
    EXPECT_EQ(variant_t(1.5).get<std::wstring>(), L"");
    EXPECT_EQ(reported, "can_get<std::wstring>()");
}

TEST(basekit2_variant_test, reading_another_type_as_a_boolean_is_reported)
{
    const reports_scope_t reports;
    EXPECT_FALSE(variant_t(std::int64_t{1}).get<bool>());
    EXPECT_EQ(reported, "can_get<bool>()");
}

TEST(basekit2_variant_test, reading_another_type_as_an_integer_is_reported)
{
    const reports_scope_t reports;
    EXPECT_EQ(variant_t(L"1").get<std::int64_t>(), 0);
    EXPECT_EQ(reported, "can_get<std::int64_t>()");
}

TEST(basekit2_variant_test, reading_another_type_as_a_floating_point_number_is_reported)
{
    const reports_scope_t reports;
    EXPECT_EQ(variant_t().get<double>(), 0.0);
    EXPECT_EQ(reported, "can_get<double>()");
}

TEST_F(basekit2_variant_bag_test, a_new_bag_is_empty)
{
    const variant_bag_t bag;
    EXPECT_TRUE(bag.begin_values().at_end());
    EXPECT_TRUE(bag.begin_bags().at_end());
    EXPECT_TRUE(bag.begin_by_name(L"a").at_end());
    EXPECT_FALSE(bag.has(L""));
}

TEST_F(basekit2_variant_bag_test, the_first_of_several_values_with_one_name_is_found)
{
    variant_bag_t bag;
    bag.add_value(L"a", L"1");
    bag.add_value(L"a", L"2");
    EXPECT_TRUE(bag.has(L"a"));
    EXPECT_EQ(bag.get_variant(L"a", L"0").get<std::wstring>(), L"1");
    EXPECT_EQ(text_of(bag), "a=[1]a=[2]");
}

TEST_F(basekit2_variant_bag_test, the_default_is_returned_for_a_missing_value)
{
    variant_bag_t bag;
    bag.add_bag(L"a");
    EXPECT_FALSE(bag.has(L"a"));
    EXPECT_EQ(bag.get_variant(L"a", L"default").get<std::wstring>(), L"default");
}

TEST_F(basekit2_variant_bag_test, a_value_is_returned_without_a_copy)
{
    variant_bag_t bag;
    bag.add_value(L"a", L"1");
    const variant_t missing(L"default");
    EXPECT_EQ(&bag.get_variant(L"a", missing), &bag.begin_values().get_value());
    EXPECT_EQ(&bag.get_variant(L"b", missing), &missing);
}

TEST_F(basekit2_variant_bag_test, iteration_by_name_visits_only_the_bags_of_that_name)
{
    variant_bag_t bag;
    for (const wchar_t* const name : {L"x", L"a", L"x", L"x", L"a", L"b"})
        bag.add_bag(name).add_value(L"", std::to_wstring(bag.begin_values().at_end()));
    int count = 0;
    for (auto at = bag.begin_by_name(L"a"); !at.at_end(); at.next(), ++count)
        EXPECT_EQ(at.get_name(), L"a");
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(bag.begin_by_name(L"").at_end());
}

TEST_F(basekit2_variant_bag_test, iteration_by_an_empty_name_visits_the_bags_with_that_name)
{
    variant_bag_t bag;
    bag.add_bag(L"a");
    bag.add_bag(L"").add_value(L"", L"text");
    auto at = bag.begin_by_name(L"");
    EXPECT_EQ(text_of(at.get_value()), "=[text]");
    at.next();
    EXPECT_TRUE(at.at_end());
}

TEST_F(basekit2_variant_bag_test, a_copy_is_independent_of_its_original)
{
    variant_bag_t bag;
    variant_bag_t& child = bag.add_bag(L"a");
    const variant_bag_t copy(bag);
    variant_bag_t assigned;
    assigned = bag;
    child.add_bag(L"b").add_value(L"c", L"1");
    EXPECT_EQ(text_of(bag), "a(b(c=[1]))");
    EXPECT_EQ(text_of(copy), "a()");
    EXPECT_EQ(text_of(assigned), "a()");
}

TEST_F(basekit2_variant_bag_test, a_bag_can_be_assigned_a_copy_of_its_child)
{
    variant_bag_t bag;
    variant_bag_t& child = bag.add_bag(L"a");
    child.add_value(L"v", L"1");
    child.add_bag(L"b").add_value(L"w", L"2");
    bag = bag.begin_bags().get_value();
    EXPECT_EQ(text_of(bag), "v=[1]b(w=[2])");
}

TEST_F(basekit2_variant_bag_test, a_bag_can_be_move_assigned_from_its_child)
{
    variant_bag_t bag;
    variant_bag_t& child = bag.add_bag(L"a");
    child.add_value(L"v", L"1");
    child.add_bag(L"b").add_value(L"w", L"2");
    bag = std::move(child);
    EXPECT_EQ(text_of(bag), "v=[1]b(w=[2])");
}

TEST_P(basekit2_variant_bag_forms_test, is_read_with_the_expected_content)
{
    EXPECT_EQ(load_bytes(GetParam().bytes), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    forms, basekit2_variant_bag_forms_test,
    testing::Values(
        form_t{"<r/>", ""}, form_t{"<r></r>", ""},
        form_t{"<r b='1' a=\"2\" c=''/>", "b=[1]a=[2]c=[]"},
        form_t{"<?xml version='1.0'?>\n<r> <a/> <b/><a c='1'/>\n</r>\n", "a()b()a(c=[1])"},
        form_t{"<r>text</r>", "=[text]"}, form_t{"<r>\n text \t\n</r>", "=[\n text \t\n]"},
        form_t{"<r a='1'>text<b/></r>", "a=[1]=[text]b()"},
        form_t{"<r>one<a>in</a> two <b/>three</r>", "=[one two three]a(=[in])b()"},
        form_t{"<r>one<a/> <b/>two</r>", "=[one two]a()b()"},
        form_t{"<r>a<![CDATA[<b>&amp;]]>c</r>", "=[a<b>&amp;c]"}, form_t{"<r><![CDATA[]]></r>", ""},
        form_t{"<r> \t\r\n </r>", ""}, form_t{"<r>&#32;<![CDATA[ \n]]>&#9;</r>", ""},
        form_t{"<r>&#160;</r>", "=[\xC2\xA0]"},
        form_t{"<r>&lt;&gt;&amp;&quot;&apos;&#65;&#x42;</r>", "=[<>&\"'AB]"},
        form_t{"<r a='&lt;&gt;&amp;&quot;&apos;&#65;&#38;&#x3c;'/>", "a=[<>&\"'A&<]"},
        form_t{"<r>&amp;lt;&#38;#65;</r>", "=[&lt;&#65;]"}, form_t{"<r a='&amp;lt;'/>", "a=[&lt;]"},
        form_t{"<r a='x\ny\tz&#10;'/>", "a=[x y z\n]"}, form_t{"<r>a\r\nb\rc</r>", "=[a\nb\nc]"},
        form_t{"<r \xC3\xA4='\xC3\xB6'><\xD0\xB6>\xE2\x82\xAC</\xD0\xB6></r>",
               "\xC3\xA4=[\xC3\xB6]\xD0\xB6(=[\xE2\x82\xAC])"},
        form_t{"<r><\xF0\x90\x90\x80 "
               "\xF0\x90\x90\x81='\xF0\x9F\x98\x80'>&#x1F600;</\xF0\x90\x90\x80></r>",
               "\xF0\x90\x90\x80(\xF0\x90\x90\x81=[\xF0\x9F\x98\x80]=[\xF0\x9F\x98\x80])"},
        form_t{"<x:r xmlns='u' xmlns:x='v' x:a='1'><x:b/><y:c z:d='2'/></x:r>",
               "xmlns=[u]xmlns:x=[v]x:a=[1]x:b()y:c(z:d=[2])"},
        form_t{"<r xml:lang='no language' xml:space='odd'/>",
               "xml:lang=[no language]xml:space=[odd]"},
        form_t{"<r xmlns:a='' xmlns:xml='x' a:b='1' c:b='2'/>",
               "xmlns:a=[]xmlns:xml=[x]a:b=[1]c:b=[2]"},
        form_t{"<!-- c --><?p i?><r>a<!-- c -->b<?p:q i?>c</r><!-- c --><?p?>", "=[abc]"},
        form_t{"\xEF\xBB\xBF<r>\xC3\xA4</r>", "=[\xC3\xA4]"},
        form_t{"<?xml version='1.0' encoding='ISO-8859-1'?><r \xE4='\xF6'>\xFC</r>",
               "\xC3\xA4=[\xC3\xB6]=[\xC3\xBC]"},
        form_t{"<?xml version='1.0' encoding='UTF-8' standalone='yes'?><r/>", ""}));

TEST_F(basekit2_variant_bag_test, a_file_in_utf16_is_read)
{
    EXPECT_EQ(load_bytes(utf16(L"<r \u00e4='1'>\u20ac\xD83D\xDE00</r>")),
              "\xC3\xA4=[1]=[\xE2\x82\xAC\xF0\x9F\x98\x80]");
}

TEST_F(basekit2_variant_bag_test, names_and_texts_beyond_the_bmp_are_pairs_of_elements)
{
    m_folder.write("file.xml", "<r a='\xF0\x9F\x98\x80'/>");
    variant_bag_t bag;
    EXPECT_EQ(load_variant_bag2(bag, m_folder.wide_name("file.xml"), nullptr, false), 0U);
    EXPECT_EQ(bag.get_variant(L"a", L"").get<std::wstring>(), L"\xD83D\xDE00");
}

TEST_F(basekit2_variant_bag_test, loading_replaces_the_former_content)
{
    EXPECT_EQ(load_bytes("<r a='1'/>"), "a=[1]");
}

TEST_F(basekit2_variant_bag_test, only_the_requested_root_is_read)
{
    EXPECT_EQ(load_bytes("<r>1</r>", L"r"), "=[1]");
    for (const wchar_t* const root : {L"", L"R", L"r ", L"rr", L"a:r"})
        EXPECT_EQ(load_bytes("<r>1</r>", root), "failed") << utf16_to_utf8(root);
    EXPECT_EQ(load_bytes("<a:r>1</a:r>", L"r"), "failed");
    EXPECT_EQ(load_bytes("<r><x/></r>", L"x"), "failed");
}

TEST_F(basekit2_variant_bag_test, a_root_beyond_the_bmp_is_recognized_in_either_form)
{
    EXPECT_EQ(load_bytes("<\xF0\x90\x90\x80>1</\xF0\x90\x90\x80>", L"\U00010400"), "=[1]");
    EXPECT_EQ(load_bytes("<\xF0\x90\x90\x80>1</\xF0\x90\x90\x80>", L"\xD801\xDC00"), "=[1]");
}

TEST_F(basekit2_variant_bag_test, a_file_with_any_name_is_found)
{
    for (const std::string name :
         {"\xC3\xA4 \xF0\x9F\x98\x80.xml", "http:", "-", "a%20b", "a\nb"}) {
        m_folder.write(name, "<r>1</r>");
        EXPECT_EQ(load_name(m_folder.wide_name(name)), "=[1]") << name;
    }
}

TEST_F(basekit2_variant_bag_test, a_link_to_a_file_is_followed)
{
    m_folder.write("file", "<r>1</r>");
    std::filesystem::create_symlink("file", m_folder.name("link"));
    EXPECT_EQ(load_name(m_folder.wide_name("link")), "=[1]");
}

TEST_F(basekit2_variant_bag_test, a_missing_file_is_a_failure)
{
    EXPECT_EQ(load_name(m_folder.wide_name("missing")), "failed");
    EXPECT_EQ(load_name(L""), "failed");
}

TEST_F(basekit2_variant_bag_test, a_missing_file_is_an_empty_bag_if_that_is_allowed)
{
    m_folder.write("file", "<r/>");
    std::filesystem::create_symlink("nothing", m_folder.name("dangling"));
    for (const std::string name : {"missing", "missing/file", "file/below", "dangling"})
        EXPECT_EQ(load_name(m_folder.wide_name(name), L"r", true), "") << name;
}

TEST_F(basekit2_variant_bag_test, a_file_that_exists_does_not_count_as_missing)
{
    m_folder.write("file", "<r>");
    EXPECT_EQ(load_name(m_folder.wide_name("file"), nullptr, true), "failed");
    EXPECT_EQ(load_name(m_folder.wide_name("file") + L"\0x"s, nullptr, true), "failed");
    EXPECT_EQ(load_name(m_folder.wide_name(std::string(300, 'n')), nullptr, true), "failed");
    EXPECT_EQ(load_name(m_folder.wide_name(""), nullptr, true), "failed");
}

TEST_F(basekit2_variant_bag_test, a_name_with_a_zero_character_names_no_file)
{
    m_folder.write("file", "<r/>");
    EXPECT_EQ(load_name(m_folder.wide_name("file") + L"\0"s), "failed");
    EXPECT_EQ(load_name(L"\0"s, nullptr, true), "failed");
}

TEST_F(basekit2_variant_bag_test, a_path_that_is_not_a_regular_file_is_refused_at_once)
{
    ASSERT_EQ(mkfifo(m_folder.name("fifo").c_str(), 0600), 0);
    std::filesystem::create_directory(m_folder.name("directory"));
    bind_socket("socket");
    for (const std::string name : {"fifo", "directory", "socket"})
        EXPECT_EQ(load_name(m_folder.wide_name(name), nullptr, true), "failed") << name;
    EXPECT_EQ(load_name(L"/dev/zero"), "failed");
}

TEST_F(basekit2_variant_bag_test, a_file_without_read_permission_is_refused)
{
    m_folder.write("file", "<r/>");
    ASSERT_EQ(chmod(m_folder.name("file").c_str(), 0), 0);
    const bool can_read_all = access(m_folder.name("file").c_str(), R_OK) == 0;
    EXPECT_EQ(load_name(m_folder.wide_name("file"), nullptr, true), can_read_all ? "" : "failed");
}

TEST_F(basekit2_variant_bag_test, malformed_xml_is_refused)
{
    const std::vector<std::string> files = {
        "",
        " ",
        "text",
        "\x7F"
        "ELF\x01\x02\0\0"s,
        std::string(1000, '\0'),
        "<r/><r/>",
        "<r/>text",
        "text<r/>",
        "<r>",
        "</r>",
        "<r></s>",
        "<r><a></r></a>",
        "<r a='1' a='2'/>",
        "<r a=1/>",
        "<r a/>",
        "<r a='<'/>",
        "<r a='1'b='2'/>",
        "<r>&undefined;</r>",
        "<r a='&undefined;'/>",
        "<r>&#0;</r>",
        "<r>&#xD800;</r>",
        "<r>&amp</r>",
        "<r>]]></r>",
        "<r>\x01</r>",
        "<r>\0</r>"s,
        "<r/>\0"s,
        "<r/>\0<r/>"s,
        "<r>\xFF</r>",
        "<r>\xC3</r>",
        "<r a='\xC3'/>",
        "<r><!-- -- --></r>",
        "<r><![CDATA[</r>",
        "<r/><?xml version='1.0'?>",
        " <?xml version='1.0'?><r/>",
        "<?xml version='1.0' encoding='no such'?><r/>",
        "<?xml version='2.0'?><r/>",
        utf16(L"<r>\xD83D</r>"),
        utf16(L"<r>text</r>") + "x",
    };
    for (const std::string& bytes : files)
        EXPECT_EQ(load_bytes(bytes), "failed") << testing::PrintToString(bytes);
}

TEST_F(basekit2_variant_bag_test, bytes_that_are_invalid_in_the_encoding_are_refused)
{
    for (const std::string encoding : {"US-ASCII", "EUC-JP", "Shift_JIS", "ISO-2022-JP"}) {
        const std::string head = "<?xml version='1.0' encoding='" + encoding + "'?><r>";
        EXPECT_EQ(load_bytes(head + "text</r>"), "=[text]") << encoding;
        EXPECT_EQ(load_bytes(head + "\xFF</r>"), "failed") << encoding;
        EXPECT_EQ(load_bytes(head + std::string(5000, ' ') + "\xFF</r>"), "failed") << encoding;
        EXPECT_EQ(load_bytes(head + "</r>" + std::string(5000, ' ') + "\xFF"), "failed")
            << encoding;
    }
}

TEST_F(basekit2_variant_bag_test, a_long_file_in_another_encoding_is_read_to_its_end)
{
    const std::string head = "<?xml version='1.0' encoding='ISO-8859-1'?><r>";
    const std::string blanks(200000, ' ');
    EXPECT_EQ(load_bytes(head + "\xE4" + blanks + "</r>" + blanks + "<!-- \xE4 -->" + blanks),
              "=[\xC3\xA4" + blanks + "]");
}

TEST_F(basekit2_variant_bag_test, a_file_that_is_cut_anywhere_is_refused)
{
    const std::string whole = "<?xml version='1.0'?><!-- c --><r a='1'>t&amp;&#65;<b c=\"2\"/>"
                              "<![CDATA[d]]><?p i?><e>\xC3\xA4</e></r>";
    EXPECT_EQ(load_bytes(whole), "a=[1]=[t&Ad]b(c=[2])e(=[\xC3\xA4])");
    for (std::size_t size = 0; size != whole.size(); ++size)
        EXPECT_EQ(load_bytes(whole.substr(0, size)), "failed") << size;
}

TEST_F(basekit2_variant_bag_test, a_text_after_an_error_is_refused)
{
    for (const std::string head :
         {"<r a='1' a='2'>", "<r a=1>", "<r a>", "<r><a b='1' b='2'>", "<r>&undefined;",
          "<?xml version='1.0' encoding='UTF-16'?><r>", "<?xml version='1.0' standalone='-'?><r>"})
        for (const std::string text : {"text", "<![CDATA[text]]>", " ", "&#65;"})
            EXPECT_EQ(load_bytes(head + text + "</r>"), "failed") << head << text;
}

TEST_F(basekit2_variant_bag_test, a_tag_of_repeated_attributes_is_not_read_to_its_end)
{
    const std::string bytes = tag_with_repeats();
    const std::clock_t before = std::clock();
    EXPECT_EQ(load_bytes(bytes), "failed");
    EXPECT_LT((std::clock() - before) / CLOCKS_PER_SEC, 20) << "seconds";
}

TEST_F(basekit2_variant_bag_test, a_file_with_many_errors_is_refused)
{
    EXPECT_EQ(load_bytes("<bag>" + std::string(5000000, '&')), "failed");
    EXPECT_EQ(load_bytes("<bag>" + repeated("&u;", 1000000) + "</bag>"), "failed");
}

// libxml2 scans the text once more after this error.
TEST_F(basekit2_variant_bag_test, an_error_in_a_long_file_is_refused)
{
    const own_mappings_scope_t own_mappings;
    EXPECT_EQ(load_bytes("<bag>]]>" + std::string(16000000, ' ') + "</bag>"), "failed");
}

TEST_F(basekit2_variant_bag_test, a_document_type_declaration_is_refused)
{
    m_folder.write("other.dtd", "<!ENTITY e 'text'>");
    const std::string fifo = m_folder.name("fifo"); // opening it would block forever
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::vector<std::string> types = {
        "<!DOCTYPE r>",
        "<!DOCTYPE r []>",
        "<!DOCTYPE r [<!ENTITY e 'text'>]>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM 'other.dtd'>]>",
        "<!DOCTYPE r [<!ENTITY % e SYSTEM 'other.dtd'>%e;]>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM '" + fifo + "'>]>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM '" + fifo + "'>%p;]>",
        "<!DOCTYPE r SYSTEM '" + fifo + "'>",
        "<!DOCTYPE r [<!ATTLIST r a CDATA 'default'>]>",
        "<!DOCTYPE r SYSTEM '" + m_folder.name("other.dtd") + "'>",
        "<!DOCTYPE r PUBLIC 'p' '" + m_folder.name("other.dtd") + "'>",
        "<!DOCTYPE r SYSTEM 'http://127.0.0.1:1/other.dtd'>",
        "<!DOCTYPE r [<!ENTITY a '1234567890'><!ENTITY b '" + repeated("&a;", 1000) +
            "'><!ENTITY e '" + repeated("&b;", 1000) + "'>]>",
        "<!DOCTYPE",
        "<!DOCTYPE r",
        "<!DOCTYPE r [<!ENTITY",
    };
    for (const std::string& type : types)
        for (const std::string root : {"<r/>", "<r>&e;</r>", "<r a='&e;'/>", ""})
            EXPECT_EQ(load_bytes(type + root), "failed") << type << root;
}

TEST_F(basekit2_variant_bag_test, elements_may_be_nested_256_deep)
{
    EXPECT_NE(load_bytes(nested(256)), "failed");
    EXPECT_EQ(load_bytes(nested(257)), "failed");
    EXPECT_EQ(load_bytes(nested(100000)), "failed");
}

TEST_F(basekit2_variant_bag_test, an_element_may_have_ten_thousand_attributes)
{
    EXPECT_TRUE(is_loaded("<r" + attributes(10000) + "/>"));
    EXPECT_FALSE(is_loaded("<r" + attributes(10001) + "/>"));
}

TEST_F(basekit2_variant_bag_test, a_tag_with_too_many_attributes_is_not_read_to_its_end)
{
    const velmoext_1_4_8::usage_t usage;
    EXPECT_FALSE(is_loaded("<r" + attributes(1000000) + "/>"));
    EXPECT_LT(usage.seconds(), 10);
}

TEST_F(basekit2_variant_bag_test, the_attributes_of_all_elements_together_are_limited)
{
    const std::string element = "<a" + attributes(10000) + "/>";
    EXPECT_TRUE(is_loaded("<r>" + repeated(element, 4) + "</r>"));
    EXPECT_FALSE(is_loaded("<r>" + repeated(element, 5) + "</r>"));
    EXPECT_TRUE(is_loaded("<r>" + repeated("<a" + attributes(200) + "/>", 1000) + "</r>"));
}

TEST_F(basekit2_variant_bag_test, equals_signs_of_other_elements_and_of_texts_do_not_count)
{
    const std::string text = "<a b='='>" + std::string(9000, '=') + "</a>";
    EXPECT_TRUE(is_loaded("<r>" + repeated(text, 20) + "</r>"));
    EXPECT_TRUE(is_loaded(repeated("<!-- key = value =-->", 7000) + "<r/>"));
    EXPECT_TRUE(is_loaded("<r>" + repeated("<?p " + std::string(9000, '=') + "?>", 3) + "</r>"));
}

TEST_F(basekit2_variant_bag_test, different_names_may_take_256_kibibytes)
{
    EXPECT_TRUE(is_loaded("<r>" + named_elements(35000) + "</r>"));
    EXPECT_FALSE(is_loaded("<r>" + named_elements(70000) + "</r>"));
}

TEST_F(basekit2_variant_bag_test, one_name_may_be_used_any_number_of_times)
{
    const std::string entry = "<entry_with_a_long_name and_a_long_attribute='1'/>";
    EXPECT_NE(load_bytes("<r>" + repeated(entry, 10000) + "</r>"), "failed");
}

TEST_F(basekit2_variant_bag_test, a_value_may_have_ten_million_bytes)
{
    EXPECT_EQ(load_bytes("<r>" + std::string(10000000, 'x') + "</r>").size(), 10000003U);
    EXPECT_EQ(load_bytes("<r>" + std::string(10000001, 'x') + "</r>"), "failed");
    EXPECT_NE(load_bytes("<r a='" + std::string(9990000, 'x') + "'/>"), "failed");
    EXPECT_EQ(load_bytes("<r a='" + std::string(10010000, 'x') + "'/>"), "failed");
}

TEST_F(basekit2_variant_bag_test, a_file_may_have_16_mebibytes)
{
    const std::string element = "<a><!--" + std::string(65522, 'x') + "--></a>";
    const std::string largest = "<r>" + repeated(element, 255) + std::string(65529, ' ') + "</r>";
    ASSERT_EQ(largest.size(), std::size_t{16} << 20U);
    EXPECT_EQ(load_bytes(largest), repeated("a()", 255));
    EXPECT_EQ(load_bytes(largest + " "), "failed");
}

TEST_F(basekit2_variant_bag_test, nothing_is_printed)
{
    const std::vector<std::string> files = {"<r/>",
                                            "",
                                            "<r>",
                                            "<r a='1' a='2'/>",
                                            "<!DOCTYPE r><r/>",
                                            "<r>\xFF</r>",
                                            "<r xmlns:a='' c:b='2' xml:lang='-'/>",
                                            "<?xml version='1.1' encoding='no such'?><r/>",
                                            utf16(L"<r>\xD83D</r>"),
                                            "<r>" + named_elements(20000) + "</r>",
                                            nested(300)};
    EXPECT_EQ(printed_by([&] {
                  for (const std::string& bytes : files)
                      load_bytes(bytes);
                  load_name(m_folder.wide_name("missing"));
              }),
              "");
}

TEST_F(basekit2_variant_bag_test, the_libxml2_handlers_of_the_thread_stay_and_are_not_called)
{
    const host_handlers_scope_t handlers;
    for (const std::string bytes : {"<r/>", "<r>", "<!DOCTYPE r><r/>", "<r a='1' a='2'/>"}) {
        load_bytes(bytes);
        EXPECT_TRUE(handlers.are_set()) << bytes;
    }
    EXPECT_EQ(host_calls, 0);
}

TEST_F(basekit2_variant_bag_test, no_error_of_the_parse_stays_on_the_thread)
{
    xmlResetLastError();
    EXPECT_EQ(load_bytes("<r>"), "failed");
    EXPECT_EQ(xmlGetLastError(), nullptr);
}

TEST_F(basekit2_variant_bag_test, the_hosts_defaults_for_libxml2_change_nothing)
{
    const int keep = xmlKeepBlanksDefault(0);
    EXPECT_EQ(load_bytes("<r a='&amp;'>a <b/> <b/> c&amp;</r>"), "a=[&]=[a   c&]b()b()");
    xmlKeepBlanksDefault(keep);
}

TEST_F(basekit2_variant_bag_test, several_threads_may_load_at_once)
{
    m_folder.write("good", "<r a='1'>text<b/></r>");
    m_folder.write("bad", "<r a='1'>text<b></r>");
    run_threads(8, [&](int) {
        for (int round = 0; round != 50; ++round) {
            EXPECT_EQ(load_name(m_folder.wide_name("good"), L"r"), "a=[1]=[text]b()");
            EXPECT_EQ(load_name(m_folder.wide_name("bad"), L"r"), "failed");
        }
    });
}

TEST_F(basekit2_variant_bag_test, no_descriptor_stays_open)
{
    const auto count = [] {
        const std::filesystem::directory_iterator open("/proc/self/fd");
        return std::distance(begin(open), end(open));
    };
    const auto before = count();
    load_bytes("<r/>");
    load_bytes("<r>");
    load_name(m_folder.wide_name(""));
    EXPECT_EQ(count(), before);
}
