#pragma once

namespace velmoext_1_4_8
{

class messages_storage_t;

/// What the process's storages do when it forks. The parent has handed all that was recorded to the
/// system before; a child holds what it records until its parent's recording has ended.
///
/// A storage that another thread uses at that instant is left as it is: its lock stays locked in
/// the child.
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
