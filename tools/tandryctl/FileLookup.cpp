#include "FileLookup.h"

#include "Failure.h"
#include "Paths.h"
#include "Session.h"
#include "Text.h"

#include "tools/findings/ColumnReference.h"

#include <algorithm>
#include <functional>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FileConfigurationType;
using sync::config::FileConfigurationTypeBase;
using sync::config::FileConfigurationTypeFile;
using sync::config::FileConfigurationTypeGenerated;

namespace {

struct SortKey
{
    char const* column;
    std::function<bool(FileConfiguration const&, FileConfiguration const&)> isLess;
};

template <class Key>
auto By(Key const& key)
{
    return [key](FileConfiguration const& left, FileConfiguration const& right) { return key(left) < key(right); };
}

template <class Member>
auto By(Member FileConfiguration::*member)
{
    return [member](FileConfiguration const& left, FileConfiguration const& right) {
        return left.*member < right.*member;
    };
}

/// In the order of `FileConfigOrderByEnum`; each key stands for its ascending and its descending value.
QVector<SortKey> const& SortKeys()
{
    using File = FileConfiguration;
    static QVector<SortKey> const keys{
        {"id", By(&File::id)},
        {"name", By(&File::name)},
        {"folderConfigurationId", By(&File::folderConfigurationId)},
        {"clientPath", By(&File::clientPath)},
        {"serverPath", By(&File::serverPath)},
        {"checkSum", By(&File::checkSum)},
        {"createdDateTime", By(&File::createdDateTime)},
        {"lastModifiedDateTime", By(&File::lastModifiedDateTime)},
        {"syncStatus", By([](File const& file) { return file.getSyncStatus(); })},
        {"lastOperationType", By(&File::lastOperationType)},
        {"size", By(&File::size)},
    };
    return keys;
}

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
        for (SortKey const& key : SortKeys()) {
            all.append(QLatin1String(key.column));
            all.append(QLatin1String(key.column) + QStringLiteral("-desc"));
        }
        return all;
    }();
    return words;
}

void SortFiles(QVector<FileConfiguration>& files, int order)
{
    auto const& isLess = SortKeys().at(order / 2).isLess;
    if (order % 2 == 0)
        std::stable_sort(files.begin(), files.end(), isLess);
    else
        std::stable_sort(
            files.begin(), files.end(), [&](auto const& left, auto const& right) { return isLess(right, left); });
}

QVector<FileConfiguration> FindFiles(Session& session, FileFilter const& filter)
{
    auto& manager = session.files();
    bool const narrowedByFolder = filter.folder && filter.type == FileConfigurationTypeFile;
    QVector<FileConfiguration> files =
        narrowedByFolder ? session.Checked(manager.GetFileConfigurationsByFolderId(*filter.folder,
                                                                                   sync::interf::FileConfigOrderById))
        : filter.root    ? session.Checked(manager.GetFileConfigurationsByRootFolderId(*filter.root, filter.type))
                         : session.Checked(manager.GetAll(filter.type));

    auto const isUnwanted = [&](FileConfiguration const& file) {
        return (filter.folder && file.folderConfigurationId != *filter.folder) ||
               (filter.root && file.rootFolderId != *filter.root) ||
               (filter.status && file.getSyncStatus() != *filter.status);
    };
    files.erase(std::remove_if(files.begin(), files.end(), isUnwanted), files.end());
    return files;
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
