#include "storage/messages_storage_impl.h"

#include "encoding/element_composer.h"
#include "encoding/element_names.h"
#include "encoding/message_element.h"
#include "xml/error_scope.h"
#include "xml/library.h"

#include <basekit2/file.h>

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

using std::chrono::steady_clock;

// The flags of a message that is worth recording.
const int recorded_flags = 3;

constexpr std::chrono::seconds max_stop_delay(1);
constexpr std::chrono::milliseconds retry_pause(1);
// The pause between two tries of a child to begin, as a multiple of the time of a try: one that
// fails late has read the whole log.
const int pause_factor = 9;
constexpr std::chrono::seconds max_pause(1);

// A child whose parent records for long must not fill the memory.
const std::size_t max_pending = 16777216;

/// Names the thread that replays while in scope.
class replay_scope_t
{
public:
    explicit replay_scope_t(std::atomic<std::thread::id>& thread) : m_thread(thread)
    {
        thread = std::this_thread::get_id();
    }
    replay_scope_t(const replay_scope_t&) = delete;
    replay_scope_t& operator=(const replay_scope_t&) = delete;
    ~replay_scope_t() { m_thread = std::thread::id(); }

private:
    std::atomic<std::thread::id>& m_thread;
};

// libxml2 prints a failed write, so none is reported to it: the descriptor remembers the failure.
int write_to_output(void* output, const char* bytes, int count)
{
    static_cast<log_output_t*>(output)->write(bytes, static_cast<std::size_t>(count));
    return count;
}

// The writer never knows the descriptor's number: that can belong to another file once this one is
// closed.
xml_writer_t create_writer(log_output_t& output)
{
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(write_to_output, nullptr, &output, nullptr);
    xml_writer_t writer(buffer ? xmlNewTextWriter(buffer) : nullptr);
    if (buffer && !writer)
        xmlOutputBufferClose(buffer);
    return writer;
}

} // namespace

messages_storage_impl_t::messages_storage_impl_t(const basekit2::path_t& path)
    : m_path(path), m_output(m_write_file), m_replay_reader(native_name(path))
{}

void messages_storage_impl_t::end() noexcept
{
    try {
        stop_recording();
    } catch (const std::bad_alloc&) {
        abandon_log();
    }
}

bool messages_storage_impl_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                         boost::shared_ptr<message_t> msg)
{
    if (!msg || (msg->get_flags() & recorded_flags) == 0)
        return false;
    if (m_writer) {
        prefetch_message(*msg);
        initialize_xml_library();
        const xml_error_scope_t errors;
        write(std::move(msg));
    } else if (m_is_buffering) {
        add_pending(*msg);
        try_to_write_pending_at_intervals();
    }
    return false;
}

bool messages_storage_impl_t::start_recording()
{
    return m_writer || m_is_buffering || start();
}

bool messages_storage_impl_t::stop_recording()
{
    if (m_is_buffering) {
        wait_to_write_pending(steady_clock::now() + max_stop_delay);
        m_is_buffering = false;
        m_pending.clear();
    }
    if (!m_writer)
        return true;
    initialize_xml_library();
    const xml_error_scope_t errors;
    xmlTextWriterEndElement(m_writer.get());
    xmlTextWriterEndDocument(m_writer.get());
    m_writer.reset();
    m_write_file.close();
    return true;
}

bool messages_storage_impl_t::start_reading()
{
    return m_read_file.open(true, m_path);
}

bool messages_storage_impl_t::replay(boost::shared_ptr<velmo_ex_t> ex)
{
    if (m_writer || m_is_buffering || m_read_file.get() == -1)
        return false;
    m_replay_reader.set_callback(
        [&ex](const boost::shared_ptr<message_t>& msg) { ex->dispatch_message(msg); });
    const replay_scope_t scope(m_replaying_thread);
    return m_replay_reader.parse();
}

void messages_storage_impl_t::stop_reading()
{
    m_read_file.close();
}

bool messages_storage_impl_t::start()
{
    try {
        // A child that goes to the background changes its directory.
        if (!m_is_buffering)
            m_directory = directory_t::current();
        m_log_path = m_directory.resolve(m_path);
        return begin_recording();
    } catch (...) {
        abandon_log();
        throw;
    }
}

bool messages_storage_impl_t::begin_recording()
{
    log_copy_t copy(m_log_path);
    // Checked before the log is opened, which can create it, and again under the log's lock.
    if (copy.state() == log_copy_t::state_t::foreign || !m_write_file.open(false, m_log_path))
        return false;
    const log_copy_t::state_t state = copy.state();
    if (state == log_copy_t::state_t::foreign || m_write_file.is_named(copy.path())) {
        m_write_file.close();
        return false;
    }
    const bool is_new = state == log_copy_t::state_t::missing && m_write_file.size() == 0;
    if (!begin_log())
        return false;
    if (state == log_copy_t::state_t::left && !copy.open()) {
        m_write_file.close();
        return false;
    }
    const bool is_on = is_new || carry_over(copy);
    m_write_file.keep();
    return is_on;
}

// If the element cannot be begun the writer stays: the storage then counts as recording, and
// messages are dropped, until it is stopped.
bool messages_storage_impl_t::begin_log()
{
    initialize_xml_library();
    const xml_error_scope_t errors;
    m_has_messages = false;
    m_writer.reset();
    m_output.end_comparison();
    m_writer = create_writer(m_output);
    bool has_begun = false;
    if (m_writer) {
        xmlTextWriterSetIndent(m_writer.get(), 1);
        xmlTextWriterStartDocument(m_writer.get(), nullptr, "UTF-8", nullptr);
        has_begun = xmlTextWriterStartElement(m_writer.get(), to_xml(element_names::log)) >= 0 &&
                    !errors.has_run_out_of_memory();
    }
    if (!has_begun)
        m_write_file.close();
    return has_begun;
}

// A raw write ends the start tag of the log, without the line break.
bool messages_storage_impl_t::begin_line()
{
    const bool has_begun = m_has_messages || write_raw("\n", m_writer.get());
    m_has_messages = true;
    return has_begun;
}

bool messages_storage_impl_t::write(boost::shared_ptr<message_t> msg)
{
    const bool has_begun = begin_line();
    return write_message_element(std::move(msg), m_writer.get()) && has_begun;
}

// As a rule the old messages, written again, give the bytes that are in the log. Then they stay,
// and only the text after them is removed.
bool messages_storage_impl_t::carry_over(log_copy_t& copy)
{
    const bool is_copy_left = copy.is_open();
    if (!m_output.begin_comparison(m_log_path) ||
        !write_messages_of(is_copy_left ? copy.file() : m_output.log()))
        return abandon_log();
    if (is_copy_left)
        return is_superseded_by(copy) ? rewrite_log(copy) : abandon_log();
    if (!m_output.is_in_log())
        return make_copy(copy) && rewrite_log(copy);
    return m_output.continue_in_log() || abandon_log();
}

// A copy that was left is the old log if nothing was recorded without it: then the log is empty,
// the same, or the beginning of what is written from the copy.
bool messages_storage_impl_t::is_superseded_by(const log_copy_t& copy) const
{
    return m_output.has_whole_log() || have_same_bytes(copy.file(), m_output.log());
}

// If the copy cannot be opened the writer stays, as in begin_log().
bool messages_storage_impl_t::make_copy(log_copy_t& copy)
{
    if (!copy.make())
        return abandon_log();
    if (!copy.open()) {
        m_output.end_comparison();
        m_write_file.close();
        return false;
    }
    // Another file can have taken the log's name while the log was read.
    return have_same_bytes(copy.file(), m_output.log()) || abandon_log();
}

// The first to change the old log, when all else that can fail is done.
bool messages_storage_impl_t::rewrite_log(log_copy_t& copy)
{
    if (!begin_log())
        return false;
    if (!m_write_file.truncate(0))
        return abandon_log();
    copy.keep();
    // A copy that stays would be taken for the old log by the next start.
    return (write_messages_of(copy.file()) && copy.remove()) || abandon_log();
}

// Only what has left the writer's buffer survives the end of the process, and only then may the
// copy go.
bool messages_storage_impl_t::write_messages_of(const file_descriptor_t& old_log)
{
    bool is_written = true;
    initialize_xml_library();
    const xml_error_scope_t errors;
    log_file_reader reader(native_name(m_log_path));
    // After the first difference of a comparison, the rest is only checked for limits and errors.
    reader.set_callback([&](boost::shared_ptr<message_t> msg) {
        if (m_output.is_in_log())
            is_written = write(std::move(msg)) && is_written;
    });
    reader.set_lines_callback([&](std::string_view lines) {
        if (m_output.is_in_log())
            is_written = begin_line() && write_raw(lines, m_writer.get()) && is_written;
    });
    reader.parse(old_log);
    is_written = xmlTextWriterFlush(m_writer.get()) >= 0 && is_written;
    return is_written && reader.position() == old_log.size() &&
           reader.refusal() == refusal_t::none && !errors.has_run_out_of_memory() &&
           !m_write_file.has_failed();
}

// Returns false, for the caller to return. The file is closed first, so that nothing of the
// writer's buffer reaches it.
bool messages_storage_impl_t::abandon_log()
{
    m_write_file.close();
    m_writer.reset();
    m_output.end_comparison();
    return false;
}

void messages_storage_impl_t::before_fork(steady_clock::time_point end)
{
    if (m_is_buffering)
        wait_to_write_pending(end);
    if (!m_writer)
        return;
    initialize_xml_library();
    const xml_error_scope_t errors;
    xmlTextWriterFlush(m_writer.get());
}

// The child's descriptor would keep the lock after the parent's end. The writer's buffer is empty.
void messages_storage_impl_t::after_fork_in_child()
{
    // Without a lock the end of the parent's recording cannot be detected.
    m_is_buffering = m_is_buffering || (m_write_file.get() != -1 && m_write_file.is_locked());
    m_write_file.close_in_child();
    m_writer.reset();
    m_pending.clear(); // the parent's own
    m_next_try = steady_clock::time_point();
}

void messages_storage_impl_t::close_in_child()
{
    m_write_file.close_in_child();
    m_output.close_in_child();
}

void messages_storage_impl_t::add_pending(const message_t& msg)
{
    text_buffer_t<char> element;
    append_message_element(msg, 1, element);
    if (element.size() <= max_pending - m_pending.size())
        m_pending.append(element.data(), element.size());
}

// Begins to record as any start does; that fails as long as the parent records. A storage that
// cannot begin stays as it was.
bool messages_storage_impl_t::try_to_write_pending()
{
    if (!start())
        return abandon_log();
    m_is_buffering = false;
    initialize_xml_library();
    const xml_error_scope_t errors;
    if (!m_pending.empty()) {
        begin_line();
        write_raw(m_pending, m_writer.get());
    }
    m_pending.clear();
    return true;
}

void messages_storage_impl_t::try_to_write_pending_at_intervals()
{
    const steady_clock::time_point begin = steady_clock::now();
    if (begin < m_next_try)
        return;
    try {
        try_to_write_pending();
    } catch (const std::bad_alloc&) {
        // The message is buffered, as after any try that fails.
    }
    const steady_clock::time_point end = steady_clock::now();
    m_next_try = end + std::min<steady_clock::duration>(pause_factor * (end - begin), max_pause);
}

// A parent that forks to go to the background may end only after its child has recorded and
// stopped.
void messages_storage_impl_t::wait_to_write_pending(steady_clock::time_point end)
{
    while (!m_pending.empty() && !try_to_write_pending() && steady_clock::now() < end)
        std::this_thread::sleep_for(retry_pause);
}

} // namespace velmoext_1_4_8
