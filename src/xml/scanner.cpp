#include "xml/scanner.h"

#include "xml/characters.h"

#include <cstddef>
#include <cstring>

namespace velmoext_1_4_8
{
namespace
{

std::string_view view(const char* begin, const char* end)
{
    return std::string_view(begin, static_cast<std::size_t>(end - begin));
}

bool begins_with(const char* at, const char* end, std::string_view prefix)
{
    return static_cast<std::size_t>(end - at) >= prefix.size() &&
           std::memcmp(at, prefix.data(), prefix.size()) == 0;
}

// Returns whether the text could still become the prefix if more of it followed.
bool ends_within(const char* at, const char* end, std::string_view prefix)
{
    const auto size = static_cast<std::size_t>(end - at);
    return size < prefix.size() && std::memcmp(at, prefix.data(), size) == 0;
}

const char* find(const char* at, const char* end, char character)
{
    const void* const found = std::memchr(at, character, static_cast<std::size_t>(end - at));
    return found ? static_cast<const char*>(found) : end;
}

// Returns the position after the first `closing`, null when there is none.
const char* find_after(const char* at, const char* end, std::string_view closing)
{
    const std::size_t found = view(at, end).find(closing);
    return found == std::string_view::npos ? nullptr : at + found + closing.size();
}

const char* skip_blanks(const char* at, const char* end)
{
    while (at != end && is_blank(*at))
        ++at;
    return at;
}

const char* skip_name(const char* at, const char* end)
{
    while (at != end && !ends_name(*at))
        ++at;
    return at;
}

// Passes over the comment or instruction that begins here: null when it does not end, `at` itself
// when neither begins here.
const char* skip_remark(const char* at, const char* end)
{
    if (begins_with(at, end, "<!--"))
        return find_after(at + 4, end, "-->");
    return begins_with(at, end, "<?") ? find_after(at + 2, end, "?>") : at;
}

// Passes over a literal or a remark in a document type, or over one byte.
const char* skip_item(const char* at, const char* end)
{
    if (*at == '"' || *at == '\'') {
        const char* const closing = find(at + 1, end, *at);
        return closing == end ? nullptr : closing + 1;
    }
    const char* const after = *at == '<' ? skip_remark(at, end) : at;
    return after == at ? at + 1 : after;
}

// Looks through the declarations of a document type, literals and remarks apart.
class document_type_scanner_t
{
public:
    explicit document_type_scanner_t(std::string_view text)
        : m_at(text.data()), m_end(m_at + text.size())
    {}

    document_type_facts_t scan()
    {
        while (m_at && m_at != m_end) {
            inspect_item();
            m_at = skip_item(m_at, m_end);
        }
        return m_facts;
    }

private:
    enum class declaration_t
    {
        other,
        attributes,
        internal_entity,
    };

    void inspect_item()
    {
        switch (*m_at) {
        case '<':
            m_declaration = begins_with(m_at, m_end, "<!ATTLIST")  ? declaration_t::attributes
                            : begins_with(m_at, m_end, "<!ENTITY") ? declaration_t::internal_entity
                                                                   : declaration_t::other;
            break;
        case 'S':
        case 'P':
            if (m_declaration == declaration_t::internal_entity &&
                (begins_with_keyword("SYSTEM") || begins_with_keyword("PUBLIC")))
                m_declaration = declaration_t::other;
            break;
        case '"':
        case '\'':
            inspect_literal();
            break;
        case '%':
            inspect_percent(m_at);
            break;
        case '#':
            ++m_facts.declared_attributes;
            break;
        case 'I':
            m_facts.declared_ids += begins_with_keyword("ID") ? 1 : 0;
            break;
        default:
            break;
        }
    }

    // Requires not to be at the beginning of the document type.
    bool begins_with_keyword(std::string_view word) const
    {
        const auto size = static_cast<std::ptrdiff_t>(word.size());
        return begins_with(m_at, m_end, word) && is_blank(m_at[-1]) && m_end - m_at > size &&
               is_blank(m_at[size]);
    }

    // The declaration of a parameter entity has a blank there.
    void inspect_percent(const char* percent)
    {
        if (percent + 1 != m_end && !is_blank(percent[1]))
            m_facts.has_parameter_entity_references = true;
    }

    void inspect_literal()
    {
        if (m_declaration == declaration_t::attributes) {
            ++m_facts.defaults;
            ++m_facts.declared_attributes;
        }
        const char* const end = find(m_at + 1, m_end, *m_at);
        const char* const percent = find(m_at, end, '%');
        if (m_declaration == declaration_t::internal_entity && percent != end)
            inspect_percent(percent);
    }

    const char* m_at;
    const char* m_end;
    declaration_t m_declaration = declaration_t::other;
    document_type_facts_t m_facts;
};

} // namespace

bool attribute_scanner_t::next(attribute_t& attribute)
{
    const char* const name = skip_blanks(m_at, m_end);
    const bool is_separated = name != m_at || !m_requires_blanks;
    m_at = name;
    if (!is_separated || name == m_end || ends_name(*name))
        return false;
    const char* const name_end = skip_name(name, m_end);
    const char* const equals = skip_blanks(name_end, m_end);
    const char* at = equals;
    if (equals != m_end && *equals == '=')
        at = skip_blanks(equals + 1, m_end);
    if (at == m_end)
        m_at = m_end;
    if (at == m_end || at == equals || (*at != '"' && *at != '\''))
        return false;
    const char quote = *at;
    const char* const value = ++at;
    while (at != m_end && *at != quote && *at != '<')
        ++at;
    m_at = at;
    if (at == m_end || *at == '<')
        return false;
    attribute = {view(name, name_end), view(value, at)};
    ++m_at;
    return true;
}

scanner_t::token_t scanner_t::next()
{
    if (m_is_in_start_tag) {
        const token_t unfinished = finish_start_tag();
        if (unfinished != token_t::start_tag)
            return unfinished;
    }
    m_begin = m_at;
    if (m_at == m_end)
        return token_t::end;
    if (*m_at == '<')
        return scan_markup();
    m_at = find(m_at, m_end, '<');
    return token_t::text;
}

scanner_t::token_t scanner_t::scan_markup()
{
    if (m_end - m_at < 2)
        return stop(token_t::unfinished, m_end);
    switch (m_at[1]) {
    case '/':
        return scan_end_tag();
    case '!':
        return scan_declaration();
    case '?': {
        const char* const name_end = skip_name(m_at + 2, m_end);
        m_name = view(m_at + 2, name_end);
        return m_name == "xml" ? scan_xml_declaration()
                               : scan_until(token_t::instruction, "<?", "?>");
    }
    default:
        break;
    }
    const char* const name_end = skip_name(m_at + 1, m_end);
    if (name_end == m_at + 1)
        return stop(token_t::malformed, name_end);
    m_name = view(m_at + 1, name_end);
    m_attributes = attribute_scanner_t(name_end, m_end);
    m_at = name_end;
    m_is_in_start_tag = true;
    return token_t::start_tag;
}

bool scanner_t::next_attribute(attribute_t& attribute)
{
    return m_is_in_start_tag && m_attributes.next(attribute);
}

scanner_t::token_t scanner_t::finish_start_tag()
{
    if (!m_is_in_start_tag)
        return token_t::start_tag;
    attribute_t attribute;
    while (m_attributes.next(attribute)) {
    }
    m_is_in_start_tag = false;
    m_at = m_attributes.position();
    m_is_empty_element = m_at != m_end && *m_at == '/';
    if (m_is_empty_element)
        ++m_at;
    if (m_at == m_end)
        return stop(token_t::unfinished, m_end);
    if (*m_at != '>')
        return stop(token_t::malformed, m_at);
    ++m_at;
    return token_t::start_tag;
}

scanner_t::token_t scanner_t::scan_end_tag()
{
    const char* const name_end = skip_name(m_at + 2, m_end);
    m_name = view(m_at + 2, name_end);
    const char* const closing = skip_blanks(name_end, m_end);
    if (closing == m_end)
        return stop(token_t::unfinished, m_end);
    if (*closing != '>')
        return stop(token_t::malformed, closing);
    m_at = closing + 1;
    return token_t::end_tag;
}

scanner_t::token_t scanner_t::scan_declaration()
{
    static constexpr std::string_view comment = "<!--";
    static constexpr std::string_view section = "<![CDATA[";
    static constexpr std::string_view document_type = "<!DOCTYPE";
    if (begins_with(m_at, m_end, comment))
        return scan_comment();
    if (begins_with(m_at, m_end, section))
        return scan_until(token_t::section, section, "]]>");
    if (begins_with(m_at, m_end, document_type))
        return scan_document_type();
    const bool is_truncated = ends_within(m_at, m_end, comment) ||
                              ends_within(m_at, m_end, section) ||
                              ends_within(m_at, m_end, document_type);
    return is_truncated ? stop(token_t::unfinished, m_end) : stop(token_t::malformed, m_at + 2);
}

scanner_t::token_t scanner_t::scan_xml_declaration()
{
    attribute_scanner_t attributes(m_name.data() + m_name.size(), m_end, false);
    attribute_t attribute;
    while (attributes.next(attribute)) {
    }
    const char* const at = attributes.position();
    if (ends_within(at, m_end, "?>"))
        return stop(token_t::unfinished, m_end);
    if (!begins_with(at, m_end, "?>"))
        return stop(token_t::malformed, at);
    m_at = at + 2;
    return token_t::instruction;
}

// Two hyphens in a comment end it or are a fault.
scanner_t::token_t scanner_t::scan_comment()
{
    const char* const after = find_after(m_at + 4, m_end, "--");
    if (!after || after == m_end)
        return stop(token_t::unfinished, m_end);
    if (*after != '>')
        return stop(token_t::malformed, after);
    m_at = after + 1;
    return token_t::comment;
}

// A '>' ends it unless the internal subset is open, which its bracket ends. libxml2 takes a subset
// that begins right after the '>' too.
scanner_t::token_t scanner_t::scan_document_type()
{
    bool is_in_subset = false;
    bool had_subset = false;
    const char* at = m_at + 1;
    while (at && at != m_end &&
           (is_in_subset || *at != '>' || (!had_subset && begins_with(at, m_end, ">[")))) {
        if (*at == '[' || *at == ']')
            is_in_subset = *at == '[';
        had_subset = had_subset || is_in_subset;
        at = skip_item(at, m_end);
    }
    if (!at || at == m_end)
        return stop(token_t::unfinished, m_end);
    m_at = at + 1;
    return token_t::document_type;
}

scanner_t::token_t scanner_t::scan_until(token_t token, std::string_view begin,
                                         std::string_view end)
{
    const char* const after = find_after(m_at + begin.size(), m_end, end);
    if (!after)
        return stop(token_t::unfinished, m_end);
    m_at = after;
    return token;
}

scanner_t::token_t scanner_t::stop(token_t token, const char* at)
{
    m_at = at;
    m_end = at;
    return token;
}

document_type_facts_t scan_document_type(std::string_view document_type)
{
    return document_type_scanner_t(document_type).scan();
}

} // namespace velmoext_1_4_8
