#include "catalog_languages.h"
#include "commands.h"
#include "diagnostics.h"
#include "html_page.h"
#include "html_report.h"
#include "new_file.h"
#include "presenter.h"
#include "read_logs.h"
#include "window.h"

#include <string>
#include <vector>

namespace velmolog
{
namespace
{

std::string title_of(const std::vector<std::string>& logs)
{
    std::string title;
    for (const std::string& log : logs)
        title.append(title.empty() ? "" : ", ").append(log);
    return title;
}

/// Adds the messages that the options want to a page.
class page_writer_t
{
public:
    page_writer_t(const options_t& options, std::ostream& stream)
        : m_options(options), m_presenter(options.catalogs),
          m_languages(catalog_languages(options.catalogs.locale_directory)),
          m_page(stream, m_languages, title_of(options.logs)),
          m_report(
              m_page, m_languages, [this](const std::string& language) { select(language); },
              [this](const entry_t& entry) { return m_presenter.present(entry); }),
          m_window(options, [this](const entry_t& entry) { m_report.add(entry); })
    {
        m_page.set_first_language(index_of_language(m_languages, m_presenter.first_language()));
    }

    exit_status_t write()
    {
        diagnostics_t diagnostics(true);
        const exit_status_t status =
            read_logs(m_options, m_presenter, diagnostics,
                      [this](candidate_t& candidate) { return add(candidate); });
        m_window.finish();
        m_report.finish();
        return status;
    }

private:
    void select(const std::string& language)
    {
        m_presenter.select_language(language);
        m_is_other_language = true;
    }

    bool add(candidate_t& candidate)
    {
        const bool is_continued = m_window.add(candidate.entry());
        // The filters compare texts in the first language.
        if (m_is_other_language)
            m_presenter.select_language(m_presenter.first_language());
        m_is_other_language = false;
        return is_continued;
    }

    const options_t& m_options;
    presenter_t m_presenter;
    std::vector<std::string> m_languages;
    html_page_t m_page;
    html_report_t m_report;
    window_t<entry_t> m_window;
    bool m_is_other_language = false;
};

} // namespace

exit_status_t html(const options_t& options, std::ostream& /*output*/)
{
    new_file_t file(options.output);
    page_writer_t writer(options, file.stream());
    const exit_status_t status = writer.write();
    file.finish();
    return status;
}

} // namespace velmolog
