#include "database/ThreadErrors.h"

#include "database/SqliteStore.h"
#include "database/file/StoreLog.h"

namespace sync::database {

ThreadErrors::ThreadErrors(SqliteStore const& store)
    : _store(store)
{}

void ThreadErrors::Record(StoreError const& error)
{
    if (error.statement.isEmpty())
        qCWarning(StoreLog).noquote() << error.text;
    else
        qCWarning(StoreLog).noquote() << error.text << "in" << error.statement;
    if (!_first)
        _first = error;
}

void ThreadErrors::RecordLostWrites(StoreError const& error)
{
    Record(error);
    qCCritical(StoreLog).noquote() << error.text;
    _store.EmitCommitFailed(error);
}

} // namespace sync::database
