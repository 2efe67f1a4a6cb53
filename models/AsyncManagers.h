#pragma once

#include "../config/Managers.h"
#include "../database/StoreError.h"
#include "Answer.h"
#include "AnswerPromise.h"
#include "AsyncFiles.h"
#include "AsyncFolders.h"
#include "TandryModelsExport.h"

#include <QtGlobal>

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace sync::database {
class StoreFactory;
}

namespace sync::interf {
class IRefreshNativeFileViewer;
}

namespace sync::models {

/// Runs operations of a store's managers on a thread of its own, so that a window never waits for the store.
///
///     sync::models::AsyncManagers managers(factory);
///     auto* const watcher = new QFutureWatcher<Answer<QVector<FolderConfiguration>>>(this);
///     connect(watcher, &QFutureWatcherBase::finished, this, [=] { Show(watcher->result()); });
///     watcher->setFuture(managers.folders.GetAllRootFolders());
///
/// Operations run one after the other, in the order in which they were asked for; those of one thread keep the order of
/// that thread. The thread has a connection of its own to the store, and managers of its own, whose cached listings
/// belong to it: another manager's `Add` or `ClearCaches` does not clear them, `folders.ClearCaches` does.
///
/// Any thread may call any operation, and none of them waits. Waiting for a future on the managers' own thread, as in a
/// function that runs there, never ends. `CommitFailed` and the shell's refresh come on that thread, and so do, with
/// Qt 6, continuations without a context.
///
/// A client may cancel a future: its operation is left out if it has not begun, and has no answer either way. Do not
/// take the result of a future that you canceled.
class TANDRY_MODELS_EXPORT AsyncManagers
{
public:
    /// What becomes of the operations that have not begun.
    enum class Pending
    {
        /// They run.
        Run,
        /// They do not run. Their futures are canceled, and have an answer with an error.
        Cancel,
    };

    /// Starts the thread; does not access the store. Keeps a share of each until the thread has ended. If the refresh
    /// object is null, the shell is never refreshed; the factory must not be null.
    explicit AsyncManagers(
        std::shared_ptr<sync::database::StoreFactory> factory,
        std::shared_ptr<sync::interf::IRefreshNativeFileViewer> const& refreshNativeFileViewer = nullptr);
    /// Closes the managers as `Close(Pending::Cancel)` does. On their own thread it does not wait, and the thread ends
    /// after the running operation.
    ~AsyncManagers();

    /// Ends the thread and its connection. Waits for the operation that is running, which may itself wait for a lock,
    /// and with `Pending::Run` for those behind it. On the managers' own thread it does not wait. Operations that are
    /// asked for later are treated as with `Pending::Cancel`. May be called again, also to cancel what another thread
    /// waits for.
    ///
    /// To close without waiting, wait first for the future of a last operation, by its watcher.
    void Close(Pending pending);

    /// Runs `function(managers)` on the thread, with a `sync::config::Managers const&`, and gives its result, which
    /// must have a default value. The function may run any number of operations, in a scope if it likes. It must end
    /// what it begins, and must not keep the managers. If an exception leaves it, a client transaction that it left
    /// open is rolled back. It is destroyed on the thread, or where the managers are closed.
    template <class Function>
    auto Run(Function function)
    {
        using Value = std::decay_t<std::invoke_result_t<Function&, sync::config::Managers const&>>;
        auto operation = std::make_unique<OperationOf<Value, Function>>(std::move(function));
        FutureAnswer<Value> future = operation->future();
        Append(std::move(operation));
        return future;
    }

    /// Runs the function in the same way inside one client transaction. The transaction is committed if the function
    /// returns true, and rolled back if it returns false or an exception leaves it. The value is true if all of it is
    /// durable; otherwise nothing of it is, unless the error is of the kind `OutcomeUnknown`. The function does not run
    /// if the transaction cannot begin. It must not end the transaction.
    ///
    /// After a rollback, discard the records that were added in the function:
    /// `sync::interf::IQSqlDatabaseWrapper::rollback` says why.
    template <class Function>
    FutureAnswer<bool> RunInTransaction(Function function)
    {
        return Run([store = _factory, function = std::move(function)](sync::config::Managers const& managers) mutable {
            return InTransaction(*store, [&] { return function(managers); });
        });
    }

    /// Runs one operation of one of the managers:
    ///
    ///     managers.Call(&Managers::servers, &ServerConfigManager::GetServerConfigById, 7);
    ///
    /// The arguments are copied. What the operation writes into one is lost: use `Run` for an `Add`.
    template <class Manager, class Operation, class... Arguments>
    auto Call(std::shared_ptr<Manager> sync::config::Managers::*manager, Operation operation, Arguments... arguments)
    {
        return Run([=](sync::config::Managers const& managers) mutable {
            return std::invoke(operation, *(managers.*manager), arguments...);
        });
    }

    AsyncFolders const folders; ///< The operations of the folder manager.
    AsyncFiles const files;     ///< The operations of the file manager, which uses the same folder manager.

private:
    Q_DISABLE_COPY_MOVE(AsyncManagers)
    class Worker;

    /// An operation that waits for its turn.
    class TANDRY_MODELS_EXPORT Operation
    {
    public:
        Operation();
        virtual ~Operation();
        Q_DISABLE_COPY_MOVE(Operation)

        virtual void Run(sync::database::StoreFactory& store, sync::config::Managers const& managers) = 0;
        virtual void Cancel(sync::database::StoreError const& error) = 0;
    };

    template <class Value, class Function>
    class OperationOf final : public Operation
    {
    public:
        explicit OperationOf(Function function)
            : _function(std::move(function))
        {}

        FutureAnswer<Value> future() { return _promise.future(); }

        void Run(sync::database::StoreFactory& store, sync::config::Managers const& managers) override
        {
            Answer<Value> answer;
            if (!_promise.isCanceled()) {
                answer.error = ErrorOf(store, [&] {
                    if constexpr (std::is_void_v<Value>)
                        _function(managers);
                    else
                        answer.value = _function(managers);
                });
            }
            _promise.Finish(answer);
        }

        void Cancel(sync::database::StoreError const& error) override
        {
            Answer<Value> answer;
            answer.error = error;
            _promise.Cancel(answer);
        }

    private:
        Function _function;
        AnswerPromise<Value> _promise;
    };

    /// Runs a function, and returns the thread's first error in it.
    static std::optional<sync::database::StoreError> ErrorOf(sync::database::StoreFactory& store,
                                                             std::function<void()> const& function);
    /// Runs a function in a client transaction, and returns whether that was committed.
    static bool InTransaction(sync::database::StoreFactory& store, std::function<bool()> const& function);

    void Append(std::unique_ptr<Operation> operation);

    std::shared_ptr<sync::database::StoreFactory> const _factory;
    /// Shared with the thread, which outlives this object if that is destroyed on it.
    std::shared_ptr<Worker> const _worker;
};

} // namespace sync::models
