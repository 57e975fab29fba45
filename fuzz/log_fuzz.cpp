// Whatever a log holds, a replay delivers what its rules say, and it can be recorded again.
//
// Each form feed of an input is a place where the log is replayed before the rest is appended.
#include "fuzz_target.h"
#include "input_text.h"
#include "log_model.h"
#include "quiet_xml.h"
#include "require.h"
#include "round_trip.h"

#include "scratch_folder.h"

#include <velmoext1/messages_storage.h>

#include <boost/make_shared.hpp>

#include <fstream>
#include <string>
#include <vector>

namespace
{

using namespace velmoext_1_4_8;

// Keeps what the messages said when they came: a log can change one that has been delivered.
class copying_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;

    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, boost::shared_ptr<message_t> msg) override
    {
        m_messages.push_back(*msg);
        return true;
    }

    const std::vector<message_t>& messages() const { return m_messages; }

private:
    std::vector<message_t> m_messages;
};

struct replay_t
{
    bool answer;
    std::vector<message_t> messages;
};

replay_t replay(messages_storage_t& storage)
{
    const auto ex = velmo_ex_t::get(L"log_fuzz", L"");
    const auto handler = boost::make_shared<copying_handler_t>();
    ex->push_handler(handler);
    const bool answer = storage.replay(ex);
    return {answer, handler->messages()};
}

void require_expected(const replay_t& replayed, const log_model_t::reading_t& expected)
{
    require(replayed.answer == expected.is_read, "the replay's answer");
    for (std::size_t at = 0; at < replayed.messages.size() && at < expected.messages.size(); ++at)
        require_same(replayed.messages[at], expected.messages[at]);
    require(replayed.messages.size() == expected.messages.size(), "as many messages");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    static const scratch_folder_t folder;
    std::ofstream file(folder.name("log.xml"), std::ios::binary | std::ios::trunc);
    const auto storage = messages_storage_t::get(folder.wide_name("log.xml"));
    require(storage->start_reading(), "a log can be read");
    log_model_t model;
    for (const std::string& part : split(std::string(data, data + size), '\f')) {
        file << part << std::flush;
        const replay_t replayed = replay(*storage);
        require_expected(replayed, model.read(part));
        for (const message_t& message : replayed.messages)
            require_round_trip(boost::make_shared<message_t>(message));
        require(!replay(*storage).answer, "nothing is replayed twice");
    }
    return 0;
}
