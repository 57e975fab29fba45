#pragma once

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>

namespace velmoext_1_4_8
{

class messages_storage_t;

/// All storages of the process, and the handlers of fork() for them. Before the fork, each storage
/// writes all that was recorded. In the child, it buffers messages until the parent's recording has
/// ended.
///
/// A storage that replays at that instant is skipped, as is one that another thread uses for
/// longer than a second: its mutex stays locked in the child.
class storage_registry_t
{
public:
    /// Any thread may call these.
    static boost::shared_ptr<messages_storage_t> get(const basekit2::path_t& path);
    static void add(messages_storage_t& storage);
    /// Removes the storage and ends its recording. No fork() happens meanwhile: a child would
    /// inherit the log without knowing of it.
    static void close(messages_storage_t& storage);

    /// The handlers of fork().
    static void prepare();
    static void in_parent();
    static void in_child();
};

} // namespace velmoext_1_4_8
