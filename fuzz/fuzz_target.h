#pragma once

#include <cstddef>
#include <cstdint>

/// One input for the code under test. The name is libFuzzer's. Ends the process where the code does
/// what it must not.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
