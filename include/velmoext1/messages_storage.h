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
class storage_registry_t;

/// Handler that records messages in an XML log file, and replays that file into an extension
/// object. It never consumes a message, and does not record progress messages.
///
/// The process has at most one storage per path. Callers and handler stacks share it; with its last
/// owner it is destroyed, and its recording is stopped.
///
/// A child of fork() buffers its messages, 16 MiB at most, while its parent records; then it
/// continues as after a start. A child of vfork() must not use a storage. docs/log_format.md has
/// the details.
///
/// Thread safety: any thread may call any operation at any time. Calls on one storage are
/// serialized, even if a replay or a start on a long log takes long. A handler that a replay calls
/// must not call the storage that replays, nor be that storage: such a call never returns.
class VELMOEXT1_API messages_storage_t : public base_handler_t
{
public:
    /// Returns the storage with this path. Creates it if there is none; never returns null. Opens
    /// no file. Two spellings of a path have two storages, of which only one at a time can record.
    static boost::shared_ptr<messages_storage_t> get(const basekit2::path_t& path);

    messages_storage_t(const messages_storage_t&) = delete;
    messages_storage_t& operator=(const messages_storage_t&) = delete;
    ~messages_storage_t() override;

    using base_handler_t::on_message;

    /// Writes the message to the log if recording is on and bit 0 or 1 of its flags is set. Always
    /// returns false, also for null.
    ///
    /// Output reaches the file when a buffer is full, and all of it when the recording stops or the
    /// process forks. If the file refuses a buffer, as on a full disk, the rest of this recording
    /// is dropped.
    ///
    /// On std::bad_alloc the message is not recorded. If libxml2 runs out of memory, the message is
    /// recorded in part or not at all; the rest of this recording can be lost with it.
    bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg) override;

    /// Starts a recording, and carries over the messages of an existing log. They stay in the file
    /// if writing them would not change them. Otherwise a copy of the log is beside it meanwhile,
    /// under its name and ".tmp" or, if that is too long, a shorter one. A copy that a killed
    /// process left is carried over if the log has no other messages: see docs/log_format.md.
    ///
    /// Returns true if recording is on, also if it was on before. Returns false, with the storage
    /// idle and log and copy unchanged, if
    /// - the path is not a regular file that can be read and written;
    /// - another recorder or program has the log locked;
    /// - something in the log exceeds a limit (docs/limits.md), or its encoding is not known;
    /// - the file at the copy's path is not a regular file of this process's user;
    /// - that file is the log itself, or a log that is being recorded;
    /// - the log has messages that a left copy lacks;
    /// - the log has to be rewritten and no copy of it can be created;
    /// - no descriptor is free, or libxml2 runs out of memory. The storage may then count as
    ///   recording, and drop every message, until stop_recording().
    /// Returns false, with the storage idle and the copy left for a later start, if
    /// - not all old messages could be written, as on a full disk or without memory;
    /// - the copy cannot be removed.
    /// A file that is not a log is replaced by one. On std::bad_alloc the storage is idle, and the
    /// old messages are in the log or in the copy.
    virtual bool start_recording();

    /// Stops recording and closes the log. Returns true, even if no recording is on or the file has
    /// refused a part of it. In a child of fork() that has something to write, waits a second at
    /// most for its parent to stop or end, and drops its messages then.
    virtual bool stop_recording();

    /// Allows replay(). Returns false, with replay() not allowed, if the path is not a regular file
    /// that can be read.
    virtual bool start_reading();

    /// Delivers the messages of the file to the extension object, in their order, as if they were
    /// sent again. The first replay of a storage reads the whole file. A later one reads only the
    /// text after the offset at which the former one stopped, as a document of its own. A recording
    /// in between rewrites the file but does not reset that offset.
    ///
    /// Returns true if there was something new to read, even if it was damaged, exceeds a limit or
    /// has an unknown encoding: the messages before that point have been delivered. Returns false,
    /// with nothing delivered, while recording is on, without start_reading(), or if nothing is
    /// new, the file cannot be read or has become shorter, or its new part has no '>'.
    ///
    /// Exceptions of a handler pass out. Throws boost::bad_weak_ptr if there is a handler but the
    /// extension object has no owner, and std::bad_alloc, also if libxml2 runs out of memory. The
    /// new text then counts as replayed. The extension object must not be null.
    ///
    /// A log may have any length: only its largest message is kept in memory. A log that has a
    /// document type, another encoding than UTF-8 or another root is kept whole.
    virtual bool replay(boost::shared_ptr<velmo_ex_t> ex);

    /// Ends the permission from start_reading(). The read offset stays.
    virtual void stop_reading();

protected:
    explicit messages_storage_t(const basekit2::path_t& path);

private:
    friend class storage_registry_t;

    boost::shared_ptr<messages_storage_impl_t> m_impl; ///< what it points to is guarded by m_mutex
    boost::mutex m_mutex;
};

} // namespace velmoext_1_4_8
