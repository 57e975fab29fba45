/// @file
/// Which classes leave the shared library: everything is hidden unless it is marked here.
#pragma once

/// Marks a class that callers outside the shared library may use.
#define VELMOEXT1_API __attribute__((visibility("default")))

/// Keeps a private member of such a class inside the shared library.
#define VELMOEXT1_LOCAL __attribute__((visibility("hidden")))
