/// @file
/// The user's wish to end the program, as SIGINT brings it.
#pragma once

namespace audit
{

/// From now on the first SIGINT only leaves a mark; the second ends the program at once. Where the
/// program was started with SIGINT ignored, as in the background of a script, that stays.
void watch_for_interrupt();

bool is_interrupted();

} // namespace audit
