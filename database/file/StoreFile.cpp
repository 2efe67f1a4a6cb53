#include "database/file/StoreFile.h"

#include "database/sqlite/ErrorTexts.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include <unistd.h>

namespace sync::database {

StoreFile::StoreFile(QString const& path)
    : StoreFile(QFileInfo(path).absoluteFilePath(), QFile::encodeName(QFileInfo(path).absoluteFilePath()))
{}

StoreFile::StoreFile(QString const& path, QByteArray const& name)
    : _path(path)
    , _name(name)
    , _logName(_name + LogSuffix)
{}

StoreFile StoreFile::WithName(QByteArray const& name) const
{
    return {_path, name};
}

Failure StoreFile::CheckName() const
{
    if (_path.isEmpty())
        return MakeError(QStringLiteral("the store"), SQLITE_CANTOPEN, QStringLiteral("no file was named"));
    // A null character would cut the name off; a character that the locale cannot encode would change it.
    if (_path.contains(QChar::Null) || QFile::decodeName(_name) != _path)
        return MakeError(_path, SQLITE_CANTOPEN, QStringLiteral("this can't be a file's name here"));
    return {};
}

bool StoreFile::IsMissing() const noexcept
{
    struct stat status = {};
    return ::lstat(name(), &status) != 0 && errno == ENOENT;
}

bool StoreFile::IsFree() const
{
    struct stat status = {};
    return std::all_of(std::begin(DatabaseSuffixes), std::end(DatabaseSuffixes), [&](char const* suffix) {
        return ::lstat((_name + suffix).constData(), &status) != 0;
    });
}

bool StoreFile::Exists(char const* suffix) const
{
    return ::access((_name + suffix).constData(), F_OK) == 0;
}

bool StoreFile::HasFilledLog() const noexcept
{
    struct stat status = {};
    return ::stat(_logName.constData(), &status) == 0 && status.st_size > 0;
}

std::optional<FileIdentity> StoreFile::Identity() const noexcept
{
    return IdentityAt(name());
}

std::optional<FileIdentity> StoreFile::LogIdentity() const noexcept
{
    return IdentityAt(_logName.constData());
}

std::optional<FileStamp> StoreFile::Stamp() const noexcept
{
    struct stat status = {};
    if (::stat(name(), &status) != 0)
        return std::nullopt;
    return FileStamp{IdentityOf(status), status.st_size, status.st_mtim, LogIdentity().has_value()};
}

} // namespace sync::database
