#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// A second reader of configuration files, which makes libxml2's tree of one and looks through all
/// of it at each question.
class config_model_t
{
public:
    /// Null where the file is none.
    static std::unique_ptr<config_model_t> read(const std::string& bytes);

    /// What is configured for messages of that type through an object of that prefix.
    std::wstring property(const std::wstring& name, const std::wstring& type,
                          const std::wstring& prefix) const;

    /// Whether it need not be taken: it is too large, or libxml2 has not read all of it.
    bool may_be_refused() const { return m_may_be_refused; }

    /// All that it is worth asking for.
    std::set<std::wstring> names() const;
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
