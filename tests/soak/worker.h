#pragma once

#include "world.h"

#include <velmoext1/extended_message.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace soak
{

/// One thread's work: random operations of the whole public interface.
class worker_t
{
public:
    worker_t(world_t& world, unsigned number, std::uint32_t seed)
        : m_world(world), m_own_log(world.file_name("own" + std::to_string(number) + ".xml")),
          m_random(seed)
    {}

    /// Runs one operation.
    void work();

private:
    void say_checked_message();
    void say_and_check();
    void say_odd_text();
    void say_through_the_host();
    void push();
    void pop();
    void release_object();
    void use_new_ex();
    void record();
    void start_or_stop();
    void replay();
    void record_and_replay_own_log();
    void record_in_own_log();
    void damage_log();
    void read_property();
    void compose_text();
    void compose_text_from_files();
    void copy_values();
    void report_progress();
    void copy_and_remove_file();

    /// Expects that exactly these texts were recorded on this thread, by any handler, since the
    /// last check.
    void check_delivered(const std::vector<std::wstring>& sent, const char* what);
    /// Expects this title and this text of the message and of its copy.
    void check_composed(velmoext_1_4_8::extended_message_t extended, const std::wstring& title,
                        const std::wstring& text);

    std::size_t pick(std::size_t count) { return m_random() % count; }
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> main_ex();
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> target_ex();
    boost::shared_ptr<velmoext_1_4_8::messages_storage_t> storage();
    boost::shared_ptr<velmoext_1_4_8::message_t> message();
    boost::shared_ptr<velmoext_1_4_8::base_handler_t> make_handler();

    world_t& m_world;
    const basekit2::path_t m_own_log;
    std::mt19937 m_random;
    std::vector<std::wstring> m_recorded; ///< in m_own_log
};

} // namespace soak
