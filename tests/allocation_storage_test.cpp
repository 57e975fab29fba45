// Recording and replay while memory runs out.

#include "failing_allocations.h"
#include "message_text.h"
#include "storage_support.h"

#include <algorithm>
#include <memory>

using namespace velmoext_1_4_8;

namespace
{

typedef std::vector<message_ptr_t> messages_t;

enum class on_failure_t
{
    keeps_all,
    may_lose_all
};

std::string text_of(const messages_t& messages)
{
    std::string text;
    for (const message_ptr_t& message : messages)
        text += message ? message_text(*message, "", ";") : "none;";
    return text;
}

// A log in a folder of its own.
class log_t
{
public:
    explicit log_t(const std::string& leaf = "log.xml", const std::string& bytes = std::string())
    {
        if (!bytes.empty())
            m_folder.write(leaf, bytes);
    }

    basekit2::path_t path() const { return basekit2::path_t(m_folder.wide_name("log.xml")); }
    storage_ptr_t storage() const { return get("log.xml"); }
    // Another spelling is another storage.
    storage_ptr_t other_storage() const { return get("./log.xml"); }

    messages_t messages() const
    {
        const storage_ptr_t reading = get("././log.xml");
        const auto handler = boost::make_shared<recording_handler_t>();
        const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"allocation_storage_test."), L"");
        ex->push_handler(handler);
        reading->start_reading();
        reading->replay(ex);
        return handler->messages();
    }

private:
    storage_ptr_t get(const std::string& leaf) const
    {
        return messages_storage_t::get(basekit2::path_t(m_folder.wide_name(leaf)));
    }

    scratch_folder_t m_folder;
};

// Keeps the messages in memory that it allocates at construction.
class preallocated_handler_t : public base_handler_t
{
public:
    preallocated_handler_t() { m_messages.reserve(10); }

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t msg) override
    {
        m_messages.push_back(std::move(msg));
        return false;
    }

    const messages_t& messages() const { return m_messages; }

private:
    messages_t m_messages;
};

// ---- recording: on allocation failure in libxml2, data is missing without an error

bool is_part_of(const string_map_t& part, const string_map_t& whole)
{
    return std::includes(whole.begin(), whole.end(), part.begin(), part.end());
}

bool is_part_of(const message_t& part, const message_t& whole)
{
    const message_t::message_content_t some = part.get_content();
    const message_t::message_content_t all = whole.get_content();
    return (part.get_type().empty() || part.get_type() == whole.get_type()) &&
           (part.get_severity() == message_t::none ||
            part.get_severity() == whole.get_severity()) &&
           is_part_of(some.attributes, all.attributes) && is_part_of(some.args, all.args) &&
           is_part_of(some.elements, all.elements);
}

message_ptr_t make_rich_message(const std::wstring& text)
{
    const message_ptr_t message =
        make_message(make_content({{L"tool", L"x"}, {L"name\xE9", L"\xE9 & more"}},
                                  {{L"a", L"1"}, {L"b", text}}, {{L"e", L"text"}}));
    message->set_type(L"a long type that is allocated");
    message->set_severity(message_t::warning);
    message->set_flags(1);
    return message;
}

const message_ptr_t neighbour = make_flagged(L"neighbour");

messages_t record_with_enough_memory(const message_ptr_t& message)
{
    const log_t log;
    const storage_ptr_t storage = log.storage();
    storage->start_recording();
    for (const message_ptr_t& each : {neighbour, message, neighbour})
        storage->on_message(nullptr, each);
    storage->stop_recording();
    return log.messages();
}

// The message is between two others, which must stay unchanged.
std::string recording_result(const messages_t& messages, const messages_t& right,
                             on_failure_t failure)
{
    const std::string all = text_of(messages);
    if (all == text_of(right))
        return "recorded";
    const bool is_missing = all == text_of({neighbour, neighbour});
    const bool is_incomplete =
        messages.size() == 3 && is_part_of(*messages[1], *right[1]) &&
        text_of({messages.front(), messages.back()}) == text_of({neighbour, neighbour});
    const bool is_lost = messages.empty() && failure == on_failure_t::may_lose_all;
    return is_missing || is_incomplete || is_lost ? "" : "damaged: " + all;
}

// If a text exceeds libxml2's buffer and the buffer cannot grow, libxml2 drops all that is in it.
std::function<attempt_t()> record(const std::wstring& text, on_failure_t failure)
{
    const auto right = std::make_shared<messages_t>();
    return [=]() -> attempt_t {
        const auto log = std::make_shared<log_t>();
        const storage_ptr_t storage = log->storage();
        const message_ptr_t message = make_rich_message(text);
        if (right->empty())
            *right = record_with_enough_memory(message);
        storage->start_recording();
        storage->on_message(nullptr, neighbour);
        return {[=] { storage->on_message(nullptr, message); },
                [=] {
                    storage->on_message(nullptr, neighbour);
                    storage->stop_recording();
                    return recording_result(log->messages(), *right, failure);
                }};
    };
}

// ---- starting: the old messages are in the log, or still in the copy

const std::string old_log =
    "<log><msg source='a long source that is allocated'><arg name='n'>x y</arg>"
    "<type>a long type that is allocated</type></msg>\n"
    "<msg a='&lt;b&gt;'><a_long_element_name_that_is_allocated>" +
    std::string(5000, 'l') +
    "</a_long_element_name_that_is_allocated><severity>INFO</severity></msg></log>";

// With the attributes that a replay adds.
std::string text_of_old_log(const std::string& added)
{
    return R"(type "a long type that is allocated";severity none;)"
           R"(attribute "source" = "a long source that is allocated";)" +
           added +
           R"(arg "n" = "x y";type "";severity info;attribute "a" = "<b>";)"
           R"(element "a_long_element_name_that_is_allocated" = ")" +
           std::string(5000, 'l') + R"(";)";
}

const std::string old_messages =
    text_of_old_log(R"(attribute "tool" = "a long source that is allocated";)");
const std::string read_messages = text_of_old_log("");

std::string failed_start_result(const log_t& log, const storage_ptr_t& storage,
                                on_failure_t failure)
{
    const storage_ptr_t other = log.other_storage();
    if (!other->start_recording())
        return "the lock was not released";
    other->stop_recording();
    storage->stop_recording();
    if (!storage->start_recording())
        return "it cannot start again";
    storage->stop_recording();
    const std::string kept = text_of(log.messages());
    const bool is_empty_log = kept.empty() && failure == on_failure_t::may_lose_all;
    return is_empty_log || kept == old_messages ? "" : "lost: " + kept;
}

std::function<attempt_t()> start(const std::string& leaf, on_failure_t failure)
{
    return [=]() -> attempt_t {
        const auto log = std::make_shared<log_t>(leaf, old_log);
        const storage_ptr_t storage = log->storage();
        const auto is_started = std::make_shared<bool>(false);
        return {[=] { *is_started = storage->start_recording(); },
                [=] {
                    if (!*is_started)
                        return failed_start_result(*log, storage, failure);
                    storage->stop_recording();
                    const std::string messages = text_of(log->messages());
                    return messages.empty() ? "nothing" : messages;
                }};
    };
}

// ---- replay: success only if all is delivered; each delivered message is right

attempt_t replay()
{
    const auto log = std::make_shared<log_t>("log.xml", old_log);
    const storage_ptr_t storage = log->storage();
    storage->start_reading();
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"allocation_storage_test."), L"");
    const auto handler = boost::make_shared<preallocated_handler_t>();
    ex->push_handler(handler);
    const auto is_replayed = std::make_shared<bool>(false);
    return {[=] { *is_replayed = storage->replay(ex); },
            [=]() -> std::string {
                storage->stop_reading();
                const messages_t& delivered = handler->messages();
                if (*is_replayed)
                    return delivered.empty() ? "nothing" : text_of(delivered);
                messages_t beginning = log->messages();
                beginning.resize(delivered.size());
                return text_of(beginning) == text_of(delivered) ? "" : "wrong";
            }};
}

// ---- reading: after a failure, the reader continues with the same message

void read_to_end(log_reader_t& reader, messages_t& messages)
{
    for (auto result = reader.next(); result == log_reader_t::result_t::message;
         result = reader.next()) {
        if (const message_ptr_t message = reader.get_message())
            messages.push_back(message);
    }
}

attempt_t read()
{
    const auto log = std::make_shared<log_t>("log.xml", old_log);
    const auto reader = std::make_shared<log_reader_t>(log->path());
    const auto messages = std::make_shared<messages_t>();
    messages->reserve(10);
    const auto is_read = std::make_shared<bool>(false);
    return {[=] {
                read_to_end(*reader, *messages);
                *is_read = true;
            },
            [=]() -> std::string {
                read_to_end(*reader, *messages);
                const std::string read = text_of(*messages);
                return *is_read || read != read_messages ? read : "";
            }};
}

// ---- the table

const std::vector<memory_t> cxx = {memory_t::cxx};
const std::vector<memory_t> both = {memory_t::cxx, memory_t::libxml2};

const std::vector<operation_t> operations = {
    {"record", cxx, record(L"1 < 2", on_failure_t::keeps_all), "recorded"},
    {"record_a_long_text", both,
     record(std::wstring(9000, L'l') + L'\xE9', on_failure_t::may_lose_all), "recorded"},
    {"start", both, start("log.xml", on_failure_t::may_lose_all), old_messages},
    {"start_after_a_killed_process", both, start("log.xml.tmp", on_failure_t::keeps_all),
     old_messages},
    {"replay", both, replay, old_messages},
    {"read", both, read, read_messages},
};

} // namespace

TEST_P(allocation_test, a_failed_allocation_never_gives_a_wrong_result)
{
    fail_each_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(storage, allocation_test, testing::ValuesIn(cases_of(operations)),
                         name_of_case);
