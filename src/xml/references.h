#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmoext_1_4_8
{

/// Returns whether the text of an element is ASCII without markup, references and carriage returns,
/// so that a reader of XML sees it as it is written.
bool is_plain_text(std::string_view text);

/// Returns the offset at which the text of an element is malformed in a document without a document
/// type, the text's size when nowhere. Leaves to libxml2 what is not ASCII, and a reference of many
/// digits with the references after it.
std::size_t find_fault(std::string_view text);

/// The kind of text that has the references.
enum class text_context_t
{
    element,
    attribute ///< a reader converts line ends and tabs to blanks, unless they are references
};

/// Decodes the references of a text as a reader of XML does, into `wide`. `ampersand` replaces a
/// reference to '&'.
///
/// Returns false, with `wide` unspecified, when a reader would change something else, as a carriage
/// return, or refuse the text, and when it refers to an entity that XML does not predefine.
bool decode_references(std::string_view text, text_context_t context, std::string_view ampersand,
                       std::wstring& wide);

/// Decodes a name of XML 1.0. Returns false, with `wide` unspecified, when it is not one.
bool decode_name(std::string_view name, std::wstring& wide);

} // namespace velmoext_1_4_8
