#include "StoreFailure.h"

#include "ServerStore.h"
#include "Text.h"

#include "database/AbsolutePath.h"
#include "database/StoreError.h"
#include "tools/findings/LockHolders.h"
#include "tools/findings/StoreAdvice.h"

#include <QStringList>

namespace tandryctl {

using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::LockHolder;

namespace {

FailureCode CodeOf(StoreErrorKind kind)
{
    switch (kind) {
    case StoreErrorKind::Locked:
        return FailureCode::StoreLocked;
    case StoreErrorKind::Full:
        return FailureCode::StoreFull;
    case StoreErrorKind::ReadOnly:
        return FailureCode::StoreReadOnly;
    case StoreErrorKind::Damaged:
        return FailureCode::StoreDamaged;
    case StoreErrorKind::Moved:
        return FailureCode::StoreMoved;
    case StoreErrorKind::OutcomeUnknown:
        return FailureCode::StoreOutcomeUnknown;
    case StoreErrorKind::Refused:
    case StoreErrorKind::OlderVersion:
    case StoreErrorKind::NewerVersion:
    case StoreErrorKind::NotClosed:
        return FailureCode::StoreRefused;
    case StoreErrorKind::ConnectionLost:
    case StoreErrorKind::Other:
        break;
    }
    return FailureCode::StoreFailed;
}

QString HintOn(StoreErrorKind kind)
{
    QString const advice = tandry::findings::AdviceOn(kind);
    return kind == StoreErrorKind::Locked ? advice + QStringLiteral(", or wait longer with --wait SECONDS") : advice;
}

/// What to do about an error of a store on a server, where it is something else than with a file.
QString HintOnServer(StoreErrorKind kind)
{
    switch (kind) {
    case StoreErrorKind::Full:
        return QStringLiteral("have space freed on the server, then try again");
    case StoreErrorKind::ReadOnly:
        return QStringLiteral("have the role allowed to write, or do what the reason says, then try again");
    case StoreErrorKind::Damaged:
        return QStringLiteral("have the server's administrator look at the schema, and put a dump of it in its place");
    case StoreErrorKind::Moved:
        return QStringLiteral("see who removed the profile, then try again");
    case StoreErrorKind::Refused:
        return QStringLiteral("see what the server's log says");
    case StoreErrorKind::OutcomeUnknown:
        return QStringLiteral("look what is on record and repeat only what is missing");
    case StoreErrorKind::NewerVersion:
        return QStringLiteral("use the tandryctl of the newer program");
    case StoreErrorKind::ConnectionLost:
        return QStringLiteral("see that the server runs, can be reached from here and takes this user, then try again");
    case StoreErrorKind::Other:
        return QStringLiteral("create the profile with 'tandryctl init', or do what the reason says");
    default:
        return HintOn(kind);
    }
}

QString NameOf(LockHolder const& holder)
{
    if (holder.processId <= 0)
        return QStringLiteral("a process that is not visible from here");
    QString const process = QStringLiteral("process %1").arg(holder.processId);
    return holder.program.isEmpty() ? process : process + QStringLiteral(" (%1)").arg(QuotedBytes(holder.program));
}

} // namespace

Failure StoreFailure(StoreError const& error, QString const& hintForOther, StorePlace place)
{
    FailureCode const code = CodeOf(error.kind);
    if (place == StorePlace::Server)
        return {code, OneLine(error.text), HintOnServer(error.kind)};
    bool const isReplaced = code == FailureCode::StoreFailed && !hintForOther.isNull();
    return {code, OneLine(error.text), isReplaced ? hintForOther : HintOn(error.kind)};
}

QString AdviceOnTemporaryFolder()
{
    return QStringLiteral("name another folder, with enough room, in the environment variable TMPDIR");
}

Failure CopyFailure(StoreError const& error)
{
    switch (error.kind) {
    case StoreErrorKind::Full:
    case StoreErrorKind::ReadOnly: // the store itself is only read
        return {FailureCode::StoreFailed, OneLine(error.text), AdviceOnTemporaryFolder()};
    default:
        return StoreFailure(error);
    }
}

Failure WithLockHolders(Failure const& failure, QString const& storePath)
{
    if (IsOnServer(storePath))
        return failure;
    QStringList names;
    for (LockHolder const& holder : tandry::findings::FindLockHolders(sync::database::AbsolutePath(storePath)))
        names.append(NameOf(holder));
    if (names.isEmpty())
        return failure;
    QString const verb = QLatin1String(names.size() == 1 ? "holds" : "hold");
    return {failure.code(),
            failure.message() + QStringLiteral(": %1 %2 the lock").arg(JoinWithAnd(names), verb),
            failure.hint()};
}

} // namespace tandryctl
