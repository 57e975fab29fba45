// A component of a host that loads it. It uses the library; the host uses only these functions.

#include "support.h"

using namespace velmoext_1_4_8;

namespace
{

boost::shared_ptr<recording_handler_t> handler;
boost::shared_ptr<velmo_ex_t> ex;

} // namespace

#define FOR_THE_HOST extern "C" __attribute__((visibility("default")))

FOR_THE_HOST void begin_to_listen(const wchar_t* id)
{
    ex = velmo_ex_t::get(id, L"");
    handler = boost::make_shared<recording_handler_t>();
    ex->push_handler(handler);
}

/// Returns whether the topmost handler was this component's.
FOR_THE_HOST bool end_to_listen()
{
    const bool was_own = ex->pop_handler() == handler;
    handler.reset();
    ex.reset();
    return was_own;
}

FOR_THE_HOST std::size_t number_heard()
{
    return handler->messages().size();
}

FOR_THE_HOST void tell(const wchar_t* id, const wchar_t* type)
{
    deliver(velmo_ex_t::get(id, L""), make_message(type, message_t::info));
}

/// Returns a number that no other call in the process gets.
FOR_THE_HOST int next_number()
{
    static const std::wstring base = L"component_test.";
    return std::stoi(velmo_ex_t::generate_id(base).substr(base.size()));
}
