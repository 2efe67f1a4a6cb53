#include "DiskDifferences.h"

#include "Paths.h"

#include <QDataStream>

#include <algorithm>
#include <tuple>
#include <utility>

namespace tandryctl {

qint64 DiskDifference::bytes() const
{
    return qint64(sizeof(*this)) + BytesOf(path);
}

QDataStream& operator<<(QDataStream& stream, DiskDifference const& difference)
{
    return stream << difference.rootId << difference.path << quint8(difference.change) << quint8(difference.kind)
                  << difference.hasOtherSize << difference.hasOtherTime;
}

QDataStream& operator>>(QDataStream& stream, DiskDifference& difference)
{
    quint8 change = 0;
    quint8 kind = 0;
    stream >> difference.rootId >> difference.path >> change >> kind >> difference.hasOtherSize >>
        difference.hasOtherTime;
    difference.change = DiskDifference::Change(change);
    difference.kind = EntryKind(kind);
    return stream;
}

bool DiskDifferences::ComesBefore::operator()(DiskDifference const& left, DiskDifference const& right) const
{
    auto const key = [](DiskDifference const& difference) {
        bool const isRemoved =
            difference.change == DiskDifference::Change::Removed; // what has taken its place is first
        return std::tuple<int, QString const&, bool, EntryKind>(
            difference.rootId, difference.path, isRemoved, difference.kind);
    };
    return key(left) < key(right);
}

void DiskDifferences::Add(DiskDifference difference)
{
    _differences.Add(std::move(difference));
}

void DiskDifferences::LeaveOut(int rootId, QString const& directory)
{
    _leftOut[rootId].push_back(directory);
}

bool DiskDifferences::MayBeThere(int rootId, QString const& path) const
{
    auto const directories = _leftOut.find(rootId);
    return directories != _leftOut.end() &&
           std::any_of(directories->second.begin(), directories->second.end(), [&](QString const& directory) {
               return LiesIn(path, directory, Qt::CaseSensitive);
           });
}

void DiskDifferences::ForEach(std::function<void(DiskDifference const&)> const& take)
{
    for (decltype(_differences)::Reader reader(_differences); reader.value() != nullptr; reader.Advance()) {
        DiskDifference const& difference = *reader.value();
        if (difference.change != DiskDifference::Change::Removed || !MayBeThere(difference.rootId, difference.path))
            take(difference);
    }
}

} // namespace tandryctl
