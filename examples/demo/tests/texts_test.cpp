#include "log_support.h"

#include <gtest/gtest.h>

#include <string>

namespace audit
{
namespace
{

class texts_test : public log_test_t
{
protected:
    static lines_t read(const lines_t& arguments, const launch_t& launch = in({{"LC_ALL", "C"}}))
    {
        const result_t result = run_audit(arguments, launch);
        EXPECT_EQ(result.exit_code, 0);
        EXPECT_EQ(result.err, "");
        return lines_of(result.out);
    }

    lines_t walk_in(const std::string& language, const std::string& severity = "info") const
    {
        return read({"--lang", language, "--severity", severity, m_tree.path()});
    }

    static launch_t in(const std::map<std::string, std::string>& language)
    {
        launch_t launch;
        launch.is_plain = false;
        launch.language = language;
        return launch;
    }

    /// Returns the text of the first warning about b, in English or in German.
    std::string english() const
    {
        return "warning: Symbolic link: " + m_tree.path("b") +
               " leads to nowhere, which is not there.";
    }
    std::string german() const
    {
        return "Warnung: Symbolischer Link: " + m_tree.path("b") +
               " f\xc3\xbchrt zu nowhere, das es nicht gibt.";
    }

    std::string first_warning(const std::map<std::string, std::string>& language) const
    {
        return read({m_tree.path()}, in(language)).front();
    }
};

TEST_F(texts_test, the_environment_chooses_the_language)
{
    make_findings();
    EXPECT_EQ(first_warning({{"LC_ALL", "de_AT.UTF-8"}, {"LANG", "en"}}), german());
    EXPECT_EQ(first_warning({{"LC_MESSAGES", "de"}, {"LANG", "en"}}), german());
    EXPECT_EQ(first_warning({{"LANG", "de_DE"}}), german());
    EXPECT_EQ(first_warning({{"LANG", "en_GB.UTF-8"}}), english());
}

TEST_F(texts_test, english_is_shown_if_the_requested_language_has_no_texts)
{
    make_findings();
    for (const char* const locale : {"C", "C.UTF-8", "POSIX", "tlh_AA", "../../de", "."})
        EXPECT_EQ(first_warning({{"LANG", locale}}), english()) << locale;
    EXPECT_EQ(first_warning({}), english());
}

TEST_F(texts_test, the_language_option_precedes_the_environment)
{
    make_findings();
    EXPECT_EQ(read({"--lang=de", m_tree.path()}, in({{"LC_ALL", "en"}})).front(), german());
    EXPECT_EQ(read({"--lang", "en", m_tree.path()}, in({{"LC_ALL", "de"}})).front(), english());
}

TEST_F(texts_test, a_language_without_texts_cannot_be_chosen)
{
    for (const std::string language : {"tlh", "", "../de", "C"}) {
        const result_t result =
            run_audit({"--lang", language, m_tree.path()}, in({{"LC_ALL", "C"}}));
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err,
                  "audit: there are no texts for --lang '" + language + "'; see audit --help\n");
    }
}

TEST_F(texts_test, each_message_of_a_walk_has_a_text_in_each_language)
{
    make_findings();
    m_tree.make_link("loop", "loop");
    m_tree.make_file("name\n");
    m_tree.make_directory("closed");
    m_tree.set_mode("closed", 0);
    m_tree.make_file("secret");
    m_tree.set_mode("secret", 0);
    for (const char* const language : {"en", "de"}) {
        launch_t launch = in({{"LC_ALL", language}});
        launch.is_privileged = false;
        const lines_t texts = read({"--severity", "info", "--large", "1", m_tree.path()}, launch);
        launch.is_plain = true;
        const lines_t messages =
            read({"--severity", "info", "--large", "1", m_tree.path()}, launch);
        ASSERT_EQ(texts.size(), messages.size());
        for (std::size_t i = 0; i != texts.size(); ++i) {
            EXPECT_NE(texts[i], messages[i]);
            EXPECT_EQ(texts[i].find('{'), std::string::npos) << texts[i];
        }
    }
}

TEST_F(texts_test, system_errors_are_shown_in_the_user_s_language)
{
    m_tree.make_directory("closed");
    m_tree.set_mode("closed", 0);
    launch_t launch = in({{"LC_ALL", "de"}});
    launch.is_privileged = false;
    EXPECT_EQ(read({m_tree.path()}, launch).front(),
              "Fehler: Zugriffsrechte: Das Verzeichnis " + m_tree.path("closed") +
                  " kann nicht gelesen werden: Zugriff verweigert.");
}

TEST_F(texts_test, without_texts_a_language_does_not_matter)
{
    make_findings();
    EXPECT_EQ(run_audit({"--lang", "tlh", m_tree.path()}).out, run_audit({m_tree.path()}).out);
}

TEST_F(texts_test, the_summary_counts_in_the_reader_s_language)
{
    m_tree.make_file("a", 1234);
    EXPECT_EQ(walk_in("en").back(),
              "info: Tree " + m_tree.path() + ": Nothing was found below " + m_tree.path() +
                  " in 1 file of 1,234 bytes, 1 directory, 0 links and 0 other entries.");
    EXPECT_EQ(walk_in("de").back(), "Hinweis: Baum " + m_tree.path() + ": Kein Befund unter " +
                                        m_tree.path() +
                                        " in 1 Datei mit 1.234 Bytes, 1 Verzeichnis, 0 Links und "
                                        "0 weiteren Eintr\xc3\xa4gen.");
}

TEST_F(texts_test, a_log_is_shown_in_the_chosen_language)
{
    make_findings();
    EXPECT_EQ(read({"--lang", "en", "--log", m_log, m_tree.path()}), walk_in("en", "warning"));
    EXPECT_EQ(read({"--lang", "de", "--replay", m_log}), walk_in("de", "warning"));
    EXPECT_EQ(read({"--lang", "en", "--replay", m_log}), walk_in("en", "warning"));
}

TEST_F(texts_test, a_message_of_another_source_is_shown_as_it_is)
{
    write_log("<log><msg tool=\"other\"><arg name=\"disk\">sda</arg><type>disk_lost</type>"
              "<severity>ERROR</severity></msg></log>");
    EXPECT_EQ(read({"--replay", m_log}), lines_t{"error disk_lost other disk=sda"});
}

} // namespace
} // namespace audit
