#pragma once

#include "database/StoreError.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace tandry::findings {

/// A copy of a store, with the log and the journal beside it, in the temporary folder. It is accessible by its owner
/// only and removed with the object.
///
/// A store that was left open, or that has an older version, cannot be read without changing it. Its copy can be opened
/// for writing, and the store stays as it is.
class PrivateCopy
{
public:
    /// Returns null on failure; `error` then names the file and the reason. Its kind is `Full` or `ReadOnly` if the
    /// temporary folder is the reason, and `Locked` if a program is writing to the store.
    static std::unique_ptr<PrivateCopy> Make(QString const& storePath, sync::database::StoreError& error);

    /// Whether a store that could not be opened for reading, for this reason, can be read from a copy.
    static bool IsNeededAfter(sync::database::StoreErrorKind reason);

    /// The copied store.
    QString path() const { return _folder.filePath(QStringLiteral("store.db")); }

private:
    PrivateCopy();

    QTemporaryDir _folder;
};

} // namespace tandry::findings
