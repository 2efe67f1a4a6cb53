#include "StoreFailure.h"

#include "Text.h"

#include "database/AbsolutePath.h"
#include "database/StoreError.h"
#include "tools/findings/LockHolders.h"

#include <QStringList>

namespace tandryctl {

using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::LockHolder;

namespace {

struct Advice
{
    FailureCode code;
    QString hint;
};

Advice AdviceOn(StoreErrorKind kind)
{
    switch (kind) {
    case StoreErrorKind::Locked:
        return {FailureCode::StoreLocked,
                QStringLiteral("try again when the other program has finished, or wait longer with --wait SECONDS")};
    case StoreErrorKind::Full:
        return {FailureCode::StoreFull, QStringLiteral("free space there, then try again")};
    case StoreErrorKind::ReadOnly:
        return {FailureCode::StoreReadOnly,
                QStringLiteral(
                    "allow yourself to write the file and its folder, or do what the reason says, then try again")};
    case StoreErrorKind::Damaged:
        return {FailureCode::StoreDamaged,
                QStringLiteral("copy what can still be read to a new store with 'tandryctl recover FILE --to NEW', or "
                               "put a backup in its place with 'tandryctl restore BACKUP'")};
    case StoreErrorKind::Moved:
        return {FailureCode::StoreMoved,
                QStringLiteral("see which files are there now, close the store in all programs, then try again")};
    case StoreErrorKind::Refused:
        return {FailureCode::StoreRefused, QStringLiteral("see whether 'tandryctl check' finds damage")};
    case StoreErrorKind::OutcomeUnknown:
        return {FailureCode::StoreOutcomeUnknown,
                QStringLiteral("free the disk of its fault, look what is on record and repeat only what is missing")};
    case StoreErrorKind::OlderVersion:
        return {FailureCode::StoreRefused, QStringLiteral("bring it to this version with 'tandryctl init'")};
    case StoreErrorKind::NewerVersion:
        return {FailureCode::StoreRefused,
                QStringLiteral("use the tandryctl of the newer program, or put an older backup in its place with "
                               "'tandryctl restore BACKUP'")};
    case StoreErrorKind::NotClosed:
        return {FailureCode::StoreRefused, QStringLiteral("have its log read in with 'tandryctl init'")};
    case StoreErrorKind::ConnectionLost:
    case StoreErrorKind::Other:
        break;
    }
    return {FailureCode::StoreFailed,
            QStringLiteral("see that the file, its folder and the disk can be used, then try again")};
}

QString NameOf(LockHolder const& holder)
{
    if (holder.processId <= 0)
        return QStringLiteral("a process that is not visible from here");
    QString const process = QStringLiteral("process %1").arg(holder.processId);
    return holder.program.isEmpty() ? process : process + QStringLiteral(" (%1)").arg(QuotedBytes(holder.program));
}

} // namespace

Failure StoreFailure(StoreError const& error, QString const& hintForOther)
{
    Advice const advice = AdviceOn(error.kind);
    bool const isReplaced = advice.code == FailureCode::StoreFailed && !hintForOther.isNull();
    return {advice.code, OneLine(error.text), isReplaced ? hintForOther : advice.hint};
}

Failure WithLockHolders(Failure const& failure, QString const& storePath)
{
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
