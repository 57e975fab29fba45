#include "worker.h"

#include "checked_message.h"
#include "handlers.h"

#include <velmoext1/velmoext1.h>

#include <basekit2/file.h>
#include <basekit2/variant_bag.h>

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace soak
{

using namespace velmoext_1_4_8;

namespace
{

/// Receives messages that a component sends to the host, and passes them to another object, as a
/// host does.
class host_messenger_t : public velmo2::IMessenger
{
public:
    explicit host_messenger_t(boost::shared_ptr<velmo_ex_t> target) : m_target(std::move(target)) {}

    void say(velmo2::ESeverity /*severity*/, const wchar_t* text) override
    {
        say_to(m_target, text);
    }

private:
    const boost::shared_ptr<velmo_ex_t> m_target;
};

class progress_stub_t : public velmo2::IProgress
{
public:
    void set_percent(int /*percent*/) override {}
    bool is_canceled() const override { return false; }
};

bool has_title(const message_t& message)
{
    return message.get_type() != L"soak_third";
}

} // namespace

void worker_t::work()
{
    static void (worker_t::*const operations[])() = {&worker_t::say_checked_message,
                                                     &worker_t::say_checked_message,
                                                     &worker_t::say_checked_message,
                                                     &worker_t::say_odd_text,
                                                     &worker_t::push,
                                                     &worker_t::pop,
                                                     &worker_t::release_object,
                                                     &worker_t::say_through_the_host,
                                                     &worker_t::use_new_ex,
                                                     &worker_t::record,
                                                     &worker_t::record,
                                                     &worker_t::start_or_stop,
                                                     &worker_t::replay,
                                                     &worker_t::damage_log,
                                                     &worker_t::read_property,
                                                     &worker_t::compose_text,
                                                     &worker_t::copy_values,
                                                     &worker_t::report_progress,
                                                     &worker_t::copy_and_remove_file,
                                                     &worker_t::pop,
                                                     &worker_t::say_and_check,
                                                     &worker_t::say_and_check,
                                                     &worker_t::record_and_replay_own_log,
                                                     &worker_t::compose_text_from_files};
    (this->*operations[pick(std::size(operations))])();
}

boost::shared_ptr<velmo_ex_t> worker_t::main_ex()
{
    return m_world.ex(pick(world_t::main_exs));
}

boost::shared_ptr<velmo_ex_t> worker_t::target_ex()
{
    return m_world.ex(world_t::main_exs + pick(world_t::target_exs));
}

boost::shared_ptr<messages_storage_t> worker_t::storage()
{
    return m_world.storage(pick(world_t::logs));
}

void worker_t::check_delivered(const std::vector<std::wstring>& sent, const char* what)
{
    m_world.check(text_recording_handler_t::take_texts() == sent, what);
}

boost::shared_ptr<message_t> worker_t::message()
{
    return make_checked_message(m_random, world_t::source_name(pick(world_t::sources)));
}

void worker_t::say_checked_message()
{
    const auto sent = message();
    const std::wstring text = string_message_serializer_t::message_to_xml_string(sent);
    const auto read = string_message_serializer_t::xml_string_to_message(text);
    m_world.check(read && sent->equal_to(read) && is_intact(*read),
                  "a message is preserved in its text");
    say_to(main_ex(), text);
}

void worker_t::say_and_check()
{
    const auto ex = m_world.checked_ex();
    const std::wstring text = string_message_serializer_t::message_to_xml_string(message());
    ex->push_handler(boost::make_shared<checking_handler_t>(m_world, false));
    say_to(ex, text);
    check_delivered({text}, "a message is delivered once");
    m_world.check(static_cast<bool>(ex->pop_handler()), "a pushed handler can be popped");
}

void worker_t::say_odd_text()
{
    say_to(main_ex(), odd_text(m_random));
}

void worker_t::say_through_the_host()
{
    host_messenger_t messenger(m_world.checked_ex());
    velmo_adapter_t adapter;
    adapter.set_output_velmo(&messenger);
    const auto sent = message();
    const std::wstring text = string_message_serializer_t::message_to_xml_string(sent);
    adapter.send_to_velmo(sent);
    check_delivered({text}, "the host passes a message on once");
    m_world.check(adapter.encode_to_velmo(sent) == text,
                  "an adapter encodes the text that it sends");
}

boost::shared_ptr<base_handler_t> worker_t::make_handler()
{
    switch (pick(5)) {
    case 0:
        return boost::make_shared<flagging_handler_t>();
    case 1:
        return boost::make_shared<forwarding_handler_t>(target_ex());
    case 2:
        return storage();
    default:
        return boost::make_shared<checking_handler_t>(m_world, pick(4) == 0);
    }
}

void worker_t::push()
{
    if (pick(3) == 0)
        target_ex()->push_handler(boost::make_shared<checking_handler_t>(m_world, false));
    else
        main_ex()->push_handler(make_handler());
}

void worker_t::pop()
{
    (pick(3) == 0 ? target_ex() : main_ex())->pop_handler();
}

void worker_t::release_object()
{
    if (pick(2) == 0)
        m_world.release_ex(pick(world_t::main_exs + world_t::target_exs));
    else
        m_world.release_storage(pick(world_t::logs));
}

void worker_t::use_new_ex()
{
    const std::wstring id = velmo_ex_t::generate_id(L"soak.generated.");
    const auto ex = velmo_ex_t::get(id, world_t::prefix());
    m_world.check(ex && ex->get_prefix() == world_t::prefix(), "a generated id is free");
    ex->push_handler(boost::make_shared<text_recording_handler_t>());
    ex->push_handler(boost::make_shared<checking_handler_t>(m_world, false));
    const std::wstring text = string_message_serializer_t::message_to_xml_string(message());
    say_to(ex, text);
    check_delivered({text}, "a new object delivers a message once");
}

void worker_t::record()
{
    const auto kept = storage();
    m_world.check(!kept->on_message(main_ex(), message()), "a storage consumes nothing");
}

void worker_t::start_or_stop()
{
    if (pick(2) == 0)
        storage()->start_recording();
    else
        m_world.check(storage()->stop_recording(), "a recording can be stopped");
}

void worker_t::replay()
{
    const auto kept = storage();
    if (pick(4) == 0)
        kept->stop_reading();
    else if (kept->start_reading())
        kept->replay(target_ex());
}

// No other worker uses this log. A former worker may have left one.
void worker_t::record_and_replay_own_log()
{
    if (m_recorded.empty() || m_recorded.size() > 20) {
        basekit2::remove_file(m_own_log);
        m_recorded.clear();
    }
    record_in_own_log();
    const auto kept = messages_storage_t::get(m_own_log);
    m_world.check(kept->start_reading() && kept->replay(m_world.checked_ex()),
                  "a log can be replayed");
    check_delivered(m_recorded, "a replay delivers what was recorded");
    m_world.check(!kept->replay(m_world.checked_ex()), "a log is replayed once");
}

void worker_t::record_in_own_log()
{
    const auto kept = messages_storage_t::get(m_own_log);
    m_world.check(kept->start_recording(), "a log can be recorded");
    for (std::size_t i = pick(5); i != 0; --i) {
        const auto sent = message();
        kept->on_message(m_world.checked_ex(), sent);
        if (sent->get_flags() != 0)
            m_recorded.push_back(string_message_serializer_t::message_to_xml_string(sent));
    }
}

// Damages or removes a log without the library's knowledge.
void worker_t::damage_log()
{
    const std::string log = m_world.log_name(pick(world_t::logs));
    std::error_code error;
    const auto size = std::filesystem::file_size(log, error);
    if (error || size == 0)
        return;
    if (size > 300000 || pick(20) == 0)
        std::filesystem::remove(log, error);
    else if (pick(10) == 0)
        std::filesystem::resize_file(log, pick(size), error);
}

void worker_t::read_property()
{
    const auto asked = message();
    const std::wstring name = config_reader_t::get()->read_property(main_ex(), asked, L"name");
    const std::wstring type = asked->get_type();
    m_world.check(name == (type == L"soak_third" ? L"" : type.substr(5)), "a property is found");
}

void worker_t::compose_text()
{
    const auto original = message();
    const std::wstring sum = original->get_content().args.at(L"sum");
    check_composed({main_ex(), original}, (has_title(*original) ? L"title " : L" ") + sum,
                   original->get_type() + L' ' + sum);
}

void worker_t::compose_text_from_files()
{
    static const std::pair<const wchar_t*, const wchar_t*> counts[] = {
        {L"0", L"0 files of "}, {L"1", L"1 file of "}, {L"1234", L"1,234 files of "}};
    const auto& [count, text] = counts[pick(std::size(counts))];
    const auto original = make_checked_message(m_random, world_t::source_name_with_files());
    message_t::message_content_t content = original->get_content();
    content.args[L"count"] = count;
    original->set_content(content);
    const std::wstring sum = content.args.at(L"sum");
    check_composed({main_ex(), original}, has_title(*original) ? L"title " + sum : L"", text + sum);
}

void worker_t::check_composed(extended_message_t extended, const std::wstring& title,
                              const std::wstring& text)
{
    m_world.check(extended.get_text() == text, "a text is composed");
    m_world.check(extended.get_title() == title, "a title is composed");
    extended_message_t copy(extended);
    m_world.check(copy.get_message() == extended.get_message() && copy.get_title() == title &&
                      copy.get_text() == text,
                  "a copy reads the same");
}

void worker_t::copy_values()
{
    const auto original = message();
    message_t copy(*original);
    copy.set_type(L"another");
    copy = *original;
    m_world.check(is_intact(copy) && copy.get_flags() == original->get_flags() &&
                      copy.get_source() == original->get_source() && !copy.empty(),
                  "a copy is the same");
    const std::wstring text = odd_text(m_random);
    const std::string utf8 = ROVA_2_18::strings::utf16_to_utf8(text);
    m_world.check(ROVA_2_18::strings::utf16_to_utf8(ROVA_2_18::strings::utf8_to_utf16(utf8)) ==
                      utf8,
                  "UTF-8 is preserved by a conversion to wide text");
}

void worker_t::report_progress()
{
    const auto progress = boost::make_shared<progress_message_t>();
    progress->set_message(message());
    progress->set_progress(boost::make_shared<progress_stub_t>());
    progress->set_cancelable(false);
    checking_handler_t handler(m_world, false);
    m_world.check(!static_cast<base_handler_t&>(handler).on_message(main_ex(), progress),
                  "progress is not consumed");
    const progress_message_t copy(*progress);
    m_world.check(!copy.is_cancelable(), "a copy has the same settings");
}

void worker_t::copy_and_remove_file()
{
    const basekit2::path_t file(m_world.file_name("source0.xml"));
    const basekit2::path_t copy(m_world.file_name("copy" + std::to_string(m_random()) + ".xml"));
    m_world.check(basekit2::copy_file(file, copy), "a file can be copied");
    basekit2::variant_bag_t bag;
    basekit2::load_variant_bag2(bag, copy.as_string(), L"bag", false);
    m_world.check(!bag.begin_bags().at_end(), "a copy has the contents of the file");
    m_world.check(basekit2::remove_file(copy), "a file can be removed");
}

} // namespace soak
