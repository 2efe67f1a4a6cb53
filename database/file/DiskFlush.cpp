#include "database/file/DiskFlush.h"

#include "database/file/Descriptor.h"

#include <cerrno>

#include <fcntl.h>

namespace sync::database {

namespace {

int Flush(char const* name, int flags)
{
    Descriptor const descriptor(::open(name, flags | O_RDONLY | O_CLOEXEC));
    return descriptor.isValid() && ::fsync(descriptor.get()) == 0 ? 0 : errno;
}

} // namespace

int FlushFile(char const* name)
{
    return Flush(name, 0);
}

int FlushFolder(QByteArray const& name)
{
    int const errorNumber = Flush(name.constData(), O_DIRECTORY);
    return errorNumber == EINVAL ? 0 : errorNumber; // the file system flushes no folders
}

} // namespace sync::database
