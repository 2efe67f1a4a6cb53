#pragma once

#include "database/file/Descriptor.h"
#include "database/store/Failure.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <vector>

namespace sync::database {

/// The operating system's notices of changes to files and folders (inotify).
class FileNotices
{
public:
    FileNotices();

    /// Fails if the system has no more watches to give.
    Failure Check(QString const& path) const;
    /// Watches the file or folder at the path as well, for the events of the mask. Fails if there is none.
    [[nodiscard]] bool Watch(QByteArray const& name, quint32 mask);
    /// Ends all watches.
    void Clear();

    /// Readable when a notice has come.
    int descriptor() const { return _descriptor.get(); }
    /// Takes all notices; returns whether there was one.
    bool Take();

private:
    Descriptor const _descriptor;
    int _error;
    std::vector<int> _watches;
};

} // namespace sync::database
