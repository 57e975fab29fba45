/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/progress_message.h>

#include <boost/shared_ptr.hpp>

namespace velmoext_1_4_8
{

class velmo_ex_t;

/// What a component puts onto an extension object to see the messages that pass there.
///
/// A handler runs on the thread that delivers, while the extension object's lock is held: messages
/// of one object arrive one at a time, those of two objects perhaps at once. So it must not push,
/// pop or deliver on the object that is calling it: such a call never returns. What it throws
/// passes out to the one who delivered, and the handlers beneath do not see that message.
class VELMOEXT1_API base_handler_t
{
public:
    base_handler_t() = default;
    base_handler_t(const base_handler_t&) = default;
    base_handler_t& operator=(const base_handler_t&) = default;
    virtual ~base_handler_t();

    /// Sees the progress of an operation. No delivery calls it: the one who reports progress does,
    /// on a handler that it knows. True when consumed; by default false.
    virtual bool on_message(boost::shared_ptr<velmo_ex_t> ex,
                            boost::shared_ptr<progress_message_t> msg);

    /// Sees a message that is delivered through `ex`. Returns true to consume it, false to pass it
    /// on to the next handler; by default false.
    ///
    /// `ex` is the extension object's own shared pointer: it owns the object, even if the delivery
    /// was started through a pointer that does not. `msg` is null if the text that arrived is not a
    /// message.
    virtual bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg);
};

} // namespace velmoext_1_4_8
