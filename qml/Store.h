#pragma once

#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace sync::database {
class StoreFactory;
}

namespace sync::models {
class StoreWatcher;
}

namespace sync::qml {

/// A store in a file, for the models and look-ups of a QML document.
///
/// It is opened once the document is complete, and anew whenever the path changes; an empty path closes it. A store
/// that does not exist is not created. `docs/qml.md` has the properties, signals and functions.
class Store : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
    Q_PROPERTY(bool readOnly READ isReadOnly WRITE setReadOnly NOTIFY readOnlyChanged)
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY opened)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    explicit Store(QObject* parent = nullptr);
    ~Store() override;

    QString path() const { return _path; }
    void setPath(QString const& path);
    bool isReadOnly() const { return _isReadOnly; }
    void setReadOnly(bool isReadOnly);
    bool isOpen() const { return _factory != nullptr; }
    /// Why the store is not open, or why the last look-up failed; empty if there is no reason.
    QString error() const { return _error; }

    /// Closes the store, opens it again and returns whether it is open.
    Q_INVOKABLE bool open();

    /// Return the record with this id; undefined if there is none, and if the store fails, which `error` tells.
    Q_INVOKABLE QVariant folder(int id);
    Q_INVOKABLE QVariant file(int id);
    Q_INVOKABLE QVariant server(int id);
    Q_INVOKABLE QVariant account(int id);
    Q_INVOKABLE QVariant product(int id);
    Q_INVOKABLE QVariant schedule(int id);

    /// Null if the store is not open.
    std::shared_ptr<sync::database::StoreFactory> const& factory() const { return _factory; }
    /// REQUIRES: the store is open.
    sync::models::StoreWatcher const& watcher() const { return *_watcher; }

    void classBegin() override {}
    void componentComplete() override;

Q_SIGNALS:
    void pathChanged();
    void readOnlyChanged();
    void errorChanged();
    /// The store was opened, or could not be.
    void opened();
    /// The watcher's signal `Changed`.
    void changed(QStringList const& tables);
    /// The watcher's signal `Stopped`, with the text of the error.
    void stopped(QString const& reason);

private:
    void OpenIfComplete();
    void SetError(QString const& error);
    /// Looks a record up with one of the managers.
    template <class Gadget, class LookUp>
    QVariant Find(LookUp const& lookUp);

    QString _path;
    QString _error;
    bool _isReadOnly = false;
    bool _isComplete = false;
    std::shared_ptr<sync::database::StoreFactory> _factory;
    std::unique_ptr<sync::models::StoreWatcher> _watcher;
};

} // namespace sync::qml
