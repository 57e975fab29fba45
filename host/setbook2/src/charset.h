#pragma once

#include <unicode/ucnv.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace setbook2
{

/// Converts texts between a charset and UTF-8. For one thread at a time.
class charset_t
{
public:
    /// Opens the charset of that name, as IANA or iconv spells it; an empty name means UTF-8.
    /// Returns null if ICU does not know the charset.
    static std::unique_ptr<charset_t> open(const std::string& name);

    /// Returns nothing if the text has a character that the charset lacks, or is malformed.
    std::optional<std::string> from_utf8(const std::string& text);
    std::optional<std::string> to_utf8(std::string_view bytes);

private:
    explicit charset_t(UConverter* converter) : m_converter(converter) {}

    icu::LocalUConverterPointer m_converter;
};

} // namespace setbook2
