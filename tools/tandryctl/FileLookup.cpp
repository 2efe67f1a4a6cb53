#include "FileLookup.h"

#include "Failure.h"
#include "Paths.h"
#include "Session.h"
#include "Text.h"

#include "tools/findings/ColumnReference.h"

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FileConfigurationTypeBase;
using sync::config::FileConfigurationTypeFile;
using sync::config::FileConfigurationTypeGenerated;

namespace {

/// In the order of `FileConfigOrderByEnum`; each stands for its ascending and its descending value.
constexpr char const* OrderColumns[] = {"id",
                                        "name",
                                        "folderConfigurationId",
                                        "clientPath",
                                        "serverPath",
                                        "checkSum",
                                        "createdDateTime",
                                        "lastModifiedDateTime",
                                        "syncStatus",
                                        "lastOperationType",
                                        "size"};

FileConfiguration FindById(Session& session, int id, FileConfigurationType type)
{
    if (type == FileConfigurationTypeGenerated)
        return session.Checked(session.files().GetGeneratedFileConfigurationById(id));
    return session.Checked(session.files().GetFileConfigurationById(id));
}

FileConfiguration FindByPath(Session& session, QString const& path, FileConfigurationType type)
{
    if (type == FileConfigurationTypeGenerated)
        return session.Checked(session.files().GetGeneratedFileConfigurationByClientPath(path));
    return session.Checked(session.files().GetFileConfigurationByClientPath(path));
}

/// The managers cannot look up a base file, so this searches the listing.
template <class Matches>
FileConfiguration FindBaseFile(Session& session, Matches const& matches)
{
    for (FileConfiguration const& file : session.Checked(session.files().GetAll(FileConfigurationTypeBase))) {
        if (matches(file))
            return file;
    }
    return {};
}

} // namespace

QStringList const& FileTypeNames()
{
    static QStringList const words =
        tandry::findings::NamesOfValues<FileConfiguration>(QStringLiteral("fileType"))->Words();
    return words;
}

QStringList const& FileOrderNames()
{
    static QStringList const words = [] {
        QStringList all;
        for (char const* column : OrderColumns) {
            all.append(QLatin1String(column));
            all.append(QLatin1String(column) + QStringLiteral("-desc"));
        }
        return all;
    }();
    return words;
}

FileConfiguration FindFile(Session& session, QString const& idOrPath, FileConfigurationType type)
{
    bool isId = false;
    int const id = idOrPath.toInt(&isId);
    QString const path = isId ? QString() : AbsolutePath(idOrPath);

    FileConfiguration file;
    if (type == FileConfigurationTypeBase)
        file = FindBaseFile(session, [&](FileConfiguration const& candidate) {
            return isId ? candidate.id == id : candidate.clientPath == path;
        });
    else
        file = isId ? FindById(session, id, type) : FindByPath(session, path, type);

    if (file.id == -1)
        throw Failure(FailureCode::NotFound,
                      QStringLiteral("there is no %1 %2 on record")
                          .arg(type == FileConfigurationTypeFile ? QStringLiteral("file")
                                                                 : FileTypeNames().at(type) + QStringLiteral(" file"),
                               isId ? idOrPath : Quoted(path)),
                      See(QStringLiteral("list files --type ") + FileTypeNames().at(type)));
    return file;
}

} // namespace tandryctl
