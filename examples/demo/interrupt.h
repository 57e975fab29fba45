/// @file
/// The user's request to end the program, which SIGINT delivers.
#pragma once

namespace audit
{

/// Catches the first SIGINT, see is_interrupted(). The second one ends the program at once. If the
/// program was started with SIGINT ignored, as in the background of a script, it stays ignored.
void watch_for_interrupt();

bool is_interrupted();

} // namespace audit
