#pragma once

#include <cstddef>

namespace basekit2
{

/// The bounds of a file that is read into a tree. Each is as large as libxml2 2.9.14 allows to be
/// read in about a second, on one core of a server of 2020.
namespace limits
{

/// Bytes of a file.
constexpr std::size_t max_file_bytes = 16777216;

/// Bytes of a value, and of the text of an element: libxml2's own limit.
constexpr std::size_t max_value_bytes = 10000000;

/// Elements inside each other: libxml2's own limit.
constexpr std::size_t max_element_depth = 256;

/// Attributes of one element. libxml2 compares each attribute with all before it, before it reports
/// the element.
constexpr std::size_t max_element_attributes = 10000;

/// Attributes of an element times the bytes of their names, halved, in all elements together:
/// libxml2 compares names byte by byte.
constexpr std::size_t max_compared_bytes = 1000000000;

/// Bytes of the different names together. libxml2 looks them up in a hash table with 16,384
/// buckets.
constexpr std::size_t max_name_bytes = 262144;

} // namespace limits

} // namespace basekit2
