// Injects every failure, short write and interruption at every instant, and tests both ways of
// copying on every file system.

#include "process_support.h"
#include "run_threads.h"
#include "scratch_folder.h"
#include "system_faults.h"

#include <basekit2/file.h>

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

using basekit2::copy_file;
using basekit2::path_t;
using basekit2::remove_file;
using namespace std::string_literals;

std::wstring wide(const std::string& text)
{
    return ROVA_2_18::strings::utf8_to_utf16(text);
}

/// Returns bytes without repetition, so that no two chunks are equal.
std::string content_of(std::size_t size)
{
    std::string content(size, '\0');
    for (std::size_t i = 0; i != size; ++i)
        content[i] = static_cast<char>((i * 2654435761U) >> 16);
    return content;
}

class umask_scope_t
{
public:
    explicit umask_scope_t(mode_t mask) : m_former(umask(mask)) {}
    umask_scope_t(const umask_scope_t&) = delete;
    umask_scope_t& operator=(const umask_scope_t&) = delete;
    ~umask_scope_t() { umask(m_former); }

private:
    mode_t m_former;
};

class c_locale_scope_t
{
public:
    c_locale_scope_t() : m_former(std::setlocale(LC_ALL, nullptr)) { std::setlocale(LC_ALL, "C"); }
    c_locale_scope_t(const c_locale_scope_t&) = delete;
    c_locale_scope_t& operator=(const c_locale_scope_t&) = delete;
    ~c_locale_scope_t() { std::setlocale(LC_ALL, m_former.c_str()); }

private:
    std::string m_former;
};

/// Makes the system kill this process after that time.
bool kill_this_process_after(std::chrono::nanoseconds time)
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer = nullptr;
    itimerspec setting = {};
    setting.it_value.tv_nsec = std::max<long>(1, static_cast<long>(time.count()));
    return timer_create(CLOCK_MONOTONIC, &event, &timer) == 0 &&
           timer_settime(timer, 0, &setting, nullptr) == 0;
}

/// A scratch folder, and operations on the names in it.
class basekit2_file_test : public testing::Test
{
protected:
    std::filesystem::path at(const std::string& name) const { return m_folder.name(name); }
    path_t path(const std::string& name) const { return path_t(wide(at(name))); }
    void write_file(const std::string& name, const std::string& content) const
    {
        m_folder.write(name, content);
    }
    std::string read_file(const std::string& name) const
    {
        std::ifstream file(at(name), std::ios::binary);
        std::string content(std::filesystem::file_size(at(name)), '\0');
        file.read(content.data(), static_cast<std::streamsize>(content.size()));
        return content;
    }
    mode_t permissions(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(stat(at(name).c_str(), &status), 0) << name;
        return status.st_mode & 07777U;
    }
    std::set<std::string> names() const
    {
        std::set<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(at("")))
            result.insert(entry.path().filename());
        return result;
    }
    bool copy(const std::string& from, const std::string& to) const
    {
        return copy_file(path(from), path(to));
    }

    /// Creates one file of each kind that is neither a regular file nor missing.
    void make_special_files() const
    {
        std::filesystem::create_directory(at("directory"));
        std::filesystem::create_symlink("nothing", at("dangling"));
        ASSERT_EQ(mkfifo(at("fifo").c_str(), 0600), 0);
        bind_socket("socket");
    }

private:
    void bind_socket(const std::string& name) const
    {
        const current_directory_scope_t here(at(""));
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        name.copy(&address.sun_path[0], name.size());
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(descriptor);
    }

    const scratch_folder_t m_folder;
};

/// A way of copying: the calls that fail in it, and their errors.
struct way_t
{
    std::string name;
    std::map<std::string, int> errors;
};

int fault_of(const way_t& way, const std::string& call)
{
    const auto found = way.errors.find(call);
    return found == way.errors.end() ? 0 : found->second;
}

const way_t as_the_system_does = {"as_the_system_does", {}};
const way_t without_unnamed_files = {"without_unnamed_files", {{"open unnamed", EOPNOTSUPP}}};
const way_t without_process_directory = {"without_the_process_directory", {{"linkat", ENOENT}}};
const way_t without_links = {"without_hard_links", {{"open unnamed", EOPNOTSUPP}, {"link", EPERM}}};
const way_t with_simple_renaming = {
    "with_simple_renaming", {{"open unnamed", EOPNOTSUPP}, {"link", EPERM}, {"renameat2", EINVAL}}};

/// Tests that apply to every way of copying.
class basekit2_file_ways_test : public basekit2_file_test, public testing::WithParamInterface<way_t>
{
protected:
    bool copy(const std::string& from, const std::string& to) const
    {
        return copy_with(from, to, [](const std::string&, int) { return 0; });
    }
    bool copy_with(const std::string& from, const std::string& to, const faults_t& more) const
    {
        const faults_scope_t faults([&](const std::string& call, int descriptor) {
            const int error = fault_of(GetParam(), call);
            return error != 0 ? error : more(call, descriptor);
        });
        return basekit2_file_test::copy(from, to);
    }
    /// Expects a whole copy or none.
    void expect_no_partial_copy(const std::string& content, const std::string& to) const
    {
        if (std::filesystem::exists(std::filesystem::symlink_status(at(to)))) {
            EXPECT_TRUE(read_file(to) == content) << "a part of the source";
            EXPECT_EQ(permissions(to), 0600U);
        }
    }
};

/// The ways in which the destination is created in one step.
class basekit2_file_one_step_test : public basekit2_file_ways_test
{};

std::string name_of(const testing::TestParamInfo<way_t>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(every_way, basekit2_file_ways_test,
                         testing::Values(as_the_system_does, without_unnamed_files,
                                         without_process_directory, without_links,
                                         with_simple_renaming),
                         name_of);
INSTANTIATE_TEST_SUITE_P(every_way, basekit2_file_one_step_test,
                         testing::Values(as_the_system_does, without_unnamed_files,
                                         without_process_directory, without_links),
                         name_of);

TEST_P(basekit2_file_ways_test, the_copy_has_all_bytes_of_the_source)
{
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 1000000U}) {
        const std::string to = "copy of " + std::to_string(size);
        write_file("source", content_of(size));
        EXPECT_TRUE(copy("source", to)) << size;
        EXPECT_TRUE(read_file(to) == content_of(size)) << size;
        EXPECT_TRUE(read_file("source") == content_of(size)) << size;
    }
}

TEST_P(basekit2_file_ways_test, only_the_destination_is_added)
{
    write_file("source", "text");
    EXPECT_TRUE(copy("source", "copy"));
    EXPECT_EQ(names(), (std::set<std::string>{"source", "copy"}));
}

TEST_P(basekit2_file_ways_test, a_file_at_the_destination_stays)
{
    write_file("source", "new");
    write_file("file", "old");
    write_file("empty", "");
    make_special_files();
    std::filesystem::create_symlink("file", at("link"));
    const auto before = names();
    for (const auto& name : before) {
        const auto kind = std::filesystem::symlink_status(at(name)).type();
        EXPECT_FALSE(copy("source", name)) << name;
        EXPECT_EQ(std::filesystem::symlink_status(at(name)).type(), kind) << name;
    }
    EXPECT_EQ(names(), before);
    EXPECT_EQ(read_file("file"), "old");
    EXPECT_EQ(read_file("empty"), "");
    EXPECT_EQ(read_file("source"), "new");
}

TEST_P(basekit2_file_ways_test, only_the_owner_may_read_and_write_the_copy)
{
    for (const mode_t mask : {0U, 022U, 077U, 0600U, 0777U}) {
        for (const mode_t mode : {0777U, 0644U, 0400U, 07777U}) {
            const std::string name = std::to_string(mask) + "-" + std::to_string(mode);
            write_file("source " + name, "text");
            ASSERT_EQ(chmod(at("source " + name).c_str(), mode), 0);
            const umask_scope_t masked(mask);
            EXPECT_TRUE(copy("source " + name, name)) << name;
            EXPECT_EQ(permissions(name), 0600U) << name;
        }
    }
}

TEST_P(basekit2_file_ways_test, short_reads_and_writes_are_continued)
{
    write_file("source", content_of(1000));
    for (const std::size_t max_bytes : {1U, 7U, 999U}) {
        const std::string to = "copy by " + std::to_string(max_bytes);
        {
            const short_io_scope_t short_calls(2 * max_bytes, max_bytes);
            EXPECT_TRUE(copy("source", to)) << max_bytes;
        }
        EXPECT_TRUE(read_file(to) == content_of(1000)) << max_bytes;
    }
}

TEST_P(basekit2_file_ways_test, a_write_that_writes_nothing_is_a_failure)
{
    write_file("source", "text");
    const short_io_scope_t short_writes(SIZE_MAX, 0);
    EXPECT_FALSE(copy("source", "copy"));
    EXPECT_EQ(names(), std::set<std::string>{"source"});
}

TEST_P(basekit2_file_ways_test, interrupted_calls_are_repeated)
{
    write_file("source", content_of(200000));
    const std::set<std::string> interrupted = {"open", "open unnamed", "mkostemp", "pread",
                                               "write"};
    std::set<std::string> seen;
    bool is_interrupted = false;
    EXPECT_TRUE(copy_with("source", "copy", [&](const std::string& call, int) {
        if (interrupted.count(call) == 0)
            return 0;
        seen.insert(call);
        is_interrupted = !is_interrupted;
        return is_interrupted ? EINTR : 0;
    }));
    EXPECT_TRUE(read_file("copy") == content_of(200000));
    EXPECT_EQ(names(), (std::set<std::string>{"source", "copy"}));
    EXPECT_GE(seen.size(), 4U);
}

TEST_P(basekit2_file_ways_test, a_system_error_leaves_no_new_file)
{
    const std::pair<std::string, int> rows[] = {
        {"open", EACCES},  {"pread", EIO},       {"write", ENOSPC}, {"write", EDQUOT},
        {"write", EFBIG},  {"write", EIO},       {"fchmod", EPERM}, {"close", ENOSPC},
        {"rename", EROFS}, {"mkostemp", ENOSPC},
    };
    write_file("source", content_of(200000));
    for (const auto& row : rows) {
        bool is_reached = false;
        const bool is_copied = copy_with("source", "copy", [&](const std::string& call, int) {
            is_reached = is_reached || call == row.first;
            return call == row.first ? row.second : 0;
        });
        EXPECT_EQ(is_copied, !is_reached) << row.first << " " << row.second;
        std::filesystem::remove(at(is_copied ? "copy" : "none"));
        EXPECT_EQ(names(), std::set<std::string>{"source"}) << row.first << " " << row.second;
    }
}

TEST_P(basekit2_file_ways_test, a_disk_that_fills_up_during_the_copy_leaves_no_new_file)
{
    write_file("source", content_of(300000));
    for (int successes = 0; successes != 4; ++successes) {
        int writes = 0;
        EXPECT_FALSE(copy_with("source", "copy", [&](const std::string& call, int) {
            return call == "write" && writes++ >= successes ? ENOSPC : 0;
        })) << successes;
        EXPECT_EQ(names(), std::set<std::string>{"source"}) << successes;
        EXPECT_EQ(writes, successes + 1) << "tried again";
    }
}

TEST_P(basekit2_file_ways_test, the_file_size_limit_of_the_process_leaves_no_new_file)
{
    write_file("source", content_of(200000));
    const int status = status_of_child([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {100000, 100000};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 2;
        return copy("source", "copy") ? 1 : 0;
    });
    EXPECT_TRUE(has_exited_with(status, 0)) << status;
    EXPECT_EQ(names(), std::set<std::string>{"source"});
}

TEST_P(basekit2_file_ways_test, a_kill_before_any_call_leaves_no_partial_copy)
{
    const std::string content = content_of(200000);
    write_file("source", content);
    int kills = 0;
    for (bool is_killed = true; is_killed; ++kills) {
        std::filesystem::remove(at("copy"));
        const int status = status_of_child([&] {
            int calls = 0;
            return copy_with("source", "copy",
                             [&](const std::string&, int) {
                                 return calls++ == kills ? raise(SIGKILL) : 0;
                             })
                       ? 0
                       : 1;
        });
        is_killed = was_killed(status);
        EXPECT_TRUE(is_killed || has_exited_with(status, 0)) << status;
        expect_no_partial_copy(content, "copy");
    }
    EXPECT_TRUE(std::filesystem::exists(at("copy")));
    EXPECT_GE(kills, 12);
}

TEST_P(basekit2_file_ways_test, a_kill_at_any_instant_leaves_no_partial_copy)
{
    const std::string content = content_of(1000000);
    write_file("source", content);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(copy("source", "copy"));
    const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - begin;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<long> instants(0, 2 * time.count());
    for (int round = 0; round != 100; ++round) {
        std::filesystem::remove(at("copy"));
        const std::chrono::nanoseconds instant(instants(random));
        const int status = status_of_child(
            [&] { return kill_this_process_after(instant) && copy("source", "copy") ? 0 : 1; });
        EXPECT_TRUE(was_killed(status) || has_exited_with(status, 0)) << status;
        expect_no_partial_copy(content, "copy");
    }
}

TEST_P(basekit2_file_one_step_test, one_of_several_concurrent_calls_creates_the_copy)
{
    constexpr std::size_t count = 8;
    std::array<bool, count> is_copied{};
    for (std::size_t i = 0; i != count; ++i)
        write_file(std::to_string(i), std::string(100000, static_cast<char>('a' + i)));
    const faults_scope_t faults(
        [](const std::string& call, int) { return fault_of(GetParam(), call); });
    run_threads(count, [&](std::size_t thread) {
        is_copied.at(thread) = basekit2_file_test::copy(std::to_string(thread), "copy");
    });
    ASSERT_EQ(std::count(is_copied.begin(), is_copied.end(), true), 1);
    const auto winner = std::find(is_copied.begin(), is_copied.end(), true) - is_copied.begin();
    EXPECT_TRUE(read_file("copy") == read_file(std::to_string(winner)));
    EXPECT_EQ(names().size(), count + 1);
}

TEST_P(basekit2_file_ways_test, every_descriptor_is_close_on_exec)
{
    write_file("source", "text");
    std::set<std::string> seen;
    EXPECT_TRUE(copy_with("source", "copy", [&](const std::string& call, int descriptor) {
        if (descriptor != -1) {
            seen.insert(call);
            EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << call;
        }
        return 0;
    }));
    EXPECT_EQ(seen, (std::set<std::string>{"fchmod", "pread", "write", "close"}));
}

TEST_P(basekit2_file_ways_test, no_descriptor_stays_open)
{
    write_file("source", "text");
    const auto count_descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = count_descriptors();
    EXPECT_TRUE(copy("source", "copy"));
    EXPECT_FALSE(copy("source", "copy"));
    EXPECT_FALSE(copy("source", "missing/copy"));
    EXPECT_FALSE(copy("missing", "other"));
    EXPECT_EQ(count_descriptors(), before);
}

TEST_P(basekit2_file_ways_test, any_name_works_in_the_c_locale)
{
    const c_locale_scope_t locale;
    const std::string rows[] = {"\xC3\xA4\xC3\x9F\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a b\n\\",
                                std::string(255, 'n')};
    for (const auto& name : rows) {
        std::filesystem::create_directory(at("in " + name.substr(0, 9)));
        const std::string to = "in " + name.substr(0, 9) + "/" + name;
        write_file(name, name);
        EXPECT_TRUE(copy(name, to)) << name;
        EXPECT_EQ(read_file(to), name) << name;
        EXPECT_TRUE(remove_file(path(to))) << name;
        EXPECT_FALSE(std::filesystem::exists(at(to))) << name;
    }
}

TEST_P(basekit2_file_ways_test, a_bare_name_is_in_the_current_directory)
{
    write_file("source", "text");
    const current_directory_scope_t here(at(""));
    const faults_scope_t faults([this](const std::string& call, int) {
        if (call == "link") {
            EXPECT_EQ(names().size(), 2U) << "the temporary name is in another directory";
        }
        return fault_of(GetParam(), call);
    });
    EXPECT_TRUE(copy_file(L"source", L"copy"));
    EXPECT_EQ(names(), (std::set<std::string>{"source", "copy"}));
}

TEST_P(basekit2_file_ways_test, a_destination_that_cannot_be_created_is_a_failure)
{
    write_file("source", "text");
    std::filesystem::create_directory(at("directory"));
    const std::string rows[] = {"missing/copy",       "source/copy",  "copy/",
                                "directory/.",        "directory/..", "directory/",
                                std::string(256, 'n')};
    for (const auto& to : rows) {
        EXPECT_FALSE(copy("source", to)) << to;
        EXPECT_EQ(names(), (std::set<std::string>{"source", "directory"})) << to;
    }
}

TEST_F(basekit2_file_test, a_file_is_copied_if_unnamed_files_fail_with_any_error)
{
    write_file("source", "text");
    for (const int error : {EOPNOTSUPP, EISDIR, EINVAL, ENOENT, EPERM, ENOSYS}) {
        for (const auto* const failing : {"open unnamed", "linkat"}) {
            const std::string to = failing + std::to_string(error);
            const faults_scope_t faults(
                [&](const std::string& call, int) { return call == failing ? error : 0; });
            EXPECT_TRUE(copy("source", to)) << to;
        }
    }
}

TEST_F(basekit2_file_test, a_temporary_name_is_created_only_without_unnamed_files)
{
    write_file("source", "text");
    const int unnamed = open(at("").c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    const int expected = unnamed == -1 ? 1 : 0;
    close(unnamed);
    int created = 0;
    const faults_scope_t faults([&](const std::string& call, int) {
        created += call == "mkostemp" ? 1 : 0;
        return 0;
    });
    EXPECT_TRUE(copy("source", "copy"));
    EXPECT_EQ(created, expected);
}

TEST_F(basekit2_file_test, a_destination_that_appears_meanwhile_stays)
{
    write_file("source", "new");
    for (const way_t& way : {as_the_system_does, without_unnamed_files, without_links}) {
        const std::string to = "copy " + way.name;
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "link" || call == "linkat")
                write_file(to, "old");
            return fault_of(way, call);
        });
        EXPECT_FALSE(copy("source", to)) << way.name;
        EXPECT_EQ(read_file(to), "old") << way.name;
    }
}

TEST_F(basekit2_file_test, a_path_that_is_not_a_regular_file_is_not_copied_and_does_not_block)
{
    make_special_files();
    std::filesystem::create_symlink("fifo", at("link"));
    std::filesystem::create_symlink("loop", at("loop"));
    std::filesystem::create_symlink("/dev/null", at("device"));
    const auto before = names();
    for (const auto* const name : {"directory", "dangling", "fifo", "socket", "link", "loop",
                                   "missing", "fifo/", "device"}) {
        EXPECT_FALSE(copy(name, "copy")) << name;
        EXPECT_EQ(names(), before) << name;
    }
}

TEST_F(basekit2_file_test, a_fifo_with_a_writer_is_not_copied)
{
    make_special_files();
    const int both_ends = open(at("fifo").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(write(both_ends, "text", 4), 4);
    EXPECT_FALSE(copy("fifo", "copy"));
    close(both_ends);
    EXPECT_FALSE(std::filesystem::exists(at("copy")));
}

TEST_F(basekit2_file_test, a_link_to_a_file_is_copied_as_the_file)
{
    write_file("source", "text");
    std::filesystem::create_symlink("source", at("link"));
    EXPECT_TRUE(copy("link", "copy"));
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(at("copy"))));
    EXPECT_EQ(read_file("copy"), "text");
}

TEST_F(basekit2_file_test, a_path_that_names_nothing_makes_every_operation_fail)
{
    write_file("source", "text");
    const std::wstring source = path("source").as_string();
    const std::wstring rows[] = {L""s, L"\0"s, source + L'\0', source + L"\0x"s, L"\0"s + source};
    const current_directory_scope_t here(at(""));
    for (const auto& row : rows) {
        const std::wstring with_suffix = row.empty() ? row : path("copy").as_string() + L'\0' + row;
        EXPECT_FALSE(copy_file(row, path("copy"))) << testing::PrintToString(row);
        EXPECT_FALSE(copy_file(source, row)) << testing::PrintToString(row);
        EXPECT_FALSE(copy_file(source, with_suffix)) << testing::PrintToString(with_suffix);
        EXPECT_FALSE(remove_file(row)) << testing::PrintToString(row);
        EXPECT_EQ(names(), std::set<std::string>{"source"}) << testing::PrintToString(row);
    }
}

TEST_F(basekit2_file_test, a_destination_that_names_nothing_causes_no_system_call)
{
    write_file("source", "text");
    std::vector<std::string> calls;
    const faults_scope_t faults([&](const std::string& call, int) {
        calls.push_back(call);
        return 0;
    });
    EXPECT_FALSE(copy_file(path("source"), path_t()));
    EXPECT_FALSE(copy_file(path("source"), L"copy\0"s));
    EXPECT_EQ(calls, std::vector<std::string>());
}

TEST_F(basekit2_file_test, a_whole_file_is_read)
{
    for (const std::size_t size : {0U, 1U, 65536U, 200000U}) {
        write_file("source", content_of(size));
        std::string bytes = "old";
        EXPECT_TRUE(basekit2::read_file(path("source"), size, bytes)) << size;
        EXPECT_TRUE(bytes == content_of(size)) << size;
    }
}

TEST_F(basekit2_file_test, a_file_is_read_whole_despite_short_and_interrupted_reads)
{
    write_file("source", content_of(1000));
    const short_io_scope_t short_calls(7, 7);
    bool is_interrupted = false;
    const faults_scope_t faults([&](const std::string& call, int) {
        is_interrupted = !is_interrupted;
        return is_interrupted && (call == "open" || call == "pread") ? EINTR : 0;
    });
    std::string bytes;
    EXPECT_TRUE(basekit2::read_file(path("source"), 1000, bytes));
    EXPECT_TRUE(bytes == content_of(1000));
}

TEST_F(basekit2_file_test, a_file_that_cannot_be_read_leaves_the_bytes_as_they_were)
{
    make_special_files();
    write_file("source", content_of(1000));
    const path_t refused[] = {path("directory"),    path("dangling"),
                              path("fifo"),         path("socket"),
                              path("missing"),      path_t(),
                              path_t(L"/dev/zero"), path_t(path("source").as_string() + L'\0')};
    std::string bytes = "old";
    for (const path_t& name : refused)
        EXPECT_FALSE(basekit2::read_file(name, 1000, bytes));
    EXPECT_FALSE(basekit2::read_file(path("source"), 999, bytes));
    EXPECT_FALSE(basekit2::read_file(path("source"), 0, bytes));
    const faults_scope_t faults(
        [](const std::string& call, int) { return call == "pread" ? EIO : 0; });
    EXPECT_FALSE(basekit2::read_file(path("source"), 1000, bytes));
    EXPECT_EQ(bytes, "old");
}

TEST_F(basekit2_file_test, remove_file_removes_a_name_of_any_kind_but_a_directory)
{
    write_file("file", "text");
    make_special_files();
    std::filesystem::create_symlink("file", at("link"));
    std::filesystem::create_symlink("directory", at("directory link"));
    for (const auto* const name : {"link", "directory link", "dangling", "fifo", "socket"}) {
        EXPECT_TRUE(remove_file(path(name))) << name;
    }
    EXPECT_EQ(names(), (std::set<std::string>{"file", "directory"}));
    EXPECT_TRUE(remove_file(path("file")));
    EXPECT_EQ(names(), std::set<std::string>{"directory"});
}

TEST_F(basekit2_file_test, remove_file_changes_nothing_if_it_returns_false)
{
    write_file("file", "text");
    std::filesystem::create_directory(at("directory"));
    std::filesystem::create_symlink("directory", at("link"));
    const auto before = names();
    for (const auto* const name : {"directory", "directory/", "missing", "missing/file", "file/",
                                   "file/below", "link/", "."}) {
        EXPECT_FALSE(remove_file(path(name))) << name;
        EXPECT_EQ(names(), before) << name;
    }
}

} // namespace
