#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace tandry::findings {

/// An entry of a folder on disk. A symbolic link is not followed.
struct DiskEntry
{
    enum class Kind
    {
        Missing,
        /// It cannot be examined; `error` says why.
        Unknown,
        File,
        Folder,
        Link,
        /// A socket, a pipe or a device.
        Special
    };

    static DiskEntry At(QString const& path);

    QString KindInWords() const;

    Kind kind = Kind::Missing;
    /// In bytes; of a link, the length of its target.
    qint64 size = 0;
    /// In milliseconds since 1970, UTC.
    qint64 modifiedMsec = 0;
    QString error;
};

/// Returns the names of a folder's entries; none if it cannot be read.
QStringList NamesOnDisk(QString const& folder);

} // namespace tandry::findings
