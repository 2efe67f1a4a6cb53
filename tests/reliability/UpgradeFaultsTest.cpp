#include "database/SqliteDatabaseFactory.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <initializer_list>
#include <iostream>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;

std::initializer_list<FileOperation> const Changes = {
    FileOperation::Open, FileOperation::Write, FileOperation::Truncate, FileOperation::Sync, FileOperation::Delete};

/// Interrupts the upgrade of an older store at each of its file operations.
class UpgradeFaults : public testing::TestWithParam<ReleasedStore>
{
protected:
    /// A copy of the store in a temporary folder.
    class Place
    {
    public:
        explicit Place(ReleasedStore const& store)
            : version(store.version)
        {
            store.CopyTo(Path());
            // Read in a second copy, because reading may change the file.
            store.CopyTo(other.filePath("store.db"_q));
            RawStore raw(other.filePath("store.db"_q));
            before = RowsOf(raw);
        }

        QString Path() const { return folder.filePath("store.db"_q); }

        /// Expects that the store has the old version, the new one or one between completely, and that it can be
        /// opened.
        void ExpectCompleteAndOpening() const
        {
            ExpectComplete();
            QString error;
            ASSERT_NE(SqliteDatabaseFactory::Open(Path(), &error), nullptr) << error.toStdString();
            RawStore raw(Path());
            EXPECT_EQ(VersionOf(raw), CurrentVersion);
            EXPECT_EQ(RowsOf(raw), UpToDate(before));
            ExpectGoodBackups();
        }

        bool HasBackup() const { return !Backups().isEmpty(); }

    private:
        /// Checks a copy, so that the next opening finds the files as they were left.
        void ExpectComplete() const
        {
            QTemporaryDir const look;
            for (QString const& name : {"store.db"_q, "store.db-wal"_q, "store.db-journal"_q})
                QFile::copy(folder.filePath(name), look.filePath(name));
            RawStore raw(look.filePath("store.db"_q));
            EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
            if (VersionOf(raw) == version)
                EXPECT_EQ(RowsOf(raw), before);
            else
                EXPECT_EQ(RowsOf(raw), UpToDate(before));
        }

        /// Expects at least one backup, and that each file with a backup's name is one.
        void ExpectGoodBackups() const
        {
            EXPECT_TRUE(HasBackup());
            for (QString const& name : Backups()) {
                RawStore raw(folder.filePath(name));
                EXPECT_EQ(VersionOf(raw), version) << name.toStdString();
                EXPECT_EQ(RowsOf(raw), before) << name.toStdString();
            }
        }

        QStringList Backups() const
        {
            QStringList names = QDir(folder.path()).entryList({"store.db.version-%1*"_q.arg(version)}, QDir::Files);
            for (char const* part : {".new-", "-wal", "-shm", "-journal"})
                for (QString const& name : QStringList(names))
                    if (name.contains(QLatin1String(part)))
                        names.removeOne(name);
            return names;
        }

        int const version;
        QTemporaryDir folder;
        QTemporaryDir other;
        StoreRows before;
    };

    /// Makes each operation fail in turn, once or permanently.
    static void FailEach(int code, std::initializer_list<FileOperation> operations, bool permanently)
    {
        int refused = 0;
        int step = 1;
        for (bool hit = true; hit; ++step) {
            SCOPED_TRACE(step);
            Place const place(GetParam());
            {
                FaultyFiles files;
                files.Fail(step, code, operations, permanently);
                QString error;
                bool const opened = SqliteDatabaseFactory::Open(place.Path(), &error) != nullptr;
                hit = files.Recover();
                if (!opened) {
                    EXPECT_TRUE(hit) << error.toStdString();
                    EXPECT_TRUE(error.contains(place.Path())) << error.toStdString();
                    ++refused;
                }
            }
            place.ExpectCompleteAndOpening();
            if (HasFatalFailure())
                return;
        }
        std::cout << GetParam().Name() << ": " << step - 2 << " operations failed in turn, " << refused
                  << " of them refused the store" << std::endl;
        EXPECT_GT(refused, 20);
    }
};

std::string NameOf(testing::TestParamInfo<ReleasedStore> const& store)
{
    return store.param.Name();
}

INSTANTIATE_TEST_SUITE_P(Of, UpgradeFaults, testing::ValuesIn(OlderStores()), NameOf);

TEST_P(UpgradeFaults, ProcessKilledAtAnyOperationLeavesTheOldStoreOrTheNewOne)
{
    int kills = 0;
    int end = -SIGKILL;
    for (int step = 1; end == -SIGKILL; ++step) {
        SCOPED_TRACE(step);
        Place const place(GetParam());
        end = InChildProcess([&] {
            FaultyFiles files;
            files.Fail(step, SQLITE_OK, Changes);
            files.WatchFailure(Crash);
            return SqliteDatabaseFactory::Open(place.Path()) != nullptr ? 0 : 1;
        });
        kills += end == -SIGKILL ? 1 : 0;
        place.ExpectCompleteAndOpening();
        if (HasFatalFailure())
            return;
    }
    EXPECT_EQ(end, 0);
    EXPECT_GT(kills, 50);
    std::cout << GetParam().Name() << ": killed at " << kills << " operations" << std::endl;
}

TEST_P(UpgradeFaults, OperationThatFailsOnceLosesNothing)
{
    FailEach(SQLITE_IOERR, AllOperations, false);
}

TEST_P(UpgradeFaults, OperationsThatKeepFailingLoseNothing)
{
    FailEach(SQLITE_IOERR, Changes, true);
}

TEST_P(UpgradeFaults, FullDiskLosesNothingAndLeavesNoExtraBackups)
{
    int refused = 0;
    for (qint64 room = 0;; room += 4000) {
        SCOPED_TRACE(room);
        Place const place(GetParam());
        bool opened = false;
        for (int attempt = 0; attempt < 2; ++attempt) {
            FaultyFiles files;
            files.SetRoom(room);
            QString error;
            opened = SqliteDatabaseFactory::Open(place.Path(), &error) != nullptr;
            bool const hit = files.Recover();
            if (opened)
                break;
            EXPECT_TRUE(hit);
            EXPECT_TRUE(error.contains("no space"_q)) << error.toStdString();
            // A commit that fails leaves the backup, and so does a later step: the store need not be what it was.
            if (error.contains("the store has version %1, which"_q.arg(GetParam().version))) {
                EXPECT_FALSE(place.HasBackup());
            }
            ++refused;
        }
        place.ExpectCompleteAndOpening();
        if (opened || HasFatalFailure())
            break;
    }
    EXPECT_GT(refused, 5);
}

} // namespace
