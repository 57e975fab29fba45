/// @file
#pragma once

/// Marks names that are exported.
#define BASEKIT2_API __attribute__((visibility("default")))
