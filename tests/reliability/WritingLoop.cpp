#include "reliability/WritingLoop.h"

#include "config/Managers.h"
#include "database/SqliteDatabaseFactory.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <QFile>

#include <array>
#include <functional>
#include <random>
#include <set>

namespace tandry::test {

using namespace sync::config;
using sync::database::StoreFactory;

namespace {

QByteArray const Servers = QByteArrayLiteral("ServerConfiguration");
QByteArray const Accounts = QByteArrayLiteral("AuthenticationConfiguration");
QByteArray const Products = QByteArrayLiteral("ProductConfiguration");
QByteArray const Schedules = QByteArrayLiteral("Schedules");
QByteArray const Folders = QByteArrayLiteral("FolderConfiguration");
std::array<QByteArray, 3> const FileTables{QByteArrayLiteral("FileConfiguration"),
                                           QByteArrayLiteral("GeneratedFileConfiguration"),
                                           QByteArrayLiteral("BaseFileConfiguration")};

/// A table with the column that identifies a row and an expression for its state.
struct WatchedTable
{
    QByteArray table;
    QString name;
    QString state;
};

std::vector<WatchedTable> const& WatchedTables()
{
    static std::vector<WatchedTable> const tables{
        {Servers, "alias"_q, "davUrl"_q},
        {Accounts, "userName"_q, "domainId"_q},
        {Products, "name"_q, "consumerKey"_q},
        {Schedules, "folderConfigurationId"_q, "syncInterval"_q},
        {Folders, "clientPath"_q, "serverPath"_q},
        {FileTables[0], "clientPath"_q, "checkSum || ' ' || syncStatus"_q},
        {FileTables[1], "clientPath"_q, "checkSum || ' ' || syncStatus"_q},
        {FileTables[2], "clientPath"_q, "checkSum || ' ' || syncStatus"_q},
    };
    return tables;
}

// In the report, a write is a line that begins with "W" (atomic) or "S" (step by step) and has three fields for each
// row, separated by tabs, and a line "D" after it has been acknowledged. Names and states contain no line breaks or
// tabs.

void Report(std::FILE* report, PlannedWrite const& write)
{
    QByteArray text = write.atomic ? "W" : "S";
    for (RowChange const& change : write.changes)
        text += '\t' + change.row.first + '\t' + change.row.second + '\t' +
                (change.state ? '=' + *change.state : QByteArray("-"));
    std::fputs((text + '\n').constData(), report);
    std::fflush(report);
}

PlannedWrite Parse(QByteArray const& line)
{
    QList<QByteArray> const fields = line.split('\t');
    PlannedWrite write;
    write.atomic = fields.front() == "W";
    for (int field = 1; field + 2 < fields.size(); field += 3) {
        RowChange change{{fields[field], fields[field + 1]}, std::nullopt};
        if (fields[field + 2].startsWith('='))
            change.state = fields[field + 2].mid(1);
        write.changes.push_back(change);
    }
    return write;
}

void Apply(RowStates& rows, RowChange const& change)
{
    if (change.state)
        rows[change.row] = *change.state;
    else
        rows.erase(change.row);
}

std::optional<QByteArray> StateOf(RowStates const& rows, RowName const& row)
{
    auto const found = rows.find(row);
    return found == rows.end() ? std::nullopt : std::optional(found->second);
}

/// Returns a description of each row that differs.
std::vector<QByteArray> Differences(RowStates const& expected, RowStates const& found)
{
    auto const format = [](std::optional<QByteArray> const& state) {
        return state ? '"' + *state + '"' : QByteArrayLiteral("no row");
    };
    std::set<RowName> rows;
    for (RowStates const* states : {&expected, &found})
        for (auto const& row : *states)
            rows.insert(row.first);

    std::vector<QByteArray> differences;
    for (RowName const& row : rows) {
        std::optional<QByteArray> const wanted = StateOf(expected, row);
        std::optional<QByteArray> const is = StateOf(found, row);
        if (wanted != is)
            differences.push_back(row.first + ' ' + row.second + ": " + format(is) + " instead of " + format(wanted));
    }
    return differences;
}

/// Writes in steps; each step calls the operations of one family of managers.
class Writer
{
public:
    Writer(std::shared_ptr<StoreFactory> const& store, QString const& place, unsigned seed, std::FILE* report)
        : _store(store)
        , _directory(place)
        , _report(report)
        , _random(seed)
        , _managers(store)
    {
        QObject::connect(store.get(), &StoreFactory::CommitFailed, store.get(), [this] { _isLost = true; });
    }

    bool Step()
    {
        static constexpr std::array<bool (Writer::*)(), 8> Rounds{&Writer::WriteServer,
                                                                  &Writer::WriteAccount,
                                                                  &Writer::WriteProduct,
                                                                  &Writer::WriteSchedule,
                                                                  &Writer::WriteTree,
                                                                  &Writer::WriteRoot,
                                                                  &Writer::WriteLinks,
                                                                  &Writer::WriteClientTransaction};
        return (this->*Rounds[_random() % Rounds.size()])();
    }

private:
    bool Write(PlannedWrite const& write, std::function<bool()> const& call)
    {
        Report(_report, write);
        if (!call() || _isLost)
            return false;
        return std::fputs("D\n", _report) >= 0 && std::fflush(_report) == 0;
    }

    QString NextName() { return "n%1"_q.arg(++_names); }

    static RowChange Sets(QByteArray const& table, QString const& name, QString const& state)
    {
        return {{table, name.toUtf8()}, state.toUtf8()};
    }

    static RowChange Removes(QByteArray const& table, QString const& name)
    {
        return {{table, name.toUtf8()}, std::nullopt};
    }

    bool WriteServer()
    {
        ServerConfiguration server;
        QString const name = NextName();
        server.setAlias(name);
        server.setDavUrl("added"_q);
        bool done = Write({true, {Sets(Servers, name, "added"_q)}}, [&] { return _managers.servers->Add(server); });
        server.setDavUrl("updated"_q);
        done = done &&
               Write({true, {Sets(Servers, name, "updated"_q)}}, [&] { return _managers.servers->Update(server); });
        if (done && _random() % 2 == 0)
            done = Write({true, {Removes(Servers, name)}}, [&] { return _managers.servers->Remove(server.getId()); });
        return done;
    }

    bool WriteAccount()
    {
        AuthenticationConfiguration account;
        QString const name = NextName();
        account.setUserName(name);
        account.setDomain("domain"_q);
        account.setDomainId("added"_q);
        bool done = Write({true, {Sets(Accounts, name, "added"_q)}}, [&] { return _managers.accounts->Add(account); });
        account.setDomainId("updated"_q);
        done = done &&
               Write({true, {Sets(Accounts, name, "updated"_q)}}, [&] { return _managers.accounts->Update(account); });
        done = done &&
               Write({true, {}}, [&] { return _managers.accounts->UpdatePassword("domain"_q, name, QString()) == 1; });
        if (done && _random() % 2 == 0)
            done =
                Write({true, {Removes(Accounts, name)}}, [&] { return _managers.accounts->Remove(account.getId()); });
        return done;
    }

    bool WriteProduct()
    {
        ProductConfiguration product;
        QString const name = NextName();
        product.setName(name);
        product.setConsumerKey("added"_q);
        bool done = Write({true, {Sets(Products, name, "added"_q)}}, [&] { return _managers.products->Add(product); });
        product.setConsumerKey("updated"_q);
        done = done &&
               Write({true, {Sets(Products, name, "updated"_q)}}, [&] { return _managers.products->Update(product); });
        if (done && _random() % 2 == 0)
            done =
                Write({true, {Removes(Products, name)}}, [&] { return _managers.products->Remove(product.getId()); });
        return done;
    }

    bool WriteSchedule()
    {
        ScheduleEntry schedule = _managers.schedules->GetDefaultScheduleEntry();
        if (schedule.getId() == -1)
            return true; // an earlier step has removed it
        if (_random() % 20 == 0)
            return Write({true, {Removes(Schedules, "0"_q)}},
                         [&] { return _managers.schedules->Remove(schedule.getId()); });
        schedule.setSyncInterval(schedule.getSyncInterval() + 1);
        return Write({true, {Sets(Schedules, "0"_q, QString::number(schedule.getSyncInterval()))}},
                     [&] { return _managers.schedules->Update(schedule); });
    }

    bool AddRoot(FolderConfiguration& root, QString const& path)
    {
        root.setParentId(0);
        root.setClientPath(path);
        root.setServerPath(path);
        return Write({true, {Sets(Folders, path, path)}}, [&] { return _managers.folders->Add(root); });
    }

    bool AddFile(FolderConfiguration const& folder, FileConfigurationType type, FileConfiguration& file)
    {
        file.clientPath = "/f/"_q + NextName();
        file.checkSum = "added"_q;
        file.fileType = type;
        file.folderConfigurationId = folder.getId();
        file.rootFolderId = folder.getRootId();
        return Write({true, {Sets(FileTables[type], file.clientPath, "added 2"_q)}},
                     [&] { return _managers.files->Add(file); });
    }

    /// Adds a tree with files of every kind, level by level, and removes it.
    bool WriteTree()
    {
        FolderConfiguration root;
        if (!AddRoot(root, "/"_q + NextName()))
            return false;
        QString const upper = root.getClientPath() + "/a"_q;
        QString const lower = upper + "/b"_q;
        FolderConfiguration folder;
        bool done = Write({false, {Sets(Folders, upper, upper), Sets(Folders, lower, lower)}}, [&] {
            folder = _managers.folders->AddFolderAndParent(lower, root);
            return folder.getId() != -1;
        });
        folder.setServerPath("updated"_q);
        done = done &&
               Write({true, {Sets(Folders, lower, "updated"_q)}}, [&] { return _managers.folders->Update(folder); });

        FileConfiguration file;
        FileConfiguration generated;
        FileConfiguration base;
        generated.parentFileId = 0;
        done = done && AddFile(folder, FileConfigurationTypeFile, file) &&
               AddFile(folder, FileConfigurationTypeBase, base);
        generated.parentFileId = file.id;
        done = done && AddFile(folder, FileConfigurationTypeGenerated, generated);
        file.checkSum = "updated"_q;
        file.setSyncStatus(FileSyncStatusSyncing);
        done = done && Write({true, {Sets(FileTables[0], file.clientPath, "updated 1"_q)}},
                             [&] { return _managers.files->Update(file); });
        done = done && Write({true, {Sets(FileTables[0], file.clientPath, "updated 2"_q)}},
                             [&] { return _managers.files->UpdateSyncStatusFromSyncingToNotSynced(folder.getId()); });
        if (_random() % 3 == 0)
            return done;
        if (_random() % 2 == 0) {
            done =
                done &&
                Write({false, {Removes(FileTables[1], generated.clientPath), Removes(FileTables[0], file.clientPath)}},
                      [&] { return _managers.files->RemoveFileConfigurationAndLinkedConfigurations(file.id); });
        }
        else {
            done = done && Write({true, {Removes(FileTables[1], generated.clientPath)}},
                                 [&] { return _managers.files->RemoveGeneratedFileConfiguration(generated.id); });
            done = done && Write({true, {Removes(FileTables[0], file.clientPath)}},
                                 [&] { return _managers.files->RemoveByFolderConfigurationId(folder.getId()); });
        }
        return done && Write({false, {Removes(Folders, lower), Removes(Folders, upper)}},
                             [&] { return _managers.folders->RemoveFolderAndChildren(folder.getParentId()); });
    }

    /// Adds a root with files and removes it in one call.
    bool WriteRoot()
    {
        FolderConfiguration root;
        FileConfiguration first;
        FileConfiguration second;
        FileConfiguration generated;
        bool done = AddRoot(root, "/"_q + NextName()) && AddFile(root, FileConfigurationTypeFile, first) &&
                    AddFile(root, FileConfigurationTypeFile, second) &&
                    AddFile(root, FileConfigurationTypeGenerated, generated);
        FileConfiguration part;
        part.parentFileId = generated.id;
        done = done && AddFile(root, FileConfigurationTypeGenerated, part);
        done = done && Write({true, {Removes(FileTables[1], part.clientPath)}}, [&] {
                   _managers.files->RemoveGeneratedFileConfigurationsByRootFolderIdAndSyncStatus(
                       root.getId(), FileSyncStatusNotSynced);
                   return !_store->LastError(); // it always returns false
               });
        done = done && Write({true, {Removes(FileTables[1], generated.clientPath)}}, [&] {
                   return _managers.files->RemoveGeneratedFileConfigurationsByRootFolderId(root.getId());
               });
        PlannedWrite cleaning{true,
                              {Removes(FileTables[0], first.clientPath), Removes(FileTables[0], second.clientPath)}};
        if (_random() % 2 == 0) {
            done = done && Write(cleaning, [&] { return _managers.files->RemoveByRootFolderId(root.getId()); });
            return done && Write({true, {Removes(Folders, root.getClientPath())}},
                                 [&] { return _managers.folders->Remove(root.getId()); });
        }
        cleaning.changes.push_back(Removes(Folders, root.getClientPath()));
        return done && Write(cleaning, [&] { return _managers.folders->CleanRootFolder(root.getId()); });
    }

    /// Adds a file with a link to a file on disk, which is added first.
    bool WriteLinks()
    {
        if (_linkedRoot.getId() == -1 && !AddRoot(_linkedRoot, _directory))
            return false;
        FileLink link;
        link.path = _directory + "/linked"_q + NextName();
        QFile linked(link.path);
        if (!linked.open(QIODevice::WriteOnly))
            return false;
        FileConfiguration file;
        file.clientPath = _directory + "/linking"_q + NextName();
        file.checkSum = "added"_q;
        file.folderConfigurationId = file.rootFolderId = _linkedRoot.getId();
        file.fileLinks.append(link);
        return Write({false, {Sets(FileTables[0], link.path, ""_q), Sets(FileTables[0], file.clientPath, "added 2"_q)}},
                     [&] { return _managers.files->Add(file); });
    }

    /// Adds three files in one client transaction, which is committed or rolled back.
    bool WriteClientTransaction()
    {
        std::array<FileConfiguration, 3> files;
        PlannedWrite write;
        for (FileConfiguration& file : files) {
            file.clientPath = "/b/"_q + NextName();
            file.checkSum = "added"_q;
            write.changes.push_back(Sets(FileTables[0], file.clientPath, "added 2"_q));
        }
        bool const keep = _random() % 3 != 0;
        if (!keep)
            write.changes.clear();
        return Write(write, [&] {
            bool done = _managers.files->transaction();
            for (FileConfiguration& file : files)
                done = done && _managers.files->Add(file);
            return done && (keep ? _managers.files->commit() : _managers.files->rollback());
        });
    }

    std::shared_ptr<StoreFactory> const _store;
    /// The directory of the linked files.
    QString const _directory;
    std::FILE* _report;
    std::mt19937 _random;
    FolderConfiguration _linkedRoot;
    bool _isLost = false;
    int _names = 0;
    Managers _managers;
};

} // namespace

int SoakNumber(char const* variable, int otherwise)
{
    bool isNumber = false;
    int const number = qEnvironmentVariableIntValue(variable, &isNumber);
    return isNumber ? number : otherwise;
}

int Rounds(int otherwise)
{
    return SoakNumber("TANDRY_SOAK_ROUNDS", otherwise);
}

int WriteUntilFailure(std::shared_ptr<StoreFactory> const& store,
                      QString const& place,
                      unsigned seed,
                      std::FILE* report)
{
    if (store == nullptr)
        return 1;
    Writer writer(store, place, seed, report);
    while (writer.Step()) {
    }
    return 1;
}

bool WriterReport::ReadLine()
{
    QByteArray line;
    for (int character = std::fgetc(_report); character != '\n'; character = std::fgetc(_report)) {
        if (character == EOF)
            return false; // ignores an incomplete line
        line += static_cast<char>(character);
    }
    if (line != "D") {
        _pending = Parse(line);
        return true;
    }
    for (RowChange const& change : _pending->changes)
        Apply(_rows, change);
    _pending.reset();
    ++_acknowledged;
    return true;
}

bool WriterReport::ReadAcknowledgements(int count)
{
    int const goal = _acknowledged + count;
    while (_acknowledged < goal) {
        if (!ReadLine())
            return false;
    }
    return true;
}

void WriterReport::ReadRest()
{
    while (ReadLine()) {
    }
}

std::vector<QByteArray> WriterReport::Lost(RowStates const& found) const
{
    RowStates expected = _rows;
    std::vector<QByteArray> const without = Differences(expected, found);
    if (!_pending || without.empty())
        return without;
    for (RowChange const& change : _pending->changes) {
        if (_pending->atomic || StateOf(found, change.row) == change.state)
            Apply(expected, change);
    }
    return Differences(expected, found);
}

RowStates ReadRows(QString const& path)
{
    RowStates rows;
    RawStore raw(path);
    for (WatchedTable const& watched : WatchedTables()) {
        QString const statement =
            "SELECT %1, %2 FROM %3"_q.arg(watched.name, watched.state, QString::fromLatin1(watched.table));
        for (auto const& row : raw.Rows(statement))
            rows[{watched.table, row[0].toString().toUtf8()}] = row[1].toString().toUtf8();
    }
    return rows;
}

} // namespace tandry::test
