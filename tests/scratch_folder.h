#pragma once

#include <rova/strings.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

/// A folder of one test. The destructor removes it with its contents.
class scratch_folder_t
{
public:
    scratch_folder_t()
    {
        std::string name = (std::filesystem::temp_directory_path() / "velmoext1.XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::system_error(errno, std::generic_category(), name);
        m_path = name;
    }
    ~scratch_folder_t()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    scratch_folder_t(const scratch_folder_t&) = delete;
    scratch_folder_t& operator=(const scratch_folder_t&) = delete;

    std::string name(const std::string& leaf) const { return m_path + "/" + leaf; }
    std::wstring wide_name(const std::string& leaf) const
    {
        return ROVA_2_18::strings::utf8_to_utf16(name(leaf));
    }

    bool has(const std::string& leaf) const
    {
        return std::filesystem::exists(std::filesystem::symlink_status(name(leaf)));
    }

    std::string read(const std::string& leaf) const
    {
        std::ifstream file(name(leaf), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    void write(const std::string& leaf, const std::string& bytes) const
    {
        std::ofstream(name(leaf), std::ios::binary) << bytes;
    }

private:
    std::string m_path;
};
