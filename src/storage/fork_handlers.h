#pragma once

namespace velmoext_1_4_8
{

class messages_storage_t;

/// The handlers of fork() for all storages of the process. Before the fork, each storage writes all
/// that was recorded. In the child, it buffers messages until the parent's recording has ended.
///
/// A storage that another thread uses at that instant is skipped: its mutex stays locked in the
/// child.
class fork_handlers_t
{
public:
    /// Any thread may call these.
    static void add(messages_storage_t& storage);
    static void remove(const messages_storage_t& storage);

    /// The handlers of fork().
    static void prepare();
    static void in_parent();
    static void in_child();
};

} // namespace velmoext_1_4_8
