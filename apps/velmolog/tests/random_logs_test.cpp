// Random messages, recorded by the library and read by velmolog.

#include "message_text.h"
#include "process.h"
#include "random_messages.h"
#include "storage_support.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <sstream>

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;

namespace
{

typedef nlohmann::json json_t;

constexpr std::uint64_t logs_per_run = 200;

// Uses scratch folders in memory unless the environment sets a directory, since a disk is slow.
[[maybe_unused]] const bool is_in_memory =
    setenv("TMPDIR", "/dev/shm", 0) == 0; // NOLINT(concurrency-mt-unsafe)

json_t object_of(const string_map_t& texts)
{
    json_t object = json_t::object();
    for (const auto& [name, text] : texts)
        object[utf16_to_utf8(name)] = utf16_to_utf8(text);
    return object;
}

/// Returns the fields of a message that the log must have.
json_t fields_of(const message_t& message)
{
    const auto content = message.get_content();
    json_t fields = {{"severity", velmoext_1_4_8::severity_name(message.get_severity())},
                     {"type", utf16_to_utf8(message.get_type())},
                     {"source", utf16_to_utf8(message.get_source())},
                     {"args", object_of(content.args)},
                     {"attributes", object_of(content.attributes)},
                     {"elements", object_of(content.elements)}};
    const auto timestamp = content.elements.find(L"timestamp");
    if (timestamp != content.elements.end())
        fields["timestamp"] = utf16_to_utf8(timestamp->second);
    return fields;
}

class random_logs_test : public storage_test_t
{
protected:
    /// Records random messages and appends the lines that are expected for them.
    void record(std::uint64_t seed, std::vector<json_t>& expected) const
    {
        const std::string leaf = std::to_string(seed);
        random_source_t random(seed);
        const storage_ptr_t storage = get(leaf);
        ASSERT_TRUE(storage->start_recording());
        for (std::size_t count = random.below(6); count != 0; --count) {
            const auto message = boost::make_shared<message_t>(random_message(random));
            storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
            const auto received = string_message_serializer_t::xml_string_to_message(
                string_message_serializer_t::message_to_xml_string(message));
            ASSERT_TRUE(received);
            expected.push_back(fields_of(*received));
            expected.back()["log"] = m_folder.name(leaf);
        }
        ASSERT_TRUE(storage->stop_recording());
    }

    void expect_line(json_t line, const json_t& expected) const
    {
        const std::string log =
            m_folder.read(std::filesystem::path(line["log"].get<std::string>()).filename());
        const auto offset = line["offset"].get<std::size_t>();
        ASSERT_EQ(log.compare(offset, 4, "<msg"), 0);
        ASSERT_EQ(line["line"].get<std::ptrdiff_t>(),
                  1 + std::count(log.begin(), log.begin() + std::ptrdiff_t(offset), '\n'));
        ASSERT_FALSE(line["text"].get<std::string>().empty());
        for (const char* const extra : {"offset", "line", "text"})
            line.erase(extra);
        ASSERT_EQ(line, expected);
    }
};

} // namespace

TEST_F(random_logs_test, each_message_is_shown_as_it_was_recorded)
{
    const random_seeds_t seeds(2000);
    for (auto first = seeds.first; first < seeds.end(); first += logs_per_run) {
        std::vector<std::string> arguments = {"--format", "json"};
        std::vector<json_t> expected;
        for (auto seed = first; seed != std::min(first + logs_per_run, seeds.end()); ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            record(seed, expected);
            arguments.push_back(m_folder.name(std::to_string(seed)));
            if (HasFatalFailure())
                return;
        }
        const process_result_t result = run_velmolog(m_folder, arguments);
        ASSERT_EQ(result.status, 0) << result.errors;
        ASSERT_EQ(result.errors, "");
        std::istringstream lines(result.output);
        std::string line;
        for (const json_t& fields : expected) {
            SCOPED_TRACE(fields.dump());
            ASSERT_TRUE(std::getline(lines, line));
            expect_line(json_t::parse(line), fields);
            if (HasFatalFailure())
                return;
        }
        ASSERT_FALSE(std::getline(lines, line)) << line;
        for (std::size_t i = 2; i != arguments.size(); ++i)
            std::filesystem::remove(arguments[i]);
    }
}

TEST_F(random_logs_test, the_log_of_all_messages_is_the_same_log)
{
    const random_seeds_t seeds(100);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::vector<json_t> ignored;
        record(seed, ignored);
        const std::string log = std::to_string(seed);
        const process_result_t shown =
            run_velmolog(m_folder, {"--format", "xml", m_folder.name(log)});
        ASSERT_EQ(shown.status, 0) << shown.errors;
        ASSERT_EQ(shown.output, m_folder.read(log));
    }
}
