#include "locale_folders.h"

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <locale>
#include <string_view>

namespace setbook2
{
namespace
{

bool is_in(char character, char first, char last)
{
    return first <= character && character <= last;
}

bool is_letter(char character)
{
    return is_in(character, 'A', 'Z') || is_in(character, 'a', 'z');
}

bool is_digit(char character)
{
    return is_in(character, '0', '9');
}

bool is_locale_character(char character)
{
    return is_letter(character) || is_digit(character) || character == '_' || character == '-' ||
           character == '.' || character == '@';
}

bool has_only(bool (*is_allowed)(char), const std::string& text)
{
    return std::all_of(text.begin(), text.end(), is_allowed);
}

std::string to_lower(const std::string& text)
{
    return boost::algorithm::to_lower_copy(text, std::locale::classic());
}

std::string to_upper(const std::string& text)
{
    return boost::algorithm::to_upper_copy(text, std::locale::classic());
}

struct locale_parts_t
{
    std::string language; ///< empty if the text is not a locale
    std::string script;
    std::string country;
    std::string modifier;
};

bool is_script(const std::string& part)
{
    return part.size() == 4 && has_only(is_letter, part);
}

bool is_country(const std::string& part)
{
    return (part.size() == 2 && has_only(is_letter, part)) ||
           (part.size() == 3 && has_only(is_digit, part));
}

// Returns the script that a modifier names, such as "Latn" for "latin", and an empty text for any
// other modifier.
std::string script_of(const std::string& modifier)
{
    const auto script = modifier.empty() ? std::int32_t{UCHAR_INVALID_CODE}
                                         : u_getPropertyValueEnum(UCHAR_SCRIPT, modifier.c_str());
    return script == UCHAR_INVALID_CODE ? std::string()
                                        : uscript_getShortName(static_cast<UScriptCode>(script));
}

// Returns gettext's modifier of a script, such as "latin" for "Latn".
std::string modifier_of(const std::string& script)
{
    const auto code = u_getPropertyValueEnum(UCHAR_SCRIPT, script.c_str());
    return code == UCHAR_INVALID_CODE ? std::string()
                                      : to_lower(uscript_getName(static_cast<UScriptCode>(code)));
}

locale_parts_t parse(const std::string& locale)
{
    locale_parts_t parts;
    const std::size_t at = std::min(locale.find('@'), locale.size());
    std::vector<std::string> names;
    const std::string name = locale.substr(0, std::min(at, locale.find('.')));
    boost::algorithm::split(names, name, boost::algorithm::is_any_of("_-"));
    auto next = names.begin();
    if (next->size() < 2 || next->size() > 8 || !has_only(is_letter, *next))
        return parts;
    parts.language = to_lower(*next++);
    if (next != names.end() && is_script(*next)) {
        parts.script = to_upper(next->substr(0, 1)) + to_lower(next->substr(1));
        ++next;
    }
    if (next != names.end() && is_country(*next))
        parts.country = to_upper(*next++);
    if (at != locale.size())
        parts.modifier = to_lower(locale.substr(at + 1));
    else if (next != names.end())
        parts.modifier = to_lower(*next);
    if (parts.script.empty())
        parts.script = script_of(parts.modifier);
    if (!script_of(parts.modifier).empty())
        parts.modifier.clear();
    return parts;
}

std::string join(const std::string& language, const std::string& script, const std::string& country)
{
    std::string name = language;
    for (const std::string& part : {script, country})
        name += part.empty() ? "" : "_" + part;
    return name;
}

// Returns the locale with the script and country that its speakers most likely use.
icu::Locale most_likely(const std::string& name)
{
    icu::Locale locale(name.c_str());
    UErrorCode status = U_ZERO_ERROR;
    locale.addLikelySubtags(status);
    return locale;
}

// Returns the names of one step: as ICU spells it, with gettext's modifier, and without the script
// if that is the usual one of the country. Without a country, that is the one in which the script
// is usual, but not if the script is that of the language anyway: "ru_UA" does not lead to "ru_RU".
std::vector<std::string> spellings(const std::string& language, const std::string& script,
                                   const std::string& country, bool is_usual_script)
{
    std::vector<std::string> names = {join(language, script, country)};
    if (script.empty())
        return names;
    const std::string modifier = modifier_of(script);
    if (!modifier.empty() && modifier.find('_') == std::string::npos) // not for "traditional_han"
        names.push_back(join(language, "", country) + "@" + modifier);
    if (country.empty() && is_usual_script)
        return names;
    const std::string usual_country =
        country.empty() ? most_likely(names.front()).getCountry() : country;
    const std::string without_script = join(language, "", usual_country);
    if (most_likely(without_script).getScript() == script)
        names.push_back(without_script);
    return names;
}

// Returns the names of all steps, without the modifier.
std::vector<std::string> fall_backs(const locale_parts_t& parts)
{
    std::string script = parts.script;
    // Folders may name the script that is usual for the country: "zh_Hant" for "zh_TW". Languages
    // in Latin script seldom do.
    const std::string usual_script =
        most_likely(join(parts.language, "", parts.country)).getScript();
    const bool is_of_language = usual_script == most_likely(parts.language).getScript();
    const bool is_implied = script.empty() && (usual_script != "Latn" || !is_of_language);
    if (is_implied)
        script = usual_script;
    std::vector<std::string> names;
    const auto add = [&](const std::string& step_script, const std::string& country) {
        const auto step =
            spellings(parts.language, step_script, country, is_implied && is_of_language);
        names.insert(names.end(), step.begin(), step.end());
    };
    if (is_implied || script.empty())
        add("", parts.country);
    if (!script.empty()) {
        add(script, parts.country);
        add(script, "");
    }
    add("", "");
    return names;
}

} // namespace

std::vector<std::string> locale_folders(const std::string& locale)
{
    if (!has_only(is_locale_character, locale))
        return {};
    for (const char* const folder : {"c", "posix"})
        if (to_lower(locale.substr(0, locale.find_first_of("_-.@"))) == folder)
            return {folder};
    const locale_parts_t parts = parse(locale);
    if (parts.language.empty())
        return {};
    std::vector<std::string> folders;
    const auto add = [&](const std::string& folder) {
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
    };
    const std::vector<std::string> names = fall_backs(parts);
    if (!parts.modifier.empty())
        for (const std::string& name : names)
            if (name.find('@') == std::string::npos)
                add(name + "@" + parts.modifier);
    for (const std::string& name : names)
        add(name);
    return folders;
}

} // namespace setbook2
