#pragma once

#include "ExitStatus.h"

#include <QString>
#include <QStringList>

namespace tandryctl {

/// The kind of failure that ends a command. Scripts rely on the word and the exit status of each: never change them.
enum class FailureCode
{
    /// No record matches.
    NotFound,
    /// The existing records do not allow the change.
    Conflict,
    /// A file or folder on disk is not what the command needs.
    UnusableFile,
    /// The command was carried out in part.
    Incomplete,
    /// The user answered a question with no.
    Declined,

    WrongUsage,
    /// The command asks before it goes on, and there is no terminal to ask on.
    Unconfirmed,

    OutputFailed,
    StoreMissing,
    // One for each kind of a store's errors.
    StoreLocked,
    StoreFull,
    StoreReadOnly,
    StoreDamaged,
    StoreMoved,
    StoreRefused,
    StoreOutcomeUnknown,
    /// Any other failure of the store.
    StoreFailed,
};

/// Returns the name that scripts see, such as "not-found".
QString WordOf(FailureCode code);

/// Returns the words of all codes.
QStringList FailureWords();

ExitStatus StatusOf(FailureCode code);

} // namespace tandryctl
