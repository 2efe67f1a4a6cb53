#include "tools/findings/PrivateCopy.h"

#include "tools/findings/TemporaryFolder.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>
#include <vector>

namespace tandry::findings {

using sync::database::StoreError;
using sync::database::StoreErrorKind;

namespace {

/// The files that make up a store; SQLite makes the index of a log anew.
constexpr char const* Parts[] = {"", "-wal", "-journal"};

struct Stamp
{
    qint64 size = -1;
    QDateTime modified;

    bool operator==(Stamp const& other) const { return size == other.size && modified == other.modified; }
};

/// What a folder has room for, or no limit if nobody tells; the copying tells then. QStorageInfo knows only what the
/// list of mounts has, which in a changed root has nothing.
quint64 AvailableBytes(QString const& folder)
{
    std::error_code error;
    return std::filesystem::space(QFile::encodeName(folder).toStdString(), error).available; // all bits on failure
}

std::vector<Stamp> StampsOf(QString const& store)
{
    std::vector<Stamp> stamps;
    for (char const* part : Parts) {
        QFileInfo const info(store + QLatin1String(part));
        stamps.push_back(info.exists() ? Stamp{info.size(), info.lastModified()} : Stamp());
    }
    return stamps;
}

/// Returns false on failure; `error` then says why.
bool CopyParts(QString const& from, QString const& to, StoreError& error)
{
    for (char const* part : Parts) {
        QString const target = to + QLatin1String(part);
        QFile::remove(target);
        QFile file(from + QLatin1String(part));
        if (!file.exists())
            continue;
        bool const isReadable = file.open(QIODevice::ReadOnly);
        if (!isReadable || !file.copy(target)) {
            error.kind = isReadable ? StoreErrorKind::Full : StoreErrorKind::Other;
            error.text = file.errorString();
            return false;
        }
        // The copy has the rights of the file, which may be for reading only.
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
    }
    return true;
}

} // namespace

bool PrivateCopy::IsNeededAfter(StoreErrorKind reason)
{
    return reason == StoreErrorKind::OlderVersion || reason == StoreErrorKind::NotClosed;
}

PrivateCopy::PrivateCopy()
    : _folder(TemporaryFolder().filePath(QStringLiteral("tandry-copy-XXXXXX")))
{}

std::unique_ptr<PrivateCopy> PrivateCopy::Make(QString const& storePath, StoreError& error)
{
    constexpr int Attempts = 5;
    auto const fail = [&](StoreErrorKind kind, QString const& reason) {
        error.kind = kind;
        error.text = QStringLiteral("%1 cannot be copied to %2: %3").arg(storePath, TemporaryFolder().path(), reason);
        return nullptr;
    };
    std::unique_ptr<PrivateCopy> copy(new PrivateCopy);
    if (!copy->_folder.isValid())
        return fail(StoreErrorKind::ReadOnly, copy->_folder.errorString());
    // SQLite puts log and journal beside the file that a symbolic link leads to.
    QString const store = QFileInfo(storePath).canonicalFilePath();
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        std::vector<Stamp> const before = StampsOf(store);
        qint64 bytes = 0;
        for (Stamp const& stamp : before)
            bytes += qMax<qint64>(stamp.size, 0);
        if (AvailableBytes(copy->_folder.path()) < quint64(bytes))
            return fail(StoreErrorKind::Full, QStringLiteral("it needs %1 bytes there").arg(bytes));
        StoreError copyError;
        if (!CopyParts(store, copy->path(), copyError))
            return fail(copyError.kind, copyError.text);
        if (StampsOf(store) == before)
            return copy;
    }
    return fail(StoreErrorKind::Locked, QStringLiteral("a program is writing to it"));
}

} // namespace tandry::findings
