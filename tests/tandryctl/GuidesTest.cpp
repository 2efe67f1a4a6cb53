#include "ToolFixture.h"
#include "Transcript.h"

#include <QDir>
#include <QFile>
#include <QProcess>

using namespace tandryctl::test;

namespace {

/// A guide whose transcript is replayed in one shell, in an empty home that the guide calls /home/ada. The program is
/// in its PATH as tandryctl; no stream is a terminal.
class GuideTest : public ToolTest, public testing::WithParamInterface<QString>
{
protected:
    void SetUp() override
    {
        MakeDirectory("bin"_q);
        MakeDirectory("home"_q);
        Link(TANDRYCTL_PROGRAM, "bin/tandryctl"_q);
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
        EXPECT_TRUE(shell.waitForFinished(110'000)) << shell.errorString().toStdString();

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

std::vector<QString> Guides()
{
    std::vector<QString> names;
    for (QString const& name : QDir(QStringLiteral(TANDRY_GUIDES)).entryList({"*.md"_q}, QDir::Files))
        names.push_back(name);
    return names;
}

std::string NameOfGuide(testing::TestParamInfo<QString> const& guide)
{
    std::string name;
    for (QString const& word : guide.param.section(QLatin1Char('.'), 0, 0).split(QLatin1Char('-')))
        name += (word.left(1).toUpper() + word.mid(1)).toStdString();
    return name;
}

} // namespace

TEST_P(GuideTest, TranscriptIsWhatTheCommandsPrint)
{
    QFile file(QStringLiteral(TANDRY_GUIDES "/") + GetParam());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<TranscriptStep> const steps = ReadTranscript(QString::fromUtf8(file.readAll()));
    ASSERT_FALSE(steps.empty()) << "the guide shows no command";

    std::vector<QStringList> const printed = Replay(steps);
    ASSERT_EQ(printed.size(), steps.size() + 1) << printed.back().join(QLatin1Char('\n')).toStdString();
    for (size_t i = 0; i < steps.size(); ++i)
        EXPECT_TRUE(MatchesTranscript(steps[i].output, printed[i]))
            << "$ " << steps[i].command.toStdString() << "\nprinted:\n"
            << printed[i].join(QLatin1Char('\n')).toStdString();
}

INSTANTIATE_TEST_SUITE_P(Guides, GuideTest, testing::ValuesIn(Guides()), NameOfGuide);

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
