#pragma once

#include <velmoext1/message.h>

#include <rova/strings.h>

#include <string>

/// Returns the severity of a text, from the first matching row of the table.
inline velmoext_1_4_8::message_t::severity_t severity_of(const std::wstring& text)
{
    using velmoext_1_4_8::message_t;
    const std::wstring upper = ROVA_2_18::strings::to_upper(text);
    if (upper == L"CRITICAL" || upper == L"0")
        return message_t::critical;
    if (upper == L"ERROR")
        return message_t::error;
    if (upper == L"WARNING" || upper == L"1")
        return message_t::warning;
    return upper == L"INFO" || upper == L"2" ? message_t::info : message_t::none;
}
