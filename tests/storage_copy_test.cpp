// A start with an old log, and the copy of the log that it creates.

#include "process_support.h"
#include "storage_support.h"
#include "system_faults.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <locale>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

/// Files before a start, which a start that returns false must not change.
typedef std::vector<std::pair<std::string, std::string>> files_t;

class storage_copy_test : public storage_test_t
{
protected:
    std::string log() const { return m_folder.read("log.xml"); }
    bool has_copy() const { return m_folder.has("log.xml.tmp"); }

    void write_all(const files_t& files) const
    {
        for (const auto& [leaf, bytes] : files)
            m_folder.write(leaf, bytes);
    }

    void link(const std::string& target, const std::string& leaf) const
    {
        ASSERT_EQ(symlink(m_folder.name(target).c_str(), m_folder.name(leaf).c_str()), 0);
    }

    void expect_refused_and_unchanged(const files_t& files, const std::string& leaf = "log.xml")
    {
        const storage_ptr_t storage = get(leaf);
        EXPECT_FALSE(storage->start_recording());
        EXPECT_FALSE(storage->start_recording()) << "the storage counts as recording";
        EXPECT_TRUE(descriptors_of_log().empty());
        EXPECT_TRUE(storage->stop_recording());
        for (const auto& [name, bytes] : files)
            EXPECT_EQ(m_folder.read(name), bytes) << name;
    }
};

const faults_t nothing_can_be_copied = [](const std::string& call, int) {
    return call == "open unnamed" || call == "mkostemp" ? EACCES : 0;
};

// As on exFAT, which has neither unnamed files nor hard links.
const faults_t no_hard_links = [](const std::string& call, int) {
    return call == "open unnamed" ? EOPNOTSUPP : call == "linkat" || call == "link" ? EPERM : 0;
};

struct grouping_digits_t : std::numpunct<wchar_t>
{
    std::string do_grouping() const override { return "\1"; }
};

} // namespace

// ---- without a copy

TEST_F(storage_copy_test, no_copy_is_created_of_a_new_or_empty_log)
{
    for (const bool is_new : {true, false}) {
        std::filesystem::remove(m_folder.name("log.xml"));
        if (!is_new)
            m_folder.write("log.xml", "");
        int calls = 0;
        {
            const faults_scope_t faults([&](const std::string& call, int) {
                calls += call == "open unnamed" || call == "unlink" ? 1 : 0;
                return 0;
            });
            record_all(L"a");
        }
        EXPECT_EQ(calls, 0);
        EXPECT_EQ(log(), log_of(message_of("a")));
    }
}

TEST_F(storage_copy_test, a_log_in_the_written_form_is_not_rewritten)
{
    record_all(L"ab");
    for (const char* const tail : {"", " <msg>\n  <ty", "</log>\n"}) {
        m_folder.write("log.xml", log().substr(0, log().find("</log>")) + tail);
        const faults_scope_t faults(nothing_can_be_copied);
        const storage_ptr_t storage = get();
        ASSERT_TRUE(storage->start_recording()) << tail;
        EXPECT_EQ(log(), log_of(message_of("a") + message_of("b")).substr(0, log().size()));
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_EQ(log(), log_of(message_of("a") + message_of("b"))) << tail;
    }
}

TEST_F(storage_copy_test, a_log_without_messages_stays_an_empty_root)
{
    record_all(L"");
    const faults_scope_t faults(nothing_can_be_copied);
    record_all(L"");
    EXPECT_EQ(log(), empty_log);
    record_all(L"a");
    EXPECT_EQ(log(), log_of(message_of("a")));
}

TEST_F(storage_copy_test, a_log_that_differs_in_any_byte_is_rewritten)
{
    const std::string whole = log_of(message_of("a") + message_of("b"));
    for (std::size_t at = 0; at <= whole.find("</log>"); ++at) {
        std::string changed = whole;
        changed.insert(at, " ");
        m_folder.write("log.xml", changed);
        const std::wstring types = replay(get());
        record_all(L"c");
        EXPECT_EQ(types_in(), types + L"c;") << at;
        EXPECT_EQ(log().rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n <msg>", 0), 0U)
            << at;
        EXPECT_FALSE(has_copy());
    }
}

// ---- with a copy

TEST_F(storage_copy_test, a_copy_exists_beside_the_log_until_all_is_carried_over)
{
    m_folder.write("log.xml", foreign_log({"a", "b"}));
    std::string copied;
    {
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "ftruncate")
                copied = m_folder.read("log.xml.tmp");
            return 0;
        });
        record_all(L"c");
    }
    EXPECT_EQ(copied, foreign_log({"a", "b"}));
    EXPECT_EQ(types_in(), L"a;b;c;");
    EXPECT_FALSE(has_copy());
}

TEST_F(storage_copy_test, a_copy_is_created_beside_the_given_path)
{
    std::filesystem::create_directory(m_folder.name("elsewhere"));
    m_folder.write("elsewhere/real.xml", foreign_log({"a"}));
    link("elsewhere/real.xml", "log.xml");
    bool is_beside_the_link = false;
    {
        const faults_scope_t faults([&](const std::string& call, int) {
            is_beside_the_link = is_beside_the_link || (call == "ftruncate" && has_copy());
            return 0;
        });
        record_all(L"b");
    }
    EXPECT_TRUE(is_beside_the_link);
    EXPECT_EQ(types_in("elsewhere/real.xml"), L"a;b;");
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.name("log.xml")));
}

TEST_F(storage_copy_test, without_hard_links_nothing_is_lost_and_no_copy_remains)
{
    const faults_scope_t faults(no_hard_links);
    std::vector<std::string> types;
    for (const wchar_t* const next : {L"a", L"b", L"c"}) {
        m_folder.write("log.xml", foreign_log(types));
        record_all(next);
        types.emplace_back(1, static_cast<char>(*next));
    }
    EXPECT_EQ(types_in(), L"a;b;c;");
    std::filesystem::remove(m_folder.name("copy to read"));
    const std::filesystem::directory_iterator files(m_folder.name(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1) << "the log";
}

TEST_F(storage_copy_test, a_log_that_cannot_be_copied_is_not_rewritten)
{
    const files_t files = {{"log.xml", foreign_log({"a"})}};
    write_all(files);
    {
        const faults_scope_t faults(nothing_can_be_copied);
        expect_refused_and_unchanged(files);
        EXPECT_TRUE(get("./log.xml")->start_reading());
    }
    EXPECT_FALSE(has_copy());
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_copy_test, names_of_the_maximum_length_have_a_copy_too)
{
    for (const std::string& letter :
         {std::string("x"), std::string("\xC3\xA9"), std::string("\xE2\x82\xAC")})
        for (const std::size_t size : {250U, 251U, 252U, 253U, 254U, 255U}) {
            std::string leaf(size % letter.size(), 'x');
            while (leaf.size() < size)
                leaf += letter;
            m_folder.write(leaf, foreign_log({"a"}));
            const faults_scope_t faults(
                [&](const std::string& call, int) { return call == "unlink" ? EIO : 0; });
            EXPECT_FALSE(get(leaf)->start_recording()) << "the copy stays";
            std::filesystem::remove(m_folder.name(leaf));
        }
    const std::filesystem::directory_iterator files(m_folder.name(""));
    EXPECT_EQ(std::distance(begin(files), end(files)), 18) << "each log has a copy of its own";
    int short_names = 0;
    for (const auto& file : std::filesystem::directory_iterator(m_folder.name(""))) {
        const std::string name = file.path().filename();
        short_names += name.size() <= 143 ? 1 : 0;
        EXPECT_EQ(name.find("\xEF\xBF\xBD"), std::string::npos) << "a character was cut";
    }
    EXPECT_EQ(short_names, 12) << "some file systems do not support longer names";
}

TEST_F(storage_copy_test, a_copy_under_a_short_name_is_found_again_in_any_locale)
{
    const std::string leaf = std::string(251, 'x') + ".xml";
    m_folder.write(leaf, foreign_log({"a"}));
    {
        const faults_scope_t faults(
            [](const std::string& call, int) { return call == "unlink" ? EIO : 0; });
        EXPECT_FALSE(get(leaf)->start_recording());
    }
    std::filesystem::remove(m_folder.name(leaf));
    const std::locale former =
        std::locale::global(std::locale(std::locale(), new grouping_digits_t));
    record_all(L"b", leaf);
    std::locale::global(former);
    EXPECT_EQ(types_in(leaf), L"a;b;");
}

// ---- copies that were left

TEST_F(storage_copy_test, a_copy_is_carried_over_if_the_log_has_nothing_else)
{
    const std::string copy = foreign_log({"a", "b"});
    const std::string carried_over = log_of(message_of("a") + message_of("b"));
    const std::string written = [&] {
        m_folder.write("log.xml", copy);
        record_all(L"");
        return log();
    }();
    std::vector<std::string> logs = {copy};
    for (std::size_t size = 0; size <= written.find("</log>"); ++size)
        logs.push_back(written.substr(0, size));
    for (const std::string& left : logs) {
        write_all({{"log.xml", left}, {"log.xml.tmp", copy}});
        record_all(L"c");
        EXPECT_EQ(types_in(), L"a;b;c;") << left;
        EXPECT_FALSE(has_copy());
    }
}

TEST_F(storage_copy_test, a_copy_that_was_left_without_its_log_is_carried_over)
{
    m_folder.write("log.xml.tmp", log_of(message_of("a")));
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
    EXPECT_FALSE(has_copy());
}

TEST_F(storage_copy_test, a_log_with_text_that_is_not_in_its_copy_is_left_alone)
{
    const std::string copy = log_of(message_of("a"));
    const std::string begun = copy.substr(0, copy.find("</log>"));
    for (const std::string& newer :
         {log_of(message_of("a") + message_of("b")), begun + message_of("b"), begun + " <msg>",
          log_of(message_of("b")), foreign_log({"a"}), std::string("text"),
          std::string(copy.size(), ' ')}) {
        const files_t files = {{"log.xml", newer}, {"log.xml.tmp", copy}};
        write_all(files);
        expect_refused_and_unchanged(files);
    }
    m_folder.write("log.xml.tmp", "");
    std::filesystem::remove(m_folder.name("log.xml.tmp"));
    m_folder.write("log.xml", copy);
    record_all(L"c");
    EXPECT_EQ(types_in(), L"a;c;") << "without the copy it can be recorded again";
}

TEST_F(storage_copy_test, a_copy_beside_a_dangling_link_is_found)
{
    link("target.xml", "log.xml");
    m_folder.write("log.xml.tmp", foreign_log({"a", "b"}));
    record_all(L"c");
    EXPECT_EQ(types_in("target.xml"), L"a;b;c;");
    EXPECT_FALSE(has_copy());
}

TEST_F(storage_copy_test, a_killed_start_through_a_link_loses_nothing_when_its_target_is_rotated)
{
    std::filesystem::create_directory(m_folder.name("elsewhere"));
    m_folder.write("elsewhere/real.xml", foreign_log({"a"}));
    link("elsewhere/real.xml", "log.xml");
    EXPECT_TRUE(was_killed(status_of_child([this] {
        bool is_emptied = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            if (is_emptied)
                raise(SIGKILL);
            is_emptied = call == "ftruncate";
            return 0;
        });
        return get()->start_recording() ? 0 : 1;
    })));
    std::filesystem::rename(m_folder.name("elsewhere/real.xml"), m_folder.name("elsewhere/real.1"));
    record_all(L"b");
    record_all(L"c");
    EXPECT_EQ(types_in(), L"a;b;c;");
}

TEST_F(storage_copy_test, a_log_whose_path_is_not_utf_8_is_carried_over_through_a_link)
{
    std::filesystem::create_directory(m_folder.name("\xFF"));
    m_folder.write("\xFF/log.xml", foreign_log({"a"}));
    link("\xFF/log.xml", "link.xml");
    record_all(L"b", "link.xml");
    EXPECT_EQ(types_in("link.xml"), L"a;b;");
    EXPECT_FALSE(m_folder.has("link.xml.tmp"));
}

TEST_F(storage_copy_test, a_copy_that_cannot_be_read_in_full_is_left_alone_and_no_log_is_created)
{
    const files_t files = {
        {"log.xml.tmp", "<?xml version='1.0' encoding='none'?>" + foreign_log({"a"})}};
    write_all(files);
    expect_refused_and_unchanged(files);
    EXPECT_FALSE(m_folder.has("log.xml"));
    link("target.xml", "log.xml");
    expect_refused_and_unchanged(files);
    EXPECT_FALSE(m_folder.has("target.xml"));
    EXPECT_TRUE(m_folder.has("log.xml")) << "the link";
    m_folder.write("log.xml", "");
    expect_refused_and_unchanged(files);
    EXPECT_TRUE(m_folder.has("target.xml")) << "an empty log that was there stays";
}

TEST_F(storage_copy_test, text_that_another_program_writes_into_a_created_log_stays)
{
    m_folder.write("log.xml.tmp", "<?xml version='1.0' encoding='none'?><log/>");
    {
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "pread")
                m_folder.write("log.xml", "text");
            return 0;
        });
        EXPECT_FALSE(get()->start_recording());
    }
    EXPECT_EQ(log(), "text");
}

TEST_F(storage_copy_test, an_empty_log_that_appears_after_a_refused_start_stays)
{
    const storage_ptr_t storage = get("folder/log.xml");
    EXPECT_FALSE(storage->start_recording()) << "no log can be created without the folder";
    std::filesystem::create_directory(m_folder.name("folder"));
    write_all({{"folder/log.xml", ""},
               {"folder/log.xml.tmp", "<?xml version='1.0' encoding='none'?><log/>"}});
    EXPECT_FALSE(storage->start_recording());
    EXPECT_TRUE(m_folder.has("folder/log.xml"));
}

// ---- other files with the copy's name

TEST_F(storage_copy_test, a_log_that_is_being_recorded_is_not_a_copy)
{
    const storage_ptr_t other = get("log.xml.tmp");
    ASSERT_TRUE(other->start_recording());
    for (int i = 0; i < 200; ++i)
        record(other, std::to_wstring(i));
    EXPECT_FALSE(get()->start_recording());
    EXPECT_FALSE(m_folder.has("log.xml")) << "a refused start creates no log";
    const files_t files = {{"log.xml", log_of(message_of("a"))}};
    write_all(files);
    expect_refused_and_unchanged(files);
    EXPECT_TRUE(other->stop_recording());
    EXPECT_NE(types_in("log.xml.tmp").find(L";199;"), std::wstring::npos);
}

TEST_F(storage_copy_test, a_start_is_refused_if_a_recording_begins_at_the_path_of_the_copy)
{
    record_all(L"a");
    const storage_ptr_t other = get("log.xml.tmp");
    bool is_recorded = false;
    const faults_scope_t faults([&](const std::string& call, int) {
        if (call == "flock" && !std::exchange(is_recorded, true)) {
            EXPECT_TRUE(other->start_recording());
        }
        return 0;
    });
    EXPECT_FALSE(get()->start_recording());
    EXPECT_EQ(log(), log_of(message_of("a")));
}

TEST_F(storage_copy_test, a_copy_cannot_be_recorded_into_while_it_is_carried_over)
{
    m_folder.write("log.xml", foreign_log({"a"}));
    int refused = 0;
    {
        bool is_asking = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "ftruncate" && !std::exchange(is_asking, true))
                refused += get("log.xml.tmp")->start_recording() ? 0 : 1;
            return 0;
        });
        record_all(L"b");
    }
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(types_in(), L"a;b;");
}

// Two starts can check a copy at once: neither may take the other for a recorder.
TEST_F(storage_copy_test, a_copy_with_a_shared_lock_is_carried_over)
{
    m_folder.write("log.xml.tmp", foreign_log({"a"}));
    const int reader = open(m_folder.name("log.xml.tmp").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(reader, LOCK_SH), 0);
    record_all(L"b");
    close(reader);
    EXPECT_EQ(types_in(), L"a;b;");
    EXPECT_FALSE(has_copy());
}

TEST_F(storage_copy_test, the_log_itself_at_the_path_of_the_copy_is_left_alone)
{
    const files_t files = {{"log.xml", foreign_log({"a"})}};
    write_all(files);
    std::filesystem::create_hard_link(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    expect_refused_and_unchanged(files);
    const faults_scope_t without_locks(
        [](const std::string& call, int) { return call == "flock" ? ENOLCK : 0; });
    expect_refused_and_unchanged(files);
    EXPECT_TRUE(has_copy());
}

TEST_F(storage_copy_test, a_refused_start_releases_the_log)
{
    record_all(L"a");
    std::filesystem::create_hard_link(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr_t storage = get();
    EXPECT_FALSE(storage->start_recording());
    std::filesystem::remove(m_folder.name("log.xml.tmp"));
    EXPECT_TRUE(get("./log.xml")->start_recording());
}

TEST_F(storage_copy_test, a_folder_at_the_path_of_the_copy_is_left_alone)
{
    const files_t files = {{"log.xml", log_of(message_of("a"))}};
    write_all(files);
    ASSERT_EQ(mkdir(m_folder.name("log.xml.tmp").c_str(), 0700), 0);
    expect_refused_and_unchanged(files);
    EXPECT_TRUE(has_copy());
}

TEST_F(storage_copy_test, a_link_at_the_path_of_the_copy_is_left_alone)
{
    const files_t files = {{"precious", "text"}};
    write_all(files);
    link("precious", "log.xml.tmp");
    expect_refused_and_unchanged(files);
    EXPECT_TRUE(has_copy());
    EXPECT_FALSE(m_folder.has("log.xml"));
}

TEST_F(storage_copy_test, a_copy_of_another_user_is_left_alone)
{
    const files_t files = {{"log.xml.tmp", log_of(message_of("a"))}};
    write_all(files);
    {
        const other_user_scope_t other;
        expect_refused_and_unchanged(files);
    }
    EXPECT_FALSE(m_folder.has("log.xml"));
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_copy_test, a_file_that_appears_at_the_path_of_the_copy_is_left_alone)
{
    const files_t files = {{"log.xml", foreign_log({"a"})}};
    write_all(files);
    const faults_scope_t faults([&](const std::string& call, int) {
        if (call == "fchmod")
            m_folder.write("log.xml.tmp", "new");
        return 0;
    });
    expect_refused_and_unchanged(files);
    EXPECT_EQ(m_folder.read("log.xml.tmp"), "new");
}

// ---- logs that cannot be read

TEST_F(storage_copy_test, a_log_that_exceeds_a_limit_at_any_offset_is_left_alone)
{
    std::string tag = "<e";
    for (int i = 0; i < 25001; ++i)
        tag += " a" + std::to_string(i) + "=''";
    for (const std::size_t size : {0U, 600000U}) {
        std::string messages;
        while (messages.size() < size)
            messages += message_of("a");
        const files_t files = {{"log.xml", log_of(messages + tag + "/>" + message_of("b"))}};
        write_all(files);
        expect_refused_and_unchanged(files);
        EXPECT_FALSE(has_copy());
    }
}

TEST_F(storage_copy_test, a_log_that_cannot_be_read_is_left_alone)
{
    for (const std::string& old : {log_of(message_of("a")), foreign_log({"a"})}) {
        const files_t files = {{"log.xml", old}};
        write_all(files);
        {
            const faults_scope_t faults(
                [](const std::string& call, int) { return call == "pread" ? EIO : 0; });
            EXPECT_FALSE(get()->start_recording());
        }
        EXPECT_EQ(log(), old);
    }
}

TEST_F(storage_copy_test, a_log_that_is_replaced_while_it_is_read_is_not_lost)
{
    bool is_replaced = true;
    for (int replaced_at = 0; is_replaced; ++replaced_at) {
        is_replaced = false;
        write_all({{"log.xml", foreign_log({"a"})}, {"new.xml", foreign_log({"b"})}});
        int calls = 0;
        {
            const faults_scope_t faults([&](const std::string&, int) {
                if (calls++ == replaced_at) {
                    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.1"));
                    std::filesystem::rename(m_folder.name("new.xml"), m_folder.name("log.xml"));
                    is_replaced = true;
                }
                return 0;
            });
            const storage_ptr_t storage = get();
            storage->start_recording();
            storage->stop_recording();
        }
        if (is_replaced) {
            EXPECT_EQ(types_in("log.1"), L"a;") << replaced_at;
            EXPECT_EQ(types_in(), L"b;") << replaced_at;
        }
        EXPECT_FALSE(has_copy());
    }
}

TEST_F(storage_copy_test, a_start_whose_log_is_replaced_leaves_the_storage_idle)
{
    write_all({{"log.xml", foreign_log({"a"})}, {"new.xml", foreign_log({"b"})}});
    const storage_ptr_t storage = get();
    {
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "pread" && m_folder.has("new.xml")) {
                std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.1"));
                std::filesystem::rename(m_folder.name("new.xml"), m_folder.name("log.xml"));
            }
            return 0;
        });
        EXPECT_FALSE(storage->start_recording());
    }
    EXPECT_FALSE(has_copy());
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"c");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in("log.1"), L"a;");
    EXPECT_EQ(types_in(), L"b;c;");
}

// ---- locks

TEST_F(storage_copy_test, a_log_on_a_file_system_without_locks_is_recorded_unlocked)
{
    for (const int error : {ENOSYS, EOPNOTSUPP, ENOLCK}) {
        m_folder.write("log.xml", foreign_log({"a"}));
        const faults_scope_t faults(
            [&](const std::string& call, int) { return call == "flock" ? error : 0; });
        record_all(L"b");
        EXPECT_EQ(types_in(), L"a;b;") << error;
    }
}

TEST_F(storage_copy_test, without_locks_a_child_leaves_the_log_to_its_parent)
{
    const faults_scope_t faults(
        [](const std::string& call, int) { return call == "flock" ? ENOLCK : 0; });
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const int status = status_of_child([&] {
        record(storage, L"of the child");
        return storage->stop_recording() ? 0 : 1;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
    record(storage, L"c");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(log(), log_of(message_of("a") + message_of("c")));
}
