#include "Screen.h"
#include "ToolFixture.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/RecordColumns.h"
#include "support/RawStore.h"
#include "tools/tandryctl/Text.h"

#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include <map>

using namespace sync::config;
using namespace tandryctl::test;
using tandry::test::RawStore;

namespace {

/// A value as SQL has it and as the tool prints it in JSON.
struct Cell
{
    QString sql;
    QJsonValue json;
};

/// Returns a value that differs from those of a row's other columns.
Cell DistinctCell(ColumnKind kind, int position)
{
    QString const text = "text %1"_q.arg(position);
    switch (kind) {
    case ColumnKind::Integer:
    case ColumnKind::LongInteger:
    case ColumnKind::Enumeration:
    case ColumnKind::BitField:
        return {QString::number(100 + position), 100 + position};
    case ColumnKind::Text:
        return {"'%1'"_q.arg(text), text};
    case ColumnKind::Time:
        return {QString::number(position * 1000), "1970-01-01T00:00:%1.000Z"_q.arg(position, 2, 10, QLatin1Char('0'))};
    case ColumnKind::Properties:
        return {"'<N><K><![CDATA[%1]]></K></N>'"_q.arg(text), QJsonObject{{"K"_q, text}}};
    case ColumnKind::Links:
        return {
            "'<F FileDate=\"\"><L FileId=\"5\" Path=\"p\" RefId=\"r\" ServerFileId=\"q\"/></F>'"_q,
            QJsonArray{QJsonObject{{"fileId"_q, 5}, {"path"_q, "p"_q}, {"refId"_q, "r"_q}, {"serverFileId"_q, "q"_q}}}};
    }
    return {};
}

class ListCommandsTest : public ToolTest
{
protected:
    void SetUp() override { Init(); }

    QStringList const onStore{"--store"_q, StorePath()};

    void Sql(QString const& statements) { RawStore(StorePath()).Run(statements); }

    QStringList Column(QStringList const& arguments, char const* column)
    {
        QStringList values;
        for (QJsonValue const row : Json(arguments))
            values.append(row.toObject().value(QString::fromUtf8(column)).toVariant().toString());
        return values;
    }

    /// Returns the names of a table's columns in the order of the keys of a JSON object.
    template <class Record>
    static QStringList ColumnNames()
    {
        QStringList names;
        for (RecordColumn<Record> const& column : RecordColumns<Record>())
            names.append(column.name());
        names.sort();
        return names;
    }

    /// Inserts row 1 with a distinct value in each column, and returns all columns as the tool prints them.
    template <class Record>
    QJsonObject InsertDistinctRow(char const* table)
    {
        QStringList names;
        QStringList values;
        QJsonObject printed;
        auto const& columns = RecordColumns<Record>();
        for (int position = 0; position < columns.size(); ++position) {
            Cell const cell = position == 0 ? Cell{"1"_q, 1} : DistinctCell(columns[position].kind(), position);
            names.append(columns[position].name());
            values.append(cell.sql);
            printed.insert(columns[position].name(), cell.json);
        }
        Sql("INSERT INTO %1 (%2) VALUES (%3);"_q.arg(
            QString::fromUtf8(table), names.join(", "_q), values.join(", "_q)));
        return printed;
    }

    /// Inserts root 1, folder 2 and the files c (1 byte), a (3 bytes, out of sync) and b (2 bytes), and a file of
    /// another root.
    void AddFiles()
    {
        Sql("INSERT INTO FolderConfiguration (id, name, clientPath, serverPath, parentId, rootId) VALUES "
            "(1, 'r', '/r', '/s', 0, 1), (2, 'f', '/r/f', '/s/f', 1, 1);"
            "INSERT INTO FileConfiguration (folderConfigurationId, name, clientPath, syncStatus, size, rootFolderId, "
            "fileType) VALUES (1, 'c', '/r/c', 5, 1, 1, 0), (2, 'a', '/r/f/a', 2, 3, 1, 0), "
            "(2, 'b', '/r/f/b', 5, 2, 1, 0), (9, 'x', '/q/x', 5, 0, 9, 0);"_q);
    }
};

} // namespace

TEST_F(ListCommandsTest, EmptyStoreReportsThatNothingIsOnRecord)
{
    for (char const* what : {"roots", "folders", "files"}) {
        RunResult const ran = Run({"list"_q, QString::fromUtf8(what)});
        EXPECT_EQ(ran.status, 1) << what;
        EXPECT_EQ(ran.out, QString());
        EXPECT_TRUE(ran.err.startsWith("tandryctl: no %1 on record; "_q.arg(QString::fromUtf8(what))));
    }
}

TEST_F(ListCommandsTest, EmptyStoreInJsonIsAnEmptyArray)
{
    RunResult const ran = Run({"list"_q, "files"_q, "--json"_q});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.json().size(), 0);
}

TEST_F(ListCommandsTest, JsonKeysOfFoldersAreTheColumnsWithoutTheProperties)
{
    AddFiles();
    QStringList expected = ColumnNames<FolderConfiguration>();
    expected.removeOne("nameValueProperties"_q);
    EXPECT_EQ(Json({"list"_q, "folders"_q}).first().toObject().keys(), expected);
}

TEST_F(ListCommandsTest, JsonKeysOfFilesAreTheColumns)
{
    AddFiles();
    EXPECT_EQ(Json({"list"_q, "files"_q}).first().toObject().keys(), ColumnNames<FileConfiguration>());
}

TEST_F(ListCommandsTest, EveryColumnOfAFileShowsItsOwnValue)
{
    QJsonObject const expected = InsertDistinctRow<FileConfiguration>("FileConfiguration");
    EXPECT_EQ(JsonObject({"list"_q, "files"_q}), expected);
}

TEST_F(ListCommandsTest, EveryColumnOfAFolderShowsItsOwnValue)
{
    QJsonObject expected = InsertDistinctRow<FolderConfiguration>("FolderConfiguration");
    expected.remove("nameValueProperties"_q);
    EXPECT_EQ(JsonObject({"list"_q, "folders"_q}), expected);
}

TEST_F(ListCommandsTest, RootsAreThoseWithoutAParent)
{
    AddFiles();
    EXPECT_EQ(Column({"list"_q, "roots"_q}, "id"), QStringList{"1"_q});
}

TEST_F(ListCommandsTest, FoldersOfOneRoot)
{
    AddFiles();
    Sql("INSERT INTO FolderConfiguration (id, clientPath, parentId, rootId) VALUES (3, '/q', 0, 3);"_q);
    EXPECT_EQ(Column({"list"_q, "folders"_q}, "id").size(), 3);
    EXPECT_EQ(Column({"list"_q, "folders"_q, "--root"_q, "1"_q}, "id"), QStringList({"1"_q, "2"_q}));
    EXPECT_EQ(Run({"list"_q, "folders"_q, "--root"_q, "2"_q}).status, 1);
}

TEST_F(ListCommandsTest, FoldersOfOneStatusByItsNameOrNumber)
{
    AddFiles();
    Sql("UPDATE FolderConfiguration SET syncStatus = id"_q);
    for (char const* status : {"out-of-sync", "2"})
        EXPECT_EQ(Column({"list"_q, "folders"_q, "--status"_q, QString::fromUtf8(status)}, "id"), QStringList{"2"_q});
    RunResult const none = Run({"list"_q, "folders"_q, "--status"_q, "placed"_q});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "tandryctl: no folders with this status on record; leave out --status to see the others\n"_q);
    EXPECT_EQ(Run({"list"_q, "folders"_q, "--status"_q, "not-synced"_q}).status, 2);
}

TEST_F(ListCommandsTest, FilesByFolderRootAndStatus)
{
    AddFiles();
    EXPECT_EQ(Column({"list"_q, "files"_q}, "name").size(), 4);
    EXPECT_EQ(Column({"list"_q, "files"_q, "--folder"_q, "2"_q}, "name"), QStringList({"a"_q, "b"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--root"_q, "1"_q}, "name"), QStringList({"c"_q, "a"_q, "b"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--status"_q, "2"_q}, "name"), QStringList{"a"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--folder"_q, "2"_q, "--status"_q, "5"_q}, "name"), QStringList{"b"_q});
    EXPECT_EQ(Run({"list"_q, "files"_q, "--status"_q, "-4"_q}).status, 1);
}

TEST_F(ListCommandsTest, StatusIsAcceptedByNameAndShownWithIt)
{
    AddFiles();
    for (char const* status : {"2", "not-synced", "Not synced", "NOT-SYNCED"})
        EXPECT_EQ(Column({"list"_q, "files"_q, "--status"_q, QString::fromUtf8(status)}, "name"), QStringList{"a"_q})
            << status;
    QString const table = RunSuccessfully({"list"_q, "files"_q});
    EXPECT_TRUE(table.contains("\n2 not synced  "_q)) << table.toStdString();
    EXPECT_TRUE(table.contains("\n5             "_q)) << table.toStdString(); // the client's own
    EXPECT_TRUE(RunSuccessfully({"list"_q, "roots"_q}).contains("  0  "_q));

    RunResult const wrong = Run({"list"_q, "files"_q, "--status"_q, "synced"_q});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.contains("syncing, not-synced and link-discovered"_q)) << wrong.err.toStdString();
}

TEST_F(ListCommandsTest, RightsAndOptionsOfAFileAreShownInWords)
{
    Sql("INSERT INTO FileConfiguration (clientPath, privileges, syncOption, fileType) VALUES ('/f', 41, 64, 0);"_q);
    QString const file = RunSuccessfully({"file"_q, "show"_q, "1"_q});
    for (char const* line : {"\nprivileges              view, delete, 32\n",
                             "\nsyncOption              repath required\n",
                             "\nfileType                0 file\n"})
        EXPECT_TRUE(file.contains(QString::fromUtf8(line))) << line << file.toStdString();
    QJsonObject const object = JsonObject({"file"_q, "show"_q, "1"_q});
    EXPECT_EQ(object.value("privileges"_q), 41);
    EXPECT_EQ(object.value("syncOption"_q), 64);
}

TEST_F(ListCommandsTest, TimesAreLocalWithTheirZoneOrInUtc)
{
    Sql("INSERT INTO FileConfiguration (clientPath, lastModifiedDateTime) VALUES ('/f', 1720000000123);"_q);
    auto const list = [&](QStringList const& options) {
        RunResult const ran = RunWithoutStore(QStringList{"--store"_q, StorePath(), "list"_q, "files"_q} + options,
                                              {"TZ=Asia/Kolkata"_q});
        EXPECT_EQ(ran.status, 0);
        return ran.out;
    };
    EXPECT_TRUE(list({}).contains("  2024-07-03T15:16:40.123+05:30  "_q)) << list({}).toStdString();
    EXPECT_TRUE(list({"--utc"_q}).contains("  2024-07-03T09:46:40.123Z  "_q));
    EXPECT_TRUE(list({"--json"_q}).contains("\"2024-07-03T09:46:40.123Z\""_q));
}

TEST_F(ListCommandsTest, FilesOfAnUnknownFolderOrRootFindNothing)
{
    RunResult const unknown = Run({"list"_q, "files"_q, "--folder"_q, "77"_q});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.err.contains("folder 77"_q));
    EXPECT_EQ(Run({"list"_q, "files"_q, "--root"_q, "77"_q}).status, 1);
}

TEST_F(ListCommandsTest, FilesByKind)
{
    AddFiles();
    Sql("INSERT INTO GeneratedFileConfiguration (name, fileType, rootFolderId, folderConfigurationId) VALUES "
        "('g', 1, 1, 2), ('h', 1, 1, 1);"
        "INSERT INTO BaseFileConfiguration (name, fileType, rootFolderId, folderConfigurationId) VALUES ('i', 2, 1, 2);"_q);
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "generated"_q}, "name"), QStringList({"g"_q, "h"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "generated"_q, "--folder"_q, "2"_q}, "name"),
              QStringList{"g"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "BASE"_q, "--root"_q, "1"_q}, "name"), QStringList{"i"_q});
    EXPECT_EQ(Column({"list"_q, "files"_q, "--type"_q, "file"_q, "--root"_q, "1"_q}, "name").size(), 3);
}

TEST_F(ListCommandsTest, FilesInEveryOrder)
{
    // Every column sorts the files differently from their ids.
    Sql("INSERT INTO FileConfiguration (id, folderConfigurationId, name, clientPath, serverPath, checkSum, "
        "createdDateTime, lastModifiedDateTime, syncStatus, lastOperationType, size) VALUES "
        "(1, 2, 'b', 'b', 'b', 'b', 2, 2, 2, 2, 2), (2, 3, 'c', 'c', 'c', 'c', 3, 3, 3, 3, 3), "
        "(3, 1, 'a', 'a', 'a', 'a', 1, 1, 1, 1, 1);"_q);
    for (char const* column : {"name",
                               "folderConfigurationId",
                               "clientPath",
                               "serverPath",
                               "checkSum",
                               "createdDateTime",
                               "lastModifiedDateTime",
                               "syncStatus",
                               "lastOperationType",
                               "size"}) {
        QString const order = QString::fromUtf8(column);
        EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, order}, "id"), QStringList({"3"_q, "1"_q, "2"_q}))
            << column;
        EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, order + "-desc"_q}, "id"),
                  QStringList({"2"_q, "1"_q, "3"_q}))
            << column;
    }
    EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, "ID-desc"_q}, "id"), QStringList({"3"_q, "2"_q, "1"_q}));
    EXPECT_EQ(Column({"list"_q, "files"_q, "--order"_q, "id"_q}, "id"), QStringList({"1"_q, "2"_q, "3"_q}));
}

TEST_F(ListCommandsTest, UnknownKindOrderOrNumberIsWrongUsage)
{
    EXPECT_EQ(Run({"list"_q, "files"_q, "--type"_q, "nonsense"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--order"_q, "1"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--status"_q, "many"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "0"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "99999999999"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--folder"_q, "1"_q, "--root"_q, "1"_q}).status, 2);
}

TEST_F(ListCommandsTest, PlainListingEscapesControlCharacters)
{
    AddRoot("a\n\x1b[31mb"_q, "/s"_q);
    QString const out = RunSuccessfully({"list"_q, "roots"_q});
    EXPECT_EQ(out.count(QLatin1Char('\n')), 2) << out.toStdString();
    EXPECT_TRUE(out.contains("a\\n\\x1b[31mb"_q));
    EXPECT_EQ(JsonObject({"list"_q, "roots"_q}).value("name"_q).toString(), "a\n\x1b[31mb"_q);
}

TEST_F(ListCommandsTest, FoldersAndFilesBeginWithTheirStatus)
{
    AddFiles();
    Sql("UPDATE FolderConfiguration SET syncStatus = 2"_q);
    for (auto const& [records, status] : std::map<QString, QString>{
             {"roots"_q, "2 out of sync"_q}, {"folders"_q, "2 out of sync"_q}, {"files"_q, "2 not synced"_q}}) {
        QString const table = RunSuccessfully({"list"_q, records});
        EXPECT_TRUE(table.startsWith("syncStatus"_q)) << table.toStdString();
        EXPECT_TRUE(table.contains("\n"_q + status)) << table.toStdString();
    }
}

TEST_F(ListCommandsTest, ColumnsArePrintedAsTheyAreNamed)
{
    AddFiles();
    EXPECT_EQ(RunSuccessfully({"list"_q, "files"_q, "--columns"_q, "size,NAME"_q}),
              "size  name\n   1  c\n   3  a\n   2  b\n   0  x\n"_q);
    EXPECT_EQ(RunSuccessfully({"list"_q, "files"_q, "--columns"_q, "name"_q, "--json"_q}),
              "[\n{\"name\":\"c\"},\n{\"name\":\"a\"},\n{\"name\":\"b\"},\n{\"name\":\"x\"}\n]\n"_q);
    EXPECT_EQ(RunSuccessfully({"list"_q, "folders"_q, "--columns"_q, "name, id"_q}),
              "name  id\nr      1\nf      2\n"_q);
    EXPECT_EQ(RunSuccessfully({"list"_q, "schedules"_q, "--columns"_q, "syncInterval"_q}),
              "syncInterval\n          30\n"_q);
}

TEST_F(ListCommandsTest, UnknownColumnIsWrongUsageWithTheNearestOne)
{
    AddFiles();
    for (char const* option : {"--columns", "--sort"}) {
        RunResult const ran = Run({"list"_q, "files"_q, QString::fromUtf8(option), "sise"_q});
        EXPECT_EQ(ran.status, 2);
        EXPECT_EQ(ran.out, QString());
        EXPECT_TRUE(ran.err.contains("no column 'sise' (did you mean 'size'?); its columns are syncStatus, id, "_q))
            << ran.err.toStdString();
    }
    EXPECT_EQ(Run({"list"_q, "files"_q, "--columns"_q, ""_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "roots"_q, "--columns"_q, "size"_q}).status, 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--sort"_q, "size"_q, "--order"_q, "size"_q}).status, 2);
}

TEST_F(ListCommandsTest, SortTakesAnyColumnInBothDirections)
{
    AddFiles();
    auto const names = [&](char const* sort) {
        return Column({"list"_q, "files"_q, "--sort"_q, QString::fromUtf8(sort)}, "name").join(QString());
    };
    EXPECT_EQ(names("size"), "xcba"_q);
    EXPECT_EQ(names("size-desc"), "abcx"_q);
    EXPECT_EQ(names("rootFolderId"), "cabx"_q) << "rows with the same value stay in the order of their ids";
    EXPECT_EQ(names("rootFolderId-desc"), "xcab"_q);
    EXPECT_EQ(Column({"list"_q, "folders"_q, "--sort"_q, "id-desc"_q}, "id"), QStringList({"2"_q, "1"_q}));
}

TEST_F(ListCommandsTest, LimitSaysHowManyMoreThereAre)
{
    AddFiles();
    for (QStringList const& format : {QStringList{}, QStringList{"--json"_q}}) {
        RunResult const ran =
            Run(QStringList{"list"_q, "files"_q, "--limit"_q, "3"_q, "--columns"_q, "name"_q} + format);
        EXPECT_EQ(ran.status, 0);
        EXPECT_EQ(ran.err, "tandryctl: 1 more; give a higher --limit to see them\n"_q);
        EXPECT_TRUE(ran.out.contains(QLatin1Char('b')));
        EXPECT_FALSE(ran.out.contains(QLatin1Char('x')));
    }
    EXPECT_EQ(Run({"list"_q, "files"_q, "--limit"_q, "4"_q}).err, QString());
    EXPECT_EQ(Run({"list"_q, "files"_q, "--limit"_q, "1"_q, "--quiet"_q}).err, QString());
    RunResult const folders = Run({"list"_q, "folders"_q, "--limit"_q, "1"_q});
    EXPECT_TRUE(folders.err.contains(" 1 more;"_q));
    EXPECT_EQ(folders.out.count(QLatin1Char('\n')), 2);
    EXPECT_EQ(Run({"list"_q, "files"_q, "--limit"_q, "0"_q}).status, 2);
}

TEST_F(ListCommandsTest, NameIsAPatternOfTheShell)
{
    Sql("INSERT INTO FileConfiguration (name, clientPath) VALUES ('a.txt', '/1'), ('A.txt', '/2'), ('é.txt', '/3'), "
        "('b.tx', '/4'), ('[x', '/5'), (NULL, '/6');"
        "INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) VALUES (1, 'r', '/r', 0, 1), "
        "(2, 'R', '/R', 0, 2);"_q);
    auto const paths = [&](char const* pattern) {
        RunResult const ran = Run(
            {"list"_q, "files"_q, "--name"_q, QString::fromUtf8(pattern), "--columns"_q, "clientPath"_q, "--json"_q});
        QString all;
        for (QJsonValue const file : ran.json())
            all += file.toObject().value("clientPath"_q).toString().mid(1);
        return all;
    };
    EXPECT_EQ(paths("*.txt"), "123"_q);
    EXPECT_EQ(paths("?.txt"), "123"_q) << "a character and not a byte";
    EXPECT_EQ(paths("[a-z].txt"), "1"_q);
    EXPECT_EQ(paths("[!a]*"), "2345"_q);
    EXPECT_EQ(paths("[^a]*"), "2345"_q);
    EXPECT_EQ(paths("[[]x"), "5"_q);
    EXPECT_EQ(paths("a"), QString());
    EXPECT_EQ(Column({"list"_q, "roots"_q, "--name"_q, "[a-z]"_q}, "name"), QStringList{"r"_q});

    RunResult const none = Run({"list"_q, "files"_q, "--name"_q, "none"_q});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err,
              "tandryctl: no files on record match 'none'; the pattern must match the whole name, and case counts\n"_q);
}

TEST_F(ListCommandsTest, LongPathDoesNotPadTheOtherLines)
{
    Sql("INSERT INTO FileConfiguration (clientPath) VALUES ('/%1'), ('/a');"_q.arg(QString(4095, QLatin1Char('x'))));
    QString const table = RunSuccessfully({"list"_q, "files"_q});
    for (QString const& line : table.split(QLatin1Char('\n')))
        EXPECT_TRUE(line.size() < 200 || line.contains("xxx"_q)) << line.toStdString();
    EXPECT_TRUE(table.contains(QString(4095, QLatin1Char('x')))) << "a file or a pipe gets the whole text";
}

TEST_F(ListCommandsTest, TableFitsTheTerminal)
{
    QString const name = QString(60, QLatin1Char('n')) + "end.txt"_q;
    Sql("INSERT INTO FileConfiguration (clientPath, name, size) VALUES ('/home/ada/%1', '%1', 7), ('/a', 'a', 1);"_q
            .arg(name));
    QStringList const command{"list"_q, "files"_q, "--columns"_q, "size,clientPath"_q};
    for (int const columns : {40, 60}) {
        RunResult const ran = RunOnScreen(onStore + command, {columns, {}});
        EXPECT_EQ(ran.status, 0);
        QStringList const lines = ran.out.split("\r\n"_q);
        ASSERT_EQ(lines.size(), 4) << ran.out.toStdString();
        EXPECT_EQ(lines.at(1).size(), columns);
        EXPECT_TRUE(lines.at(1).startsWith("   7  /home/ada/n"_q));
        EXPECT_TRUE(lines.at(1).contains("…"_q));
        EXPECT_TRUE(lines.at(1).endsWith("end.txt"_q));
        EXPECT_EQ(lines.at(2), "   1  /a"_q);
    }
    EXPECT_TRUE(RunOnScreen(onStore + command + QStringList{"--width"_q, "0"_q}, {40, {}}).out.contains(name));
    EXPECT_FALSE(RunSuccessfully(command + QStringList{"--width"_q, "40"_q}).contains(name));
}

TEST_F(ListCommandsTest, EveryListingFitsANarrowTerminal)
{
    Sql("INSERT INTO ServerConfiguration (alias, davUrl, webServiceUrl) VALUES ('Company', "
        "'https://files.example.org/',"
        " 'https://services.example.org/');"
        "INSERT INTO AuthenticationConfiguration (domain, userName, serverId) VALUES ('example.org', 'ada.lovelace', "
        "1);"
        "INSERT INTO ProductConfiguration (name, consumerKey, serverId) VALUES ('Synchroniser', 'a-long-key', 1);"
        "INSERT INTO FolderConfiguration (id, name, clientPath, serverPath, parentId, rootId, authenticationId,"
        " syncStatus) VALUES (1, 'Documents', '/home/ada/Documents', '/documents', 0, 1, 1, 2);"
        "INSERT INTO FileConfiguration (clientPath, name, size, syncStatus, lastModifiedDateTime) VALUES"
        " ('/home/ada/Documents/summer.txt', 'summer.txt', 123456, 2, 1719828000123);"
        "INSERT INTO Schedules (folderConfigurationId, startTime, expireTime, syncScheduleType, syncInterval)"
        " VALUES (1, 1719828000000, 1719828000000, 2, 15);"_q);
    QVector<QStringList> const listings{{"list"_q, "roots"_q},
                                        {"list"_q, "folders"_q},
                                        {"list"_q, "files"_q},
                                        {"list"_q, "files"_q, "--utc"_q},
                                        {"list"_q, "schedules"_q},
                                        {"server"_q, "list"_q},
                                        {"account"_q, "list"_q},
                                        {"product"_q, "list"_q}};
    for (QStringList const& listing : listings) {
        for (int const columns : {40, 60, 80}) {
            RunResult const ran = RunOnScreen(onStore + listing, {columns, {"NO_COLOR=1"_q}});
            EXPECT_EQ(ran.status, 0);
            for (QString const& line : ran.out.split("\r\n"_q)) {
                bool const isNote = line.startsWith("tandryctl: "_q);
                EXPECT_TRUE(isNote || tandryctl::DisplayWidth(line) <= columns) << line.toStdString();
            }
        }
    }
}

TEST_F(ListCommandsTest, TableThatIsTooWideShortensTimesAndThenLeavesItsLastColumnsOut)
{
    Sql("INSERT INTO FileConfiguration (clientPath, size, syncStatus, lastModifiedDateTime)"
        " VALUES ('/home/ada/Documents/summer.txt', 123456, 2, 1719828000123);"_q);
    QStringList const command = onStore + QStringList{"list"_q, "files"_q, "--utc"_q};
    auto const lines = [&](int columns) {
        return RunOnScreen(command, {columns, {"NO_COLOR=1"_q}}).out.split("\r\n"_q);
    };
    EXPECT_EQ(lines(90).at(1), "2 not synced   1  /home/ada/Documents/summer.txt  2024-07-01T10:00:00.123Z  123456"_q);
    EXPECT_TRUE(lines(66).at(1).endsWith("  2024-07-01T10:00:00.123Z  123456"_q)) << lines(66).at(1).toStdString();
    EXPECT_TRUE(lines(60).at(1).endsWith("  2024-07-01T10:00  123456"_q)) << lines(60).at(1).toStdString();
    EXPECT_TRUE(lines(50).at(1).endsWith("  2024-07-01  123456"_q)) << lines(50).at(1).toStdString();

    QStringList const narrow = lines(40);
    EXPECT_EQ(narrow.at(1), "2 not synced   1  /home/ada/…/summer.txt"_q);
    EXPECT_EQ(narrow.at(2),
              "tandryctl: the table is too wide for lastModifiedDateTime and size; --width 0 shows all columns"_q);
    QString const chosen =
        RunOnScreen(command + QStringList{"--columns"_q, "syncStatus,lastModifiedDateTime,size,id"_q},
                    {20, {"NO_COLOR=1"_q}})
            .out;
    EXPECT_TRUE(chosen.contains("2 not synced  2024-07-01  123456   1"_q)) << chosen.toStdString();
    EXPECT_FALSE(RunOnScreen(command + QStringList{"--quiet"_q}, {40, {"NO_COLOR=1"_q}}).out.contains("too wide"_q));
    EXPECT_EQ(Run({"list"_q, "files"_q, "--utc"_q, "--width"_q, "40"_q}).out.count(QLatin1Char('\n')), 2);
    EXPECT_TRUE(RunSuccessfully({"list"_q, "files"_q, "--utc"_q}).contains("  2024-07-01T10:00:00.123Z  123456\n"_q))
        << "where there is no terminal";
}

TEST_F(ListCommandsTest, NamesThatDifferInTheirUnicodeFormLookDifferent)
{
    Sql("INSERT INTO FileConfiguration (name) VALUES ('caf' || char(233)), ('cafe' || char(769));"_q);
    EXPECT_EQ(RunSuccessfully({"list"_q, "files"_q, "--columns"_q, "name"_q}), "name\ncafé\ncafe\\u0301\n"_q);
}

TEST_F(ListCommandsTest, ColoursAreForTerminalsUnlessAskedFor)
{
    AddFiles();
    QStringList const command{"list"_q, "files"_q};
    auto const hasColours = [](RunResult const& ran) { return ran.out.contains(QLatin1Char('\x1b')); };
    auto const onTerminal = [&](QStringList const& environment, QStringList const& options = {}) {
        return hasColours(RunOnScreen(onStore + command + options, {80, environment}));
    };
    EXPECT_TRUE(onTerminal({"TERM=xterm"_q}));
    EXPECT_TRUE(onTerminal({"TERM=xterm"_q, "NO_COLOR="_q})) << "empty counts as not set";
    EXPECT_FALSE(onTerminal({"TERM=xterm"_q, "NO_COLOR=1"_q}));
    EXPECT_FALSE(onTerminal({"TERM=dumb"_q}));
    EXPECT_FALSE(onTerminal({"TERM=xterm"_q}, {"--color"_q, "never"_q}));
    EXPECT_TRUE(onTerminal({"TERM=xterm"_q, "NO_COLOR=1"_q}, {"--color"_q, "always"_q}));
    EXPECT_FALSE(onTerminal({"TERM=xterm"_q}, {"--json"_q}));
    EXPECT_FALSE(hasColours(Run(command)));

    QString const always = RunSuccessfully(command + QStringList{"--color=always"_q});
    EXPECT_TRUE(always.contains("\n\x1b[33m2 not synced\x1b[0m  "_q)) << always.toStdString();
    EXPECT_EQ(QString(always).remove(QRegularExpression("\x1b\\[[0-9]*m"_q)), RunSuccessfully(command));
    EXPECT_EQ(Run(command + QStringList{"--color"_q, "red"_q}).status, 2);
}

TEST_F(ListCommandsTest, FailureIsRedOnATerminal)
{
    RunResult const ran = RunOnScreen(onStore + QStringList{"list"_q, "files"_q}, {80, {"TERM=xterm"_q}});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.out.startsWith("\x1b[31mtandryctl: no files on record"_q)) << ran.out.toStdString();
}

TEST_F(ListCommandsTest, MemoryDoesNotGrowWithTheFiles)
{
    Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60000) INSERT INTO FileConfiguration "
        "(name, clientPath, serverPath) SELECT i, printf('/%0300d', i), printf('/%0300d', i) FROM n;"_q);
    // The rows alone have 70 MiB as texts of two bytes a character.
    constexpr char const* limit = "ulimit -d 40000;";
    for (QStringList const& format : {QStringList{"--json"_q}, QStringList{}}) {
        RunResult const ran =
            RunInShell("| tail -n 2"_q, QStringList{"list"_q, "files"_q} + format, QString::fromUtf8(limit));
        EXPECT_TRUE(ran.out.contains("060000"_q)) << ran.err.toStdString();
        EXPECT_EQ(ran.err, QString());
    }
}

TEST_F(ListCommandsTest, ListingThatWaitsForItsReaderLocksNoWriterOut)
{
    Sql("PRAGMA journal_mode = DELETE;"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000) INSERT INTO FileConfiguration "
        "(clientPath) SELECT printf('/%0300d', i) FROM n;"_q);
    // The listing is larger than a pipe holds, and nothing reads the rest of it before the server is added.
    RunResult const ran = RunInShell(
        "| { head -c 1000 >'%1'; \"$0\" --store '%2' --wait 0 server add --dav-url https://a/; status=$?; cat >>'%1'; exit $status; }"_q
            .arg(At("out"), StorePath()),
        {"list"_q, "files"_q, "--json"_q});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    QFile out(At("out"));
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    EXPECT_EQ(QJsonDocument::fromJson(out.readAll()).array().size(), 3000);
}

TEST_F(ListCommandsTest, SchedulesAreAllListed)
{
    Sql("INSERT INTO Schedules (folderConfigurationId, startTime, syncScheduleType, syncInterval) "
        "VALUES (4, 1719828000000, 2, 15);"_q);
    QJsonArray const schedules = Json({"list"_q, "schedules"_q});
    ASSERT_EQ(schedules.size(), 2);
    EXPECT_EQ(schedules.first().toObject(),
              (QJsonObject{{"id"_q, 1},
                           {"folderConfigurationId"_q, 0},
                           {"startTime"_q, QJsonValue()},
                           {"expireTime"_q, QJsonValue()},
                           {"syncScheduleType"_q, 0},
                           {"syncInterval"_q, 30}}));
    EXPECT_EQ(schedules.last().toObject().value("startTime"_q).toString(), "2024-07-01T10:00:00.000"_q);
}

TEST_F(ListCommandsTest, DefaultScheduleIsShown)
{
    EXPECT_EQ(JsonObject({"schedule"_q, "default"_q}).value("syncInterval"_q).toInt(), 30);
    EXPECT_TRUE(RunSuccessfully({"schedule"_q, "default"_q}).contains("syncInterval           30"_q));
}

TEST_F(ListCommandsTest, MissingDefaultScheduleFindsNothing)
{
    Sql("DELETE FROM Schedules;"_q);
    EXPECT_EQ(Run({"schedule"_q, "default"_q}).status, 1);
}

TEST_F(ListCommandsTest, TreeIndentsFoldersBelowTheirParentsSortedByName)
{
    AddRoot("docs"_q, "/s"_q);
    for (char const* name : {"docs/b/z", "docs/a", "docs/b/y/x"})
        MakeDirectory(QString::fromUtf8(name));
    RunSuccessfully({"scan"_q});
    EXPECT_EQ(RunSuccessfully({"tree"_q}), At("docs") + "\n  a\n  b\n    y\n      x\n    z\n"_q);
}

TEST_F(ListCommandsTest, TreeInJsonHasTheSameOrderWithDepths)
{
    AddFiles();
    QJsonArray const nodes = Json({"tree"_q});
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes.first().toObject().value("depth"_q).toInt(), 0);
    EXPECT_EQ(nodes.last().toObject(),
              (QJsonObject{{"id"_q, 2},
                           {"parentId"_q, 1},
                           {"depth"_q, 1},
                           {"name"_q, "f"_q},
                           {"clientPath"_q, "/r/f"_q},
                           {"serverPath"_q, "/s/f"_q}}));
}

TEST_F(ListCommandsTest, TreeOfOneRoot)
{
    AddRoot("a"_q, "/a"_q);
    AddRoot("b"_q, "/b"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q, "2"_q}), At("b") + "\n"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}), At("a") + "\n"_q + At("b") + "\n"_q);
    EXPECT_EQ(Run({"tree"_q, "77"_q}).status, 1);
}

TEST_F(ListCommandsTest, TreeShowsFoldersWhoseParentIsMissing)
{
    Sql("INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) VALUES "
        "(1, 'r', '/r', 0, 1), (3, 'c', '/r/b/c', 2, 1), (4, 'd', '/r/b/c/d', 3, 1);"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}), "/r\n  c\n    d\n"_q);
}

TEST_F(ListCommandsTest, TreeEndsWhenParentsFormARing)
{
    Sql("INSERT INTO FolderConfiguration (id, name, clientPath, parentId, rootId) VALUES "
        "(1, 'r', '/r', 0, 1), (2, 'b', '/r/b', 3, 1), (3, 'c', '/r/c', 2, 1), (4, 'self', '/r/d', 4, 1);"_q);
    EXPECT_EQ(RunSuccessfully({"tree"_q}).count(QLatin1Char('\n')), 4);
}

TEST_F(ListCommandsTest, TreeWithoutARootFindsNothing)
{
    EXPECT_EQ(Run({"tree"_q}).status, 1);
}

TEST_F(ListCommandsTest, ListingThatBreaksOffFails)
{
    QString statement = "INSERT INTO FileConfiguration (clientPath, name) VALUES ('/x', 'x')"_q;
    for (int i = 0; i < 500; ++i)
        statement += ", ('/path/of/some/length/to/fill/the/pages/%1', '%1')"_q.arg(i);
    Sql(statement);
    RawStore raw(StorePath());
    raw.Run("PRAGMA wal_checkpoint(TRUNCATE);"_q);
    int const pageSize = raw.Value("PRAGMA page_size"_q).toInt();
    // Damages the last leaf page of the table, so that the rows before it can be read.
    int const page =
        raw.Value("SELECT max(pageno) FROM dbstat WHERE name = 'FileConfiguration' AND pagetype = 'leaf'"_q).toInt();
    ASSERT_GT(page, 1);
    QFile file(StorePath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(qint64(page - 1) * pageSize));
    ASSERT_EQ(file.write(QByteArray(pageSize, '\xff')), pageSize);
    file.close();

    RunResult const ran = Run({"list"_q, "files"_q});
    EXPECT_EQ(ran.status, 3);
    EXPECT_EQ(ran.err.count(QLatin1Char('\n')), 1) << ran.err.toStdString();
    EXPECT_EQ(Run({"list"_q, "schedules"_q}).status, 0); // another table
}
