#include "RecordsInOrder.h"

#include <QDataStream>

#include <algorithm>
#include <utility>

namespace tandryctl {

namespace {

/// A slash is less than all characters of names, so that names are compared part by part.
int RankOf(QChar character)
{
    return character == QLatin1Char('/') ? -1 : character.unicode();
}

/// Compares the first characters of two texts, which are paths of folders and end in a slash: less than 0 if the first
/// folder is visited before the second one.
int CompareFolders(QString const& left, int leftLength, QString const& right, int rightLength)
{
    auto const [l, r] = std::mismatch(
        left.constData(), left.constData() + leftLength, right.constData(), right.constData() + rightLength);
    bool const isLeftUsedUp = l == left.constData() + leftLength;
    bool const isRightUsedUp = r == right.constData() + rightLength;
    if (isLeftUsedUp || isRightUsedUp)
        return int(isRightUsedUp) - int(isLeftUsedUp); // a folder before those in it
    return RankOf(*r) - RankOf(*l);
}

} // namespace

RecordedEntry RecordedEntry::At(QString const& path, EntryKind kind)
{
    RecordedEntry entry;
    entry.path = path;
    entry.folderLength = int(path.lastIndexOf(QLatin1Char('/'))) + 1;
    entry.kind = kind;
    return entry;
}

qint64 RecordedEntry::bytes() const
{
    return qint64(sizeof(*this)) + BytesOf(path);
}

QDataStream& operator<<(QDataStream& stream, RecordedEntry const& entry)
{
    return stream << entry.path << entry.folderLength << quint8(entry.kind) << entry.size << entry.modified;
}

QDataStream& operator>>(QDataStream& stream, RecordedEntry& entry)
{
    quint8 kind = 0;
    stream >> entry.path >> entry.folderLength >> kind >> entry.size >> entry.modified;
    entry.kind = EntryKind(kind);
    return stream;
}

bool RecordsInOrder::ComesBefore::operator()(RecordedEntry const& left, RecordedEntry const& right) const
{
    int const order = CompareFolders(left.path, left.folderLength, right.path, right.folderLength);
    if (order != 0)
        return order < 0;
    return left.kind != right.kind ? left.kind < right.kind : left.path < right.path;
}

void RecordsInOrder::Add(RecordedEntry entry)
{
    _entries.Add(std::move(entry));
}

void RecordsInOrder::Begin()
{
    _reader.emplace(_entries);
}

void RecordsInOrder::Advance()
{
    _SkipToNext(*_reader);
}

bool RecordsInOrder::IsBefore(RecordedEntry const& entry) const
{
    return current() != nullptr && ComesBefore()(*current(), entry);
}

bool RecordsInOrder::IsBeforeFolder(QString const& folder) const
{
    return current() != nullptr &&
           CompareFolders(current()->path, current()->folderLength, folder, int(folder.size())) < 0;
}

qint64 RecordsInOrder::Count()
{
    qint64 count = 0;
    for (Sort::Reader reader(_entries); reader.value() != nullptr; _SkipToNext(reader))
        ++count;
    return count;
}

void RecordsInOrder::_SkipToNext(Sort::Reader& reader)
{
    QString const path = reader.value()->path;
    EntryKind const kind = reader.value()->kind;
    do
        reader.Advance();
    while (reader.value() != nullptr && reader.value()->kind == kind && reader.value()->path == path);
}

} // namespace tandryctl
