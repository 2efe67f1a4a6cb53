#pragma once

#include "TandryDatabaseExport.h"

#include <QtGlobal>

namespace sync::database {

/// A connection that has written inside a scope, and must make the writes durable when the outermost scope ends.
///
/// A client's own store implements this class to take part in `TransactionalScope`.
class TANDRY_DATABASE_EXPORT ScopeParticipant
{
public:
    ScopeParticipant();
    virtual ~ScopeParticipant();

    /// Makes the writes since `TransactionalScope::Join` durable. Returns false on failure. Called on the thread that
    /// joined, after the participant was removed from the thread's list.
    [[nodiscard]] virtual bool CommitScope() noexcept = 0;

private:
    Q_DISABLE_COPY_MOVE(ScopeParticipant)
};

} // namespace sync::database
