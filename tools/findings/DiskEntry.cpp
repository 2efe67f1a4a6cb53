#include "tools/findings/DiskEntry.h"

#include <QDir>

#include <cerrno>
#include <system_error>

#include <sys/stat.h>

namespace tandry::findings {

namespace {

DiskEntry::Kind KindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return DiskEntry::Kind::File;
    if (S_ISDIR(mode))
        return DiskEntry::Kind::Folder;
    return S_ISLNK(mode) ? DiskEntry::Kind::Link : DiskEntry::Kind::Special;
}

} // namespace

DiskEntry DiskEntry::At(QString const& path)
{
    DiskEntry entry;
    struct stat facts = {};
    if (::lstat(path.toUtf8().constData(), &facts) == 0) {
        entry.kind = KindOf(facts.st_mode);
        entry.size = static_cast<qint64>(facts.st_size);
        entry.modifiedMsec = qint64(facts.st_mtim.tv_sec) * 1000 + facts.st_mtim.tv_nsec / 1'000'000;
    }
    else if (errno != ENOENT && errno != ENOTDIR) {
        entry.error = QString::fromStdString(std::generic_category().message(errno));
        entry.kind = Kind::Unknown;
    }
    return entry;
}

QString DiskEntry::KindInWords() const
{
    switch (kind) {
    case Kind::Missing:
        return QStringLiteral("nothing");
    case Kind::Unknown:
        return QStringLiteral("unknown: ") + error;
    case Kind::File:
        return QStringLiteral("file");
    case Kind::Folder:
        return QStringLiteral("folder");
    case Kind::Link:
        return QStringLiteral("symbolic link");
    case Kind::Special:
        return QStringLiteral("special file");
    }
    return {};
}

QStringList NamesOnDisk(QString const& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Unsorted);
}

} // namespace tandry::findings
