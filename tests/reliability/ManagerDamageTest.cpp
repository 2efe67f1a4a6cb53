#include "config/FileConfiguration.h"
#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

#include <algorithm>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;

constexpr int PageSize = 4096;

/// Returns pseudo-random bytes, always the same for the same seed.
QByteArray Junk(int size, int seed)
{
    auto random = static_cast<unsigned>(seed) + 1u;
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) {
        random = random * 1664525u + 1013904223u;
        byte = static_cast<char>(random >> 24);
    }
    return bytes;
}

/// A way to damage a page of a file.
struct Damage
{
    char const* name;
    QByteArray (*apply)(QByteArray file, int page);
    /// Whether SQLite detects it. SQLite has no page checksums, so one valid row in place of another is not detected.
    bool isDetectable = true;
};

constexpr Damage Damages[] = {
    {"junk", [](QByteArray file, int page) { return file.replace(page * PageSize, PageSize, Junk(PageSize, page)); }},
    {"zeros",
     [](QByteArray file, int page) { return file.replace(page * PageSize, PageSize, QByteArray(PageSize, '\0')); }},
    {"truncated before it", [](QByteArray file, int page) { return file.left(page * PageSize); }},
    {"truncated inside it", [](QByteArray file, int page) { return file.left(page * PageSize + PageSize / 2); }},
    {"another page",
     [](QByteArray file, int page) {
         return file.replace(page * PageSize, PageSize, file.mid((page / 2) * PageSize, PageSize));
     },
     false},
    {"flipped bytes",
     [](QByteArray file, int page) {
         for (int at : {0, 4, 6, 8, 13, 100, 3000, PageSize - 20})
             file[page * PageSize + at] = static_cast<char>(~file[page * PageSize + at]);
         return file;
     },
     false},
};

/// A store whose file is damaged while it is closed, or removed while it is open.
class ManagerDamage : public ManagerScriptFixture
{
protected:
    static QByteArray BytesOf(QString const& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    /// Returns the contents of the files of a closed store.
    QMap<QString, QByteArray> Files() const
    {
        QMap<QString, QByteArray> files;
        for (QString const& name : FileNames())
            files.insert(name, BytesOf(folder.filePath(name)));
        return files;
    }
    QStringList FileNames() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    /// Runs the reading operations. Expects an error in the store from each that returns less than `undamaged`.
    void ReadAll(QStringList const& undamaged, bool isDetectable)
    {
        std::vector<ReadingOperation> const operations = OfThisInterface(ReadingOperations());
        for (std::size_t i = 0; i < operations.size(); ++i) {
            Managers managers(store);
            QString const answer = operations[i].run(managers);
            EXPECT_TRUE(!isDetectable || store->LastError() || answer == undamaged.value(static_cast<int>(i)))
                << operations[i].name << " returns " << answer.toStdString();
            store->ClearError();
        }
    }

    /// Runs the writing operations and returns whether any of them wrote. Expects an error in the store from each that
    /// fails, unless it may find its work already done.
    bool WriteAll(bool mayBeDone = false)
    {
        bool wrote = false;
        for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
            if (!operation.usesStore)
                continue;
            Managers managers(store);
            bool const answer = operation.run(managers, *store);
            EXPECT_TRUE(answer || store->LastError() || mayBeDone) << operation.name;
            wrote = wrote || answer || operation.failing != Failing::AllOrNothing;
            store->ClearError();
        }
        return wrote;
    }

    QStringList UndamagedAnswers()
    {
        ResetStore();
        OpenStore();
        QStringList answers;
        for (ReadingOperation const& operation : OfThisInterface(ReadingOperations())) {
            Managers managers(store);
            answers.append(operation.run(managers));
        }
        store.reset();
        return answers;
    }

    void ExpectMoved(char const* operation)
    {
        ASSERT_TRUE(store->LastError()) << operation;
        EXPECT_EQ(store->LastError()->code, SQLITE_READONLY_DBMOVED) << operation;
        store->ClearError();
    }

    FaultyFiles withoutFlushes;
    QString const away = folder.filePath(QStringLiteral("away.db"));
};

TANDRY_FOR_EACH_MANAGER(ManagerDamage);

TEST_P(ManagerDamage, OfAnyPageIsReportedAndAnUnreadableFileIsUnchanged)
{
    QStringList const undamaged = UndamagedAnswers();
    QByteArray const good = ScriptStore(Mode());
    int refused = 0;
    int opened = 0;
    for (Damage const& damage : Damages) {
        for (int page = 0; page < good.size() / PageSize; ++page) {
            SCOPED_TRACE("page " + std::to_string(page) + ": " + damage.name);
            ResetStore(damage.apply(good, page));
            QMap<QString, QByteArray> const before = Files();
            OpenStore();
            if (store == nullptr) {
                ++refused;
                EXPECT_TRUE(openError.contains(StorePath())) << openError.toStdString();
                EXPECT_TRUE(Files() == before) << "a refused file has changed";
                continue;
            }
            ++opened;
            ReadAll(undamaged, damage.isDetectable);
            store.reset();
            EXPECT_TRUE(Files() == before) << "a file that was only read has changed";

            OpenStore();
            ASSERT_NE(store, nullptr) << openError.toStdString();
            bool const wrote = WriteAll();
            store.reset();
            EXPECT_TRUE(wrote || Files() == before) << "a file that could not be written has changed";
            EXPECT_GE(BytesOf(StorePath()).size(), good.size());
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(opened, 0);
}

TEST_P(ManagerDamage, OfALeftLogOrJournalGivesACommittedStateOrAnError)
{
    // All committed states, and the files that a killed program leaves.
    std::vector<RowTexts> states{RowsBefore()};
    QString const left = StorePath() + (Mode() == JournalMode::WriteAheadLog ? "-wal"_q : "-journal"_q);
    QMap<QString, QByteArray> files;
    ResetStore();
    if (Mode() == JournalMode::WriteAheadLog) {
        OpenStore();
        for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
            if (operation.failing != Failing::AllOrNothing)
                continue; // commits more than once
            Managers managers(store);
            EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
            states.push_back(RowsOf(*store));
        }
        files = FolderContents(folder.path());
    }
    else {
        RawStore raw(StorePath());
        raw.Run("BEGIN; UPDATE FileConfiguration SET name = 'a'; UPDATE ServerConfiguration SET alias = 'a'"_q);
        EXPECT_EQ(sqlite3_db_cacheflush(raw.handle()), SQLITE_OK);
        files = FolderContents(folder.path());
    }
    QString const name = left.section(QLatin1Char('/'), -1);
    ASSERT_TRUE(files.contains(name));
    files.remove("store.db-shm"_q);
    int opened = 0;
    for (Damage const& damage : Damages) {
        for (int page = 0; page <= files[name].size() / PageSize; ++page) {
            SCOPED_TRACE("page " + std::to_string(page) + ": " + damage.name);
            QByteArray const damaged =
                damage.apply(files[name] + QByteArray(PageSize, '\0'), page).left(files[name].size());
            ResetStore(files["store.db"_q]);
            WriteFile(left, damaged);
            OpenStore();
            if (store == nullptr)
                continue;
            ++opened;
            if (Mode() == JournalMode::WriteAheadLog) {
                RowTexts const found = RowsOf(*store);
                EXPECT_NE(std::find(states.begin(), states.end(), found), states.end()) << "not a committed state";
                EXPECT_FALSE(store->LastError());
            }
            ReadAll({}, false);
            WriteAll(true);
            store.reset();
            EXPECT_TRUE(QFile::exists(StorePath()));
        }
    }
    EXPECT_GT(opened, 0);

    // Without the log or journal.
    ResetStore(files["store.db"_q]);
    OpenStore();
    ASSERT_NE(store, nullptr) << openError.toStdString();
    if (Mode() == JournalMode::WriteAheadLog) {
        EXPECT_TRUE(Same(states.front(), RowsOf(*store), "without the log"));
    }
    ReadAll({}, false);
    WriteAll(true);
}

TEST_P(ManagerDamage, FileRemovedWhileOpenFailsEveryWriteAndIsNotRecreated)
{
    QStringList const undamaged = UndamagedAnswers();
    RowTexts const before = RowsBefore();
    OpenStore();
    ASSERT_NE(store, nullptr) << openError.toStdString();
    ASSERT_TRUE(QFile::rename(StorePath(), away));
    QStringList const filesThen = FileNames();
    for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
        Managers managers(store);
        EXPECT_NE(operation.run(managers, *store), operation.usesStore) << operation.name;
        if (operation.usesStore)
            ExpectMoved(operation.name);
        EXPECT_EQ(FileNames(), filesThen) << operation.name;
    }
    ReadAll(undamaged, true);
    store.reset();
    EXPECT_FALSE(QFile::exists(StorePath()));
    EXPECT_TRUE(Same(before, RowsOnDisk(away), "unchanged"));
}

TEST_P(ManagerDamage, FileReplacedWhileOpenFailsEveryWriteAndTheNewOneIsUnchanged)
{
    ResetStore();
    ASSERT_TRUE(QFile::copy(StorePath(), away));
    for (QByteArray const& replacement : {BytesOf(away), QByteArray("something else"), QByteArray()}) {
        ResetStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << openError.toStdString();
        ASSERT_TRUE(QFile::rename(StorePath(), away));
        WriteFile(StorePath(), replacement);
        for (WritingOperation const& operation : OfThisInterface(WritingOperations())) {
            Managers managers(store);
            EXPECT_NE(operation.run(managers, *store), operation.usesStore) << operation.name;
            if (operation.usesStore)
                ExpectMoved(operation.name);
        }
        store.reset();
        EXPECT_TRUE(BytesOf(StorePath()) == replacement);
    }
}

class ManagerListing : public ManagerDamage
{};

INSTANTIATE_TEST_SUITE_P(For,
                         ManagerListing,
                         testing::Combine(testing::Values(JournalMode::WriteAheadLog, JournalMode::Rollback),
                                          testing::Values("IFileConfigManager")),
                         NameOfScriptCase);

TEST_P(ManagerListing, ThatBreaksOffAtADamagedPageSetsAnError)
{
    QByteArray const good = ScriptStore(Mode());
    ResetStore();
    OpenStore();
    int const all = Managers(store).files->GetAll().size();
    int incomplete = 0;
    for (int page = 1; page < good.size() / PageSize; ++page) {
        ResetStore(good.left(page * PageSize) + QByteArray(PageSize, '\0') + good.mid((page + 1) * PageSize));
        OpenStore();
        if (store == nullptr)
            continue;
        Managers managers(store);
        int const found = managers.files->GetAll().size();
        if (found == all)
            continue;
        ASSERT_TRUE(store->LastError()) << found << " of " << all << " with page " << page << " damaged";
        EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_CORRUPT);
        EXPECT_TRUE(store->LastError()->text.contains("damaged"_q)) << store->LastError()->text.toStdString();
        incomplete += found > 0 ? 1 : 0;
    }
    EXPECT_GT(incomplete, 1) << "no listing broke off midway";
}

} // namespace
