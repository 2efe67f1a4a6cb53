#include "database/file/TransactionNotice.h"

#include "database/file/OwnCommits.h"

#include <sqlite3.h>

#include <utility>

namespace sync::database {

TransactionNotice::TransactionNotice(OwnCommits& commits)
    : _commits(commits)
{}

void TransactionNotice::SetHandle(sqlite3* handle, bool hasLog)
{
    _handle = handle;
    _counter = CommitCounter(handle);
    _hasLog = hasLog;
}

void TransactionNotice::Begin()
{
    _ofTransaction = 0;
    _number.reset();
    // With a journal, this reads from the file.
    if (!_hasLog && !_commits.isWatched())
        return;
    if (std::optional<quint32> const last = _counter.ReadInTransaction()) {
        _number = *last + 1;
        _pagesWrittenBefore = PagesWritten();
    }
}

void TransactionNotice::NoteChange(char const* database, char const* table) noexcept
{
    if (qstrcmp(database, "main") == 0)
        _ofStatement |= schema::TableNamed(table);
}

void TransactionNotice::EndStatement(bool isSuccessful) noexcept
{
    schema::TableSet const changed = std::exchange(_ofStatement, 0);
    if (isSuccessful)
        _ofTransaction |= changed;
}

void TransactionNotice::BeforeCommit()
{
    if (!_commits.isWatched())
        _number.reset();
    if (_number)
        _commits.Announce(*_number, _ofTransaction);
}

void TransactionNotice::AfterCommit(bool isSuccessful)
{
    // SQLite does not count a transaction that left every page as it was.
    if (_number)
        _commits.Settle(*_number, isSuccessful && PagesWritten() != _pagesWrittenBefore);
    _number.reset();
}

int TransactionNotice::PagesWritten() const
{
    int pages = 0;
    int highest = 0;
    sqlite3_db_status(_handle, SQLITE_DBSTATUS_CACHE_WRITE, &pages, &highest, 0);
    return pages;
}

} // namespace sync::database
