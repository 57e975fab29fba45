#include "charset.h"

#include "common/utf8.h"
#include "output_text.h"

#include <unicode/localpointer.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace velmolint
{
namespace
{

const char sample[] = "msgid \"{x, plural, other {#}}\\n'";

/// Returns whether the bytes of ASCII mean the same in the charset. Otherwise the file's own syntax
/// would be in another form too.
bool is_ascii_compatible(UConverter& converter)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text(sample, -1, &converter, status);
    return U_SUCCESS(status) && text == icu::UnicodeString(sample, -1, US_INV);
}

icu::LocalUConverterPointer open_converter(const std::string& charset)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer converter(ucnv_open(charset.c_str(), &status));
    if (U_SUCCESS(status))
        ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr,
                            nullptr, &status);
    const bool is_usable = U_SUCCESS(status) && is_ascii_compatible(*converter);
    ucnv_reset(converter.getAlias());
    return is_usable ? std::move(converter) : icu::LocalUConverterPointer();
}

std::size_t count_lines(const std::string& bytes, std::size_t end)
{
    const auto stop = bytes.begin() + static_cast<std::ptrdiff_t>(end);
    return static_cast<std::size_t>(std::count(bytes.begin(), stop, '\n')) + 1;
}

/// Returns the line of the first byte that is not UTF-8, zero if there is none.
std::size_t malformed_line(const std::string& bytes)
{
    std::size_t next = 0;
    while (next != bytes.size()) {
        const std::size_t begin = next;
        if (app_common::next_character(bytes, next) < 0)
            return count_lines(bytes, begin);
    }
    return 0;
}

std::optional<std::string> convert(const std::string& bytes, UConverter& converter)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()), &converter,
                                  status);
    if (U_FAILURE(status))
        return std::nullopt;
    std::string result;
    return text.toUTF8String(result);
}

} // namespace

std::optional<std::string> to_utf8(const std::string& bytes, const std::string& charset,
                                   const location_t& header, findings_t& findings)
{
    if (charset.empty()) {
        findings.error(header, "charset-missing",
                       "The header names no charset. Add \"Content-Type: text/plain; "
                       "charset=UTF-8\\n\" to it.");
        return std::nullopt;
    }
    const icu::LocalUConverterPointer converter = open_converter(charset);
    if (converter.isNull()) {
        findings.error(header, "charset-unknown",
                       "The charset " + in_quotes(charset) + " is unknown. Use UTF-8.");
        return std::nullopt;
    }
    const bool is_utf8 = ucnv_getType(converter.getAlias()) == UCNV_UTF8;
    const std::size_t line = is_utf8 ? malformed_line(bytes) : 0;
    std::optional<std::string> text;
    if (line == 0)
        text = is_utf8 ? bytes : convert(bytes, *converter);
    if (!text)
        findings.error({header.file, {header.position.line != 0 ? line : 0, 0}}, "text-encoding",
                       "The file is not in the charset " + in_quotes(charset) +
                           " of its header. Save it in that charset.");
    return text;
}

} // namespace velmolint
