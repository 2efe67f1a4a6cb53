// Stores with overwritten pages, held against what SQLite itself tells about them before they were damaged: which rows
// there are, and through its table `dbstat` on which page each one lies.

#include "tools/findings/StoreRecovery.h"

#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

#include <iostream>
#include <numeric>
#include <random>
#include <set>
#include <vector>

using namespace tandry::test;
using tandry::findings::RecoveredTable;
using tandry::findings::RecoverStore;
using tandry::findings::RecoveryMode;
using tandry::findings::RecoveryReport;

namespace {

using Random = std::mt19937;

int Below(Random& random, int limit)
{
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

QString Text(Random& random, int longest)
{
    static QString const letters = QStringLiteral("abcdefghij/ ._-äöü日本😀");
    QString text;
    for (int length = Below(random, longest + 1); length > 0; --length) {
        int const place = Below(random, letters.size());
        if (!letters.at(place).isSurrogate())
            text += letters.at(place);
    }
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

QString Number(Random& random)
{
    switch (Below(random, 4)) {
    case 0:
        return QStringLiteral("NULL");
    case 1:
        return QString::number(Below(random, 3));
    case 2:
        return QString::number(1'700'000'000'000LL + qint64(random()));
    default:
        return QString::number(-Below(random, 100'000));
    }
}

using Columns = std::vector<QVector<QVariant>>;

/// The names and types of the table's columns, without its id.
Columns ColumnsOf(RawStore& store, QString const& table)
{
    return store.Rows(QStringLiteral("SELECT name, type FROM pragma_table_info('%1') WHERE name <> 'id'").arg(table));
}

/// A value for each column of the table, as SQL; the kind of a file is that of its table, as the client writes it.
QString Values(Columns const& columns, QString const& table, Random& random)
{
    QStringList values;
    for (QVector<QVariant> const& column : columns) {
        QString const name = column.at(0).toString();
        if (name == QLatin1String("fileType"))
            values.append(table.startsWith(QLatin1String("Gen"))
                              ? QStringLiteral("1")
                              : (table.startsWith(QLatin1String("Base")) ? QStringLiteral("2") : QStringLiteral("0")));
        else if (name == QLatin1String("serverId") || name == QLatin1String("syncInterval"))
            values.append(QString::number(Below(random, 50)));
        else if (column.at(1).toString() != QLatin1String("TEXT"))
            values.append(Number(random));
        else if (Below(random, 3) == 0)
            values.append(QStringLiteral("NULL"));
        else
            values.append(Text(random, Below(random, 60) == 0 ? 3000 : 25));
    }
    return values.join(QLatin1Char(','));
}

QStringList const& Tables()
{
    static QStringList const tables{QStringLiteral("ServerConfiguration"),
                                    QStringLiteral("AuthenticationConfiguration"),
                                    QStringLiteral("ProductConfiguration"),
                                    QStringLiteral("FolderConfiguration"),
                                    QStringLiteral("FileConfiguration"),
                                    QStringLiteral("GeneratedFileConfiguration"),
                                    QStringLiteral("BaseFileConfiguration"),
                                    QStringLiteral("Schedules")};
    return tables;
}

/// A store of a random version, size of pages and number of rows, partly with removed rows, partly with a log.
void MakeStore(QString const& path, Random& random)
{
    int const version = Below(random, 2);
    bool const hasLog = Below(random, 3) == 0;
    QByteArray const schema = ReadFile(QStringLiteral(TANDRY_TEST_DATA "/stores/version-%1.sql").arg(version));
    EXPECT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    RawStore store(path, RawStore::KeepLog);
    store.Run(QStringLiteral("PRAGMA page_size = %1; PRAGMA journal_mode = %2; PRAGMA secure_delete = %3;"
                             "PRAGMA wal_autocheckpoint = 0; PRAGMA application_id = 0x544e4459; BEGIN;")
                  .arg(512 << Below(random, 4))
                  .arg(hasLog ? QStringLiteral("WAL") : QStringLiteral("DELETE"))
                  .arg(Below(random, 4) != 0 ? 1 : 0));
    store.Run(QString::fromUtf8(schema));
    for (QString const& table : Tables()) {
        bool const isLarge = table.contains(QLatin1String("F"));
        int const rows = Below(random, isLarge ? 400 : 25);
        qint64 id = 1 + Below(random, 50);
        Columns const columns = ColumnsOf(store, table);
        QString values;
        for (int row = 0; row < rows; ++row) {
            id += 1 + (Below(random, 10) == 0 ? Below(random, 30) : 0);
            values += QStringLiteral("INSERT OR IGNORE INTO %1 VALUES (%2,%3);")
                          .arg(table)
                          .arg(id)
                          .arg(Values(columns, table, random));
        }
        store.Run(values);
    }
    store.Run(QStringLiteral("COMMIT;"));
    if (hasLog && Below(random, 2) == 0)
        store.Run(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE);"));
    if (Below(random, 2) == 0) {
        store.Run(QStringLiteral("BEGIN;"));
        for (QString const& table : Tables()) {
            int const from = Below(random, 200);
            store.Run(QStringLiteral("DELETE FROM %1 WHERE id BETWEEN %2 AND %3;")
                          .arg(table)
                          .arg(from)
                          .arg(from + Below(random, 150)));
        }
        store.Run(QStringLiteral("COMMIT;"));
    }
}

/// A row with its table and id.
using Key = QPair<QString, qint64>;

struct Known
{
    QMap<Key, QVector<QVariant>> rows;
    /// The pages that hold a row: its leaf, and the pages that its record goes on to.
    QMap<Key, std::set<int>> pages;
    int pageSize = 0;
};

QMap<Key, QVector<QVariant>> AllRows(RawStore& store)
{
    QMap<Key, QVector<QVariant>> rows;
    StoreRows const byTable = RowsOf(store);
    for (auto table = byTable.begin(); table != byTable.end(); ++table) {
        for (QVector<QVariant> const& row : table.value())
            rows.insert({table.key(), row.first().toLongLong()}, row);
    }
    return rows;
}

/// Asks SQLite: a table's leaves in the order of their paths hold its rows in the order of their ids.
Known Ask(QString const& path)
{
    RawStore store(path, RawStore::KeepLog);
    Known known;
    known.rows = AllRows(store);
    known.pageSize = store.Value(QStringLiteral("PRAGMA page_size")).toInt();
    for (QString const& table : Tables()) {
        std::vector<QVector<QVariant>> const ids =
            store.Rows(QStringLiteral("SELECT id FROM %1 ORDER BY id").arg(table));
        std::size_t next = 0;
        QMap<QString, std::size_t> firstOfLeaf;
        for (QVector<QVariant> const& leaf :
             store.Rows(QStringLiteral("SELECT path, pageno, ncell FROM dbstat WHERE name = '%1' AND pagetype = 'leaf' "
                                       "ORDER BY path")
                            .arg(table))) {
            firstOfLeaf.insert(leaf.at(0).toString(), next);
            for (int cell = 0; cell < leaf.at(2).toInt(); ++cell, ++next)
                known.pages[{table, ids.at(next).first().toLongLong()}].insert(leaf.at(1).toInt());
        }
        EXPECT_EQ(next, ids.size()) << table.toStdString();
        for (QVector<QVariant> const& page :
             store.Rows(QStringLiteral("SELECT path, pageno FROM dbstat WHERE name = '%1' AND pagetype = 'overflow'")
                            .arg(table))) {
            QString const name = page.at(0).toString();
            int const plus = name.indexOf(QLatin1Char('+'));
            int const slash = name.lastIndexOf(QLatin1Char('/'));
            // "/000/003+000000": the entry 3 of the leaf "/000/".
            std::size_t const cell = name.mid(slash + 1, plus - slash - 1).toUInt(nullptr, 16);
            QString const leaf = name.left(slash + 1);
            EXPECT_TRUE(firstOfLeaf.contains(leaf)) << name.toStdString();
            known.pages[{table, ids.at(firstOfLeaf.value(leaf) + cell).first().toLongLong()}].insert(
                page.at(1).toInt());
        }
    }
    return known;
}

QByteArray Garbage(Random& random, int size)
{
    int const kind = Below(random, 3);
    QByteArray bytes(size, kind == 0 ? '\0' : '\xff');
    if (kind == 2) {
        for (char& byte : bytes)
            byte = static_cast<char>(random());
    }
    return bytes;
}

/// Overwrites random pages, a run of pages, the head or the tail of the file; returns the pages that were hit.
std::set<int> Damage(QString const& path, int pageSize, Random& random)
{
    qint64 const size = QFileInfo(path).size();
    int const pages = static_cast<int>(size / pageSize);
    std::set<int> hit;
    auto const overwrite = [&](qint64 from, qint64 to) {
        for (qint64 byte = from; byte < to; byte += pageSize)
            hit.insert(static_cast<int>(byte / pageSize) + 1);
        hit.insert(static_cast<int>((to - 1) / pageSize) + 1);
        Overwrite(path, from, Garbage(random, static_cast<int>(to - from)));
    };
    if (pages < 4)
        return hit;
    switch (Below(random, 4)) {
    case 0:
        for (int count = 1 + Below(random, 1 + pages / 8); count > 0; --count) {
            qint64 const page = Below(random, pages);
            overwrite(page * pageSize, (page + 1) * pageSize);
        }
        break;
    case 1: {
        qint64 const page = Below(random, pages);
        qint64 const count = 1 + Below(random, 1 + pages / 4);
        overwrite(page * pageSize, std::min<qint64>(pages, page + count) * pageSize);
        break;
    }
    case 2:
        overwrite(0, 1 + Below(random, static_cast<int>(size / 4)));
        break;
    default:
        overwrite(size - 1 - Below(random, static_cast<int>(size / 4)), size);
        break;
    }
    return hit;
}

struct Tally
{
    int stores = 0;
    int refused = 0;
    int expected = 0;
    int missing = 0;
    int recovered = 0;
    int wrong = 0;    // changed, invented, or in another table, and not told
    int doubtful = 0; // told as such, and how many of these are wrong
    int wrongDoubtful = 0;
};

void RecoverOne(unsigned seed, Tally& tally)
{
    SCOPED_TRACE(seed);
    Random random(seed);
    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("store.db"));
    QString const target = folder.filePath(QStringLiteral("new.db"));
    MakeStore(path, random);
    Known const known = Ask(path);
    QFile::remove(path + QStringLiteral("-shm"));
    std::set<int> const hit = Damage(path, known.pageSize, random);
    QMap<QString, QByteArray> const before = FolderContents(folder.path());

    QString error;
    auto const report = RecoverStore(path, target, RecoveryMode::Recover, error);
    ++tally.stores;
    QMap<Key, QVector<QVariant>> recovered;
    if (report)
        recovered = AllRows(*std::make_unique<RawStore>(target));
    else
        ++tally.refused;

    QMap<QString, int> wrong;
    for (auto row = recovered.begin(); row != recovered.end(); ++row) {
        if (known.rows.value(row.key()) == row.value())
            continue;
        ++wrong[row.key().first];
        std::cout << "store " << seed << ": " << row.key().first.toStdString() << ' ' << row.key().second
                  << (known.rows.contains(row.key()) ? " differs\n" : " was not there\n");
    }
    for (RecoveredTable const& table : report.value_or(RecoveryReport()).tables) {
        auto const doubtful = static_cast<int>(table.doubtful);
        tally.doubtful += doubtful;
        tally.wrongDoubtful += std::min(wrong.value(table.name), doubtful);
        tally.wrong += std::max(wrong.value(table.name) - doubtful, 0);
    }
    int missing = 0;
    for (auto row = known.pages.begin(); row != known.pages.end(); ++row) {
        bool const isIntact =
            std::none_of(row.value().begin(), row.value().end(), [&](int page) { return hit.count(page) != 0; });
        tally.expected += isIntact ? 1 : 0;
        missing += isIntact && !recovered.contains(row.key()) ? 1 : 0;
    }
    if (missing > 0)
        std::cout << "store " << seed << ": " << missing << " rows of intact leaves are missing\n";
    tally.missing += missing;
    tally.recovered += recovered.size();
    QFile::remove(target);
    EXPECT_EQ(FolderContents(folder.path()), before) << "the damaged store or what lies beside it has changed";
}

void RecoverEach(std::vector<unsigned> const& seeds)
{
    Tally tally;
    for (unsigned const seed : seeds)
        RecoverOne(seed, tally);
    std::cout << tally.stores << " stores, of which " << tally.refused << " held no table any more; " << tally.expected
              << " rows on intact leaves, " << tally.missing << " of them missing; " << tally.recovered
              << " rows recovered, " << tally.doubtful << " of them told as doubtful, of which " << tally.wrongDoubtful
              << " wrong, and " << tally.wrong << " of the others wrong\n";
    EXPECT_EQ(tally.wrong, 0);
    EXPECT_GT(tally.expected, 0);
    EXPECT_LT(tally.missing * 100, tally.expected);
}

} // namespace

// TANDRY_RECOVERY_STORES sets the number of stores, TANDRY_RECOVERY_FIRST the seed of the first one.
TEST(RecoveryOracleTest, DamagedStoresGiveBackWhatIsOnIntactLeaves)
{
    auto const number = [](char const* variable, unsigned otherwise) {
        bool isNumber = false;
        int const value = qEnvironmentVariableIntValue(variable, &isNumber);
        return isNumber ? static_cast<unsigned>(value) : otherwise;
    };
    std::vector<unsigned> seeds(number("TANDRY_RECOVERY_STORES", 12));
    std::iota(seeds.begin(), seeds.end(), number("TANDRY_RECOVERY_FIRST", 1));
    RecoverEach(seeds);
}

TEST(RecoveryOracleTest, RowsOfFilesGoToTheTableOfTheirKindThoughAnotherHasGivenTheSameIds)
{
    RecoverEach({1019, 1369});
}

// SQLite did not overwrite what it removed from these, and the list of free pages was lost with the header.
TEST(RecoveryOracleTest, RowsOnPagesOfALostFreeListDoNotComeBack)
{
    RecoverEach({1217, 1279, 1472});
}

// SQLite did not overwrite what it removed from these either, and nothing that is left tells the removed rows from
// others.
TEST(RecoveryOracleTest, RowsThatMayHaveBeenRemovedAreToldAsDoubtful)
{
    RecoverEach({2125, 2345, 2477});
}
