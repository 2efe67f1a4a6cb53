#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <unordered_map>

namespace tandry::findings {

/// The committed pages in a store's write-ahead log.
///
/// Counts them as SQLite does: frames whose salts and running checksum are right, up to the first one that fails, and
/// of these only those up to the last one that ends a transaction. The last frame of a page counts. The index beside
/// the log is not needed.
class WriteAheadLog
{
public:
    /// Reads the file if there is one; changes nothing.
    explicit WriteAheadLog(QString const& path);

    /// Whether the log holds a committed transaction.
    bool isInUse() const { return _databasePages > 0; }
    int pageSize() const { return _pageSize; }
    /// The number of pages that the store has after the last transaction.
    quint32 databasePages() const { return _databasePages; }
    /// Where the pages stand in the log, in bytes, by their numbers.
    std::unordered_map<quint32, qint64> const& pages() const { return _pages; }

private:
    int _pageSize = 0;
    quint32 _databasePages = 0;
    std::unordered_map<quint32, qint64> _pages;
};

} // namespace tandry::findings
