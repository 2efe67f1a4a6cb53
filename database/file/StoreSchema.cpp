#include "database/file/StoreSchema.h"

#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/SqliteHandle.h"

#include <QByteArray>

#include <vector>

namespace sync::database::schema {

namespace {

struct Column
{
    char const* name;
    /// "DATETIME" makes queries return a date-time; the other types only set the affinity.
    char const* type;
};

struct Table
{
    char const* name;
    /// Without `id`, which is the first column of every table.
    std::vector<Column> columns;
};

constexpr char const* Integer = "INTEGER";
constexpr char const* Text = "TEXT";
constexpr char const* DateTime = "DATETIME";

std::vector<Column> FileColumns()
{
    return {{"folderConfigurationId", Integer},
            {"name", Text},
            {"clientPath", Text},
            {"serverPath", Text},
            {"checkSum", Text},
            {"createdDateTime", DateTime},
            {"lastModifiedDateTime", DateTime},
            {"syncStatus", Integer},
            {"lastOperationType", Integer},
            {"size", Integer},
            {"nameValueProperties", Text},
            {"lastOperationTime", DateTime},
            {"rootFolderId", Integer},
            {"syncOption", Integer},
            {"parentFileId", Integer},
            {"fileType", Integer},
            {"ownerId", Text},
            {"privileges", Integer},
            {"productConfigurationId", Integer},
            {"serverFileId", Text},
            {"serverFileVersionId", Text},
            {"checkSumMD5", Text},
            {"fileLinks", Text}};
}

std::vector<Table> const& Tables()
{
    static std::vector<Table> const tables{
        {"ServerConfiguration",
         {{"alias", Text},
          {"davUrl", Text},
          {"webServiceUrl", Text},
          {"nameValueProperties", Text},
          {"binaryDiffEncoder", Text}}},
        {"AuthenticationConfiguration",
         {{"domain", Text},
          {"domainId", Text},
          {"userName", Text},
          {"encryptedPassword", Text},
          {"nameValueProperties", Text},
          {"serverId", Integer}}},
        {"ProductConfiguration",
         {{"name", Text},
          {"consumerKey", Text},
          {"consumerSecret", Text},
          {"serverId", Integer},
          {"nameValueProperties", Text}}},
        {"FolderConfiguration",
         {{"authenticationId", Integer},
          {"name", Text},
          {"remoteShortKey", Text},
          {"remoteLongKey", Text},
          {"clientPath", Text},
          {"serverPath", Text},
          {"syncStatus", Integer},
          {"nameValueProperties", Text},
          {"parentId", Integer},
          {"lastOperationTime", DateTime},
          {"lastSyncTime", DateTime},
          {"folderOption", Integer},
          {"lastOperationType", Integer},
          {"syncDriveType", Integer},
          {"rootId", Integer},
          {"syncOption", Integer},
          {"ownerId", Text},
          {"privileges", Integer},
          {"serverRoot", Text},
          {"productConfigurationId", Integer},
          {"serverFolderId", Text}}},
        {"FileConfiguration", FileColumns()},
        {"GeneratedFileConfiguration", FileColumns()},
        {"BaseFileConfiguration", FileColumns()},
        {"Schedules",
         {{"folderConfigurationId", Integer},
          {"startTime", DateTime},
          {"expireTime", DateTime},
          {"syncScheduleType", Integer},
          {"syncInterval", Integer}}},
    };
    return tables;
}

QByteArray CreateTable(Table const& table)
{
    // AUTOINCREMENT: removals leave references behind, which must never point at another row later. Records have ids of
    // 32 bits, so a table that has used them up refuses further rows.
    QByteArray text =
        QByteArray("CREATE TABLE ") + table.name + " (id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id <= 2147483647)";
    for (Column const& column : table.columns)
        text += QByteArray(", ") + column.name + ' ' + column.type;
    return text + ')';
}

QByteArray ColumnsOf(Table const& table)
{
    QByteArray text = "id";
    for (Column const& column : table.columns)
        text += QByteArray(", ") + column.name;
    return text;
}

QByteArray SelectOne(Table const& table)
{
    return "SELECT " + ColumnsOf(table) + " FROM " + table.name + " LIMIT 1";
}

constexpr char const* CreateDefaultSchedule =
    "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) VALUES (0, 0, 30)";

} // namespace

QString OtherVersion(qint64 version)
{
    QString words = QStringLiteral("the store has version %1, which this program, of version %2, can't read");
    if (version > Version)
        words = QStringLiteral("the store has version %1, written by a newer program; this one knows %2");
    else if (IsOlder(version))
        words = QStringLiteral("the store has version %1, written by an older program; it must be opened for writing "
                               "once, which brings it to version %2");
    return words.arg(version).arg(Version);
}

int Create(sqlite3* handle)
{
    QByteArray statements = "BEGIN IMMEDIATE;";
    for (Table const& table : Tables())
        statements += CreateTable(table) + ';';
    for (char const* index : Indices)
        statements += QByteArray(index) + ';';
    statements += QByteArray(CreateDefaultSchedule) + ';';
    statements += "PRAGMA application_id = " + QByteArray::number(ApplicationId) + ';';
    statements += "PRAGMA user_version = " + QByteArray::number(Version) + ';';
    statements += "COMMIT;";
    return Execute(handle, statements.constData());
}

Failure Check(sqlite3* handle, QString const& path)
{
    for (Table const& table : Tables()) {
        sqlite3_stmt* prepared = nullptr;
        int code = sqlite3_prepare_v2(handle, SelectOne(table).constData(), -1, &prepared, nullptr);
        StatementHandle const owner(prepared);
        if (code == SQLITE_ERROR)
            return MakeError(path,
                             SQLITE_CORRUPT,
                             QStringLiteral("the store is damaged (table %1: %2)")
                                 .arg(QLatin1String(table.name), QString::fromUtf8(sqlite3_errmsg(handle))));
        if (code == SQLITE_OK)
            code = sqlite3_step(prepared);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            return DescribeError(handle, code, path);
    }
    return {};
}

} // namespace sync::database::schema
