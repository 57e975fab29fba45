/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// Converts a message to an XML text and back.
///
/// The text is a document with one "msg" element. It has the type, the severity, the arguments, the
/// attributes and the elements of the message, but not its flags.
///
/// Thread safety: any thread may call any operation at any time. No thread may modify the message
/// meanwhile.
class VELMOEXT1_API string_message_serializer_t
{
public:
    /// Returns the message, which must not be null, as an XML document.
    ///
    /// Anything that the decoder would reject is replaced or dropped individually:
    /// - a character that XML 1.0 cannot carry becomes U+FFFD;
    /// - an attribute or element is dropped if its key is not an XML name;
    /// - an attribute or element is dropped if its key is like `a:b:1`. Such a key has two colons
    ///   with a name between them, and the text after them is not a name;
    /// - an attribute is dropped if an earlier one has the same name in UTF-8.
    ///
    /// If an attribute has an empty key, no attribute, argument or element is written. If an
    /// element has an empty key, no element is written. An argument with an empty name is written,
    /// and read back as `arg1`. Keys and texts may have any length, and a message any number of
    /// them.
    static std::wstring message_to_xml_string(boost::shared_ptr<message_t> message);

    /// Returns the message in the root element of the document, if that is a "msg". Ignores the
    /// declared encoding. Opens no file.
    ///
    /// A severity is INFO, WARNING, ERROR or CRITICAL in any case, or a digit of other writers: 2
    /// is info, 1 warning, 0 critical. These are not the values of severity_t. Any other text is
    /// none.
    ///
    /// An "arg" without a name becomes `arg1`, the next one `arg2`. Uses the first of two texts
    /// with the same name, and the last of two types or severities. A text is the whole text of its
    /// element, not trimmed.
    ///
    /// Returns null if
    /// - the root element is not a "msg", or the text is not well-formed XML;
    /// - the text has a zero character;
    /// - the document is not in the written form and exceeds a limit, or its document type refers
    ///   to a parameter entity;
    /// - libxml2 runs out of memory.
    ///
    /// A fault after a comment or an instruction that follows the element can be ignored.
    ///
    /// A document from message_to_xml_string() is in the written form, with two exceptions: an
    /// attribute declares a namespace, as `xmlns`, or a name has the prefix `xml`; an element is
    /// named `type`, `severity` or `arg`. Limits, such as 10,000,000 bytes for a text, apply to
    /// these. docs/limits.md has all limits.
    static boost::shared_ptr<message_t> xml_string_to_message(const std::wstring& text);

private:
    string_message_serializer_t();
};

} // namespace velmoext_1_4_8
