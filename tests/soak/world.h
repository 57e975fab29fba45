#pragma once

#include "../catalog_support.h"
#include "../scratch_folder.h"

#include <velmoext1/config_reader.h>
#include <velmoext1/messages_storage.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace soak
{

/// An object that all threads share: any of them may use, replace or release it.
template <typename Object>
class slot_t
{
public:
    boost::shared_ptr<Object> get() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_object;
    }
    void set(boost::shared_ptr<Object> object)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_object.swap(object);
    }

private:
    mutable std::mutex m_mutex;
    boost::shared_ptr<Object> m_object; ///< guarded by m_mutex
};

/// The objects of the threads. Main objects have handlers and storages. Target objects receive
/// replays, so they have no storage of their own.
class world_t
{
public:
    static constexpr std::size_t main_exs = 40;
    static constexpr std::size_t target_exs = 10;
    static constexpr std::size_t logs = 10;
    static constexpr std::size_t sources = 4;

    world_t();

    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> ex(std::size_t number);
    void release_ex(std::size_t number) { m_exs.at(number).set(nullptr); }
    /// Returns the object whose lowest handler records texts. Any thread may push others above
    /// it and pop as many.
    boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> checked_ex() const { return m_checked_ex; }
    boost::shared_ptr<velmoext_1_4_8::messages_storage_t> storage(std::size_t number);
    void release_storage(std::size_t number) { m_storages.at(number).set(nullptr); }

    std::string log_name(std::size_t number) const;
    static std::wstring source_name(std::size_t number);
    static std::wstring source_name_with_files() { return L"filed"; }
    static std::wstring prefix() { return L"soak"; }

    /// Returns the name of a file in the common folder.
    std::wstring file_name(const std::string& leaf) const { return m_folder.wide_name(leaf); }

    /// Releases all objects, forgets the catalogs that were read, and removes the logs.
    void clear();

    void check(bool condition, const char* what);
    std::uint64_t failures() const { return m_failures; }
    void count_message() { ++m_messages; }
    std::uint64_t messages() const { return m_messages; }

private:
    void configure(const std::wstring& source) const;

    scratch_folder_t m_folder;
    catalogs_t m_catalogs;
    boost::shared_ptr<velmoext_1_4_8::config_reader_t> m_reader;
    const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> m_checked_ex;
    std::array<slot_t<velmoext_1_4_8::velmo_ex_t>, main_exs + target_exs> m_exs;
    std::array<slot_t<velmoext_1_4_8::messages_storage_t>, logs> m_storages;
    std::atomic<std::uint64_t> m_failures{0};
    std::atomic<std::uint64_t> m_messages{0};
};

} // namespace soak
