/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/weak_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

class config_file_t;
class config_files_t;

/// Reads configured properties of messages, by message type and prefix.
///
/// The messages of a source are configured in SOURCE.xml, in the configuration directory. A message
/// without a source has the file ".xml".
///
///     <bag>
///       <message_type id="file_large" title_msgid="title.size"/>
///       <message_type id="file_large" prefix="console" title_msgid="title.size.short"/>
///       <message_type id="link_loop"><title_msgid>title.link</title_msgid></message_type>
///     </bag>
///
/// A property is an attribute of the entry. If there is none with its name, it is a child element.
///
/// The process has one reader, which its callers own. It keeps the directory and each file that was
/// read; both are lost with its last owner. So a host that shows messages keeps a reader: without
/// it, each title reads its file again, and a directory from set_cfg_dir() is not used. A file that
/// was read once is not read again by that reader, even if it changes.
///
/// Thread safety: any thread may call get() and read_property() at any time. See set_cfg_dir() for
/// the directory.
class VELMOEXT1_API config_reader_t
{
public:
    /// Returns the reader of the process. Creates one without files and directory if it has no
    /// owner.
    static boost::shared_ptr<config_reader_t> get();

    /// Creates a reader with the same directory. Shares the files that were read so far.
    config_reader_t(const config_reader_t& other);
    config_reader_t& operator=(const config_reader_t& other);
    virtual ~config_reader_t();

    /// Sets the configuration directory, until the reader is destroyed. An empty path means the
    /// result of the host's `IProductLocations::get_config_dir()`; if that is empty or null too,
    /// the current directory. Without an `IProductLocations`, there is no directory.
    ///
    /// Not synchronized: no other thread may use the reader meanwhile, nor copy it while a property
    /// is read.
    void set_cfg_dir(const basekit2::path_t& dir);
    /// Returns the directory that was set, or an empty path. See set_cfg_dir() for threads.
    basekit2::path_t get_cfg_dir() const;

    /// Returns the property of that name, for a message of an extension object. Neither pointer may
    /// be null.
    ///
    /// Uses the first entry whose "id" is the message's type, whose "prefix" is the object's
    /// prefix, and whose property is not empty. If there is none, or the object's prefix is empty,
    /// uses the first entry with that "id" and a property that is not empty. Texts are compared
    /// exactly.
    ///
    /// Returns an empty text if
    /// - there is no such entry, or the type is empty;
    /// - the directory or the file is missing or cannot be read. The next call tries again.
    ///
    /// Throws std::bad_alloc also if libxml2 runs out of memory.
    ///
    /// The source is appended to the directory unchanged: see "Names" in SECURITY.md.
    ///
    /// Calls are serialized in the process. The host's `IProductLocations` and assertion handler,
    /// which are called meanwhile, must not read a property: that call never returns.
    std::wstring read_property(boost::shared_ptr<velmo_ex_t> velmo_ex,
                               boost::shared_ptr<message_t> message, const std::wstring& name);

private:
    VELMOEXT1_LOCAL config_reader_t();

    VELMOEXT1_LOCAL std::wstring find_property(const message_t& message, const std::wstring& name,
                                               const std::wstring& prefix);
    VELMOEXT1_LOCAL const config_file_t* find_file(const message_t& message);

    boost::shared_ptr<config_files_t> m_files; ///< what it points to is guarded by m_lookup_mutex
    basekit2::path_t m_cfg_dir;                ///< not guarded, see set_cfg_dir()

    VELMOEXT1_LOCAL static boost::mutex m_creation_mutex;
    VELMOEXT1_LOCAL static boost::mutex m_lookup_mutex;
    VELMOEXT1_LOCAL static boost::weak_ptr<config_reader_t>
        m_current; ///< guarded by m_creation_mutex
};

} // namespace velmoext_1_4_8
