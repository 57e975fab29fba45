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

/// Extension object: process-wide message hub, one per id. Has a stack of handlers and a prefix.
///
/// A message is offered to the handler that was pushed last, then to the one below, until one
/// consumes it. A message that no handler consumes is dropped. The prefix selects the preferred
/// texts, see extended_message_t.
///
/// Messages are delivered by velmo_adapter_t::say() and messages_storage_t::replay().
/// push_handler() and pop_handler() wait for a delivery in progress.
///
/// Callers share the object, which is destroyed with its last owner. It owns its handlers until
/// they are popped or it is destroyed.
///
/// Thread safety: any thread may call any operation at any time, except set_prefix().
class VELMOEXT1_API velmo_ex_t : public boost::enable_shared_from_this<velmo_ex_t>
{
public:
    /// Returns the object with this id. Creates it with the prefix if there is none; an existing
    /// object keeps its prefix. Ids are compared exactly; any text is an id.
    ///
    /// Returns null while the previous object with this id is being destroyed. Another thread may
    /// try again; the destructor of one of its handlers may not.
    static boost::shared_ptr<velmo_ex_t> get(const std::wstring& id, const std::wstring& prefix);

    /// Returns `base` followed by a decimal number, such that no object with that id exists. All
    /// bases share one counter, which starts at 0 and wraps to the minimum. The id is not reserved:
    /// pass it to get().
    static std::wstring generate_id(const std::wstring& base);

    velmo_ex_t(const velmo_ex_t&) = delete;
    velmo_ex_t& operator=(const velmo_ex_t&) = delete;
    virtual ~velmo_ex_t();

    /// Sets the prefix. Not synchronized: no other thread may meanwhile use the prefix, or read a
    /// property, a title or a text through this object.
    void set_prefix(const std::wstring& prefix);
    /// Returns the prefix. See set_prefix() for threads.
    std::wstring get_prefix();

    /// Pushes a handler, which must not be null. A handler that is pushed twice is called twice.
    void push_handler(boost::shared_ptr<base_handler_t> handler);

    /// Pops the topmost handler and returns it. Returns null if the stack is empty.
    boost::shared_ptr<base_handler_t> pop_handler();

private:
    friend class config_reader_t;
    friend class messages_storage_impl_t;
    friend class velmo_adapter_t;

    typedef std::map<std::wstring, boost::weak_ptr<velmo_ex_t>> registry_t;
    typedef std::list<registry_t::iterator> entries_t;

    VELMOEXT1_LOCAL velmo_ex_t();

    /// Offers the message, which may be null, to the handlers. Propagates their exceptions. Throws
    /// boost::bad_weak_ptr if there is a handler but no owner of this object. The caller must keep
    /// this object alive meanwhile.
    VELMOEXT1_LOCAL void dispatch_message(boost::shared_ptr<message_t> msg);

    VELMOEXT1_LOCAL void retire() noexcept;
    VELMOEXT1_LOCAL void drop_handlers() noexcept;
    VELMOEXT1_LOCAL static void purge() noexcept;

    boost::mutex m_mutex;
    std::list<boost::shared_ptr<base_handler_t>> m_handlers; ///< guarded by m_mutex
    std::wstring m_prefix;                                   ///< not guarded, see set_prefix()
    entries_t m_entry; ///< its entry in the registry; used by get() and the destructor only

    VELMOEXT1_LOCAL static boost::mutex m_global_mutex;
    VELMOEXT1_LOCAL static registry_t m_active_velmo_exs; ///< guarded by m_global_mutex
    VELMOEXT1_LOCAL static entries_t
        m_expired_entries; ///< of objects being destroyed; guarded by m_global_mutex
    VELMOEXT1_LOCAL static std::int32_t m_id_counter; ///< guarded by m_global_mutex
};

} // namespace velmoext_1_4_8
