#include "database/SqliteDatabaseFactory.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/ReleasedStores.h"
#include "support/UnflushedWrites.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <initializer_list>
#include <iostream>
#include <random>

#include <unistd.h>

namespace upgrade_faults_test {
namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;

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
        /// opened. The one copy of the old version has stayed, however often the upgrade was tried. Returns the version
        /// that was found.
        int ExpectCompleteAndOpening() const
        {
            int const found = ExpectComplete();
            ExpectOpening();
            return found;
        }

        bool HasBackup() const { return !Backups().isEmpty(); }

    private:
        void ExpectOpening() const
        {
            QString error;
            ASSERT_NE(SqliteDatabaseFactory::Open(Path(), &error), nullptr) << error.toStdString();
            RawStore raw(Path());
            EXPECT_EQ(VersionOf(raw), CurrentVersion);
            EXPECT_EQ(RowsOf(raw), UpToDate(before));
            ExpectOneGoodBackup();
        }

        /// Checks a copy, so that the next opening finds the files as they were left.
        int ExpectComplete() const
        {
            QTemporaryDir const look;
            for (QString const& name : {"store.db"_q, "store.db-wal"_q, "store.db-journal"_q})
                QFile::copy(folder.filePath(name), look.filePath(name));
            RawStore raw(look.filePath("store.db"_q));
            EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
            int const found = VersionOf(raw);
            EXPECT_EQ(RowsOf(raw), found == version ? before : UpToDate(before));
            return found;
        }

        /// Expects one backup of the old version, and at most one of each version between.
        void ExpectOneGoodBackup() const
        {
            QStringList names = Backups();
            EXPECT_EQ(names.count(BackupOf(version)), 1);
            for (int each = version; each < CurrentVersion; ++each) {
                if (names.removeOne(BackupOf(each))) {
                    RawStore raw(folder.filePath(BackupOf(each)));
                    EXPECT_EQ(VersionOf(raw), each);
                    EXPECT_EQ(RowsOf(raw), each == version ? before : UpToDate(before));
                }
            }
            EXPECT_EQ(names, QStringList());
        }

        static QString BackupOf(int version) { return "store.db.version-%1"_q.arg(version); }

        QStringList Backups() const
        {
            QStringList names = QDir(folder.path()).entryList({"store.db.version-*"_q}, QDir::Files);
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

    /// Makes each operation fail in turn, once or permanently. Where it is refused, the store is opened twice more with
    /// the same failure.
    static void FailEach(int code, std::initializer_list<FileOperation> operations, bool permanently)
    {
        int refused = 0;
        int step = 1;
        for (bool hit = true; hit; ++step) {
            SCOPED_TRACE(step);
            Place const place(GetParam());
            bool opened = false;
            for (int attempt = 0; attempt < 3 && !opened; ++attempt) {
                FaultyFiles files;
                files.Fail(step, code, operations, permanently);
                QString error;
                opened = SqliteDatabaseFactory::Open(place.Path(), &error) != nullptr;
                bool const failed = files.Recover();
                if (attempt == 0)
                    hit = failed;
                if (!opened) {
                    EXPECT_TRUE(failed) << error.toStdString();
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

/// The version of the store after an upgrade that met a fault, as the opening reported it, or one of these values.
enum Told
{
    OutcomeUnknown = CurrentVersion + 1,
    /// The store could not be opened before or after the upgrade.
    Nothing,
    ToldCount
};

int ToldBy(bool opened, StoreError const& error)
{
    if (opened)
        return CurrentVersion;
    if (error.kind == StoreErrorKind::OutcomeUnknown)
        return OutcomeUnknown;
    for (int version = 0; version < CurrentVersion; ++version) {
        if (error.text.contains("the store has version %1, which"_q.arg(version)))
            return version;
    }
    return Nothing;
}

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
        for (int attempt = 0; attempt < 2; ++attempt) {
            int const ended = InChildProcess([&] {
                FaultyFiles files;
                files.Fail(step, SQLITE_OK, Changes);
                files.WatchFailure(Crash);
                return SqliteDatabaseFactory::Open(place.Path()) != nullptr ? 0 : 1;
            });
            if (attempt == 0)
                end = ended;
        }
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

TEST_P(UpgradeFaults, OperationsThatKeepFailingLeaveOneBackup)
{
    FailEach(SQLITE_IOERR, Changes, true);
}

TEST_P(UpgradeFaults, WhatIsToldOfTheUpgradeIsTrueAfterAKillAndAPowerCut)
{
    std::vector<FileOperation> const operations = {FileOperation::Write,
                                                   FileOperation::Truncate,
                                                   FileOperation::Sync,
                                                   FileOperation::Delete,
                                                   FileOperation::FlushFolder,
                                                   FileOperation::Unlock};
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    int counts[ToldCount] = {};
    for (int variant = 0; variant < 4; ++variant) {
        bool const forGood = (variant & 1) != 0;
        bool const cutsPower = (variant & 2) != 0;
        bool hit = true;
        for (int step = 1; hit; ++step) {
            SCOPED_TRACE("operation " + std::to_string(step) + (forGood ? " and all later ones" : "") +
                         (cutsPower ? ", power cut with seed " + std::to_string(seed) : ", kill"));
            Place const place(GetParam());
            std::mt19937 ofCut(random());
            int const end = InChildProcess([&]() -> int {
                FaultyFiles files;
                UnflushedWrites writes;
                files.Tell(&writes);
                files.Fail(step, SQLITE_IOERR, operations, forGood);
                StoreError error;
                auto const store = SqliteDatabaseFactory::Open(place.Path(), error);
                int const status = ToldBy(store != nullptr, error) + (files.Recover() ? ToldCount : 0);
                files.Tell(nullptr);
                if (cutsPower)
                    writes.CutPower(ofCut);
                ::_exit(status); // with the store open, as a kill would
            });
            ASSERT_GE(end, 0);
            hit = end >= ToldCount;
            int const told = end % ToldCount;
            ++counts[told];
            int const found = place.ExpectCompleteAndOpening();
            if (told <= CurrentVersion) {
                EXPECT_EQ(found, told);
            }
            EXPECT_FALSE(told == OutcomeUnknown && !forGood) << "the fault has gone when the outcome is looked at";
            if (HasFatalFailure())
                return;
        }
    }
    std::cout << GetParam().Name() << ": " << counts[CurrentVersion] << " upgraded, " << counts[OutcomeUnknown]
              << " unknown, " << counts[Nothing] << " refused for other reasons" << std::endl;
    for (int told = GetParam().version; told <= OutcomeUnknown; ++told)
        EXPECT_GT(counts[told], 0) << told;
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
            // A later step leaves the backup: the store is not what it was.
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
} // namespace upgrade_faults_test
