#pragma once

#include "storage/file_descriptor.h"
#include "storage/log_file_reader.h"
#include "xml/handles.h"

#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>

#include <cstdint>

namespace velmoext_1_4_8
{

/// Does the work of a messages_storage_t, whose operations these are, for one thread at a time.
class messages_storage_impl_t
{
public:
    explicit messages_storage_impl_t(const basekit2::path_t& path);
    messages_storage_impl_t(const messages_storage_impl_t&) = delete;
    messages_storage_impl_t& operator=(const messages_storage_impl_t&) = delete;
    virtual ~messages_storage_impl_t();

    bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg);
    bool start_recording();
    bool stop_recording();
    bool start_reading();
    bool replay(boost::shared_ptr<velmo_ex_t> ex);
    void stop_reading();

private:
    /// What stands in the place of the copy that a start makes.
    enum class copy_t
    {
        missing,
        left_behind, ///< by a process of this user that was killed; the whole old log
        unusable     ///< another user's, or not a file
    };

    static copy_t look_at_copy(const basekit2::path_t& copy);

    bool begin_recording();
    bool may_begin(const basekit2::path_t& copy, copy_t found, bool is_own_copy) const;
    basekit2::path_t temporary_path() const;
    bool begin_log();
    bool begin_line();
    bool write(boost::shared_ptr<message_t> msg);
    bool carry_over(const basekit2::path_t& copy, bool is_own_copy);
    bool write_messages_of(const basekit2::path_t& copy, std::int64_t size);
    void abandon_log();

    basekit2::path_t m_path;
    file_descriptor_t m_write_file;
    file_descriptor_t m_read_file; ///< only tells that reading was started
    xml_writer_t m_writer;         ///< writes into m_write_file; set while recording is on
    bool m_has_messages = false;   ///< whether one was written since recording was started
    log_file_reader m_replay_reader;
};

} // namespace velmoext_1_4_8
