#include "support/ChildProcess.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/ReleasedStores.h"
#include "support/StoreFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <cstddef>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;

/// A closed store with two servers, and a backup that has the first one alone.
class StoreRestore : public EachJournalMode
{
protected:
    void SetUp() override
    {
        EachJournalMode::SetUp();
        ASSERT_TRUE(AddServer(*store, "first"_q));
        ASSERT_TRUE(store->Backup(BackupPath()));
        ASSERT_TRUE(AddServer(*store, "second"_q));
        store.reset();
    }

    QString BackupPath() const { return folder.filePath("backup.db"_q); }
    QString KeptPath() const { return StorePath() + ".replaced"_q; }

    void ExpectRestored()
    {
        StoreError error;
        std::optional<QString> const kept = SqliteDatabaseFactory::Restore(BackupPath(), StorePath(), error);
        ASSERT_TRUE(kept) << error.text.toStdString();
        EXPECT_EQ(*kept, KeptPath());
    }

    /// Expects a failure that names these words and changes nothing.
    StoreError ExpectRefused(QString const& backup, QString const& words)
    {
        QMap<QString, QByteArray> const before = FolderContents(folder.path());
        StoreError error;
        EXPECT_FALSE(SqliteDatabaseFactory::Restore(backup, StorePath(), error));
        EXPECT_TRUE(error.text.contains(words)) << error.text.toStdString();
        EXPECT_EQ(FolderContents(folder.path()), before);
        return error;
    }

    static qlonglong Servers(QString const& path) { return RawStore(path).Count("ServerConfiguration"_q); }
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreRestore);

TEST_P(StoreRestore, PutsTheBackupInPlaceAndKeepsTheEarlierStore)
{
    QByteArray const backup = ReadFile(BackupPath());
    ExpectRestored();
    EXPECT_EQ(FolderContents(folder.path()).keys(), (QStringList{"backup.db"_q, "store.db"_q, "store.db.replaced"_q}));
    EXPECT_EQ(ReadFile(BackupPath()), backup);
    EXPECT_EQ(Servers(StorePath()), 1);
    EXPECT_EQ(Servers(KeptPath()), 2);
    QFile::Permissions const others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(StorePath()) & others);
}

TEST_P(StoreRestore, KeepsWhatAKilledProgramLeftBesideTheEarlierStore)
{
    EXPECT_EQ(OtherProgram(StorePath(), {"add-and-crash"_q, "1"_q}).Wait(), -SIGKILL);
    ExpectRestored();
    EXPECT_EQ(QFileInfo::exists(KeptPath() + "-wal"_q), UsesLog());
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));
    EXPECT_EQ(Servers(StorePath()), 1);
    EXPECT_EQ(Servers(KeptPath()), 3);
}

TEST_P(StoreRestore, KeepsEachEarlierStoreUnderANameOfItsOwn)
{
    ExpectRestored();
    StoreError error;
    EXPECT_EQ(SqliteDatabaseFactory::Restore(BackupPath(), StorePath(), error), StorePath() + ".replaced-2"_q);
    EXPECT_EQ(Servers(KeptPath()), 2);
}

TEST_P(StoreRestore, ReplacesADamagedStoreAndKeepsItsBytes)
{
    Overwrite(StorePath(), 0, QByteArray(5000, '\xaa'));
    QByteArray const damaged = ReadFile(StorePath());
    ExpectRestored();
    EXPECT_EQ(ReadFile(KeptPath()), damaged);
    EXPECT_EQ(Servers(StorePath()), 1);
}

TEST_P(StoreRestore, MakesTheStoreIfThereIsNone)
{
    QFile::remove(StorePath());
    StoreError error;
    EXPECT_EQ(SqliteDatabaseFactory::Restore(BackupPath(), StorePath(), error), QString());
    EXPECT_EQ(Servers(StorePath()), 1);
    EXPECT_EQ(FolderContents(folder.path()).keys(), (QStringList{"backup.db"_q, "store.db"_q}));
}

TEST_P(StoreRestore, OfALogWithoutItsStoreKeepsItApartFromTheNewStore)
{
    QFile::remove(StorePath());
    WriteFile(StorePath() + "-wal"_q, "a log");
    ExpectRestored();
    EXPECT_EQ(ReadFile(KeptPath() + "-wal"_q), "a log");
    EXPECT_EQ(Servers(StorePath()), 1);
}

TEST_P(StoreRestore, IsRefusedWhileTheStoreIsOpen)
{
    for (OpenMode const mode : {OpenMode::OpenExisting, OpenMode::ReadOnly}) {
        OpenOptions options;
        options.mode = mode;
        OpenStore(options);
        EXPECT_EQ(ExpectRefused(BackupPath(), StorePath()).kind, StoreErrorKind::Locked);
        store.reset();
    }
    ExpectRestored();
}

TEST_P(StoreRestore, IsNotRefusedWhileAnotherStoreInTheFolderIsOpen)
{
    QString const other = folder.filePath("other.db"_q);
    auto const opened = SqliteDatabaseFactory::Open(other);
    ASSERT_NE(opened, nullptr);
    ExpectRestored();
}

TEST_P(StoreRestore, OfADamagedBackupIsRefused)
{
    RawStore(BackupPath()).Run("DROP INDEX FileConfiguration_root"_q);
    EXPECT_EQ(ExpectRefused(BackupPath(), BackupPath()).kind, StoreErrorKind::Damaged);
}

TEST_P(StoreRestore, OfAFileThatIsNoStoreIsRefused)
{
    QString const file = folder.filePath("letter"_q);
    WriteFile(file,
              "not a database, but long enough to look at, as a letter would be: dear reader, this is one, truly");
    ExpectRefused(file, file);
    ExpectRefused(folder.filePath("missing"_q), "missing"_q);
    ExpectRefused(folder.path(), "folder"_q);
}

TEST_P(StoreRestore, OfTheStoreItselfIsRefused)
{
    ExpectRefused(StorePath(), "is the store itself"_q);
}

TEST_P(StoreRestore, UnderTheNameOfAFileBesideAStoreIsRefused)
{
    QMap<QString, QByteArray> const before = FolderContents(folder.path());
    for (char const* suffix : {"-wal", "-shm", "-journal"}) {
        StoreError error;
        EXPECT_FALSE(SqliteDatabaseFactory::Restore(BackupPath(), StorePath() + QLatin1String(suffix), error));
        EXPECT_TRUE(error.text.contains("for its own files beside "_q + StorePath())) << error.text.toStdString();
    }
    EXPECT_EQ(FolderContents(folder.path()), before);
}

TEST_P(StoreRestore, OfAnOlderVersionIsUpgradedWhenTheStoreIsOpened)
{
    QFile::remove(BackupPath());
    ReleasedStore{0, GetParam()}.CopyTo(BackupPath());
    StoreRows before;
    {
        RawStore raw(BackupPath());
        before = RowsOf(raw);
    }
    ExpectRestored();
    OpenStore();
    store.reset();
    RawStore raw(StorePath());
    EXPECT_EQ(RowsOf(raw), UpToDate(before));
}

/// Makes the system refuse hard links to this process, as some file systems do.
bool RefuseLinks()
{
    sock_filter code[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
#ifdef SYS_link
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_link, 1, 0),
#endif
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_linkat, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog const program = {sizeof code / sizeof *code, code};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST_P(StoreRestore, KeepsACopyWhereTheFileSystemHasNoHardLinks)
{
    EXPECT_EQ(OtherProgram(StorePath(), {"add-and-crash"_q, "1"_q}).Wait(), -SIGKILL);
    QByteArray const earlier = ReadFile(StorePath());
    int const status = InChildProcess([&] {
        if (!RefuseLinks())
            return 2;
        if (::link(QFile::encodeName(StorePath()).constData(), "/tmp/never") == 0 || errno != EPERM)
            return 2;
        StoreError error;
        return SqliteDatabaseFactory::Restore(BackupPath(), StorePath(), error) ? 0 : 1;
    });
    if (status == 2)
        GTEST_SKIP() << "system calls cannot be refused here";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadFile(KeptPath()), earlier);
    EXPECT_EQ(Servers(KeptPath()), 3);
    EXPECT_EQ(Servers(StorePath()), 1);
}

} // namespace
