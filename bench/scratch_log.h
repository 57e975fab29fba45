#pragma once

#include "workload.h"

#include "scratch_folder.h"

#include <velmoext1/messages_storage.h>

#include <memory>

namespace bench
{

/// Path of a log in a temporary folder, which is removed with this object.
class scratch_log_t
{
public:
    std::string name() const { return m_folder.name("log.xml"); }
    std::size_t size() const;
    std::string read() const { return m_folder.read("log.xml"); }

    boost::shared_ptr<velmoext_1_4_8::messages_storage_t> storage() const;

    /// Records the first `count` messages into the log.
    void record(const workload_t& workload, std::size_t count) const;

private:
    scratch_folder_t m_folder;
};

/// Returns a log of the first `count` messages.
std::shared_ptr<scratch_log_t> make_log(const workload_t& workload, std::size_t count);

} // namespace bench
