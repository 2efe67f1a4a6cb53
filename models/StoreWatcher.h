#pragma once

#include "../database/StoreError.h"
#include "TandryModelsExport.h"

#include <QObject>
#include <QStringList>

#include <memory>

QT_BEGIN_NAMESPACE
class QSocketNotifier;
class QTimer;
QT_END_NAMESPACE

namespace sync::database {
class StoreChanges;
class StoreFactory;
} // namespace sync::database

namespace sync::models {

/// Tells a thread with an event loop when any thread or process has committed to a store.
///
/// The signal comes within 100 milliseconds of the commit. Commits that follow one another closely are told of
/// together. Nothing is polled: while nobody writes, the object does not run at all.
///
/// Belongs to the thread that it lives in, and may be moved to another one. Copies nothing: a slot reads what it needs,
/// and then finds the rows of the commit.
class TANDRY_MODELS_EXPORT StoreWatcher : public QObject
{
    Q_OBJECT

public:
    /// Begins to watch: commits from now on are told of. Keeps a share of the factory, which must not be null.
    explicit StoreWatcher(std::shared_ptr<sync::database::StoreFactory> factory, QObject* parent = nullptr);
    ~StoreWatcher() override;

    /// Returns whether commits are told of. False if the store cannot be watched, for which the factory's `LastError`
    /// has the reason, if it is one that never tells of changes, and after `Stopped`.
    [[nodiscard]] bool isWatching() const;

Q_SIGNALS:
    /// Emitted after commits, with the names of the tables that they changed, in the order of the schema. The names are
    /// exact if only this process has written, and those of all tables otherwise.
    void Changed(QStringList const& tables);

    /// Emitted once, if the store cannot be watched any longer: its file was removed, replaced or renamed, or was cut.
    /// The error says which, as the factory's next write would. Open the store again, and watch the new factory.
    void Stopped(sync::database::StoreError const& error);

private:
    void Look();

    std::shared_ptr<sync::database::StoreFactory> const _factory;
    std::unique_ptr<sync::database::StoreChanges> _changes;
    QTimer* const _pause;
    /// Null if the store cannot be watched.
    QSocketNotifier* _notice = nullptr;
};

} // namespace sync::models
