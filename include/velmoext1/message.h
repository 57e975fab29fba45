/// @file
#pragma once

#include <velmoext1/export.h>

#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <map>
#include <string>

namespace velmoext_1_4_8
{

/// One report of a component: what happened (the type), how grave it is, with which named
/// arguments, from which source.
///
/// A plain value: it owns all its texts, and a copy is deep. Messages travel as
/// `boost::shared_ptr<message_t>`. Nothing is locked: several threads may read one message, but
/// nobody may read or write it while another thread writes. No text is trimmed, folded or checked.
class VELMOEXT1_API message_t
{
public:
    /// How grave a message is; the numbers rise with gravity. Any other 32-bit number is kept as
    /// it is, but has no form in XML.
    enum severity_t : std::int32_t
    {
        none = 0, ///< unset
        info = 1,
        warning = 2,
        error = 3,
        critical = 4
    };

    /// What a message says beyond its type and severity. Every map is walked in the order of its
    /// keys' code units, also when it is written as XML.
    struct message_content_t
    {
        std::map<std::wstring, std::wstring> args;       ///< the named arguments
        std::map<std::wstring, std::wstring> attributes; ///< facts about the message: its source
        std::map<std::wstring, std::wstring> elements;   ///< further named texts
        /// The number that the next argument without a name gets when a message is read from XML;
        /// counted up at each use, and behind the largest one from the smallest on.
        std::int32_t next_arg_number = 1;
    };

    /// An empty() message.
    message_t();
    message_t(const message_t& other);
    /// Copies all fields. On std::bad_alloc the message is unchanged.
    message_t& operator=(const message_t& other);
    virtual ~message_t();

    void set_type(const std::wstring& type);
    std::wstring get_type() const;

    /// Takes any value, also one that no enumerator names.
    void set_severity(severity_t severity);
    severity_t get_severity() const;

    /// A word of bits for the handlers; a storage records a message only when bit 0 or 1 is set.
    /// It has no form in XML: who receives a message sets it anew.
    void set_flags(int flags);
    int get_flags() const;

    /// Replaces all four parts of the content. On std::bad_alloc the message is unchanged.
    void set_content(const message_content_t& content);
    /// A copy of the content: changing it leaves the message as it is.
    message_content_t get_content() const;

    /// Names the component that reports, as the attribute "tool". Without effect where the message
    /// has that attribute: the first recorded origin stays. set_content() can still replace it.
    void set_source(const std::wstring& source);
    /// The attribute "source" where there is one, else the attribute "tool", else an empty text.
    std::wstring get_source() const;

    /// Whether both messages have the same type and severity; all else may differ. False for null.
    bool equal_to(boost::shared_ptr<message_t> other) const;

    /// Whether the message has neither a type nor a severity, whatever its content and flags.
    bool empty() const;

private:
    friend struct message_access;

    std::wstring m_type;
    severity_t m_severity = none;
    message_content_t m_content;
    std::int32_t m_flags = 0;
};

} // namespace velmoext_1_4_8
