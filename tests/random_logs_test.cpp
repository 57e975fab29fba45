// Random logs, replayed and carried over by the library and read by one parse of libxml2.

#include "log_oracle.h"
#include "message_fields.h"
#include "random_documents.h"
#include "storage_support.h"
#include "writer_oracle.h"

#include <cstdlib>

using namespace velmoext_1_4_8;

namespace
{

// Uses scratch folders in memory unless the environment sets a directory, since a disk is slow.
[[maybe_unused]] const bool is_in_memory =
    setenv("TMPDIR", "/dev/shm", 0) == 0; // NOLINT(concurrency-mt-unsafe)

// Keeps each message, and its fields at delivery.
class delivery_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t msg) override
    {
        m_at_delivery += fields_of(msg);
        m_messages.push_back(std::move(msg));
        return true;
    }

    std::string take()
    {
        std::string all = std::move(m_at_delivery) + "afterwards\n";
        for (const message_ptr_t& message : m_messages)
            all += fields_of(message);
        m_at_delivery.clear();
        m_messages.clear();
        return all;
    }

private:
    std::string m_at_delivery;
    std::vector<message_ptr_t> m_messages;
};

class random_logs_test : public storage_test_t
{
protected:
    random_logs_test() { m_ex->push_handler(m_handler); }

    std::string replay(const storage_ptr_t& storage, bool& is_read) const
    {
        EXPECT_TRUE(storage->start_reading());
        is_read = storage->replay(m_ex);
        return m_handler->take();
    }

    // Replays the log part by part, each part right after it is written.
    void expect_replay(const std::vector<std::string>& parts) const
    {
        log_oracle_t oracle;
        const storage_ptr_t storage = get();
        std::string log;
        for (const std::string& part : parts) {
            log += part;
            m_folder.write("log.xml", log);
            bool is_read = false;
            const std::string replayed = replay(storage, is_read);
            const log_oracle_t::reading_t expected = oracle.read(part);
            ASSERT_EQ(replayed, text_of(expected));
            ASSERT_EQ(is_read, expected.is_read);
        }
    }

    void expect_carry_over(const std::string& log) const
    {
        m_folder.write("log.xml", log);
        const storage_ptr_t storage = get();
        const log_oracle_t::reading_t expected = log_oracle_t().read(log);
        const bool is_started = storage->start_recording();
        ASSERT_TRUE(storage->stop_recording());
        if (expected.start != log_oracle_t::start_t::either) {
            ASSERT_EQ(is_started, expected.start == log_oracle_t::start_t::succeeds);
        }
        ASSERT_EQ(m_folder.read("log.xml"), is_started ? written_log(expected.delivered) : log);
        ASSERT_FALSE(m_folder.has("log.xml.tmp"));
    }

    boost::shared_ptr<delivery_handler_t> m_handler = boost::make_shared<delivery_handler_t>();
    boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"random_logs_test."), L"");
};

} // namespace

TEST_F(random_logs_test, a_replay_delivers_the_messages_that_libxml2_finds_in_a_log)
{
    const random_seeds_t seeds(8000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log = random_log(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + log);
        expect_replay({log});
        if (HasFatalFailure())
            return;
    }
}

TEST_F(random_logs_test, a_replay_of_appended_text_delivers_the_messages_that_libxml2_finds_in_it)
{
    const random_seeds_t seeds(3000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log = random_log(random);
        const std::size_t cut = random.below(log.size() + 1);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + log);
        if (random.one_in(2))
            expect_replay({log, random_log(random), random_log(random)});
        else
            expect_replay({log.substr(0, cut), log.substr(cut)});
        if (HasFatalFailure())
            return;
    }
}

TEST_F(random_logs_test, a_start_carries_over_the_messages_that_libxml2_finds_in_a_log)
{
    const random_seeds_t seeds(2000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log = random_log(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + log);
        expect_carry_over(log);
        if (HasFatalFailure())
            return;
    }
}

TEST_F(random_logs_test, a_log_that_is_cut_anywhere_delivers_the_messages_that_libxml2_finds_in_it)
{
    const random_seeds_t seeds(4);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string log = random_log(random);
        for (std::size_t size = 0; size <= log.size(); ++size) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", size " + std::to_string(size));
            expect_replay({log.substr(0, size)});
            if (HasFatalFailure())
                return;
        }
    }
}
