#include "encoding/element_composer.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "xml/characters.h"
#include "xml/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmoext_1_4_8
{
namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;
namespace names = element_names;

// As libxml2's writer escapes them: in an attribute, white space too would not survive a reader.
std::string_view escape_in_text(wchar_t character)
{
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '"':
        return "&quot;";
    case '\r':
        return "&#13;";
    default:
        return std::string_view();
    }
}

std::string_view escape_in_attribute(wchar_t character)
{
    switch (character) {
    case '\n':
        return "&#10;";
    case '\t':
        return "&#9;";
    default:
        return escape_in_text(character);
    }
}

// Units that are checked together.
constexpr std::size_t block_size = 8;

// Returns whether the block is plain; what it is copied to is unspecified if not.
template <typename Char>
bool copy_plain_block(const wchar_t* from, Char* to)
{
    // Without comparisons, so that compilers vectorize the loop.
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i != block_size; ++i) {
        const auto unit = static_cast<std::uint32_t>(from[i]);
        bits |= (0x7FU - unit) | (unit - ' ') | ((unit ^ '"') - 1U) | ((unit ^ '&') - 1U) |
                ((unit ^ '<') - 1U) | ((unit ^ '>') - 1U);
    }
    for (std::size_t i = 0; i != block_size; ++i)
        to[i] = static_cast<Char>(from[i]);
    return bits >> 31U == 0;
}

// Copies the characters up to the first one that is not plain. Returns how many.
template <typename Char>
std::size_t copy_plain(const std::wstring& text, Char* to)
{
    std::size_t count = 0;
    while (text.size() - count >= block_size && copy_plain_block(&text[count], to + count))
        count += block_size;
    for (; count != text.size() && is_plain(text[count]); ++count)
        to[count] = static_cast<Char>(text[count]);
    return count;
}

// Returns the text as it reads in a document, before anything is escaped.
template <typename Char>
std::basic_string<Char> convert(const std::wstring& text)
{
    if constexpr (std::is_same_v<Char, char>)
        return xml_utf8(text);
    else
        return utf8_to_wide(xml_utf8(text));
}

// Joins texts to a constant.
template <typename Char, std::size_t... Sizes>
constexpr auto join(const char (&... texts)[Sizes])
{
    std::array<Char, (0 + ... + (Sizes - 1))> joined = {};
    std::size_t at = 0;
    const auto add = [&](const char* text, std::size_t size) {
        for (std::size_t i = 0; i != size; ++i)
            joined.at(at++) = static_cast<Char>(text[i]);
    };
    (add(texts, Sizes - 1), ...);
    return joined;
}

// libxml2 splits a name at its first two colons. If a name is between them, what follows the
// second one must begin a name too, or the document is malformed.
bool can_be_split(const std::wstring& name)
{
    const std::size_t first = name.find(L':');
    const std::size_t second = first == std::wstring::npos ? first : name.find(L':', first + 1);
    if (first == 0 || second == std::wstring::npos || second + 1 == name.size())
        return true;
    return is_xml_name(name.substr(second + 1)) ||
           !is_xml_name(name.substr(first + 1, second - first - 1));
}

bool is_writable_name(const std::wstring& key)
{
    return is_xml_name(key) && can_be_split(key);
}

// Composes in UTF-8, or in wide text.
template <typename Char>
class composer_t
{
public:
    composer_t(std::size_t depth, text_buffer_t<Char>& out)
        : m_depth(depth), m_out(out), m_begin(out.data()), m_size(out.size()), m_room(m_size)
    {}

    void compose(const message_t& message)
    {
        static constexpr auto begin = join<Char>("<", names::msg);
        static constexpr auto begin_end = join<Char>(">\n");
        static constexpr auto end = join<Char>("</", names::msg, ">\n");
        static constexpr auto type_begin = join<Char>("<", names::type, ">");
        static constexpr auto type_end = join<Char>("</", names::type, ">\n");
        const message_t::message_content_t& content = message_access_t::content(message);
        prefetch_texts(content.attributes, content.attributes.begin());
        prefetch_texts(content.args, content.args.begin());
        prefetch_texts(content.elements, content.elements.begin());
        __builtin_prefetch(message_access_t::type(message).data());
        append_indent(m_depth);
        append(begin);
        const bool is_complete = append_attributes(content.attributes);
        append(begin_end);
        if (is_complete) {
            append_args(content.args);
            append_elements(content.elements);
        }
        append_indent(m_depth + 1);
        append(type_begin);
        append_text(message_access_t::type(message), escape_in_text);
        append(type_end);
        append_severity(message.get_severity());
        append_indent(m_depth);
        append(end);
        m_out.resize(m_size);
    }

private:
    // Returns room for that many characters, at the end of what is composed.
    Char* provide(std::size_t count)
    {
        if (m_room - m_size < count)
            grow(count);
        return m_begin + m_size;
    }

    [[gnu::noinline]] void grow(std::size_t count)
    {
        m_out.resize(std::max(m_out.capacity(), 2 * (m_size + count)),
                     boost::container::default_init);
        m_begin = m_out.data();
        m_room = m_out.size();
    }

    // Takes texts of characters that each fit into one of the document's.
    template <typename Text>
    void append(const Text& text)
    {
        std::copy(text.begin(), text.end(), provide(text.size()));
        m_size += text.size();
    }

    void append_indent(std::size_t depth)
    {
        std::fill_n(provide(depth), depth, ' ');
        m_size += depth;
    }

    // The nodes of a map and their texts are apart in memory, and fetching them takes longer than
    // the rest. So while one text is appended, the next one and the node after it are fetched.
    static void prefetch_texts(const string_map_t& texts, string_map_t::const_iterator at)
    {
        if (at != texts.end()) {
            __builtin_prefetch(at->first.data());
            __builtin_prefetch(at->second.data());
        }
    }

    static void prefetch_node(const string_map_t& texts, string_map_t::const_iterator at)
    {
        if (at != texts.end())
            __builtin_prefetch(&*at);
    }

    // Returns false when `append` did, which ends the walk.
    template <typename Append>
    static bool for_each_text(const string_map_t& texts, const Append& append)
    {
        auto next = texts.begin();
        for (auto at = texts.begin(); at != texts.end(); at = next) {
            ++next;
            prefetch_texts(texts, next);
            prefetch_node(texts, next == texts.end() ? next : std::next(next));
            if (!append(at->first, at->second))
                return false;
        }
        return true;
    }

    // Returns false at an empty key, which ends the content.
    bool append_attributes(const string_map_t& attributes)
    {
        static constexpr auto name_begin = join<Char>(" ");
        static constexpr auto value_begin = join<Char>("=\"");
        static constexpr auto value_end = join<Char>("\"");
        return for_each_text(attributes, [&](const std::wstring& key, const std::wstring& value) {
            if (is_writable_name(key) && is_first_of_name(key)) {
                append(name_begin);
                append_name(key);
                append(value_begin);
                append_text(value, escape_in_attribute);
                append(value_end);
            }
            return !key.empty();
        });
    }

    void append_args(const string_map_t& args)
    {
        static constexpr auto begin = join<Char>("<", names::arg, " ", names::arg_name, "=\"");
        static constexpr auto begin_end = join<Char>("\">");
        static constexpr auto end = join<Char>("</", names::arg, ">\n");
        for_each_text(args, [&](const std::wstring& name, const std::wstring& text) {
            append_indent(m_depth + 1);
            append(begin);
            append_text(name, escape_in_attribute);
            append(begin_end);
            append_text(text, escape_in_text);
            append(end);
            return true;
        });
    }

    // An empty key ends them.
    void append_elements(const string_map_t& elements)
    {
        static constexpr auto begin = join<Char>("<");
        static constexpr auto begin_end = join<Char>(">");
        static constexpr auto end_begin = join<Char>("</");
        static constexpr auto end = join<Char>(">\n");
        for_each_text(elements, [&](const std::wstring& key, const std::wstring& text) {
            if (is_writable_name(key)) {
                append_indent(m_depth + 1);
                append(begin);
                append_name(key);
                append(begin_end);
                append_text(text, escape_in_text);
                append(end_begin);
                append_name(key);
                append(end);
            }
            return !key.empty();
        });
    }

    void append_severity(message_t::severity_t severity)
    {
        static constexpr auto begin = join<Char>("<", names::severity, ">");
        static constexpr auto end = join<Char>("</", names::severity, ">\n");
        const std::string_view text = severity_text(severity);
        if (text.empty())
            return;
        append_indent(m_depth + 1);
        append(begin);
        append(text);
        append(end);
    }

    void append_name(const std::wstring& name) { append_text(name, escape_in_text); }

    template <typename Escape>
    void append_text(const std::wstring& text, const Escape& escape)
    {
        const std::size_t count = copy_plain(text, provide(text.size()));
        m_size += count;
        if (count != text.size())
            append_escaped(convert<Char>(text.substr(count)), escape);
    }

    template <typename Escape>
    void append_escaped(const std::basic_string<Char>& text, const Escape& escape)
    {
        for (const Char character : text) {
            const std::string_view escaped = escape(character);
            if (escaped.empty())
                append(std::basic_string_view<Char>(&character, 1));
            else
                append(escaped);
        }
    }

    // A character beyond the BMP can be one element of a key or two, so that two keys can have the
    // same name.
    bool is_first_of_name(const std::wstring& key)
    {
        const bool is_ambiguous = std::any_of(key.begin(), key.end(), [](wchar_t unit) {
            return static_cast<std::uint32_t>(unit) >= 0xD800;
        });
        return !is_ambiguous || m_ambiguous_names.insert(xml_utf8(key)).second;
    }

    const std::size_t m_depth;
    text_buffer_t<Char>& m_out;
    Char* m_begin;
    std::size_t m_size; ///< of what is composed
    std::size_t m_room; ///< the size of m_out
    std::set<std::string> m_ambiguous_names;
};

} // namespace

void append_message_element(const message_t& message, std::size_t depth,
                            text_buffer_t<char>& document)
{
    composer_t<char>(depth, document).compose(message);
}

void prefetch_message(const message_t& message)
{
    const message_t::message_content_t& content = message_access_t::content(message);
    for (const string_map_t* texts : {&content.attributes, &content.args, &content.elements})
        if (!texts->empty())
            __builtin_prefetch(&*texts->begin());
}

std::wstring compose_document(const message_t& message)
{
    static constexpr auto declaration =
        join<wchar_t>("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    text_buffer_t<wchar_t> document(declaration.begin(), declaration.end());
    composer_t<wchar_t>(0, document).compose(message);
    return std::wstring(document.data(), document.size());
}

} // namespace velmoext_1_4_8
