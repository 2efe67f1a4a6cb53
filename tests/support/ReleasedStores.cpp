#include "support/ReleasedStores.h"

#include <gtest/gtest.h>

#include <QFile>

#include <algorithm>

namespace tandry::test {

using sync::database::JournalMode;

namespace {

std::vector<ReleasedStore> StoresBelow(int version)
{
    std::vector<ReleasedStore> below;
    for (ReleasedStore const& store : AllReleasedStores()) {
        if (store.version < version)
            below.push_back(store);
    }
    return below;
}

} // namespace

void ReleasedStore::CopyTo(QString const& path) const
{
    QString const source =
        QStringLiteral(TANDRY_TEST_DATA "/stores/version-%1-%2.db")
            .arg(version)
            .arg(journalMode == JournalMode::WriteAheadLog ? QStringLiteral("log") : QStringLiteral("journal"));
    EXPECT_TRUE(QFile::copy(source, path)) << source.toStdString();
    EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
}

std::string ReleasedStore::Name() const
{
    return "Version" + std::to_string(version) + (journalMode == JournalMode::WriteAheadLog ? "Log" : "Journal");
}

void PrintTo(ReleasedStore const& store, std::ostream* out)
{
    *out << store.Name();
}

std::vector<ReleasedStore> AllReleasedStores()
{
    std::vector<ReleasedStore> stores;
    for (int const version : {0, 1, 2}) {
        stores.push_back({version, JournalMode::WriteAheadLog});
        stores.push_back({version, JournalMode::Rollback});
    }
    return stores;
}

std::vector<ReleasedStore> OlderStores()
{
    return StoresBelow(CurrentVersion);
}

std::vector<ReleasedStore> PreviewStores()
{
    return StoresBelow(1);
}

StoreRows RowsOf(RawStore& store)
{
    StoreRows rows;
    for (QVector<QVariant> const& table : store.Rows(
             QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite%'"))) {
        QString const name = table.first().toString();
        auto const rowsOfTable = store.Rows(QStringLiteral("SELECT * FROM %1 ORDER BY id").arg(name));
        if (!rowsOfTable.empty())
            rows.insert(name, rowsOfTable);
    }
    return rows;
}

StoreRows UpToDate(StoreRows rows)
{
    std::vector<QVector<QVariant>>& schedules = rows[QStringLiteral("Schedules")];
    bool const hasDefault = std::any_of(
        schedules.begin(), schedules.end(), [](QVector<QVariant> const& row) { return row.value(1).toInt() == 0; });
    if (!hasDefault)
        schedules.push_back({schedules.back().front().toLongLong() + 1, 0LL, QVariant(), QVariant(), 0LL, 30LL});
    return rows;
}

int VersionOf(RawStore& store)
{
    return store.Value(QStringLiteral("PRAGMA user_version")).toInt();
}

} // namespace tandry::test
