#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVector>

#include <vector>

struct sqlite3;

namespace tandry::test {

/// Reads and changes a store file directly with SQLite.
///
/// Returns texts as `QString`, integers as `qlonglong`, NULL as an invalid value and a date-time as the integer that is
/// stored. Fails the test if a statement fails.
class RawStore
{
public:
    /// Whether the destructor checkpoints a write-ahead log or leaves it.
    enum Closing
    {
        CheckpointLog,
        KeepLog,
    };

    explicit RawStore(QString const& path, Closing closing = CheckpointLog);
    ~RawStore();
    RawStore(RawStore const&) = delete;
    RawStore& operator=(RawStore const&) = delete;

    /// Runs statements and ignores their rows.
    void Run(QString const& statements);
    /// Returns all rows of a statement.
    std::vector<QVector<QVariant>> Rows(QString const& statement);
    /// Returns the first column of the first row, or an invalid value if there is none.
    QVariant Value(QString const& statement);
    qlonglong Count(QString const& table);

    /// Makes every DELETE of the rows of a table fail that fulfil a condition on `OLD`, until `AllowToDelete`.
    void RefuseToDelete(QString const& table, QString const& condition);
    void AllowToDelete();

    /// For uses that the operations above do not cover.
    sqlite3* handle() const { return _handle; }

private:
    sqlite3* _handle = nullptr;
};

} // namespace tandry::test
