#pragma once

#include "ExternalSort.h"

#include <QString>

#include <functional>
#include <map>
#include <vector>

class QDataStream;

namespace tandryctl {

enum class EntryKind : quint8
{
    Folder,
    File
};

/// A path at which the disk differs from the store.
struct DiskDifference
{
    /// As a scan with --prune would record it.
    enum class Change : quint8
    {
        Added,
        Changed,
        Removed
    };

    int rootId = 0;
    QString path;
    Change change = Change::Added;
    EntryKind kind = EntryKind::Folder;
    // What has changed.
    bool hasOtherSize = false;
    bool hasOtherTime = false;

    qint64 bytes() const;
};

QDataStream& operator<<(QDataStream& stream, DiskDifference const& difference);
QDataStream& operator>>(QDataStream& stream, DiskDifference& difference);

/// The differences of all roots by root and path, whatever their number: those that do not fit into memory are in the
/// temporary folder.
class DiskDifferences
{
public:
    /// Throws `Failure` if the temporary folder has no room.
    void Add(DiskDifference difference);

    /// Notes that the contents of a directory are not known, so that nothing in it counts as removed.
    void LeaveOut(int rootId, QString const& directory);

    /// Whether the path is or lies in a directory whose contents are not known.
    bool MayBeThere(int rootId, QString const& path) const;

    /// Calls `take` with each difference in order. Nothing may be added after the first call.
    void ForEach(std::function<void(DiskDifference const&)> const& take);

private:
    struct ComesBefore
    {
        bool operator()(DiskDifference const& left, DiskDifference const& right) const;
    };

    ExternalSort<DiskDifference, ComesBefore> _differences;
    std::map<int, std::vector<QString>> _leftOut;
};

} // namespace tandryctl
