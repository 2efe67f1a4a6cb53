#include "benchmarks/Cases.h"

#include "benchmarks/Failure.h"
#include "benchmarks/PrivateMembers.h"
#include "benchmarks/SqliteEngine.h"

#include <QVector>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <thread>
#include <utility>

namespace sync::benchmarks {

namespace {

constexpr int LookUps = 2000;
/// Enough that the log is worked off more than once.
constexpr int DurableWrites = 400;
constexpr int TreeFolders = 20000;
/// From here on what goes through all rows is measured without Qt SQL, which would take as long again.
constexpr int ManyRows = 1'000'000;

/// Enough that the end of the bracket, a flush of the disk, is a small part.
int BracketedWrites(int rows)
{
    return std::clamp(2 * rows, 2000, 4000);
}

int Found(int id)
{
    Require(id > 0, "a row of the sample store was not found");
    return id;
}

/// What files and folders have in common, by their own names.
struct Files
{
    using Record = config::FileConfiguration;
    static constexpr char const* name = "files";
    static constexpr char const* table = "FileConfiguration";
    static constexpr auto Add = &Contestant::AddFile;
    static constexpr auto Update = &Contestant::UpdateFile;
    static constexpr auto ById = &Contestant::FileById;
    static constexpr auto ByPath = &Contestant::FileByPath;
    static constexpr auto ByServerId = &Contestant::FileByServerId;
    static constexpr auto Listing = &Contestant::FilesOfFolder;
    static constexpr auto All = &Contestant::AllFiles;

    static int Rows(SampleRecords const& records) { return records.fileCount(); }
    static Record Sample(SampleRecords const& records, int number) { return records.File(number); }
    static QString Path(SampleRecords const& records, int number) { return records.FilePath(number); }
    static QString ServerId(int number) { return SampleRecords::FileServerId(number); }
    static int Listed(SampleRecords const& records, int choice) { return 1 + records.FolderWithFiles(choice); }
    static int Id(Record const& file) { return file.id; }
    static Record Changed(Record file, int number)
    {
        file.id = 1 + number;
        file.size += 1;
        file.checkSum = file.checkSumMD5;
        file.setSyncStatus(config::FileSyncStatusLinkDiscovered);
        file.resetSyncStatusChanged();
        return file;
    }
};

struct Folders
{
    using Record = config::FolderConfiguration;
    static constexpr char const* name = "folders";
    static constexpr char const* table = "FolderConfiguration";
    static constexpr auto Add = &Contestant::AddFolder;
    static constexpr auto Update = &Contestant::UpdateFolder;
    static constexpr auto ById = &Contestant::FolderById;
    static constexpr auto ByPath = &Contestant::FolderByPath;
    static constexpr auto ByServerId = &Contestant::FolderByServerId;
    static constexpr auto Listing = &Contestant::SubFolders;
    static constexpr auto All = &Contestant::AllFolders;

    static int Rows(SampleRecords const& records) { return records.folderCount(); }
    static Record Sample(SampleRecords const& records, int number) { return records.Folder(number); }
    static QString Path(SampleRecords const& records, int number) { return records.FolderPath(number); }
    static QString ServerId(int number) { return SampleRecords::FolderServerId(number); }
    static int Listed(SampleRecords const& records, int choice) { return 1 + records.FullFolder(choice); }
    static int Id(Record const& folder) { return folder.getId(); }
    static Record Changed(Record folder, int number)
    {
        folder.*Reveal(member::FolderId()) = 1 + number;
        folder.setRemoteShortKey(folder.getServerFolderId());
        folder.setSyncStatus(config::FolderStatusOutOfSync);
        folder.resetSyncStatusChanged();
        return folder;
    }
};

/// Removal of a whole root, another one in each pass.
Case RemovalOfRoot(QString const& workload, qint64 rows)
{
    Case removal = EachWrite(
        workload, rows, 1, [](int pass) { return 1 + pass; }, std::mem_fn(&Contestant::CleanRoot));
    removal.limit = 0;
    removal.goesOn = false;
    removal.concernsSql = rows < ManyRows;
    return removal;
}

template <class Family>
std::vector<Case> CasesOf(SampleRecords const& records)
{
    int const rows = Family::Rows(records);
    auto const named = [](char const* what) {
        return QStringLiteral("%1: %2").arg(QLatin1String(Family::name), QLatin1String(what));
    };
    auto const any = [rows](int choice) { return Scattered(choice, rows); };
    auto const fresh = [=](int number) { return Family::Sample(records, rows + number); };
    auto const changed = [=](int choice) {
        int const number = any(choice);
        return Family::Changed(Family::Sample(records, number), number);
    };
    auto const add = std::mem_fn(Family::Add);
    auto const update = std::mem_fn(Family::Update);
    // Each pass finds as many rows as the first one did.
    auto const withoutAdded = [=](Case each) {
        each.reset = [=](Participant& participant) {
            ExecuteOn(participant,
                      {QStringLiteral("DELETE FROM %1 WHERE id > %2").arg(QLatin1String(Family::table)).arg(rows)});
        };
        return each;
    };

    std::vector<Case> cases;
    cases.push_back(EachRead(
        named("look-up by path"),
        rows,
        LookUps,
        [=](int choice) { return Family::Path(records, any(choice)); },
        [](Contestant& store, QString const& path) { return Found(Family::Id((store.*Family::ByPath)(path))); }));
    cases.push_back(EachRead(
        named("look-up by id"),
        rows,
        LookUps,
        [=](int choice) { return 1 + any(choice); },
        [](Contestant& store, int id) { return Found(Family::Id((store.*Family::ById)(id))); }));
    cases.push_back(EachRead(
        named("look-up by server id"),
        rows,
        LookUps,
        [=](int choice) { return Family::ServerId(any(choice)); },
        [](Contestant& store, QString const& id) { return Found(Family::Id((store.*Family::ByServerId)(id))); }));
    cases.push_back(EachRead(
        named("listing of one folder"),
        rows,
        LookUps / 20,
        [=](int choice) { return Family::Listed(records, choice); },
        [](Contestant& store, int id) { return Found((store.*Family::Listing)(id).size()); }));
    cases.push_back(EachRead(
        named("GetAll"),
        rows,
        std::max(1, 10000 / rows),
        [=](int) { return rows; },
        [](Contestant& store, int count) {
            int const size = (store.*Family::All)().size();
            Require(size == count, "a listing is not whole");
            return size;
        }));
    cases.back().concernsSql = rows < ManyRows;
    int const bracketed = BracketedWrites(rows);
    cases.push_back(InBracket(EachWrite(named("Update, in one bracket"), rows, bracketed, changed, update)));
    cases.push_back(EachWrite(named("Update, one by one durably"), rows, DurableWrites, changed, update));
    cases.push_back(withoutAdded(InBracket(EachWrite(named("add, in one bracket"), rows, bracketed, fresh, add))));
    cases.push_back(withoutAdded(EachWrite(named("add, one by one durably"), rows, DurableWrites, fresh, add)));
    return cases;
}

/// The folders of a pass are the same in each pass, and their files are set to syncing again before it.
Case StatusOfFolders(SampleRecords const& records)
{
    int const folders = records.folderCount() - 10;
    int const operations = std::min(folders, 500);
    int const step = folders / operations;
    auto const folderId = [=](int number) { return 11 + (number % operations) * step; };

    Case status = InBracket(EachWrite(QStringLiteral("files: UpdateSyncStatusFromSyncingToNotSynced"),
                                      records.fileCount(),
                                      operations,
                                      folderId,
                                      std::mem_fn(&Contestant::SyncingToNotSynced)));
    status.reset = [=](Participant& participant) {
        QStringList statements;
        for (int number = 0; number < operations; ++number)
            statements.append(QStringLiteral("UPDATE FileConfiguration SET syncStatus = 1 "
                                             "WHERE folderConfigurationId = %1 AND id % 5 = 1")
                                  .arg(folderId(number)));
        ExecuteOn(participant, statements);
    };
    return status;
}

/// Look-ups by path on so many threads at once, each with its share, while another thread updates durably, again and
/// again but no faster for one contestant than for the other: each of its commits costs the readers their page caches.
Case ReadersBesideWriter(SampleRecords const& records, int threads)
{
    constexpr int lookUpsInAll = 100000; // enough that what the new threads' connections read first is a small part
    auto const paths = std::make_shared<std::vector<QString>>();
    Case readers;
    readers.workload = QStringLiteral("files: look-up by path beside a writer, threads: %1").arg(threads);
    readers.rows = records.fileCount();
    readers.operations = lookUpsInAll;
    readers.limit = 1.3;
    readers.changesStore = true;
    readers.concernsSql =
        false; // Qt's threads would take most of the run's time, and the look-up alone shows the ratio
    readers.prepare = [=](int pass) {
        paths->clear();
        for (int choice = 0; choice < lookUpsInAll; ++choice)
            paths->push_back(records.FilePath(Scattered(pass * lookUpsInAll + choice, records.fileCount())));
    };
    readers.run = [=](Participant& participant) {
        Contestant& store = participant.store();
        std::atomic<bool> done = false;
        std::thread writer([&] {
            auto const own = store.ForThread();
            for (int choice = 0; !done; ++choice) {
                int const number = Scattered(choice, records.fileCount());
                own->UpdateFile(Files::Changed(records.File(number), number));
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
        std::vector<std::thread> readerThreads;
        for (int thread = 0; thread < threads; ++thread)
            readerThreads.emplace_back([&, thread] {
                auto const own = store.ForThread();
                for (auto choice = std::size_t(thread); choice < paths->size(); choice += std::size_t(threads))
                    Found(own->FileByPath((*paths)[choice]).id);
            });
        for (std::thread& reader : readerThreads)
            reader.join();
        done = true;
        writer.join();
    };
    return readers;
}

/// Opening, a first look-up, and closing.
Case Opening(SampleRecords const& records)
{
    constexpr int operations = 20;
    Case opening;
    opening.workload = QStringLiteral("opening a store");
    opening.rows = records.fileCount();
    opening.operations = operations;
    opening.reset = std::mem_fn(&Participant::Close);
    opening.run = [](Participant& participant) {
        for (int i = 0; i < operations; ++i) {
            Found(participant.store().FileById(1).id);
            participant.Close();
        }
    };
    return opening;
}

std::vector<Case> AccountCases()
{
    constexpr int rows = SampleRecords::AccountRows;
    auto const any = [](int choice) { return Scattered(choice, rows); };
    auto const anyId = [](int choice) { return 1 + Scattered(choice, rows); };
    return {
        EachRead(QStringLiteral("servers: look-up by id"),
                 rows,
                 LookUps,
                 anyId,
                 [](Contestant& store, int id) { return Found(store.ServerById(id).getId()); }),
        EachRead(
            QStringLiteral("servers: look-up by URLs"),
            rows,
            LookUps,
            [=](int choice) { return SampleRecords::Server(any(choice)); },
            [](Contestant& store, config::ServerConfiguration const& server) {
                return Found(store.ServerByUrls(server.getDavUrl(), server.getWebServiceUrl()).getId());
            }),
        EachRead(QStringLiteral("servers: look-up by file"),
                 rows,
                 LookUps,
                 anyId,
                 [](Contestant& store, int id) { return Found(store.ServerOfFile(id).getId()); }),
        EachRead(QStringLiteral("accounts: look-up by id"),
                 rows,
                 LookUps,
                 anyId,
                 [](Contestant& store, int id) { return Found(store.AccountById(id).getId()); }),
        EachRead(
            QStringLiteral("accounts: look-up by domain and user"),
            rows,
            LookUps,
            [=](int choice) { return SampleRecords::Account(any(choice)); },
            [](Contestant& store, config::AuthenticationConfiguration const& account) {
                return Found(store.AccountByUser(account.getDomain(), account.getUserName()).getId());
            }),
        EachRead(QStringLiteral("products: look-up by id"),
                 rows,
                 LookUps,
                 anyId,
                 [](Contestant& store, int id) { return Found(store.ProductById(id).getId()); }),
        EachRead(
            QStringLiteral("products: look-up by server and key"),
            rows,
            LookUps,
            [=](int choice) {
                int const number = any(choice);
                return std::make_pair(1 + number, SampleRecords::Product(number).getConsumerKey());
            },
            [](Contestant& store, std::pair<int, QString> const& key) {
                return Found(store.ProductByKey(key.first, key.second).getId());
            }),
    };
}

Suite RootsSuite(int roots)
{
    SampleRecords::Shape shape;
    shape.roots = roots;
    SampleRecords const records(shape);
    QString const path = records.FolderPath(roots - 1) + QStringLiteral("/notes/today.txt");
    Case inRoot = EachRead(
        QStringLiteral("IsInExistingClientFolder, by cached roots"),
        roots,
        LookUps,
        [=](int) { return path; },
        [](Contestant& store, QString const& sought) { return Found(store.IsInRoot(sought) ? 1 : 0); });
    inRoot.concernsSql = false;
    return {records, {inRoot}};
}

/// A tree of folders with a file in each, one for each pass.
Suite TreesSuite(int passes)
{
    SampleRecords::Shape shape;
    shape.roots = passes;
    shape.subFoldersOfRoot = TreeFolders;
    shape.filesOfSubFolder = 1;
    Case tree = InBracket(EachWrite(
        QStringLiteral("RemoveFolderAndChildren, in one bracket"),
        TreeFolders,
        1,
        [](int pass) { return 1 + pass; },
        std::mem_fn(&Contestant::RemoveFolderAndChildren)));
    tree.limit = 0;
    tree.goesOn = false;
    return {SampleRecords(shape), {RemovalOfRoot(QStringLiteral("CleanRootFolder"), TreeFolders), tree}};
}

} // namespace

std::vector<Suite> AllSuites(QVector<int> const& sizes, int passes)
{
    std::vector<Suite> suites;
    for (int const size : sizes) {
        SampleRecords const records = SampleRecords::OfFiles(size);
        std::vector<Case> cases{Opening(records)};
        if (size == sizes.first())
            for (Case const& account : AccountCases())
                cases.push_back(account);
        for (Case const& ofFiles : CasesOf<Files>(records))
            cases.push_back(ofFiles);
        cases.push_back(StatusOfFolders(records));
        for (int const threads : {1, 4})
            cases.push_back(ReadersBesideWriter(records, threads));
        cases.push_back(RemovalOfRoot(QStringLiteral("files: removal of a root"), size));
        suites.push_back({records, cases});
    }
    for (int const size : sizes) {
        SampleRecords const records = SampleRecords::OfFolders(size);
        std::vector<Case> cases = CasesOf<Folders>(records);
        cases.push_back(RemovalOfRoot(QStringLiteral("folders: removal of a root"), size));
        suites.push_back({records, cases});
    }
    for (int const roots : {10, 100, 1000})
        suites.push_back(RootsSuite(roots));
    suites.push_back(TreesSuite(passes));
    return suites;
}

} // namespace sync::benchmarks
