#pragma once

#include <velmoext1/velmo_ex.h>

#include <type_traits>

namespace bench
{

/// Delivery is private, and all that calls it from within the library takes a hundred times longer.
/// An explicit instantiation may name a private member; that is how the programs reach it, whether
/// it is a static function or a member of the object.
template <auto Dispatch>
struct reach_t
{
    friend void deliver(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>& ex,
                        const boost::shared_ptr<velmoext_1_4_8::message_t>& message)
    {
        if constexpr (std::is_member_function_pointer_v<decltype(Dispatch)>)
            (ex.get()->*Dispatch)(message);
        else
            Dispatch(ex, message);
    }
};

template struct reach_t<&velmoext_1_4_8::velmo_ex_t::dispatch_message>;

/// Offers the message to the handlers of the extension object.
void deliver(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>& ex,
             const boost::shared_ptr<velmoext_1_4_8::message_t>& message);

} // namespace bench
