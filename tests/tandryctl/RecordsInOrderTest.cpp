#include "tools/tandryctl/RecordsInOrder.h"
#include "support/QtPrinters.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace tandryctl;
using namespace tandry::test;

namespace {

/// Adds entries, of which those with a "." at the end are folders, and returns them in order.
QStringList InOrder(QStringList const& entries)
{
    RecordsInOrder records;
    for (QString const& entry : entries) {
        bool const isFolder = entry.endsWith(QLatin1Char('.'));
        records.Add(
            RecordedEntry::At(isFolder ? entry.chopped(1) : entry, isFolder ? EntryKind::Folder : EntryKind::File));
    }
    QStringList ordered;
    for (records.Begin(); records.current() != nullptr; records.Advance())
        ordered.append(records.current()->path + (records.current()->kind == EntryKind::Folder ? "."_q : QString()));
    EXPECT_EQ(records.Count(), ordered.size());
    return ordered;
}

} // namespace

TEST(RecordsInOrder, FoldersAreBeforeFilesAndTheLastFolderIsVisitedFirst)
{
    EXPECT_EQ(
        InOrder({"/r/b"_q, "/r/d/x"_q, "/r/a."_q, "/r/d."_q, "/r/a/y"_q, "/r/a/s."_q, "/r/a/s/z"_q, "/r/a"_q}),
        QStringList({"/r/a."_q, "/r/d."_q, "/r/a"_q, "/r/b"_q, "/r/d/x"_q, "/r/a/s."_q, "/r/a/y"_q, "/r/a/s/z"_q}));
}

TEST(RecordsInOrder, FoldersAreVisitedByWholeNames)
{
    // "-" is less than "/", which ends the first name.
    EXPECT_EQ(InOrder({"/r/a/x"_q, "/r/a-b/x"_q, "/r/aa/x"_q, "/r/a/a/x"_q}),
              QStringList({"/r/aa/x"_q, "/r/a-b/x"_q, "/r/a/x"_q, "/r/a/a/x"_q}));
}

TEST(RecordsInOrder, OddPathsHaveAPlace)
{
    EXPECT_EQ(InOrder({"/r/x"_q, "x"_q, QString(), "/x"_q, "/r/"_q, "/r//y"_q}),
              QStringList({QString(), "x"_q, "/x"_q, "/r/"_q, "/r/x"_q, "/r//y"_q}));
}

TEST(RecordsInOrder, FirstOfTwinsCounts)
{
    RecordsInOrder records;
    for (qint64 const size : {3, 1, 2}) {
        RecordedEntry file = RecordedEntry::At("/r/twin"_q, EntryKind::File);
        file.size = size;
        records.Add(file);
    }
    records.Add(RecordedEntry::At("/r/twin"_q, EntryKind::Folder));
    records.Begin();
    EXPECT_EQ(records.current()->kind, EntryKind::Folder);
    records.Advance();
    EXPECT_EQ(records.current()->size, 3);
    records.Advance();
    EXPECT_EQ(records.current(), nullptr);
    EXPECT_EQ(records.Count(), 2);
}

TEST(RecordsInOrder, FolderEndsWhatComesBeforeItsEntries)
{
    RecordsInOrder records;
    for (char const* path : {"/r/a/x", "/r/x", "/q/x"})
        records.Add(RecordedEntry::At(QString::fromUtf8(path), EntryKind::File));
    records.Begin();
    EXPECT_EQ(records.current()->path, "/r/x"_q);
    EXPECT_FALSE(records.IsBeforeFolder("/r/"_q));
    EXPECT_TRUE(records.IsBeforeFolder("/r/a/"_q));
    EXPECT_TRUE(records.IsBeforeFolder("/q/"_q));
    records.Advance();
    EXPECT_EQ(records.current()->path, "/r/a/x"_q);
    EXPECT_FALSE(records.IsBeforeFolder("/r/a/"_q));
    EXPECT_TRUE(records.IsBeforeFolder("/r/a/b/"_q));
}
