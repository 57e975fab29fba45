#pragma once

#include "world.h"

#include <cstdint>
#include <random>

namespace soak
{

/// One thread's work: operations of the whole public interface, one after the other as they come.
class worker_t
{
public:
    worker_t(world_t& world, std::uint32_t seed) : m_world(world), m_random(seed) {}

    /// One operation.
    void work();

private:
    void say_checked();
    void say_odd();
    void say_through_the_host();
    void push();
    void pop();
    void let_go();
    void make_anew();
    void record();
    void start_or_stop();
    void replay();
    void damage();
    void read_property();
    void show();
    void copy_values();
    void report_progress();
    void use_files();

    std::size_t pick(std::size_t count) { return m_random() % count; }
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> talking_ex();
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> listening_ex();
    boost::shared_ptr<velmoext_1_4_8::messages_storage_t> storage();
    boost::shared_ptr<velmoext_1_4_8::message_t> message();
    boost::shared_ptr<velmoext_1_4_8::base_handler_t> make_handler();

    world_t& m_world;
    std::mt19937 m_random;
};

} // namespace soak
