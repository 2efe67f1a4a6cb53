// Opens a damaged file and reads and writes it through all managers. Nothing crashes, and no byte of a file changes
// that was refused or opened read-only.

#include "config/AuthenticationConfigManager.h"
#include "config/AuthenticationConfiguration.h"
#include "config/FileConfigManager.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfigManager.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfigManager.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ScheduleEntryManager.h"
#include "config/ServerConfigManager.h"
#include "config/ServerConfiguration.h"
#include "database/SqliteDatabaseFactory.h"
#include "fuzz/FuzzInput.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QMap>
#include <QTemporaryDir>

using namespace tandry::fuzz;
using namespace sync::config;
using sync::database::JournalMode;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

namespace {

constexpr int PageSize = 4096;
/// The size to which an input can extend the file.
constexpr int MostPages = 256;

QMap<QString, QByteArray> FilesIn(QDir const& folder)
{
    QMap<QString, QByteArray> files;
    for (QString const& name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        QFile file(folder.filePath(name));
        Require(file.open(QIODevice::ReadOnly), "a file of the store can be read");
        files[name] = file.readAll();
    }
    return files;
}

void Write(QString const& path, QByteArray const& bytes)
{
    QFile file(path);
    Require(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size(),
            "an input can be written");
}

/// Returns the file of an undamaged store with some rows in every table.
QByteArray GoodStore(JournalMode journalMode)
{
    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("store.db"));
    OpenOptions options;
    options.journalMode = journalMode;
    {
        auto const factory = SqliteDatabaseFactory::Open(path, nullptr, options);
        Require(factory != nullptr, "a good store opens");
        auto const folders = std::make_shared<FolderConfigManager>(factory, nullptr);
        FileConfigManager files(factory, nullptr, folders);
        Require(files.transaction(), "a client transaction begins");
        ServerConfiguration server;
        server.setAlias(QStringLiteral("alias"));
        AuthenticationConfiguration account;
        account.setUserName(QStringLiteral("user"));
        ProductConfiguration product;
        product.setConsumerSecret(QStringLiteral("secret"));
        bool good = ServerConfigManager(factory).Add(server) && AuthenticationConfigManager(factory).Add(account) &&
                    ProductConfigManager(factory).Add(product);
        FolderConfiguration root;
        root.setParentId(0);
        root.setClientPath(QStringLiteral("/r"));
        good = good && folders->Add(root);
        for (int i = 0; good && i < 90; ++i) {
            FileConfiguration file;
            file.clientPath = QStringLiteral("/r/%1").arg(i);
            file.name = QString::number(i).repeated(i % 7 == 0 ? 900 : 9); // some rows need overflow pages
            file.folderConfigurationId = file.rootFolderId = root.getId();
            file.fileType = FileConfigurationType(i % 3);
            file.parentFileId = i / 3;
            good = files.Add(file);
        }
        Require(good && files.commit(), "a good store can be filled");
    }
    return FilesIn(QDir(folder.path())).value(QStringLiteral("store.db"));
}

/// Applies damages, each described by a few bytes of the input: the fuzzer would hardly ever construct a valid store.
QByteArray Damaged(QByteArray file, FuzzInput& input)
{
    for (int count = 0; !input.isEmpty() && count < 64; ++count) {
        std::uint8_t const what = input.TakeByte();
        int const pages = std::max(1, file.size() / PageSize);
        int const page = int(input.TakeByte()) % pages * PageSize;
        switch (what % 8) {
        case 0:
        case 1: { // one byte
            int const at = page + int(input.TakeNumber(2)) % PageSize;
            if (at < file.size())
                file[at] = char(input.TakeByte());
            break;
        }
        case 2: { // a number in the header of a page or of the file
            int const at = page + int(input.TakeByte());
            std::uint32_t const number = input.TakeNumber(4);
            for (int i = 0; i < 4 && at + i < file.size(); ++i)
                file[at + i] = char(number >> (24 - 8 * i));
            break;
        }
        case 3: // a page of zeros
            file.replace(page, PageSize, QByteArray(PageSize, 0));
            break;
        case 4: // another page
            file.replace(page, PageSize, file.mid(int(input.TakeByte()) % pages * PageSize, PageSize));
            break;
        case 5: // truncated
            file.truncate(page + int(input.TakeNumber(2)) % PageSize);
            break;
        case 6: // a repeated byte
            for (int at = page + int(input.TakeNumber(2)) % PageSize, end = at + input.TakeByte(); at < end; ++at) {
                if (at < file.size())
                    file[at] = char(what);
            }
            break;
        case 7: // longer than its header says
            if (pages < MostPages)
                file.append(file.mid(page, PageSize));
            break;
        }
    }
    return file;
}

void ReadEverything(std::shared_ptr<SqliteDatabaseFactory> const& factory)
{
    auto const folders = std::make_shared<FolderConfigManager>(factory, nullptr);
    FileConfigManager files(factory, nullptr, folders);
    ServerConfigManager servers(factory);
    AuthenticationConfigManager accounts(factory);
    ProductConfigManager products(factory);
    ScheduleEntryManager schedules(factory);
    servers.GetAll();
    servers.GetServerConfigById(1);
    servers.GetServerConfigByServers(QString(), QString());
    servers.GetServerConfigByFileId(1);
    accounts.GetAll();
    accounts.GetDistinctAuthenticationConfigurations();
    accounts.GetAuthenticationConfigurationByDomainAndUser(QStringLiteral(""), QStringLiteral("user"));
    products.GetAll();
    products.GetProductConfigurationByServerIdAndConsumerKey(0, QStringLiteral("key"));
    schedules.GetDefaultScheduleEntry();
    schedules.GetScheduleEntryById(1);
    folders->GetAll();
    folders->GetAllRootFolders();
    folders->GetFolderConfigurationByClientPath(QStringLiteral("/r"));
    folders->GetFolderConfigurationByParentId(1);
    folders->GetFolderConfigurationsByRootId(1);
    folders->GetFolderConfigurationsByAuthenticationId(-1);
    folders->GetFolderConfigurationByServerId(QStringLiteral("id"));
    folders->GetFolderConfigurationsOfNonExistingRootFolders();
    folders->IsAnyFolderConfigOutOfSync();
    folders->GetRootFolderConfigurationCount();
    for (int type = 0; type < 3; ++type) {
        files.GetAll(FileConfigurationType(type));
        files.GetFileConfigurationsByRootFolderId(1, FileConfigurationType(type));
    }
    files.GetFileConfigurationByClientPath(QStringLiteral("/r/3"));
    files.GetFileConfigurationByServerId(QStringLiteral("id"));
    files.GetFileConfigurationsByFolderId(1, sync::interf::FileConfigOrderByNameDesc);
    files.GetFileConfigurationsByFolderIdAndSyncStatus(1, FileSyncStatusNotSynced);
    files.GetGeneratedFileConfigurationsByParentFileId(3);
    files.GetFileConfigurationsOfNonExistingRootFolders();
}

void WriteEverywhere(std::shared_ptr<SqliteDatabaseFactory> const& factory)
{
    auto const folders = std::make_shared<FolderConfigManager>(factory, nullptr);
    FileConfigManager files(factory, nullptr, folders);
    ServerConfiguration server;
    static_cast<void>(ServerConfigManager(factory).Add(server));
    static_cast<void>(
        AuthenticationConfigManager(factory).UpdatePassword(QString(), QStringLiteral("user"), QString()));
    static_cast<void>(ProductConfigManager(factory).Remove(1));
    static_cast<void>(ScheduleEntryManager(factory).Update(ScheduleEntryManager(factory).GetScheduleEntryById(1)));
    FolderConfiguration root;
    root.setParentId(0);
    root.setClientPath(QStringLiteral("/new"));
    static_cast<void>(folders->Add(root));
    FileConfiguration file;
    file.clientPath = QStringLiteral("/new/file");
    static_cast<void>(files.Add(file));
    static_cast<void>(files.RemoveFileConfigurationAndLinkedConfigurations(1));
    static_cast<void>(files.UpdateSyncStatusFromSyncingToNotSynced(1));
    static_cast<void>(folders->CleanRootFolder(1));
    static_cast<void>(files.transaction());
    static_cast<void>(files.RemoveByRootFolderId(1));
    static_cast<void>(files.commit());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static QByteArray const goodStores[] = {GoodStore(JournalMode::WriteAheadLog), GoodStore(JournalMode::Rollback)};
    static bool const silent = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("tandry.*=false")); // there are many errors
        return true;
    }();
    Require(silent, "the log is off");

    FuzzInput input(data, size);
    std::uint8_t const choice = input.TakeByte();
    bool const isRaw = (choice & 0x0c) == 0x0c;
    bool const isReadOnly = (choice & 0x02) != 0;
    QByteArray const& good = goodStores[choice & 0x01];

    QTemporaryDir folder;
    QString const path = folder.filePath(QStringLiteral("store.db"));
    QString const log = QStringLiteral("store.db-wal");
    QString const journal = QStringLiteral("store.db-journal");
    if (isRaw) {
        Write(path, input.TakeRest());
    }
    else {
        Write(path, Damaged(good, input));
        if ((choice & 0x0c) == 0x08) // a log or a journal that another program has left
            Write(folder.filePath((choice & 0x01) == 0 ? log : journal), Damaged(good, input));
    }
    QMap<QString, QByteArray> const before = FilesIn(QDir(folder.path()));
    OpenOptions options;
    options.mode = isReadOnly ? OpenMode::ReadOnly : OpenMode::OpenExisting;
    options.busyTimeoutMsec = 0;
    QString error;
    bool opened = false;
    if (auto const factory = SqliteDatabaseFactory::Open(path, &error, options)) {
        opened = true;
        ReadEverything(factory);
        if ((choice & 0x10) != 0)
            WriteEverywhere(factory);
        factory->ClearError();
        ReadEverything(factory);
    }
    Require(opened == error.isEmpty(), "there is an error exactly when a file is refused");
    QMap<QString, QByteArray> after = FilesIn(QDir(folder.path()));
    if (opened && !isReadOnly)
        return 0;
    if (!isReadOnly && before.contains(journal))
        after[journal] = before[journal]; // SQLite rolls a journal back or discards it before it reads the file
    if (!isReadOnly && before.contains(log))
        after.remove(QStringLiteral("store.db-shm")); // SQLite creates an index for a log
    if (!isReadOnly && after.size() > before.size() && after.contains(QStringLiteral("store.db.version-0")))
        return 0; // an upgrade of several steps that failed at a later one: the copy is the store as it was
    for (QString const& name : before.keys() + after.keys()) {
        if (after.value(name) == before.value(name) && after.contains(name) == before.contains(name))
            continue;
        std::fprintf(stderr,
                     "%s: %d bytes before, %d after; %s\n",
                     qPrintable(name),
                     before.contains(name) ? before[name].size() : -1,
                     after.contains(name) ? after[name].size() : -1,
                     qPrintable(error));
        Require(false, "a file that was refused or only read is unchanged");
    }
    return 0;
}
