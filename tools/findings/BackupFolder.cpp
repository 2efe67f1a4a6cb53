#include "tools/findings/BackupFolder.h"

#include "tools/findings/ByteOrder.h"
#include "tools/findings/FreePath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <utility>
#include <vector>

namespace tandry::findings {

namespace {

/// A store's `application_id`.
constexpr quint32 StoreMark = 0x544e4459;
constexpr int MarkOffset = 68;
constexpr int StoreHeaderSize = 100;

bool IsClosedStore(QFileInfo const& info)
{
    if (!info.isFile() || info.isSymLink())
        return false;
    for (char const* suffix : {"-wal", "-journal"}) {
        if (QFileInfo::exists(info.filePath() + QLatin1String(suffix)))
            return false;
    }
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray const header = file.read(StoreHeaderSize);
    return header.size() == StoreHeaderSize && header.startsWith(QByteArray("SQLite format 3\0", 16)) &&
           BigEndianAt<quint32>(header, MarkOffset) == StoreMark;
}

} // namespace

BackupFolder::BackupFolder(QString const& folder, QString const& storePath)
    : _folder(folder)
    , _base(QFileInfo(storePath).completeBaseName())
{}

QString BackupFolder::NewPath(QDateTime const& now) const
{
    QString const start =
        QDir(_folder).filePath(_base + now.toUTC().toString(QStringLiteral("-yyyy-MM-ddTHH-mm-ss'Z'")));
    return FreePath(start, QStringLiteral(".db"));
}

QStringList BackupFolder::OlderThanKept(QString const& newest, int keep) const
{
    static QRegularExpression const form(
        QStringLiteral("\\A-(\\d{4}-\\d\\d-\\d\\dT\\d\\d-\\d\\d-\\d\\dZ)(-\\d+)?\\.db\\z"));
    QString const newestName = QFileInfo(newest).fileName();
    std::vector<std::pair<std::pair<QString, int>, QString>> backups;
    for (QFileInfo const& info : QDir(_folder).entryInfoList(QDir::Files | QDir::Hidden | QDir::System)) {
        QString const name = info.fileName();
        if (!name.startsWith(_base) || name == newestName)
            continue;
        QRegularExpressionMatch const match = form.match(name.mid(_base.size()));
        if (match.hasMatch() && IsClosedStore(info))
            backups.push_back({{match.captured(1), -match.captured(2).toInt()}, info.filePath()});
    }
    std::sort(backups.begin(), backups.end());
    auto const kept = std::min(backups.size(), static_cast<std::size_t>(keep - 1));
    QStringList older;
    for (std::size_t i = 0; i + kept < backups.size(); ++i)
        older.append(backups[i].second);
    return older;
}

} // namespace tandry::findings
