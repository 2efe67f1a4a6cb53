#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>
#include <vector>

namespace sync::database {
class SqliteDatabaseFactory;
}

namespace tandry::findings {

/// A table or an index, SQLite's own included.
struct ObjectSize
{
    QString name;
    bool isIndex = false;
    /// Of an index, the rows that it holds.
    qint64 rows = 0;
    /// Of its pages.
    qint64 bytes = 0;
};

/// How large a store is, and what makes it so.
struct StoreSize
{
    int version = 0;
    qint64 fileBytes = 0;
    /// Of the write-ahead log; 0 without one.
    qint64 logBytes = 0;
    qint64 pageBytes = 0;
    qint64 pages = 0;
    qint64 freePages = 0;
    /// The largest first.
    std::vector<ObjectSize> objects;
};

/// Reads the whole store. If it fails, something may be missing; its `LastError` then tells why.
StoreSize ReadSize(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store);

} // namespace tandry::findings
