#pragma once

#include "random_source.h"
#include "recording_processes.h"

#include <array>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmoext_1_4_8
{

/// A log, its copies, and a model of the messages that must be in them. The model has types of
/// messages, not the form of a log.
class storage_model_test_t : public storage_test_t
{
protected:
    /// Two names of the log and two links to it.
    const std::array<std::string, 4> spellings = {"log.xml", "./log.xml", "link.xml",
                                                  "other/link.xml"};
    const std::array<std::string, 3> copies = {"log.xml.tmp", "link.xml.tmp", "other/link.xml.tmp"};

    // The files that a start through a spelling finds. Messages of the copy replace those of the
    // log.
    struct start_t
    {
        std::string spelling;
        std::string copy_name;
        bytes_t log;
        bytes_t copy;
        types_t old;
        bool can_succeed;
        bool must_succeed;
    };

    void make_empty_folder()
    {
        m_kept.clear();
        const std::filesystem::path folder = m_folder.name("");
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            std::filesystem::remove_all(entry);
        std::filesystem::create_directory(folder / "other");
        std::filesystem::create_symlink("log.xml", folder / "link.xml");
        std::filesystem::create_symlink("../log.xml", folder / "other/link.xml");
        m_log.clear();
        m_archive.reset();
        m_copies.clear();
        m_interrupted.clear();
        m_history.clear();
    }

    void expect_model() const
    {
        EXPECT_EQ(text_of(types_in_file("log.xml")), text_of(m_log));
        std::map<std::string, types_t> found;
        for (const std::string& copy : copies)
            if (m_folder.has(copy))
                found[copy] = types_in_file(copy);
        EXPECT_EQ(found, m_copies);
    }

    void add_to_history(const std::string& what) { m_history += what + "\n"; }

    bytes_t bytes_of(const std::string& leaf) const
    {
        return m_folder.has(leaf) ? bytes_t(m_folder.read(leaf)) : bytes_t();
    }

    types_t types_in_file(const std::string& leaf) const { return types_of(bytes_of(leaf)); }

    void rename(const std::string& from, const std::string& to) const
    {
        std::filesystem::rename(m_folder.name(from), m_folder.name(to));
    }

    types_t new_types()
    {
        types_t types(m_random.one_in(4) ? m_random.below(40) : m_random.below(6));
        for (std::string& type : types)
            type = std::to_string(m_number++);
        return types;
    }

    start_t pick_start()
    {
        start_t start = {m_random.pick(spellings), "", bytes_of("log.xml"), {}, m_log, true, true};
        start.copy_name = (start.spelling == "./log.xml" ? "log.xml" : start.spelling) + ".tmp";
        start.copy = bytes_of(start.copy_name);
        if (!start.copy)
            return start;
        start.old = m_copies[start.copy_name];
        const auto interrupted = m_interrupted.find(start.copy_name);
        const bool is_interrupted =
            interrupted != m_interrupted.end() && interrupted->second == start.log;
        start.must_succeed =
            start.log.value_or("").empty() || start.log == start.copy || is_interrupted;
        start.can_succeed = start.must_succeed || begins_with(start.old, m_log);
        return start;
    }

    void expect_refused(const start_t& start) const
    {
        EXPECT_FALSE(start.must_succeed);
        EXPECT_EQ(bytes_of("log.xml"), start.log);
        EXPECT_EQ(bytes_of(start.copy_name), start.copy);
    }

    // The first messages must be there; others can be missing from the end on. If a killed start
    // left a copy, the copy has all old messages and the log only the first ones.
    void expect_recorded(const start_t& start, const types_t& types, std::size_t certain)
    {
        const bytes_t log = bytes_of("log.xml");
        const bytes_t copy = bytes_of(start.copy_name);
        const types_t found = types_of(copy ? copy : log);
        const types_t all = join(start.old, types);
        EXPECT_TRUE(start.can_succeed || (log == start.log && copy == start.copy));
        EXPECT_TRUE(begins_with(all, found) && found.size() >= start.old.size() + certain)
            << certain << " of\n"
            << text_of(all) << "\nfound\n"
            << text_of(found);
        m_log = types_of(log);
        m_copies.erase(start.copy_name);
        if (!copy)
            return;
        EXPECT_TRUE(begins_with(found, m_log) || log == start.log);
        m_copies[start.copy_name] = found;
        if (start.must_succeed)
            m_interrupted[start.copy_name] = log;
    }

    random_source_t m_random{0};
    std::size_t m_number = 0; ///< the next message's type
    types_t m_log;
    std::optional<types_t> m_archive;
    std::map<std::string, types_t> m_copies;
    std::map<std::string, bytes_t> m_interrupted; ///< by copy, the log that a killed start left
    std::vector<storage_ptr_t> m_kept;
    shared_number_t m_certain; ///< how many messages a process recorded before a stop
    std::string m_history;
};

} // namespace velmoext_1_4_8
