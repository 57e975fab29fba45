/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// Turns a message into a text that fits a narrow channel, and back.
///
/// The text is a whole XML document with one "msg" element. It carries type, severity, arguments,
/// attributes and elements; the flags stay behind. Any thread may call at any time; two threads
/// need two messages only where one of them writes.
class VELMOEXT1_API string_message_serializer_t
{
public:
    /// The message as an XML document. Empty where libxml2 cannot make a writer or write its text
    /// out, or lacks memory. The message must not be null.
    ///
    /// What a reader would refuse costs only itself:
    /// - a character that XML 1.0 cannot carry becomes U+FFFD;
    /// - an attribute or element is left out whose key is no XML name, is longer than 50,000 bytes,
    ///   has a digit or a mark such as '-' behind its second colon, as in `a:b:1`, or brings all
    ///   keys together over 3,500,000 bytes;
    /// - an attribute is left out that follows 1,000 others or brings the start tag over 9,990,000
    ///   bytes, an argument whose name is longer than that.
    ///
    /// An attribute or element with an empty key ends attributes, arguments and elements at its
    /// place; type and severity follow. An argument with an empty name is written, and read back
    /// as `arg1`.
    static std::wstring message_to_xml_string(boost::shared_ptr<message_t> message);

    /// The message that the document holds: its first top-level "msg" element. Null where there is
    /// none, where the text is no XML or longer than 2 GiB, where libxml2 lacks memory, and where
    /// - it declares an encoding in which markup may not be ASCII, or very many namespaces, or has
    ///   very many different names and ids;
    /// - its document type is longer than 64 KiB, refers to parameter entities, or lets entities or
    ///   defaults grow beyond all measure.
    ///
    /// Of an element's attributes those behind the first 1,000 are left out. Opens no file that the
    /// text names.
    ///
    /// Whoever wrote it: a severity is INFO, WARNING, ERROR or CRITICAL in any case, or 2 for info,
    /// 1 for warning, 0 for critical; another text is none. An "arg" without a name becomes `arg1`,
    /// the next one `arg2`. Of two texts of one name the first counts, of two types or severities
    /// the last. A text is all that stands in its element, not trimmed.
    ///
    /// Reads everything that message_to_xml_string() writes, but for an argument, element or type
    /// of more than 10,000,000 bytes, and a document of very many namespaces or names: such a
    /// document gives null.
    static boost::shared_ptr<message_t> xml_string_to_message(const std::wstring& text);

private:
    string_message_serializer_t();
};

} // namespace velmoext_1_4_8
