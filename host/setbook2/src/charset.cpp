#include "charset.h"

#include <unicode/ucnv_err.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <new>

namespace setbook2
{
namespace
{

bool succeeded(UErrorCode status)
{
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status);
}

} // namespace

std::unique_ptr<charset_t> charset_t::open(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<charset_t> charset(
        new charset_t(ucnv_open(name.empty() ? "UTF-8" : name.c_str(), &status)));
    UConverter* const converter = charset->m_converter.getAlias();
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return succeeded(status) ? std::move(charset) : nullptr;
}

std::optional<std::string> charset_t::from_utf8(const std::string& text)
{
    const auto unicode = icu::UnicodeString::fromUTF8(text);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size = unicode.extract(nullptr, 0, m_converter.getAlias(), status);
    if (status != U_BUFFER_OVERFLOW_ERROR)
        return succeeded(status) ? std::optional<std::string>(std::string()) : std::nullopt;
    status = U_ZERO_ERROR;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    unicode.extract(bytes.data(), size, m_converter.getAlias(), status);
    return succeeded(status) ? std::optional<std::string>(bytes) : std::nullopt;
}

std::optional<std::string> charset_t::to_utf8(std::string_view bytes)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString unicode(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                     m_converter.getAlias(), status);
    if (!succeeded(status) || unicode.isBogus())
        return std::nullopt;
    std::string text;
    unicode.toUTF8String(text);
    return text;
}

} // namespace setbook2
