#pragma once

#include <velmoext1/velmo_ex.h>

#include <type_traits>

namespace bench
{

/// Gives the programs access to the private delivery, which may be a static or a member function.
/// Its callers within the library take a hundred times longer. An explicit instantiation may name a
/// private member.
template <auto Dispatch>
struct private_access_t
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

template struct private_access_t<&velmoext_1_4_8::velmo_ex_t::dispatch_message>;

/// Offers the message to the handlers of the extension object.
void deliver(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>& ex,
             const boost::shared_ptr<velmoext_1_4_8::message_t>& message);

} // namespace bench
