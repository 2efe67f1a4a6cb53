#include "models/AsyncManagers.h"

#include "database/StoreFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"

#include <QString>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace sync::models {

using sync::config::Managers;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using sync::interf::IQSqlDatabaseWrapper;
using sync::interf::IRefreshNativeFileViewer;

namespace {

StoreError MakeError(StoreErrorKind kind, QString const& text)
{
    StoreError error;
    error.kind = kind;
    error.text = text;
    return error;
}

/// Ends a client transaction that an exception has left open, so that no later operation joins it.
void EndTransaction(StoreFactory& store)
{
    static_cast<void>(store.CreateDatabase()->rollback());
}

} // namespace

/// The thread, and the operations that wait for it. Any thread may call any operation.
class AsyncManagers::Worker
{
public:
    static std::shared_ptr<Worker> Start(std::shared_ptr<StoreFactory> const& factory,
                                         std::shared_ptr<IRefreshNativeFileViewer> const& refreshNativeFileViewer)
    {
        auto worker = std::make_shared<Worker>();
        worker->_thread = std::thread([worker, factory, refreshNativeFileViewer] {
            Managers const managers(factory, refreshNativeFileViewer);
            while (std::unique_ptr<Operation> const operation = worker->Take())
                operation->Run(*factory, managers);
        });
        worker->_threadId = worker->_thread.get_id();
        return worker;
    }

    void Append(std::unique_ptr<Operation> operation)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (_isClosed) {
            lock.unlock();
            Cancel(*operation);
            return;
        }
        _operations.push_back(std::move(operation));
        _changed.notify_one();
    }

    void Close(Pending pending)
    {
        std::deque<std::unique_ptr<Operation>> canceled;
        {
            std::lock_guard<std::mutex> const lock(_mutex);
            _isClosed = true;
            if (pending == Pending::Cancel)
                canceled.swap(_operations);
        }
        _changed.notify_one();
        // Without the lock: with Qt 6, a client's code may run.
        for (std::unique_ptr<Operation> const& operation : canceled)
            Cancel(*operation);

        if (std::this_thread::get_id() == _threadId)
            return;
        std::lock_guard<std::mutex> const lock(_joining);
        if (_thread.joinable())
            _thread.join();
    }

    /// Lets the thread end by itself. REQUIRES: it is closed, and nobody closes it meanwhile.
    void Leave()
    {
        if (_thread.joinable())
            _thread.detach();
    }

private:
    /// Waits for the next operation; returns null once the worker is closed and none is left.
    std::unique_ptr<Operation> Take()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait(lock, [this] { return _isClosed || !_operations.empty(); });
        if (_operations.empty())
            return nullptr;
        std::unique_ptr<Operation> operation = std::move(_operations.front());
        _operations.pop_front();
        return operation;
    }

    static void Cancel(Operation& operation)
    {
        operation.Cancel(MakeError(StoreErrorKind::Refused,
                                   QStringLiteral("The operation was not run, because the managers had been closed.")));
    }

    std::mutex _mutex; // guards the operations
    std::condition_variable _changed;
    std::deque<std::unique_ptr<Operation>> _operations;
    bool _isClosed = false;

    std::mutex _joining; // guards the thread
    std::thread _thread;
    std::thread::id _threadId; // of the thread also after its end
};

AsyncManagers::Operation::Operation() = default;
AsyncManagers::Operation::~Operation() = default;

AsyncManagers::AsyncManagers(std::shared_ptr<StoreFactory> factory,
                             std::shared_ptr<IRefreshNativeFileViewer> const& refreshNativeFileViewer)
    : folders(*this)
    , files(*this)
    , _factory(std::move(factory))
    , _worker(Worker::Start(_factory, refreshNativeFileViewer))
{}

AsyncManagers::~AsyncManagers()
{
    Close(Pending::Cancel);
    _worker->Leave();
}

void AsyncManagers::Close(Pending pending)
{
    _worker->Close(pending);
}

void AsyncManagers::Append(std::unique_ptr<Operation> operation)
{
    _worker->Append(std::move(operation));
}

std::optional<StoreError> AsyncManagers::ErrorOf(StoreFactory& store, std::function<void()> const& function)
{
    store.ClearError();
    try {
        function();
    }
    catch (std::exception const& exception) {
        EndTransaction(store);
        return MakeError(StoreErrorKind::Other, QString::fromLocal8Bit(exception.what()));
    }
    catch (...) {
        EndTransaction(store);
        return MakeError(StoreErrorKind::Other, QStringLiteral("An exception left the operation."));
    }
    return store.LastError();
}

bool AsyncManagers::InTransaction(StoreFactory& store, std::function<bool()> const& function)
{
    std::shared_ptr<IQSqlDatabaseWrapper> const transaction = store.CreateDatabase();
    if (!transaction->transaction())
        return false;
    if (function())
        return transaction->commit();
    static_cast<void>(transaction->rollback());
    return false;
}

} // namespace sync::models
