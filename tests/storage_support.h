#pragma once

#include "scratch_folder.h"
#include "support.h"

#include <velmoext1/messages_storage.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace velmoext_1_4_8
{

typedef boost::shared_ptr<messages_storage_t> storage_ptr_t;

/// An empty log in the written form: the declaration and the root.
inline const std::string empty_log = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log/>\n";

/// Returns a log with these elements, and the element of a message, in the written form.
inline std::string log_of(const std::string& messages)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n" + messages + "</log>\n";
}

inline std::string message_of(const std::string& type)
{
    return " <msg>\n  <type>" + type + "</type>\n  <severity>INFO</severity>\n </msg>\n";
}

/// Returns a log that a start has to rewrite, because the library would write it in another form.
inline std::string foreign_log(const std::vector<std::string>& types)
{
    std::string log = "<log>";
    for (const std::string& type : types)
        log += "<msg><type>" + type + "</type></msg>";
    return log + "</log>";
}

inline message_ptr_t make_flagged(const std::wstring& type, int flags = 1)
{
    const message_ptr_t message = make_message(type, message_t::info);
    message->set_flags(flags);
    return message;
}

/// A scratch folder with a log in it.
class storage_test_t : public testing::Test
{
protected:
    storage_ptr_t get(const std::string& leaf = "log.xml") const
    {
        return messages_storage_t::get(basekit2::path_t(m_folder.wide_name(leaf)));
    }

    static void record(const storage_ptr_t& storage, const std::wstring& type, int flags = 1)
    {
        EXPECT_FALSE(
            storage->on_message(boost::shared_ptr<velmo_ex_t>(), make_flagged(type, flags)));
    }

    /// Records the types, one letter each, in one recording.
    void record_all(const std::wstring& types, const std::string& leaf = "log.xml") const
    {
        const storage_ptr_t storage = get(leaf);
        ASSERT_TRUE(storage->start_recording());
        for (const wchar_t type : types)
            record(storage, std::wstring(1, type));
        ASSERT_TRUE(storage->stop_recording());
    }

    /// Returns the descriptors of this process that are open on the log.
    std::vector<int> descriptors_of_log() const
    {
        std::vector<int> descriptors;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            if (std::filesystem::read_symlink(entry.path(), ignored) == m_folder.name("log.xml"))
                descriptors.push_back(std::stoi(entry.path().filename()));
        }
        return descriptors;
    }

    /// Returns the types of the messages that a replay delivers, each followed by a semicolon.
    static std::wstring replay(const storage_ptr_t& storage)
    {
        const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_test."), L"");
        const auto handler = boost::make_shared<recording_handler_t>();
        ex->push_handler(handler);
        storage->start_reading();
        storage->replay(ex);
        storage->stop_reading();
        std::wstring types;
        for (const message_ptr_t& message : handler->messages())
            types += message->get_type() + L";";
        return types;
    }

    /// Returns the types of all messages in a log.
    std::wstring types_in(const std::string& leaf = "log.xml") const
    {
        m_folder.write("copy to read", m_folder.read(leaf));
        return replay(get("copy to read"));
    }

    scratch_folder_t m_folder;
};

} // namespace velmoext_1_4_8
