// Delivers a message to all handlers of an extension object, none of which consumes it.

#include "counting_handler.h"
#include "deliver.h"
#include "runner.h"

#include <boost/make_shared.hpp>
#include <boost/thread/mutex.hpp>

#include <list>
#include <memory>

namespace
{

using bench::counting_handler_t;
using bench::message_ptr_t;
using bench::workload_t;
using velmoext_1_4_8::velmo_ex_t;

typedef std::vector<boost::shared_ptr<counting_handler_t>> handlers_t;

handlers_t make_handlers(std::size_t count)
{
    handlers_t handlers(count);
    for (auto& handler : handlers)
        handler = boost::make_shared<counting_handler_t>();
    return handlers;
}

std::size_t count_calls(const handlers_t& handlers)
{
    std::size_t calls = 0;
    for (const auto& handler : handlers)
        calls += handler->count();
    return calls;
}

// The minimum of a delivery. Like the library's, it takes shared ownership of the message and is
// not inlined. Otherwise the processor would prefetch the next messages, which are far apart.
class bare_stack_t
{
public:
    bare_stack_t(const boost::shared_ptr<velmo_ex_t>& ex, const handlers_t& handlers)
        : m_ex(ex), m_handlers(handlers.begin(), handlers.end())
    {}

    [[gnu::noinline]] void
    deliver(message_ptr_t message) // NOLINT(performance-unnecessary-value-param)
    {
        const boost::mutex::scoped_lock lock(m_mutex);
        for (auto at = m_handlers.rbegin(); at != m_handlers.rend(); ++at)
            if ((*at)->on_message(m_ex, message))
                return;
    }

private:
    boost::mutex m_mutex;
    const boost::shared_ptr<velmo_ex_t> m_ex;
    std::list<boost::shared_ptr<velmoext_1_4_8::base_handler_t>> m_handlers;
};

bench::candidate_t floor(const workload_t& workload, std::size_t handler_count)
{
    return {"floor", [&workload, handler_count](std::size_t) -> bench::work_t {
                const handlers_t handlers = make_handlers(handler_count);
                const auto stack = std::make_shared<bare_stack_t>(
                    velmo_ex_t::get(velmo_ex_t::generate_id(L"floor"), L""), handlers);
                return [&workload, handlers, stack](std::size_t count) {
                    for (std::size_t i = 0; i < count; ++i)
                        stack->deliver(workload.messages()[i]);
                    return count_calls(handlers);
                };
            }};
}

bench::candidate_t velmoext1(const workload_t& workload, std::size_t handler_count)
{
    return {"velmoext1", [&workload, handler_count](std::size_t) -> bench::work_t {
                const handlers_t handlers = make_handlers(handler_count);
                const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"bench"), L"");
                for (const auto& handler : handlers)
                    ex->push_handler(handler);
                return [&workload, handlers, ex](std::size_t count) {
                    for (std::size_t i = 0; i < count; ++i)
                        bench::deliver(ex, workload.messages()[i]);
                    return count_calls(handlers);
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    std::vector<bench::subject_t> subjects;
    for (const std::size_t handlers : {1U, 4U, 16U})
        subjects.push_back({"dispatch_" + std::to_string(handlers),
                            {floor(workload, handlers), velmoext1(workload, handlers)},
                            [handlers](std::size_t count) { return handlers * count; },
                            10});
    return subjects;
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}
