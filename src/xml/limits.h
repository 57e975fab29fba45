#pragma once

#include <cstddef>
#include <cstdint>

namespace velmoext_1_4_8
{

/// Why a document is not read although it may be well-formed.
enum class refusal_t
{
    none,
    document_size,
    document_type_size,
    attributes,
    names,
    defaults,
    namespaces,
    parameter_entities,
    entity_text,
    encoding
};

/// The bounds of what is handed to libxml2. The library's own written form needs libxml2 neither to
/// be read nor to be written, and has none of them.
///
/// Each is as large as libxml2 2.9.14 allows to be read in about a second, on one core of a server
/// of 2020. docs/performance.md has the measurements.
namespace limits
{

/// Bytes of a document. libxml2 takes sizes as int.
constexpr std::size_t max_document_bytes = INT32_MAX;

/// Bytes of a document type. libxml2 is quadratic in the values of an enumerated attribute, and in
/// the attributes of an element inside an entity.
constexpr std::size_t max_document_type_bytes = 163840;

/// Comparisons for declared ids: libxml2 looks for another id among all attributes of the element.
constexpr std::size_t max_id_checks = 3000000;

/// Comparisons of attributes in all start tags: libxml2 compares each attribute with all before it.
/// As many as in one tag with 25,000 attributes.
constexpr std::size_t max_attribute_checks = 312500000;

/// Different names. libxml2 looks them up in a hash table with 16,384 buckets.
constexpr std::size_t max_names = 250000;

/// Attributes "xml:id". libxml2 looks them up like names, in more time.
constexpr std::size_t max_ids = 150000;

/// Comparisons for defaults. libxml2 compares each default of an element with the attributes and
/// defaults before it, for each start tag.
constexpr std::size_t max_default_checks = 2000000000;

/// Comparisons for namespaces. libxml2 looks for the namespace of each element and attribute among
/// all that are in scope.
constexpr std::size_t max_namespace_checks = 400000000;

/// Bytes of the entities that one message refers to, each reference counted. A few bytes of
/// entities that refer to one another can expand to gigabytes of text.
constexpr std::size_t max_entity_bytes = 10000000;

/// Nesting of entities and elements in the text of one element: each is a call on the stack.
constexpr int max_text_depth = 1000;

/// Nesting of elements in a log that log_reader_t reads. libxml2 has about the same limit.
constexpr std::size_t max_element_depth = 256;

/// Open elements "msg" at once in a log that log_reader_t reads. The library writes two at most.
constexpr std::size_t max_open_messages = 8;

/// Bytes of a message with more than max_messages_in_long_message elements "msg" in it, in a log
/// that log_reader_t reads. One that lacks its end would have the rest of the log in memory.
constexpr std::size_t max_long_message_bytes = 16777216;

/// The library writes one at most.
constexpr std::size_t max_messages_in_long_message = 8;

/// Bytes that are searched for the next tag after the events of one type in a log, all together.
/// Each event counts up to that tag, and a search from each of very many would be quadratic.
constexpr std::size_t max_look_ahead_bytes = 65536;

} // namespace limits

} // namespace velmoext_1_4_8
