#pragma once

#include "storage/directory.h"
#include "storage/file_descriptor.h"
#include "storage/log_copy.h"
#include "storage/log_file_reader.h"
#include "storage/log_output.h"
#include "xml/handles.h"

#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

namespace velmoext_1_4_8
{

/// Does the work of a messages_storage_t, whose operations these are, for one thread at a time.
class messages_storage_impl_t
{
public:
    explicit messages_storage_impl_t(const basekit2::path_t& path);
    messages_storage_impl_t(const messages_storage_impl_t&) = delete;
    messages_storage_impl_t& operator=(const messages_storage_impl_t&) = delete;
    virtual ~messages_storage_impl_t() = default;

    bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg);
    bool start_recording();
    bool stop_recording();
    bool start_reading();
    bool replay(boost::shared_ptr<velmo_ex_t> ex);
    void stop_reading();
    /// The last call: ends the recording, even without memory.
    void end() noexcept;

    const basekit2::path_t& path() const { return m_path; }
    /// Returns whether a thread, or this one, is in a replay. Any thread may call these at any
    /// time.
    bool is_replaying() const { return m_replaying_thread.load() != std::thread::id(); }
    bool is_replaying_here() const { return m_replaying_thread == std::this_thread::get_id(); }

    /// Writes all that was recorded. Called before a fork() of the process. A child that has
    /// buffered messages waits for its parent until then.
    void before_fork(std::chrono::steady_clock::time_point end);
    /// Buffers messages from now on, until the parent's recording has ended. Called in the child of
    /// a fork().
    void after_fork_in_child();
    /// Closes the log in a child if a thread of the parent was in a call of this at the fork.
    void close_in_child();

private:
    bool start();
    bool begin_recording();
    bool begin_log();
    bool begin_line();
    bool write(boost::shared_ptr<message_t> msg);
    bool carry_over(log_copy_t& copy);
    bool is_superseded_by(const log_copy_t& copy) const;
    bool make_copy(log_copy_t& copy);
    bool rewrite_log(log_copy_t& copy);
    bool write_messages_of(const file_descriptor_t& old_log);
    bool abandon_log();
    void add_pending(const message_t& msg);
    bool try_to_write_pending();
    void try_to_write_pending_at_intervals();
    void wait_to_write_pending(std::chrono::steady_clock::time_point end);

    basekit2::path_t m_path;
    basekit2::path_t m_log_path; ///< of the recording: m_path, or absolute in a child
    directory_t m_directory;     ///< the current one when the recording was started
    file_descriptor_t m_write_file;
    file_descriptor_t m_read_file; ///< open if reading was started
    log_output_t m_output;         ///< into m_write_file
    xml_writer_t m_writer;         ///< writes into m_output; set while recording is on
    bool m_has_messages = false;   ///< whether one was written since recording was started
    bool m_is_buffering = false;   ///< whether this is a child, and recording is on in its parent
    std::string m_pending;         ///< elements that the child has recorded
    std::chrono::steady_clock::time_point m_next_try; ///< of the child to begin to record
    std::atomic<std::thread::id> m_replaying_thread{std::thread::id()};
    log_file_reader m_replay_reader;
};

} // namespace velmoext_1_4_8
