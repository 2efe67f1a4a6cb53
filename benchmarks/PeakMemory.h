#pragma once

#include <QtGlobal>

namespace sync::benchmarks {

/// How much resident memory the process had at most since this was made, beyond what it had then.
class PeakMemory
{
public:
    PeakMemory();

    /// In bytes; 0 where the system doesn't tell.
    qint64 beyondStart() const;

private:
    qint64 const _start;
};

} // namespace sync::benchmarks
