#pragma once

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// A text as XML 1.0 can carry it. One object takes text after text, so that its memory is used
/// again.
class xml_text_t
{
public:
    xml_text_t() = default;
    explicit xml_text_t(const std::wstring& text) { assign(text); }

    /// Takes the text, with U+FFFD for each character that XML 1.0 cannot carry.
    void assign(const std::wstring& text);

    const std::string& utf8() const { return m_utf8; }
    /// Whether a writer escapes none of it: it is printable ASCII without markup.
    bool is_plain() const { return m_is_plain; }

private:
    std::string m_utf8;
    bool m_is_plain = true;
};

/// Whether the text is a name as XML 1.0 knows it in its fifth edition; its length does not matter.
bool is_xml_name(const std::wstring& text);

/// How many bytes the writer makes of an attribute's value.
std::size_t size_as_xml_attribute(const xml_text_t& value);

} // namespace velmoext_1_4_8
