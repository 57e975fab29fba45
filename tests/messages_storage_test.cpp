#include <velmoext1/messages_storage.h>

#include "process_support.h"
#include "storage_support.h"
#include "usage.h"

#include <array>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

class messages_storage_test : public storage_test_t
{
protected:
    std::string log() const { return m_folder.read("log.xml"); }
    bool has_copy() const { return m_folder.has("log.xml.tmp"); }

    std::vector<message_ptr_t> replay_all() const
    {
        m_folder.write("copy to read", log());
        const auto handler = boost::make_shared<recording_handler_t>();
        m_ex->push_handler(handler);
        const storage_ptr_t storage = get("copy to read");
        EXPECT_TRUE(storage->start_reading());
        EXPECT_TRUE(storage->replay(m_ex));
        m_ex->pop_handler();
        return handler->messages();
    }

    boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"messages_storage_test."), L"");
};

} // namespace

// ---- one storage per path

TEST_F(messages_storage_test, the_same_path_gives_the_same_storage_while_it_lives)
{
    const storage_ptr_t storage = get();
    EXPECT_EQ(get(), storage);
    EXPECT_NE(get("other.xml"), storage);
}

TEST_F(messages_storage_test, a_path_whose_storage_is_destroyed_gives_a_new_one)
{
    storage_ptr_t storage = get();
    const boost::weak_ptr<messages_storage_t> watched = storage;
    storage.reset();
    EXPECT_TRUE(watched.expired());
    storage = get();
    ASSERT_TRUE(storage);
    EXPECT_EQ(get(), storage) << "the former storage is still registered";
}

TEST_F(messages_storage_test, getting_a_storage_touches_no_file)
{
    const storage_ptr_t storage = get();
    EXPECT_FALSE(m_folder.has("log.xml"));
}

// ---- recording

TEST_F(messages_storage_test, a_new_log_without_messages_is_an_empty_root)
{
    record_all(L"");
    EXPECT_EQ(log(), empty_log);
    EXPECT_FALSE(has_copy());
}

TEST_F(messages_storage_test, messages_are_written_in_their_order)
{
    record_all(L"ab");
    EXPECT_EQ(log(), log_of(message_of("a") + message_of("b")));
}

TEST_F(messages_storage_test, only_its_owner_can_read_and_write_a_log)
{
    record_all(L"a");
    struct stat status = {};
    ASSERT_EQ(stat(m_folder.name("log.xml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(messages_storage_test, a_second_start_changes_nothing)
{
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"a");
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"b");
    storage->stop_recording();
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, stopping_without_a_recording_is_harmless)
{
    EXPECT_TRUE(get()->stop_recording());
    EXPECT_FALSE(m_folder.has("log.xml"));
}

TEST_F(messages_storage_test, a_second_recording_continues_the_same_log)
{
    record_all(L"ab");
    record_all(L"cd");
    EXPECT_EQ(log(), log_of(message_of("a") + message_of("b") + message_of("c") + message_of("d")));
    EXPECT_FALSE(has_copy());
}

TEST_F(messages_storage_test, one_storage_records_again_after_a_stop)
{
    const storage_ptr_t storage = get();
    for (const wchar_t* type : {L"a", L"b", L"c"}) {
        EXPECT_TRUE(storage->start_recording());
        record(storage, type);
        EXPECT_TRUE(storage->stop_recording());
    }
    EXPECT_EQ(log(), log_of(message_of("a") + message_of("b") + message_of("c")));
    std::filesystem::remove(m_folder.name("log.xml"));
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"d");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(log(), log_of(message_of("d")));
}

TEST_F(messages_storage_test, only_flagged_messages_are_written)
{
    const storage_ptr_t storage = get();
    storage->start_recording();
    for (const int flags : {0, 1, 2, 3, 4, 5, 6, 7, 8, 16, -1, -4})
        record(storage, std::to_wstring(flags), flags);
    storage->stop_recording();
    EXPECT_EQ(types_in(), L"1;2;3;5;6;7;-1;");
}

TEST_F(messages_storage_test, carried_over_messages_need_no_flag)
{
    record_all(L"a"); // its flags are not in the log
    record_all(L"");
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(messages_storage_test, no_message_is_consumed)
{
    const storage_ptr_t storage = get();
    const boost::shared_ptr<velmo_ex_t> ex;
    EXPECT_FALSE(storage->on_message(ex, make_flagged(L"a")));
    EXPECT_FALSE(storage->on_message(ex, message_ptr_t()));
    storage->start_recording();
    EXPECT_FALSE(storage->on_message(ex, make_flagged(L"a")));
    EXPECT_FALSE(storage->on_message(ex, message_ptr_t()));
    EXPECT_FALSE(storage->on_message(ex, boost::make_shared<progress_message_t>()));
}

// In a child process, so that a call that never returns is ended.
TEST_F(messages_storage_test, an_argument_with_one_owner_may_call_the_storage_when_it_is_destroyed)
{
    record_all(L"a");
    EXPECT_TRUE(
        has_exited_with(status_of_child([&] {
                            alarm(10);
                            const storage_ptr_t storage = get();
                            const message_ptr_t message = make_flagged(L"b");
                            int calls = 0;
                            const auto call = [&](auto*) {
                                storage->stop_reading();
                                ++calls;
                            };
                            storage->start_recording();
                            storage->on_message(boost::shared_ptr<velmo_ex_t>(m_ex.get(), call),
                                                message_ptr_t(message.get(), call));
                            storage->stop_recording();
                            storage->start_reading();
                            storage->replay(boost::shared_ptr<velmo_ex_t>(m_ex.get(), call));
                            return calls == 3 ? 0 : 1;
                        }),
                        0));
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, messages_without_a_recording_are_not_kept)
{
    const storage_ptr_t storage = get();
    record(storage, L"a");
    storage->start_recording();
    storage->stop_recording();
    record(storage, L"b");
    EXPECT_EQ(log(), empty_log);
}

TEST_F(messages_storage_test, the_last_owner_closes_the_log)
{
    storage_ptr_t storage = get();
    storage->start_recording();
    record(storage, L"a");
    storage.reset();
    EXPECT_EQ(log(), log_of(message_of("a")));
}

TEST_F(messages_storage_test, a_storage_on_a_stack_records_and_passes_on)
{
    const storage_ptr_t storage = get();
    const auto below = boost::make_shared<recording_handler_t>();
    m_ex->push_handler(below);
    m_ex->push_handler(storage);
    storage->start_recording();
    const message_ptr_t message = make_flagged(L"a");
    say_to(m_ex, string_message_serializer_t::message_to_xml_string(message));
    say_to(m_ex, L"no message");
    EXPECT_EQ(below->messages().size(), 2U);
    storage->stop_recording();
    EXPECT_EQ(log(), empty_log) << "flags do not cross the channel";
}

TEST_F(messages_storage_test, any_unicode_name_works_in_the_c_locale)
{
    ASSERT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    record_all(L"a", "l\xC3\xB6g \xF0\x9F\x98\x80.xml");
    record_all(L"b", "l\xC3\xB6g \xF0\x9F\x98\x80.xml");
    EXPECT_EQ(types_in("l\xC3\xB6g \xF0\x9F\x98\x80.xml"), L"a;b;");
}

TEST_F(messages_storage_test, a_log_without_its_end_still_contributes_its_messages)
{
    m_folder.write("log.xml",
                   "<?xml version=\"1.0\"?>\n<log>\n" + message_of("a") + " <msg>\n  <ty");
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, a_log_that_is_cut_anywhere_contributes_its_complete_messages)
{
    const std::string first =
        "<?xml version=\"1.0\"?>\n<log>\n <msg a='1'>\n  <type>a</type>\n </msg>";
    const std::string second = first + "\n <msg>\n  <type>b</type>\n </msg>";
    const std::string whole = second + "\n</log>\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        m_folder.write("log.xml", whole.substr(0, size));
        record_all(L"c");
        EXPECT_EQ(types_in(), size < first.size()    ? L"c;"
                              : size < second.size() ? L"a;c;"
                                                     : L"a;b;c;")
            << size;
    }
}

TEST_F(messages_storage_test, damage_in_the_middle_ends_the_carry_over)
{
    m_folder.write("log.xml", log_of(message_of("a") + " <msg></mag>\n" + message_of("b")));
    record_all(L"c");
    EXPECT_EQ(types_in(), L"a;c;");
    EXPECT_FALSE(has_copy());
}

TEST_F(messages_storage_test, a_file_that_is_not_a_log_is_replaced)
{
    m_folder.write("log.xml", "plain text");
    record_all(L"a");
    EXPECT_EQ(log(), log_of(message_of("a")));
}

// ---- permission to record

TEST_F(messages_storage_test,
       a_storage_with_another_spelling_of_the_path_cannot_record_at_the_same_time)
{
    record_all(L"a");
    ASSERT_EQ(symlink(m_folder.name("log.xml").c_str(), m_folder.name("link.xml").c_str()), 0);
    const storage_ptr_t first = get();
    const storage_ptr_t second = get("link.xml");
    ASSERT_TRUE(first->start_recording());
    EXPECT_FALSE(second->start_recording());
    record(second, L"x");
    record(first, L"b");
    first->stop_recording();
    EXPECT_EQ(types_in(), L"a;b;");
    EXPECT_FALSE(m_folder.has("link.xml.tmp"));
    EXPECT_TRUE(second->start_recording());
}

TEST_F(messages_storage_test, a_log_that_another_process_has_locked_is_not_changed)
{
    record_all(L"a");
    const std::string before = log();
    const int other = open(m_folder.name("log.xml").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX), 0);
    EXPECT_FALSE(get()->start_recording());
    EXPECT_EQ(log(), before);
    EXPECT_FALSE(has_copy());
    close(other);
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, a_recorder_cannot_read_through_its_descriptor)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    const std::vector<int> descriptors = descriptors_of_log();
    ASSERT_EQ(descriptors.size(), 1U);
    EXPECT_EQ(fcntl(descriptors.front(), F_GETFL) & O_ACCMODE, O_WRONLY);
}

TEST_F(messages_storage_test, a_reader_that_closes_the_log_leaves_the_lock_in_place)
{
    const storage_ptr_t recorder = get();
    ASSERT_TRUE(recorder->start_recording());
    m_folder.read("log.xml");
    const storage_ptr_t reader = get("./log.xml");
    EXPECT_TRUE(reader->start_reading());
    reader->stop_reading();
    EXPECT_FALSE(reader->start_recording());
}

TEST_F(messages_storage_test, recording_starts_while_the_log_is_read)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->start_recording());
    storage->stop_recording();
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(messages_storage_test, a_program_that_is_started_during_a_recording_does_not_inherit_the_log)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    ASSERT_TRUE(storage->start_reading());
    const std::string command =
        "for fd in /proc/self/fd/*; do readlink $fd; done | grep -q " + m_folder.name("log.xml");
    EXPECT_NE(std::system(command.c_str()), 0); // NOLINT(cert-env33-c): a program is the subject
}

// ---- odd files

TEST_F(messages_storage_test, a_path_that_is_not_a_regular_file_is_refused_at_once)
{
    ASSERT_EQ(mkdir(m_folder.name("directory").c_str(), 0700), 0);
    ASSERT_EQ(mkfifo(m_folder.name("fifo").c_str(), 0600), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    m_folder.name("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(symlink("/dev/null", m_folder.name("device").c_str()), 0);
    for (const char* leaf : {"directory", "fifo", "socket", "device"}) {
        EXPECT_FALSE(get(leaf)->start_recording()) << leaf;
        EXPECT_FALSE(get(leaf)->start_reading()) << leaf;
        EXPECT_FALSE(get(leaf)->replay(m_ex)) << leaf;
    }
    close(listener);
}

TEST_F(messages_storage_test, a_fifo_with_a_reader_is_refused_too)
{
    ASSERT_EQ(mkfifo(m_folder.name("fifo").c_str(), 0600), 0);
    const int reader = open(m_folder.name("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_FALSE(get("fifo")->start_recording());
    close(reader);
}

// The owner of a lease releases it when the system signals that another process opens the file.
TEST_F(messages_storage_test, a_start_waits_for_the_release_of_a_lease)
{
    record_all(L"a");
    std::array<int, 2> has_lease = {-1, -1};
    ASSERT_EQ(pipe2(has_lease.data(), O_CLOEXEC), 0);
    const pid_t holder = fork();
    if (holder == 0) {
        sigset_t signals = {};
        sigaddset(&signals, SIGIO);
        sigprocmask(SIG_BLOCK, &signals, nullptr);
        const int file = open(m_folder.name("log.xml").c_str(), O_RDWR | O_CLOEXEC);
        const bool is_held = fcntl(file, F_SETLEASE, F_WRLCK) == 0;
        write(has_lease[1], is_held ? "y" : "n", 1);
        int signal = 0;
        sigwait(&signals, &signal);
        _exit(fcntl(file, F_SETLEASE, F_UNLCK) == 0 ? 0 : 1);
    }
    char reply = 0;
    ASSERT_EQ(read(has_lease[0], &reply, 1), 1);
    EXPECT_EQ(reply, 'y') << "the scratch folder's file system must have leases";
    record_all(L"b");
    kill(holder, SIGIO);
    int status = 0;
    EXPECT_EQ(waitpid(holder, &status, 0), holder);
    close(has_lease[0]);
    close(has_lease[1]);
    EXPECT_TRUE(descriptors_of_log().empty());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, a_path_with_a_zero_inside_is_refused)
{
    const std::wstring name = m_folder.wide_name("log.xml") + units({0}) + L"x";
    const storage_ptr_t storage = messages_storage_t::get(basekit2::path_t(name));
    EXPECT_FALSE(storage->start_recording());
    EXPECT_FALSE(storage->start_reading());
    EXPECT_FALSE(m_folder.has("log.xml"));
    record_all(L"a");
    EXPECT_FALSE(storage->start_reading());
}

TEST_F(messages_storage_test, an_empty_path_and_a_missing_folder_are_refused)
{
    EXPECT_FALSE(messages_storage_t::get(basekit2::path_t())->start_recording());
    EXPECT_FALSE(messages_storage_t::get(basekit2::path_t())->start_reading());
    EXPECT_FALSE(get("missing/log.xml")->start_recording());
}

TEST_F(messages_storage_test, a_log_of_more_than_2_gib_is_replayed)
{
    m_folder.write("log.xml", log_of(message_of("a")));
    ASSERT_EQ(truncate(m_folder.name("log.xml").c_str(), (1LL << 31) + 10), 0);
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;") << "a zero byte ends what is read";
    EXPECT_EQ(replay(storage), L"");
}

// ---- reading

TEST_F(messages_storage_test, a_replay_delivers_the_log_in_its_order)
{
    record_all(L"abc");
    const auto handler = boost::make_shared<recording_handler_t>();
    m_ex->push_handler(handler);
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->replay(m_ex));
    ASSERT_EQ(handler->messages().size(), 3U);
    EXPECT_EQ(handler->messages().at(0)->get_type(), L"a");
    EXPECT_EQ(handler->messages().at(1)->get_type(), L"b");
    EXPECT_EQ(handler->messages().at(2)->get_type(), L"c");
    EXPECT_EQ(handler->exs().front(), m_ex.get());
}

TEST_F(messages_storage_test, a_replay_requires_a_started_reading)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    EXPECT_FALSE(storage->replay(m_ex));
    EXPECT_TRUE(storage->start_reading());
    storage->stop_reading();
    EXPECT_FALSE(storage->replay(m_ex));
    EXPECT_EQ(replay(storage), L"a;") << "the refused replays read nothing";
}

TEST_F(messages_storage_test, a_storage_that_records_does_not_replay)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    storage->start_recording();
    EXPECT_TRUE(storage->start_reading());
    EXPECT_FALSE(storage->replay(m_ex));
    storage->stop_recording();
    EXPECT_TRUE(storage->replay(m_ex));
}

TEST_F(messages_storage_test, a_missing_log_cannot_be_read)
{
    const storage_ptr_t storage = get();
    EXPECT_FALSE(storage->start_reading());
    EXPECT_FALSE(storage->replay(m_ex));
    EXPECT_FALSE(m_folder.has("log.xml"));
}

TEST_F(messages_storage_test, a_log_that_was_removed_cannot_be_replayed)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_reading());
    std::filesystem::remove(m_folder.name("log.xml"));
    EXPECT_FALSE(storage->replay(m_ex));
    EXPECT_FALSE(storage->start_reading());
}

TEST_F(messages_storage_test, stopping_a_reading_that_was_not_started_is_harmless)
{
    get()->stop_reading();
    EXPECT_FALSE(get()->replay(m_ex));
}

TEST_F(messages_storage_test, a_second_replay_of_an_unchanged_log_delivers_nothing)
{
    record_all(L"a");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->replay(m_ex));
    EXPECT_FALSE(storage->replay(m_ex));
    storage->stop_reading();
    EXPECT_EQ(replay(storage), L"");
}

TEST_F(messages_storage_test, a_later_replay_delivers_the_appended_messages)
{
    const std::string start = "<log>\n" + message_of("a");
    m_folder.write("log.xml", start);
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;");
    m_folder.write("log.xml", start + message_of("b"));
    EXPECT_EQ(replay(storage), L"b;");
}

TEST_F(messages_storage_test, a_replay_continues_at_the_former_offset_after_a_new_recording)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    ASSERT_TRUE(storage->stop_recording());
    EXPECT_EQ(replay(storage), L"a;");
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"b");
    ASSERT_TRUE(storage->stop_recording());
    EXPECT_EQ(replay(storage), L"");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, a_log_that_became_shorter_is_not_replayed)
{
    record_all(L"ab");
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;b;");
    m_folder.write("log.xml", log_of(message_of("c")));
    ASSERT_TRUE(storage->start_reading());
    EXPECT_FALSE(storage->replay(m_ex));
    EXPECT_FALSE(storage->replay(m_ex)) << "the position went back";
}

TEST_F(messages_storage_test,
       a_log_that_became_shorter_and_longer_is_replayed_from_the_former_offset)
{
    const std::string start = "<log>\n" + message_of("a");
    m_folder.write("log.xml", start);
    const storage_ptr_t storage = get();
    EXPECT_EQ(replay(storage), L"a;");
    m_folder.write("log.xml", "");
    EXPECT_EQ(replay(storage), L"");
    m_folder.write("log.xml", start + message_of("b"));
    EXPECT_EQ(replay(storage), L"b;");
}

TEST_F(messages_storage_test, a_message_of_more_than_a_thousand_attributes_is_recorded_and_replayed)
{
    string_map_t attributes;
    for (int i = 0; i < 1200; ++i)
        attributes[L"a" + std::to_wstring(i)] = std::to_wstring(i);
    const message_ptr_t message = make_flagged(L"t");
    message->set_content(make_content(attributes));
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    storage->on_message(m_ex, message);
    storage->stop_recording();
    for (int carried = 0; carried < 2; ++carried) {
        const std::vector<message_ptr_t> messages = replay_all();
        ASSERT_EQ(messages.size(), 1U);
        EXPECT_TRUE(messages.front()->get_content().attributes == attributes) << carried;
        record_all(L"");
    }
}

TEST_F(messages_storage_test, a_foreign_message_of_1200_attributes_is_replayed)
{
    std::string attributes;
    for (int i = 0; i < 1200; ++i)
        attributes += "\n\ta" + std::to_string(i) + " = '>'";
    m_folder.write("log.xml",
                   "<log><msg" + attributes + "><type>a</type></msg>" + message_of("b") + "</log>");
    const std::vector<message_ptr_t> messages = replay_all();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages.front()->get_content().attributes.size(), 1200U);
}

TEST_F(messages_storage_test, many_names_after_a_fault_or_a_message_take_linear_time)
{
    std::string names;
    for (int i = 0; i < 750000; ++i)
        names += "<n" + std::to_string(i) + "/><?m" + std::to_string(i) + "?>";
    const usage_t usage;
    m_folder.write("log.xml", "<log><!--\xC3\xA9 -- x-->" + names + message_of("a") + "</log>");
    EXPECT_EQ(replay(get()), L"");
    m_folder.write("log.xml", "<log>" + message_of("a") + "<e>" + names + "</e></log>");
    EXPECT_EQ(replay(get()), L"a;");
    EXPECT_LT(usage.seconds(), 10);
}

TEST_F(messages_storage_test, many_foreign_attributes_are_read_or_refused_quickly)
{
    std::string attributes;
    for (int i = 0; i < 100000; ++i)
        attributes += " a" + std::to_string(i) + "='>'";
    m_folder.write("log.xml", "<log><msg><type>a</type></msg><msg" + attributes +
                                  "><!-- c --><type>b</type></msg><msg><type>c</type></msg></log>");
    const usage_t usage;
    const std::wstring types = replay(get());
    EXPECT_TRUE(types == L"a;" || types == L"a;b;c;") << testing::PrintToString(types);
    EXPECT_LT(usage.seconds(), 10);
}

TEST_F(messages_storage_test, a_start_tag_within_a_section_a_comment_or_an_instruction_is_text)
{
    std::string tag = "<row";
    for (int i = 0; i < 1500; ++i)
        tag += " k" + std::to_string(i) + "='v'";
    for (const std::string& text :
         {"<![CDATA[" + tag + "]]>", "<!--" + tag + "-->", "<?p " + tag + "?>",
          "<![CDATA[" + tag + ">]]>", "<!--" + tag + ">-->", "<?p " + tag + ">?>"}) {
        m_folder.write("log.xml", log_of(message_of("a") + "<msg><arg name='n'>1" + text +
                                         "2</arg><type>b</type></msg>" + message_of("c")));
        EXPECT_EQ(types_in(), L"a;b;c;") << text.substr(0, 10);
        record_all(L"d");
        EXPECT_EQ(types_in(), L"a;b;c;d;") << text.substr(0, 10);
    }
}

TEST_F(messages_storage_test, percent_signs_and_brackets_in_a_log_are_text)
{
    for (const char* const text :
         {"<![CDATA[<!DOCTYPE x %p; ]]]>", "50%off; really]", "100 %done; see [1]"})
        for (const char* const type : {"", "<!DOCTYPE log>", "<!DOCTYPE log [<!ENTITY e 'x'>]>"}) {
            m_folder.write("log.xml", std::string("<?xml version='1.0'?>") + type +
                                          "<log><msg><arg name='n'>" + text +
                                          "</arg><type>a</type></msg></log>");
            EXPECT_EQ(types_in(), L"a;") << type << text;
        }
}

TEST_F(messages_storage_test, a_type_whose_last_character_is_an_escaped_less_than_sign_is_empty)
{
    std::string text;
    for (int i = 0; i < 150; ++i)
        text += "a&amp;";
    m_folder.write("log.xml", "<log><msg><type>" + text + "&lt;</type></msg>" + message_of("b") +
                                  "<msg><type>" + text +
                                  "&lt;</type><severity>ERROR</severity></msg></log>");
    EXPECT_EQ(types_in(), L"b;;") << "the first one has neither type nor severity";
}

TEST_F(messages_storage_test, a_long_document_type_counts_as_damage)
{
    std::string values = "v";
    for (int i = 0; i < 300000; ++i)
        values += "|n" + std::to_string(i);
    for (const char* const prolog :
         {"", "<!---->", "<!--><a -->", "<?p <!DOCTYPE log>?>", "<?xml-p ><!DOCTYPE log><?p ?>",
          "<?xml version='1.0' >", "<?xml version='1.0' encoding='>'?>",
          "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8' >"}) {
        m_folder.write("log.xml", prolog + ("<!DOCTYPE log [<!ATTLIST log a (" + values) +
                                      ") 'v'>]><log><msg><type>a</type></msg></log>");
        EXPECT_EQ(types_in(), L"") << prolog;
    }
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_recording());
}

TEST_F(messages_storage_test, a_log_in_another_encoding_is_replayed_and_carried_over)
{
    const struct
    {
        const char* encoding;
        const char* bytes;
        const wchar_t* type;
    } cases[] = {{"ISO-8859-1", "\xE9t\xE9", L"\xE9t\xE9"},
                 {"iso-8859-15", "\xA4", L"\x20AC"},
                 {"latin1", "\xE9", L"\xE9"},
                 {"windows-1252", "\x80", L"\x20AC"},
                 {"windows-1251", "\xC6", L"\x0416"},
                 {"KOI8-R", "\xC1", L"\x0430"},
                 {"IBM850", "\x82", L"\xE9"},
                 {"macintosh", "\x8E", L"\xE9"},
                 {"GBK", "\xD6\xD0", L"\x4E2D"},
                 {"GB18030", "\xD6\xD0", L"\x4E2D"},
                 {"Big5", "\xA4\xA4", L"\x4E2D"},
                 {"EUC-JP", "\xC6\xFC", L"\x65E5"},
                 {"Shift_JIS", "\x93\xFA\x96\x7B", L"\x65E5\x672C"},
                 {"ISO-2022-JP", "\x1B$BF|\x1B(B", L"\x65E5"},
                 {"UTF-7", "+AOk-", L"\xE9"}};
    for (const auto& c : cases) {
        m_folder.write("log.xml", "<?xml version=\"1.0\" encoding=\"" + std::string(c.encoding) +
                                      "\"?>\n<log>\n" + message_of(c.bytes) + message_of("b") +
                                      "</log>\n");
        EXPECT_EQ(types_in(), c.type + std::wstring(L";b;")) << c.encoding;
        record_all(L"c");
        EXPECT_EQ(types_in(), c.type + std::wstring(L";b;c;")) << c.encoding;
        EXPECT_FALSE(has_copy()) << c.encoding;
    }
}

TEST_F(messages_storage_test, a_log_that_begins_in_ebcdic_is_read_as_ebcdic)
{
    // <log><msg><type>a</type></msg></log>, after a declaration without an encoding.
    m_folder.write(
        "log.xml",
        "\x4C\x6F\xA7\x94\x93\x40\xA5\x85\x99\xA2\x89\x96\x95\x7E\x7D\xF1\x4B\xF0\x7D\x6F"
        "\x6E\x4C\x93\x96\x87\x6E\x4C\x94\xA2\x87\x6E\x4C\xA3\xA8\x97\x85\x6E\x81\x4C\x61"
        "\xA3\xA8\x97\x85\x6E\x4C\x61\x94\xA2\x87\x6E\x4C\x61\x93\x96\x87\x6E>");
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(messages_storage_test, a_log_in_an_unknown_encoding_delivers_nothing)
{
    m_folder.write("log.xml",
                   "<?xml version='1.0' encoding='x-unknown'?><log>" + message_of("a") + "</log>");
    EXPECT_TRUE(replay_all().empty());
}

TEST_F(messages_storage_test, a_start_on_a_log_in_an_unknown_encoding_changes_nothing)
{
    for (const std::string& before :
         {"<?xml version='1.0' encoding='x-unknown'?><log>" + message_of("a") + "</log>",
          "<?xml version=\"1.0\"\n encoding=\"x-unknown\" standalone='yes'?>\n<!-- c --><log>\n" +
              message_of("a")}) {
        m_folder.write("log.xml", before);
        const storage_ptr_t storage = get();
        for (int i = 0; i < 2; ++i) {
            EXPECT_FALSE(storage->start_recording());
            record(storage, L"x");
            EXPECT_EQ(log(), before);
            EXPECT_FALSE(has_copy());
        }
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_EQ(log(), before);
        std::filesystem::remove(m_folder.name("log.xml"));
        EXPECT_TRUE(storage->start_recording()) << "the storage counts as recording";
    }
}

TEST_F(messages_storage_test, a_message_that_a_handler_consumes_does_not_end_the_replay)
{
    record_all(L"ab");
    const auto below = boost::make_shared<recording_handler_t>();
    const auto above = boost::make_shared<recording_handler_t>(true);
    m_ex->push_handler(below);
    m_ex->push_handler(above);
    const storage_ptr_t storage = get();
    storage->start_reading();
    EXPECT_TRUE(storage->replay(m_ex));
    EXPECT_EQ(above->messages().size(), 2U);
    EXPECT_TRUE(below->messages().empty());
}

TEST_F(messages_storage_test, a_log_that_is_cut_within_a_message_replays_its_complete_messages)
{
    m_folder.write("log.xml", "<log>\n" + message_of("a") + " <msg>\n  <type>b</type>");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    const auto handler = boost::make_shared<recording_handler_t>();
    m_ex->push_handler(handler);
    EXPECT_TRUE(storage->replay(m_ex));
    EXPECT_EQ(handler->messages().size(), 1U);
}

TEST_F(messages_storage_test, a_replay_of_a_log_without_a_tag_returns_false)
{
    m_folder.write("log.xml", "plain text");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    EXPECT_FALSE(storage->replay(m_ex));
}

TEST_F(messages_storage_test, a_replay_of_a_log_that_begins_with_a_zero_returns_false)
{
    m_folder.write("log.xml", std::string(1, '\0') + log_of(message_of("a")));
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    EXPECT_FALSE(storage->replay(m_ex));
}

TEST_F(messages_storage_test, several_roots_are_read_up_to_the_second)
{
    m_folder.write("log.xml",
                   "<log>" + message_of("a") + "</log><log>" + message_of("b") + "</log>");
    EXPECT_EQ(replay(get()), L"a;");
}

TEST_F(messages_storage_test,
       an_exception_of_a_handler_ends_the_replay_and_the_storage_stays_usable)
{
    struct throwing_handler_t : base_handler_t
    {
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
        {
            throw std::runtime_error("handler");
        }
    };
    record_all(L"ab");
    const storage_ptr_t storage = get();
    storage->start_reading();
    m_ex->push_handler(boost::make_shared<throwing_handler_t>());
    EXPECT_THROW(storage->replay(m_ex), std::runtime_error);
    EXPECT_FALSE(storage->replay(m_ex)) << "the text counts as read";
    EXPECT_TRUE(storage->start_recording());
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(messages_storage_test, a_storage_may_be_replayed_into_a_stack_that_another_one_records)
{
    record_all(L"ab");
    const storage_ptr_t copy = get("copy.xml");
    ASSERT_TRUE(copy->start_recording());
    struct flagging_handler_t : base_handler_t
    {
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t msg) override
        {
            msg->set_flags(1);
            return false;
        }
    };
    m_ex->push_handler(copy);
    m_ex->push_handler(boost::make_shared<flagging_handler_t>());
    const storage_ptr_t storage = get();
    storage->start_reading();
    EXPECT_TRUE(storage->replay(m_ex));
    copy->stop_recording();
    EXPECT_EQ(m_folder.read("copy.xml"), log());
}

TEST_F(messages_storage_test, handlers_get_the_extension_objects_own_pointer)
{
    for (const auto& borrowed :
         {boost::shared_ptr<velmo_ex_t>(m_ex.get(), [](velmo_ex_t*) {}),
          boost::shared_ptr<velmo_ex_t>(boost::make_shared<int>(), m_ex.get())}) {
        std::filesystem::remove(m_folder.name("log.xml"));
        record_all(L"ab");
        const auto handler = boost::make_shared<owner_handler_t>(m_ex);
        m_ex->push_handler(handler);
        const storage_ptr_t storage = get();
        EXPECT_TRUE(storage->start_reading());
        EXPECT_TRUE(storage->replay(borrowed));
        EXPECT_EQ(handler->results(), std::vector<bool>(2, true));
    }
}

TEST_F(messages_storage_test, a_replay_continues_after_a_handler_releases_the_extension_object)
{
    class releasing_handler_t : public recording_handler_t
    {
    public:
        explicit releasing_handler_t(boost::shared_ptr<velmo_ex_t>& ex) : m_ex(ex) {}
        bool on_message(boost::shared_ptr<velmo_ex_t> ex, message_ptr_t msg) override
        {
            m_ex.reset();
            return recording_handler_t::on_message(ex, msg);
        }

    private:
        boost::shared_ptr<velmo_ex_t>& m_ex;
    };
    record_all(L"ab");
    auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"messages_storage_test."), L"");
    const auto handler = boost::make_shared<releasing_handler_t>(ex);
    ex->push_handler(handler);
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->replay(std::move(ex)));
    EXPECT_EQ(handler->messages().size(), 2U);
}

TEST_F(messages_storage_test, many_different_names_lose_no_message)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    for (int i = 0; i < 600; ++i) {
        const message_ptr_t message = make_flagged(L"t");
        message->set_content(
            make_content({}, {}, {{L"n" + std::to_wstring(i) + std::wstring(40000, L'n'), L"x"}}));
        message->set_flags(1);
        storage->on_message(m_ex, message);
    }
    storage->stop_recording();
    record_all(L"l");
    const auto handler = boost::make_shared<recording_handler_t>();
    m_ex->push_handler(handler);
    EXPECT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->replay(m_ex));
    EXPECT_EQ(handler->messages().size(), 601U);
}

TEST_F(messages_storage_test, the_last_message_of_a_long_log_is_read_at_any_size)
{
    for (const std::size_t size : {10U, 400U, 600U, 5000U, 1000000U}) {
        std::string messages;
        while (messages.size() < 12000000)
            messages += message_of(std::string(100000, 'x'));
        const std::string last =
            " <msg tool=\"" + std::string(size, 'x') + "\">\n  <type>last</type>\n </msg>\n";
        m_folder.write("long.xml", log_of(messages + last));
        const std::wstring types = replay(get("long.xml"));
        EXPECT_EQ(types.substr(types.size() - 5), L"last;") << size;
        std::filesystem::remove(m_folder.name("long.xml"));
    }
}
