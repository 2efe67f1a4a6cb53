#include "tools/findings/Findings.h"

#include "DefectStore.h"
#include "config/FileLinksDocument.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"
#include "tools/findings/Fix.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <algorithm>

using namespace tandry::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using tandry::findings::FindAll;
using tandry::findings::Finding;
using tandry::findings::FindingKind;
using tandry::findings::FindingKinds;
using tandry::findings::FindInRow;
using tandry::findings::Fix;
using tandry::findings::FixedRow;
using tandry::findings::FixMode;
using tandry::findings::FixReport;
using tandry::findings::FoundRow;
using tandry::findings::Severity;

namespace {

FindingKind const& KindOf(char const* code)
{
    return *std::find_if(FindingKinds().begin(), FindingKinds().end(), [code](FindingKind const& kind) {
        return QByteArray(kind.code) == code;
    });
}

class FindingsTest : public testing::Test
{
protected:
    FindingsTest() { CreateCleanStore(StorePath()); }

    QString StorePath() const { return folder.filePath(QStringLiteral("store.db")); }

    std::shared_ptr<SqliteDatabaseFactory> Open(OpenMode mode) const
    {
        OpenOptions options;
        options.mode = mode;
        QString error;
        auto store = SqliteDatabaseFactory::Open(StorePath(), &error, options);
        EXPECT_NE(store, nullptr) << error.toStdString();
        return store;
    }

    static QString TextOf(FoundRow const& row)
    {
        QString text = row.table;
        if (row.id)
            text += QLatin1Char(' ') + QString::number(*row.id);
        if (row.detail.isNull())
            return text;
        return text.isEmpty() ? row.detail : text + QStringLiteral(": ") + row.detail;
    }

    static QStringList ActionsOf(FixReport const& report)
    {
        QStringList actions;
        for (FixedRow const& fixed : report.fixed)
            actions.append(TextOf(fixed.row) + QStringLiteral(" -> ") + fixed.action);
        return actions;
    }

    /// Returns what is found by code.
    QMap<QString, QStringList> Find() const
    {
        auto const findings = FindAll(Open(OpenMode::ReadOnly));
        EXPECT_TRUE(findings);
        QMap<QString, QStringList> texts;
        for (Finding const& finding : findings.value_or(std::vector<Finding>())) {
            EXPECT_FALSE(finding.rows.empty());
            for (FoundRow const& row : finding.rows)
                texts[QLatin1String(finding.kind->code)].append(TextOf(row));
        }
        return texts;
    }

    FixReport FixAll(char const* code) const
    {
        auto const report = Fix(Open(OpenMode::OpenExisting), KindOf(code), FixMode::BackUpAndFix);
        EXPECT_TRUE(report) << code;
        return report.value_or(FixReport());
    }

    /// Returns the first column of all rows, with blanks between them.
    QString Values(char const* statement) const
    {
        QStringList values;
        for (QVector<QVariant> const& row : RawStore(StorePath()).Rows(QString::fromUtf8(statement)))
            values.append(row.first().toString());
        return values.join(QLatin1Char(' '));
    }

    QTemporaryDir folder;
};

/// Documents of links are compared by what they say: Qt writes their attributes in any order.
StoreRows ComparableRows(QString const& path)
{
    RawStore store(path);
    StoreRows rows = RowsOf(store);
    for (char const* table : {"FileConfiguration", "GeneratedFileConfiguration", "BaseFileConfiguration"}) {
        for (QVector<QVariant>& row : rows[QLatin1String(table)]) {
            QString const text = row.last().toString();
            QDateTime date;
            QStringList links;
            for (sync::config::FileLink const& link : sync::config::ReadFileLinks(text, date))
                links.append(
                    "%1|%2|%3|%4"_q.arg(QString::number(link.fileId), link.path, link.refId, link.serverFileId));
            row.last() = QString(links.join(QLatin1Char('\n')) + date.toString(Qt::ISODate));
        }
    }
    return rows;
}

class SingleDefect : public FindingsTest, public testing::WithParamInterface<Defect>
{};

} // namespace

TEST_F(FindingsTest, CleanStoreHasNone)
{
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
}

TEST_F(FindingsTest, NewStoreHasNone)
{
    auto const findings = FindAll(SqliteDatabaseFactory::Open(folder.filePath(QStringLiteral("new.db"))));
    ASSERT_TRUE(findings);
    EXPECT_TRUE(findings->empty());
}

TEST_F(FindingsTest, CleanStoreOf300000FilesHasNone)
{
    // Ten folders in each of three hundred below one of the roots, and a hundred files in each of these.
    RawStore(StorePath())
        .Run("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 3299) "
             "INSERT INTO FolderConfiguration (id, authenticationId, name, clientPath, serverPath, parentId, rootId) "
             "SELECT 1000 + i, -1, i, '/home/ada/pics/' || CASE WHEN i < 300 THEN i ELSE (i % 300) || '/' || i END, "
             "'/pics/' || i, CASE WHEN i < 300 THEN 5 ELSE 1000 + i % 300 END, 5 FROM n;"
             "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 299999) "
             "INSERT INTO FileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, "
             "lastModifiedDateTime, nameValueProperties, rootFolderId, fileLinks) SELECT 1000 + i, folder.id, "
             "i || '.jpg', folder.clientPath || '/' || i || '.jpg', folder.serverPath || '/' || i || '.jpg', "
             "1704104430000 + i, '<!DOCTYPE NameValueXml><NameValueXml><Key>' || i || '</Key></NameValueXml>', 5, "
             "CASE WHEN i % 100 = 99 THEN '<FileLinks><FileLink FileId=\"' || (999 + i) || '\"/></FileLinks>' END "
             "FROM n JOIN FolderConfiguration AS folder ON folder.id = 1300 + i / 100;"_q);
    ASSERT_EQ(RawStore(StorePath()).Count("FileConfiguration"_q), 300'004);
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
}

TEST_F(FindingsTest, RowsThatOnlyLookLikeFindingsAreNone)
{
    RawStore(StorePath())
        .Run(
            "INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
            "(9, -1, '/home/ada/docs2', '/docs/other account', 0, 9);"
            // the same paths in another folder, and from another source
            "INSERT INTO FileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, parentFileId) VALUES "
            "(9, 3, '/home/ada/docs/a/two.txt', 1, 99);"
            "INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, "
            "parentFileId) VALUES (9, 3, '/home/ada/.previews/three', 1, 2);"
            // a value with a character that XML has no place for, as the client writes it
            "UPDATE FolderConfiguration SET nameValueProperties = '<!DOCTYPE NameValueXml>' || char(10) || "
            "'<NameValueXml>' || char(10) || ' <a><![CDATA[' || char(1) || ']]></a>' || char(10) || '</NameValueXml>'; "
            "UPDATE BaseFileConfiguration SET fileLinks = '<FileLinks><FileLink Path=\"x\"/></FileLinks>'"_q);
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
}

TEST_F(FindingsTest, RootsWithOnePathForTwoAccountsOverlapAndAreNoTwins)
{
    RawStore(StorePath())
        .Run("INSERT INTO FolderConfiguration (id, authenticationId, clientPath, serverPath, parentId, rootId) VALUES "
             "(9, 1, '/home/ada/pics', '/pics', 0, 9)"_q);
    EXPECT_EQ(Find(),
              (QMap<QString, QStringList>{
                  {"roots-overlap"_q, {"FolderConfiguration 9: same as root 5 '/home/ada/pics'"_q}}}));
}

TEST_F(FindingsTest, PathThatIsABlobEndsTheSearchLikeAnyOther)
{
    RawStore(StorePath()).Run("UPDATE BaseFileConfiguration SET clientPath = x'2f61'"_q);
    EXPECT_TRUE(FindAll(Open(OpenMode::ReadOnly)));
}

TEST_F(FindingsTest, PathThatIsNotValidUtf8EndsTheSearchLikeAnyOther)
{
    RawStore(StorePath())
        .Run("UPDATE FileConfiguration SET clientPath = CAST(x'2ff1' AS TEXT)"_q); // becomes a lesser one
    EXPECT_TRUE(FindAll(Open(OpenMode::ReadOnly)).has_value());
}

TEST_F(FindingsTest, LookingChangesNoByte)
{
    QMap<QString, QByteArray> const before = FolderContents(folder.path());
    Find();
    EXPECT_EQ(FolderContents(folder.path()), before);
}

TEST_F(FindingsTest, EveryKindHasADefectInTheseTests)
{
    QSet<QString> tested;
    for (Defect const& defect : AllDefects())
        tested.insert(QLatin1String(defect.code));
    for (FindingKind const& kind : FindingKinds())
        EXPECT_TRUE(tested.remove(QLatin1String(kind.code))) << kind.code;
    EXPECT_TRUE(tested.isEmpty());
}

TEST_F(FindingsTest, PageListsEveryKindAsTheProgramDoes)
{
    QStringList listed;
    for (QString const& line : QString::fromUtf8(ReadFile(QStringLiteral(FINDINGS_PAGE))).split(QLatin1Char('\n'))) {
        if (line.startsWith("| `"_q))
            listed.append(line);
    }
    QStringList expected;
    for (FindingKind const& kind : FindingKinds())
        expected.append(
            "| `%1` | %2 | %3 | %4 |"_q.arg(QLatin1String(kind.code),
                                            QLatin1String(kind.severity == Severity::Fault ? "fault" : "note"),
                                            QLatin1String(kind.meaning),
                                            QLatin1String(kind.remedy)));
    EXPECT_EQ(listed, expected);
}

TEST_F(FindingsTest, ManualNamesEveryCode)
{
    QByteArray const manual = ReadFile(QStringLiteral(MANUAL_PAGE)).replace("\\-", "-");
    for (FindingKind const& kind : FindingKinds())
        EXPECT_TRUE(manual.contains(QByteArray(" ") + kind.code)) << kind.code;
}

TEST_F(FindingsTest, ProgressIsToldOnceForEachKind)
{
    std::size_t told = 0;
    EXPECT_TRUE(FindAll(Open(OpenMode::ReadOnly), [&told] { ++told; }));
    EXPECT_EQ(told, FindingKinds().size());
}

TEST_F(FindingsTest, RowsBearTheNamesThatAUserKnows)
{
    RawStore(StorePath())
        .Run("UPDATE AuthenticationConfiguration SET serverId = 99; UPDATE ProductConfiguration SET serverId = 99;"
             "UPDATE FileConfiguration SET rootFolderId = 99 WHERE id = 1"_q);
    auto const findings = FindAll(Open(OpenMode::ReadOnly));
    ASSERT_TRUE(findings);
    QStringList names;
    for (Finding const& finding : *findings)
        names.append(finding.rows.front().name);
    EXPECT_EQ(names, (QStringList{"/home/ada/docs/one.txt"_q, "ada"_q, "office"_q}));
}

TEST_F(FindingsTest, FailureOfTheStoreIsReported)
{
    auto const store = Open(OpenMode::ReadOnly);
    RawStore(StorePath()).Run("PRAGMA user_version = 7"_q); // as a newer program does
    EXPECT_FALSE(FindAll(store));
    auto const error = store->LastError();
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->text.contains(StorePath())) << error->text.toStdString();
}

TEST_F(FindingsTest, RowsOfARemovedRootMoveToARootThatWasRecordedAnew)
{
    RawStore(StorePath())
        .Run("UPDATE FolderConfiguration SET id = 9, rootId = 9 WHERE id = 1;"
             "UPDATE Schedules SET folderConfigurationId = 9 WHERE folderConfigurationId = 1"_q);
    for (char const* code :
         {"folder-without-root", "folder-without-parent", "file-without-root", "file-without-folder"})
        EXPECT_TRUE(FixAll(code).left.empty()) << code;
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
    EXPECT_EQ(Values("SELECT parentId FROM FolderConfiguration WHERE rootId = 9 ORDER BY id"), "9 2 9 0"_q);
    EXPECT_EQ(Values("SELECT rootFolderId || ':' || folderConfigurationId FROM FileConfiguration ORDER BY id"),
              "9:9 9:2 9:3 5:5"_q);
    EXPECT_EQ(Values("SELECT rootFolderId FROM GeneratedFileConfiguration ORDER BY id"), "9 -1"_q);
}

TEST_F(FindingsTest, RowsOfARemovedRootGoIfNoOtherContainsThem)
{
    RawStore(StorePath()).Run("DELETE FROM FolderConfiguration WHERE id = 1"_q);
    for (char const* code : {"folder-without-root", "file-without-root", "schedule-without-folder"})
        EXPECT_TRUE(FixAll(code).left.empty()) << code;
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
    EXPECT_EQ(Values("SELECT id FROM FolderConfiguration"), "5"_q);
    EXPECT_EQ(Values("SELECT id FROM FileConfiguration"), "4"_q);
    EXPECT_EQ(Values("SELECT id FROM GeneratedFileConfiguration"), "2"_q);
}

TEST_F(FindingsTest, FolderWhoseRootIsGoneTooIsLeftAndReported)
{
    RawStore(StorePath()).Run("DELETE FROM FolderConfiguration WHERE id = 1"_q);
    FixReport const report = FixAll("folder-without-parent");
    EXPECT_TRUE(report.fixed.empty());
    EXPECT_EQ(report.left.size(), 2u);
}

TEST_F(FindingsTest, FolderThatIsAddedForOthersIsReported)
{
    RawStore(StorePath()).Run("DELETE FROM FolderConfiguration WHERE id = 2"_q);
    EXPECT_EQ(
        ActionsOf(FixAll("folder-without-parent")),
        (QStringList{"FolderConfiguration 3: parentId 2 -> parentId set to 6"_q, "FolderConfiguration 6 -> added"_q}));
}

TEST_F(FindingsTest, WhatNamesATwinNamesTheRowThatStaysAndTwinsInTwinsAreMerged)
{
    RawStore(StorePath())
        .Run("INSERT INTO FolderConfiguration (id, authenticationId, clientPath, parentId, rootId) VALUES "
             "(10, 1, '/home/ada/docs/a', 1, 1), (11, 1, '/home/ada/docs/a/b', 10, 1), "
             "(12, 1, '/home/ada/docs/a/new', 10, 1);"
             "INSERT INTO FileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, fileLinks) VALUES "
             "(10, 10, '/home/ada/docs/a/two.txt', 1, ''), (11, 11, '/home/ada/docs/a/b/new', 1, "
             "'<FileLinks><FileLink FileId=\"10\"/><FileLink FileId=\"11\"/></FileLinks>');"
             "INSERT INTO GeneratedFileConfiguration (id, folderConfigurationId, clientPath, rootFolderId, "
             "parentFileId) VALUES (10, 11, '/home/ada/.previews/two', 1, 10);"
             "INSERT INTO Schedules (id, folderConfigurationId) VALUES (10, 11)"_q);
    EXPECT_TRUE(FixAll("twin").left.empty());
    EXPECT_EQ(Find(), (QMap<QString, QStringList>()));
    EXPECT_EQ(Values("SELECT id || ':' || parentId FROM FolderConfiguration ORDER BY id"),
              "1:0 2:1 3:2 4:1 5:0 12:2"_q);
    EXPECT_EQ(Values("SELECT id || ':' || folderConfigurationId FROM FileConfiguration ORDER BY id"),
              "1:1 2:2 3:3 4:5 11:3"_q);
    EXPECT_EQ(
        Values("SELECT folderConfigurationId || ':' || parentFileId FROM GeneratedFileConfiguration WHERE id = 10"),
        "3:2"_q);
    EXPECT_EQ(Values("SELECT folderConfigurationId FROM Schedules WHERE id = 10"), "3"_q);
    QDateTime date;
    auto const links =
        sync::config::ReadFileLinks(Values("SELECT fileLinks FROM FileConfiguration WHERE id = 11"), date);
    ASSERT_EQ(links.size(), 2);
    EXPECT_EQ(links.first().fileId, 2);
    EXPECT_EQ(links.last().fileId, 11);
}

TEST_F(FindingsTest, NothingIsFixedIfTheStoreCannotBeCopied)
{
    QString const path = folder.filePath(QString(240, QLatin1Char('x'))); // the copy's name would be too long
    ASSERT_TRUE(QFile::rename(StorePath(), path));
    RawStore(path).Run("DELETE FROM Schedules"_q);
    OpenOptions options;
    options.mode = OpenMode::OpenExisting;
    auto const store = SqliteDatabaseFactory::Open(path, nullptr, options);
    ASSERT_NE(store, nullptr);
    EXPECT_FALSE(Fix(store, KindOf("no-default-schedule"), FixMode::BackUpAndFix));
    EXPECT_TRUE(store->LastError());
    EXPECT_EQ(RawStore(path).Count("Schedules"_q), 0);
}

TEST_P(SingleDefect, IsFoundWithItsFollowersAndNothingElse)
{
    RawStore(StorePath()).Run(QString::fromUtf8(GetParam().statements));
    EXPECT_EQ(Find(), GetParam().findings);
}

TEST_P(SingleDefect, IsFoundInItsRowAlone)
{
    QSet<QString> const ofSeveralRows{"damage"_q,
                                      "folder-ring"_q,
                                      "link-to-nothing"_q,
                                      "twin"_q,
                                      "document-broken"_q,
                                      "document-over-limits"_q,
                                      "roots-overlap"_q,
                                      "server-roots-overlap"_q,
                                      "paths-alike"_q,
                                      "no-default-schedule"_q};
    RawStore(StorePath()).Run(QString::fromUtf8(GetParam().statements));
    QMap<QString, QStringList> expected;
    for (auto finding = GetParam().findings.cbegin(); finding != GetParam().findings.cend(); ++finding) {
        if (!ofSeveralRows.contains(finding.key()))
            expected.insert(finding.key(), finding.value());
    }
    QMap<QString, QStringList> found;
    auto const store = Open(OpenMode::ReadOnly);
    for (char const* table : {"ServerConfiguration",
                              "AuthenticationConfiguration",
                              "ProductConfiguration",
                              "FolderConfiguration",
                              "FileConfiguration",
                              "GeneratedFileConfiguration",
                              "BaseFileConfiguration",
                              "Schedules"}) {
        for (QVector<QVariant> const& row :
             RawStore(StorePath()).Rows("SELECT id FROM %1 ORDER BY id"_q.arg(QLatin1String(table)))) {
            auto const findings = FindInRow(store, table, row.first().toInt());
            ASSERT_TRUE(findings);
            for (Finding const& finding : *findings) {
                ASSERT_EQ(finding.rows.size(), 1U);
                found[QLatin1String(finding.kind->code)].append(TextOf(finding.rows.front()));
            }
        }
    }
    EXPECT_EQ(found, expected);
}

TEST_P(SingleDefect, IsFixedAndNothingElseIsTouched)
{
    Defect const& defect = GetParam();
    FindingKind const& kind = KindOf(defect.code);
    EXPECT_EQ(kind.isFixable, defect.fixed != nullptr);
    RawStore(StorePath()).Run(QString::fromUtf8(defect.statements));
    QString const expected = folder.filePath("expected.db"_q);
    WriteFile(expected, ReadFile(StorePath()));
    StoreRows const before = ComparableRows(StorePath());
    if (defect.fixed != nullptr)
        RawStore(expected).Run(QString::fromUtf8(defect.fixed));

    auto const dry = Fix(Open(OpenMode::OpenExisting), kind, FixMode::DryRun);
    ASSERT_TRUE(dry);
    EXPECT_EQ(ComparableRows(StorePath()), before);

    auto const first = Fix(Open(OpenMode::OpenExisting), kind, FixMode::BackUpAndFix);
    ASSERT_TRUE(first);
    EXPECT_EQ(ComparableRows(StorePath()), ComparableRows(expected));
    EXPECT_EQ(ActionsOf(*dry), ActionsOf(*first));
    EXPECT_EQ(first->backup.isNull(), !kind.isFixable);
    EXPECT_EQ(first->fixed.empty(), !kind.isFixable);
    if (!kind.isFixable)
        return;
    EXPECT_TRUE(first->left.empty());
    EXPECT_EQ(ComparableRows(first->backup), before);
    EXPECT_FALSE(Find().contains(QLatin1String(defect.code)));

    QMap<QString, QByteArray> const files = FolderContents(folder.path());
    auto const second = Fix(Open(OpenMode::OpenExisting), kind, FixMode::BackUpAndFix);
    ASSERT_TRUE(second);
    EXPECT_TRUE(second->fixed.empty() && second->left.empty() && second->backup.isNull());
    EXPECT_EQ(FolderContents(folder.path()), files);
}

INSTANTIATE_TEST_SUITE_P(All, SingleDefect, testing::ValuesIn(AllDefects()), [](auto const& defect) {
    std::string name = std::to_string(defect.index) + "_" + defect.param.code;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});
