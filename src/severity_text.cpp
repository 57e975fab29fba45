#include "severity_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <iterator>

namespace velmoext_1_4_8
{
namespace
{

struct form_t
{
    message_t::severity_t severity;
    const wchar_t* word;
    const wchar_t* number; ///< accepted in place of the word, never written
};

// The first row that fits counts, so that "0" always means critical, and no number means error.
const form_t forms[] = {{message_t::critical, L"CRITICAL", L"0"},
                        {message_t::error, L"ERROR", L"0"},
                        {message_t::warning, L"WARNING", L"1"},
                        {message_t::info, L"INFO", L"2"}};

} // namespace

std::wstring severity_text(message_t::severity_t severity)
{
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms),
                     [&](const form_t& candidate) { return candidate.severity == severity; });
    return form == std::end(forms) ? std::wstring() : form->word;
}

message_t::severity_t parse_severity(const std::wstring& text)
{
    const std::wstring upper = ROVA_2_18::strings::to_upper(text);
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms), [&](const form_t& candidate) {
            return upper == candidate.word || upper == candidate.number;
        });
    return form == std::end(forms) ? message_t::none : form->severity;
}

} // namespace velmoext_1_4_8
