/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/weak_ptr.hpp>

#include <map>
#include <string>

namespace velmoext_1_4_8
{

class config_file_t;

/// Finds what is configured for messages: named properties by message type and extension prefix.
///
/// The configuration of the messages of one source is the XML file SOURCE.xml of the configuration
/// directory:
///
///     <bag>
///       <message_type id="file_large" title_msgid="title.size"/>
///       <message_type id="file_large" prefix="console" title_msgid="title.size.short"/>
///       <message_type id="link_loop"><title_msgid>title.link</title_msgid></message_type>
///     </bag>
///
/// A property is an attribute of the entry or, where it has none of that name, a child element.
///
/// The process has one reader, as long as somebody holds it; its files and its directory go with
/// it. So a host holds one while it shows messages: else each title would read its file anew. A
/// file that was read once is not read again by that reader, whatever becomes of the file.
class VELMOEXT1_API config_reader_t
{
public:
    /// The process's reader, a new one where nobody holds one: no file is read yet and no directory
    /// is set. Any thread may call at any time.
    static boost::shared_ptr<config_reader_t> get();

    /// The copy shares the files that were read so far.
    config_reader_t(const config_reader_t& other);
    config_reader_t& operator=(const config_reader_t& other);
    virtual ~config_reader_t();

    /// Takes the files of this directory from now on; an empty path stands for the directory that
    /// the host's `setbook2::IProductLocations` names. It stays set as long as this reader lives.
    /// Nobody may set it while another thread uses the reader, or copy the reader while another
    /// thread reads a property.
    void set_cfg_dir(const basekit2::path_t& dir);
    /// What was set; empty where nothing was. See set_cfg_dir() for threads.
    basekit2::path_t get_cfg_dir() const;

    /// The property of that name for a message that is sent through an extension object: of the
    /// first entry in the file's order that has the message's type for its "id", the object's
    /// prefix for its "prefix" and a value for the property; where none has, or the object's prefix
    /// is empty, of the first with the message's type and a value, whatever its prefix. All are
    /// compared exactly. Neither object may be null.
    ///
    /// Empty where nothing is configured: no such entry, an empty type, no directory, no file, or
    /// none that can be read as XML. A file that could not be read is tried again at the next call.
    /// The source is joined to the directory as it is spelled: where sources come from strangers it
    /// is the host's business that "../x" leads nowhere it should not, and that not every spelling
    /// of one file ("./x", "././x") is read and kept again.
    ///
    /// Any thread may call at any time; one reads at a time in the process, whatever the reader.
    /// What is called meanwhile, the host's locations and its assertion handler, must not read
    /// another property: that call would never return.
    std::wstring read_property(boost::shared_ptr<velmo_ex_t> velmo_ex,
                               boost::shared_ptr<message_t> message, const std::wstring& name);

private:
    typedef std::map<std::wstring, boost::shared_ptr<const config_file_t>> files_t;

    VELMOEXT1_LOCAL config_reader_t();

    VELMOEXT1_LOCAL const config_file_t* find_file(const std::wstring& source);
    VELMOEXT1_LOCAL const config_file_t* find_file(const basekit2::path_t& dir,
                                                   const std::wstring& source);
    VELMOEXT1_LOCAL boost::shared_ptr<const config_file_t> get_file(const std::wstring& path);

    files_t m_files;             ///< by their paths; guarded by m_lookup_mutex
    basekit2::path_t m_cfg_dir;  ///< not guarded, see set_cfg_dir()
    basekit2::path_t m_host_dir; ///< as the host told last; guarded by m_lookup_mutex
    files_t m_last_files;        ///< of the directory in use, by sources; guarded by m_lookup_mutex

    VELMOEXT1_LOCAL static boost::mutex m_creation_mutex;
    VELMOEXT1_LOCAL static boost::mutex m_lookup_mutex;
    VELMOEXT1_LOCAL static boost::weak_ptr<config_reader_t>
        m_current; ///< guarded by m_creation_mutex
};

} // namespace velmoext_1_4_8
