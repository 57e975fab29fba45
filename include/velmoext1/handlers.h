/// @file
/// Handlers without a class of one's own, and a scope for any handler.
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/velmo_ex.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <list>
#include <new>
#include <type_traits>
#include <utility>

namespace velmoext_1_4_8
{

/// Handler that calls a function with each message. Created by make_handler().
template <typename Function>
class function_handler_t : public base_handler_t
{
public:
    explicit function_handler_t(Function function) : m_function(std::move(function)) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, boost::shared_ptr<message_t> msg) override
    {
        return msg && m_function(msg);
    }

private:
    Function m_function;
};

/// Returns a handler that calls the function with each message, and consumes the message if the
/// function returns true:
///
///     ex->push_handler(make_handler([](const boost::shared_ptr<message_t>& msg) {
///         std::wcout << msg->get_type() << L'\n';
///         return true;
///     }));
///
/// Passes null on without a call. The rules of base_handler_t apply to the function: it must not
/// push, pop or deliver on the extension object, and its exceptions pass to the deliverer.
template <typename Function>
boost::shared_ptr<base_handler_t> make_handler(Function function)
{
    static_assert(std::is_invocable_r_v<bool, Function&, const boost::shared_ptr<message_t>&>,
                  "a handler's function takes a boost::shared_ptr<message_t> and returns whether "
                  "it consumes");
    return boost::make_shared<function_handler_t<Function>>(std::move(function));
}

/// Returns a handler that adds the flags to each message of at least the given severity and passes
/// every message on. Push it after a messages_storage_t, which records flagged messages only: flags
/// do not cross the channel.
inline boost::shared_ptr<base_handler_t> make_flagger(message_t::severity_t severity, int flags)
{
    return make_handler([severity, flags](const boost::shared_ptr<message_t>& msg) {
        if (msg->get_severity() >= severity)
            msg->set_flags(msg->get_flags() | flags);
        return false;
    });
}

/// Keeps a handler on an extension object's stack while in scope. Shares ownership of both.
///
/// Scopes of one extension object may end in any order. Handlers above are popped and pushed again.
/// A message that another thread delivers in between misses them. If pushing runs out of memory,
/// the handlers not yet pushed again are lost.
///
/// Not synchronized: two scopes of one extension object must not end at once.
class scoped_handler_t
{
public:
    /// Pushes the handler. Neither pointer may be null.
    scoped_handler_t(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<base_handler_t> handler)
        : m_ex(std::move(ex)), m_handler(std::move(handler))
    {
        m_ex->push_handler(m_handler);
    }
    scoped_handler_t(const scoped_handler_t&) = delete;
    scoped_handler_t& operator=(const scoped_handler_t&) = delete;

    /// Removes the handler, or its topmost occurrence. If it was popped already, the stack is the
    /// same afterwards, but all handlers are popped and pushed again.
    ///
    /// Must not run in a handler of the same object: the call never returns.
    ~scoped_handler_t()
    {
        try {
            remove();
        } catch (const std::bad_alloc&) {
            // A destructor cannot report it.
        }
    }

private:
    void remove()
    {
        std::list<boost::shared_ptr<base_handler_t>> above;
        for (auto top = m_ex->pop_handler(); top && top != m_handler; top = m_ex->pop_handler())
            above.push_front(std::move(top));
        for (auto& handler : above)
            m_ex->push_handler(std::move(handler));
    }

    boost::shared_ptr<velmo_ex_t> m_ex;
    boost::shared_ptr<base_handler_t> m_handler;
};

} // namespace velmoext_1_4_8
