/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/progress_message.h>

#include <boost/shared_ptr.hpp>

namespace velmoext_1_4_8
{

class velmo_ex_t;

/// Receives the messages of an extension object. Derive from it, or see make_handler(). A class
/// that overrides one on_message() writes `using base_handler_t::on_message;` to keep the other.
///
/// A handler is called on the delivering thread, while the extension object is locked. Calls from
/// one object are serialized; a handler on two objects can be called twice at once. It must not
/// push, pop or deliver on the calling object: such a call never returns. Its exceptions propagate
/// to the deliverer, and lower handlers do not receive that message.
class VELMOEXT1_API base_handler_t
{
public:
    base_handler_t() = default;
    base_handler_t(const base_handler_t&) = default;
    base_handler_t& operator=(const base_handler_t&) = default;
    virtual ~base_handler_t();

    /// Receives the progress of an operation. The component that reports progress calls it
    /// directly. Returns whether the message is consumed; the default implementation returns false.
    /// `ex` may be null.
    virtual bool on_message(boost::shared_ptr<velmo_ex_t> ex,
                            boost::shared_ptr<progress_message_t> msg);

    /// Receives a message that is delivered to `ex`. Returns true to consume it, or false to pass
    /// it to the next handler; the default implementation returns false.
    ///
    /// `ex` owns the extension object. `msg` is null if the text that arrived could not be read. It
    /// then is not a message or exceeds a limit, or libxml2 ran out of memory.
    virtual bool on_message(boost::shared_ptr<velmo_ex_t> ex, boost::shared_ptr<message_t> msg);
};

} // namespace velmoext_1_4_8
