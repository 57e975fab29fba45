/// @file
#pragma once

#include <basekit2/export.h>

#include <string>

namespace basekit2
{

/// The path of a file or directory: a wide text in UTF-16 code units, which is not normalized. It
/// is passed to the system in UTF-8, in every locale. The separator is `/`.
///
/// A path may be empty or have a zero character, but every operation on files fails with it.
/// Operations throw std::bad_alloc only.
///
/// Thread safety: not synchronized. Any number of threads may read a path if none modifies it.
class BASEKIT2_API path_t
{
public:
    /// Creates an empty path.
    path_t() = default;
    /// Null is an empty path. Not explicit: a text converts to a path.
    path_t(const wchar_t* text); // NOLINT(google-explicit-constructor)
    /// Not explicit: a text converts to a path.
    path_t(const std::wstring& text); // NOLINT(google-explicit-constructor)

    path_t& assign(const path_t& other);

    /// Appends a path, even an absolute one, with exactly one separator between both. If one side
    /// is empty, the result is the other one, unchanged.
    path_t& append(const path_t& right);

    /// Returns the text before the last component, without trailing separators: empty for `x`, `/`
    /// for `/x`. The last component of `a/b/` is empty, so its branch is `a/b`.
    std::wstring get_branch() const;
    /// Returns the last component: the text after the last separator.
    std::wstring get_leaf() const;
    /// Returns the text. Both forms are the same if `/` is the system's separator.
    std::wstring as_string(bool generic = false) const;

    bool is_empty() const { return m_text.empty(); }

    /// Returns whether something exists at the path. Follows links, so a dangling link does not
    /// exist. Returns false also for a path that is empty or has a zero character, and if a
    /// permission is missing.
    static bool exists(const std::wstring& text);

    /// Compares the texts, not the files.
    friend bool operator==(const path_t& left, const path_t& right)
    {
        return left.m_text == right.m_text;
    }

    /// Compares the code units of the texts.
    friend bool operator<(const path_t& left, const path_t& right)
    {
        return left.m_text < right.m_text;
    }

private:
    std::wstring m_text;
};

} // namespace basekit2
