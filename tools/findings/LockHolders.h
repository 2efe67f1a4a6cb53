#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>
#include <QtGlobal>

namespace tandry::findings {

/// A process that holds a lock of a store.
struct LockHolder
{
    /// 0 or less if the process is not visible from here, such as one outside this container or on another machine.
    qint64 processId = 0;
    /// The program's name as the system keeps it, cut after 15 bytes; empty if it is not known.
    QByteArray program;
};

/// Returns the processes that keep others from writing to the store, or from opening it, at this moment. Asks for the
/// locks themselves; a lock may be gone by the time the function returns.
///
/// The calling process must have no connection to the store: it would be found itself, and would lose its locks, which
/// POSIX takes from a process that closes any descriptor of the file.
[[nodiscard]] QVector<LockHolder> FindLockHolders(QString const& storePath);

} // namespace tandry::findings
