#include "ToolFixture.h"

#include "support/RawStore.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/stat.h>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class ScanTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
    }

    /// Scans and returns the counts.
    QJsonObject Scan(QStringList const& more = {}) { return JsonObject(QStringList{"scan"_q} + more); }

    QHash<QString, QJsonObject> FilesByPath()
    {
        QHash<QString, QJsonObject> files;
        for (QJsonValue const file : Run({"list"_q, "files"_q, "--json"_q}).json())
            files.insert(file.toObject().value("clientPath"_q).toString(), file.toObject());
        return files;
    }

    QJsonObject File(QString const& name) { return FilesByPath().value(At(name)); }

    QStringList FolderPaths()
    {
        QStringList paths;
        for (QJsonValue const entry : Json({"list"_q, "folders"_q}))
            paths.append(entry.toObject().value("clientPath"_q).toString());
        paths.sort();
        return paths;
    }

    /// Creates a file whose name need not be valid UTF-8.
    void WriteRaw(QByteArray const& name) const
    {
        int const file = ::open((folder.path().toUtf8() + '/' + name).constData(), O_CREAT | O_WRONLY, 0600);
        ASSERT_NE(file, -1);
        ::close(file);
    }

    /// Returns the number of entries that `find` prints.
    int Find(QStringList const& conditions) const
    {
        QProcess find;
        find.start("find"_q, QStringList{At("docs")} + conditions + QStringList{"-printf"_q, "x"_q});
        EXPECT_TRUE(find.waitForFinished());
        return find.readAllStandardOutput().size();
    }

    void SetModified(QString const& name, QDateTime const& time) const
    {
        QFile file(At(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
    }
};

} // namespace

TEST_F(ScanTest, RecordsFoldersAndFilesWithTheirParents)
{
    MakeDirectory("docs/a/b"_q);
    WriteFile("docs/top"_q, "12345");
    WriteFile("docs/a/b/deep"_q);
    QJsonObject const counts = Scan();
    EXPECT_EQ(counts.value("foldersAdded"_q).toInt(), 2);
    EXPECT_EQ(counts.value("filesAdded"_q).toInt(), 2);

    QJsonArray const folders = Json({"list"_q, "folders"_q});
    ASSERT_EQ(folders.size(), 3);
    EXPECT_EQ(folders.at(1).toObject().value("parentId"_q).toInt(), 1);
    EXPECT_EQ(folders.at(2).toObject().value("parentId"_q), folders.at(1).toObject().value("id"_q));
    EXPECT_EQ(folders.at(2).toObject().value("serverPath"_q).toString(), "/s/a/b"_q);
    EXPECT_EQ(folders.at(2).toObject().value("rootId"_q).toInt(), 1);
}

TEST_F(ScanTest, RecordsAFilesNamePathsSizeTimesAndStatus)
{
    MakeDirectory("docs/a"_q);
    WriteFile("docs/a/file"_q, "12345");
    QDateTime const time(QDate(2022, 7, 1), QTime(12, 0, 1, 234), Qt::UTC);
    SetModified("docs/a/file"_q, time);
    Scan();
    QJsonObject const file = File("docs/a/file"_q);
    EXPECT_EQ(file.value("name"_q).toString(), "file"_q);
    EXPECT_EQ(file.value("serverPath"_q).toString(), "/s/a/file"_q);
    EXPECT_EQ(file.value("size"_q).toInt(), 5);
    EXPECT_EQ(file.value("lastModifiedDateTime"_q).toString(), "2022-07-01T12:00:01.234Z"_q);
    EXPECT_EQ(file.value("syncStatus"_q).toInt(), 2);
    EXPECT_EQ(file.value("fileType"_q).toInt(), 0);
    EXPECT_EQ(file.value("rootFolderId"_q).toInt(), 1);
    EXPECT_EQ(file.value("folderConfigurationId"_q).toInt(), 2);
    EXPECT_EQ(file.value("fileLinks"_q).toArray().size(), 0);
}

TEST_F(ScanTest, FilesGetTheRootsProduct)
{
    RawStore(StorePath()).Run("UPDATE FolderConfiguration SET productConfigurationId = 7;"_q);
    MakeDirectory("docs/a"_q);
    WriteFile("docs/a/file"_q);
    Scan();
    EXPECT_EQ(File("docs/a/file"_q).value("productConfigurationId"_q).toInt(), 7);
}

TEST_F(ScanTest, SecondScanAddsAndChangesNothing)
{
    MakeDirectory("docs/a"_q);
    WriteFile("docs/a/file"_q, "x");
    Link("file", "docs/a/link"_q);
    Scan();
    auto const before = FilesByPath();
    for (QStringList const& more : {QStringList(), QStringList{"--prune"_q}}) {
        QJsonObject const counts = Scan(more);
        EXPECT_EQ(counts.value("foldersAdded"_q).toInt(), 0);
        EXPECT_EQ(counts.value("foldersThere"_q).toInt(), 1);
        EXPECT_EQ(counts.value("foldersPruned"_q).toInt(), 0);
        EXPECT_EQ(counts.value("filesAdded"_q).toInt(), 0);
        EXPECT_EQ(counts.value("filesChanged"_q).toInt(), 0);
        EXPECT_EQ(counts.value("filesUnchanged"_q).toInt(), 2);
        EXPECT_EQ(counts.value("filesPruned"_q).toInt(), 0);
    }
    EXPECT_EQ(FilesByPath(), before);
}

TEST_F(ScanTest, CountsMatchFind)
{
    for (int i = 0; i < 40; ++i) {
        QString const directory = "docs/%1/%2/%3"_q.arg(i % 3).arg(i % 7).arg(i);
        MakeDirectory(directory);
        for (int j = 0; j < i % 5; ++j)
            WriteFile(directory + "/f%1"_q.arg(j), QByteArray(j, 'x'));
        Link("f0", directory + "/link"_q); // broken if i % 5 is 0
        Link(".", directory + "/loop"_q);
    }
    Scan();
    EXPECT_EQ(Json({"list"_q, "folders"_q}).size(), Find({"-type"_q, "d"_q}));
    EXPECT_EQ(Json({"list"_q, "files"_q}).size(),
              Find({"-type"_q, "f"_q}) + Find({"-type"_q, "l"_q, "-xtype"_q, "f"_q}));
    EXPECT_EQ(RunSuccessfully({"tree"_q}).count(QLatin1Char('\n')), Find({"-type"_q, "d"_q}));
}

TEST_F(ScanTest, ChangedFileIsOutOfSyncAgainAndKeepsItsOtherColumns)
{
    WriteFile("docs/bigger"_q, "x");
    WriteFile("docs/newer"_q, "x");
    WriteFile("docs/same"_q, "x");
    Scan();
    RawStore(StorePath()).Run("UPDATE FileConfiguration SET syncStatus = 9, ownerId = 'anna', serverFileId = 's';"_q);
    WriteFile("docs/bigger"_q, "xx");
    SetModified("docs/newer"_q, QDateTime(QDate(2030, 1, 1), QTime(0, 0), Qt::UTC));

    QJsonObject const counts = Scan();
    EXPECT_EQ(counts.value("filesChanged"_q).toInt(), 2);
    EXPECT_EQ(counts.value("filesUnchanged"_q).toInt(), 1);
    EXPECT_EQ(File("docs/same"_q).value("syncStatus"_q).toInt(), 9);
    EXPECT_EQ(File("docs/bigger"_q).value("size"_q).toInt(), 2);
    for (char const* name : {"docs/bigger", "docs/newer"}) {
        QJsonObject const file = File(QString::fromUtf8(name));
        EXPECT_EQ(file.value("syncStatus"_q).toInt(), 2);
        EXPECT_EQ(file.value("ownerId"_q).toString(), "anna"_q);
        EXPECT_EQ(file.value("serverFileId"_q).toString(), "s"_q);
    }
}

TEST_F(ScanTest, OddNamesAreRecordedUnchanged)
{
    QStringList const names{"a 'single' and \"double\""_q,
                            "line\nbreak"_q,
                            "tab\tand\x1b[31mcolour"_q,
                            "Grüße 日本語 👩‍👧"_q,
                            " blanks "_q,
                            "-rf"_q,
                            "%1 :id ; --"_q,
                            "back\\slash"_q,
                            "\uFEFFmark"_q,
                            "]]>"_q};
    for (QString const& name : names) {
        MakeDirectory("docs/"_q + name);
        WriteFile("docs/"_q + name + "/"_q + name);
    }
    EXPECT_EQ(Scan().value("problems"_q).toInt(), 0);
    auto const files = FilesByPath();
    QStringList const folders = FolderPaths();
    for (QString const& name : names) {
        EXPECT_TRUE(folders.contains(At("docs/"_q + name))) << name.toStdString();
        QJsonObject const file = files.value(At("docs/"_q + name + "/"_q + name));
        EXPECT_EQ(file.value("name"_q).toString(), name);
        EXPECT_EQ(file.value("serverPath"_q).toString(), "/s/"_q + name + "/"_q + name);
    }
    EXPECT_EQ(RunSuccessfully({"tree"_q}).count(QLatin1Char('\n')), names.size() + 1);
    EXPECT_EQ(Scan().value("filesUnchanged"_q).toInt(), names.size());
}

TEST_F(ScanTest, LocaleDoesNotChangeNames)
{
    WriteFile("docs/日本"_q);
    RunResult const ran = RunWithoutStore({"--store"_q, StorePath(), "scan"_q, "--json"_q}, {"LC_ALL=C"_q, "LANG=C"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(File("docs/日本"_q).value("name"_q).toString(), "日本"_q);
}

TEST_F(ScanTest, NameThatIsNotUtf8IsReportedAndTheRestIsRecorded)
{
    WriteRaw("docs/caf\xe9");
    ASSERT_EQ(::mkdir((folder.path().toUtf8() + "/docs/\xff").constData(), 0700), 0);
    WriteFile("docs/good"_q);
    RunResult const ran = Run({"scan"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("caf\\351"_q)) << ran.err.toStdString();
    EXPECT_TRUE(ran.err.contains("\\377"_q)) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 2);
    EXPECT_EQ(FilesByPath().size(), 1);
}

TEST_F(ScanTest, EntriesThatFailedAreNamedInJson)
{
    WriteRaw("docs/caf\xe9");
    WriteFile("docs/good"_q);
    RunResult const ran = Run({"scan"_q, "--json"_q});
    EXPECT_EQ(ran.status, 1);
    QJsonArray const failed = ran.json().first().toObject().value("failed"_q).toArray();
    ASSERT_EQ(failed.size(), 1);
    EXPECT_EQ(failed.first().toObject(),
              (QJsonObject{{"path"_q, At("docs/caf") + QChar(QChar::ReplacementCharacter)},
                           {"message"_q, "$'%1' is left out: its name is not valid UTF-8"_q.arg(At("docs/caf\\351"))},
                           {"hint"_q, "rename it, then scan again"_q}}));
    QJsonObject const error = QJsonDocument::fromJson(ran.err.toUtf8()).object();
    EXPECT_EQ(error.value("code"_q).toString(), "incomplete"_q) << ran.err.toStdString();
    EXPECT_EQ(error.value("message"_q).toString(), "the scan met 1 problem"_q);
}

TEST_F(ScanTest, UnreadableDirectoryIsReportedAtTheEndAndTheScanContinues)
{
    MakeDirectory("docs/a-closed"_q);
    WriteFile("docs/a-closed/hidden"_q);
    MakeDirectory("docs/open"_q);
    WriteFile("docs/open/file"_q);
    ASSERT_EQ(::chmod(At("docs/a-closed").toUtf8().constData(), 0), 0);
    auto const ran = RunWithoutPrivileges({"scan"_q});
    ::chmod(At("docs/a-closed").toUtf8().constData(), 0700);
    if (!ran)
        GTEST_SKIP() << "the superuser here can't give up privileges";
    EXPECT_EQ(ran->status, 1);
    EXPECT_TRUE(ran->err.contains(At("docs/a-closed"))) << ran->err.toStdString();
    EXPECT_TRUE(ran->out.contains("folders: 2 added"_q)) << ran->out.toStdString();
    EXPECT_EQ(FilesByPath().keys(), QStringList{At("docs/open/file")});
}

TEST_F(ScanTest, PruneKeepsWhatLiesBelowAnUnreadableDirectory)
{
    MakeDirectory("docs/closed/deep"_q);
    WriteFile("docs/closed/deep/file"_q);
    Scan();
    ASSERT_EQ(::chmod(At("docs/closed").toUtf8().constData(), 0), 0);
    auto const ran = RunWithoutPrivileges({"scan"_q, "--prune"_q});
    ::chmod(At("docs/closed").toUtf8().constData(), 0700);
    if (!ran)
        GTEST_SKIP() << "the superuser here can't give up privileges";
    EXPECT_EQ(ran->status, 1);
    EXPECT_EQ(FilesByPath().size(), 1);
    EXPECT_EQ(FolderPaths().size(), 3);
}

TEST_F(ScanTest, LinkToAFileBecomesAFileWithOneLinkToItsRecord)
{
    MakeDirectory("docs/z"_q);
    WriteFile("docs/z/target"_q);
    Link("z/target", "docs/link"_q); // sorts before its target
    Scan();
    auto const files = FilesByPath();
    ASSERT_EQ(files.size(), 2);
    QJsonObject const target = files.value(At("docs/z/target"));
    EXPECT_EQ(target.value("syncStatus"_q).toInt(), 2); // recorded by the scan, not through the link
    QJsonArray const links = files.value(At("docs/link")).value("fileLinks"_q).toArray();
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links.first().toObject().value("fileId"_q), target.value("id"_q));
    EXPECT_EQ(links.first().toObject().value("path"_q).toString(), "z/target"_q);
}

TEST_F(ScanTest, AbsoluteLinkIsResolved)
{
    WriteFile("docs/target"_q);
    Link(At("docs/target").toUtf8().constData(), "docs/link"_q);
    Scan();
    EXPECT_EQ(File("docs/link"_q).value("fileLinks"_q).toArray().first().toObject().value("fileId"_q),
              File("docs/target"_q).value("id"_q));
}

TEST_F(ScanTest, LinkToALinkLeadsToTheFile)
{
    WriteFile("docs/target"_q);
    Link("target", "docs/near"_q);
    Link("near", "docs/far"_q);
    Scan();
    for (char const* name : {"docs/near", "docs/far"})
        EXPECT_EQ(File(QString::fromUtf8(name)).value("fileLinks"_q).toArray().first().toObject().value("fileId"_q),
                  File("docs/target"_q).value("id"_q))
            << name;
}

TEST_F(ScanTest, LinkOutOfTheRootIsRecordedWithoutAnId)
{
    WriteFile("outside"_q);
    Link("../outside", "docs/link"_q);
    Scan();
    QJsonObject const link = File("docs/link"_q).value("fileLinks"_q).toArray().first().toObject();
    EXPECT_EQ(link.value("fileId"_q).toInt(), -1);
    EXPECT_EQ(link.value("path"_q).toString(), "../outside"_q);
    EXPECT_EQ(FilesByPath().size(), 1);
}

TEST_F(ScanTest, LinkThroughALinkedFolderRecordsNoSuchFolder)
{
    MakeDirectory("docs/real"_q);
    WriteFile("docs/real/file"_q);
    Link("real", "docs/linked"_q);
    Link("linked/file", "docs/shortcut"_q);
    QJsonObject const counts = Scan();
    EXPECT_EQ(counts.value("linksToDirectories"_q).toInt(), 1);
    EXPECT_EQ(FolderPaths(), QStringList({At("docs"), At("docs/real")}));
    EXPECT_EQ(File("docs/shortcut"_q).value("fileLinks"_q).toArray().first().toObject().value("fileId"_q),
              File("docs/real/file"_q).value("id"_q));
    EXPECT_EQ(Scan({"--prune"_q}).value("foldersPruned"_q).toInt(), 0);
}

TEST_F(ScanTest, LinksToFoldersBrokenLinksAndPipesAreCountedButNotRecorded)
{
    Link("/", "docs/folder"_q);
    Link("missing", "docs/broken"_q);
    ASSERT_EQ(::mkfifo(At("docs/pipe").toUtf8().constData(), 0600), 0);
    QString const out = RunSuccessfully({"scan"_q});
    EXPECT_TRUE(out.contains("left out: 1 link to a folder, 1 link to nothing and 1 special file"_q))
        << out.toStdString();
    EXPECT_EQ(FolderPaths().size(), 1);
    EXPECT_EQ(FilesByPath().size(), 0);
}

TEST_F(ScanTest, FileThatBecomesALinkAndBackIsUpdated)
{
    WriteFile("docs/target"_q, "12345");
    WriteFile("docs/entry"_q, "1");
    Scan();
    QFile::remove(At("docs/entry"));
    Link("target", "docs/entry"_q);
    EXPECT_EQ(Scan().value("filesChanged"_q).toInt(), 1);
    EXPECT_EQ(File("docs/entry"_q).value("fileLinks"_q).toArray().size(), 1);
    QFile::remove(At("docs/entry"));
    WriteFile("docs/entry"_q, "12");
    EXPECT_EQ(Scan().value("filesChanged"_q).toInt(), 1);
    EXPECT_EQ(File("docs/entry"_q).value("fileLinks"_q).toArray().size(), 0);
}

TEST_F(ScanTest, WithoutPruneMissingFilesStayOnRecord)
{
    WriteFile("docs/file"_q);
    Scan();
    QFile::remove(At("docs/file"));
    Scan();
    EXPECT_EQ(FilesByPath().size(), 1);
}

TEST_F(ScanTest, PruneRemovesMissingFilesAndFolders)
{
    MakeDirectory("docs/gone/deep"_q);
    WriteFile("docs/gone/deep/file"_q);
    WriteFile("docs/gone/other"_q);
    MakeDirectory("docs/kept"_q);
    WriteFile("docs/kept/file"_q);
    WriteFile("docs/lost"_q);
    Scan();
    ASSERT_TRUE(QDir(At("docs/gone")).removeRecursively());
    QFile::remove(At("docs/lost"));
    QJsonObject const counts = Scan({"--prune"_q});
    EXPECT_EQ(counts.value("filesPruned"_q).toInt(), 3);
    EXPECT_EQ(counts.value("foldersPruned"_q).toInt(), 2);
    EXPECT_EQ(FolderPaths(), QStringList({At("docs"), At("docs/kept")}));
    EXPECT_EQ(FilesByPath().keys(), QStringList{At("docs/kept/file")});
}

TEST_F(ScanTest, PruneRemovesFilesGeneratedFromAMissingFile)
{
    WriteFile("docs/file"_q);
    WriteFile("made"_q);
    Scan();
    RawStore(StorePath())
        .Run("INSERT INTO GeneratedFileConfiguration (clientPath, parentFileId, fileType, rootFolderId) "
             "VALUES ('%1', 1, 1, 1);"_q.arg(At("made")));
    QFile::remove(At("docs/file"));
    EXPECT_EQ(Scan({"--prune"_q, "--yes"_q}).value("filesDeleted"_q).toInt(), 1);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--type"_q, "generated"_q}).status, 1);
    EXPECT_FALSE(QFile::exists(At("made")));
}

TEST_F(ScanTest, PruneOfAFileThatBecameAFolderReplacesIt)
{
    WriteFile("docs/entry"_q);
    Scan();
    QFile::remove(At("docs/entry"));
    MakeDirectory("docs/entry"_q);
    QJsonObject const counts = Scan({"--prune"_q});
    EXPECT_EQ(counts.value("foldersAdded"_q).toInt(), 1);
    EXPECT_EQ(counts.value("filesPruned"_q).toInt(), 1);
}

TEST_F(ScanTest, MissingRootIsReportedAndNotPruned)
{
    WriteFile("docs/file"_q);
    Scan();
    ASSERT_TRUE(QDir(At("docs")).removeRecursively());
    RunResult const ran = Run({"scan"_q, "--prune"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains(At("docs"))) << ran.err.toStdString();
    EXPECT_EQ(FilesByPath().size(), 1);
}

TEST_F(ScanTest, FilesOfARemovedFolderAreFoundAgainWithoutDuplicates)
{
    MakeDirectory("docs/a/b"_q);
    WriteFile("docs/a/file"_q);
    Scan();
    RunSuccessfully({"folder"_q, "remove"_q, "2"_q, "--yes"_q});
    QJsonObject const counts = Scan();
    EXPECT_EQ(counts.value("foldersAdded"_q).toInt(), 1);
    EXPECT_EQ(counts.value("foldersChanged"_q).toInt(), 1);
    EXPECT_EQ(counts.value("filesAdded"_q).toInt(), 0);
    EXPECT_EQ(counts.value("filesChanged"_q).toInt(), 1);
    ASSERT_EQ(FilesByPath().size(), 1);
    QJsonArray const folders = Json({"list"_q, "folders"_q});
    ASSERT_EQ(folders.size(), 3);
    int const renewed = folders.at(2).toObject().value("id"_q).toInt();
    EXPECT_EQ(File("docs/a/file"_q).value("folderConfigurationId"_q).toInt(), renewed);
    EXPECT_EQ(folders.at(1).toObject().value("parentId"_q).toInt(), renewed);
    EXPECT_EQ(Scan().value("filesUnchanged"_q).toInt(), 1);
}

TEST_F(ScanTest, ScansOnlyTheGivenRoot)
{
    AddRoot("other"_q, "/o"_q);
    WriteFile("docs/file"_q);
    WriteFile("other/file"_q);
    Scan({"2"_q});
    EXPECT_EQ(FilesByPath().keys(), QStringList{At("other/file")});
}

TEST_F(ScanTest, ScansAllRootsAndPrintsTotals)
{
    AddRoot("other"_q, "/o"_q);
    WriteFile("docs/file"_q);
    WriteFile("other/file"_q);
    EXPECT_TRUE(RunSuccessfully({"scan"_q}).contains("files: 2 added, 0 changed, 0 unchanged"_q));
    EXPECT_EQ(Json({"scan"_q}).size(), 2);
}

TEST_F(ScanTest, UnknownRootFindsNothing)
{
    EXPECT_EQ(Run({"scan"_q, "77"_q}).status, 1);
}

TEST_F(ScanTest, FolderRecordedInAnotherRootIsReported)
{
    AddRoot("other"_q, "/o"_q);
    MakeDirectory("docs/a/b"_q);
    WriteFile("docs/a/file"_q);
    RawStore(StorePath())
        .Run("INSERT INTO FolderConfiguration (clientPath, parentId, rootId) VALUES ('%1', 2, 2);"_q.arg(At("docs/a")));
    RunResult const ran = Run({"scan"_q, "1"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains(At("docs/a")) && ran.err.contains("root 2"_q)) << ran.err.toStdString();
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1);
    EXPECT_EQ(FilesByPath().size(), 0);
}

TEST_F(ScanTest, PortionIsWrittenCompletelyOrNotAtAll)
{
    for (int i = 0; i < 20; ++i)
        WriteFile("docs/%1"_q.arg(i));
    MakeDirectory("docs/a"_q);
    UseUpIds("FileConfiguration", 7);
    RunResult const ran = Run({"scan"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
    EXPECT_EQ(FilesByPath().size(), 0);
    EXPECT_EQ(FolderPaths().size(), 1);
}

TEST_F(ScanTest, TotalsEndWithTimeAndRate)
{
    WriteFile("docs/file"_q);
    QString const last = RunSuccessfully({"scan"_q}).trimmed().section(QLatin1Char('\n'), -1);
    EXPECT_TRUE(QRegularExpression("^elapsed: [0-9]+\\.[0-9]{3} s, [0-9]+ files/s$"_q).match(last).hasMatch())
        << last.toStdString();
}

TEST_F(ScanTest, ProgressIsShownOnlyOnATerminal)
{
    WriteFile("docs/file"_q);
    EXPECT_EQ(Run({"scan"_q}).err, QString());
    WriteFile("docs/another"_q);
    RunResult const ran = RunOnTerminal({"scan"_q});
    EXPECT_EQ(ran.status, 0);
    EXPECT_TRUE(ran.out.contains("recording ["_q)) << ran.out.toStdString();
    EXPECT_TRUE(ran.out.contains("files: 1 added"_q)) << ran.out.toStdString();
}

TEST_F(ScanTest, WithoutARootFindsNothing)
{
    RunSuccessfully({"root"_q, "remove"_q, "1"_q, "--yes"_q});
    RunResult const ran = Run({"scan"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.err.contains("root add"_q));
}

TEST_F(ScanTest, VeryDeepTreeIsScanned)
{
    QString deep = "docs"_q;
    for (int i = 0; i < 400; ++i)
        deep += "/d"_q;
    MakeDirectory(deep);
    EXPECT_EQ(Scan().value("foldersAdded"_q).toInt(), 400);
    EXPECT_EQ(RunSuccessfully({"tree"_q}).count(QLatin1Char('\n')), 401);
}
