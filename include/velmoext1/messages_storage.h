/// @file
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

namespace velmoext_1_4_8
{

class messages_storage_impl_t;

/// A handler that records the messages passing it into an XML log file, and later replays that file
/// into an extension object. It never consumes a message, and lets progress messages pass
/// unrecorded.
///
/// The process has at most one storage per path; callers and handler stacks share it, and it lives
/// as long as one of them holds it. A recording that is on then is closed as by stop_recording().
/// A recording belongs to the process that started it: what a forked child records is dropped.
/// Any thread may call any operation: they take turns, also while a recording starts on a long log
/// or a replay runs. So no handler that a replay reaches may call the storage that is replaying,
/// and the storage must not sit on the stack that it replays into: such a call never returns.
class VELMOEXT1_API messages_storage_t : public base_handler_t
{
public:
    /// The storage of this path, made where there is none; never null. Touches no file. Two
    /// spellings of a path give two storages, of which only one at a time can record.
    static boost::shared_ptr<messages_storage_t> get(const basekit2::path_t& path);

    messages_storage_t(const messages_storage_t&) = delete;
    messages_storage_t& operator=(const messages_storage_t&) = delete;
    ~messages_storage_t() override;

    using base_handler_t::on_message;

    /// Writes the message to the log while recording is on and bit 0 or 1 of its flags is set.
    /// Always false, also for null. What was written reaches the file in portions, and all of it
    /// when the recording stops; once the file refuses a portion, as on a full disk, the rest of
    /// this recording is dropped. Where memory is lacking the message is recorded in part or not at
    /// all; where libxml2 lacks it for one that needs more room than a portion, that too drops the
    /// rest of this recording, with what has not reached the file yet.
    bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg) override;

    /// Begins a log, and carries over into it the messages of the log that is there. While that
    /// goes on, a copy of the old log stands beside it, its name followed by ".tmp"; one that a
    /// killed process left is carried over instead.
    ///
    /// True when recording is on, also when it was before. False, with the storage idle and
    /// - log and copy left as they are: where the path is no regular file that can be written,
    ///   somebody else records into it, it is longer than 2 GiB, or what stands in the place of the
    ///   copy is no regular file of this process's user, is longer than that, or is the log itself;
    /// - the copy left for a later start: where not all old messages could be written, as on a full
    ///   disk or without memory, or where the copy cannot be removed.
    /// A file that holds no log is replaced by one. Where std::bad_alloc passes out the storage is
    /// idle, and the old messages stand in the log or in the copy.
    ///
    /// The old messages are lost in three cases. Where no copy of the log can be made, as in a
    /// folder that refuses it or on a full disk, recording starts all the same and with an empty
    /// log. Where libxml2 has no memory for a writer, or the copy that was just made cannot be
    /// opened, as with no descriptor left, the answer is false, and the storage may count as
    /// recording, with all that comes dropped, until stop_recording() makes it idle.
    virtual bool start_recording();

    /// Closes the log. Always true, also where no recording is on or the file refused a part of it.
    virtual bool stop_recording();

    /// Allows replay(). False, with replay not allowed, where the path is no regular file that can
    /// be read.
    virtual bool start_reading();

    /// Delivers the messages of the file to the extension object, in the order of the file, as if
    /// they were sent anew. The first time it reads the whole file, later only what stands behind
    /// the place where it stopped, as a document of its own; a recording in between writes the
    /// file anew, but does not take the place back. A new storage reads from the beginning.
    ///
    /// True when there was something new to read, also where it was damaged: the messages before
    /// the damage have been delivered then. False, with nothing delivered, while recording is on,
    /// without start_reading(), or where there is nothing new, the file cannot be read, has become
    /// shorter, or its new part has no '>' or is longer than 2 GiB. What a handler throws passes
    /// out, and std::bad_alloc where libxml2 lacks memory on the way; what was read then counts as
    /// replayed. The extension object must not be null.
    virtual bool replay(boost::shared_ptr<velmo_ex_t> ex);

    /// Takes back what start_reading() allowed. What has been replayed stays so.
    virtual void stop_reading();

protected:
    explicit messages_storage_t(const basekit2::path_t& path);

private:
    boost::shared_ptr<messages_storage_impl_t> m_impl; ///< what it points to is guarded by m_mutex
    boost::mutex m_mutex;
};

} // namespace velmoext_1_4_8
