#include "database/SqliteDatabaseFactory.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;

/// Names of stores, seen from a working directory of their own.
class StoreNames : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkdir(Work()));
        ASSERT_TRUE(QDir::setCurrent(Work()));
    }
    void TearDown() override { QDir::setCurrent(_before); }

    QString Work() const { return folder.filePath("work"_q); }
    QStringList Entries() const
    {
        return QDir(Work()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
    QString error;

private:
    QString const _before = QDir::currentPath();
};

/// Names that mean something else than a file to SQLite or Qt.
TEST_F(StoreNames, OfAnyFormAreFilesOfTheWorkingDirectoryAndStayTheirs)
{
    for (char const* name : {":memory:",
                             ":x",
                             ":",
                             "qrc:x",
                             "file:x.db",
                             "file:x.db?mode=memory",
                             "file::memory:?cache=shared",
                             " ",
                             "~",
                             "-",
                             "e\xcc\x81.db",
                             "\xf0\x9f\x98\x80.db"}) {
        SCOPED_TRACE(name);
        QString const given = QString::fromUtf8(name);
        auto store = SqliteDatabaseFactory::Open(given, &error);
        ASSERT_NE(store, nullptr) << error.toStdString();
        EXPECT_EQ(store->path(), Work() + QLatin1Char('/') + given);
        ASSERT_TRUE(QDir::setCurrent(folder.path()));
        EXPECT_TRUE(AddServer(*store, "a"_q));
        std::shared_ptr<SqliteDatabaseFactory> const other = SqliteDatabaseFactory::Open(store->path(), &error);
        ASSERT_NE(other, nullptr) << error.toStdString();
        EXPECT_EQ(CountServers(*other), 1);
        EXPECT_TRUE(store->Backup("copy"_q, &error)) << error.toStdString();
        EXPECT_TRUE(QFileInfo::exists(folder.filePath("copy"_q)));
        EXPECT_TRUE(QFile::remove(folder.filePath("copy"_q)));
        EXPECT_TRUE(QDir::setCurrent(Work()));
        EXPECT_TRUE(store->Backup(":memory:.copy"_q, &error)) << error.toStdString();
        EXPECT_TRUE(QFile::remove(Work() + "/:memory:.copy"_q));
        store.reset();
        EXPECT_TRUE(Entries().contains(given)) << Entries().join(QLatin1Char(' ')).toStdString();
    }
}

TEST_F(StoreNames, ThatTheSystemCannotKeepAreRefusedWhetherRelativeOrNot)
{
    for (QString const& name : {QString(QChar(0xd83d)) + ".db"_q,
                                "a"_q + QChar(0xde00) + ".db"_q,
                                "a"_q + QChar(QChar::Null) + "b.db"_q,
                                "a"_q + QChar(0xd83d) + "/b.db"_q}) {
        for (QString const& given : {name, Work() + QLatin1Char('/') + name}) {
            error.clear();
            EXPECT_EQ(SqliteDatabaseFactory::Open(given, &error), nullptr);
            EXPECT_TRUE(error.contains("name"_q)) << error.toStdString();
        }
    }
    EXPECT_TRUE(Entries().isEmpty()) << Entries().join(QLatin1Char(' ')).toStdString();

    auto const store = SqliteDatabaseFactory::Open("store.db"_q, &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    QStringList const before = Entries();
    EXPECT_FALSE(store->Backup(QString(QChar(0xd83d)), &error));
    EXPECT_TRUE(error.contains("name"_q)) << error.toStdString();
    EXPECT_EQ(Entries(), before);
}

TEST_F(StoreNames, ThatEndInASlashAreFolders)
{
    EXPECT_EQ(SqliteDatabaseFactory::Open("store.db/"_q, &error), nullptr);
    EXPECT_TRUE(error.contains("folder"_q)) << error.toStdString();
    EXPECT_EQ(SqliteDatabaseFactory::Open("."_q, &error), nullptr);
    EXPECT_TRUE(error.contains("folder"_q)) << error.toStdString();
    EXPECT_TRUE(Entries().isEmpty());
}

/// The system decides what a path means if a folder in it is a link.
TEST_F(StoreNames, WithDotsGoThroughLinksAsTheSystemDoes)
{
    ASSERT_TRUE(QDir().mkpath(folder.filePath("elsewhere/inner"_q)));
    ASSERT_TRUE(QFile::link(folder.filePath("elsewhere/inner"_q), Work() + "/link"_q));
    auto const store = SqliteDatabaseFactory::Open("link/../store.db"_q, &error);
    ASSERT_NE(store, nullptr) << error.toStdString();
    EXPECT_TRUE(QFileInfo::exists(folder.filePath("elsewhere/store.db"_q)));
    EXPECT_EQ(Entries(), QStringList{"link"_q});
    EXPECT_TRUE(AddServer(*store, "a"_q));
}

TEST_F(StoreNames, TooLongForSQLiteAreRefusedAsThat)
{
    QString deep = Work();
    while (deep.size() < 520)
        deep += QLatin1Char('/') + QString(40, QLatin1Char('d'));
    ASSERT_TRUE(QDir().mkpath(deep));
    EXPECT_EQ(SqliteDatabaseFactory::Open(deep + "/store.db"_q, &error), nullptr);
    EXPECT_TRUE(error.contains("too long"_q)) << error.toStdString();
    EXPECT_TRUE(FolderContents(deep).isEmpty());
    EXPECT_EQ(QDir(deep).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
}

TEST_F(StoreNames, RelativeOnesAreRefusedWhereTheWorkingDirectoryIsGone)
{
    ASSERT_TRUE(QDir().rmdir(Work()));
    EXPECT_EQ(SqliteDatabaseFactory::Open("store.db"_q, &error), nullptr);
    EXPECT_TRUE(error.contains("working directory"_q)) << error.toStdString();
    ASSERT_TRUE(QDir().mkdir(Work()));
}

/// Its name can't be said in Qt's texts, so a file in it would be sought elsewhere.
TEST_F(StoreNames, RelativeOnesAreRefusedInAWorkingDirectoryWhoseNameIsNoText)
{
    QByteArray const odd = (folder.path() + "/odd-"_q).toUtf8() + '\xff';
    ASSERT_EQ(::mkdir(odd.constData(), 0700), 0);
    ASSERT_EQ(::chdir(odd.constData()), 0);
    EXPECT_EQ(SqliteDatabaseFactory::Open("store.db"_q, &error), nullptr);
    EXPECT_TRUE(error.contains("working directory"_q)) << error.toStdString();
    ASSERT_TRUE(QDir::setCurrent(Work()));
    ASSERT_EQ(::rmdir(odd.constData()), 0);
}

} // namespace
