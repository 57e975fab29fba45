/// @file
#pragma once

/// Marks what callers outside the shared library may use.
#define BASEKIT2_API __attribute__((visibility("default")))
