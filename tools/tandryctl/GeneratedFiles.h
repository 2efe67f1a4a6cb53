#pragma once

#include "ScanProblem.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace tandryctl {

class Session;

/// The files on disk that were generated from files whose records a command removes. The command names them before it
/// asks, and deletes them when the records are gone for good.
class GeneratedFiles
{
public:
    explicit GeneratedFiles(Session& session)
        : _session(session)
    {}

    /// Adds what was generated from this file and is on disk.
    void AddOf(int fileId);

    int count() const { return _paths.size(); }

    /// Names each file in a line.
    void List() const;

    /// Removes the file's record and those of the files generated from it, which it adds too. Leaves the disk as it is.
    void RemoveRecords(int fileId);

    /// Deletes the files, unless this is a dry run. Returns how many, and adds a problem for each one that is still
    /// there.
    int Delete(QVector<ScanProblem>& problems) const;

private:
    Session& _session;
    QStringList _paths;
};

} // namespace tandryctl
