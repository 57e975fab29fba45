#include "commands.h"
#include "diagnostics.h"
#include "edit_script.h"
#include "entry_format.h"
#include "entry_json.h"
#include "message_key.h"
#include "read_logs.h"
#include "window.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmolog
{
namespace
{

typedef velmoext_1_4_8::log_reader_t::position_t position_t;

/// Numbers for messages: the same one for equal messages.
class message_numbers_t
{
public:
    std::uint32_t number_of(const velmoext_1_4_8::message_t& message)
    {
        const auto [entry, is_new] =
            m_numbers.emplace(key_of(message), static_cast<std::uint32_t>(m_keys.size()));
        if (is_new)
            m_keys.push_back(&entry->first);
        return entry->second;
    }

    boost::shared_ptr<velmoext_1_4_8::message_t> message(std::uint32_t number) const
    {
        return message_of(*m_keys[number]);
    }

private:
    std::unordered_map<std::string, std::uint32_t> m_numbers;
    std::vector<const std::string*> m_keys;
};

/// The messages of a log, by their numbers.
struct side_t
{
    std::string log;
    std::vector<std::uint32_t> numbers;
    std::vector<position_t> positions;
};

/// Writes the messages that one side has only.
class difference_writer_t
{
public:
    difference_writer_t(const options_t& options, const presenter_t& presenter,
                        const message_numbers_t& numbers, std::ostream& output)
        : m_is_json(options.format == format_t::json), m_has_colors(can_show_colors()),
          m_numbers(numbers), m_presenter(presenter),
          m_window(options, [&output](const std::string& text) { output << text; })
    {}

    /// Returns whether more are wanted.
    bool add(const side_t& side, std::size_t index, bool is_left)
    {
        const entry_t entry = {side.log, side.positions[index],
                               m_numbers.message(side.numbers[index]), "", ""};
        candidate_t candidate(entry, m_presenter);
        if (!m_is_json)
            return m_window.add((is_left ? "- " : "+ ") + line_of(candidate, m_has_colors) + "\n");
        json_t object = {{"side", is_left ? "A" : "B"}};
        object.update(json_of(candidate));
        return m_window.add(text_of(object) + "\n");
    }

    void finish() { m_window.finish(); }

private:
    bool m_is_json;
    bool m_has_colors;
    const message_numbers_t& m_numbers;
    const presenter_t& m_presenter;
    window_t<std::string> m_window;
};

/// Writes what is removed before what is added at the same position.
void write(difference_writer_t& writer, const edit_script_t& script,
           const std::array<side_t, 2>& sides)
{
    const std::size_t left_size = script.is_removed.size();
    const std::size_t right_size = script.is_added.size();
    std::size_t left = 0;
    std::size_t right = 0;
    bool is_continued = true;
    while (is_continued && (left != left_size || right != right_size)) {
        if (left != left_size && script.is_removed[left])
            is_continued = writer.add(sides[0], left++, true);
        else if (right != right_size && script.is_added[right])
            is_continued = writer.add(sides[1], right++, false);
        else {
            ++left;
            ++right;
        }
    }
    writer.finish();
}

bool has_difference(const edit_script_t& script)
{
    const auto has_mark = [](const std::vector<bool>& marks) {
        return std::find(marks.begin(), marks.end(), true) != marks.end();
    };
    return has_mark(script.is_removed) || has_mark(script.is_added);
}

} // namespace

exit_status_t diff(const options_t& options, std::ostream& output)
{
    diagnostics_t diagnostics(true);
    const presenter_t presenter(options.catalogs);
    message_numbers_t numbers;
    std::array<side_t, 2> sides;
    exit_status_t status = fine;
    for (std::size_t i = 0; i != sides.size(); ++i) {
        side_t& side = sides.at(i);
        options_t one_log = options;
        one_log.logs = {options.logs.at(i)};
        side.log = options.logs.at(i);
        const auto add = [&numbers, &side](candidate_t& candidate) {
            side.numbers.push_back(numbers.number_of(*candidate.entry().message));
            side.positions.push_back(candidate.entry().begin);
            return true;
        };
        status = std::max(status, read_logs(one_log, presenter, diagnostics, add));
    }
    if (status == cannot_run)
        return status;
    const edit_script_t script = compare(sides[0].numbers, sides[1].numbers);
    if (!script.is_in_order)
        diagnostics.report("the logs differ too much: a message that is in both, but at another "
                           "position, does not count as a difference");
    difference_writer_t writer(options, presenter, numbers, output);
    write(writer, script, sides);
    return std::max(status, has_difference(script) ? found : fine);
}

} // namespace velmolog
