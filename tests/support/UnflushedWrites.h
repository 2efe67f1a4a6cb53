#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <map>
#include <mutex>
#include <random>
#include <vector>

namespace tandry::test {

/// What a disk may hold when the power goes: each file as it was at its last flush, with any of its later changes and
/// without any others. Told by `FaultyFiles` of what the engine does; any thread may tell.
class UnflushedWrites
{
public:
    /// What a file holds when it is opened for the first time counts as flushed; one that isn't there may be missing
    /// later, unless it is flushed.
    void Opened(QByteArray const& name);
    void Written(QByteArray const& name, qint64 offset, QByteArray const& bytes);
    void Truncated(QByteArray const& name, qint64 size);
    void Flushed(QByteArray const& name);
    void Deleted(QByteArray const& name, bool flushed);

    /// Leaves the files as a power cut might. Nobody may have them open.
    void CutPower(std::mt19937& random) const;

private:
    struct Change
    {
        qint64 offset = 0;
        QByteArray bytes;
        bool truncates = false;
    };
    struct File
    {
        QByteArray flushed;
        std::vector<Change> changes;
        bool isThere = false;
        /// Whether the folder may know nothing yet of its coming, or of its going.
        bool nameIsFlushed = true;
    };

    static void Apply(QByteArray& contents, Change const& change);

    mutable std::mutex _mutex;
    std::map<QByteArray, File> _files;
};

} // namespace tandry::test
