#pragma once

#include "benchmarks/Backend.h"
#include "benchmarks/SampleRecords.h"

#include <QString>
#include <QTemporaryDir>

#include <map>
#include <vector>

namespace sync::benchmarks {

/// A store made by the library and filled with samples, and one copy of it per backend. Its destructor removes the
/// files.
class SampleStore
{
public:
    /// A table or an index.
    struct Part
    {
        QString name;
        /// The table that an index belongs to, or the table itself.
        QString table;
        /// In the store's file.
        qint64 bytes = 0;

        bool isIndex() const { return name != table; }
    };

    /// Makes and fills the store in a new folder below `directory`. Times of durable writes need a real disk there.
    SampleStore(QString const& directory, SampleRecords const& records);

    SampleRecords const& records() const { return _records; }
    QString path() const;
    /// Returns the size of the store's file.
    qint64 bytes() const;

    std::vector<Part> Parts() const;
    /// Returns the size of a table with all its indices.
    qint64 BytesOf(QString const& table) const;

    /// Returns the path of the backend's copy; makes the copy at the first call and after `RemoveCopies`.
    QString CopyFor(BackendKind kind);
    /// Removes the copies, which must not be open.
    void RemoveCopies();

private:
    QTemporaryDir _directory;
    SampleRecords _records;
    std::map<BackendKind, QString> _copies;
};

} // namespace sync::benchmarks
