/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/messages_storage.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace audit
{

/// Whether a name is UTF-8: a storage cannot have any other name.
bool can_name_log(const std::string& name);

/// Returns the storage of that name.
boost::shared_ptr<velmoext::messages_storage_t> open_log(const std::string& name);

/// Records into a log those messages through an extension object that are worth recording.
class recording_t
{
public:
    recording_t() = default;
    recording_t(const recording_t&) = delete;
    recording_t& operator=(const recording_t&) = delete;
    /// Calls stop().
    ~recording_t();

    /// Pushes its handlers on top of the object's handlers, so that none of them can keep a message
    /// from the log. Returns false and changes nothing if the log cannot be recorded into.
    bool start(const std::string& name, velmoext::velmo_ex_t& ex);

    /// Closes the log. Messages that pass later are not recorded. Does nothing if no recording was
    /// started.
    void stop();

private:
    boost::shared_ptr<velmoext::messages_storage_t> m_storage;
};

} // namespace audit
