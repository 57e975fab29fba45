#pragma once

#include <velmoext1/velmo_ex.h>

namespace bench
{

typedef void (*deliver_t)(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>&,
                          const boost::shared_ptr<velmoext_1_4_8::message_t>&);

/// Delivery is private, and all that calls it from within the library takes a hundred times longer.
/// An explicit instantiation may name a private member; that is how the programs get at it.
deliver_t get_deliver();

template <deliver_t Deliver>
struct reach_t
{
    friend deliver_t get_deliver() { return Deliver; }
};

template struct reach_t<&velmoext_1_4_8::velmo_ex_t::dispatch_message>;

inline void deliver(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>& ex,
                    const boost::shared_ptr<velmoext_1_4_8::message_t>& message)
{
    get_deliver()(ex, message);
}

} // namespace bench
