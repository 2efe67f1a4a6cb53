#include "database/file/StoreSchema.h"

#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/SqliteHandle.h"

#include <initializer_list>
#include <iterator>

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

bool IsDamage(int code)
{
    return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB;
}

/// The texts in the first column of all rows.
int QueryTexts(sqlite3* handle, char const* statement, QStringList& texts)
{
    sqlite3_stmt* prepared = nullptr;
    int code = sqlite3_prepare_v2(handle, statement, -1, &prepared, nullptr);
    StatementHandle const owner(prepared);
    if (code != SQLITE_OK)
        return code;
    while ((code = sqlite3_step(prepared)) == SQLITE_ROW)
        texts.append(QString::fromUtf8(reinterpret_cast<char const*>(sqlite3_column_text(prepared, 0))));
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

/// What the engine finds. A page that can't be read is a finding for it too.
int CheckIntegrity(sqlite3* handle, QStringList& damage)
{
    QStringList found;
    int const code = QueryTexts(handle, "PRAGMA integrity_check", found);
    // Several faults may stand in one row, with a headline.
    for (QString const& line : found.join(QLatin1Char('\n')).split(QLatin1Char('\n'))) {
        if (!line.isEmpty() && line != QLatin1String("ok") && !line.startsWith(QLatin1String("***")))
            damage.append(line);
    }
    return code;
}

/// The indices of this version that the store lacks.
int FindMissingIndices(sqlite3* handle, QStringList& damage)
{
    QStringList found;
    int const code = QueryTexts(handle, "SELECT sql FROM sqlite_schema WHERE type = 'index'", found);
    if (code != SQLITE_OK)
        return code;
    for (char const* index : Indices) {
        QString const text = QLatin1String(index);
        if (!found.contains(text))
            damage.append(QStringLiteral("index %1 is missing").arg(text.section(QLatin1Char(' '), 2, 2)));
    }
    return SQLITE_OK;
}

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

std::vector<TableText> TableTexts()
{
    std::vector<TableText> texts;
    for (Table const& table : Tables())
        texts.push_back({table.name, ColumnsOf(table), CreateTable(table)});
    return texts;
}

std::vector<QByteArray> IndexTexts()
{
    return {std::begin(Indices), std::end(Indices)};
}

QByteArray DefaultScheduleText()
{
    return "INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) SELECT 0, 0, 30 "
           "WHERE NOT EXISTS (SELECT 1 FROM Schedules WHERE folderConfigurationId = 0)";
}

int Create(sqlite3* handle)
{
    QByteArray statements = "BEGIN IMMEDIATE;";
    for (Table const& table : Tables())
        statements += CreateTable(table) + ';';
    for (char const* index : Indices)
        statements += QByteArray(index) + ';';
    statements += DefaultScheduleText() + ';';
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

Failure FindDamage(sqlite3* handle, QString const& path, QStringList& damage)
{
    QStringList found;
    int code = CheckIntegrity(handle, found);
    if (code == SQLITE_OK && !found.isEmpty()) { // a fault of the disk that passes is no damage
        found.clear();
        code = CheckIntegrity(handle, found);
    }
    damage.append(found);
    if (code == SQLITE_OK && QueryNumber(handle, "PRAGMA user_version") == Version) {
        code = FindMissingIndices(handle, damage);
        if (Failure failure = Check(handle, path)) {
            if (!IsDamage(failure->code))
                return failure;
            damage.append(failure->text);
        }
    }
    if (IsDamage(code) && damage.isEmpty())
        damage.append(QString::fromUtf8(sqlite3_errstr(code)));
    return code == SQLITE_OK || IsDamage(code) ? Failure() : DescribeError(handle, code, path);
}

int RewriteSecrets(sqlite3* handle)
{
    // A table that is emptied at one go gives back its pages, and the engine overwrites those.
    QString const statements = QStringLiteral("BEGIN IMMEDIATE;"
                                              "CREATE TEMP TABLE Kept AS SELECT * FROM main.%1;"
                                              "DELETE FROM main.%1;"
                                              "INSERT INTO main.%1 SELECT * FROM temp.Kept ORDER BY id;"
                                              "DROP TABLE temp.Kept;"
                                              "COMMIT;");
    return Execute(handle, statements.arg(QLatin1String(SecretsTable)).toUtf8().constData());
}

} // namespace sync::database::schema
