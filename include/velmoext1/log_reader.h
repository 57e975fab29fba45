/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace velmoext_1_4_8
{

class log_reader_impl_t;

/// Reads the messages of a log one by one, each as it was recorded.
///
/// messages_storage_t::replay() can change a text with markup or beyond ASCII, and loses an empty
/// one. This class reads each "msg" element as a document of its own, as the channel does. It reads
/// in one pass, continues after damage and never changes the log.
///
/// Needs memory for the largest message, a few times. A log in another encoding than UTF-8 is in
/// memory as a whole, and text that is appended to it later is not read. The text after a byte that
/// its encoding does not have is read as UTF-8. UTF-16 and UTF-32 are not read.
///
/// Thread safety: not synchronized. Logs can be read while they are recorded.
class VELMOEXT1_API log_reader_t
{
public:
    /// Copies the next bytes of a log to `bytes`, at most `size`, which is not 0. Returns their
    /// number, 0 if there are none now.
    typedef std::function<std::size_t(char* bytes, std::size_t size)> source_t;

    /// A position in a log. If the log is not in UTF-8, the position is that in its text in UTF-8.
    struct position_t
    {
        std::int64_t offset = 0; ///< in bytes
        std::int64_t line = 1;
    };

    /// The result of next().
    enum class result_t
    {
        message,    ///< The reader is at a message.
        damage,     ///< It is at text that a log cannot have, see get_damage().
        unfinished, ///< There is no more text now, and the root has not ended, or there was damage
                    ///< after it. If the recorder was killed, this is the last result.
        end,        ///< The root has ended, and there is no more text now.
        unreadable  ///< The path is not a regular file that can be read. All further results are
                    ///< the same.
    };

    /// The kind of damage.
    enum class damage_t
    {
        none,
        markup,    ///< malformed markup, or markup that XML does not allow there
        end_tag,   ///< an end tag of another element than the last one that began
        character, ///< a character that XML does not have, or malformed UTF-8
        reference, ///< an ampersand without a reference, or an unknown entity
        encoding, ///< no converter knows the log's encoding, or it cannot be the declaration's; the
                  ///< log is read as if it was UTF-8
        limit     ///< markup beyond one of the library's own limits, see docs/limits.md
    };

    /// Reads a file from its beginning. Text that is appended later is read too.
    explicit log_reader_t(const basekit2::path_t& path);
    /// Reads from a source, which must not be empty.
    explicit log_reader_t(source_t source);
    /// Continues between two messages: the source begins at the position that another reader's
    /// get_end() returned at a message. Requires a log in UTF-8. The next end tag without its
    /// beginning is taken for the root's, so if elements other than the root are around that
    /// message, the text after the first of their end tags is damage.
    log_reader_t(source_t source, const position_t& position);
    log_reader_t(const log_reader_t&) = delete;
    log_reader_t& operator=(const log_reader_t&) = delete;
    ~log_reader_t();

    /// Moves to the next message or damage. After damage, continues with the next message that is
    /// complete. After `unfinished` and `end`, continues if there is more text. The source's
    /// exceptions propagate; the next call continues with its next bytes.
    result_t next();

    /// Gives up the text that is unfinished, since it lacks its end. The next calls of next()
    /// return the messages in it, if there are any. No effect after another result.
    void skip_unfinished();

    /// Returns the position of the message or the damage. After `unfinished`, returns that of the
    /// unfinished message or other text.
    position_t get_begin() const;
    /// Returns the end of the message. After another result, returns get_begin().
    position_t get_end() const;
    /// Returns damage_t::none unless the reader is at damage.
    damage_t get_damage() const;

    /// Returns the message's element as it is in the log, in UTF-8. After `unfinished`, returns the
    /// text that lacks its end, empty if the log lacks nothing but its end tag. Empty after another
    /// result. Valid until the next call of next().
    std::string_view get_text() const;
    /// Returns the message's type, in UTF-8, without the cost of get_message(). Empty unless the
    /// reader is at a message. Valid as get_text().
    std::string_view get_type() const;
    /// Returns the message's source in the same way.
    std::string_view get_source() const;
    message_t::severity_t get_severity() const;
    /// Returns the message. Creates it on the first call. Null unless the reader is at a message.
    boost::shared_ptr<message_t> get_message();

private:
    std::unique_ptr<log_reader_impl_t> m_impl;
};

} // namespace velmoext_1_4_8
