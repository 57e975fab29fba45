#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench
{

typedef boost::shared_ptr<velmoext_1_4_8::message_t> message_ptr_t;

/// Names and texts in UTF-8, in the order in which a message has them.
typedef std::vector<std::pair<std::string, std::string>> string_pairs_t;

/// A message for floors and peers, without types of the library.
struct plain_message_t
{
    std::string type;
    std::string severity;
    string_pairs_t attributes;
    string_pairs_t args;
    string_pairs_t elements;
};

/// Layout of a run's data in the heap. A spread heap has no holes. glibc would search them at each
/// allocation, and the candidates that allocate most, including floors, would take three times as
/// long.
enum class heap_t
{
    fresh, ///< each item follows the one before it
    spread ///< random order, each item next to another message that is not freed
};

/// The messages that all programs process, the same in each run and in each heap.
///
/// Half have two arguments, a quarter has six, a quarter one argument and one element. All have the
/// attribute "tool" and a flag for recording. One of twenty has markup characters in a text,
/// another one of twenty non-ASCII letters. A fifth of the latter also has characters beyond the
/// BMP.
class workload_t
{
public:
    explicit workload_t(std::size_t size, heap_t heap = heap_t::fresh);

    std::size_t size() const { return m_plain.size(); }
    /// Allocated separately, like the messages, so that they are not in adjacent cache lines.
    const std::vector<std::unique_ptr<plain_message_t>>& plain() const { return m_plain; }
    const std::vector<message_ptr_t>& messages() const { return m_messages; }

    /// Returns the input of a floor or a peer: make(i) for each i below the count. Creates the
    /// items in the same order as the messages.
    template <typename Make>
    auto make_items(std::size_t count, const Make& make) const
    {
        std::vector<decltype(make(std::size_t()))> items(count);
        for (const std::size_t index : creation_order(count))
            items[index] = make(index);
        return items;
    }

    /// Returns the bytes of all types and texts of the first `count` messages. Any output for them
    /// has at least half as many characters.
    std::size_t text_size(std::size_t count) const;

private:
    std::vector<std::size_t> creation_order(std::size_t count) const;

    heap_t m_heap;
    std::vector<std::unique_ptr<plain_message_t>> m_plain;
    std::vector<message_ptr_t> m_messages;
    std::vector<message_ptr_t> m_others; ///< between the messages
};

/// Value of the attribute "tool" of all messages: their source.
extern const char* const tool;

message_ptr_t make_message(const plain_message_t& plain);

} // namespace bench
