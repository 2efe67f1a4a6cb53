#include "database/file/StoreFile.h"

#include "database/sqlite/ErrorTexts.h"

#include <QFile>
#include <QRegularExpression>

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace sync::database {

namespace {

/// Returns the name as it is if a part in front of the last one is missing or may not be entered.
QByteArray WithoutLinks(QByteArray const& name)
{
    using Resolved = std::unique_ptr<char, decltype(&std::free)>;
    if (Resolved const file(::realpath(name.constData(), nullptr), &std::free); file != nullptr)
        return file.get();
    auto const slash = name.lastIndexOf('/');
    Resolved const folder(::realpath((name.left(slash) + "/").constData(), nullptr), &std::free);
    if (folder == nullptr)
        return name;
    QByteArray const root = folder.get();
    return (root == "/" ? QByteArray() : root) + name.mid(slash);
}

} // namespace

StoreFile::StoreFile(QString const& path)
    : _path(path)
    , _given(QFile::encodeName(path))
    , _name(WithoutLinks(_given))
    , _logName(_name + LogSuffix)
    , _logIndexName(_name + LogIndexSuffix)
{}

StoreFile::StoreFile(QString const& path, QByteArray const& name)
    : _path(path)
    , _given(name)
    , _name(name)
    , _logName(_name + LogSuffix)
    , _logIndexName(_name + LogIndexSuffix)
{}

std::vector<StoreFile> StoreFile::UpToFirstFree(QString const& path)
{
    std::vector<StoreFile> files{StoreFile(path)};
    for (int number = 2; !files.back().IsFree(); ++number)
        files.push_back(StoreFile(path + QLatin1Char('-') + QString::number(number)));
    return files;
}

StoreFile StoreFile::FirstFree(QString const& path)
{
    return UpToFirstFree(path).back();
}

StoreFile StoreFile::WithName(QByteArray const& name) const
{
    return {_path, name};
}

QByteArray StoreFile::folder() const
{
    auto const slash = _name.lastIndexOf('/');
    return slash > 0 ? _name.left(slash) : QByteArray("/");
}

Failure StoreFile::CheckName() const
{
    if (_name.size() + int(qstrlen(JournalSuffix)) > sqlite3_vfs_find(nullptr)->mxPathname)
        return MakeError(_path, SQLITE_CANTOPEN, QStringLiteral("the path is too long for SQLite"));
    return {};
}

Failure StoreFile::CheckNewName() const
{
    if (Failure failure = CheckName())
        return failure;
    QByteArray const lowerCase = _name.toLower(); // some file systems do not tell the two apart
    for (char const* suffix : SuffixesBeside) {
        QByteArray const database = _name.left(_name.size() - int(qstrlen(suffix)));
        struct stat status = {};
        if (lowerCase.endsWith(suffix) && ::stat(database.constData(), &status) == 0 && S_ISREG(status.st_mode))
            return MakeError(_path,
                             SQLITE_CANTOPEN,
                             QStringLiteral("SQLite uses this name for its own files beside %1, so a new file must "
                                            "have another one")
                                 .arg(QFile::decodeName(database)));
    }
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
    return ::lstat(name(), &status) != 0 && FilesBeside().isEmpty();
}

QStringList StoreFile::FilesBeside() const
{
    QStringList found;
    struct stat status = {};
    for (char const* suffix : SuffixesBeside) {
        QByteArray const file = _name + suffix;
        if (::lstat(file.constData(), &status) == 0)
            found.append(QFile::decodeName(file));
    }
    return found;
}

QVector<QByteArray> StoreFile::NamesOfInterruptedRestore() const
{
    QVector<std::optional<FileIdentity>> own;
    for (char const* suffix : DatabaseSuffixes)
        own.append(IdentityAt((_name + suffix).constData()));

    QRegularExpression const ending(QStringLiteral("\\A(-\\d+)?(-wal|-shm|-journal)?\\z"));
    QVector<QByteArray> names;
    QByteArray const start = _name + KeptSuffix;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder().constData(), error), end; !error && entry != end;
         entry.increment(error)) {
        QByteArray const name = entry->path().c_str();
        bool const isOfRestore =
            name.startsWith(start) && ending.match(QString::fromLatin1(name.mid(start.size()))).hasMatch();
        std::error_code unknown;
        if (!isOfRestore || entry->is_symlink(unknown))
            continue;
        std::optional<FileIdentity> const identity = IdentityAt(name.constData());
        if (identity && own.contains(identity))
            names.append(name);
    }
    return names;
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

std::optional<FileStatus> StoreFile::Status() const noexcept
{
    return StatusAt(_given.constData());
}

std::optional<FileIdentity> StoreFile::Identity() const noexcept
{
    return IdentityAt(_given.constData());
}

std::optional<FileStatus> StoreFile::LogStatus() const noexcept
{
    return StatusAt(_logName.constData());
}

std::optional<FileStatus> StoreFile::LogIndexStatus() const noexcept
{
    return StatusAt(_logIndexName.constData());
}

std::optional<FileStamp> StoreFile::Stamp() const noexcept
{
    struct stat status = {};
    if (::stat(name(), &status) != 0)
        return std::nullopt;
    return FileStamp{IdentityOf(status), status.st_size, status.st_mtim, Exists(LogSuffix)};
}

} // namespace sync::database
