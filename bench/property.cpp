// Reads a property of one message type among many. Every type has an entry for the requested
// prefix. The types are requested in another order than that of the entries.

#include "runner.h"
#include "scratch_folder.h"

#include <velmoext1/config_reader.h>

#include <rova/strings.h>

#include <boost/thread/mutex.hpp>

#include <map>
#include <memory>

namespace
{

using bench::message_ptr_t;
using bench::workload_t;
using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::config_reader_t;
using velmoext_1_4_8::velmo_ex_t;

const std::wstring property = L"title_msgid";

std::string type(std::size_t entry)
{
    return "report_of_type_" + std::to_string(entry);
}

std::string title(std::size_t entry)
{
    return "title_" + std::to_string(entry);
}

// The step and the number of entries are coprime, so that each entry is used.
std::vector<message_ptr_t> make_messages(std::size_t entries)
{
    std::vector<message_ptr_t> messages;
    for (std::size_t i = 0; i < entries; ++i)
        messages.push_back(bench::make_message(
            {type(i * 7919 % entries), "INFO", {{"tool", bench::tool}}, {}, {}}));
    return messages;
}

// Looks titles up under a lock like the library, but in a finished table.
class bare_reader_t
{
public:
    explicit bare_reader_t(std::size_t entries)
    {
        for (std::size_t entry = 0; entry < entries; ++entry)
            m_titles.emplace(utf8_to_utf16(type(entry)), utf8_to_utf16(title(entry)));
    }

    std::wstring read(const std::wstring& type)
    {
        const boost::mutex::scoped_lock lock(m_mutex);
        const auto found = m_titles.find(type);
        return found == m_titles.end() ? std::wstring() : found->second;
    }

private:
    boost::mutex m_mutex;
    std::map<std::wstring, std::wstring> m_titles;
};

bench::candidate_t floor(std::size_t entries)
{
    return {"floor", [entries](std::size_t) -> bench::work_t {
                const auto reader = std::make_shared<bare_reader_t>(entries);
                std::vector<std::wstring> types;
                for (const message_ptr_t& message : make_messages(entries))
                    types.push_back(message->get_type());
                return [reader, types](std::size_t count) {
                    std::size_t size = 0;
                    for (std::size_t i = 0; i < count; ++i)
                        size += reader->read(types[i % types.size()]).size();
                    return size;
                };
            }};
}

void write_configuration(const scratch_folder_t& folder, std::size_t entries)
{
    std::string text = "<bag>\n";
    for (std::size_t entry = 0; entry < entries; ++entry)
        text += "  <message_type id='" + type(entry) + "' prefix='console' title_msgid='" +
                title(entry) + "'/>\n";
    folder.write(bench::tool + std::string(".xml"), text + "</bag>\n");
}

bench::candidate_t velmoext1(std::size_t entries)
{
    return {
        "velmoext1", [entries](std::size_t) -> bench::work_t {
            const scratch_folder_t folder;
            write_configuration(folder, entries);
            // Uses a separate reader: the process's would keep the file of the previous round.
            const auto reader = std::make_shared<config_reader_t>(*config_reader_t::get());
            reader->set_cfg_dir(folder.wide_name(""));
            const auto ex = velmo_ex_t::get(L"bench", L"console");
            const auto messages = make_messages(entries);
            reader->read_property(ex, messages.front(), property);
            return [reader, ex, messages](std::size_t count) {
                std::size_t size = 0;
                for (std::size_t i = 0; i < count; ++i)
                    size +=
                        reader->read_property(ex, messages[i % messages.size()], property).size();
                return size;
            };
        }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& /*workload*/)
{
    const auto min_output = [](std::size_t count) {
        return count * title(0).size();
    };
    std::vector<bench::subject_t> subjects;
    for (const std::size_t entries : {10U, 100U, 1000U})
        subjects.push_back({"property_" + std::to_string(entries),
                            {floor(entries), velmoext1(entries)},
                            min_output,
                            10});
    return subjects;
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}
