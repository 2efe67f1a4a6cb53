#include "database/file/StoreSchema.h"

#include "database/sqlite/ErrorTexts.h"
#include "database/sqlite/SqliteHandle.h"
#include "database/store/StoreTables.h"

#include <QByteArrayList>

#include <algorithm>
#include <iterator>
#include <vector>

namespace sync::database::schema {

namespace {

/// A table of the store's file.
struct FileTable : Table
{
    /// The first version of the schema that has the table.
    int since = 0;
};

std::vector<FileTable> const& Tables()
{
    static std::vector<FileTable> const tables = [] {
        std::vector<FileTable> made;
        for (Table const& table : ManagerTables())
            made.push_back({table});
        // Of tandryctl alone: the file system that a root, or a mount point below one, was recorded on.
        made.push_back({{"FolderFileSystem",
                         {{"folderConfigurationId", ColumnType::Integer},
                          {"fileSystem", ColumnType::Text},
                          {"inode", ColumnType::Integer}}},
                        2});
        return made;
    }();
    return tables;
}

/// "DATETIME" makes queries return a date-time; the other types only set the affinity.
char const* TypeName(ColumnType type)
{
    switch (type) {
    case ColumnType::Integer:
        return "INTEGER";
    case ColumnType::Text:
        return "TEXT";
    case ColumnType::DateTime:
        break;
    }
    return "DATETIME";
}

QByteArray CreateTable(Table const& table)
{
    // AUTOINCREMENT: removals leave references behind, which must never point at another row later. Records have ids of
    // 32 bits, so a table that has used them up refuses further rows.
    QByteArray text =
        QByteArray("CREATE TABLE ") + table.name + " (id INTEGER PRIMARY KEY AUTOINCREMENT CHECK (id <= 2147483647)";
    for (Column const& column : table.columns)
        text += QByteArray(", ") + column.name + ' ' + TypeName(column.type);
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

/// A row of `sqlite_schema`. The text is the statement that created the object, as it was given.
struct Object
{
    QByteArray type;
    QByteArray name;
    QByteArray table;
    QByteArray text;

    bool HasNameOf(Object const& other) const
    {
        return type == other.type && name == other.name && table == other.table;
    }
};

Object TableObject(QByteArray const& name, QByteArray const& text)
{
    return {"table", name, name, text};
}

std::vector<Object> const& OwnObjects()
{
    static std::vector<Object> const objects = [] {
        std::vector<Object> made;
        for (Table const& table : Tables())
            made.push_back(TableObject(table.name, CreateTable(table)));
        std::size_t position = 0;
        for (Index const& index : ManagerIndices())
            made.push_back({"index", index.name, index.table, CreateIndices()[position++]});
        return made;
    }();
    return objects;
}

/// Whether SQLite made the object for itself: for AUTOINCREMENT, for ANALYZE or for a UNIQUE constraint.
bool BelongsToSqlite(Object const& object)
{
    static Object const tables[] = {
        TableObject("sqlite_sequence", "CREATE TABLE sqlite_sequence(name,seq)"),
        TableObject("sqlite_stat1", "CREATE TABLE sqlite_stat1(tbl,idx,stat)"),
        TableObject("sqlite_stat2", "CREATE TABLE sqlite_stat2(tbl,idx,sampleno,sample)"),
        TableObject("sqlite_stat3", "CREATE TABLE sqlite_stat3(tbl,idx,neq,nlt,ndlt,sample)"),
        TableObject("sqlite_stat4", "CREATE TABLE sqlite_stat4(tbl,idx,neq,nlt,ndlt,sample)"),
    };
    if (object.type == "index" && object.text.isEmpty() && object.name.startsWith("sqlite_autoindex_"))
        return true;
    return std::any_of(std::begin(tables), std::end(tables), [&](Object const& table) {
        return object.HasNameOf(table) && object.text == table.text;
    });
}

/// The library's object of the same type and name; null if there is none.
Object const* OwnObject(Object const& object)
{
    for (Object const& own : OwnObjects())
        if (object.HasNameOf(own))
            return &own;
    return nullptr;
}

/// Whether neither the library nor SQLite made the object. A virtual table runs the code of others like a view does.
bool IsForeign(Object const& object)
{
    if (BelongsToSqlite(object))
        return false;
    return OwnObject(object) == nullptr || object.text.startsWith("CREATE VIRTUAL");
}

QString Words(Object const& object)
{
    QString words = QString::fromUtf8(object.type + ' ' + object.name);
    if (object.name != object.table)
        words += QStringLiteral(" of the table ") + QString::fromUtf8(object.table);
    return words;
}

QByteArray TextOf(sqlite3_stmt* row, int column)
{
    return {reinterpret_cast<char const*>(sqlite3_column_text(row, column)), sqlite3_column_bytes(row, column)};
}

Failure ReadObjects(sqlite3* handle, QString const& path, std::vector<Object>& objects)
{
    StatementHandle reading;
    int code = PreparePersistent(handle, "SELECT type, name, tbl_name, sql FROM main.sqlite_schema", reading);
    while (code == SQLITE_OK && (code = sqlite3_step(reading.get())) == SQLITE_ROW) {
        sqlite3_stmt* const row = reading.get();
        objects.push_back({TextOf(row, 0), TextOf(row, 1), TextOf(row, 2), TextOf(row, 3)});
        code = SQLITE_OK;
    }
    return code == SQLITE_DONE ? Failure() : DescribeError(handle, code, path);
}

Failure RefuseForeignObject(std::vector<Object> const& objects, QString const& path)
{
    auto const foreign = std::find_if(objects.begin(), objects.end(), IsForeign);
    if (foreign == objects.end())
        return {};
    return MakeError(path,
                     SQLITE_NOTADB,
                     QStringLiteral("the store holds the %1, which neither this library nor SQLite created; drop it "
                                    "with the program that did, or copy the rows to a new store with "
                                    "'tandryctl recover'")
                         .arg(Words(*foreign)));
}

Failure CheckColumns(sqlite3* handle, Table const& table, QString const& path)
{
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
    return code == SQLITE_ROW || code == SQLITE_DONE ? Failure() : DescribeError(handle, code, path);
}

/// An upgrade would stop half way where the version in the header is spoilt and names an older one.
Failure RefuseNewerTable(std::vector<Object> const& objects, QString const& path, qint64 version)
{
    for (FileTable const& table : Tables()) {
        auto const isThisTable = [&table](Object const& object) { return object.name == table.name; };
        if (table.since > version && std::any_of(objects.begin(), objects.end(), isThisTable))
            return MakeError(path,
                             SQLITE_CORRUPT,
                             QStringLiteral("the store is damaged: it has version %1, and the table %2 of version %3")
                                 .arg(version)
                                 .arg(QLatin1String(table.name))
                                 .arg(table.since));
    }
    return {};
}

Failure RefuseAlteredObject(std::vector<Object> const& objects, QString const& path)
{
    auto const altered = std::find_if(objects.begin(), objects.end(), [](Object const& object) {
        Object const* const own = OwnObject(object);
        return own != nullptr && object.text != own->text;
    });
    if (altered == objects.end())
        return {};
    return MakeError(path,
                     SQLITE_CORRUPT,
                     QStringLiteral("the store is damaged or was altered: the %1 is not what this library creates; "
                                    "'tandryctl recover' copies the rows to a new store")
                         .arg(Words(*altered)));
}

} // namespace

StoreError OtherVersion(QString const& path, qint64 version)
{
    StoreErrorKind kind = StoreErrorKind::Refused;
    QString words = QStringLiteral("the store has version %1, which this program, of version %2, can't read");
    if (version > Version) {
        kind = StoreErrorKind::NewerVersion;
        words = QStringLiteral("the store has version %1, written by a newer program; this one knows %2");
    }
    else if (IsOlder(version)) {
        kind = StoreErrorKind::OlderVersion;
        words = QStringLiteral("the store has version %1, written by an older program; it must be opened for writing "
                               "once, which brings it to version %2");
    }
    StoreError error = MakeError(path, SQLITE_SCHEMA, words.arg(version).arg(Version));
    error.kind = kind;
    return error;
}

std::vector<QByteArray> const& CreateIndices()
{
    static std::vector<QByteArray> const statements = [] {
        std::vector<QByteArray> made;
        for (Index const& index : ManagerIndices()) {
            QByteArrayList columns;
            for (char const* column : index.columns)
                columns.append(column);
            QByteArray text =
                QByteArray("CREATE INDEX ") + index.name + " ON " + index.table + " (" + columns.join(", ") + ')';
            if (index.condition != nullptr)
                text += QByteArray(" WHERE ") + index.condition;
            made.push_back(text);
        }
        return made;
    }();
    return statements;
}

TableSet TableNamed(char const* name) noexcept
{
    TableSet bit = 1;
    for (Table const& table : Tables()) {
        if (qstrcmp(table.name, name) == 0)
            return bit;
        bit <<= 1;
    }
    return 0;
}

QStringList NamesOf(TableSet tables)
{
    QStringList names;
    TableSet bit = 1;
    for (Table const& table : Tables()) {
        if ((tables & bit) != 0)
            names.append(QLatin1String(table.name));
        bit <<= 1;
    }
    return names;
}

int Create(sqlite3* handle)
{
    QByteArray statements = "BEGIN IMMEDIATE;";
    for (Table const& table : Tables())
        statements += CreateTable(table) + ';';
    for (QByteArray const& index : CreateIndices())
        statements += index + ';';
    statements += QByteArray(CreateDefaultSchedule) + ';';
    statements += "PRAGMA application_id = " + QByteArray::number(ApplicationId) + ';';
    statements += "PRAGMA user_version = " + QByteArray::number(Version) + ';';
    statements += "COMMIT;";
    return Execute(handle, statements.constData());
}

Failure CheckOlder(sqlite3* handle, QString const& path, qint64 version)
{
    std::vector<Object> objects;
    if (Failure failure = ReadObjects(handle, path, objects))
        return failure;
    if (Failure failure = RefuseForeignObject(objects, path))
        return failure;
    return RefuseNewerTable(objects, path, version);
}

Failure Check(sqlite3* handle, QString const& path)
{
    std::vector<Object> objects;
    if (Failure failure = ReadObjects(handle, path, objects))
        return failure;
    if (Failure failure = RefuseForeignObject(objects, path)) // before anything is read through a view
        return failure;
    for (Table const& table : Tables()) {
        if (Failure failure = CheckColumns(handle, table, path))
            return failure;
    }
    return RefuseAlteredObject(objects, path);
}

} // namespace sync::database::schema
