#include "FolderPlace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

namespace tandryctl {

namespace {

struct Mount
{
    QString type;
    QString source;
};

/// Decodes the escapes of the mount table, such as \040 for a blank.
QString Decoded(QByteArray const& field)
{
    QByteArray bytes;
    for (int i = 0; i < field.size(); ++i) {
        bool isOctal = false;
        int const code = field.at(i) == '\\' ? field.mid(i + 1, 3).toInt(&isOctal, 8) : 0;
        bytes += isOctal ? char(code) : field.at(i);
        i += isOctal ? 3 : 0;
    }
    return QString::fromUtf8(bytes);
}

/// Returns the mount with this id from the kernel's table; empty if there is none.
Mount FindMount(quint64 id)
{
    // A line is: id, parent, device, root, mount point, options, optional fields, "-", type, source, options.
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly))
        return {};
    for (QByteArray const& line : table.readAll().split('\n')) {
        QList<QByteArray> const fields = line.split(' ');
        int const dash = fields.indexOf("-");
        if (fields.first().toULongLong() == id && dash != -1 && dash + 2 < fields.size())
            return {Decoded(fields.at(dash + 1)), Decoded(fields.at(dash + 2))};
    }
    return {};
}

/// Returns the UUID under which the device is listed; empty if it is not.
QString UuidOf(quint64 device)
{
    for (QFileInfo const& link : QDir(QStringLiteral("/dev/disk/by-uuid")).entryInfoList(QDir::System | QDir::Files)) {
        struct stat facts = {};
        if (::stat(QFile::encodeName(link.filePath()).constData(), &facts) == 0 && S_ISBLK(facts.st_mode) &&
            facts.st_rdev == device)
            return link.fileName();
    }
    return {};
}

/// Returns the number of the device that holds the file system. Some, such as btrfs, show a made-up one for their
/// folders.
quint64 BlockDevice(Mount const& mount, quint64 shown)
{
    struct stat facts = {};
    bool const isBlockDevice =
        ::stat(QFile::encodeName(mount.source).constData(), &facts) == 0 && S_ISBLK(facts.st_mode);
    return isBlockDevice ? facts.st_rdev : shown;
}

/// Returns the id that the file system reports, of those that derive it from their UUID; a tmpfs makes a new one each
/// time that it is mounted, empty.
std::optional<quint64> ReportedId(QString const& path)
{
    struct statfs facts = {};
    if (::statfs(QFile::encodeName(path).constData(), &facts) != 0)
        return std::nullopt;
    std::array<decltype(facts.f_type), 3> const kinds{EXT4_SUPER_MAGIC, BTRFS_SUPER_MAGIC, TMPFS_MAGIC};
    quint64 const id = quint64(quint32(facts.f_fsid.__val[0])) << 32 | quint64(quint32(facts.f_fsid.__val[1]));
    if (id == 0 || std::find(kinds.begin(), kinds.end(), facts.f_type) == kinds.end())
        return std::nullopt;
    return id;
}

/// Whether the file system numbers its folders anew when it is mounted again.
bool NumbersAnew(QString const& type)
{
    return type.startsWith(QStringLiteral("fuse")) || QStringList{QStringLiteral("vfat"),
                                                                  QStringLiteral("msdos"),
                                                                  QStringLiteral("exfat"),
                                                                  QStringLiteral("cifs"),
                                                                  QStringLiteral("smb3"),
                                                                  QStringLiteral("9p")}
                                                          .contains(type);
}

} // namespace

std::optional<FolderPlace> FolderPlace::Of(QString const& path)
{
    struct statx facts = {};
    unsigned const wanted = STATX_TYPE | STATX_INO | STATX_MNT_ID;
    if (::statx(AT_FDCWD, QFile::encodeName(path).constData(), 0, wanted, &facts) != 0 || !S_ISDIR(facts.stx_mode))
        return std::nullopt;
    FolderPlace place;
    place._path = path;
    place._device = ::makedev(facts.stx_dev_major, facts.stx_dev_minor);
    place._inode = facts.stx_ino;
    place._mountId = facts.stx_mnt_id;
    place._isMountPoint = (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
    return place;
}

FolderOrigin FolderPlace::Origin() const
{
    Mount const mount = FindMount(_mountId);
    FolderOrigin origin;
    if (QString const uuid = UuidOf(BlockDevice(mount, _device)); !uuid.isEmpty())
        origin.fileSystem = QStringLiteral("UUID ") + uuid;
    else if (auto const id = ReportedId(_path))
        origin.fileSystem = QStringLiteral("%1 %2").arg(mount.type, QString::number(*id, 16));
    else
        origin.fileSystem = MountText();
    if (!NumbersAnew(mount.type))
        origin.inode = static_cast<qint64>(_inode);
    return origin;
}

QString FolderPlace::MountText() const
{
    Mount const mount = FindMount(_mountId);
    return mount.type == mount.source ? mount.type : mount.type + QLatin1Char(' ') + mount.source;
}

} // namespace tandryctl
