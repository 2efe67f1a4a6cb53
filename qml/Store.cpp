#include "qml/Store.h"

#include "config/AuthenticationConfiguration.h"
#include "config/Managers.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"
#include "database/SqliteDatabaseFactory.h"
#include "models/StoreWatcher.h"
#include "qml/Records.h"

#include <QUrl>

namespace sync::qml {

using sync::config::Managers;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::models::StoreWatcher;

namespace {

template <class Record>
int IdOf(Record const& record)
{
    return record.getId();
}

int IdOf(sync::config::FileConfiguration const& file)
{
    return file.id;
}

} // namespace

Store::Store(QObject* parent)
    : QObject(parent)
{}

Store::~Store() = default;

void Store::setPath(QString const& path)
{
    if (path == _path)
        return;
    _path = path;
    Q_EMIT pathChanged();
    OpenIfComplete();
}

void Store::setReadOnly(bool isReadOnly)
{
    if (isReadOnly == _isReadOnly)
        return;
    _isReadOnly = isReadOnly;
    Q_EMIT readOnlyChanged();
    OpenIfComplete();
}

void Store::componentComplete()
{
    _isComplete = true;
    OpenIfComplete();
}

void Store::OpenIfComplete()
{
    if (_isComplete && (isOpen() || !_path.isEmpty()))
        open();
}

bool Store::open()
{
    _watcher.reset();
    _factory.reset();
    QString error;
    if (!_path.isEmpty()) {
        QUrl const url(_path); // what a dialog gives
        OpenOptions options;
        options.mode = _isReadOnly ? OpenMode::ReadOnly : OpenMode::OpenExisting;
        _factory = SqliteDatabaseFactory::Open(url.isLocalFile() ? url.toLocalFile() : _path, &error, options);
    }
    if (_factory != nullptr) {
        _watcher = std::make_unique<StoreWatcher>(_factory);
        connect(_watcher.get(), &StoreWatcher::Changed, this, &Store::changed);
        connect(_watcher.get(), &StoreWatcher::Stopped, this, [this](StoreError const& reason) {
            Q_EMIT stopped(reason.text);
        });
    }
    SetError(error);
    Q_EMIT opened();
    return _factory != nullptr;
}

template <class Gadget, class LookUp>
QVariant Store::Find(LookUp const& lookUp)
{
    if (_factory == nullptr)
        return {};
    _factory->ClearError();
    auto const record = lookUp(Managers(_factory));
    std::optional<StoreError> const failure = _factory->LastError();
    SetError(failure ? failure->text : QString());
    return IdOf(record) < 0 ? QVariant() : QVariant::fromValue(ToGadget<Gadget>(record));
}

QVariant Store::folder(int id)
{
    return Find<Folder>([id](Managers const& managers) { return managers.folders->GetFolderConfigurationById(id); });
}

QVariant Store::file(int id)
{
    return Find<File>([id](Managers const& managers) { return managers.files->GetFileConfigurationById(id); });
}

QVariant Store::server(int id)
{
    return Find<Server>([id](Managers const& managers) { return managers.servers->GetServerConfigById(id); });
}

QVariant Store::account(int id)
{
    return Find<Account>(
        [id](Managers const& managers) { return managers.accounts->GetAuthenticationConfigurationById(id); });
}

QVariant Store::product(int id)
{
    return Find<Product>([id](Managers const& managers) { return managers.products->GetProductConfigurationById(id); });
}

QVariant Store::schedule(int id)
{
    return Find<Schedule>([id](Managers const& managers) { return managers.schedules->GetScheduleEntryById(id); });
}

void Store::SetError(QString const& error)
{
    if (error == _error)
        return;
    _error = error;
    Q_EMIT errorChanged();
}

} // namespace sync::qml
