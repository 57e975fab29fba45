/// @file
/// The words of messages that the one who sends and the one who receives must both know.
#pragma once

namespace audit
{

/// The argument of a progress message that holds a whole number from 0 to 100.
constexpr wchar_t percent_word[] = L"percent";

} // namespace audit
