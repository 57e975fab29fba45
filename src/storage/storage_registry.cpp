#include "storage/storage_registry.h"

#include "storage/messages_storage_impl.h"

#include <velmoext1/messages_storage.h>

#include <boost/weak_ptr.hpp>

#include <chrono>
#include <list>
#include <map>
#include <mutex>
#include <new>
#include <pthread.h>
#include <thread>

namespace velmoext_1_4_8
{
namespace
{

// A program that forks must not wait longer than this for all its storages.
constexpr std::chrono::seconds max_fork_delay(1);

struct entry_t
{
    messages_storage_t* storage;
    bool is_locked; // by prepare()
};

// paths_mutex is locked before entries_mutex, and both before a storage's mutex.
struct registry_t
{
    std::mutex paths_mutex;
    std::map<basekit2::path_t, boost::weak_ptr<messages_storage_t>> paths; // guarded by paths_mutex
    std::mutex entries_mutex;
    std::list<entry_t> entries; // guarded by entries_mutex
};

// Not destroyed at exit: a static object that is destroyed late can still use a storage.
registry_t& registry()
{
    static auto* const all = new registry_t; // NOLINT(cppcoreguidelines-owning-memory)
    return *all;
}

// Registered on loading: handlers that a program registers later run first before a fork, so that
// its locks are taken before those of the library, as everywhere.
[[maybe_unused]] const int is_registered = pthread_atfork(
    storage_registry_t::prepare, storage_registry_t::in_parent, storage_registry_t::in_child);

} // namespace

boost::shared_ptr<messages_storage_t> storage_registry_t::get(const basekit2::path_t& path)
{
    registry_t& all = registry();
    const std::lock_guard<std::mutex> guard(all.paths_mutex);
    const auto found = all.paths.find(path);
    if (found != all.paths.end()) {
        if (auto storage = found->second.lock())
            return storage;
        all.paths.erase(found);
    }
    boost::shared_ptr<messages_storage_t> storage(new messages_storage_t(path));
    all.paths.emplace(path, storage);
    return storage;
}

void storage_registry_t::add(messages_storage_t& storage)
{
    registry_t& all = registry();
    const std::lock_guard<std::mutex> guard(all.entries_mutex);
    all.entries.push_back({&storage, false});
}

void storage_registry_t::close(messages_storage_t& storage)
{
    registry_t& all = registry();
    const std::lock_guard<std::mutex> guard(all.entries_mutex);
    all.entries.remove_if([&](const entry_t& entry) { return entry.storage == &storage; });
    storage.m_impl.reset();
}

// A replay is not waited for: the handlers that it calls may fork, or wait for the thread that
// does.
void storage_registry_t::prepare()
{
    registry_t& all = registry();
    all.paths_mutex.lock();
    all.entries_mutex.lock();
    const auto end = std::chrono::steady_clock::now() + max_fork_delay;
    for (entry_t& entry : all.entries) {
        messages_storage_impl_t& storage = *entry.storage->m_impl;
        entry.is_locked = entry.storage->m_mutex.try_lock();
        while (!entry.is_locked && !storage.is_replaying() &&
               std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
            entry.is_locked = entry.storage->m_mutex.try_lock();
        }
        try {
            if (entry.is_locked)
                storage.before_fork(end);
        } catch (const std::bad_alloc&) {
            // The parent still has the messages, and writes them later.
        }
    }
}

void storage_registry_t::in_parent()
{
    registry_t& all = registry();
    for (const entry_t& entry : all.entries)
        if (entry.is_locked)
            entry.storage->m_mutex.unlock();
    all.entries_mutex.unlock();
    all.paths_mutex.unlock();
}

void storage_registry_t::in_child()
{
    for (const entry_t& entry : registry().entries)
        if (entry.is_locked)
            entry.storage->m_impl->after_fork_in_child();
        else
            entry.storage->m_impl->close_in_child();
    in_parent();
}

} // namespace velmoext_1_4_8
