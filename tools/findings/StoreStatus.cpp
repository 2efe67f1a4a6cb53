#include "tools/findings/StoreStatus.h"

#include "config/FileConfiguration.h"
#include "config/FolderConfigManager.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/StoreStatements.h"

#include <algorithm>

namespace tandry::findings {

using sync::config::FolderConfiguration;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

namespace {

constexpr int FewPaths = 5;

/// `max` of a column returns the stored number instead of a date-time.
QDateTime Latest(QDateTime const& time, QVariant const& msec)
{
    if (msec.isNull())
        return time;
    QDateTime const other = QDateTime::fromMSecsSinceEpoch(msec.toLongLong(), Qt::UTC);
    return time.isValid() && time > other ? time : other;
}

class StatusReader
{
public:
    explicit StatusReader(std::shared_ptr<IDatabaseFactory> const& store)
        : _statements(store)
    {
        sync::config::FolderConfigManager folders(store, nullptr);
        for (FolderConfiguration const& root : folders.GetAllRootFolders()) {
            RootStatus status;
            status.root = root;
            status.onDisk = DiskEntry::At(root.getClientPath()).kind;
            _status.roots.push_back(status);
        }
    }

    StoreStatus Read()
    {
        _ReadFolders();
        _ReadFiles();
        for (RootStatus& root : _status.roots)
            _ReadFirstOutOfSync(root);
        return std::move(_status);
    }

private:
    RootStatus* _Find(int rootId)
    {
        auto const root = std::find_if(_status.roots.begin(), _status.roots.end(), [&](RootStatus const& candidate) {
            return candidate.root.getId() == rootId;
        });
        return root == _status.roots.end() ? nullptr : &*root;
    }

    void _ReadFolders()
    {
        _statements.Read(
            QStringLiteral("SELECT rootId, syncStatus, count(*), max(lastOperationTime), max(lastSyncTime) "
                           "FROM FolderConfiguration GROUP BY rootId, syncStatus"),
            {},
            [&](IQSqlQueryWrapper& row) {
                qint64 const count = row.value(2).toLongLong();
                RootStatus* const root = _Find(row.value(0).toInt());
                if (root == nullptr) {
                    _status.foldersWithoutRoot += count;
                    return;
                }
                int const status = row.value(1).toInt();
                root->folders += count;
                root->foldersByStatus[status] += count;
                if (status == sync::config::FolderStatusOutOfSync)
                    root->outOfSync += count;
                root->lastOperation = Latest(root->lastOperation, row.value(3));
                root->lastSync = Latest(root->lastSync, row.value(4));
            });
    }

    void _ReadFiles()
    {
        _statements.Read(QStringLiteral("SELECT rootFolderId, syncStatus, count(*), sum(size), max(lastOperationTime) "
                                        "FROM FileConfiguration GROUP BY rootFolderId, syncStatus"),
                         {},
                         [&](IQSqlQueryWrapper& row) {
                             qint64 const count = row.value(2).toLongLong();
                             RootStatus* const root = _Find(row.value(0).toInt());
                             if (root == nullptr) {
                                 _status.filesWithoutRoot += count;
                                 return;
                             }
                             int const status = row.value(1).toInt();
                             root->files += count;
                             root->bytes += row.value(3).toLongLong();
                             root->filesByStatus[status] += count;
                             if (status == sync::config::FileSyncStatusNotSynced)
                                 root->outOfSync += count;
                             root->lastOperation = Latest(root->lastOperation, row.value(4));
                         });
    }

    void _ReadFirstOutOfSync(RootStatus& root)
    {
        if (root.outOfSync == 0)
            return;
        for (auto const& [table, column, status] :
             {std::tuple("FolderConfiguration", "rootId", int(sync::config::FolderStatusOutOfSync)),
              std::tuple("FileConfiguration", "rootFolderId", int(sync::config::FileSyncStatusNotSynced))}) {
            int const wanted = FewPaths - root.firstOutOfSync.size();
            _statements.Read(
                QStringLiteral("SELECT clientPath FROM %1 WHERE %2 = :root AND syncStatus = :status LIMIT :wanted")
                    .arg(QLatin1String(table), QLatin1String(column)),
                {{":root", root.root.getId()}, {":status", status}, {":wanted", wanted}},
                [&](IQSqlQueryWrapper& row) { root.firstOutOfSync.append(row.value(0).toString()); });
        }
    }

    StoreStatements _statements;
    StoreStatus _status;
};

} // namespace

StoreStatus ReadStatus(std::shared_ptr<IDatabaseFactory> const& store)
{
    return StatusReader(store).Read();
}

} // namespace tandry::findings
