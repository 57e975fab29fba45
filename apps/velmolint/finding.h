#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velmolint
{

enum class severity_t
{
    error,
    warning
};

/// Position in a file, both counted from 1; zero if unknown.
struct position_t
{
    std::size_t line = 0;
    std::size_t column = 0;
};

struct location_t
{
    std::string file;
    position_t position;
};

struct finding_t
{
    severity_t severity;
    location_t location;
    std::string check; ///< stable name of the check
    std::string message;
};

/// All findings of one run. Keeps a limited number, so that a hostile file cannot use up the
/// memory.
class findings_t
{
public:
    void error(const location_t& location, const std::string& check, const std::string& message);
    void warning(const location_t& location, const std::string& check, const std::string& message);

    bool is_empty() const { return m_findings.empty(); }

    /// Returns the findings sorted by file, position and check.
    std::vector<finding_t> sorted() const;

private:
    void add(finding_t finding);

    std::vector<finding_t> m_findings;
};

} // namespace velmolint
