#pragma once

#include "entry.h"

#include <functional>
#include <string>
#include <vector>

namespace velmolog
{

/// Reads the messages of logs, and goes on with those that are appended, each once.
///
/// Follows each path through everything that recorders and the rotation of logs do:
/// - A recorder stops, or is killed, and another one continues. A message that was not complete is
///   not read.
/// - A start rewrites the log. The messages that were read are not read again; if their texts were
///   changed, the new texts are not seen. See message_count_t.
/// - The log is renamed or removed, and there is another file at the path. The earlier file is read
///   to its end first, and then as long as it is recorded.
/// - The log is truncated, or its earlier text is replaced otherwise. It is read from its beginning
///   as a new log.
/// - There is no log yet, or no folder.
///
/// Misses a text that is truncated, and a file that is at the path, for less than a few
/// milliseconds; without inotify, for less than a second.
///
/// Uses inotify, and looks at each log once a second in addition: network file systems report
/// nothing.
class log_follower_t
{
public:
    /// Receives each message, in the order of its log. Returns false to end.
    typedef std::function<bool(const entry_t&)> on_entry_t;

    /// Opens nothing.
    explicit log_follower_t(const std::vector<std::string>& logs);

    /// Calls on_entry for each message that is in the logs and that is appended later. Calls
    /// on_idle, if it is not empty, before it waits for more: then an output can be flushed.
    ///
    /// Returns when on_entry returns false, or after SIGINT or SIGTERM. Before that, hands over all
    /// that it has read.
    void run(const on_entry_t& on_entry, const std::function<void()>& on_idle = {});

    /// Returns whether the last run() read a text that a log cannot have.
    bool has_damage() const { return m_has_damage; }

private:
    std::vector<std::string> m_logs;
    bool m_has_damage = false;
};

} // namespace velmolog
