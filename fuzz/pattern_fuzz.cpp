// The text of any pattern is the same each time and on each thread. If all arguments are texts, it
// is ICU's text, also if their names are ones that ICU rejects. If ICU rejects the pattern for
// another reason than a name, the text is the pattern.
//
// The first line of an input is the locale. One argument per line follows, NAME=TEXT, up to an
// empty line. The rest is the pattern.
#include "fuzz_target.h"
#include "input_text.h"
#include "require.h"

#include <rova/i18n.h>
#include <rova/strings.h>

#include <unicode/messagepattern.h>
#include <unicode/msgfmt.h>

#include <algorithm>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{

using ROVA_2_18::generic::varg_list;
using ROVA_2_18::i18n::message_t;

const std::size_t max_text_length = 16777216;
/// Far below the limits for patterns.
const std::ptrdiff_t max_braces = 40;

struct input_t
{
    std::string locale;
    varg_list arguments;
    std::map<std::string, std::wstring> values;
    std::wstring pattern;
};

void add_argument(input_t& input, const std::string& line)
{
    const auto parts = split_once(line, '=');
    // A name must be UTF-8 even if the input is not.
    const std::string name = ROVA_2_18::strings::utf16_to_utf8(to_wide(parts.first));
    const std::wstring value = to_wide(parts.second);
    input.arguments.push_back(ROVA_2_18::generic::argument(name, value));
    input.values.emplace(name, value);
}

input_t read_input(const std::string& bytes)
{
    input_t input;
    auto parts = split_once(bytes, '\n');
    input.locale = parts.first;
    for (parts = split_once(parts.second, '\n'); !parts.first.empty();
         parts = split_once(parts.second, '\n'))
        add_argument(input, parts.first);
    input.pattern = to_wide(parts.second);
    return input;
}

/// Returns whether each element is a character of the BMP.
bool is_basic(const std::wstring& text)
{
    return std::all_of(text.begin(), text.end(), [](wchar_t element) {
        return (element >= 0 && element < 0xD800) || (element >= 0xE000 && element <= 0xFFFF);
    });
}

icu::UnicodeString wide_to_unicode(const std::wstring& text)
{
    icu::UnicodeString unicode;
    for (const wchar_t element : text)
        unicode.append(static_cast<char16_t>(element));
    return unicode;
}

std::wstring unicode_to_wide(const icu::UnicodeString& text)
{
    std::wstring wide;
    for (int at = 0; at < text.length(); ++at)
        wide.push_back(text[at]);
    return wide;
}

bool has_only_text_arguments(const icu::MessagePattern& parsed)
{
    for (int at = 0; at < parsed.countParts(); ++at) {
        const UMessagePatternArgType type = parsed.getPart(at).getArgType();
        if (type != UMSGPAT_ARG_TYPE_NONE && type != UMSGPAT_ARG_TYPE_SELECT)
            return false;
    }
    return true;
}

/// Returns the text as ICU alone formats it, or the pattern if that fails.
std::wstring format_by_icu(const input_t& input)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessageFormat format(wide_to_unicode(input.pattern), icu::Locale::getRoot(), status);
    std::vector<icu::UnicodeString> names;
    std::vector<icu::Formattable> values;
    for (const auto& value : input.values) {
        names.push_back(icu::UnicodeString::fromUTF8(value.first));
        values.emplace_back(wide_to_unicode(value.second));
    }
    icu::UnicodeString text;
    format.format(names.data(), values.data(), static_cast<int>(names.size()), text, status);
    return U_SUCCESS(status) ? unicode_to_wide(text) : input.pattern;
}

/// Returns whether a text between a brace and the next comma or brace is not a name for ICU.
bool may_have_rejected_name(const icu::UnicodeString& pattern)
{
    for (int at = pattern.indexOf(u'{') + 1; at != 0; at = pattern.indexOf(u'{', at) + 1) {
        int end = at;
        while (end != pattern.length() && icu::UnicodeString(u",{}").indexOf(pattern[end]) < 0)
            ++end;
        icu::UnicodeString name(pattern, at, end - at);
        if (icu::MessagePattern::validateArgumentName(name.trim()) == UMSGPAT_ARG_NAME_NOT_VALID)
            return true;
    }
    return false;
}

/// Returns the pattern with a hyphen at the end of each argument's name.
icu::UnicodeString append_hyphens_to_names(const icu::MessagePattern& parsed)
{
    icu::UnicodeString pattern = parsed.getPatternString();
    for (int at = parsed.countParts() - 1; at >= 0; --at) {
        const auto& part = parsed.getPart(at);
        if (part.getType() == UMSGPAT_PART_TYPE_ARG_NAME ||
            part.getType() == UMSGPAT_PART_TYPE_ARG_NUMBER)
            pattern.insert(part.getLimit(), u'-');
    }
    return pattern;
}

bool has_all_arguments(const icu::MessagePattern& parsed, const input_t& input)
{
    for (int at = 0; at != parsed.countParts(); ++at) {
        const auto& part = parsed.getPart(at);
        std::string name;
        parsed.getSubstring(part).toUTF8String(name);
        if ((part.getType() == UMSGPAT_PART_TYPE_ARG_NAME ||
             part.getType() == UMSGPAT_PART_TYPE_ARG_NUMBER) &&
            input.values.count(name) == 0)
            return false;
    }
    return true;
}

void require_same_with_hyphens(const input_t& input, const icu::MessagePattern& parsed,
                               const std::wstring& text)
{
    varg_list arguments;
    for (const auto& value : input.values)
        arguments.push_back(ROVA_2_18::generic::argument(value.first + '-', value.second));
    const message_t message(unicode_to_wide(append_hyphens_to_names(parsed)), input.locale);
    require(message.as_ustring(arguments) == text, "the same text with other names");
}

void require_as_by_icu(const input_t& input, const std::wstring& text)
{
    const bool is_small =
        std::count(input.pattern.begin(), input.pattern.end(), L'{') <= max_braces;
    const bool is_comparable =
        is_basic(input.pattern) &&
        std::all_of(input.values.begin(), input.values.end(),
                    [](const auto& value) { return is_basic(value.second); });
    if (!is_small || !is_comparable)
        return;
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString pattern = wide_to_unicode(input.pattern);
    const icu::MessagePattern parsed(pattern, nullptr, status);
    if (U_FAILURE(status) != 0) {
        if (!may_have_rejected_name(pattern))
            require(text == input.pattern, "an invalid pattern is its own text");
        return;
    }
    if (!has_only_text_arguments(parsed))
        return;
    require(text == format_by_icu(input), "the text is ICU's");
    if (has_all_arguments(parsed, input))
        require_same_with_hyphens(input, parsed, text);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const input_t input = read_input(std::string(data, data + size));
    const message_t message(input.pattern, input.locale);
    std::wstring other_text;
    std::thread other_thread(
        [copy = message, &input, &other_text] { other_text = copy.as_ustring(input.arguments); });
    const std::wstring text = message.as_ustring(input.arguments);
    other_thread.join();

    require(text == other_text, "the same text on two threads");
    require(text == message.as_ustring(input.arguments), "the same text again");
    require(text == message_t(input.pattern, input.locale).as_ustring(input.arguments),
            "the same text of the same pattern");
    require(text.size() <= max_text_length, "a text within its limit");
    require_as_by_icu(input, text);
    return 0;
}
