#include "database/store/ThreadErrors.h"

#include "database/store/Store.h"
#include "database/store/StoreLog.h"

namespace sync::database {

ThreadErrors::ThreadErrors(Store const& store)
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
    if (_isEmitting) {
        _lostBySlots.push_back(error);
        return;
    }
    _isEmitting = true;
    Emit(error);
    if (!_lostBySlots.empty()) {
        StoreError lost = _lostBySlots.front();
        if (_lostBySlots.size() > 1)
            lost.text +=
                QStringLiteral("; so were %1 further scopes of slots of CommitFailed").arg(_lostBySlots.size() - 1);
        _lostBySlots.clear();
        Emit(lost);
    }
    _lostBySlots.clear();
    _isEmitting = false;
}

/// An exception must not pass: scopes end in destructors, and Qt does not allow one to leave a slot.
void ThreadErrors::Emit(StoreError const& error) noexcept
{
    try {
        _store.EmitCommitFailed(error);
    }
    catch (...) {
        qCCritical(StoreLog).noquote()
            << "a slot of CommitFailed has thrown an exception, and slots that were connected"
            << "after it were not called";
    }
}

} // namespace sync::database
