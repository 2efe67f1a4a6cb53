#pragma once

#include "database/store/Failure.h"

#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace sync::database {

class StoreConnection;
class StoreFactory;

/// The reasons for which a store itself refuses an operation, without asking its database.
enum class Refusal
{
    /// The operation is not allowed at this point.
    Misuse,
    /// An earlier failure rolled the transaction back.
    RolledBack,
    ReadOnly,
};

/// The state that the connections of a factory share, and the list of them. Made by `make_shared`. Any thread may call
/// any operation.
class Store : public std::enable_shared_from_this<Store>
{
public:
    Store();
    virtual ~Store();
    Q_DISABLE_COPY_MOVE(Store)

    /// Sets the factory that emits `CommitFailed`. Called once, before other threads know the store.
    void SetFactory(std::weak_ptr<StoreFactory> factory) { _factory = std::move(factory); }

    virtual bool isReadOnly() const = 0;
    bool isClosed() const noexcept { return _isClosed.load(std::memory_order_acquire); }

    /// An error with the store's name in front of the words, and the database's code for the refusal.
    virtual StoreError Refuse(Refusal refusal, QString const& words) const = 0;

    /// Returns the calling thread's connection, which need not be open; null while the thread's own data are being
    /// destroyed.
    std::shared_ptr<StoreConnection> Connection();
    /// The failure of an operation on a thread that has no connection any more.
    Failure NoConnection() const;
    /// The same without the store's name, for queries, which do not know the store then.
    static QString NoConnectionWords();

    /// The calling thread's first error, for the factory's operations of these names.
    std::optional<StoreError> LastError();
    void ClearError();

    /// Makes every later operation fail, and closes the connections that nothing uses any more.
    void Close();
    /// Removes the connection of a thread that ends; called on that thread.
    void Forget(StoreConnection const* connection);

    /// Emits the factory's signal on the calling thread.
    void EmitCommitFailed(StoreError const& error) const;

private:
    /// Makes a connection for the calling thread.
    virtual std::shared_ptr<StoreConnection> MakeConnection() = 0;

    std::weak_ptr<StoreFactory> _factory;
    std::atomic<bool> _isClosed{false};

    std::mutex _mutex; // guards the list, not the connections
    std::vector<std::shared_ptr<StoreConnection>> _connections;
};

} // namespace sync::database
