#include "storage/fork_handlers.h"

#include "storage/messages_storage_impl.h"

#include <velmoext1/messages_storage.h>

#include <list>
#include <mutex>
#include <new>
#include <pthread.h>

namespace velmoext_1_4_8
{
namespace
{

struct entry_t
{
    messages_storage_t* storage;
    bool is_locked; // by prepare()
};

std::mutex entries_mutex;

// Guarded by entries_mutex. Not destroyed at exit, as a storage may live longer.
std::list<entry_t>& entries()
{
    static auto* const all = new std::list<entry_t>; // NOLINT(cppcoreguidelines-owning-memory)
    return *all;
}

void write_all(messages_storage_impl_t& storage)
{
    try {
        storage.before_fork();
    } catch (const std::bad_alloc&) {
        // The parent still has the messages, and writes them later.
    }
}

// Registered on loading: handlers that a program registers later run first before a fork, so that
// its locks are taken before those of the library, as everywhere.
[[maybe_unused]] const int is_registered =
    pthread_atfork(fork_handlers_t::prepare, fork_handlers_t::in_parent, fork_handlers_t::in_child);

} // namespace

void fork_handlers_t::add(messages_storage_t& storage)
{
    const std::lock_guard<std::mutex> guard(entries_mutex);
    entries().push_back({&storage, false});
}

void fork_handlers_t::remove(const messages_storage_t& storage)
{
    const std::lock_guard<std::mutex> guard(entries_mutex);
    entries().remove_if([&](const entry_t& entry) { return entry.storage == &storage; });
}

// A lock that is taken is not waited for: a handler that a replay calls may fork.
void fork_handlers_t::prepare()
{
    entries_mutex.lock();
    for (entry_t& entry : entries()) {
        entry.is_locked = entry.storage->m_mutex.try_lock();
        if (entry.is_locked)
            write_all(*entry.storage->m_impl);
    }
}

void fork_handlers_t::in_parent()
{
    for (const entry_t& entry : entries())
        if (entry.is_locked)
            entry.storage->m_mutex.unlock();
    entries_mutex.unlock();
}

void fork_handlers_t::in_child()
{
    for (const entry_t& entry : entries())
        if (entry.is_locked)
            entry.storage->m_impl->after_fork_in_child();
        else
            entry.storage->m_impl->close_log();
    in_parent();
}

} // namespace velmoext_1_4_8
