#pragma once

#include <cstddef>
#include <cstdint>

/// Runs the code under test with one input. Ends the process if the code misbehaves. The name is
/// libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
