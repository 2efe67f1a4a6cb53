#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

#include <memory>
#include <vector>

struct pg_conn;

namespace tandry::test {

/// Reads and changes a profile directly with libpq, as `RawStore` does with a store file.
class ServerRawStore
{
public:
    explicit ServerRawStore(QString const& uri);
    ~ServerRawStore();
    ServerRawStore(ServerRawStore const&) = delete;
    ServerRawStore& operator=(ServerRawStore const&) = delete;

    /// Runs statements and ignores their rows.
    void Run(QString const& statements);
    /// Returns all rows of a statement.
    std::vector<QVector<QVariant>> Rows(QString const& statement);
    /// Returns the first column of the first row, or an invalid value if there is none.
    QVariant Value(QString const& statement);
    qlonglong Count(QString const& table);

    void RefuseToDelete(QString const& table, QString const& condition);
    void AllowToDelete();

private:
    pg_conn* _connection = nullptr;
};

} // namespace tandry::test
