#include "tools/findings/BtreePage.h"

#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <random>

using namespace tandry::findings;
using tandry::test::RawStore;

namespace {

constexpr int PageSize = 512;

/// The second page of a file that SQLite has written: a table's leaf with the rows 1, 2 and 3, of 30 bytes of text
/// each.
QByteArray LeafBySqlite()
{
    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("pages.db"));
    EXPECT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    {
        RawStore store(path);
        store.Run(QStringLiteral("PRAGMA page_size = 512; CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT);"
                                 "INSERT INTO t (a) VALUES (printf('%030d', 1)), (printf('%030d', 2)), "
                                 "(printf('%030d', 3));"));
    }
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().mid(PageSize, PageSize);
}

BtreePage Parse(QByteArray const& page)
{
    return {page, PageSize, 2, 2};
}

void SetPointer(QByteArray& page, int index, quint16 offset)
{
    qToBigEndian<quint16>(offset, page.data() + 8 + 2 * index);
}

} // namespace

TEST(BtreePageTest, LeafBySqliteIsWholeAndHasItsRows)
{
    BtreePage const page = Parse(LeafBySqlite());
    EXPECT_EQ(page.kind(), PageKind::TableLeaf);
    EXPECT_TRUE(page.isWhole());
    ASSERT_EQ(page.cells().size(), 3u);
    EXPECT_EQ(page.cells()[2].rowId, 3);
    EXPECT_EQ(page.cells()[2].payloadSize, 33);
    EXPECT_EQ(page.cells()[2].overflow, 0u);
}

TEST(BtreePageTest, FreedSpaceLeavesThePageWhole)
{
    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("pages.db"));
    EXPECT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    {
        RawStore store(path);
        store.Run(QStringLiteral("PRAGMA page_size = 512; CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT);"
                                 "INSERT INTO t (a) VALUES ('a'), (printf('%030d', 2)), (printf('%030d', 3)), ('d');"
                                 "DELETE FROM t WHERE id IN (1, 3); UPDATE t SET a = 'short' WHERE id = 2;"));
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    BtreePage const page = Parse(file.readAll().mid(PageSize, PageSize));
    EXPECT_TRUE(page.isWhole());
    EXPECT_EQ(page.cells().size(), 2u);
}

TEST(BtreePageTest, PointerOutOfRangeBreaksItsEntryOnly)
{
    for (quint16 const offset : {quint16(0), quint16(9), quint16(PageSize - 1), quint16(PageSize), quint16(0xffff)}) {
        QByteArray bytes = LeafBySqlite();
        SetPointer(bytes, 1, offset);
        BtreePage const page = Parse(bytes);
        EXPECT_FALSE(page.isWhole()) << offset;
        EXPECT_EQ(page.brokenOffsets(), std::vector<int>{offset});
        ASSERT_EQ(page.cells().size(), 2u) << offset;
        EXPECT_EQ(page.cells()[0].rowId, 1);
        EXPECT_EQ(page.cells()[1].rowId, 3);
    }
}

TEST(BtreePageTest, EntriesThatOverlapAreBroken)
{
    QByteArray bytes = LeafBySqlite();
    SetPointer(bytes, 1, qFromBigEndian<quint16>(bytes.constData() + 8));
    BtreePage const page = Parse(bytes);
    ASSERT_EQ(page.cells().size(), 1u);
    EXPECT_EQ(page.cells()[0].rowId, 3);
}

TEST(BtreePageTest, RowIdsThatDoNotAscendAreNotWhole)
{
    QByteArray bytes = LeafBySqlite();
    QByteArray const first = bytes.mid(8, 2);
    bytes.replace(8, 2, bytes.mid(10, 2));
    bytes.replace(10, 2, first);
    EXPECT_FALSE(Parse(bytes).isWhole());
}

TEST(BtreePageTest, MoreEntriesThanFitAreNoPage)
{
    QByteArray bytes = LeafBySqlite();
    qToBigEndian<quint16>(60000, bytes.data() + 3);
    EXPECT_EQ(Parse(bytes).kind(), PageKind::None);
}

TEST(BtreePageTest, OtherKindsOfPagesAreNone)
{
    QByteArray bytes = LeafBySqlite();
    for (int kind : {0, 1, 3, 12, 14, 255}) {
        bytes[0] = static_cast<char>(kind);
        EXPECT_EQ(Parse(bytes).kind(), PageKind::None) << kind;
    }
    EXPECT_EQ(Parse(QByteArray(PageSize, '\0')).kind(), PageKind::None);
    EXPECT_EQ(Parse(QByteArray()).kind(), PageKind::None);
}

TEST(BtreePageTest, LocalSizeIsThatOfTheFileFormat)
{
    // The numbers are worked out by hand from the formulas in SQLite's description of its file format.
    EXPECT_EQ(LocalSize(PageKind::TableLeaf, 477, 512), 477);
    EXPECT_EQ(LocalSize(PageKind::TableLeaf, 478, 512), 39);
    EXPECT_EQ(LocalSize(PageKind::TableLeaf, 600, 512), 92);
    EXPECT_EQ(LocalSize(PageKind::IndexLeaf, 102, 512), 102);
    EXPECT_EQ(LocalSize(PageKind::IndexLeaf, 103, 512), 39);
    EXPECT_EQ(LocalSize(PageKind::TableLeaf, 4061, 4096), 4061);
    EXPECT_EQ(LocalSize(PageKind::TableLeaf, 4062, 4096), 489);
}

TEST(BtreePageTest, RandomBytesAreTakenApartWithoutReachingBeyondThem)
{
    std::mt19937 random(2);
    QByteArray const good = LeafBySqlite();
    for (int run = 0; run < 20'000; ++run) {
        QByteArray bytes = good;
        if (run % 2 == 0) {
            for (char& byte : bytes)
                byte = static_cast<char>(random());
            bytes[0] = "\2\5\12\15"[random() % 4];
            bytes[3] = 0;
            bytes[5] = 0;
        }
        for (int i = 0; i < 4; ++i)
            bytes[int(random() % PageSize)] = static_cast<char>(random());
        BtreePage const page = Parse(bytes);
        for (Cell const& cell : page.cells()) {
            EXPECT_GE(cell.offset, 0);
            EXPECT_LE(cell.offset + cell.size, PageSize);
        }
    }
}
