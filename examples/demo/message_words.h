/// @file
/// Words that the sender and the receiver of messages must both know.
#pragma once

namespace audit
{

/// The source of all messages of this program.
constexpr wchar_t source_name[] = L"audit";

/// The type of a message about a file as such, whether its state is good or not.
constexpr wchar_t file_seen_type[] = L"file_seen";

/// The argument of a progress message whose value is a whole number from 0 to 100.
constexpr wchar_t percent_word[] = L"percent";

} // namespace audit
