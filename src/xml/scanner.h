#pragma once

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// One attribute of a start tag as it is written: nothing is decoded.
struct attribute_t
{
    std::string_view name;
    std::string_view value; ///< without its quotes
};

/// Walks over attributes, those of a start tag or of an XML declaration, in linear time.
class attribute_scanner_t
{
public:
    attribute_scanner_t() = default;
    /// Starts after the tag's name. Blanks before an attribute are required, unless it is one of
    /// an XML declaration: libxml2 does without some of those.
    attribute_scanner_t(const char* begin, const char* end, bool requires_blanks = true)
        : m_at(begin), m_end(end), m_requires_blanks(requires_blanks)
    {}

    /// Moves to the next attribute. False at the first byte that begins none, and when the text
    /// ends within one; position() is that byte or the text's end.
    bool next(attribute_t& attribute);

    const char* position() const { return m_at; }

private:
    const char* m_at = nullptr;
    const char* m_end = nullptr;
    bool m_requires_blanks = true;
};

/// Splits an XML document into its tokens, in linear time and without an allocation.
///
/// Finds the end of each construct of XML, quotes and nesting included. Checks neither names nor
/// characters nor that tags match. A document that is well-formed is split as XML says.
class scanner_t
{
public:
    enum class token_t
    {
        text,
        start_tag, ///< also of an element without an end tag, see is_empty_element()
        end_tag,
        comment,
        section,     ///< of character data
        instruction, ///< or the XML declaration
        document_type,
        malformed,  ///< no document continues so at position(); nothing follows
        unfinished, ///< the text ends within a token; nothing follows
        end
    };

    /// The text must outlive the scanner.
    explicit scanner_t(std::string_view text)
        : m_at(text.data()), m_end(text.data() + text.size()), m_begin(m_at)
    {}

    /// Moves to the next token. Of a start tag, attributes that were not asked for are passed over.
    token_t next();

    /// Moves to the next attribute of the start tag that next() returned. Returns false after the
    /// last one.
    bool next_attribute(attribute_t& attribute);

    /// Passes over the attributes that are left; the start tag is complete then. Returns start_tag,
    /// or malformed or unfinished as next() would. No effect after another token.
    token_t finish_start_tag();

    /// Requires a finished start tag.
    bool is_empty_element() const { return m_is_empty_element; }

    /// The name of a tag, or the target of an instruction.
    std::string_view name() const { return m_name; }

    /// The token's bytes as far as they were passed over.
    std::string_view token() const
    {
        return std::string_view(m_begin, static_cast<std::size_t>(m_at - m_begin));
    }

    /// The bytes passed over so far, this token included.
    const char* position() const { return m_at; }

private:
    token_t scan_markup();
    token_t scan_declaration();
    token_t scan_document_type();
    token_t scan_end_tag();
    token_t scan_until(token_t token, std::string_view begin, std::string_view end);
    token_t scan_comment();
    token_t scan_xml_declaration();
    token_t stop(token_t token, const char* at);

    const char* m_at;
    const char* m_end;
    const char* m_begin; ///< of the token
    std::string_view m_name;
    attribute_scanner_t m_attributes;
    bool m_is_in_start_tag = false;
    bool m_is_empty_element = false;
};

/// The figures of a document type that determine the cost of its parse.
struct document_type_facts_t
{
    std::size_t defaults = 0;            ///< of attributes
    std::size_t declared_attributes = 0; ///< at least as many as there are
    std::size_t declared_ids = 0;        ///< attributes of the type ID
    bool has_parameter_entity_references = false;
};

/// Requires a token that next() returned as a document type, or the beginning of one.
document_type_facts_t scan_document_type(std::string_view document_type);

} // namespace velmoext_1_4_8
