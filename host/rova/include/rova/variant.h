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

/// A value that is handed to the host's text operations: a wide text. Different objects may be used
/// by different threads, one object by several threads that only read.
class ROVA_API variant
{
public:
    /// An empty text.
    variant() = default;
    /// Not explicit: a text is a value wherever one is asked for.
    variant(const std::wstring& text); // NOLINT(google-explicit-constructor)

    /// The value in UTF-8, as strings::utf16_to_utf8() gives it.
    std::string as_string() const;

private:
    /// Spared the way over UTF-8 and back.
    friend class i18n::pattern_t;

    std::wstring m_text;
};

} // namespace types
} // namespace ROVA_2_18
