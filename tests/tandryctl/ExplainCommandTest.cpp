#include "ToolFixture.h"

#include "config/FolderConfigManager.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/RawStore.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>

using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

class ExplainCommandTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    /// Records the folder "r" with the file "a.txt" as root 1 of account 1 on server 1.
    void RecordFile()
    {
        RunSuccessfully({"server"_q, "add"_q, "--dav-url"_q, "https://h/dav"_q, "--alias"_q, "office"_q});
        RunSuccessfully({"account"_q, "add"_q, "--user"_q, "ada"_q, "--server"_q, "1"_q});
        MakeDirectory("r"_q);
        WriteFile("r/a.txt"_q, "12345678");
        RunSuccessfully({"root"_q, "add"_q, At("r"), "--server-path"_q, "/s"_q, "--account"_q, "1"_q});
        RunSuccessfully({"scan"_q});
    }

    void MarkAsSynchronised()
    {
        Sql("UPDATE FileConfiguration SET syncStatus = 9; UPDATE FolderConfiguration SET syncStatus = 9;"_q);
    }

    QJsonObject Explain(QStringList const& arguments, int status = 0)
    {
        RunResult const ran = Run(QStringList{"explain"_q} + arguments + QStringList{"--json"_q});
        EXPECT_EQ(ran.status, status) << ran.err.toStdString();
        EXPECT_EQ(ran.json().size(), 1);
        return ran.json().first().toObject();
    }

    static QStringList Hindrances(QJsonObject const& explanation)
    {
        QStringList codes;
        for (QJsonValue const hindrance : explanation.value("hindrances"_q).toArray())
            codes.append(hindrance.toObject().value("code"_q).toString());
        return codes;
    }

    /// Returns the facts of a part with this name, in words if they have some.
    static QStringList Facts(QJsonObject const& explanation, char const* part, char const* name)
    {
        QStringList values;
        for (QJsonValue const value : explanation.value("parts"_q).toArray()) {
            if (value.toObject().value("part"_q) != QString::fromUtf8(part))
                continue;
            for (QJsonValue const entry : value.toObject().value("facts"_q).toArray()) {
                QJsonObject const fact = entry.toObject();
                if (fact.value("name"_q) == QString::fromUtf8(name))
                    values.append(fact.value(fact.contains("words"_q) ? "words"_q : "value"_q).toVariant().toString());
            }
        }
        return values;
    }
};

} // namespace

TEST_F(ExplainCommandTest, FileThatIsAsRecordedIsOnlyNotSynchronised)
{
    RecordFile();
    QJsonObject const explanation = Explain({At("r/a.txt")});
    EXPECT_EQ(explanation.value("onRecord"_q), true);
    EXPECT_EQ(Hindrances(explanation), QStringList{"status"_q});
    EXPECT_EQ(Facts(explanation, "place", "inside"), QStringList{"true"_q});
    EXPECT_EQ(Facts(explanation, "record", "syncStatus"), QStringList{"2 not synced"_q});
    EXPECT_EQ(Facts(explanation, "folders", "root"), QStringList{"1 '%1'"_q.arg(At("r"))});
    EXPECT_EQ(Facts(explanation, "owners", "account"), QStringList{"1 'ada'"_q});
    EXPECT_EQ(Facts(explanation, "owners", "server"), QStringList{"1 'office'"_q});
    EXPECT_EQ(Facts(explanation, "owners", "schedule"), QStringList{"1, the default schedule"_q});
    EXPECT_EQ(Facts(explanation, "disk", "kind"), QStringList{"file"_q});
    EXPECT_EQ(Facts(explanation, "disk", "size"), QStringList{"8"_q});
    EXPECT_EQ(Facts(explanation, "disk", "comparedWithRecord"), QStringList{"same"_q});
}

TEST_F(ExplainCommandTest, NothingKeepsASynchronisedFileFromBeingInSync)
{
    RecordFile();
    MarkAsSynchronised();
    QJsonObject const explanation = Explain({At("r/a.txt")});
    EXPECT_EQ(Hindrances(explanation), QStringList());
    EXPECT_TRUE(explanation.value("conclusion"_q).toString().startsWith("Nothing on record"_q));
    EXPECT_EQ(Hindrances(Explain({At("r")})), QStringList());
}

TEST_F(ExplainCommandTest, PlainTextHasAQuestionForEachPartAndEndsWithTheConclusion)
{
    RecordFile();
    QString const text = RunSuccessfully({"explain"_q, At("r/a.txt")});
    EXPECT_TRUE(text.startsWith(At("r/a.txt") + "\n\nDoes it lie in a root?\n  inside  "_q)) << text.toStdString();
    EXPECT_TRUE(text.contains("\n\nFile 1\n  id "_q)) << text.toStdString();
    EXPECT_TRUE(text.contains(QRegularExpression("\n  syncStatus +2 not synced\n"_q))) << text.toStdString();
    EXPECT_TRUE(text.endsWith("\n\nNot in sync: the status of the file is 2 not synced.\n"_q)) << text.toStdString();
}

TEST_F(ExplainCommandTest, WhatStandsOnDiskIsComparedWithTheRow)
{
    RecordFile();
    MarkAsSynchronised();
    QString const path = At("r/a.txt");

    WriteFile("r/a.txt"_q, "123");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTimeUtc().addDays(1), QFileDevice::FileModificationTime));
    file.close();
    QJsonObject explanation = Explain({path});
    EXPECT_EQ(Hindrances(explanation), QStringList({"other-size"_q, "newer"_q}));
    EXPECT_EQ(Facts(explanation, "disk", "comparedWithRecord"), QStringList{"other size, newer"_q});

    Sql("UPDATE FileConfiguration SET size = 3, lastModifiedDateTime = 4102444800000;"_q);
    EXPECT_EQ(Hindrances(Explain({path})), QStringList{"older"_q});

    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(Hindrances(Explain({path})), QStringList{"missing"_q});

    MakeDirectory("r/a.txt"_q);
    explanation = Explain({path});
    EXPECT_EQ(Hindrances(explanation), QStringList{"other-kind"_q});
    EXPECT_EQ(Facts(explanation, "disk", "kind"), QStringList{"folder"_q});
}

TEST_F(ExplainCommandTest, UnknownPathHasTheFoldersOnRecordAboveItAndExitStatusOne)
{
    RecordFile();
    QJsonObject const explanation = Explain({At("r/no/such/file")}, 1);
    EXPECT_EQ(explanation.value("onRecord"_q), false);
    EXPECT_EQ(Facts(explanation, "folders", "root"), QStringList{"1 '%1'"_q.arg(At("r"))});
    EXPECT_EQ(Hindrances(explanation), QStringList{"not-recorded"_q});
    EXPECT_EQ(Hindrances(Explain({"/elsewhere"_q}, 1)), QStringList({"outside"_q, "not-recorded"_q}));
    RunResult const plain = Run({"explain"_q, "/elsewhere"_q});
    EXPECT_EQ(plain.status, 1);
    EXPECT_TRUE(plain.out.endsWith("Not in sync: it lies in no root, and it is not on record.\n"_q));
}

TEST_F(ExplainCommandTest, PathBehindALinkIsLookedUpWhereItLeads)
{
    RecordFile();
    Link("r", "link"_q);
    QJsonObject const file = Explain({At("link/a.txt")});
    EXPECT_EQ(file.value("path"_q), At("r/a.txt"));
    EXPECT_EQ(Facts(file, "lookup", "given"), QStringList{At("link/a.txt")});
    EXPECT_EQ(Facts(file, "lookup", "symbolicLink"), QStringList{At("link")});
    EXPECT_EQ(Facts(file, "lookup", "leadsTo"), QStringList{At("r/a.txt")});
    EXPECT_EQ(Facts(file, "lookup", "lookedUp"), QStringList{At("r/a.txt")});
    EXPECT_EQ(Hindrances(file), QStringList{"status"_q});
    EXPECT_EQ(Explain({At("link")}).value("path"_q), At("r"));

    QJsonObject const unknown = Explain({At("link/new/b.txt")}, 1);
    EXPECT_EQ(unknown.value("path"_q), At("r/new/b.txt"));
    EXPECT_EQ(Facts(unknown, "folders", "root"), QStringList{"1 '%1'"_q.arg(At("r"))});
    EXPECT_EQ(Hindrances(unknown), QStringList{"not-recorded"_q});

    QString const text = RunSuccessfully({"explain"_q, At("link/a.txt")});
    EXPECT_TRUE(text.startsWith(At("r/a.txt") + "\n\nWhich path was looked up?\n  given "_q)) << text.toStdString();
}

TEST_F(ExplainCommandTest, PathInARootThatWasRecordedByALinkIsLookedUpBelowTheLink)
{
    MakeDirectory("r"_q);
    WriteFile("r/a.txt"_q);
    Link("r", "link"_q);
    RunSuccessfully({"root"_q, "add"_q, At("link"), "--server-path"_q, "/s"_q});
    RunSuccessfully({"scan"_q});
    QJsonObject const file = Explain({At("r/a.txt")});
    EXPECT_EQ(file.value("path"_q), At("link/a.txt"));
    EXPECT_EQ(Facts(file, "lookup", "symbolicLink"), QStringList{At("link")});
    EXPECT_EQ(Facts(Explain({At("link/a.txt")}), "lookup", "given"), QStringList()) << "it is on record as given";
    EXPECT_EQ(Facts(Explain({At("link/new")}, 1), "lookup", "given"), QStringList()) << "the root itself is the link";
}

TEST_F(ExplainCommandTest, LinkToAFolderInARootIsNotFollowed)
{
    RecordFile();
    MakeDirectory("r/sub"_q);
    WriteFile("r/sub/b.txt"_q);
    MakeDirectory("outside"_q);
    WriteFile("outside/c.txt"_q);
    Link("sub", "r/inner"_q);
    Link("../outside", "r/outer"_q);
    Link("nowhere", "r/broken"_q);
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(Explain({At("r/inner/b.txt")}).value("path"_q), At("r/sub/b.txt"));
    QJsonObject const outside = Explain({At("r/outer/c.txt")}, 1);
    EXPECT_EQ(outside.value("path"_q), At("r/outer/c.txt"));
    EXPECT_EQ(Facts(outside, "lookup", "symbolicLink"), QStringList{At("r/outer")});
    EXPECT_EQ(Facts(outside, "lookup", "leadsTo"), QStringList{At("outside/c.txt")});
    EXPECT_EQ(Hindrances(outside), (QStringList{"behind-link"_q, "not-recorded"_q}));
    EXPECT_EQ(Hindrances(Explain({At("r/inner")}, 1)), (QStringList{"not-recorded"_q, "link-to-folder"_q}));
    EXPECT_EQ(Hindrances(Explain({At("r/broken")}, 1)), (QStringList{"not-recorded"_q, "link-to-nothing"_q}));
}

TEST_F(ExplainCommandTest, LinkThatLeadsToNoRootIsNamed)
{
    RecordFile();
    MakeDirectory("outside"_q);
    Link("outside", "link"_q);
    QJsonObject const explanation = Explain({At("link/c.txt")}, 1);
    EXPECT_EQ(explanation.value("path"_q), At("link/c.txt"));
    EXPECT_EQ(Facts(explanation, "lookup", "leadsTo"), QStringList{At("outside/c.txt")});
    EXPECT_EQ(Facts(Explain({At("outside/c.txt")}, 1), "lookup", "given"), QStringList()) << "no link";
}

TEST_F(ExplainCommandTest, RuleOfEachPathAgreesWithTheManagers)
{
    struct Row
    {
        QString path;
        char const* rule;
    };
    Sql("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId, folderOption) VALUES "
        "(1, '/R', 0, 1, 1), (2, '/slash/', 0, 2, 1);"_q);
    QVector<Row> const rows{
        {"/R"_q, "It is the path of root 1 '/R'."},
        {"/r"_q, "It is the path of root 1 '/R'. They differ in case, which does not matter here."},
        {"/R/a"_q, "It begins with the path of root 1 '/R' and a slash."},
        {"/R/a/b"_q, "It begins with the path of root 1 '/R' and a slash."},
        {"/R2"_q, "It begins like the path of root 1 '/R', but goes on without a slash."},
        {"/slash/a"_q, "The path of root 2 '/slash/' ends in a slash, so all paths that begin with it lie in it."},
        {"/R/.{synctemp}/a"_q, "A path that contains .{SyncTemp} is that of a temporary file and lies in no root."},
        {"/other"_q, "It does not begin with the path of any root."},
    };
    auto const store = sync::database::SqliteDatabaseFactory::Open(StorePath());
    ASSERT_NE(store, nullptr);
    sync::config::FolderConfigManager folders(store, nullptr);
    for (Row const& row : rows) {
        QJsonObject const explanation = Explain({row.path}, row.path == "/R"_q ? 0 : 1);
        EXPECT_EQ(Facts(explanation, "place", "rule"), QStringList{QString::fromUtf8(row.rule)});
        bool const isInside = folders.IsInExistingClientFolder(row.path, -1, false);
        EXPECT_EQ(Facts(explanation, "place", "inside"), QStringList{QVariant(isInside).toString()});
        EXPECT_EQ(Facts(explanation, "place", "rootId").isEmpty(), !isInside) << row.path.toStdString();
        if (isInside) {
            bool const byOption = folders.IsInExistingClientFolder(row.path, -1, true);
            EXPECT_EQ(Facts(explanation, "place", "insideByFolderOption"), QStringList{QVariant(byOption).toString()});
        }
    }
}

TEST_F(ExplainCommandTest, BrokenReferencesAreNamed)
{
    RecordFile();
    MarkAsSynchronised();
    QString const path = At("r/a.txt");
    Sql("UPDATE AuthenticationConfiguration SET serverId = 7;"_q);
    EXPECT_EQ(Hindrances(Explain({path})), QStringList{"no-server"_q});
    Sql("UPDATE FolderConfiguration SET authenticationId = 8;"_q);
    EXPECT_EQ(Hindrances(Explain({path})), QStringList{"no-account"_q});
    Sql("UPDATE FileConfiguration SET folderConfigurationId = 9;"_q);
    QJsonObject const explanation = Explain({path});
    EXPECT_EQ(Facts(explanation, "folders", "missing"), QStringList{"9, which is not on record"_q});
    EXPECT_EQ(Hindrances(explanation).first(), "no-folder"_q);
    Sql("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (9, '/x', 10, 1), "
        "(10, '/y', 9, 1);"_q);
    EXPECT_TRUE(Hindrances(Explain({path})).contains("ring"_q));
}

TEST_F(ExplainCommandTest, LinksInBothDirectionsAndGeneratedFiles)
{
    RecordFile();
    Link("a.txt", "r/l"_q);
    RunSuccessfully({"scan"_q});
    int const link = RawStore(StorePath()).Value("SELECT id FROM FileConfiguration WHERE name = 'l'"_q).toInt();
    Sql("INSERT INTO GeneratedFileConfiguration (id, clientPath, parentFileId, fileType, rootFolderId, syncStatus) "
        "VALUES (5, '/g/thumb', 1, 1, 1, 9);"_q);
    QJsonObject const target = Explain({At("r/a.txt")});
    EXPECT_EQ(Facts(target, "linked-from", "file"), QStringList{"%1 '%2'"_q.arg(link).arg(At("r/l"))});
    EXPECT_EQ(Facts(target, "generated", "file"), QStringList{"5 '/g/thumb'"_q});
    EXPECT_EQ(Facts(Explain({At("r/l")}), "links", "link"), QStringList{"1 '%1'"_q.arg(At("r/a.txt"))});
    QJsonObject const generated = Explain({"--id"_q, "5"_q, "--type"_q, "generated"_q});
    EXPECT_EQ(Facts(generated, "source", "file"), QStringList{"1 '%1'"_q.arg(At("r/a.txt"))});
    Sql("DELETE FROM FileConfiguration WHERE id = 1;"_q);
    EXPECT_TRUE(Hindrances(Explain({"/g/thumb"_q})).contains("no-source"_q));
}

TEST_F(ExplainCommandTest, LinksToAFileOfALargeStoreAreSearchedOnDemand)
{
    RecordFile();
    Sql("INSERT INTO FileConfiguration (id, clientPath, fileLinks) VALUES (60000, '/l', "
        "'<F FileDate=\"\"><L FileId=\"1\" Path=\"p\" RefId=\"\" ServerFileId=\"\"/></F>'), (60001, '/m', "
        "'<F FileDate=\"\"><L FileId=\"10\" Path=\"p\" RefId=\"\" ServerFileId=\"\"/></F>');"_q);
    QJsonObject const quick = Explain({At("r/a.txt")});
    EXPECT_EQ(Facts(quick, "linked-from", "not searched").size(), 1);
    EXPECT_EQ(Facts(quick, "linked-from", "file"), QStringList());
    EXPECT_EQ(Facts(Explain({At("r/a.txt"), "--thorough"_q}), "linked-from", "file"), QStringList{"60000 '/l'"_q});
}

TEST_F(ExplainCommandTest, NeighboursThatDifferInCaseOrUnicodeFormAreNamed)
{
    RecordFile();
    WriteFile("r/A.TXT"_q, "1");
    WriteFile(QString::fromUtf8("r/\u00e9"), "1");
    WriteFile(QString::fromUtf8("r/e\u0301"), "1");
    QJsonObject const cased = Explain({At("r/a.txt")});
    EXPECT_EQ(Facts(cased, "neighbours", "on disk"), QStringList{"'A.TXT'"_q});
    EXPECT_EQ(Facts(cased, "neighbours", "on record"), QStringList());
    RunSuccessfully({"scan"_q});
    QString const id =
        RawStore(StorePath()).Value("SELECT id FROM FileConfiguration WHERE name = 'A.TXT'"_q).toString();
    EXPECT_EQ(Facts(Explain({At("r/a.txt")}), "neighbours", "on record"), QStringList{id + " 'A.TXT'"_q});
    EXPECT_EQ(Facts(Explain({At(QString::fromUtf8("r/\u00e9"))}), "neighbours", "on disk"),
              QStringList{QString::fromUtf8("'e\u0301' not in NFC")});
    // Of an unknown path, the first name that is not on record counts.
    EXPECT_EQ(Facts(Explain({At("r/a.TXT/x")}, 1), "neighbours", "on record").size(), 2);
}

TEST_F(ExplainCommandTest, RowsAreFoundByPathOnTheServerAndById)
{
    RecordFile();
    QString const path = At("r/a.txt");
    for (QStringList const& arguments : {QStringList{"--server"_q, "/s/a.txt"_q}, QStringList{"--id"_q, "1"_q}})
        EXPECT_EQ(Explain(arguments).value("path"_q), path);
    for (QStringList const& arguments :
         {QStringList{"--server"_q, "/s"_q}, QStringList{"--id"_q, "1"_q, "--type"_q, "folder"_q}})
        EXPECT_EQ(Explain(arguments).value("path"_q), At("r"));
    Sql("INSERT INTO FolderConfiguration (clientPath, serverPath, parentId, rootId) VALUES ('/q', '/odd', 1, 1);"_q);
    EXPECT_EQ(Explain({"--server"_q, "/odd"_q}).value("path"_q), "/q"_q);

    Sql("INSERT INTO BaseFileConfiguration (id, clientPath, rootFolderId, fileType) VALUES (4, '/b', 1, 2);"_q);
    EXPECT_EQ(Explain({"--id"_q, "4"_q, "--type"_q, "base"_q}).value("path"_q), "/b"_q);

    EXPECT_EQ(Run({"explain"_q, "--server"_q, "/none"_q}).status, 1);
    EXPECT_EQ(Run({"explain"_q, "--id"_q, "77"_q}).status, 1);
    EXPECT_EQ(Run({"explain"_q}).status, 2);
    EXPECT_EQ(Run({"explain"_q, path, "--id"_q, "1"_q}).status, 2);
}

TEST_F(ExplainCommandTest, UnknownPathOnTheServerIsExplainedByTheOneHereThatBelongsToIt)
{
    RecordFile();
    QJsonObject const explanation = Explain({"--server"_q, "/s/new/b.txt"_q}, 1);
    EXPECT_EQ(explanation.value("path"_q), At("r/new/b.txt"));
    EXPECT_EQ(Facts(explanation, "lookup", "given"), QStringList{"/s/new/b.txt"_q});
    EXPECT_EQ(Facts(explanation, "folders", "root"), QStringList{"1 '%1'"_q.arg(At("r"))});
    EXPECT_EQ(Hindrances(explanation), QStringList{"not-recorded"_q});
    EXPECT_EQ(Facts(explanation, "lookup", "not searched"), QStringList());

    Sql("INSERT INTO FolderConfiguration (id, clientPath, serverPath) VALUES (60000, '/far', '/far');"_q);
    EXPECT_EQ(Facts(Explain({"--server"_q, "/s/new"_q}, 1), "lookup", "not searched").size(), 1);

    Sql("UPDATE FileConfiguration SET serverPath = '/s/other' WHERE id = 1;"_q);
    EXPECT_EQ(Run({"explain"_q, "--server"_q, "/s/a.txt"_q}).out, QString())
        << "the file has another path on the server";
}

TEST_F(ExplainCommandTest, TwinsAreAllExplained)
{
    RecordFile();
    Sql("INSERT INTO FileConfiguration (id, clientPath, folderConfigurationId, rootFolderId, fileType) VALUES "
        "(7, '%1', 1, 1, 0);"_q.arg(At("r/a.txt")));
    QJsonObject const explanation = Explain({At("r/a.txt")});
    EXPECT_EQ(Facts(explanation, "record", "id"), QStringList({"1"_q, "7"_q}));
    EXPECT_TRUE(Hindrances(explanation).contains("twin"_q));
}
