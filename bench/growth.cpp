// Prints how the cost of one grows with their number, as a table: what a message, an argument or an
// object costs where there are few, and where there are many.
//
// bench_growth [--messages MOST]

#include "counting_handler.h"
#include "deliver.h"
#include "process_cost.h"
#include "run_threads.h"
#include "runner.h"
#include "scratch_folder.h"
#include "workload.h"

#include <velmoext1/messages_storage.h>
#include <velmoext1/string_message_serializer.h>

#include <boost/make_shared.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <vector>

namespace
{

using namespace velmoext_1_4_8;
using bench::cost_t;
using bench::message_ptr;
using bench::require;
using bench::workload_t;

typedef boost::shared_ptr<messages_storage_t> storage_ptr;

// Enough rounds for a small log, whose cost is near that of a process, and few for a long one.
const int short_rounds = 15;
const int long_rounds = 3;

void print_heading()
{
    std::printf("| growth | with few | with many | ratio | goal |\n|---|---|---|---|---|\n");
}

struct figure_t
{
    std::size_t number;
    double value;
};

void print(const std::string& what, const figure_t& few, const figure_t& many, const char* goal)
{
    std::printf("| %s | %.3f with %zu | %.3f with %zu | %.2f | %s |\n", what.c_str(), few.value,
                few.number, many.value, many.number, many.value / few.value, goal);
    std::fflush(stdout);
}

storage_ptr open_log(const scratch_folder_t& folder)
{
    return messages_storage_t::get(folder.wide_name("log.xml"));
}

// Where a log is there, its messages are carried over.
void record(const scratch_folder_t& folder, const workload_t& workload, std::size_t count)
{
    const storage_ptr storage = open_log(folder);
    require(storage->start_recording(), "the log cannot be recorded into");
    for (std::size_t i = 0; i < count; ++i)
        storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                            workload.messages()[i % workload.size()]);
    storage->stop_recording();
}

void replay(const scratch_folder_t& folder, std::size_t count)
{
    const auto handler = boost::make_shared<bench::counting_handler_t>();
    const auto ex = velmo_ex_t::get(L"bench", L"");
    ex->push_handler(handler);
    const storage_ptr storage = open_log(folder);
    storage->start_reading();
    require(storage->replay(ex) && handler->count() == count, "a replay lost messages");
}

// In microseconds per message, but for the memory, which is in bytes per byte of the file.
struct log_costs_t
{
    double record;
    double carry_over;
    double replay;
    double memory;
};

log_costs_t measure_log(const workload_t& workload, std::size_t count, int rounds)
{
    const auto each = [&](const cost_t& cost) {
        return cost.cpu / static_cast<double>(count);
    };
    const scratch_folder_t one;
    record(one, workload, 1);
    const double least_memory = bench::measure(1, [&] { replay(one, 1); }).memory;

    const scratch_folder_t folder;
    const cost_t recorded = bench::measure(rounds, [&] {
        std::filesystem::remove(folder.name("log.xml"));
        record(folder, workload, count);
    });
    const cost_t carried = bench::measure(rounds, [&] { record(folder, workload, 0); });
    const cost_t replayed = bench::measure(rounds, [&] { replay(folder, count); });
    const auto bytes = static_cast<double>(std::filesystem::file_size(folder.name("log.xml")));
    return {each(recorded), each(carried), each(replayed),
            (replayed.memory - least_memory) / bytes};
}

void show_logs(std::size_t most)
{
    const workload_t workload(1000);
    const std::size_t least = std::max<std::size_t>(most / 100, 1);
    const log_costs_t few = measure_log(workload, least, short_rounds);
    const log_costs_t many = measure_log(workload, most, long_rounds);
    const char* const goal = "1.1 or less";
    print("record, us per message", {least, few.record}, {most, many.record}, goal);
    print("carry over, us per message", {least, few.carry_over}, {most, many.carry_over}, goal);
    print("replay, us per message", {least, few.replay}, {most, many.replay}, goal);
    print("replay, peak memory per byte of the log", {least, few.memory}, {most, many.memory},
          "2.2 or less each");
}

std::wstring encode_args(std::size_t count)
{
    message_t::message_content_t content;
    for (std::size_t i = 0; i < count; ++i)
        content.args.emplace(L"argument_" + std::to_wstring(i), L"/srv/data/" + std::to_wstring(i));
    const auto message = boost::make_shared<message_t>();
    message->set_type(L"many");
    message->set_content(content);
    return string_message_serializer_t::message_to_xml_string(message);
}

double decode_cost(std::size_t args, std::size_t all)
{
    const std::wstring text = encode_args(args);
    const cost_t cost = bench::measure(short_rounds, [&] {
        for (std::size_t done = 0; done < all; done += args)
            require(!string_message_serializer_t::xml_string_to_message(text)->empty(),
                    "decoded something else");
    });
    return cost.cpu / static_cast<double>(all);
}

void show_decode(std::size_t most)
{
    const std::size_t all = most / 100 * 20;
    const std::size_t many = std::max<std::size_t>(most / 100, 10);
    print("decode, us per argument", {10, decode_cost(10, all)}, {many, decode_cost(many, all)},
          "1.5 or less");
}

double object_cost(std::size_t count, std::size_t all)
{
    std::vector<boost::shared_ptr<velmo_ex_t>> objects(count);
    const cost_t cost = bench::measure(short_rounds, [&] {
        for (std::size_t done = 0; done < all; done += count) {
            for (std::size_t i = 0; i < count; ++i)
                objects[i] = velmo_ex_t::get(L"object_" + std::to_wstring(i), L"");
            for (auto& object : objects)
                object.reset();
        }
    });
    return cost.cpu / static_cast<double>(all);
}

void show_objects(std::size_t most)
{
    const std::size_t many = std::max<std::size_t>(most / 50, 200);
    print("extension objects made and destroyed, us per object", {200, object_cost(200, many)},
          {many, object_cost(many, many)}, "3 or less");
}

void deliver_many(std::size_t count)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"thread"), L"");
    ex->push_handler(boost::make_shared<bench::counting_handler_t>());
    const auto message = boost::make_shared<message_t>();
    for (std::size_t i = 0; i < count; ++i)
        bench::deliver(ex, message);
}

// The same messages in all, whatever the number of threads.
cost_t thread_cost(std::size_t threads, std::size_t all)
{
    return bench::measure(short_rounds, [&] {
        run_threads(threads, [&](std::size_t) { deliver_many(all / threads); });
    });
}

void show_threads(std::size_t most)
{
    const std::size_t all = most * 4;
    const auto thousands = static_cast<double>(all) / 1000;
    const cost_t one = thread_cost(1, all);
    const cost_t eight = thread_cost(8, all);
    print("threads that deliver into objects of their own, CPU us per 1,000 messages",
          {1, one.cpu / thousands}, {8, eight.cpu / thousands}, "about 1");
    print("the same, elapsed us per 1,000 messages", {1, one.elapsed / thousands},
          {8, eight.elapsed / thousands}, "1 by the number of cores");
}

std::size_t parse_most(int argc, char** argv)
{
    if (argc == 1)
        return 1000000;
    const bool is_usable = argc == 3 && argv[1] == std::string("--messages");
    const long most = is_usable ? std::strtol(argv[2], nullptr, 10) : 0;
    require(most > 0, "usage: bench_growth [--messages MOST]");
    return static_cast<std::size_t>(most);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const std::size_t most = parse_most(argc, argv);
        print_heading();
        show_logs(most);
        show_decode(most);
        show_objects(most);
        show_threads(most);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_growth: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
