#pragma once

#include "Failure.h"

#include <QFile>
#include <QString>

namespace tandryctl {

/// A new file of a command, readable and writable by its owner only. Never replaces a file. The destructor removes it
/// unless `Finish` has been called.
class NewFile
{
public:
    /// Creates the file. Throws `Failure` if that fails.
    explicit NewFile(QString const& path);
    ~NewFile();

    QIODevice& device() { return _file; }

    /// Flushes the file to the disk and keeps it. Throws `Failure` if that, or a write before, has failed.
    void Finish();

    /// Returns the failure of a command after a write has failed.
    Failure failure() const;

private:
    Q_DISABLE_COPY_MOVE(NewFile)

    QString const _path;
    QFile _file;
    bool _isKept = false;
};

} // namespace tandryctl
