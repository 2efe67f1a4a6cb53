#include "benchmarks/Workloads.h"

#include "benchmarks/Failure.h"
#include "benchmarks/RecordId.h"
#include "config/folder/FolderColumns.h"

#include <QStringList>

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
/// Enough for more than one checkpoint of the log.
constexpr int DurableWrites = 400;
constexpr int TreeFolders = 20000;
/// From this size on, workloads over all rows leave Qt SQL out: it would double the time of the whole run.
constexpr int ManyRows = 1'000'000;

/// Enough for the commit, a flush of the disk, to be a small part.
int WritesPerTransaction(int rows)
{
    return std::clamp(2 * rows, 2000, 4000);
}

/// A case that calls `step` with one key after the other. `makeKey` is called with a number that no other pass gets.
template <class MakeKey, class Step>
Case Each(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Step step)
{
    using Key = decltype(makeKey(0));
    auto const keys = std::make_shared<std::vector<Key>>();

    Case each;
    each.workload = workload;
    each.rows = rows;
    each.operations = operations;
    each.prepare = [=](int pass) {
        keys->clear();
        for (int i = 0; i < operations; ++i)
            keys->push_back(makeKey(pass * operations + i));
    };
    each.run = [=](Backend& backend) {
        for (Key& key : *keys)
            step(backend, key);
    };
    return each;
}

/// Reads; each one checks that it found something.
template <class MakeKey, class Read>
Case EachRead(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Read read)
{
    Case each = Each(workload, rows, operations, makeKey, read);
    each.limit = 1.3;
    return each;
}

/// Writes that are durable when they return.
template <class MakeKey, class Step>
Case EachWrite(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Step step)
{
    Case each = Each(workload, rows, operations, makeKey, step);
    each.changesStore = true;
    each.limit = 1.1;
    each.reset = QStringList();
    return each;
}

/// The same in one transaction, with its commit.
Case InTransaction(Case each)
{
    each.limit = 1.3;
    each.run = [run = std::move(each.run)](Backend& backend) {
        backend.Begin();
        run(backend);
        backend.Commit();
    };
    return each;
}

void RequireFound(int id)
{
    Require(id > 0, "a row of the sample store was not found");
}

/// The operations and samples of one record kind, under names that both kinds share.
struct Files
{
    using Record = config::FileConfiguration;
    static constexpr char const* name = "files";
    static constexpr char const* table = "FileConfiguration";
    static constexpr auto Add = &Backend::AddFile;
    static constexpr auto Update = &Backend::UpdateFile;
    static constexpr auto ById = &Backend::FileById;
    static constexpr auto ByPath = &Backend::FileByPath;
    static constexpr auto ByServerId = &Backend::FileByServerId;
    static constexpr auto Listing = &Backend::FilesOfFolder;
    static constexpr auto All = &Backend::AllFiles;

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
    static constexpr auto Add = &Backend::AddFolder;
    static constexpr auto Update = &Backend::UpdateFolder;
    static constexpr auto ById = &Backend::FolderById;
    static constexpr auto ByPath = &Backend::FolderByPath;
    static constexpr auto ByServerId = &Backend::FolderByServerId;
    static constexpr auto Listing = &Backend::SubFolders;
    static constexpr auto All = &Backend::AllFolders;

    static int Rows(SampleRecords const& records) { return records.folderCount(); }
    static Record Sample(SampleRecords const& records, int number) { return records.Folder(number); }
    static QString Path(SampleRecords const& records, int number) { return records.FolderPath(number); }
    static QString ServerId(int number) { return SampleRecords::FolderServerId(number); }
    static int Listed(SampleRecords const& records, int choice) { return 1 + records.FullFolder(choice); }
    static int Id(Record const& folder) { return folder.getId(); }
    static Record Changed(Record folder, int number)
    {
        GiveId(folder, 1 + number);
        folder.setRemoteShortKey(folder.getServerFolderId());
        folder.setSyncStatus(config::FolderStatusOutOfSync);
        folder.resetSyncStatusChanged();
        return folder;
    }
};

/// Removal of a whole root, a different one in each pass.
Case RemovalOfRoot(QString const& workload, qint64 rows)
{
    Case removal = EachWrite(
        workload, rows, 1, [](int pass) { return 1 + pass; }, std::mem_fn(&Backend::CleanRoot));
    removal.limit = 0;
    removal.canRepeatMore = false;
    removal.includesQtSql = rows < ManyRows;
    return removal;
}

template <class Kind>
std::vector<Case> CasesOf(SampleRecords const& records)
{
    int const rows = Kind::Rows(records);
    auto const named = [](char const* what) {
        return QStringLiteral("%1: %2").arg(QLatin1String(Kind::name), QLatin1String(what));
    };
    auto const any = [rows](int choice) { return Scattered(choice, rows); };
    auto const fresh = [=](int number) { return Kind::Sample(records, rows + number); };
    auto const changed = [=](int choice) {
        int const number = any(choice);
        return Kind::Changed(Kind::Sample(records, number), number);
    };
    auto const add = std::mem_fn(Kind::Add);
    auto const update = std::mem_fn(Kind::Update);
    // So that each pass starts with the same number of rows.
    auto const withoutAdded = [=](Case each) {
        each.reset =
            QStringList{QStringLiteral("DELETE FROM %1 WHERE id > %2").arg(QLatin1String(Kind::table)).arg(rows)};
        return each;
    };

    std::vector<Case> cases;
    cases.push_back(EachRead(
        named("look-up by path"),
        rows,
        LookUps,
        [=](int choice) { return Kind::Path(records, any(choice)); },
        [](Backend& backend, QString const& path) { RequireFound(Kind::Id((backend.*Kind::ByPath)(path))); }));
    cases.push_back(EachRead(
        named("look-up by id"),
        rows,
        LookUps,
        [=](int choice) { return 1 + any(choice); },
        [](Backend& backend, int id) { RequireFound(Kind::Id((backend.*Kind::ById)(id))); }));
    cases.push_back(EachRead(
        named("look-up by server id"),
        rows,
        LookUps,
        [=](int choice) { return Kind::ServerId(any(choice)); },
        [](Backend& backend, QString const& id) { RequireFound(Kind::Id((backend.*Kind::ByServerId)(id))); }));
    cases.push_back(EachRead(
        named("listing of one folder"),
        rows,
        LookUps / 20,
        [=](int choice) { return Kind::Listed(records, choice); },
        [](Backend& backend, int id) { RequireFound((backend.*Kind::Listing)(id).size()); }));
    cases.push_back(EachRead(
        named("GetAll"),
        rows,
        std::max(1, 10000 / rows),
        [=](int) { return rows; },
        [](Backend& backend, int count) {
            Require((backend.*Kind::All)().size() == count, "a listing is incomplete");
        }));
    cases.back().includesQtSql = rows < ManyRows;
    int const writes = WritesPerTransaction(rows);
    cases.push_back(InTransaction(EachWrite(named("Update, in one transaction"), rows, writes, changed, update)));
    cases.push_back(EachWrite(named("Update, one by one durably"), rows, DurableWrites, changed, update));
    cases.push_back(withoutAdded(InTransaction(EachWrite(named("add, in one transaction"), rows, writes, fresh, add))));
    cases.push_back(withoutAdded(EachWrite(named("add, one by one durably"), rows, DurableWrites, fresh, add)));
    return cases;
}

/// Reads of files that all have two properties, which are documents in their column, or none.
Suite PropertiesSuite(bool hasProperties)
{
    constexpr int rows = 10000;
    SampleRecords const records =
        hasProperties ? SampleRecords::OfFilesWithProperties(rows) : SampleRecords::OfFilesWithoutProperties(rows);
    int const properties = hasProperties ? 2 : 0;
    auto const named = [=](char const* operation) {
        return QStringLiteral("files: %1, %2 properties")
            .arg(QLatin1String(operation), QLatin1String(hasProperties ? "two" : "no"));
    };
    return {records,
            {EachRead(
                 named("look-up by path"),
                 rows,
                 LookUps,
                 [=](int choice) { return records.FilePath(Scattered(choice, rows)); },
                 [=](Backend& backend, QString const& path) {
                     Require(backend.FileByPath(path).nameValueProperties.size() == properties,
                             "a file has other properties");
                 }),
             EachRead(
                 named("listing of one folder"),
                 rows,
                 LookUps / 20,
                 [=](int choice) { return 1 + records.FolderWithFiles(choice); },
                 [](Backend& backend, int id) { RequireFound(backend.FilesOfFolder(id).size()); })}};
}

/// Every pass takes the same folders; `reset` sets their files back to syncing.
Case StatusOfFolders(SampleRecords const& records)
{
    int const folders = records.folderCount() - 10;
    int const operations = std::min(folders, 500);
    int const step = folders / operations;
    auto const folderId = [=](int number) { return 11 + (number % operations) * step; };

    Case status = InTransaction(EachWrite(QStringLiteral("files: UpdateSyncStatusFromSyncingToNotSynced"),
                                          records.fileCount(),
                                          operations,
                                          folderId,
                                          std::mem_fn(&Backend::SyncingToNotSynced)));
    for (int number = 0; number < operations; ++number)
        status.reset->append(QStringLiteral("UPDATE FileConfiguration SET syncStatus = 1 "
                                            "WHERE folderConfigurationId = %1 AND id % 5 = 1")
                                 .arg(folderId(number)));
    return status;
}

/// Look-ups by path, divided among threads, while another thread updates durably. The writer's pace is fixed and so the
/// same for all backends: each commit invalidates the readers' page caches.
Case ReadersBesideWriter(SampleRecords const& records, int threads)
{
    constexpr int allLookUps = 100000; // enough for the cost of new connections to be a small part
    auto const paths = std::make_shared<std::vector<QString>>();
    Case readers;
    readers.workload = QStringLiteral("files: look-up by path beside a writer, threads: %1").arg(threads);
    readers.rows = records.fileCount();
    readers.operations = allLookUps;
    readers.limit = 1.3;
    readers.changesStore = true;
    readers.includesQtSql = false; // it would take most of the run, and the plain look-up shows its ratio
    readers.prepare = [=](int pass) {
        paths->clear();
        for (int choice = 0; choice < allLookUps; ++choice)
            paths->push_back(records.FilePath(Scattered(pass * allLookUps + choice, records.fileCount())));
    };
    readers.run = [=](Backend& backend) {
        std::atomic<bool> done = false;
        std::thread writer([&] {
            auto const own = backend.ForThread();
            for (int choice = 0; !done; ++choice) {
                int const number = Scattered(choice, records.fileCount());
                own->UpdateFile(Files::Changed(records.File(number), number));
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
        std::vector<std::thread> readerThreads;
        readerThreads.reserve(std::size_t(threads));
        for (int thread = 0; thread < threads; ++thread)
            readerThreads.emplace_back([&, thread] {
                auto const own = backend.ForThread();
                for (auto choice = std::size_t(thread); choice < paths->size(); choice += std::size_t(threads))
                    RequireFound(own->FileByPath((*paths)[choice]).id);
            });
        for (std::thread& reader : readerThreads)
            reader.join();
        done = true;
        writer.join();
    };
    return readers;
}

/// Closing and opening a store, with one look-up.
Case Opening(SampleRecords const& records)
{
    constexpr int operations = 20;
    Case opening;
    opening.workload = QStringLiteral("opening a store");
    opening.rows = records.fileCount();
    opening.operations = operations;
    opening.run = [](Backend& backend) {
        for (int i = 0; i < operations; ++i) {
            backend.Reopen();
            RequireFound(backend.FileById(1).id);
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
                 [](Backend& backend, int id) { RequireFound(backend.ServerById(id).getId()); }),
        EachRead(
            QStringLiteral("servers: look-up by URLs"),
            rows,
            LookUps,
            [=](int choice) { return SampleRecords::Server(any(choice)); },
            [](Backend& backend, config::ServerConfiguration const& server) {
                RequireFound(backend.ServerByUrls(server.getDavUrl(), server.getWebServiceUrl()).getId());
            }),
        EachRead(QStringLiteral("servers: look-up by file"),
                 rows,
                 LookUps,
                 anyId,
                 [](Backend& backend, int id) { RequireFound(backend.ServerOfFile(id).getId()); }),
        EachRead(QStringLiteral("accounts: look-up by id"),
                 rows,
                 LookUps,
                 anyId,
                 [](Backend& backend, int id) { RequireFound(backend.AccountById(id).getId()); }),
        EachRead(
            QStringLiteral("accounts: look-up by domain and user"),
            rows,
            LookUps,
            [=](int choice) { return SampleRecords::Account(any(choice)); },
            [](Backend& backend, config::AuthenticationConfiguration const& account) {
                RequireFound(backend.AccountByUser(account.getDomain(), account.getUserName()).getId());
            }),
        EachRead(QStringLiteral("products: look-up by id"),
                 rows,
                 LookUps,
                 anyId,
                 [](Backend& backend, int id) { RequireFound(backend.ProductById(id).getId()); }),
        EachRead(
            QStringLiteral("products: look-up by server and key"),
            rows,
            LookUps,
            [=](int choice) {
                int const number = any(choice);
                return std::make_pair(1 + number, SampleRecords::Product(number).getConsumerKey());
            },
            [](Backend& backend, std::pair<int, QString> const& key) {
                RequireFound(backend.ProductByKey(key.first, key.second).getId());
            }),
    };
}

Suite RootsSuite(int roots)
{
    SampleRecords::Shape shape;
    shape.roots = roots;
    SampleRecords const records(shape);
    Case inRoot = EachRead(
        QStringLiteral("IsInExistingClientFolder, by cached roots"),
        roots,
        LookUps,
        [path = records.FolderPath(roots - 1) + QStringLiteral("/notes/today.txt")](int) { return path; },
        [](Backend& backend, QString const& sought) { RequireFound(backend.IsInRoot(sought) ? 1 : 0); });
    inRoot.includesQtSql = false;
    return {records, {inRoot}};
}

/// One tree per pass, of folders with one file each.
Suite TreesSuite(int passes)
{
    SampleRecords::Shape shape;
    shape.roots = passes;
    shape.subFoldersOfRoot = TreeFolders;
    shape.filesOfSubFolder = 1;
    Case tree = InTransaction(EachWrite(
        QStringLiteral("RemoveFolderAndChildren, in one transaction"),
        TreeFolders,
        1,
        [](int pass) { return 1 + pass; },
        std::mem_fn(&Backend::RemoveFolderAndChildren)));
    tree.limit = 0;
    tree.canRepeatMore = false;
    return {SampleRecords(shape), {RemovalOfRoot(QStringLiteral("CleanRootFolder"), TreeFolders), tree}};
}

} // namespace

Suite ManyStoresSuite(QVector<int> const& counts, int files)
{
    constexpr int perStore = 20; // always as many, since the first ones after another store's find other caches
    SampleRecords const records = SampleRecords::OfFiles(files);
    std::vector<Case> cases;
    for (int const count : counts) {
        cases.push_back(EachRead(
            QStringLiteral("files: look-up by path, profiles: %1").arg(count),
            files,
            perStore,
            [=](int choice) { return records.FilePath(Scattered(choice, files)); },
            [](Backend& backend, QString const& path) { RequireFound(backend.FileByPath(path).id); }));
        cases.back().stores = count;
        cases.back().includesQtSql = false;
    }
    return {records, cases};
}

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
    for (bool const hasProperties : {true, false})
        suites.push_back(PropertiesSuite(hasProperties));
    for (int const roots : {10, 100, 1000})
        suites.push_back(RootsSuite(roots));
    suites.push_back(TreesSuite(passes));
    return suites;
}

} // namespace sync::benchmarks
