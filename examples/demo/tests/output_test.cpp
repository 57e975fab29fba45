#include "output.h"

#include "descriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace audit
{
namespace
{

int drained_pipe = -1;

extern "C" void drain_pipe(int /*signal*/)
{
    static std::array<char, 65536> bytes;
    if (::read(drained_pipe, bytes.data(), bytes.size()) < 0)
        std::abort();
}

/// Drains a pipe after a short delay, in a signal handler. The signal also interrupts a blocked
/// write.
class delayed_drain_t
{
public:
    explicit delayed_drain_t(const descriptor_t& pipe)
    {
        drained_pipe = pipe.get();
        struct sigaction action = {};
        action.sa_handler = drain_pipe;
        ::sigaction(SIGALRM, &action, &m_former);
        const itimerval soon = {{}, {0, 20000}};
        ::setitimer(ITIMER_REAL, &soon, nullptr);
    }
    delayed_drain_t(const delayed_drain_t&) = delete;
    delayed_drain_t& operator=(const delayed_drain_t&) = delete;
    ~delayed_drain_t() { ::sigaction(SIGALRM, &m_former, nullptr); }

private:
    struct sigaction m_former = {};
};

class output_test : public testing::Test
{
protected:
    void SetUp() override
    {
        std::array<int, 2> ends = {-1, -1};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        m_reader = descriptor_t(ends[0]);
        m_writer = descriptor_t(ends[1]);
    }

    std::string read()
    {
        std::array<char, 65536> bytes = {};
        const ssize_t length = ::read(m_reader.get(), bytes.data(), bytes.size());
        return std::string(bytes.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
    }

    /// Returns the output that arrives while `write` runs, and until the writer is closed after it.
    std::string read_during(const std::function<void()>& write)
    {
        std::string all;
        std::thread reader([&] {
            for (std::string part = read(); !part.empty(); part = read())
                all += part;
        });
        write();
        m_writer = descriptor_t();
        reader.join();
        return all;
    }

    descriptor_t m_reader;
    descriptor_t m_writer;
};

TEST_F(output_test, buffers_output_until_it_is_flushed)
{
    output_t output(m_writer.get());
    output.write("one ");
    output.write("two");
    ASSERT_EQ(::write(m_writer.get(), "first ", 6), 6);
    output.flush();
    EXPECT_EQ(read(), "first one two");
    EXPECT_FALSE(output.error());
}

TEST_F(output_test, writes_a_full_buffer_without_a_flush)
{
    const std::string received = read_during([this] {
        output_t output(m_writer.get());
        for (int count = 0; count < 100; ++count)
            output.write(std::string(1000, 'x'));
    });
    EXPECT_EQ(received, std::string(66000, 'x'));
}

TEST_F(output_test, writes_a_text_larger_than_the_pipe_in_full)
{
    const std::string text(1U << 20U, 'y');
    const std::string received = read_during([&] {
        output_t output(m_writer.get());
        output.write(text);
        output.flush();
    });
    EXPECT_TRUE(received == text) << received.size();
}

TEST_F(output_test, a_signal_during_a_blocked_write_is_not_a_failure)
{
    ASSERT_GE(::fcntl(m_writer.get(), F_SETPIPE_SZ, 4096), 4096);
    ASSERT_EQ(::write(m_writer.get(), std::string(4096, 'z').data(), 4096), 4096);
    output_t output(m_writer.get());
    output.write("after it");
    {
        const delayed_drain_t drain(m_reader);
        output.flush();
    }
    EXPECT_FALSE(output.error());
    EXPECT_EQ(read(), "after it");
}

TEST_F(output_test, the_first_failure_is_kept_and_nothing_is_written_after_it)
{
    const descriptor_t full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    output_t output(full.get());
    output.write("lost");
    output.flush();
    EXPECT_EQ(output.error(), std::errc::no_space_on_device);
    ASSERT_GE(::dup2(m_writer.get(), full.get()), 0);
    output.write("late");
    output.flush();
    EXPECT_EQ(output.error(), std::errc::no_space_on_device);
    ASSERT_EQ(::write(m_writer.get(), "only", 4), 4);
    EXPECT_EQ(read(), "only");
}

TEST_F(output_test, a_flush_without_output_is_not_a_failure)
{
    output_t output(-1);
    output.flush();
    EXPECT_FALSE(output.error());
    output.write("x");
    output.flush();
    EXPECT_EQ(output.error(), std::errc::bad_file_descriptor);
}

} // namespace
} // namespace audit
