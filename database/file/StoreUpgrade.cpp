#include "database/file/StoreUpgrade.h"

#include "database/file/NewFile.h"
#include "database/file/StoreBackup.h"
#include "database/file/StoreCommit.h"
#include "database/file/StoreDamage.h"
#include "database/file/StoreSchema.h"
#include "database/file/UpgradeSteps.h"
#include "database/sqlite/ErrorTexts.h"
#include "database/store/StoreLog.h"

#include <utility>

#include <unistd.h>

namespace sync::database {

StoreUpgrade::StoreUpgrade(StoreFile file, int busyTimeoutMsec)
    : _busyTimeoutMsec(busyTimeoutMsec)
    , _store(std::move(file), busyTimeoutMsec)
{}

Failure StoreUpgrade::Run()
{
    if (Failure failure = _store.Open(OpenPurpose::Upgrade, StoreAccess::ReadWrite))
        return failure;
    if (int const code = Execute(_store.get(), "PRAGMA synchronous = EXTRA"); code != SQLITE_OK)
        return _store.Describe(code);
    qint64 version = 0;
    Failure failure = ReadVersion(version);
    while (!failure && schema::IsOlder(version)) {
        failure = RunStep();
        if (!failure)
            failure = ReadVersion(version);
    }
    if (failure)
        return failure;
    if (version != schema::Version)
        return schema::OtherVersion(_store.file().path(), version);

    _store.AllowCheckpointOnClose();
    if (_backup)
        qCInfo(StoreLog).noquote() << QStringLiteral("%1: brought from version %2 to %3; as it was it is kept in %4")
                                          .arg(_store.file().path())
                                          .arg(_backup->version)
                                          .arg(version)
                                          .arg(_backup->file.path());
    return {};
}

Failure StoreUpgrade::ReadVersion(qint64& version) const
{
    int const code = QueryNumber(_store.get(), "PRAGMA user_version", version);
    return code == SQLITE_OK ? Failure() : _store.Describe(code);
}

Failure StoreUpgrade::RunStep()
{
    int code = Execute(_store.get(), "BEGIN IMMEDIATE");
    if (code != SQLITE_OK)
        return _store.Describe(code);
    qint64 version = 0;
    Failure failure = ReadVersion(version);
    if (failure || !schema::IsOlder(version)) { // another process has run the step meanwhile
        Execute(_store.get(), "ROLLBACK");
        return failure;
    }
    failure = RunStepInTransaction(version);
    if (failure)
        Execute(_store.get(), "ROLLBACK");
    else
        failure = Commit(version);
    if (failure && failure->kind != StoreErrorKind::OutcomeUnknown)
        RemoveNeedlessBackup();
    return failure;
}

/// On failure the transaction has ended.
Failure StoreUpgrade::Commit(qint64 version)
{
    int const code = Execute(_store.get(), "COMMIT");
    if (code == SQLITE_OK)
        return {};
    StoreError const error = CannotUpgrade(version, _store.Describe(code));
    Execute(_store.get(), "ROLLBACK");
    return SettleStoreCommit(_store, error, QStringLiteral("the next opening for writing finds out"));
}

Failure StoreUpgrade::RunStepInTransaction(qint64 version)
{
    if (Failure failure = CheckLength(_store))
        return failure;
    if (Failure failure = schema::CheckOlder(_store.get(), _store.file().path(), version))
        return failure;
    if (Failure failure = _store.CheckWritable())
        return CannotUpgrade(version, *failure);
    if (!_backup) {
        if (Failure failure = BackUp(version))
            return failure;
    }
    QByteArray const setVersion = "PRAGMA user_version = " + QByteArray::number(version + 1);
    int code = Execute(_store.get(), UpgradeStep(version));
    if (code == SQLITE_OK)
        code = Execute(_store.get(), setVersion.constData());
    if (code != SQLITE_OK) // the statements hold no value that SQLite's message could quote
        return CannotUpgrade(version, _store.Describe(code, {}, true));
    if (version + 1 == schema::Version) {
        if (Failure failure = schema::Check(_store.get(), _store.file().path()))
            return CannotUpgrade(version, *failure);
    }
    // A full disk is to show here, where the step is simply rolled back.
    code = sqlite3_db_cacheflush(_store.get());
    return code == SQLITE_OK ? Failure() : CannotUpgrade(version, _store.Describe(code));
}

/// The open transaction keeps others from writing, and has not written itself yet.
Failure StoreUpgrade::BackUp(qint64 version)
{
    std::vector<StoreFile> const names =
        StoreFile::UpToFirstFree(_store.file().path() + QStringLiteral(".version-") + QString::number(version));
    NewFile copy(names.back());
    bool isTaken = false;
    Failure failure = copy.CheckTarget(isTaken);
    if (!failure)
        failure = copy.Create(OwnerOf(_store.file()));
    if (!failure)
        failure = StoreBackup(_store.file(), StoreAccess::ReadWrite, _busyTimeoutMsec).WriteTo(copy);
    if (failure)
        return CannotUpgrade(version, *failure);
    // An earlier attempt that was interrupted, or could not tell what had become of it, has left the same copy.
    for (auto taken = names.begin(); taken != names.end() - 1; ++taken) {
        bool isSame = false;
        failure = copy.Compare(*taken, isSame);
        if (failure)
            return CannotUpgrade(version, *failure);
        if (isSame) {
            _backup = Backup{*taken, version, false};
            return {};
        }
    }
    failure = copy.Publish(isTaken);
    if (isTaken)
        failure = MakeError(names.back().path(), SQLITE_CANTOPEN, QStringLiteral("a file of this name has appeared"));
    if (failure)
        return CannotUpgrade(version, *failure);
    _backup = Backup{names.back(), version, true};
    return {};
}

/// Removes the copy that this attempt made of a store that is what it was.
void StoreUpgrade::RemoveNeedlessBackup()
{
    qint64 version = 0;
    if (!_backup || !_backup->isNew || ReadVersion(version) || version != _backup->version)
        return;
    ::unlink(_backup->file.name());
    _backup.reset();
}

StoreError StoreUpgrade::CannotUpgrade(qint64 version, StoreError const& reason) const
{
    QString const words = QStringLiteral("the store has version %1, which can't be brought to version %2: ");
    return MakeError(_store.file().path(), reason.code, words.arg(version).arg(schema::Version) + reason.text);
}

} // namespace sync::database
