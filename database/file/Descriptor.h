#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace sync::database {

/// A file descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : _descriptor(descriptor)
    {}
    ~Descriptor()
    {
        if (_descriptor >= 0)
            ::close(_descriptor);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)

    bool isValid() const { return _descriptor >= 0; }
    int get() const { return _descriptor; }

private:
    int _descriptor;
};

} // namespace sync::database
