/// @file
#pragma once

/// Marks what callers outside the shared library may use.
#define SETBOOK2_API __attribute__((visibility("default")))
