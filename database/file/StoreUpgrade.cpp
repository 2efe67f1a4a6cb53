#include "database/file/StoreUpgrade.h"

#include "database/file/StoreBackup.h"
#include "database/file/StoreLog.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

#include <iterator>
#include <utility>

#include <unistd.h>

namespace sync::database {

namespace {

/// A column that names a row of a table by its id.
struct Reference
{
    char const* table;
    char const* column;
    char const* target;
};

constexpr Reference References[] = {
    {"AuthenticationConfiguration", "serverId", "ServerConfiguration"},
    {"ProductConfiguration", "serverId", "ServerConfiguration"},
    {"FolderConfiguration", "authenticationId", "AuthenticationConfiguration"},
    {"FolderConfiguration", "productConfigurationId", "ProductConfiguration"},
    {"FolderConfiguration", "parentId", "FolderConfiguration"},
    {"FolderConfiguration", "rootId", "FolderConfiguration"},
    {"FileConfiguration", "folderConfigurationId", "FolderConfiguration"},
    {"FileConfiguration", "rootFolderId", "FolderConfiguration"},
    {"FileConfiguration", "parentFileId", "FileConfiguration"},
    {"FileConfiguration", "productConfigurationId", "ProductConfiguration"},
    {"GeneratedFileConfiguration", "folderConfigurationId", "FolderConfiguration"},
    {"GeneratedFileConfiguration", "rootFolderId", "FolderConfiguration"},
    {"GeneratedFileConfiguration", "parentFileId", "FileConfiguration"},
    {"GeneratedFileConfiguration", "productConfigurationId", "ProductConfiguration"},
    {"BaseFileConfiguration", "folderConfigurationId", "FolderConfiguration"},
    {"BaseFileConfiguration", "rootFolderId", "FolderConfiguration"},
    {"BaseFileConfiguration", "parentFileId", "FileConfiguration"},
    {"BaseFileConfiguration", "productConfigurationId", "ProductConfiguration"},
    {"Schedules", "folderConfigurationId", "FolderConfiguration"},
};

QByteArray MakeTableAnew(schema::TableText const& table)
{
    QByteArray const old = table.name + "_0";
    return "ALTER TABLE " + table.name + " RENAME TO " + old + ';' + table.create + ";INSERT INTO " + table.name +
           " (" + table.columns + ") SELECT " + table.columns + " FROM " + old + ";DROP TABLE " + old + ';';
}

/// Version 0, of the previews, gave the ids of removed rows again, had no indices and not always a default schedule.
QByteArray From0To1()
{
    QByteArray statements;
    for (schema::TableText const& table : schema::TableTexts()) {
        statements += MakeTableAnew(table);
        statements += "INSERT INTO sqlite_sequence (name, seq) SELECT '" + table.name +
                      "', 0 WHERE NOT EXISTS (SELECT 1 FROM sqlite_sequence WHERE name = '" + table.name + "');";
    }
    // Ids of rows that are gone, as far as others still name them, must not be given again either.
    for (Reference const& reference : References) {
        QByteArray const column = reference.column;
        statements += "UPDATE sqlite_sequence SET seq = max(seq, coalesce((SELECT max(" + column + ") FROM " +
                      reference.table + " WHERE typeof(" + column + ") = 'integer' AND " + column +
                      " <= 2147483647), 0)) WHERE name = '" + reference.target + "';";
    }
    for (QByteArray const& index : schema::IndexTexts())
        statements += index + ';';
    return statements + schema::DefaultScheduleText() + ';';
}

/// The statements of each step; the first is that from version 0.
///
/// A step stays what it is, whatever the schema becomes later: it is always the same old store that it meets, and the
/// next step goes on from what it leaves. The step to the current version may use the texts of `StoreSchema`. Who
/// raises the version first puts those texts, as they are, in place of the calls here.
constexpr QByteArray (*Steps[])() = {From0To1};

static_assert(std::size(Steps) == schema::Version, "each version but the current one has a step");

} // namespace

StoreUpgrade::StoreUpgrade(StoreFile file, int busyTimeoutMsec)
    : _file(std::move(file))
    , _busyTimeoutMsec(busyTimeoutMsec)
    , _queue(busyTimeoutMsec)
{}

Failure StoreUpgrade::Run()
{
    if (Failure failure = Open())
        return failure;
    qint64 version = 0;
    Failure failure = ReadVersion(version);
    while (!failure && schema::IsOlder(version)) {
        failure = TakeStep();
        if (!failure)
            failure = ReadVersion(version);
    }
    if (failure)
        return failure;
    if (version != schema::Version)
        return MakeError(_file.path(), SQLITE_SCHEMA, schema::OtherVersion(version));

    sqlite3_db_config(_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    if (_backup)
        qCInfo(StoreLog).noquote() << QStringLiteral("%1: brought from version %2 to %3; as it was it is kept in %4")
                                          .arg(_file.path())
                                          .arg(_backup->version)
                                          .arg(version)
                                          .arg(_backup->file.path());
    return {};
}

Failure StoreUpgrade::Open()
{
    bool const hadLog = _file.LogIdentity().has_value();
    int code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, _handle);
    if (code != SQLITE_OK)
        return Describe(code);
    // What a program left behind is worked off once the store has proved to be whole.
    sqlite3_db_config(_handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, hadLog ? 1 : 0, nullptr);
    _queue.Attach(_handle.get());
    Distrust(_handle.get());
    code = Execute(_handle.get(),
                   "PRAGMA mmap_size = 0; PRAGMA temp_store = MEMORY; PRAGMA cell_size_check = ON;"
                   "PRAGMA secure_delete = ON; PRAGMA synchronous = EXTRA;");
    return code == SQLITE_OK ? Failure() : Describe(code);
}

Failure StoreUpgrade::ReadVersion(qint64& version) const
{
    std::optional<qint64> const read = QueryNumber(_handle.get(), "PRAGMA user_version");
    if (!read)
        return Describe(sqlite3_extended_errcode(_handle.get()));
    version = *read;
    return {};
}

/// Another process may have taken the step meanwhile.
Failure StoreUpgrade::TakeStep()
{
    int code = Execute(_handle.get(), "BEGIN IMMEDIATE");
    if (code != SQLITE_OK)
        return Describe(code);
    qint64 version = 0;
    Failure failure = ReadVersion(version);
    if (!failure && schema::IsOlder(version))
        failure = TakeStepInTransaction(version);
    if (failure) {
        Execute(_handle.get(), "ROLLBACK");
        DropNeedlessBackup();
        return failure;
    }
    code = Execute(_handle.get(), "COMMIT");
    if (code == SQLITE_OK)
        return {};
    failure = Describe(code);
    Execute(_handle.get(), "ROLLBACK");
    return failure;
}

Failure StoreUpgrade::TakeStepInTransaction(qint64 version)
{
    if (Failure failure = _file.CheckLength(_handle.get()))
        return failure;
    if (!_backup) {
        if (Failure failure = BackUp(version))
            return failure;
    }
    QByteArray const statements = Steps[version]() + "PRAGMA user_version = " + QByteArray::number(version + 1) + ';';
    int const code = Execute(_handle.get(), statements.constData());
    if (code != SQLITE_OK) // the engine's words can't quote a row: the statements hold none
        return Refuse(version, DescribeError(_handle.get(), code, _file.path(), {}, true));
    if (version + 1 == schema::Version) {
        if (Failure failure = schema::Check(_handle.get(), _file.path()))
            return Refuse(version, *failure);
    }
    // A full disk is to show here: of a commit that failed nobody knows whether it was one after all.
    int const flushed = sqlite3_db_cacheflush(_handle.get());
    return flushed == SQLITE_OK ? Failure() : Refuse(version, *Describe(flushed));
}

/// Nobody can write while the transaction is open, and it has not written yet.
Failure StoreUpgrade::BackUp(qint64 version)
{
    StoreFile const backup = BackupFile(version);
    if (Failure failure = StoreBackup(_file, false, _busyTimeoutMsec).Write(backup))
        return Refuse(version, *failure);
    _backup = Backup{backup, version};
    return {};
}

/// The first name that is free.
StoreFile StoreUpgrade::BackupFile(qint64 version) const
{
    QString const name = _file.path() + QStringLiteral(".version-") + QString::number(version);
    StoreFile file(name);
    for (int number = 2; !file.IsFree(); ++number)
        file = StoreFile(name + QLatin1Char('-') + QString::number(number));
    return file;
}

/// Who tries again and again on a full disk must not find a further backup there each time.
void StoreUpgrade::DropNeedlessBackup()
{
    qint64 version = 0;
    if (!_backup || ReadVersion(version) || version != _backup->version)
        return;
    ::unlink(_backup->file.name());
    _backup.reset();
}

StoreError StoreUpgrade::Refuse(qint64 version, StoreError const& reason) const
{
    QString const words = QStringLiteral("the store has version %1, which can't be brought to version %2: ");
    return MakeError(_file.path(), reason.code, words.arg(version).arg(schema::Version) + reason.text);
}

Failure StoreUpgrade::Describe(int code) const
{
    return DescribeError(_handle.get(), code, _file.path());
}

} // namespace sync::database
