#pragma once

#include "Failure.h"

#include <QIODevice>

namespace tandryctl {

/// Standard output as a device. A write takes all bytes or fails with the system's reason.
class StandardOutput : public QIODevice
{
public:
    StandardOutput();

    /// Returns whether the system has taken everything: network file systems report a full disk only at a close.
    [[nodiscard]] bool Settle();

    /// Returns the failure of a command after a write or `Settle` has failed.
    Failure failure() const;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(char const* data, qint64 size) override;

private:
    void _SetError(int errorNumber);
};

} // namespace tandryctl
