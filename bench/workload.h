#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
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

/// The messages that all programs work on, the same ones in each run: half have two arguments, a
/// quarter has six, a quarter one argument and one element. All have the attribute "tool" and a
/// flag that makes a storage record them. One of twenty has markup characters in a text, another
/// one of twenty non-ASCII letters; a fifth of these has characters beyond the BMP too.
class workload_t
{
public:
    explicit workload_t(std::size_t size);

    std::size_t size() const { return m_plain.size(); }
    const std::vector<plain_message_t>& plain() const { return m_plain; }
    /// Each message in one line, ready to be logged.
    std::vector<std::string> lines() const;
    const std::vector<message_ptr>& messages() const { return m_messages; }

    /// The bytes of all types and texts of the first messages; whatever is made of them has at
    /// least half as many characters.
    std::size_t text_size(std::size_t count) const;

private:
    std::vector<plain_message_t> m_plain;
    std::vector<message_ptr> m_messages;
};

/// The attribute "tool" of all messages: their source.
extern const char* const tool;

message_ptr make_message(const plain_message_t& plain);

} // namespace bench
