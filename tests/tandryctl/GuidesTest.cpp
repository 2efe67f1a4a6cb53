#include "ToolFixture.h"
#include "Transcript.h"

#include <QDir>
#include <QFile>
#include <QProcess>

using namespace tandryctl::test;

namespace {

/// A page whose steps are replayed in one shell, in an empty home that the page calls /home/ada. The program is in its
/// PATH as tandryctl, and the libraries are installed in ~/tandry if TANDRY_PREFIX names them; no stream is a terminal.
class GuideTest : public ToolTest, public testing::WithParamInterface<QString>
{
protected:
    void SetUp() override
    {
        MakeDirectory("bin"_q);
        MakeDirectory("home"_q);
        Link(TANDRYCTL_PROGRAM, "bin/tandryctl"_q);
        if (qEnvironmentVariableIsSet("TANDRY_PREFIX"))
            Link(qgetenv("TANDRY_PREFIX").constData(), "home/tandry"_q);
    }

    /// Runs the commands and returns the lines that each of them printed.
    std::vector<QStringList> Replay(std::vector<TranscriptStep> const& steps)
    {
        QString const mark = "===== next =====\n"_q;
        QString script = "cd\n"_q;
        for (TranscriptStep const& step : steps) {
            QString command = step.command;
            script += command.replace("/home/ada"_q, At("home")) + "\nprintf '%s' '"_q + mark + "'\n"_q;
        }
        QProcess shell;
        shell.setProcessChannelMode(QProcess::MergedChannels);
        shell.setProcessEnvironment(HomeEnvironment(At("home"), {"PATH="_q + At("bin") + ":/usr/bin:/bin"_q}));
        shell.start("/bin/bash"_q, {"--norc"_q});
        shell.write(script.toUtf8());
        shell.closeWriteChannel();
        EXPECT_TRUE(shell.waitForFinished(550'000)) << shell.errorString().toStdString();

        QString text = QString::fromUtf8(shell.readAll());
        text.replace(At("home"), "/home/ada"_q);
        std::vector<QStringList> printed;
        for (QString const& part : text.split(mark)) {
            printed.push_back(part.split(QLatin1Char('\n')));
            printed.back().removeLast(); // behind the last line break
        }
        return printed;
    }
};

std::vector<TranscriptStep> StepsOf(QString const& page)
{
    QFile file(QStringLiteral(TANDRY_SOURCE "/") + page);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << page.toStdString();
    return ReadTranscript(QString::fromUtf8(file.readAll()));
}

/// The pages that show what commands print.
std::vector<QString> Pages()
{
    std::vector<QString> pages;
    for (QString const& folder : {""_q, "docs/"_q, "docs/guides/"_q}) {
        for (QString const& name :
             QDir(QStringLiteral(TANDRY_SOURCE "/") + folder).entryList({"*.md"_q}, QDir::Files)) {
            if (!StepsOf(folder + name).empty())
                pages.push_back(folder + name);
        }
    }
    return pages;
}

std::string NameOfGuide(testing::TestParamInfo<QString> const& guide)
{
    std::string name;
    for (QString const& word :
         guide.param.section(QLatin1Char('/'), -1).section(QLatin1Char('.'), 0, 0).split(QLatin1Char('-')))
        name += (word.left(1).toUpper() + word.mid(1)).toStdString();
    return name;
}

} // namespace

TEST_P(GuideTest, TranscriptIsWhatTheCommandsPrint)
{
    std::vector<TranscriptStep> const steps = StepsOf(GetParam());
    if (GetParam() == "docs/first-client.md"_q && !qEnvironmentVariableIsSet("TANDRY_PREFIX"))
        GTEST_SKIP() << "takes the installed libraries: run by package.first_client_guide";

    std::vector<QStringList> const printed = Replay(steps);
    ASSERT_EQ(printed.size(), steps.size() + 1) << printed.back().join(QLatin1Char('\n')).toStdString();
    for (size_t i = 0; i < steps.size(); ++i)
        EXPECT_TRUE(MatchesTranscript(steps[i].output, printed[i]))
            << "$ " << steps[i].command.toStdString() << "\nprinted:\n"
            << printed[i].join(QLatin1Char('\n')).toStdString();
}

INSTANTIATE_TEST_SUITE_P(Pages, GuideTest, testing::ValuesIn(Pages()), NameOfGuide);

TEST(TranscriptTest, ConsoleBlocksAreReadAsCommandsWithTheirOutput)
{
    auto const steps = ReadTranscript("text\n```console\n$ one\na\n\n$ two \\\n>   more\n```\n$ no command\n"
                                      "```\n$ none either\n```\n```console\n$ three\n```\n"_q);
    ASSERT_EQ(steps.size(), 3U);
    EXPECT_EQ(steps[0].command, "one"_q);
    EXPECT_EQ(steps[0].output, QStringList({"a"_q, ""_q}));
    EXPECT_EQ(steps[1].command, "two \\\n  more"_q);
    EXPECT_TRUE(steps[1].output.isEmpty());
    EXPECT_EQ(steps[2].command, "three"_q);
}

TEST(TranscriptTest, MarkedBlocksAreFilesOrLeftOut)
{
    auto const steps = ReadTranscript("<!-- file: a/b.txt -->\n```cpp\none\n\n$ two\n```\n"
                                      "<!-- not run: it takes a network -->\n```console\n$ three\n```\n"
                                      "```console\n$ four\n```\n"_q);
    ASSERT_EQ(steps.size(), 2U);
    EXPECT_EQ(steps[0].command,
              "mkdir -p $(dirname ~/a/b.txt) && cat >~/a/b.txt <<'END_OF_FILE'\none\n\n$ two\nEND_OF_FILE\n"_q);
    EXPECT_TRUE(steps[0].output.isEmpty());
    EXPECT_EQ(steps[1].command, "four"_q);
}

TEST(TranscriptTest, EllipsisStandsForLinesOrForPartOfALine)
{
    QStringList const printed{"first"_q, "took 3 s."_q, "last"_q};
    EXPECT_TRUE(MatchesTranscript(printed, printed));
    EXPECT_TRUE(MatchesTranscript({"first"_q, "took … s."_q, "last"_q}, printed));
    EXPECT_TRUE(MatchesTranscript({"first"_q, "…"_q}, printed));
    EXPECT_TRUE(MatchesTranscript({"…"_q, "last"_q, "…"_q}, printed));
    EXPECT_TRUE(MatchesTranscript({}, {}));
}

TEST(TranscriptTest, AnyOtherDifferenceIsNoMatch)
{
    QStringList const printed{"first"_q, "took 3 s."_q};
    EXPECT_FALSE(MatchesTranscript({"first"_q}, printed));
    EXPECT_FALSE(MatchesTranscript({"first"_q, "took 3 s."_q, "last"_q}, printed));
    EXPECT_FALSE(MatchesTranscript({"first"_q, "took 3 sx"_q}, printed));
    EXPECT_FALSE(MatchesTranscript({"first…"_q}, printed));
    EXPECT_FALSE(MatchesTranscript({}, printed));
}
