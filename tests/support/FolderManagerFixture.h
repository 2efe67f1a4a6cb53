#pragma once

#include "config/FolderConfigManager.h"
#include "database/TransactionalScope.h"
#include "support/FolderRecords.h"
#include "support/FolderTexts.h"
#include "support/QtPrinters.h"
#include "support/RecordingRefresh.h"
#include "support/RecordingStore.h"

#include <gmock/gmock.h>

#include <QString>
#include <QVector>

#include <memory>
#include <utility>
#include <vector>

namespace tandry::test {

/// A folder manager on a recording store.
class FolderManagerTest : public testing::Test
{
protected:
    using Folders = QVector<sync::config::FolderConfiguration>;

    ~FolderManagerTest() override
    {
        EXPECT_EQ(sync::database::TransactionalScope::Depth(), 0) << "an operation left a scope open";
    }

    /// Makes the next SELECT return one row for each id.
    void PlayFolders(std::vector<std::pair<int, sync::config::FolderConfiguration>> const& folders)
    {
        std::vector<Row> rows;
        rows.reserve(folders.size());
        for (auto const& [id, folder] : folders)
            rows.push_back(ToRow(id, folder));
        store->PlayRows(std::move(rows));
    }

    /// Makes the next SELECT find nothing.
    void PlayNothing() { store->PlayRows({}); }

    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    std::shared_ptr<RecordingRefresh> refresh = std::make_shared<RecordingRefresh>();
    sync::config::FolderConfigManager manager{store, refresh};
};

/// Records the events of a folder manager in order, each with the scope depth: calls through the virtual interface
/// ("Remove 7 @0"), statements ("exec DeleteById @1", with "fails" if they do) and refreshes of the shell ("shell /a
/// @1").
class FolderEvents
{
public:
    explicit FolderEvents(RecordingStore const& store)
        : _store(store)
    {}

    void Add(QString const& event)
    {
        _AddExecutions();
        _events.push_back(event + " @%1"_q.arg(sync::database::TransactionalScope::Depth()));
    }

    /// Returns the events since the last call.
    std::vector<QString> Take()
    {
        _AddExecutions();
        return std::exchange(_events, {});
    }

private:
    void _AddExecutions()
    {
        for (; _executionsSeen < _store.Executions().size(); ++_executionsSeen) {
            Execution const& execution = _store.Executions()[_executionsSeen];
            _events.push_back("exec %1 @%2"_q.arg(folder_texts::NameOf(execution.statement)).arg(execution.scopeDepth) +
                              (execution.succeeded ? QString() : " fails"_q));
        }
    }

    RecordingStore const& _store;
    std::size_t _executionsSeen = 0;
    std::vector<QString> _events;
};

/// A refresh object that records its calls as events.
class LoggedRefresh : public sync::interf::IRefreshNativeFileViewer
{
public:
    explicit LoggedRefresh(FolderEvents& events)
        : _events(events)
    {}

    void Refresh(QString path) override { _events.Add("shell "_q + (path.isNull() ? "null"_q : path)); }

private:
    FolderEvents& _events;
};

/// A folder manager that records each call as an event before it runs the operation.
class LoggedFolderManager : public sync::config::FolderConfigManager
{
public:
    using Base = sync::config::FolderConfigManager;
    using Record = sync::config::FolderConfiguration;

    LoggedFolderManager(std::shared_ptr<RecordingStore> const& store, FolderEvents& events)
        : FolderConfigManager(store, std::make_shared<LoggedRefresh>(events))
        , _events(events)
    {}

    Record GetFolderConfigurationById(int id) override
    {
        return _Log("GetFolderConfigurationById", id), Base::GetFolderConfigurationById(id);
    }
    Record GetFolderConfigurationByServerId(QString id) override
    {
        return _Log("GetFolderConfigurationByServerId", id), Base::GetFolderConfigurationByServerId(id);
    }
    Record GetFolderConfigurationByClientPath(QString path) override
    {
        return _Log("GetFolderConfigurationByClientPath", path), Base::GetFolderConfigurationByClientPath(path);
    }
    Record GetFolderConfigurationByClientPathAndAuthenticationId(QString path, int account) override
    {
        return _Log("GetFolderConfigurationByClientPathAndAuthenticationId", path),
               Base::GetFolderConfigurationByClientPathAndAuthenticationId(path, account);
    }
    QVector<Record> GetFolderConfigurationsByAuthenticationId(int account) override
    {
        return _Log("GetFolderConfigurationsByAuthenticationId", account),
               Base::GetFolderConfigurationsByAuthenticationId(account);
    }
    QVector<Record> GetFolderConfigurationsByRootId(int root) override
    {
        return _Log("GetFolderConfigurationsByRootId", root), Base::GetFolderConfigurationsByRootId(root);
    }
    QVector<Record> GetFolderConfigurationsOfNonExistingRootFolders() override
    {
        return _Log("GetFolderConfigurationsOfNonExistingRootFolders"),
               Base::GetFolderConfigurationsOfNonExistingRootFolders();
    }
    QVector<Record> GetAll() override { return _Log("GetAll"), Base::GetAll(); }
    bool Update(Record folder) override { return _Log("Update", folder.getClientPath()), Base::Update(folder); }
    bool Add(Record& folder) override { return _Log("Add", folder.getClientPath()), Base::Add(folder); }
    Record AddFolderAndParent(QString const& path, Record const& root) override
    {
        return _Log("AddFolderAndParent", path), Base::AddFolderAndParent(path, root);
    }
    bool Remove(int id) override { return _Log("Remove", id), Base::Remove(id); }
    bool RemoveFolderAndChildren(int id) override
    {
        return _Log("RemoveFolderAndChildren", id), Base::RemoveFolderAndChildren(id);
    }
    bool IsInExistingClientFolder(QString const& path, int account, bool honourFolderOption) override
    {
        return _Log("IsInExistingClientFolder", path),
               Base::IsInExistingClientFolder(path, account, honourFolderOption);
    }
    bool AncestorOrDescendantOfServerFolderExists(QString const& path, int account, QString& matching) override
    {
        return _Log("AncestorOrDescendantOfServerFolderExists", path),
               Base::AncestorOrDescendantOfServerFolderExists(path, account, matching);
    }
    QVector<Record> GetAllRootFolders() override { return _Log("GetAllRootFolders"), Base::GetAllRootFolders(); }
    QVector<Record> GetFolderConfigurationByParentId(int id) override
    {
        return _Log("GetFolderConfigurationByParentId", id), Base::GetFolderConfigurationByParentId(id);
    }
    bool IsInExistingAuthentication(int account) override
    {
        return _Log("IsInExistingAuthentication", account), Base::IsInExistingAuthentication(account);
    }
    bool IsAnyFolderConfigOutOfSync() override
    {
        return _Log("IsAnyFolderConfigOutOfSync"), Base::IsAnyFolderConfigOutOfSync();
    }
    int GetRootFolderConfigurationCount() override
    {
        return _Log("GetRootFolderConfigurationCount"), Base::GetRootFolderConfigurationCount();
    }
    void ClearCaches() override { _Log("ClearCaches"), Base::ClearCaches(); }
    bool CleanRootFolder(int id) override { return _Log("CleanRootFolder", id), Base::CleanRootFolder(id); }
    void RefreshNativeFileViewer(QString& path) override
    {
        _Log("RefreshNativeFileViewer", path.isNull() ? "null"_q : path);
        Base::RefreshNativeFileViewer(path);
    }
    void RefreshNativeFileViewer() override { _Log("RefreshNativeFileViewer"), Base::RefreshNativeFileViewer(); }

private:
    void _Log(char const* operation) { _events.Add(QString::fromUtf8(operation)); }
    void _Log(char const* operation, QString const& argument)
    {
        _events.Add(QString::fromUtf8(operation) + QLatin1Char(' ') + argument);
    }
    void _Log(char const* operation, int argument) { _Log(operation, QString::number(argument)); }

    FolderEvents& _events;
};

/// A folder manager on a recording store, with its events.
class FolderEventsTest : public FolderManagerTest
{
protected:
    FolderEvents events{*store};
    LoggedFolderManager logged{store, events};
};

} // namespace tandry::test
