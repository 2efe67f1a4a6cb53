#pragma once

#include "../database/OpenOptions.h"
#include "../database/StoreChanges.h"
#include "../database/StoreError.h"
#include "../database/StoreFactory.h"
#include "TandryPostgresExport.h"

#include <QString>

#include <memory>
#include <optional>

namespace sync::database {

class PostgresStore;

/// A store in a schema of a PostgreSQL database.
///
/// Any thread may call any operation: each thread gets a connection of its own at its first use, closed when the thread
/// ends or the factory is destroyed. Queries, scopes and client transactions belong to the thread that created them.
/// When the factory is destroyed, open client transactions are rolled back, open scopes keep their writes, and later
/// operations on queries and database objects fail. A child process created by `fork` must not use the store.
///
/// One thread at a time writes to a profile: a scope, a client transaction or a statement outside of both waits for the
/// others up to `OpenOptions::busyTimeoutMsec`. Reads never wait. Programs other than this library are not kept out.
///
/// `StoreError::code` is the server's SQLSTATE: its five characters read as a number to the base 36. A statement that
/// fails because the connection was lost has the kind `ConnectionLost`; outside of transactions a read is repeated once
/// on a new connection before. A lost connection rolls an open transaction back. If it is lost during a commit, the
/// store connects again and asks whether the commit has happened; if the server does not tell, the kind is
/// `OutcomeUnknown`. The next operation connects again. Where the URI sets `statement_timeout`, an answer that takes
/// twice as long means that the connection is lost.
class TANDRY_POSTGRES_EXPORT PostgresDatabaseFactory : public StoreFactory,
                                                       public std::enable_shared_from_this<PostgresDatabaseFactory>
{
    Q_OBJECT

public:
    /// Opens the profile that a URI of libpq names, or creates it if `options.mode` says so. Returns null on failure;
    /// `error`, unless null, then contains the reason. No error contains a password.
    ///
    /// In addition to libpq's parameters the URI takes
    /// - `tandry_profile=NAME`, "default" if it is missing: the store is in the schema "tandry_NAME";
    /// - `tandry_synchronous_commit=any`: opens the store for writing also where `synchronous_commit` is off.
    ///
    /// Unless the URI contains `sslmode`, a connection to another host needs a certificate of that host
    /// (`sslmode=verify-full`), and so does every host of a service.
    ///
    /// Fails if there is no connection; if the schema contains anything that this library does not create, lacks a
    /// table or was written by a newer program; and for writing if `synchronous_commit` is off, or if the tables belong
    /// to a role of which the user's is no member. The schema is then unchanged.
    ///
    /// `OpenOptions::journalMode` and `logLimitBytes` have no effect.
    [[nodiscard]] static std::shared_ptr<PostgresDatabaseFactory>
    Open(QString const& uri, QString* error = nullptr, OpenOptions const& options = {});

    /// The same. On failure sets `error`, with code and kind; otherwise leaves it unchanged.
    [[nodiscard]] static std::shared_ptr<PostgresDatabaseFactory>
    Open(QString const& uri, StoreError& error, OpenOptions const& options = {});

    /// Opens an existing profile for reading as it is at this moment: what is written meanwhile does not show, as for
    /// an export. Only the calling thread can read. If the connection is lost, every later operation fails. Meanwhile
    /// the server keeps rows that others remove. Returns null on failure, and sets `error`.
    [[nodiscard]] static std::shared_ptr<PostgresDatabaseFactory> OpenState(QString const& uri, StoreError& error);

    ~PostgresDatabaseFactory() override;

    /// Returns whether a URI contains a password; it need not be one that `Open` takes. A program should refuse such a
    /// URI on its command line, which every user of the machine can read.
    [[nodiscard]] static bool HasPassword(QString const& uri);

    /// Sets how many connections the process may have open at a time, of all factories; 32 unless set. Opening another
    /// one fails with the kind `Locked`. Connections that are open stay open.
    static void SetConnectionLimit(int connections);

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> CreateDatabase() override;

    /// Returns a new query for one SELECT, INSERT, UPDATE or DELETE. `exec` fetches all rows.
    ///
    /// Values: integers of any C++ type up to 63 bits and `bool`; `float` and `double` other than NaN; `QString`;
    /// `QDateTime`, stored as the milliseconds of its clock reading. A null or invalid value of any type is NULL.
    /// Placeholders are compared by case. These fail at `exec`: a value of another type, a text with a lone surrogate
    /// or a null character, a value that does not fit its column, a name that the statement does not contain.
    ///
    /// Statements that also fail: several in one text; one that writes and returns rows (`RETURNING`).
    std::shared_ptr<sync::interf::IQSqlQueryWrapper> CreateQuery() override;

    /// Returns the host, database and profile, as errors name them; neither the user nor the password.
    [[nodiscard]] QString name() const;

    /// Switches on or off that the profile tells of commits; it does not at first. Each statement that writes then
    /// sends the name of its table to whoever listens, which costs all clients of the profile. Any user of the database
    /// can listen to these names. Returns false on failure, and sets `LastError`. Fails if the calling thread has an
    /// open client transaction or scope.
    [[nodiscard]] bool SetNotices(bool on);

    /// Returns null without an error if the profile does not tell of commits: see `SetNotices`. The object has a
    /// connection of its own, which counts. Names exactly the tables that commits have written to, whoever wrote. If
    /// the connection is lost, it makes another one, and names all tables; if that fails, it returns the error.
    [[nodiscard]] std::unique_ptr<StoreChanges> WatchChanges() override;

    [[nodiscard]] std::optional<StoreError> LastError() const override;
    void ClearError() override;

private:
    /// Runs an operation with the calling thread's connection, and records its failure.
    template <class Operation>
    bool Answer(Operation const& operation);

    static std::shared_ptr<PostgresDatabaseFactory>
    OpenProfile(QString const& uri, StoreError& error, OpenOptions const& options, bool holdsState);

    explicit PostgresDatabaseFactory(std::shared_ptr<PostgresStore> store);

    std::shared_ptr<PostgresStore> _store;
};

} // namespace sync::database
