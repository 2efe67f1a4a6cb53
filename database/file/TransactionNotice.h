#pragma once

#include "database/file/StoreSchema.h"
#include "database/sqlite/CommitCounter.h"

#include <QtGlobal>

#include <optional>

struct sqlite3;

namespace sync::database {

class OwnCommits;

/// Collects the tables that a connection's transaction changes, and tells those who watch the store of its commit.
class TransactionNotice
{
public:
    explicit TransactionNotice(OwnCommits& commits);
    /// REQUIRES: the handle has read from its database.
    void SetHandle(sqlite3* handle, bool hasLog);

    /// Call this when a transaction for writing has begun.
    void Begin();
    /// Call this for every row that a statement changes.
    void NoteChange(char const* database, char const* table) noexcept;
    void NoteChanges(schema::TableSet tables) noexcept { _ofStatement |= tables; }
    /// Whether the statement that runs has changed a row of the store.
    bool hasChange() const noexcept { return _ofStatement != 0; }
    /// Call this at the end of each statement. A statement that failed has changed nothing.
    void EndStatement(bool isSuccessful) noexcept;

    /// Call these before and after the commit.
    void BeforeCommit();
    void AfterCommit(bool isSuccessful);

private:
    int PagesWritten() const;

    OwnCommits& _commits;
    sqlite3* _handle = nullptr;
    CommitCounter _counter;
    bool _hasLog = false;
    schema::TableSet _ofStatement = 0;
    schema::TableSet _ofTransaction = 0;
    int _pagesWrittenBefore = 0;
    /// The number that the commit will take; nothing if nobody watches.
    std::optional<quint32> _number;
};

} // namespace sync::database
