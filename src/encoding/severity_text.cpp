#include "encoding/severity_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace velmoext_1_4_8
{
namespace
{

struct form_t
{
    message_t::severity_t severity;
    std::string_view word;
    std::string_view number; ///< read like the word, never written
};

// The first row that fits counts, so that "0" always means critical, and no number means error.
const form_t forms[] = {{message_t::critical, "CRITICAL", "0"},
                        {message_t::error, "ERROR", "0"},
                        {message_t::warning, "WARNING", "1"},
                        {message_t::info, "INFO", "2"}};

const form_t* find_form(std::string_view text)
{
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms), [&](const form_t& candidate) {
            return text == candidate.word || text == candidate.number;
        });
    return form == std::end(forms) ? nullptr : form;
}

std::string upper_case(std::string_view text)
{
    using namespace ROVA_2_18::strings;
    return utf16_to_utf8(to_upper(utf8_to_utf16(std::string(text))));
}

} // namespace

const char* severity_text(message_t::severity_t severity)
{
    const auto* const form =
        std::find_if(std::begin(forms), std::end(forms),
                     [&](const form_t& candidate) { return candidate.severity == severity; });
    return form == std::end(forms) ? "" : form->word.data();
}

message_t::severity_t parse_severity(std::string_view text)
{
    const form_t* form = find_form(text);
    if (!form)
        form = find_form(upper_case(text));
    return form ? form->severity : message_t::none;
}

} // namespace velmoext_1_4_8
