// A replay of any log delivers the messages that one parse by libxml2 finds. A start carries the
// same messages over.
//
// At each form feed of an input, the log is replayed before the rest is appended.
#include "fuzz_target.h"
#include "input_text.h"
#include "log_oracle.h"
#include "message_fields.h"
#include "quiet_xml.h"
#include "require.h"
#include "writer_oracle.h"

#include "scratch_folder.h"

#include <velmoext1/messages_storage.h>

#include <boost/make_shared.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace
{

using namespace velmoext_1_4_8;

// Keeps each message and its fields at delivery, so that later changes are found.
class delivery_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;

    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, boost::shared_ptr<message_t> msg) override
    {
        m_at_delivery += fields_of(msg);
        m_messages.push_back(std::move(msg));
        return true;
    }

    std::string take()
    {
        std::string text = std::exchange(m_at_delivery, std::string()) + "afterwards\n";
        for (const message_ptr_t& message : m_messages)
            text += fields_of(message);
        m_messages.clear();
        return text;
    }

private:
    std::string m_at_delivery;
    std::vector<message_ptr_t> m_messages;
};

// Returns a folder in memory, unless TMPDIR names another: a disk is slow.
const scratch_folder_t& folder()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread yet
    static const bool is_in_memory = setenv("TMPDIR", "/dev/shm", 0) == 0;
    static const scratch_folder_t scratch_folder;
    require(is_in_memory, "the environment can be set");
    return scratch_folder;
}

void write(const std::string& name, const std::string& bytes, int mode)
{
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | mode, 0600);
    require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "a log can be written");
    close(file);
}

// Replays the log part by part.
void require_replays(const std::string& name, const std::vector<std::string>& parts)
{
    static const auto ex = velmo_ex_t::get(L"log_fuzz", L"");
    static const auto handler = boost::make_shared<delivery_handler_t>();
    static const bool is_pushed = (ex->push_handler(handler), true);
    require(is_pushed, "the handler is pushed");
    const auto storage =
        messages_storage_t::get(basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(name)));
    require(storage->start_reading(), "a log can be read");
    log_oracle_t oracle;
    for (const std::string& part : parts) {
        write(name, part, O_APPEND);
        const bool is_read = storage->replay(ex);
        const log_oracle_t::reading_t expected = oracle.read(part);
        require(is_read == expected.is_read, "the replay's result");
        require_equal(handler->take(), text_of(expected), "a log is replayed as libxml2 reads it");
    }
}

void require_carry_over(const std::string& name, const std::string& log)
{
    const auto storage =
        messages_storage_t::get(basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(name)));
    const log_oracle_t::reading_t expected = log_oracle_t().read(log);
    const bool is_started = storage->start_recording();
    storage->stop_recording();
    require(expected.start == log_oracle_t::start_t::either ||
                is_started == (expected.start == log_oracle_t::start_t::succeeds),
            "the start's result");
    require_equal(folder().read("log.xml"), is_started ? written_log(expected.delivered) : log,
                  "a log is carried over as libxml2 reads and writes it");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const std::string name = folder().name("log.xml");
    const std::string input(data, data + size);
    const std::vector<std::string> parts = split(input, '\f');
    write(name, "", O_TRUNC);
    require_replays(name, parts);
    // A start takes as long as several replays, so few inputs test one.
    if (parts.size() == 1 && input.size() % 8 == 0)
        require_carry_over(name, input);
    return 0;
}
