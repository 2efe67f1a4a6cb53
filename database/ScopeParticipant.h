#pragma once

#include "database/TandryDatabaseExport.h"

#include <QtGlobal>

namespace sync::database {

/// A connection that has written inside a scope and must make the writes durable when the outermost one ends.
///
/// The store behind a client's own factory implements it to take part in `TransactionalScope`.
class TANDRY_DATABASE_EXPORT ScopeParticipant
{
public:
    ScopeParticipant();
    virtual ~ScopeParticipant();

    /// Makes durable what was written since the connection joined; false when it could not. Called on the thread that
    /// joined, which has left the scope's list by then.
    [[nodiscard]] virtual bool CommitScope() noexcept = 0;

private:
    Q_DISABLE_COPY_MOVE(ScopeParticipant)
};

} // namespace sync::database
