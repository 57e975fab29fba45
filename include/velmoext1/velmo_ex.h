/// @file
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/export.h>
#include <velmoext1/message.h>

#include <boost/enable_shared_from_this.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/weak_ptr.hpp>

#include <cstdint>
#include <list>
#include <map>
#include <string>

namespace velmoext_1_4_8
{

/// An extension object: the place in the process where all components that know an id meet. It
/// holds a stack of handlers, which every message delivered to it passes from the top down until
/// one consumes it, and a prefix that tells presentation code whose texts to prefer. What nobody
/// consumes is dropped.
///
/// The process has at most one object per id. Callers share it; it lives as long as one of them
/// holds it, and it holds its handlers until they are popped or it dies. Every operation may be
/// called from any thread, but for the prefix (see there).
class VELMOEXT1_API velmo_ex_t : public boost::enable_shared_from_this<velmo_ex_t>
{
public:
    /// The object of this id, made with this prefix where there is none; an object that is there
    /// keeps its own prefix. Any text is an id, also the empty one; ids are compared exactly.
    ///
    /// Null while the id's former object, which nobody owns any more, is still letting go of its
    /// handlers. Another thread may ask again; a handler that dies with it gets null each time.
    static boost::shared_ptr<velmo_ex_t> get(const std::wstring& id, const std::wstring& prefix);

    /// `base` and a decimal number behind it, such that the process has no object of that id. All
    /// bases share one count, from 0 on, which goes on with the smallest number behind the largest.
    /// The id is not reserved: pass it to get().
    static std::wstring generate_id(const std::wstring& base);

    velmo_ex_t(const velmo_ex_t&) = delete;
    velmo_ex_t& operator=(const velmo_ex_t&) = delete;
    virtual ~velmo_ex_t();

    /// The prefix is not locked: nobody may set it while another thread sets or gets it.
    void set_prefix(const std::wstring& prefix);
    /// A copy of the prefix; see set_prefix() for threads.
    std::wstring get_prefix();

    /// Puts a handler on top of the stack, to be asked before all others. A handler that is pushed
    /// twice is asked twice. It must not be null.
    void push_handler(boost::shared_ptr<base_handler_t> handler);

    /// Takes the topmost handler off the stack and answers it, null where the stack is empty.
    boost::shared_ptr<base_handler_t> pop_handler();

private:
    friend class config_reader_t;
    friend class messages_storage_impl_t;
    friend class velmo_adapter_t;

    typedef std::map<std::wstring, boost::weak_ptr<velmo_ex_t>> registry_t;
    typedef std::list<registry_t::iterator> entries_t;

    VELMOEXT1_LOCAL velmo_ex_t();

    /// Offers the message to the handlers, from the top of the stack, until one returns true. Drops
    /// a message that no handler consumes; null is offered like any other. What a handler throws
    /// passes out, with the stack unchanged; so does boost::bad_weak_ptr if there is a handler but
    /// no owner of this object. A caller must keep this object alive meanwhile.
    VELMOEXT1_LOCAL void dispatch_message(boost::shared_ptr<message_t> msg);

    VELMOEXT1_LOCAL void retire() noexcept;
    VELMOEXT1_LOCAL void drop_handlers() noexcept;
    VELMOEXT1_LOCAL static void purge() noexcept;

    boost::mutex m_mutex;
    std::list<boost::shared_ptr<base_handler_t>> m_handlers; ///< guarded by m_mutex
    std::wstring m_prefix;                                   ///< not guarded, see set_prefix()
    entries_t m_entry; ///< its place in the registry; only get() and the destructor touch it

    VELMOEXT1_LOCAL static boost::mutex m_global_mutex;
    VELMOEXT1_LOCAL static registry_t m_active_velmo_exs; ///< guarded by m_global_mutex
    VELMOEXT1_LOCAL static entries_t
        m_expired_entries; ///< of objects being destroyed; guarded by m_global_mutex
    VELMOEXT1_LOCAL static std::int32_t m_id_counter; ///< guarded by m_global_mutex
};

} // namespace velmoext_1_4_8
