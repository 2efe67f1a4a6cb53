#include "database/AbsolutePath.h"

#include <QByteArray>
#include <QFile>
#include <QStringList>

#include <cstdlib>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace sync::database {

namespace {

QString Refuse(QString const& words, QString* error)
{
    if (error != nullptr)
        *error = words;
    return {};
}

/// Null where there is none that a text can stand for.
QString WorkingDirectory()
{
    std::unique_ptr<char, decltype(&std::free)> const bytes(::getcwd(nullptr, 0), &std::free);
    if (bytes == nullptr || *bytes != '/') // unreachable from the root
        return {};
    QByteArray const name(bytes.get());
    QString const text = QFile::decodeName(name);
    return QFile::encodeName(text) == name ? text : QString();
}

bool IsLink(QString const& path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Behind a link, ".." is the folder above what the link stands for, which only the system knows.
QString WithoutEmptyParts(QString const& path)
{
    QString clean;
    for (QString const& part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("."))
            continue;
        if (part == QLatin1String("..") && !clean.endsWith(QLatin1String("/..")) && !IsLink(clean))
            clean.truncate(qMax(0, clean.lastIndexOf(QLatin1Char('/'))));
        else
            clean += QLatin1Char('/') + part;
    }
    return clean.isEmpty() ? QStringLiteral("/") : clean;
}

} // namespace

QString AbsolutePath(QString const& path, QString* error)
{
    if (path.isEmpty())
        return Refuse(QStringLiteral("no file was named"), error);
    if (path.contains(QChar::Null) || QFile::decodeName(QFile::encodeName(path)) != path)
        return Refuse(QStringLiteral("%1: this can't be a file's name here").arg(path), error);
    if (path.startsWith(QLatin1Char('/')))
        return WithoutEmptyParts(path);
    QString const directory = WorkingDirectory();
    if (directory.isNull())
        return Refuse(QStringLiteral("%1: the working directory is gone or its name is no text here; name the file "
                                     "from the root")
                          .arg(path),
                      error);
    return WithoutEmptyParts(directory + QLatin1Char('/') + path);
}

} // namespace sync::database
