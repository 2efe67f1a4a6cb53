#pragma once

#include <QString>
#include <QtGlobal>

#include <unordered_map>

namespace tandry::findings {

/// The pages that a rollback journal restores: as they were before a transaction that was never committed.
///
/// Counts them as SQLite does when it rolls back: a journal whose header was cleared, or that belongs to a transaction
/// over several files whose common journal is gone, is none; records count up to the first one whose checksum is wrong.
class RollbackJournal
{
public:
    /// Reads the file if there is one; changes nothing.
    explicit RollbackJournal(QString const& path);

    /// Whether there is a transaction to roll back.
    bool isHot() const { return _isHot; }
    int pageSize() const { return _pageSize; }
    /// The number of pages that the store had before the transaction.
    quint32 databasePages() const { return _databasePages; }
    /// Where the pages stand in the journal, in bytes, by their numbers.
    std::unordered_map<quint32, qint64> const& pages() const { return _pages; }

private:
    bool _isHot = false;
    int _pageSize = 0;
    quint32 _databasePages = 0;
    std::unordered_map<quint32, qint64> _pages;
};

} // namespace tandry::findings
