// A component of a host that loads it. It uses the library; the host uses only these functions.

#include "support.h"

using namespace velmoext_1_4_8;

namespace
{

boost::shared_ptr<recording_handler_t> handler;
boost::shared_ptr<velmo_ex_t> ex;

} // namespace

#define EXPORTED_TO_HOST extern "C" __attribute__((visibility("default")))

EXPORTED_TO_HOST void start_receiving(const wchar_t* id)
{
    ex = velmo_ex_t::get(id, L"");
    handler = boost::make_shared<recording_handler_t>();
    ex->push_handler(handler);
}

/// Returns whether the topmost handler was this component's.
EXPORTED_TO_HOST bool stop_receiving()
{
    const bool was_topmost = ex->pop_handler() == handler;
    handler.reset();
    ex.reset();
    return was_topmost;
}

EXPORTED_TO_HOST std::size_t received_count()
{
    return handler->messages().size();
}

EXPORTED_TO_HOST void send_message(const wchar_t* id, const wchar_t* type)
{
    deliver(velmo_ex_t::get(id, L""), make_message(type, message_t::info));
}

/// Returns a number that no other call in the process gets.
EXPORTED_TO_HOST int next_number()
{
    static const std::wstring base = L"component_test.";
    return std::stoi(velmo_ex_t::generate_id(base).substr(base.size()));
}
