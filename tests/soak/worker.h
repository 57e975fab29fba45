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
    void say_checked();
    void say_heard();
    void say_odd();
    void say_through_the_host();
    void push();
    void pop();
    void let_go();
    void make_anew();
    void record();
    void start_or_stop();
    void replay();
    void keep_own_log();
    void record_in_own_log();
    void damage();
    void read_property();
    void show();
    void show_from_files();
    void copy_values();
    void report_progress();
    void use_files();

    /// Expects that exactly these were delivered on this thread, to any hearing handler, since the
    /// last check.
    void check_heard(const std::vector<std::wstring>& sent, const char* what);
    /// Expects this title and this text of the message and of its copy.
    void check_shown(velmoext_1_4_8::extended_message_t shown, const std::wstring& title,
                     const std::wstring& text);

    std::size_t pick(std::size_t count) { return m_random() % count; }
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> talking_ex();
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> listening_ex();
    boost::shared_ptr<velmoext_1_4_8::messages_storage_t> storage();
    boost::shared_ptr<velmoext_1_4_8::message_t> message();
    boost::shared_ptr<velmoext_1_4_8::base_handler_t> make_handler();

    world_t& m_world;
    const basekit2::path_t m_own_log;
    std::mt19937 m_random;
    std::vector<std::wstring> m_recorded; ///< in the log of its own
};

} // namespace soak
