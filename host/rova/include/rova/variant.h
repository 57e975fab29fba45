/// @file
#pragma once

#include <rova/export.h>

#include <string>

namespace ROVA_2_18
{
namespace i18n
{
class pattern_t;
} // namespace i18n

namespace types
{

/// A value for the host's text operations: a wide text.
///
/// Thread safety: not synchronized. Any number of threads may read an object if none modifies it.
class ROVA_API variant
{
public:
    /// Creates an empty text.
    variant() = default;
    /// Not explicit: a text converts to a value.
    variant(const std::wstring& text); // NOLINT(google-explicit-constructor)

    /// Returns the value in UTF-8, see strings::utf16_to_utf8().
    std::string as_string() const;

private:
    /// Uses the wide text, without a conversion to UTF-8 and back.
    friend class i18n::pattern_t;

    std::wstring m_text;
};

} // namespace types
} // namespace ROVA_2_18
