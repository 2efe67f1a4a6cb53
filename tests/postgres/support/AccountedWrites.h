#pragma once

#include "postgres/PostgresDatabaseFactory.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace tandry::test {

/// Writes to a store in every way, with reads between, and keeps account of what the store tells of each write. The
/// records are servers, known by their aliases.
class AccountedWrites
{
public:
    /// How many records a script writes.
    static constexpr int Writes = 6;

    explicit AccountedWrites(std::shared_ptr<sync::database::PostgresDatabaseFactory> store);
    ~AccountedWrites();
    AccountedWrites(AccountedWrites const&) = delete;
    AccountedWrites& operator=(AccountedWrites const&) = delete;

    /// Writes a record alone, a scope, a client transaction and another record. The aliases begin with `prefix`.
    void RunScript(QString const& prefix = {});

    /// Writes that returned true and were not told as lost.
    QSet<QString> const& kept() const { return _kept; }
    /// Writes that failed or were told as lost.
    QSet<QString> const& failed() const { return _failed; }
    /// Writes of which the store could not tell.
    QSet<QString> const& unknown() const { return _unknown; }
    bool allKept() const { return _failed.isEmpty() && _unknown.isEmpty(); }

    /// Returns a description of each record for which the server's rows give the lie to what was told.
    QStringList Lies(QStringList const& onServer) const;

private:
    void WriteScope(QString const& prefix);
    void WriteClientTransaction(QString const& prefix);
    void Settle(QStringList const& aliases, bool worked);

    std::shared_ptr<sync::database::PostgresDatabaseFactory> const _store;
    QMetaObject::Connection const _connection;
    std::vector<sync::database::StoreError> _lost;
    QSet<QString> _kept;
    QSet<QString> _failed;
    QSet<QString> _unknown;
};

} // namespace tandry::test
