// Shows progress as a bar. The user interface creates the IProgress object and the handler; the
// operation calls the handler and polls is_canceled().
#include <velmoext1/velmoext1.h>

#include <iostream>

using namespace velmoext1;

class bar_t : public velmo2::IProgress
{
public:
    explicit bar_t(int last_percent) : m_last_percent(last_percent) {}

    void set_percent(int percent) override
    {
        m_percent = percent;
        const auto filled = static_cast<std::size_t>(percent / 10);
        std::wcout << L'[' << std::wstring(filled, L'#') << std::wstring(10 - filled, L' ') << L"] "
                   << percent << L" %\n";
    }
    // Here the operation ends itself; usually a button ends it.
    bool is_canceled() const override { return m_percent >= m_last_percent; }

private:
    int m_last_percent;
    int m_percent = 0;
};

class progress_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                    boost::shared_ptr<progress_message_t> msg) override
    {
        std::wcout << plain_text(*msg->get_message()) << L' ';
        return true;
    }
};

// Progress is not delivered to an extension object: the operation is given the handler.
static void copy_files(base_handler_t& handler, const boost::shared_ptr<velmo2::IProgress>& bar)
{
    const auto progress = boost::make_shared<progress_message_t>();
    progress->set_progress(bar);
    for (int done = 0; done <= 100 && !bar->is_canceled(); done += 25) {
        progress->set_message(message_builder_t(L"copied").arg(L"files", done).build());
        handler.on_message(nullptr, progress);
        progress->get_progress()->set_percent(done);
    }
}

int main()
{
    progress_handler_t handler;
    copy_files(handler, boost::make_shared<bar_t>(101));
    copy_files(handler, boost::make_shared<bar_t>(50));
}
