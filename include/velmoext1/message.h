/// @file
#pragma once

#include <velmoext1/export.h>

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <map>
#include <string>

namespace velmoext_1_4_8
{

/// One report of a component: a type, a severity, a source and named arguments.
///
/// A value class: it owns its texts, and copies are independent. No text is trimmed, folded or
/// checked. Messages are passed as `boost::shared_ptr<message_t>`.
///
/// Thread safety: not synchronized. Any number of threads may read a message if none modifies it.
class VELMOEXT1_API message_t
{
public:
    /// The severity; larger numbers are more severe. Any other 32-bit number is kept unchanged, but
    /// is not written to XML.
    enum severity_t : std::int32_t
    {
        none = 0, ///< not set
        info = 1,
        warning = 2,
        error = 3,
        critical = 4
    };

    /// The texts of a message besides its type. Maps are ordered by the code units of their keys,
    /// and written to XML in that order.
    struct message_content_t
    {
        std::map<std::wstring, std::wstring> args;       ///< the named arguments
        std::map<std::wstring, std::wstring> attributes; ///< metadata, such as the source
        std::map<std::wstring, std::wstring> elements;   ///< additional named texts
        /// The number of the next argument without a name when a message is read from XML.
        /// Incremented on each use; wraps to the minimum.
        std::int32_t next_arg_number = 1;
    };

    /// Creates an empty() message.
    message_t();
    message_t(const message_t& other);
    /// Copies all fields. If std::bad_alloc is thrown, the message is unchanged.
    message_t& operator=(const message_t& other);
    virtual ~message_t();

    void set_type(const std::wstring& type);
    std::wstring get_type() const;

    /// Sets the severity. Accepts any value, including one without an enumerator.
    void set_severity(severity_t severity);
    severity_t get_severity() const;

    /// Sets bits for handlers. A storage records a message only if bit 0 or 1 is set. Flags are not
    /// written to XML: a received message has none until a handler sets them.
    void set_flags(int flags);
    int get_flags() const;

    /// Replaces the whole content. If std::bad_alloc is thrown, the message is unchanged.
    ///
    /// The channel carries any argument. A log does not: after a replay, an argument with markup or
    /// beyond ASCII, such as the file name "Tom & Jerry", is only a part of what it was. See
    /// docs/fidelity.md.
    void set_content(const message_content_t& content);
    /// Returns a copy of the content. To change one part, change the copy and set it again.
    message_content_t get_content() const;

    /// Sets the attribute "tool", which names the reporting component. Does nothing if the message
    /// has that attribute already.
    void set_source(const std::wstring& source);
    /// Returns the attribute "source". If there is none, returns the attribute "tool", or an empty
    /// text.
    std::wstring get_source() const;

    /// Returns whether both messages have the same type and severity. Ignores all other parts.
    /// Returns false for null.
    bool equal_to(boost::shared_ptr<message_t> other) const;

    /// Returns whether the message has neither a type nor a severity. Ignores content and flags.
    bool empty() const;

private:
    friend struct message_access_t;

    std::wstring m_type;
    severity_t m_severity = none;
    message_content_t m_content;
    std::int32_t m_flags = 0;
};

} // namespace velmoext_1_4_8
