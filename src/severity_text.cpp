#include "severity_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace velmoext_1_4_8
{
namespace
{

struct form_t
{
    message_t::severity_t severity;
    const char* word;
    const char* number; ///< accepted in place of the word, never written
};

// The first row that fits counts, so that "0" always means critical, and no number means error.
const form_t forms[] = {{message_t::critical, "CRITICAL", "0"},
                        {message_t::error, "ERROR", "0"},
                        {message_t::warning, "WARNING", "1"},
                        {message_t::info, "INFO", "2"}};

bool is_same(const std::wstring& text, const char* word)
{
    return std::equal(text.begin(), text.end(), word, word + std::strlen(word));
}

const form_t* find_form(const std::wstring& text)
{
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms), [&](const form_t& candidate) {
            return is_same(text, candidate.word) || is_same(text, candidate.number);
        });
    return form == std::end(forms) ? nullptr : form;
}

} // namespace

const char* severity_text(message_t::severity_t severity)
{
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms),
                     [&](const form_t& candidate) { return candidate.severity == severity; });
    return form == std::end(forms) ? "" : form->word;
}

message_t::severity_t parse_severity(const std::wstring& text)
{
    const form_t* form = find_form(text);
    if (!form)
        form = find_form(ROVA_2_18::strings::to_upper(text));
    return form ? form->severity : message_t::none;
}

} // namespace velmoext_1_4_8
