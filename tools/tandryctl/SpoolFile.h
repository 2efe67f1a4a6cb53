#pragma once

#include <QByteArray>
#include <QFile>
#include <QtGlobal>

namespace tandryctl {

/// A nameless file in the temporary folder for what a command does not keep in memory. It goes with the object, and
/// with a process that is killed.
class SpoolFile
{
public:
    /// Where bytes are in the file.
    struct Block
    {
        qint64 offset;
        int size;
    };

    /// Writes bytes behind the others. Throws `Failure` if the temporary folder does not take them.
    Block Append(QByteArray const& bytes);

    /// Returns the bytes of a block. Throws `Failure` if they cannot be read.
    QByteArray Read(Block const& block);

private:
    void _Create();

    QFile _file;
    qint64 _size = 0;
};

} // namespace tandryctl
