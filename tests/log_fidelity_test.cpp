// Replays logs whose text libxml2 delivers in chunks. Each file of the folder LOGS comes with
// - NAME.expected: the messages that its replay delivers. If later elements have changed a message
//   after its delivery, the changed message follows it.
// - NAME.carried, if it differs: the same after a recording has carried the log over.
// Lines that begin with '#' are the reasons.

#include "message_text.h"
#include "storage_support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

const std::filesystem::path folder(LOGS);

std::vector<std::string> names_of(const std::string& extension)
{
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing))
        if (entry.path().extension() == extension)
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool has(const std::string& leaf)
{
    return std::filesystem::exists(folder / leaf);
}

std::string read(const std::string& leaf)
{
    std::ifstream file(folder / leaf, std::ios::binary);
    EXPECT_TRUE(file) << leaf << " cannot be read";
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::string read_messages(const std::string& leaf)
{
    std::string messages;
    std::ifstream file(folder / leaf);
    EXPECT_TRUE(file) << leaf << " cannot be read";
    for (std::string line; std::getline(file, line);)
        if (line.compare(0, 1, "#") != 0)
            messages += line + "\n";
    return messages;
}

// Prints each message when it is delivered, and keeps it.
class writing_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t msg) override
    {
        m_texts.push_back(message_text(*msg, "  ", "\n"));
        m_messages.push_back(std::move(msg));
        return false;
    }

    std::vector<std::string> texts() const
    {
        std::vector<std::string> result;
        for (std::size_t i = 0; i < m_texts.size(); ++i) {
            const std::string now = message_text(*m_messages[i], "  ", "\n");
            result.push_back("message\n" + m_texts[i] +
                             (now == m_texts[i] ? "" : "afterwards\n" + now));
        }
        return result;
    }

    const std::vector<std::string>& texts_at_delivery() const { return m_texts; }

private:
    std::vector<std::string> m_texts;
    std::vector<message_ptr_t> m_messages;
};

boost::shared_ptr<writing_handler_t> replay_whole(const storage_ptr_t& storage)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"log_fidelity_test."), L"");
    const auto handler = boost::make_shared<writing_handler_t>();
    ex->push_handler(handler);
    EXPECT_TRUE(storage->start_reading());
    storage->replay(ex);
    return handler;
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text;
    return all;
}

class log_fidelity_test : public storage_test_t
{};

class log_fidelity_file_test : public storage_test_t,
                               public testing::WithParamInterface<std::string>
{
protected:
    void copy(const std::string& name) const { m_folder.write("log.xml", read(name + ".xml")); }
};

} // namespace

TEST_P(log_fidelity_file_test, is_replayed_as_expected)
{
    copy(GetParam());
    EXPECT_EQ(joined(replay_whole(get())->texts()), read_messages(GetParam() + ".expected"));
}

TEST_P(log_fidelity_file_test, is_replayed_as_expected_after_it_was_carried_over)
{
    copy(GetParam());
    record_all(L"");
    const bool differs = has(GetParam() + ".carried");
    EXPECT_EQ(joined(replay_whole(get())->texts()),
              read_messages(GetParam() + (differs ? ".carried" : ".expected")));
}

INSTANTIATE_TEST_SUITE_P(log, log_fidelity_file_test, testing::ValuesIn(names_of(".xml")),
                         [](const auto& name) { return name.param; });

TEST_F(log_fidelity_test, each_log_has_an_expected_file)
{
    const std::vector<std::string> logs = names_of(".xml");
    EXPECT_FALSE(logs.empty());
    EXPECT_EQ(names_of(".expected"), logs);
    for (const std::string& name : names_of(".carried"))
        EXPECT_TRUE(has(name + ".xml")) << name;
}

TEST_F(log_fidelity_test, a_carried_file_exists_only_if_it_differs_from_the_expected_file)
{
    for (const std::string& name : names_of(".carried"))
        EXPECT_NE(read_messages(name + ".carried"), read_messages(name + ".expected")) << name;
}

TEST_F(log_fidelity_test, a_log_that_is_cut_anywhere_delivers_its_first_messages)
{
    const std::string log = read("a_bit_of_everything.xml");
    m_folder.write("log.xml", log);
    const std::vector<std::string> all = replay_whole(get())->texts_at_delivery();
    ASSERT_EQ(all.size(), 2U);
    std::size_t delivered = 0;
    for (std::size_t size = 0; size <= log.size(); ++size) {
        m_folder.write("log.xml", log.substr(0, size));
        const auto handler = replay_whole(get());
        const std::vector<std::string>& texts = handler->texts_at_delivery();
        ASSERT_LE(texts.size(), all.size()) << size;
        EXPECT_TRUE(std::equal(texts.begin(), texts.end(), all.begin())) << size;
        EXPECT_GE(texts.size(), delivered) << size;
        delivered = texts.size();
    }
    EXPECT_EQ(delivered, all.size());
}

TEST_F(log_fidelity_test, a_replay_after_an_append_delivers_only_the_first_appended_message)
{
    const std::string log = "<log>\n <msg><type>a</type></msg>\n";
    m_folder.write("log.xml", log);
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;");
    m_folder.write("log.xml", log + "<msg><type>b</type></msg>\n<msg><type>c</type></msg>\n</log>");
    EXPECT_EQ(replay(storage), L"b;") << "it is parsed as a document of its own";
}

TEST_F(log_fidelity_test, a_storage_that_has_replayed_a_log_misses_messages_that_are_recorded_later)
{
    storage_ptr_t storage = get();
    record_all(L"a");
    EXPECT_EQ(replay(storage), L"a;");
    record_all(L"bc");
    EXPECT_EQ(replay(storage), L"") << "b begins at the former offset of the end of the root";
    storage.reset();
    EXPECT_EQ(replay(get()), L"a;b;c;");
}

TEST_F(log_fidelity_test, a_replay_that_begins_within_a_message_delivers_nothing)
{
    const std::string log = "<log>\n <msg><type>a</type></msg>\n <msg><ty";
    m_folder.write("log.xml", log);
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;");
    m_folder.write("log.xml", log + "pe>b</type></msg>\n <msg><type>c</type></msg>\n");
    EXPECT_EQ(replay(storage), L"") << "it begins in the middle of a message";
}
