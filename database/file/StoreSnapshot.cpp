#include "database/file/StoreSnapshot.h"

#include "database/file/StoreSchema.h"
#include "database/sqlite/ErrorTexts.h"

#include <utility>

namespace sync::database {

StoreSnapshot::StoreSnapshot(StoreFile file, int busyTimeoutMsec)
    : _file(std::move(file))
    , _queue(busyTimeoutMsec)
{}

Failure StoreSnapshot::Open(bool readOnly)
{
    int code = SQLITE_OK;
    if (!readOnly)
        code = OpenHandle(_file.name(), SQLITE_OPEN_READWRITE, _handle);
    else if (Failure failure = _file.OpenForReading(_handle, _stamp))
        return failure;
    if (code == SQLITE_OK) {
        _queue.Attach(_handle.get());
        Distrust(_handle.get());
        code = Execute(_handle.get(), "PRAGMA mmap_size = 0; PRAGMA temp_store = MEMORY; PRAGMA cell_size_check = ON;");
    }
    // The transaction sees what is committed when it reads for the first time.
    if (code == SQLITE_OK)
        code = Execute(_handle.get(), "BEGIN; PRAGMA user_version;");
    return code == SQLITE_OK ? Failure() : DescribeError(_handle.get(), code, _file.path());
}

Failure StoreSnapshot::FindDamage(QStringList& damage) const
{
    if (Failure failure = _file.CheckLength(handle())) {
        if ((failure->code & 0xff) != SQLITE_CORRUPT)
            return failure;
        damage.append(failure->text);
    }
    if (Failure failure = schema::FindDamage(handle(), _file.path(), damage))
        return failure;
    return CheckUnchanged();
}

Failure StoreSnapshot::CheckUnchanged() const
{
    if (!_stamp || _file.Stamp() == _stamp)
        return {};
    return MakeError(
        _file.path(), SQLITE_BUSY_SNAPSHOT, QStringLiteral("the store was changed while it was being read"));
}

} // namespace sync::database
