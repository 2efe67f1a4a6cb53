#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/SampleRecords.h"

#include <QString>
#include <QStringList>

namespace sync::benchmarks {

/// A store made by the library and filled with samples, and copies of it. The destructor removes them.
///
/// A store is named by what opens it: a file's path, or the URI of a profile.
class SampleStore
{
public:
    explicit SampleStore(SampleRecords const& records)
        : _records(records)
    {}
    virtual ~SampleStore() = default;

    SampleRecords const& records() const { return _records; }

    /// Returns the size of the store.
    virtual qint64 bytes() const = 0;
    /// Returns the size of a table with all its indices.
    virtual qint64 BytesOf(QString const& table) const = 0;

    /// Returns the backend's copy; makes it at the first call and after `RemoveCopies`.
    virtual QString CopyFor(BackendKind kind) = 0;
    /// Removes the copies, which must not be open.
    virtual void RemoveCopies() = 0;

    /// Returns so many copies, which backends that only read can share.
    virtual QStringList Copies(int count) = 0;

private:
    Q_DISABLE_COPY_MOVE(SampleStore)

    SampleRecords const _records;
};

} // namespace sync::benchmarks
