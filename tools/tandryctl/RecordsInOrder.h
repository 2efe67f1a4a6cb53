#pragma once

#include "DiskDifferences.h"
#include "ExternalSort.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace tandryctl {

/// What is on record of a folder or file and compared with the disk.
struct RecordedEntry
{
    /// Returns an entry without values.
    static RecordedEntry At(QString const& path, EntryKind kind);

    QString path;
    /// The length of the path up to and including its last slash.
    int folderLength = 0;
    EntryKind kind = EntryKind::Folder;
    qint64 size = 0;
    QDateTime modified;

    qint64 bytes() const;
};

QDataStream& operator<<(QDataStream& stream, RecordedEntry const& entry);
QDataStream& operator>>(QDataStream& stream, RecordedEntry& entry);

/// A root's folders and files on record, in the order in which `RootDiff` visits a tree: a folder's sub-folders, its
/// files, both by their names, and then what is in each sub-folder, the last sub-folder first.
///
/// Compares texts and knows nothing of records that are missing or misplaced: an entry belongs where its path says. Of
/// entries with the same path and kind, the first one counts. What does not fit into memory is in the temporary folder.
class RecordsInOrder
{
public:
    /// Throws `Failure` if the temporary folder has no room.
    void Add(RecordedEntry entry);

    /// Goes back to the first entry, or to it for the first time. Nothing may be added after that.
    void Begin();

    /// Returns the current entry; null after the last one.
    RecordedEntry const* current() const { return _reader ? _reader->value() : nullptr; }
    void Advance();

    /// Whether the current entry comes before this one, or before everything in a folder, whose path ends in a slash.
    bool IsBefore(RecordedEntry const& entry) const;
    bool IsBeforeFolder(QString const& folder) const;

    /// Returns the number of all entries.
    qint64 Count();

private:
    struct ComesBefore
    {
        bool operator()(RecordedEntry const& left, RecordedEntry const& right) const;
    };
    using Sort = ExternalSort<RecordedEntry, ComesBefore>;

    static void _SkipToNext(Sort::Reader& reader);

    Sort _entries;
    std::optional<Sort::Reader> _reader;
};

} // namespace tandryctl
