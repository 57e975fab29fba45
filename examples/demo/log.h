/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/messages_storage.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace audit
{

/// Whether a name is UTF-8; only then can a storage have it.
bool can_name_log(const std::string& name);

/// The storage of that name.
boost::shared_ptr<velmoext::messages_storage_t> open_log(const std::string& name);

/// Records into a log what is worth it of the messages that pass an extension object.
class recording_t
{
public:
    recording_t() = default;
    recording_t(const recording_t&) = delete;
    recording_t& operator=(const recording_t&) = delete;
    /// As stop().
    ~recording_t();

    /// Puts itself on top of the object's handlers, so that none of them can keep a message from
    /// the log. False, with nothing done, where the log cannot be recorded into.
    bool start(const std::string& name, velmoext::velmo_ex_t& ex);

    /// Closes the log. What passes later is not recorded. Harmless where nothing was started.
    void stop();

private:
    boost::shared_ptr<velmoext::messages_storage_t> m_storage;
};

} // namespace audit
