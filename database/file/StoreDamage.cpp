#include "database/file/StoreDamage.h"

#include "database/file/StoreHandle.h"
#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

namespace sync::database {

namespace {

bool IsDamage(int code)
{
    return (code & 0xff) == SQLITE_CORRUPT || (code & 0xff) == SQLITE_NOTADB;
}

/// Appends the texts in the first column of all rows.
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

/// Appends what SQLite finds; a page that cannot be read is a finding too.
int CheckIntegrity(sqlite3* handle, QStringList& damage)
{
    QStringList found;
    int const code = QueryTexts(handle, "PRAGMA integrity_check", found);
    // One row may hold several faults below a headline.
    for (QString const& line : found.join(QLatin1Char('\n')).split(QLatin1Char('\n'))) {
        if (!line.isEmpty() && line != QLatin1String("ok") && !line.startsWith(QLatin1String("***")))
            damage.append(line);
    }
    return code;
}

int FindMissingIndices(sqlite3* handle, QStringList& damage)
{
    QStringList found;
    int const code = QueryTexts(handle, "SELECT sql FROM sqlite_schema WHERE type = 'index'", found);
    if (code != SQLITE_OK)
        return code;
    for (QByteArray const& index : schema::CreateIndices()) {
        QString const text = QString::fromLatin1(index);
        if (!found.contains(text))
            damage.append(QStringLiteral("index %1 is missing").arg(text.section(QLatin1Char(' '), 2, 2)));
    }
    return SQLITE_OK;
}

bool HasThisVersion(sqlite3* handle)
{
    qint64 version = -1;
    return QueryNumber(handle, "PRAGMA user_version", version) == SQLITE_OK && version == schema::Version;
}

Failure FindDamagedPages(StoreHandle const& store, QStringList& damage)
{
    QStringList found;
    int code = CheckIntegrity(store.get(), found);
    if (code == SQLITE_OK && !found.isEmpty()) { // a passing fault of the disk is no damage
        found.clear();
        code = CheckIntegrity(store.get(), found);
    }
    damage.append(found);
    if (code == SQLITE_OK && HasThisVersion(store.get())) {
        code = FindMissingIndices(store.get(), damage);
        if (Failure failure = schema::Check(store.get(), store.file().path())) {
            if (!IsDamage(failure->code))
                return failure;
            damage.append(failure->text);
        }
    }
    if (IsDamage(code) && damage.isEmpty())
        damage.append(QString::fromUtf8(sqlite3_errstr(code)));
    return code == SQLITE_OK || IsDamage(code) ? Failure() : store.Describe(code);
}

} // namespace

Failure CheckLength(StoreHandle const& store)
{
    // As long as the statement stands on its row, no transaction with a journal can change the file. The pragmas'
    // tables would do in one statement, but a view may have their name.
    StatementHandle counting;
    int code = PreparePersistent(store.get(), "PRAGMA page_count", counting);
    if (code == SQLITE_OK)
        code = sqlite3_step(counting.get());
    qint64 pageSize = 0;
    if (code == SQLITE_ROW)
        code = QueryNumber(store.get(), "PRAGMA page_size", pageSize);
    sqlite3_int64 size = 0;
    sqlite3_file* file = nullptr;
    if (code == SQLITE_OK)
        code = sqlite3_file_control(store.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (code == SQLITE_OK)
        code = file->pMethods->xFileSize(file, &size);
    if (code != SQLITE_OK)
        return store.Describe(code);

    if (size >= sqlite3_column_int64(counting.get(), 0) * pageSize || store.file().HasFilledLog())
        return {};
    return MakeError(
        store.file().path(), SQLITE_CORRUPT, QStringLiteral("the store is damaged (the file's end is missing)"));
}

Failure FindDamage(StoreHandle const& store, QStringList& damage)
{
    if (Failure failure = CheckLength(store)) {
        if (!IsDamage(failure->code))
            return failure;
        damage.append(failure->text);
    }
    if (Failure failure = FindDamagedPages(store, damage))
        return failure;
    return store.CheckUnchanged();
}

} // namespace sync::database
