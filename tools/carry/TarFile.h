#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

namespace tandry::carry {

/// Writes a tar file in the format of POSIX. Its entries are files that only their owner may read, and name no user and
/// no time.
class TarFile
{
public:
    /// The device must outlive this object.
    explicit TarFile(QIODevice& device)
        : _device(device)
    {}

    /// Returns false if the device has failed, or if `content` cannot be read to its end. The name has at most 100
    /// bytes.
    [[nodiscard]] bool Add(QByteArray const& name, QIODevice& content);

    /// Writes the end of the file.
    [[nodiscard]] bool Finish();

private:
    bool _Write(QByteArray const& bytes);

    QIODevice& _device;
};

} // namespace tandry::carry
