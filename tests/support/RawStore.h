#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVector>

#include <vector>

struct sqlite3;

namespace tandry::test {

/// A handle of the engine's own on a store file, to look at rows, and to change them, behind the store's back.
///
/// Texts come back as `QString`, integers as `qlonglong`, NULL as an invalid value; a date-time as the integer that it
/// is kept as. A statement that fails fails the test.
class RawStore
{
public:
    /// What happens, when it is closed, to a log that a program left behind.
    enum Closing
    {
        WorkingOffLog,
        LeavingLog,
    };

    explicit RawStore(QString const& path, Closing closing = WorkingOffLog);
    ~RawStore();
    RawStore(RawStore const&) = delete;
    RawStore& operator=(RawStore const&) = delete;

    /// Runs statements whose rows don't matter.
    void Run(QString const& statements);
    /// All rows of a statement.
    std::vector<QVector<QVariant>> Rows(QString const& statement);
    /// The first column of the first row; invalid when there is none.
    QVariant Value(QString const& statement);
    qlonglong Count(QString const& table);

    /// For what the operations above don't cover.
    sqlite3* handle() const { return _handle; }

private:
    sqlite3* _handle = nullptr;
};

} // namespace tandry::test
