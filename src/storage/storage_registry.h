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
/// A storage that replays at that instant is not waited for, nor one that another thread uses for
/// longer than a second. In the child, it is replaced by one that does not record.
class storage_registry_t
{
public:
    /// Any thread may call these.
    static boost::shared_ptr<messages_storage_t> get(const basekit2::path_t& path);
    static void add(messages_storage_t& storage);
    static void remove(const messages_storage_t& storage);

    /// The handlers of fork().
    static void prepare();
    static void in_parent();
    static void in_child();

private:
    static void replace(messages_storage_t& storage);
};

} // namespace velmoext_1_4_8
