#include "config/FileConfiguration.h"
#include "reliability/ManagerScriptFixture.h"
#include "support/FaultyFiles.h"

#include <sqlite3.h>

#include <algorithm>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;

constexpr int PageSize = 4096;

/// The same junk for the same place.
QByteArray Junk(int size, int place)
{
    auto random = static_cast<unsigned>(place) + 1u;
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) {
        random = random * 1664525u + 1013904223u;
        byte = static_cast<char>(random >> 24);
    }
    return bytes;
}

/// What can happen to a page of a file.
struct Damage
{
    char const* name;
    QByteArray (*spoil)(QByteArray file, int page);
    /// The engine keeps no sums of its pages: rows that were changed into other rows show nowhere.
    bool shows = true;
};

constexpr Damage Damages[] = {
    {"junk", [](QByteArray file, int page) { return file.replace(page * PageSize, PageSize, Junk(PageSize, page)); }},
    {"zeros",
     [](QByteArray file, int page) { return file.replace(page * PageSize, PageSize, QByteArray(PageSize, '\0')); }},
    {"cut off before it", [](QByteArray file, int page) { return file.left(page * PageSize); }},
    {"cut off inside it", [](QByteArray file, int page) { return file.left(page * PageSize + PageSize / 2); }},
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

/// A store whose file was damaged while nobody had it open, or taken away while it was.
class ManagerDamage : public ManagerScriptFixture
{
protected:
    static QByteArray BytesOf(QString const& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    /// Of a store that is closed.
    QMap<QString, QByteArray> Files() const
    {
        QMap<QString, QByteArray> files;
        for (QString const& name : FileNames())
            files.insert(name, BytesOf(folder.filePath(name)));
        return files;
    }
    QStringList FileNames() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    /// What the reading operations find. Of those that found nothing, or too little, the store has an error.
    void ReadAll(QStringList const& whole, bool damageShows)
    {
        std::vector<ReadingOperation> const operations = Own(ReadingOperations());
        for (std::size_t i = 0; i < operations.size(); ++i) {
            Managers managers(store);
            QString const answer = operations[i].run(managers);
            EXPECT_TRUE(!damageShows || store->LastError() || answer == whole.value(static_cast<int>(i)))
                << operations[i].name << " gives " << answer.toStdString();
            store->ClearError();
        }
    }

    /// Whether any of the writing operations wrote something. Of those that could not the store has an error, unless
    /// they may find that somebody has done their work already.
    bool WriteAll(bool mayBeDone = false)
    {
        bool wrote = false;
        for (WritingOperation const& operation : Own(WritingOperations())) {
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

    QStringList WholeAnswers()
    {
        PutStore();
        OpenStore();
        QStringList answers;
        for (ReadingOperation const& operation : Own(ReadingOperations())) {
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

TEST_P(ManagerDamage, OfAnyPageIsAnsweredAndAFileThatCannotBeReadStaysAsItIs)
{
    QStringList const whole = WholeAnswers();
    QByteArray const good = ScriptStore(Mode());
    int refused = 0;
    int opened = 0;
    for (Damage const& damage : Damages) {
        for (int page = 0; page < good.size() / PageSize; ++page) {
            SCOPED_TRACE("page " + std::to_string(page) + ": " + damage.name);
            PutStore(damage.spoil(good, page));
            QMap<QString, QByteArray> const before = Files();
            OpenStore();
            if (store == nullptr) {
                ++refused;
                EXPECT_TRUE(refusal.contains(StorePath())) << refusal.toStdString();
                EXPECT_TRUE(Files() == before) << "a refused file is not as it was";
                continue;
            }
            ++opened;
            ReadAll(whole, damage.shows);
            store.reset();
            EXPECT_TRUE(Files() == before) << "a file that was read is not as it was";

            OpenStore();
            ASSERT_NE(store, nullptr) << refusal.toStdString();
            bool const wrote = WriteAll();
            store.reset();
            EXPECT_TRUE(wrote || Files() == before) << "a file that could not be written is not as it was";
            EXPECT_GE(BytesOf(StorePath()).size(), good.size());
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(opened, 0);
}

TEST_P(ManagerDamage, OfALogOrAJournalThatWasLeftBehindIsAnswered)
{
    // All states that were committed, and the files that a program leaves when it is killed.
    std::vector<StoreRows> states{RowsBefore()};
    QString const left = StorePath() + (Mode() == JournalMode::WriteAheadLog ? "-wal"_q : "-journal"_q);
    QMap<QString, QByteArray> files;
    PutStore();
    if (Mode() == JournalMode::WriteAheadLog) {
        OpenStore();
        for (WritingOperation const& operation : Own(WritingOperations())) {
            if (operation.failing != Failing::AllOrNothing)
                continue; // these commit several times
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
            QByteArray const spoilt =
                damage.spoil(files[name] + QByteArray(PageSize, '\0'), page).left(files[name].size());
            PutStore(files["store.db"_q]);
            WriteFile(left, spoilt);
            OpenStore();
            if (store == nullptr)
                continue;
            ++opened;
            if (Mode() == JournalMode::WriteAheadLog) {
                StoreRows const found = RowsOf(*store);
                EXPECT_NE(std::find(states.begin(), states.end(), found), states.end())
                    << "this was never committed together";
                EXPECT_FALSE(store->LastError());
            }
            ReadAll({}, false);
            WriteAll(true);
            store.reset();
            EXPECT_TRUE(QFile::exists(StorePath()));
        }
    }
    EXPECT_GT(opened, 0);

    // Removed altogether.
    PutStore(files["store.db"_q]);
    OpenStore();
    ASSERT_NE(store, nullptr) << refusal.toStdString();
    if (Mode() == JournalMode::WriteAheadLog) {
        EXPECT_TRUE(Same(states.front(), RowsOf(*store), "without the log"));
    }
    ReadAll({}, false);
    WriteAll(true);
}

TEST_P(ManagerDamage, FileThatVanishesWhileOpenIsToldAtEveryWriteAndNoneTakesItsPlace)
{
    QStringList const whole = WholeAnswers();
    StoreRows const before = RowsBefore();
    OpenStore();
    ASSERT_NE(store, nullptr) << refusal.toStdString();
    ASSERT_TRUE(QFile::rename(StorePath(), away));
    QStringList const filesThen = FileNames();
    for (WritingOperation const& operation : Own(WritingOperations())) {
        Managers managers(store);
        EXPECT_NE(operation.run(managers, *store), operation.usesStore) << operation.name;
        if (operation.usesStore)
            ExpectMoved(operation.name);
        EXPECT_EQ(FileNames(), filesThen) << operation.name;
    }
    ReadAll(whole, true);
    store.reset();
    EXPECT_FALSE(QFile::exists(StorePath()));
    EXPECT_TRUE(Same(before, RowsOnDisk(away), "as it was"));
}

TEST_P(ManagerDamage, FileThatIsReplacedWhileOpenIsToldAtEveryWriteAndTheNewOneStaysAsItIs)
{
    PutStore();
    ASSERT_TRUE(QFile::copy(StorePath(), away));
    for (QByteArray const& replacement : {BytesOf(away), QByteArray("something else"), QByteArray()}) {
        PutStore();
        OpenStore();
        ASSERT_NE(store, nullptr) << refusal.toStdString();
        ASSERT_TRUE(QFile::rename(StorePath(), away));
        WriteFile(StorePath(), replacement);
        for (WritingOperation const& operation : Own(WritingOperations())) {
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

TEST_P(ManagerListing, ThatBreaksOffAtADamagedPageLeavesAnError)
{
    QByteArray const good = ScriptStore(Mode());
    PutStore();
    OpenStore();
    int const all = Managers(store).files->GetAll().size();
    int brokenOff = 0;
    for (int page = 1; page < good.size() / PageSize; ++page) {
        PutStore(good.left(page * PageSize) + QByteArray(PageSize, '\0') + good.mid((page + 1) * PageSize));
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
        brokenOff += found > 0 ? 1 : 0;
    }
    EXPECT_GT(brokenOff, 1) << "no listing broke off midway";
}

} // namespace
