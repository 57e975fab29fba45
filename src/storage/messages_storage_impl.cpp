#include "storage/messages_storage_impl.h"

#include "encoding/element_composer.h"
#include "encoding/element_names.h"
#include "encoding/message_element.h"
#include "xml/error_scope.h"
#include "xml/library.h"

#include <basekit2/file.h>
#include <rova/strings.h>

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

using ROVA_2_18::strings::utf16_to_utf8;

// The flags of a message that is worth recording.
const int recorded_flags = 3;

std::string utf8_name(const basekit2::path_t& path)
{
    return utf16_to_utf8(path.as_string(false));
}

// libxml2 prints the failure of a write, so it hears of none; the descriptor remembers it.
int write_to_file(void* file, const char* bytes, int count)
{
    static_cast<file_descriptor_t*>(file)->write(bytes, static_cast<std::size_t>(count));
    return count;
}

// The writer knows the descriptor's owner, never its number: that can belong to another file once
// this one is closed.
xml_writer_t create_writer(file_descriptor_t& file)
{
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(write_to_file, nullptr, &file, nullptr);
    xml_writer_t writer(buffer ? xmlNewTextWriter(buffer) : nullptr);
    if (buffer && !writer)
        xmlOutputBufferClose(buffer);
    return writer;
}

// The path without links: whichever of them a log is recorded through, its copy has one place.
basekit2::path_t resolve(const basekit2::path_t& path)
{
    std::error_code error;
    const std::string resolved = std::filesystem::canonical(utf8_name(path), error).string();
    const basekit2::path_t wide(ROVA_2_18::strings::utf8_to_utf16(resolved));
    const bool is_text = utf8_name(wide) == resolved;
    return error || !is_text ? path : wide;
}

void remove_own(const basekit2::path_t& copy, bool is_own_copy)
{
    if (is_own_copy)
        basekit2::remove_file(copy);
}

} // namespace

messages_storage_impl_t::messages_storage_impl_t(const basekit2::path_t& path)
    : m_path(path), m_replay_reader(utf8_name(path))
{}

messages_storage_impl_t::~messages_storage_impl_t()
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
    if (msg && m_writer && (msg->get_flags() & recorded_flags) != 0) {
        prefetch_message(*msg);
        initialize_xml_library();
        const xml_error_scope_t errors;
        write(std::move(msg));
    }
    return false;
}

bool messages_storage_impl_t::start_recording()
{
    if (m_writer)
        return true;
    try {
        return begin_recording();
    } catch (...) {
        abandon_log();
        throw;
    }
}

bool messages_storage_impl_t::stop_recording()
{
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
    if (m_writer || m_read_file.get() == -1)
        return false;
    m_replay_reader.set_callback(
        [&ex](const boost::shared_ptr<message_t>& msg) { ex->dispatch_message(msg); });
    return m_replay_reader.parse();
}

void messages_storage_impl_t::stop_reading()
{
    m_read_file.close();
}

messages_storage_impl_t::copy_t messages_storage_impl_t::look_at_copy(const basekit2::path_t& copy)
{
    struct stat status = {};
    if (lstat(utf8_name(copy).c_str(), &status) != 0)
        return copy_t::missing;
    const bool is_usable = S_ISREG(status.st_mode) && status.st_uid == geteuid();
    return is_usable ? copy_t::left_behind : copy_t::unusable;
}

bool messages_storage_impl_t::begin_recording()
{
    const basekit2::path_t copy = temporary_path();
    // Asked before the log is opened, which could make one, and again when nobody else can record.
    if (look_at_copy(copy) == copy_t::unusable || !m_write_file.open(false, m_path))
        return false;
    const copy_t found = look_at_copy(copy);
    const basekit2::path_t& old_log = found == copy_t::left_behind ? copy : m_path;
    if (log_file_reader::find_refusal(utf8_name(old_log)) != refusal_t::none) {
        m_write_file.close();
        return false;
    }
    const bool is_own_copy = found == copy_t::missing && basekit2::copy_file(m_path, copy);
    if (!may_begin(copy, found, is_own_copy)) {
        m_write_file.close();
        return false;
    }
    if (!m_write_file.truncate() || !begin_log()) {
        remove_own(copy, is_own_copy);
        m_write_file.close();
        return false;
    }
    return (found == copy_t::missing && !is_own_copy) || carry_over(copy, is_own_copy);
}

// The log may be emptied if a copy is in the copy's place, not the log itself under another name,
// nor anything that appeared there just now.
bool messages_storage_impl_t::may_begin(const basekit2::path_t& copy, copy_t found,
                                        bool is_own_copy) const
{
    return found != copy_t::unusable && !m_write_file.is_named(copy) &&
           (found == copy_t::left_behind || is_own_copy || look_at_copy(copy) == copy_t::missing);
}

basekit2::path_t messages_storage_impl_t::temporary_path() const
{
    const basekit2::path_t log = resolve(m_path);
    basekit2::path_t path(log.get_branch());
    path.append(basekit2::path_t(log.get_leaf() + L".tmp"));
    return path;
}

// Where the element cannot be begun the writer stays: the storage then counts as recording, and
// what is recorded goes nowhere, until it is stopped.
bool messages_storage_impl_t::begin_log()
{
    initialize_xml_library();
    const xml_error_scope_t errors;
    m_has_messages = false;
    m_writer = create_writer(m_write_file);
    if (!m_writer)
        return false;
    xmlTextWriterSetIndent(m_writer.get(), 1);
    xmlTextWriterStartDocument(m_writer.get(), nullptr, "UTF-8", nullptr);
    return xmlTextWriterStartElement(m_writer.get(), to_xml(element_names::log)) >= 0 &&
           !errors.has_run_out_of_memory();
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

bool messages_storage_impl_t::carry_over(const basekit2::path_t& copy, bool is_own_copy)
{
    file_descriptor_t readable;
    if (!readable.open(true, copy)) {
        remove_own(copy, is_own_copy);
        m_write_file.close();
        return false;
    }
    if (!write_messages_of(copy, readable.size())) {
        abandon_log();
        return false;
    }
    readable.close();
    // A copy that stays would be taken for the whole log by the next start.
    if (!basekit2::remove_file(copy)) {
        abandon_log();
        return false;
    }
    return true;
}

// Only what has left the writer's buffer survives the end of the process, and only then may the
// copy go.
bool messages_storage_impl_t::write_messages_of(const basekit2::path_t& copy, std::int64_t size)
{
    bool is_written = true;
    initialize_xml_library();
    const xml_error_scope_t errors;
    log_file_reader reader(utf8_name(copy));
    reader.set_callback([&](boost::shared_ptr<message_t> msg) {
        is_written = write(std::move(msg)) && is_written;
    });
    reader.set_lines_callback([&](std::string_view lines) {
        is_written = begin_line() && write_raw(lines, m_writer.get()) && is_written;
    });
    reader.parse();
    is_written = xmlTextWriterFlush(m_writer.get()) >= 0 && is_written;
    return is_written && reader.position() == size && reader.refusal() == refusal_t::none &&
           !errors.has_run_out_of_memory() && !m_write_file.has_failed();
}

// The file is closed first, so that nothing of the writer's buffer reaches it.
void messages_storage_impl_t::abandon_log()
{
    m_write_file.close();
    m_writer.reset();
}

} // namespace velmoext_1_4_8
