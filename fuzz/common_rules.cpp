#include "common_rules.h"

#include "input_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <map>
#include <vector>

using velmoext_1_4_8::message_t;

namespace
{

const std::map<std::wstring, message_t::severity_t> severities = {
    {L"CRITICAL", message_t::critical},
    {L"0", message_t::critical},
    {L"ERROR", message_t::error},
    {L"WARNING", message_t::warning},
    {L"1", message_t::warning},
    {L"INFO", message_t::info},
    {L"2", message_t::info}};

// By what their names begin with.
const std::vector<std::wstring> native_encodings = {
    L"UTF-8", L"UTF8", L"US-ASCII", L"ASCII",    L"ISO-8859", L"ISO8859", L"WINDOWS-125",
    L"CP125", L"KOI8", L"EUC",      L"UTF-16\"", L"UTF-16'",  L"UTF16\"", L"UTF16'"};

// Behind its quote.
bool begins(const std::string& quoted, const std::wstring& native)
{
    const std::wstring upper =
        ROVA_2_18::strings::to_upper(ROVA_2_18::strings::utf8_to_utf16(quoted));
    return upper.compare(std::min<std::size_t>(1, upper.size()), native.size(), native) == 0;
}

} // namespace

message_t::severity_t severity_of(const std::wstring& text)
{
    const auto found = severities.find(ROVA_2_18::strings::to_upper(text));
    return found == severities.end() ? message_t::none : found->second;
}

bool declares_foreign_encoding(const std::string& document)
{
    const bool is_ebcdic = document.compare(0, 4, "\x4C\x6F\xA7\x94") == 0;
    if (is_ebcdic)
        return true;
    const std::string tag = split_once(split_once(document, '<').second, '>').first;
    const bool is_declaration = tag.compare(0, 4, "?xml") == 0 && tag.find_first_of(" \t\r\n") == 4;
    const std::size_t name = tag.find("encoding");
    if (!is_declaration || name == std::string::npos)
        return false;
    const std::string value = tag.substr(std::min(tag.find_first_of("\"'", name), tag.size()));
    return std::none_of(native_encodings.begin(), native_encodings.end(),
                        [&](const std::wstring& native) { return begins(value, native); });
}
