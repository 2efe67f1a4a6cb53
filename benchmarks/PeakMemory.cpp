#include "benchmarks/PeakMemory.h"

#include <QByteArray>
#include <QFile>

#include <malloc.h>

#include <algorithm>

namespace sync::benchmarks {

namespace {

/// A size out of /proc/self/status, in bytes.
qint64 Status(char const* key)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (QByteArray const& line : status.readAll().split('\n'))
        if (line.startsWith(key))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    return 0;
}

/// What was freed goes back to the system first, or it would hide what is used next.
qint64 ResetPeak()
{
    ::malloc_trim(0);
    QFile references(QStringLiteral("/proc/self/clear_refs"));
    if (!references.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || references.write("5") != 1)
        return 0;
    return Status("VmRSS:");
}

} // namespace

PeakMemory::PeakMemory()
    : _start(ResetPeak())
{}

qint64 PeakMemory::beyondStart() const
{
    return _start == 0 ? 0 : std::max<qint64>(0, Status("VmHWM:") - _start);
}

} // namespace sync::benchmarks
