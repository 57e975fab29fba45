#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// A second reader of configuration files. Creates libxml2's tree of a file and searches all of it
/// at each query.
class config_model_t
{
public:
    /// Returns null if the bytes are not a configuration file.
    static std::unique_ptr<config_model_t> read(const std::string& bytes);

    /// Returns the property of messages of that type for an object with that prefix.
    std::wstring property(const std::wstring& name, const std::wstring& type,
                          const std::wstring& prefix) const;

    /// Returns whether the file may be refused: an element has too many attributes, or libxml2 has
    /// not read all bytes.
    bool may_be_refused() const { return m_may_be_refused; }

    /// Returns the names to query: all in the file, and the title's.
    std::set<std::wstring> names() const;
    /// Returns the values of that name to query: all in the file, an empty one and another one.
    std::set<std::wstring> values(const std::wstring& name) const;

private:
    struct element_t
    {
        std::wstring name;
        std::map<std::wstring, std::wstring> attributes;
        std::wstring text;
        std::vector<element_t> children;
    };

    struct builder_t;

    static std::wstring value(const element_t& element, const std::wstring& name);
    std::wstring search(const std::wstring& name, const std::wstring& type,
                        const std::wstring& prefix) const;

    element_t m_root;
    bool m_may_be_refused = false;
};
