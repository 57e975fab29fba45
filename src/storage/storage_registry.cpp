#include "storage/storage_registry.h"

#include "storage/messages_storage_impl.h"

#include <velmoext1/messages_storage.h>

#include <boost/make_shared.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/weak_ptr.hpp>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <list>
#include <map>
#include <mutex>
#include <new>
#include <pthread.h>

namespace velmoext_1_4_8
{
namespace
{

using std::chrono::steady_clock;

// A program that forks must not wait longer for the threads that use its storages, nor, as a child,
// for the recordings of its parent.
constexpr std::chrono::seconds max_fork_delay(1);
// Short, since a replay can begin meanwhile.
const long lock_timeout = 10000000; // nanoseconds

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
    std::list<entry_t> entries;                                     // guarded by entries_mutex
    std::list<boost::shared_ptr<messages_storage_impl_t>> replaced; // guarded by entries_mutex
};

// Not destroyed at exit: a static object that is destroyed late can still use a storage.
registry_t& registry()
{
    static auto* const all = new registry_t; // NOLINT(cppcoreguidelines-owning-memory)
    return *all;
}

// Keeps errno as it was.
class errno_scope_t
{
public:
    errno_scope_t() = default;
    errno_scope_t(const errno_scope_t&) = delete;
    errno_scope_t& operator=(const errno_scope_t&) = delete;
    ~errno_scope_t() { errno = m_error; }

private:
    const int m_error = errno;
};

// Waits in the queue of the mutex: a storage that other threads use all the time is free only for
// moments.
bool lock_briefly(boost::mutex& mutex)
{
    const long second = 1000000000;
    timespec end = {};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_nsec += lock_timeout;
    end.tv_sec += end.tv_nsec / second;
    end.tv_nsec %= second;
    return pthread_mutex_timedlock(mutex.native_handle(), &end) == 0;
}

void write_all(messages_storage_impl_t& storage, steady_clock::time_point end)
{
    try {
        storage.before_fork(end);
    } catch (const std::bad_alloc&) {
        // The parent still has the messages, and writes them later.
    }
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

void storage_registry_t::remove(const messages_storage_t& storage)
{
    registry_t& all = registry();
    const std::lock_guard<std::mutex> guard(all.entries_mutex);
    all.entries.remove_if([&](const entry_t& entry) { return entry.storage == &storage; });
}

// Storages that are free are locked first, so that one that is in use does not cost the time of
// others. A replay is not waited for: its handlers may fork, or wait for the thread that does.
void storage_registry_t::prepare()
{
    const errno_scope_t scope;
    registry_t& all = registry();
    all.paths_mutex.lock();
    all.entries_mutex.lock();
    for (entry_t& entry : all.entries)
        entry.is_locked = entry.storage->m_mutex.try_lock();
    const auto end = steady_clock::now() + max_fork_delay;
    for (entry_t& entry : all.entries)
        do
            entry.is_locked = entry.is_locked || lock_briefly(entry.storage->m_mutex);
        while (!entry.is_locked && !entry.storage->m_impl->is_replaying() &&
               steady_clock::now() < end);
    const auto write_end = steady_clock::now() + max_fork_delay;
    for (const entry_t& entry : all.entries)
        if (entry.is_locked)
            write_all(*entry.storage->m_impl, write_end);
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
    const errno_scope_t scope;
    for (const entry_t& entry : registry().entries)
        if (entry.is_locked)
            entry.storage->m_impl->after_fork_in_child();
        else if (!entry.storage->m_impl->is_replaying_here())
            replace(*entry.storage);
    in_parent();
}

// The thread that uses the storage does not exist in the child: the mutex stays locked, and any
// member can be half-changed. So neither is destroyed.
void storage_registry_t::replace(messages_storage_t& storage)
{
    storage.m_impl->close_in_child();
    try {
        auto replacement = boost::make_shared<messages_storage_impl_t>(storage.m_impl->path());
        registry().replaced.push_back(storage.m_impl);
        storage.m_impl.swap(replacement);
        new (&storage.m_mutex) boost::mutex;
    } catch (const std::bad_alloc&) {
        return; // the child must not use it
    }
}

} // namespace velmoext_1_4_8
