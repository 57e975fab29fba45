#pragma once

#include "process_support.h"
#include "storage_support.h"
#include "system_faults.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmoext_1_4_8
{

/// Types of messages, oldest first. No two messages of a test have the same type.
typedef std::vector<std::string> types_t;
/// Contents of a file, if it exists.
typedef std::optional<std::string> bytes_t;

/// Returns the types of the complete messages in a log.
inline types_t types_of(const bytes_t& log)
{
    const std::string end_of_message = "</msg>";
    types_t types;
    std::size_t begin = 0;
    std::size_t end = 0;
    while (log && (end = log->find(end_of_message, begin)) != std::string::npos) {
        const std::size_t type = log->find("<type>", begin) + 6;
        types.push_back(log->substr(type, log->find("</type>", type) - type));
        begin = end + end_of_message.size();
    }
    return types;
}

inline types_t join(types_t types, const types_t& more)
{
    types.insert(types.end(), more.begin(), more.end());
    return types;
}

inline bool begins_with(const types_t& types, const types_t& beginning)
{
    return beginning.size() <= types.size() &&
           std::equal(beginning.begin(), beginning.end(), types.begin());
}

inline std::string text_of(const types_t& types)
{
    std::string text;
    for (const std::string& type : types)
        text += type + ";";
    return text;
}

const std::size_t foreign_form_count = 4;

/// Returns a log that the library would write in another form.
inline std::string foreign_log(const types_t& types, std::size_t form)
{
    const std::string space = form == 1 ? "\n\t" : "";
    std::string log = form == 2 ? "<?xml version='1.0' encoding='ISO-8859-1'?>\n<log>" : "<log>";
    for (const std::string& type : types)
        log += space + "<msg>" + space + "<type>" + type + "</type>" + space + "</msg>";
    return log + (form == 3 ? "<msg><typ" : "</log>");
}

/// Records messages. Some are long, so that the storage writes before it is stopped.
inline void record_types(const storage_ptr_t& storage, const types_t& types)
{
    for (const std::string& type : types) {
        const std::size_t number = std::stoul(type);
        const std::size_t size = number % 3 == 0 ? number * 7919 % 1700 : 2;
        const message_ptr_t message =
            make_message(make_content({}, {{L"text", std::wstring(size, L'x')}}));
        message->set_type(std::wstring(type.begin(), type.end()));
        message->set_flags(1);
        storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
    }
}

/// Kills this process before the file system call with this number, counted from 0. If `has_links`
/// is false, hard links fail until then.
class kill_scope_t
{
public:
    static constexpr int never = -1;

    explicit kill_scope_t(int call, bool has_links = true)
        : m_faults([call, has_links](const std::string& name, int) mutable {
              if (call-- == 0)
                  raise(SIGKILL);
              return !has_links && name.compare(0, 4, "link") == 0 ? EPERM : 0;
          })
    {}

private:
    faults_scope_t m_faults;
};

/// A number that a process shares with its children.
class shared_number_t
{
public:
    shared_number_t()
        : m_number(new (mmap(nullptr, sizeof(number_t), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0)) number_t(0))
    {}
    shared_number_t(const shared_number_t&) = delete;
    shared_number_t& operator=(const shared_number_t&) = delete;
    ~shared_number_t() { munmap(m_number, sizeof(number_t)); }

    void set(std::size_t value) { *m_number = value; }
    std::size_t get() const { return *m_number; }

private:
    typedef std::atomic<std::size_t> number_t;

    number_t* m_number;
};

/// Blocks a process until all other processes that have the gate opened it or ended.
class gate_t
{
public:
    gate_t() { EXPECT_EQ(pipe(m_ends.data()), 0); }
    gate_t(const gate_t&) = delete;
    gate_t& operator=(const gate_t&) = delete;
    ~gate_t()
    {
        open();
        close(m_ends[0]);
    }

    void open()
    {
        if (m_ends[1] != -1)
            close(std::exchange(m_ends[1], -1));
    }

    void wait()
    {
        open();
        char byte = 0;
        while (read(m_ends[0], &byte, 1) > 0) {
        }
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

/// Exit code of a process that could not start its first recording.
const int refused_exit_code = 1;

/// The recordings of one process.
struct recorder_t
{
    types_t first;
    types_t second; ///< in a recording of its own
    bool is_stopped = false;
    bool has_links = true;
    int last_call = kill_scope_t::never;
    std::size_t max_written = SIZE_MAX;

    types_t all() const { return join(first, second); }

    int run(const storage_ptr_t& storage, shared_number_t& certain_count) const
    {
        const short_io_scope_t short_writes(SIZE_MAX, max_written);
        const kill_scope_t kill(last_call, has_links);
        if (!storage->start_recording())
            return refused_exit_code;
        record_types(storage, first);
        storage->stop_recording();
        certain_count.set(first.size());
        if (!storage->start_recording())
            return 2;
        record_types(storage, second);
        if (is_stopped && storage->stop_recording())
            certain_count.set(all().size());
        return 0;
    }
};

/// The events that a child that outlives its parent waits for.
struct daemon_gates_t
{
    gate_t end_of_parent;
    gate_t has_tried; ///< opened by the child
    gate_t end_of_others;
};

/// The recordings of a process that forks, and of the child that outlives it.
struct daemon_t
{
    types_t before_fork;
    types_t after_fork;
    types_t of_child;       ///< while the parent lives
    types_t of_child_alone; ///< after the parent's end, but perhaps while others record
    types_t of_child_after_others;
    bool forks_twice = false;
    bool is_stopped = false;
    int last_call = kill_scope_t::never; ///< after the fork

    types_t of_parent() const { return join(before_fork, after_fork); }
    types_t of_children() const
    {
        return join(of_child, join(of_child_alone, of_child_after_others));
    }

    int run(storage_ptr_t storage, daemon_gates_t& gates) const
    {
        if (!storage->start_recording())
            return refused_exit_code;
        record_types(storage, before_fork);
        gate_t has_recorded;
        if (fork() == 0)
            run_child(storage, has_recorded, gates);
        has_recorded.wait();
        const kill_scope_t kill(last_call);
        record_types(storage, after_fork);
        if (is_stopped)
            storage->stop_recording();
        return 0;
    }

private:
    [[noreturn]] void run_child(storage_ptr_t& storage, gate_t& has_recorded,
                                daemon_gates_t& gates) const
    {
        if (forks_twice && fork() != 0)
            _exit(0);
        record_types(storage, of_child);
        has_recorded.open();
        gates.end_of_parent.wait();
        record_types(storage, of_child_alone);
        gates.has_tried.open();
        gates.end_of_others.wait();
        record_types(storage, of_child_after_others);
        storage.reset();
        _exit(0);
    }
};

} // namespace velmoext_1_4_8
