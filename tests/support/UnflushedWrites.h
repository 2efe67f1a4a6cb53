#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <map>
#include <mutex>
#include <random>
#include <vector>

namespace tandry::test {

/// Simulates what a disk may hold after a power cut: each file as of its last flush, with an arbitrary part of its
/// later changes. `FaultyFiles` reports SQLite's operations to it, on any thread.
class UnflushedWrites
{
public:
    /// The contents of a file count as flushed when it is first opened. A new file may be missing after the power cut
    /// unless it is flushed.
    void Opened(QByteArray const& name);
    void Written(QByteArray const& name, qint64 offset, QByteArray const& bytes);
    void Truncated(QByteArray const& name, qint64 size);
    void Flushed(QByteArray const& name);
    /// Earlier unflushed writes may be lost from then on: the system does not write them again at the next flush.
    void FlushFailed(QByteArray const& name);
    void Deleted(QByteArray const& name, bool flushed);

    /// Leaves the files as a power cut might. Nobody may have them open.
    void CutPower(std::mt19937& random) const;

private:
    enum class Durability
    {
        Unflushed,
        InDoubt,
        Flushed,
    };
    struct Change
    {
        qint64 offset = 0;
        QByteArray bytes;
        bool truncates = false;
        Durability durability = Durability::Unflushed;
    };
    struct File
    {
        QByteArray flushed;
        /// Later ones; flushed ones are among them only as long as an earlier one is in doubt.
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
