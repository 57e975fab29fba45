/// @file
#pragma once

#include <velmoext1/message.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

namespace velmoext_1_4_8
{

/// Builds messages. Each operation but build() sets one part and returns the builder. Throws
/// std::bad_alloc only. Not synchronized: a builder is used by one thread at a time.
///
///     message_builder_t message(L"file_large");
///     message.severity(message_t::warning).source(L"audit").arg(L"path", path).arg(L"size", 4096);
///     adapter.send_to_velmo(message.build());
class message_builder_t
{
public:
    explicit message_builder_t(const std::wstring& type) : m_type(type) {}

    message_builder_t& severity(message_t::severity_t severity)
    {
        m_severity = severity;
        return *this;
    }

    /// Sets the source as message_t::set_source() does: an attribute "tool" takes precedence.
    message_builder_t& source(const std::wstring& source)
    {
        m_source = source;
        return *this;
    }

    message_builder_t& flags(int flags)
    {
        m_flags = flags;
        return *this;
    }

    /// Sets a named argument. The channel carries any text. A log can lose parts of a text with
    /// markup or beyond ASCII, such as "Tom & Jerry": docs/fidelity.md has the details.
    message_builder_t& arg(const std::wstring& name, const std::wstring& value)
    {
        m_content.args[name] = value;
        return *this;
    }

    /// Sets a named argument to a number in plain decimal digits, or to "true" or "false". The
    /// locale has no effect. A floating-point number gets the fewest digits that give it back.
    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    message_builder_t& arg(const std::wstring& name, Number value)
    {
        return arg(name, text_of(value));
    }

    message_builder_t& attribute(const std::wstring& name, const std::wstring& value)
    {
        m_content.attributes[name] = value;
        return *this;
    }

    message_builder_t& element(const std::wstring& name, const std::wstring& value)
    {
        m_content.elements[name] = value;
        return *this;
    }

    /// Returns a new message with all that was set. The builder keeps it for the next message.
    boost::shared_ptr<message_t> build() const
    {
        auto message = boost::make_shared<message_t>();
        message->set_type(m_type);
        message->set_severity(m_severity);
        message->set_flags(m_flags);
        message->set_content(m_content);
        if (m_source)
            message->set_source(*m_source);
        return message;
    }

private:
    template <typename Number>
    static std::wstring text_of(Number value)
    {
        static_assert(!std::is_same_v<Number, char> && !std::is_same_v<Number, wchar_t> &&
                          !std::is_same_v<Number, char16_t> && !std::is_same_v<Number, char32_t>,
                      "pass a character as a text");
        if constexpr (std::is_same_v<Number, bool>) {
            return value ? L"true" : L"false";
        } else if constexpr (std::is_integral_v<Number>) {
            return std::to_wstring(value);
        } else {
            // Minus, point, the digits of the largest number, the zeros and digits of the smallest.
            std::array<char, std::numeric_limits<Number>::max_digits10 + 2 +
                                 std::numeric_limits<Number>::max_exponent10 -
                                 std::numeric_limits<Number>::min_exponent10>
                digits = {};
            const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                           std::chars_format::fixed);
            return std::wstring(digits.data(), end.ptr);
        }
    }

    std::wstring m_type;
    message_t::severity_t m_severity = message_t::none;
    int m_flags = 0;
    message_t::message_content_t m_content;
    std::optional<std::wstring> m_source;
};

} // namespace velmoext_1_4_8
