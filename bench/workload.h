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

typedef boost::shared_ptr<velmoext_1_4_8::message_t> message_ptr;

/// Names and texts in UTF-8, in the order in which a message has them.
typedef std::vector<std::pair<std::string, std::string>> texts_t;

/// A message without anything of the library: for floors and peers.
struct plain_message_t
{
    std::string type;
    std::string severity;
    texts_t attributes;
    texts_t args;
    texts_t elements;
};

/// The state of the heap in which a run's data is created. A spread one has no holes: with many,
/// glibc searches them at each allocation, and the candidates that allocate most, the floors among
/// them, take three times as long.
enum class heap_t
{
    fresh, ///< each item follows the one before it
    spread ///< random order, each item beside another message that stays
};

/// The messages that all programs work on, the same ones in each run and in each heap: half have
/// two arguments, a quarter has six, a quarter one argument and one element. All have the attribute
/// "tool" and a flag that makes a storage record them. One of twenty has markup characters in a
/// text, another one of twenty non-ASCII letters; a fifth of these has characters beyond the BMP
/// too.
class workload_t
{
public:
    explicit workload_t(std::size_t size, heap_t heap = heap_t::fresh);

    std::size_t size() const { return m_plain.size(); }
    /// Owned one by one, like the messages, so that none has its neighbour in the next cache line.
    const std::vector<std::unique_ptr<plain_message_t>>& plain() const { return m_plain; }
    const std::vector<message_ptr>& messages() const { return m_messages; }

    /// What a floor or a peer works on: make(i) for each i below the count, created in the order in
    /// which the messages were.
    template <typename Make>
    auto make_items(std::size_t count, const Make& make) const
    {
        std::vector<decltype(make(std::size_t()))> items(count);
        for (const std::size_t place : creation_order(count))
            items[place] = make(place);
        return items;
    }

    /// The bytes of all types and texts of the first messages; whatever is made of them has at
    /// least half as many characters.
    std::size_t text_size(std::size_t count) const;

private:
    std::vector<std::size_t> creation_order(std::size_t count) const;

    heap_t m_heap;
    std::vector<std::unique_ptr<plain_message_t>> m_plain;
    std::vector<message_ptr> m_messages;
    std::vector<message_ptr> m_others; ///< between the messages
};

/// The attribute "tool" of all messages: their source.
extern const char* const tool;

message_ptr make_message(const plain_message_t& plain);

} // namespace bench
