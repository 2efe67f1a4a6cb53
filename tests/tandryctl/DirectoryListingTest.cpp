#include "tools/tandryctl/DirectoryListing.h"
#include "support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

using namespace tandryctl;
using namespace tandry::test;

namespace {

QString FromUtf8(char const* text)
{
    return QString::fromUtf8(text);
}

class DirectoryListingTest : public testing::Test
{
protected:
    /// Removes the folder: QTemporaryDir fails to remove files whose names are not valid UTF-8.
    void TearDown() override { std::filesystem::remove_all(folder.path().toStdString()); }

    QString At(char const* name) const { return folder.filePath(FromUtf8(name)); }

    void Write(char const* name, QByteArray const& content) const
    {
        QFile file(At(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    /// Creates a file whose name need not be valid UTF-8.
    void WriteRaw(QByteArray const& name) const
    {
        QByteArray const path = folder.path().toUtf8() + '/' + name;
        int const file = ::open(path.constData(), O_CREAT | O_WRONLY, 0600);
        ASSERT_NE(file, -1);
        ASSERT_EQ(::close(file), 0);
    }

    DirectoryListing List() const { return ListDirectory(folder.path()); }

    QTemporaryDir folder;
};

} // namespace

TEST_F(DirectoryListingTest, EmptyDirectoryIsCompleteAndEmpty)
{
    DirectoryListing const listing = List();
    EXPECT_TRUE(listing.complete);
    EXPECT_TRUE(listing.directories.isEmpty());
    EXPECT_TRUE(listing.files.empty());
    EXPECT_TRUE(listing.problems.isEmpty());
}

TEST_F(DirectoryListingTest, NamesAreSorted)
{
    for (char const* name : {"c", "a", "b"})
        ASSERT_TRUE(QDir(folder.path()).mkdir(FromUtf8(name)));
    for (char const* name : {"z", "x", "y"})
        Write(name, "");
    DirectoryListing const listing = List();
    EXPECT_EQ(listing.directories, QStringList({"a"_q, "b"_q, "c"_q}));
    ASSERT_EQ(listing.files.size(), 3U);
    EXPECT_EQ(listing.files[0].name, "x"_q);
    EXPECT_EQ(listing.files[2].name, "z"_q);
}

TEST_F(DirectoryListingTest, FileHasSizeAndTimes)
{
    Write("a", "12345");
    QDateTime const time(QDate(2021, 3, 4), QTime(5, 6, 7, 89), Qt::UTC);
    QFile file(At("a"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(time, QFileDevice::FileModificationTime));
    file.close();

    DirectoryListing const listing = List();
    ASSERT_EQ(listing.files.size(), 1U);
    EXPECT_EQ(listing.files[0].size, 5);
    EXPECT_EQ(listing.files[0].modifiedMsec, time.toMSecsSinceEpoch());
    EXPECT_TRUE(listing.files[0].linkTarget.isNull());
}

TEST_F(DirectoryListingTest, FileFromBefore1970HasItsTime)
{
    Write("a", "");
    timespec const time{-2, 500'000'000};
    timespec const times[2] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, At("a").toUtf8().constData(), times, 0), 0);
    EXPECT_EQ(List().files.at(0).modifiedMsec, -1500);
}

TEST_F(DirectoryListingTest, OddNamesAreUnchanged)
{
    QStringList const names{"a\nb"_q, "c'd\"e"_q, "日本 👩‍👧"_q, " blank "_q, "-rf"_q};
    for (QString const& name : names) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QStringList found;
    for (FileOnDisk const& file : List().files)
        found.append(file.name);
    QStringList expected = names;
    expected.sort();
    EXPECT_EQ(found, expected);
}

TEST_F(DirectoryListingTest, NameThatIsNotUtf8IsReportedAndTheRestIsListed)
{
    WriteRaw("caf\xe9");
    Write("good", "");
    DirectoryListing const listing = List();
    ASSERT_EQ(listing.files.size(), 1U);
    ASSERT_EQ(listing.problems.size(), 1);
    EXPECT_TRUE(listing.problems.first().failure.message().contains("caf\\351"_q));
    EXPECT_TRUE(listing.complete); // such a file cannot be on record
}

TEST_F(DirectoryListingTest, LinkToAFileIsAFileWithItsTarget)
{
    Write("target", "12345");
    ASSERT_EQ(::symlink("target", At("link").toUtf8().constData()), 0);
    DirectoryListing const listing = List();
    ASSERT_EQ(listing.files.size(), 2U);
    EXPECT_EQ(listing.files[0].name, "link"_q);
    EXPECT_EQ(listing.files[0].linkTarget, "target"_q);
    EXPECT_EQ(listing.files[0].size, 6); // the link's own size
}

TEST_F(DirectoryListingTest, LinkToALinkToAFileIsAFile)
{
    Write("target", "");
    ASSERT_EQ(::symlink("target", At("near").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink("near", At("far").toUtf8().constData()), 0);
    DirectoryListing const listing = List();
    ASSERT_EQ(listing.files.size(), 3U);
    EXPECT_EQ(listing.files[0].linkTarget, "near"_q);
}

TEST_F(DirectoryListingTest, LinkToADirectoryIsCounted)
{
    ASSERT_EQ(::symlink(".", At("self").toUtf8().constData()), 0);
    DirectoryListing const listing = List();
    EXPECT_TRUE(listing.files.empty());
    EXPECT_TRUE(listing.directories.isEmpty());
    EXPECT_EQ(listing.linksToDirectories, 1);
}

TEST_F(DirectoryListingTest, BrokenLinkAndLinkToItselfAreCounted)
{
    ASSERT_EQ(::symlink("missing", At("broken").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink("loop", At("loop").toUtf8().constData()), 0);
    DirectoryListing const listing = List();
    EXPECT_TRUE(listing.files.empty());
    EXPECT_EQ(listing.brokenLinks, 2);
    EXPECT_TRUE(listing.problems.isEmpty());
}

TEST_F(DirectoryListingTest, PipeAndLinkToItAreCounted)
{
    ASSERT_EQ(::mkfifo(At("pipe").toUtf8().constData(), 0600), 0);
    ASSERT_EQ(::symlink("pipe", At("link").toUtf8().constData()), 0);
    DirectoryListing const listing = List();
    EXPECT_TRUE(listing.files.empty());
    EXPECT_EQ(listing.specialFiles, 2);
}

TEST_F(DirectoryListingTest, MissingDirectoryIsAProblemAndIncomplete)
{
    DirectoryListing const listing = ListDirectory(At("missing"));
    EXPECT_FALSE(listing.complete);
    ASSERT_EQ(listing.problems.size(), 1);
    EXPECT_TRUE(listing.problems.first().failure.message().contains(At("missing")));
}
