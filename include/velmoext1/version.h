/// @file
/// The version of the library. The namespace and the shared library's soname carry all of it, so
/// two releases can be loaded side by side.
#pragma once

#define VELMOEXT1_VERSION "1.4.8"
