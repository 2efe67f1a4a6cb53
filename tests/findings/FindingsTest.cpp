#include "tools/findings/Findings.h"

#include "DefectStore.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

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
using tandry::findings::FoundRow;
using tandry::findings::Severity;

namespace {

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

    QTemporaryDir folder;
};

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
        expected.append("| `%1` | %2 | %3 |"_q.arg(QLatin1String(kind.code),
                                                   QLatin1String(kind.severity == Severity::Fault ? "fault" : "note"),
                                                   QLatin1String(kind.meaning)));
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

TEST_P(SingleDefect, IsFoundWithItsFollowersAndNothingElse)
{
    RawStore(StorePath()).Run(QString::fromUtf8(GetParam().statements));
    EXPECT_EQ(Find(), GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(All, SingleDefect, testing::ValuesIn(AllDefects()), [](auto const& defect) {
    std::string name = std::to_string(defect.index) + "_" + defect.param.code;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});
