#include "database/StoreSchema.h"

#include "database/SqliteHandle.h"

#include <QByteArray>

#include <initializer_list>
#include <vector>

namespace sync::database::schema {

namespace {

struct Column
{
    char const* name;
    /// "DATETIME" tells the reader of a row to give a date-time back; the others only set the affinity.
    char const* type;
};

struct Table
{
    char const* name;
    /// Without `id`, which every table has in front.
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

/// One index for each way in which a statement looks rows up, and none beside: each costs at every write.
constexpr char const* Indices[] = {
    "CREATE INDEX ServerConfiguration_urls ON ServerConfiguration (davUrl, webServiceUrl)",
    "CREATE INDEX AuthenticationConfiguration_user ON AuthenticationConfiguration (domain, userName)",
    "CREATE INDEX ProductConfiguration_key ON ProductConfiguration (serverId, consumerKey)",
    "CREATE INDEX FolderConfiguration_account ON FolderConfiguration (authenticationId)",
    "CREATE INDEX FolderConfiguration_children ON FolderConfiguration (parentId, name)",
    "CREATE INDEX FolderConfiguration_clientPath ON FolderConfiguration (clientPath, authenticationId)",
    "CREATE INDEX FolderConfiguration_root ON FolderConfiguration (rootId)",
    "CREATE INDEX FolderConfiguration_server ON FolderConfiguration (serverFolderId)",
    // Only the folders that are out of sync are counted, and mostly there are none.
    "CREATE INDEX FolderConfiguration_outOfSync ON FolderConfiguration (syncStatus) WHERE syncStatus = 2",
    "CREATE INDEX FileConfiguration_clientPath ON FileConfiguration (clientPath)",
    "CREATE INDEX FileConfiguration_folder ON FileConfiguration (folderConfigurationId, syncStatus, name)",
    "CREATE INDEX FileConfiguration_root ON FileConfiguration (rootFolderId)",
    "CREATE INDEX FileConfiguration_server ON FileConfiguration (serverFileId)",
    "CREATE INDEX FileConfiguration_serverPath ON FileConfiguration (serverPath)",
    "CREATE INDEX GeneratedFileConfiguration_clientPath ON GeneratedFileConfiguration (clientPath)",
    "CREATE INDEX GeneratedFileConfiguration_parent ON GeneratedFileConfiguration (parentFileId)",
    "CREATE INDEX GeneratedFileConfiguration_root ON GeneratedFileConfiguration (rootFolderId)",
    "CREATE INDEX BaseFileConfiguration_root ON BaseFileConfiguration (rootFolderId)",
    "CREATE INDEX Schedules_folder ON Schedules (folderConfigurationId)",
};

constexpr char const* DefaultSchedule =
    "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) VALUES (0, 0, 30)";

QByteArray CreateTable(Table const& table)
{
    // AUTOINCREMENT: removals leave references behind, which must never come to point at a stranger. Records carry ids
    // of 32 bits, so a table that has used them up refuses further rows.
    QByteArray text =
        QByteArray("CREATE TABLE ") + table.name + " (id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id <= 2147483647)";
    for (Column const& column : table.columns)
        text += QByteArray(", ") + column.name + ' ' + column.type;
    return text + ')';
}

QByteArray SelectOne(Table const& table)
{
    QByteArray text = "SELECT id";
    for (Column const& column : table.columns)
        text += QByteArray(", ") + column.name;
    return text + " FROM " + table.name + " LIMIT 1";
}

} // namespace

QString OtherVersion(qint64 version)
{
    QString const words =
        version > Version ? QStringLiteral("the store has version %1, written by a newer program; this one knows %2")
                          : QStringLiteral("the store has version %1, which this program, of version %2, can't read");
    return words.arg(version).arg(Version);
}

int Create(sqlite3* handle)
{
    QByteArray statements = "BEGIN IMMEDIATE;";
    for (Table const& table : Tables())
        statements += CreateTable(table) + ';';
    for (char const* index : Indices)
        statements += QByteArray(index) + ';';
    statements += QByteArray(DefaultSchedule) + ';';
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
