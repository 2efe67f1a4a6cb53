// Scans that Ctrl-C ends.

#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <csignal>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

constexpr char const* CtrlC = "\x03";
constexpr int EndedByCtrlC = 128 + SIGINT;

class ScanInterruptionTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
    }

    void WriteFiles(QString const& directory, int count) const
    {
        MakeDirectory(directory);
        for (int i = 0; i < count; ++i)
            WriteFile(directory + "/%1"_q.arg(i));
    }

    int RecordedFiles() { return int(RawStore(StorePath()).Count("FileConfiguration"_q)); }
};

} // namespace

TEST_F(ScanInterruptionTest, SaysWhatWasNotRecordedAndTheNextScanRecordsIt)
{
    AddRoot("other"_q, "/o"_q);
    WriteFiles("docs"_q, 30);
    RawStore store(StorePath());
    store.Run("BEGIN IMMEDIATE"_q); // the scan waits before it records
    RunResult const ran =
        RunOnTerminal({"scan"_q}, {}, {{"recording [", [] { return QByteArray(CtrlC); }}, {"^C", [&] {
                                                                                               store.Run("COMMIT"_q);
                                                                                               return QByteArray();
                                                                                           }}});
    EXPECT_EQ(ran.status, EndedByCtrlC) << ran.out.toStdString();
    EXPECT_TRUE(
        ran.out.contains("interrupted in root 1 '"_q + At("docs") +
                         "': 0 folders and 30 files were found and not recorded, and 0 folders were not read"_q))
        << ran.out.toStdString();
    EXPECT_TRUE(ran.out.contains("not scanned: root 2 '"_q + At("other") + "'"_q)) << ran.out.toStdString();
    EXPECT_EQ(RecordedFiles(), 0);
    EXPECT_TRUE(RunSuccessfully({"scan"_q}).contains("files: 30 added"_q));
}

TEST_F(ScanInterruptionTest, KeepsThePortionsBeforeAndLeavesNoLog)
{
    constexpr int PortionFiles = 10'000;
    WriteFiles("docs/1"_q, PortionFiles);
    WriteFiles("docs/2"_q, 500);
    int recordedMeanwhile = 0;
    RunResult const ran = RunOnTerminal({"scan"_q}, {}, {{"0% of 500 records", [&] {
                                                              recordedMeanwhile = RecordedFiles();
                                                              return QByteArray(CtrlC);
                                                          }}});
    EXPECT_GE(recordedMeanwhile, PortionFiles) << "the portion before is committed";
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));

    auto const added = QRegularExpression("files: (\\d+) added"_q).match(ran.out);
    ASSERT_TRUE(added.hasMatch()) << ran.out.toStdString();
    int const recorded = RecordedFiles();
    EXPECT_EQ(added.captured(1).toInt(), recorded);
    if (ran.status == EndedByCtrlC) { // else it was through before the key came
        auto const left = QRegularExpression("0 folders and (\\d+) files were found and not recorded"_q).match(ran.out);
        ASSERT_TRUE(left.hasMatch()) << ran.out.toStdString();
        EXPECT_EQ(recorded + left.captured(1).toInt(), PortionFiles + 500);
    }
    EXPECT_TRUE(
        RunSuccessfully({"scan"_q})
            .contains("files: %1 added, 0 changed, %2 unchanged"_q.arg(PortionFiles + 500 - recorded).arg(recorded)));
}

TEST_F(ScanInterruptionTest, PrunesNothing)
{
    WriteFiles("docs"_q, 5);
    RunSuccessfully({"scan"_q});
    QFile::remove(At("docs/0"));
    WriteFile("docs/new"_q);
    RawStore store(StorePath());
    store.Run("BEGIN IMMEDIATE"_q);
    RunResult const ran = RunOnTerminal(
        {"scan"_q, "--prune"_q}, {}, {{"recording [", [] { return QByteArray(CtrlC); }}, {"^C", [&] {
                                                                                              store.Run("COMMIT"_q);
                                                                                              return QByteArray();
                                                                                          }}});
    EXPECT_EQ(ran.status, EndedByCtrlC) << ran.out.toStdString();
    EXPECT_TRUE(ran.out.contains("0 pruned"_q)) << ran.out.toStdString();
    EXPECT_EQ(RecordedFiles(), 5);
}
