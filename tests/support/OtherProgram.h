#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace tandry::test {

/// Another program that works on a store while this one has it open, where a copy of this process would take locks for
/// its own that it doesn't hold.
///
///     add COUNT              adds servers, each in a scope of its own
///     add-and-crash COUNT    the same, and then ends at once
///     add-and-exit           adds one server and exits inside its scope
///     add-with-sqlite COUNT  adds servers with SQLite alone, which notices nothing
///     run STATEMENT          runs a statement in a scope of its own
///     lock                   locks the file, whose store has a journal, for itself until `Wait`
///     take-over              tries to have the file to itself; succeeds when it could
class OtherProgram
{
public:
    OtherProgram(QString const& store, QStringList const& command);
    /// Waits for a program that was not waited for.
    ~OtherProgram();

    /// Waits until `lock` has the lock.
    void WaitForLock();
    /// 0 when it did what it was told to, or minus the signal that ended it.
    int Wait();
    qint64 processId() const { return _process.processId(); }

private:
    QProcess _process;
};

} // namespace tandry::test
