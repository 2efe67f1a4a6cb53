#include "tools/findings/Explanation.h"

#include "config/FileLinksDocument.h"
#include "config/Managers.h"
#include "config/RecordColumns.h"
#include "interf/IDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/ColumnReference.h"
#include "tools/findings/DiskEntry.h"
#include "tools/findings/LinkedPath.h"
#include "tools/findings/PathText.h"
#include "tools/findings/RootRule.h"
#include "tools/findings/StoreStatements.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSet>

#include <map>
#include <utility>

namespace tandry::findings {

using namespace sync::config;
using sync::interf::IQSqlQueryWrapper;
using sync::interf::factory::IDatabaseFactory;

namespace {

using By = ExplanationRequest::By;

constexpr int NoId = -1;

/// Reading a table of this size without an index takes a few milliseconds.
constexpr int RowsOfASmallTable = 50'000;

QString Word(char const* word)
{
    return QLatin1String(word);
}

QString Quote(QString const& text)
{
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

/// Returns "12 '/a/b'".
QString IdAndName(int id, QString const& name)
{
    return QStringLiteral("%1 %2").arg(QString::number(id), Quote(name));
}

QString NotOnRecord(int id)
{
    return QStringLiteral("%1, which is not on record").arg(id);
}

QString NameOf(AuthenticationConfiguration const& account)
{
    return account.getDomain().isEmpty() ? account.getUserName()
                                         : account.getDomain() + QLatin1Char('\\') + account.getUserName();
}

QString NameOf(ServerConfiguration const& server)
{
    return server.getAlias().isEmpty() ? server.getDavUrl() : server.getAlias();
}

bool IsEmpty(QVariant const& value)
{
    switch (value.userType()) {
    case QMetaType::QString:
        return value.toString().isEmpty();
    case QMetaType::QDateTime:
        return !value.toDateTime().isValid();
    case QMetaType::QVariantMap:
        return value.toMap().isEmpty();
    default:
        return !value.isValid();
    }
}

/// The values of a record, in words where they have names. Empty ones are left out, and so is what other parts tell.
template <class Record>
std::vector<Fact> FactsOf(Record const& record)
{
    std::vector<Fact> facts;
    for (DescribedColumn const& described : ReferenceOf<Record>().columns) {
        bool const isPrivate = described.kind == ColumnKind::Properties || described.kind == ColumnKind::Links;
        RecordColumn<Record> const* const column = FindRecordColumn<Record>(described.name);
        if (isPrivate || column == nullptr || !column->isReceived() || column->isSecret())
            continue;
        QVariant const value = column->Get(record);
        if (!IsEmpty(value))
            facts.push_back(
                {described.name, value, described.names ? described.names->InWords(value.toInt()) : QString()});
    }
    return facts;
}

char const* KindOf(FileConfiguration const& file)
{
    switch (file.fileType) {
    case FileConfigurationTypeGenerated:
        return "generated file";
    case FileConfigurationTypeBase:
        return "base file";
    default:
        return "file";
    }
}

/// Returns the form in which a name is, if it has more than one.
QString UnicodeForm(QString const& name)
{
    QString const composed = name.normalized(QString::NormalizationForm_C);
    if (composed == name.normalized(QString::NormalizationForm_D))
        return {};
    return name == composed ? QStringLiteral(" in NFC") : QStringLiteral(" not in NFC");
}

class Explainer
{
public:
    Explainer(std::shared_ptr<IDatabaseFactory> const& store, ExplanationRequest const& request)
        : _managers(store)
        , _statements(store)
        , _request(request)
    {}

    std::optional<Explanation> Explain()
    {
        if (!_FindRows())
            return std::nullopt;
        _explanation.isOnRecord = _IsFound();
        _ExplainPlace();
        _ExplainRows();
        _ExplainFoldersAbove();
        _ExplainOwners();
        _ExplainLinks();
        _ExplainLinking();
        _ExplainGenerated();
        _ExplainDisk();
        _ExplainNeighbours();
        return std::move(_explanation);
    }

private:
    ExplanationPart& _Begin(char const* code, QString const& title)
    {
        _explanation.parts.push_back({code, title, {}});
        return _explanation.parts.back();
    }

    void _AddIfAny(ExplanationPart const& part)
    {
        if (!part.facts.empty())
            _explanation.parts.push_back(part);
    }

    void _Hinder(char const* code, QString const& text) { _explanation.hindrances.push_back({code, text}); }

    /// Returns false if there is nothing to explain.
    bool _FindRows()
    {
        switch (_request.by) {
        case By::ClientPath:
            _explanation.path = _request.path;
            break;
        case By::ServerPath:
            return _FindByServerPath();
        case By::FolderId:
            return _TakeFolder(_managers.folders->GetFolderConfigurationById(_request.id));
        case By::FileId:
            return _TakeFile(_managers.files->GetFileConfigurationById(_request.id));
        case By::GeneratedFileId:
            return _TakeFile(_managers.files->GetGeneratedFileConfigurationById(_request.id));
        case By::BaseFileId:
            return _TakeFile(_BaseFile(_request.id));
        }
        _FindByClientPath();
        if (!_IsFound())
            _FollowLinks();
        return true;
    }

    bool _IsFound() const { return !_folders.empty() || !_files.empty(); }

    void _FindByClientPath()
    {
        for (int const id : _Ids(Folders, "clientPath = :text", _explanation.path))
            _folders.push_back(_managers.folders->GetFolderConfigurationById(id));
        for (int const id : _Ids(Files, "clientPath = :text", _explanation.path))
            _files.push_back(_managers.files->GetFileConfigurationById(id));
        for (int const id : _Ids(GeneratedFiles, "clientPath = :text", _explanation.path))
            _files.push_back(_managers.files->GetGeneratedFileConfigurationById(id));
        if (_MayReadAll(BaseFiles)) {
            for (FileConfiguration const& file : _managers.files->GetAll(FileConfigurationTypeBase)) {
                if (file.clientPath == _explanation.path)
                    _files.push_back(file);
            }
        }
    }

    /// Records have paths as they were given and read, so what is behind a symbolic link may be on record by another
    /// path.
    void _FollowLinks()
    {
        QString const given = _explanation.path;
        RootRule const rule(given, _Roots());
        QString leadsTo = ResolvedAbove(given);
        QStringList others = _PathsInRoots(leadsTo);
        if (!rule.root && others.isEmpty()) { // in a root, a link is itself what is asked for
            QString const target = QFileInfo(given).canonicalFilePath();
            leadsTo = target.isEmpty() ? leadsTo : target;
            others = _PathsInRoots(leadsTo);
        }
        others.removeAll(given);
        for (QString const& other : qAsConst(others)) {
            _explanation.path = other;
            _FindByClientPath();
            if (_IsFound())
                break;
        }
        if (!_IsFound())
            _explanation.path = rule.root || others.isEmpty() ? given : others.first();

        bool const isElsewhere = _explanation.path != given;
        int const rootLength = rule.root ? int(rule.root->getClientPath().size()) : 0;
        QString link = FirstLinkOf(given, rootLength);
        if (!isElsewhere && (link.isEmpty() || link == given))
            return;
        if (link.isEmpty())
            link = FirstLinkOf(_explanation.path);
        ExplanationPart& part = _BeginLookup(given);
        part.facts.push_back({QStringLiteral("symbolicLink"), link, {}});
        part.facts.push_back({QStringLiteral("leadsTo"), leadsTo, {}});
        if (!isElsewhere && rule.root)
            _Hinder("behind-link",
                    QStringLiteral("it lies behind the symbolic link %1, which is not followed").arg(Quote(link)));
    }

    /// Returns the paths by which a path without links may be on record: those in roots, whose own paths may have
    /// links.
    QStringList _PathsInRoots(QString const& path)
    {
        QStringList paths;
        for (FolderConfiguration const& root : _Roots()) {
            QString const place = QFileInfo(root.getClientPath()).canonicalFilePath(); // empty if it is not on disk
            if (path == place)
                paths.append(root.getClientPath());
            else if (!place.isEmpty() && path.startsWith(EndingInSlash(place)))
                paths.append(EndingInSlash(root.getClientPath()) + path.mid(EndingInSlash(place).size()));
        }
        return paths;
    }

    /// The managers have base files in listings only.
    FileConfiguration _BaseFile(int id)
    {
        QVariant const root = _statements.Value(
            QStringLiteral("SELECT rootFolderId FROM BaseFileConfiguration WHERE id = :id"), {{":id", id}});
        if (root.isNull())
            return {};
        for (FileConfiguration const& file :
             _managers.files->GetFileConfigurationsByRootFolderId(root.toInt(), FileConfigurationTypeBase)) {
            if (file.id == id)
                return file;
        }
        return {};
    }

    bool _TakeFolder(FolderConfiguration const& folder)
    {
        if (folder.getId() == NoId)
            return false;
        _explanation.path = folder.getClientPath();
        _folders.push_back(folder);
        return true;
    }

    bool _TakeFile(FileConfiguration const& file)
    {
        if (file.id == NoId)
            return false;
        _explanation.path = file.clientPath;
        _files.push_back(file);
        return true;
    }

    /// No index has the paths of folders on the server, so they are looked up where they belong.
    bool _FindByServerPath()
    {
        for (int const id : _Ids(Files, "serverPath = :text", _request.path)) {
            if (_TakeFile(_managers.files->GetFileConfigurationById(id)))
                return true;
        }
        for (FolderConfiguration const& root : _Roots()) {
            QString const& serverRoot = root.getServerPath();
            if (!_request.path.startsWith(serverRoot))
                continue;
            FolderConfiguration const folder = _managers.folders->GetFolderConfigurationByClientPath(
                root.getClientPath() + _request.path.mid(serverRoot.size()));
            if (folder.getServerPath() == _request.path && _TakeFolder(folder))
                return true;
        }
        bool const isSearched = _MayReadAll(Folders);
        if (isSearched) {
            for (int const id : _Ids(Folders, "serverPath = :text", _request.path)) {
                if (_TakeFolder(_managers.folders->GetFolderConfigurationById(id)))
                    return true;
            }
        }
        return _TakeUnknownServerPath(isSearched);
    }

    /// What is not on record is explained by the path on this computer that belongs to the one on the server.
    bool _TakeUnknownServerPath(bool isSearched)
    {
        std::optional<FolderConfiguration> nearest;
        for (FolderConfiguration const& root : _Roots()) {
            bool const isNearer = !nearest || root.getServerPath().size() > nearest->getServerPath().size();
            if (isNearer && _request.path.startsWith(EndingInSlash(root.getServerPath())))
                nearest = root;
        }
        if (!nearest)
            return false;
        _explanation.path =
            EndingInSlash(nearest->getClientPath()) + _request.path.mid(EndingInSlash(nearest->getServerPath()).size());
        _FindByClientPath();
        if (_IsFound()) // with another path on the server
            return false;
        ExplanationPart& part = _BeginLookup(_request.path);
        if (!isSearched)
            part.facts.push_back({QStringLiteral("not searched"),
                                  {},
                                  QStringLiteral("it takes reading all folders, which --thorough does")});
        return true;
    }

    /// Tells that another path is explained than the one that was given.
    ExplanationPart& _BeginLookup(QString const& given)
    {
        ExplanationPart& part = _Begin("lookup", QStringLiteral("Which path was looked up?"));
        part.facts.push_back({QStringLiteral("given"), given, {}});
        part.facts.push_back({QStringLiteral("lookedUp"), _explanation.path, {}});
        return part;
    }

    QVector<int> _Ids(char const* table, char const* condition, QVariant const& value)
    {
        QVector<int> ids;
        _statements.Read(QStringLiteral("SELECT id FROM %1 WHERE %2 ORDER BY id").arg(Word(table), Word(condition)),
                         {{":text", value}},
                         [&](IQSqlQueryWrapper& row) { ids.append(row.value(0).toInt()); });
        return ids;
    }

    bool _MayReadAll(char const* table)
    {
        return _request.isThorough ||
               _statements.Value(QStringLiteral("SELECT max(id) FROM ") + Word(table)).toInt() <= RowsOfASmallTable;
    }

    QVector<FolderConfiguration> const& _Roots()
    {
        if (!_roots)
            _roots = _managers.folders->GetAllRootFolders();
        return *_roots;
    }

    void _ExplainPlace()
    {
        QString const& path = _explanation.path;
        RootRule const rule(path, _Roots());
        ExplanationPart& part = _Begin("place", QStringLiteral("Does it lie in a root?"));
        bool const isInside = _managers.folders->IsInExistingClientFolder(path, NoId, false);
        bool const isInsideByOption = _managers.folders->IsInExistingClientFolder(path, NoId, true);
        part.facts.push_back({QStringLiteral("inside"), isInside, {}});
        part.facts.push_back({QStringLiteral("rule"), rule.sentence, {}});
        if (rule.isTemporary)
            _Hinder("temporary", QStringLiteral("its path marks a temporary file"));
        else if (!isInside)
            _Hinder("outside", QStringLiteral("it lies in no root"));
        if (!rule.root)
            return;
        _root = rule.root;
        part.facts.push_back({QStringLiteral("rootId"), _root->getId(), {}});
        part.facts.push_back({QStringLiteral("root"), _root->getClientPath(), {}});
        part.facts.push_back({QStringLiteral("insideByFolderOption"), isInsideByOption, {}});
        ValueNames const* const options = NamesOfValues<FolderConfiguration>(QStringLiteral("folderOption"));
        part.facts.push_back(
            {QStringLiteral("folderOption"), _root->getFolderOption(), options->InWords(_root->getFolderOption())});
        if (rule.hasOtherCase && !_explanation.isOnRecord)
            _Hinder(
                "other-case",
                QStringLiteral("its path differs in case from that of %1, and records are found by their exact path")
                    .arg(NameOfRoot(*_root)));
    }

    void _ExplainRows()
    {
        for (FolderConfiguration const& folder : _folders) {
            _Begin("record", QStringLiteral("Folder %1").arg(folder.getId())).facts = FactsOf(folder);
            _ExplainStatus<FolderConfiguration>("folder", folder.getSyncStatus());
        }
        for (FileConfiguration const& file : _files) {
            QString title = QStringLiteral("%1 %2").arg(Word(KindOf(file)), QString::number(file.id));
            title[0] = title.at(0).toUpper();
            _Begin("record", title).facts = FactsOf(file);
            _ExplainStatus<FileConfiguration>(KindOf(file), file.getSyncStatus());
        }
        if (!_explanation.isOnRecord)
            _Hinder("not-recorded", QStringLiteral("it is not on record"));
        if (_folders.size() + _files.size() > 1)
            _Hinder("twin", QStringLiteral("%1 rows have this path").arg(_folders.size() + _files.size()));
    }

    /// The library names no status of what is in sync: the client's own values say that.
    template <class Record>
    void _ExplainStatus(char const* kind, int status)
    {
        ValueNames const* const names = NamesOfValues<Record>(QStringLiteral("syncStatus"));
        QString const words = names->InWords(status);
        if (words == QString::number(status))
            _explanation.clientsStatus = status;
        else
            _Hinder("status", QStringLiteral("the status of the %1 is %2").arg(Word(kind), words));
    }

    /// The folder that holds the path, by the row or, without one, the nearest one on record.
    int _HoldingFolder()
    {
        if (!_folders.empty())
            return _folders.front().getParentId();
        if (!_files.empty())
            return _files.front().folderConfigurationId;
        for (QString path = FolderOf(_explanation.path); !path.isEmpty(); path = FolderOf(path)) {
            FolderConfiguration const folder = _managers.folders->GetFolderConfigurationByClientPath(path);
            if (folder.getId() != NoId)
                return folder.getId();
            if (path == QLatin1String("/"))
                break;
        }
        return NoId;
    }

    void _ExplainFoldersAbove()
    {
        ExplanationPart part{"folders",
                             _explanation.isOnRecord ? QStringLiteral("Which folders hold it?")
                                                     : QStringLiteral("Which folders above it are on record?"),
                             {}};
        bool const isRoot = !_folders.empty() && _folders.front().isRoot();
        int id = _HoldingFolder();
        if (!isRoot && id != NoId)
            _holder = id;
        QSet<int> passed;
        if (!_folders.empty())
            passed.insert(_folders.front().getId());
        for (bool isTop = isRoot || id == NoId; !isTop;) {
            FolderConfiguration const folder = _managers.folders->GetFolderConfigurationById(id);
            if (folder.getId() == NoId) {
                part.facts.push_back({QStringLiteral("missing"), id, NotOnRecord(id)});
                _Hinder("no-folder", QStringLiteral("the folder %1 above it is not on record").arg(id));
                break;
            }
            part.facts.push_back({folder.isRoot() ? QStringLiteral("root") : QStringLiteral("folder"),
                                  id,
                                  IdAndName(id, folder.getClientPath())});
            _above.push_back(folder);
            if (passed.contains(id)) {
                _Hinder("ring", QStringLiteral("the folders above it form a ring"));
                break;
            }
            passed.insert(id);
            isTop = folder.isRoot();
            id = folder.getParentId();
        }
        if (_explanation.isOnRecord && !isRoot && part.facts.empty())
            _Hinder("no-folder", QStringLiteral("no folder holds it"));
        _AddIfAny(part);
    }

    /// The folder whose account, product and schedule count.
    FolderConfiguration _OwningFolder() const
    {
        if (!_folders.empty())
            return _folders.front();
        if (!_above.empty())
            return _above.front();
        return _root ? *_root : FolderConfiguration();
    }

    void _ExplainOwners()
    {
        FolderConfiguration const folder = _OwningFolder();
        if (folder.getId() == NoId)
            return;
        ExplanationPart& part = _Begin("owners", QStringLiteral("Whose is it, and when is it synchronised?"));
        _ExplainAccount(part, folder.getAuthenticationId());
        int const product = _files.empty() ? folder.getProductConfigurationId() : _files.front().productConfigurationId;
        if (product != NoId) {
            ProductConfiguration const record = _managers.products->GetProductConfigurationById(product);
            part.facts.push_back(
                {QStringLiteral("product"),
                 product,
                 record.getId() == NoId ? NotOnRecord(product) : IdAndName(product, record.getName())});
        }
        _ExplainSchedule(part, folder);
    }

    void _ExplainAccount(ExplanationPart& part, int id)
    {
        AuthenticationConfiguration const account = _managers.accounts->GetAuthenticationConfigurationById(id);
        if (account.getId() == NoId) {
            part.facts.push_back(
                {QStringLiteral("account"), id, id == NoId ? QStringLiteral("none") : NotOnRecord(id)});
            _Hinder("no-account",
                    id == NoId ? QStringLiteral("it has no account")
                               : QStringLiteral("its account %1 is not on record").arg(id));
            return;
        }
        part.facts.push_back({QStringLiteral("account"), id, IdAndName(id, NameOf(account))});
        int const serverId = account.getServerId();
        ServerConfiguration const server = _managers.servers->GetServerConfigById(serverId);
        bool const isKnown = server.getId() != NoId;
        part.facts.push_back({QStringLiteral("server"),
                              serverId,
                              isKnown ? IdAndName(serverId, NameOf(server)) : NotOnRecord(serverId)});
        if (!isKnown)
            _Hinder("no-server", QStringLiteral("the server %1 of its account is not on record").arg(serverId));
    }

    /// A folder without a schedule has that of the folders above it, or else the default schedule.
    void _ExplainSchedule(ExplanationPart& part, FolderConfiguration const& folder)
    {
        std::vector<FolderConfiguration> folders{folder};
        folders.insert(folders.end(), _above.begin(), _above.end());
        ScheduleEntry schedule = _managers.schedules->GetDefaultScheduleEntry();
        QString owner = QStringLiteral("the default schedule");
        for (FolderConfiguration const& candidate : folders) {
            QVector<int> const ids = _Ids(Schedules, "folderConfigurationId = :text", candidate.getId());
            if (ids.isEmpty())
                continue;
            schedule = _managers.schedules->GetScheduleEntryById(ids.front());
            owner = QStringLiteral("that of folder ") + IdAndName(candidate.getId(), candidate.getClientPath());
            break;
        }
        if (schedule.getId() == NoId) {
            part.facts.push_back({QStringLiteral("schedule"), {}, QStringLiteral("none")});
            return;
        }
        part.facts.push_back({QStringLiteral("schedule"),
                              schedule.getId(),
                              QStringLiteral("%1, %2").arg(QString::number(schedule.getId()), owner)});
        for (Fact const& fact : FactsOf(schedule)) {
            if (fact.name != QLatin1String("id") && fact.name != QLatin1String("folderConfigurationId"))
                part.facts.push_back(fact);
        }
    }

    void _ExplainLinks()
    {
        ExplanationPart part{"links", QStringLiteral("What does it link to?"), {}};
        for (FileConfiguration const& file : _files) {
            for (FileLink const& link : file.fileLinks) {
                FileConfiguration const target = _managers.files->GetFileConfiguration(link, file.clientPath);
                bool const isKnown = target.id != NoId;
                part.facts.push_back({QStringLiteral("link"),
                                      isKnown ? QVariant(target.id) : QVariant(),
                                      isKnown ? IdAndName(target.id, target.clientPath)
                                              : Quote(link.path) + QStringLiteral(", which is not on record")});
            }
        }
        _AddIfAny(part);
    }

    /// No index has links, so the whole table is read; the documents that contain the digits of the id are few.
    void _ExplainLinking()
    {
        ExplanationPart part{"linked-from", QStringLiteral("What links to it?"), {}};
        for (FileConfiguration const& file : _files) {
            if (file.fileType != FileConfigurationTypeFile)
                continue;
            if (!_MayReadAll(Files)) {
                part.facts.push_back({QStringLiteral("not searched"),
                                      {},
                                      QStringLiteral("it takes reading all files, which --thorough does")});
                break;
            }
            _statements.Read(
                QStringLiteral("SELECT id, clientPath, fileLinks FROM FileConfiguration WHERE fileLinks "
                               "<> '' AND fileLinks LIKE '%' || :id || '%' ORDER BY id"),
                {{":id", QString::number(file.id)}},
                [&](IQSqlQueryWrapper& row) {
                    QDateTime date;
                    for (FileLink const& link : ReadFileLinks(row.value(2).toString(), date)) {
                        if (link.fileId != file.id)
                            continue;
                        int const id = row.value(0).toInt();
                        part.facts.push_back({QStringLiteral("file"), id, IdAndName(id, row.value(1).toString())});
                        break;
                    }
                });
        }
        _AddIfAny(part);
    }

    void _ExplainGenerated()
    {
        ExplanationPart generated{"generated", QStringLiteral("Which files were generated from it?"), {}};
        ExplanationPart source{"source", QStringLiteral("What was it made from?"), {}};
        for (FileConfiguration const& file : _files) {
            if (file.fileType == FileConfigurationTypeFile) {
                for (FileConfiguration const& made :
                     _managers.files->GetGeneratedFileConfigurationsByParentFileId(file.id))
                    generated.facts.push_back({QStringLiteral("file"), made.id, IdAndName(made.id, made.clientPath)});
                continue;
            }
            FileConfiguration const parent = _managers.files->GetFileConfigurationById(file.parentFileId);
            bool const isKnown = parent.id != NoId;
            source.facts.push_back(
                {QStringLiteral("file"),
                 file.parentFileId,
                 isKnown ? IdAndName(parent.id, parent.clientPath) : NotOnRecord(file.parentFileId)});
            if (!isKnown)
                _Hinder("no-source", QStringLiteral("the file that it was made from is not on record"));
        }
        _AddIfAny(source);
        _AddIfAny(generated);
    }

    void _ExplainDisk()
    {
        DiskEntry const entry = DiskEntry::At(_explanation.path);
        ExplanationPart& part = _Begin("disk", QStringLiteral("What stands on disk now?"));
        part.facts.push_back({QStringLiteral("kind"), entry.KindInWords(), {}});
        bool const isFile = entry.kind == DiskEntry::Kind::File || entry.kind == DiskEntry::Kind::Link;
        if (isFile) {
            part.facts.push_back({QStringLiteral("size"), entry.size, {}});
            part.facts.push_back({QStringLiteral("lastModifiedDateTime"),
                                  QDateTime::fromMSecsSinceEpoch(entry.modifiedMsec, Qt::UTC),
                                  {}});
        }
        if (!_explanation.isOnRecord) {
            _ExplainLeavingOut(entry);
            return;
        }
        QStringList differences;
        auto const differ = [&](char const* code, QString const& difference, QString const& hindrance) {
            differences.append(difference);
            _Hinder(code, hindrance);
        };
        if (entry.kind == DiskEntry::Kind::Missing)
            differ("missing", QStringLiteral("missing"), QStringLiteral("it is missing on disk"));
        else if (entry.kind == DiskEntry::Kind::Unknown)
            differ("unreadable", QStringLiteral("unknown"), QStringLiteral("what stands on disk cannot be examined"));
        else if (_files.empty() ? entry.kind != DiskEntry::Kind::Folder : !isFile)
            differ("other-kind", QStringLiteral("other kind"), QStringLiteral("another kind of entry stands on disk"));
        else if (!_files.empty())
            _CompareFile(_files.front(), entry, differ);
        part.facts.push_back({QStringLiteral("comparedWithRecord"),
                              differences.isEmpty() ? QStringLiteral("same") : differences.join(QStringLiteral(", ")),
                              {}});
    }

    /// A scan records files, folders and links to files.
    void _ExplainLeavingOut(DiskEntry const& entry)
    {
        QFileInfo const target(_explanation.path);
        if (!_root)
            return;
        if (entry.kind == DiskEntry::Kind::Special)
            _Hinder("special-file", QStringLiteral("it is neither a file nor a folder"));
        else if (entry.kind == DiskEntry::Kind::Link && !target.exists())
            _Hinder("link-to-nothing", QStringLiteral("it is a symbolic link to nothing"));
        else if (entry.kind == DiskEntry::Kind::Link && target.isDir())
            _Hinder("link-to-folder", QStringLiteral("it is a symbolic link to a folder, which is not followed"));
    }

    template <class Differ>
    static void _CompareFile(FileConfiguration const& file, DiskEntry const& entry, Differ const& differ)
    {
        if (file.size != entry.size)
            differ("other-size",
                   QStringLiteral("other size"),
                   QStringLiteral("its size on disk is %1 instead of %2 bytes").arg(entry.size).arg(file.size));
        qint64 const recorded = file.lastModifiedDateTime.toMSecsSinceEpoch();
        if (!file.lastModifiedDateTime.isValid() || recorded < entry.modifiedMsec)
            differ("newer", QStringLiteral("newer"), QStringLiteral("it has changed on disk since it was recorded"));
        else if (recorded > entry.modifiedMsec)
            differ("older", QStringLiteral("older"), QStringLiteral("it is older on disk than on record"));
    }

    /// Looks in the folder above for names that a file system or a server may take for the same.
    void _ExplainNeighbours()
    {
        if (!_holder)
            return;
        QString const folder = _above.empty() ? FolderOf(_explanation.path) : _above.front().getClientPath();
        // Below the nearest folder on record, the next name of the path is the first one that is not on record.
        QString const rest = _explanation.isOnRecord ? _explanation.path.mid(FolderOf(_explanation.path).size())
                                                     : _explanation.path.mid(folder.size());
        QString const name = rest.section(QLatin1Char('/'), 0, 0, QString::SectionSkipEmpty);
        ExplanationPart part{"neighbours", QStringLiteral("Which neighbours differ only in case or Unicode form?"), {}};
        QString const folded = Folded(name);
        auto const isAlike = [&](QString const& other) { return other != name && Folded(other) == folded; };
        for (char const* statement : {"SELECT id, name FROM FolderConfiguration WHERE parentId = :folder",
                                      "SELECT id, name FROM FileConfiguration WHERE folderConfigurationId = :folder"})
            _statements.Read(Word(statement), {{":folder", *_holder}}, [&](IQSqlQueryWrapper& row) {
                int const id = row.value(0).toInt();
                QString const other = row.value(1).toString();
                if (isAlike(other))
                    part.facts.push_back({QStringLiteral("on record"), id, IdAndName(id, other) + UnicodeForm(other)});
            });
        for (QString const& other : NamesOnDisk(folder)) {
            if (isAlike(other))
                part.facts.push_back({QStringLiteral("on disk"), other, Quote(other) + UnicodeForm(other)});
        }
        _AddIfAny(part);
    }

    Managers const _managers;
    StoreStatements _statements;
    ExplanationRequest const _request;
    Explanation _explanation;
    std::vector<FolderConfiguration> _folders;
    std::vector<FileConfiguration> _files;
    std::optional<QVector<FolderConfiguration>> _roots;
    std::optional<FolderConfiguration> _root;
    /// The id of the folder that holds the path; it need not be on record.
    std::optional<int> _holder;
    /// From the folder that holds the path up to the root.
    std::vector<FolderConfiguration> _above;
};

QString JoinedWithAnd(std::vector<Hindrance> const& hindrances)
{
    QString text;
    for (std::size_t i = 0; i < hindrances.size(); ++i) {
        bool const isLast = i + 1 == hindrances.size();
        text += i == 0 ? QString() : isLast ? QStringLiteral(", and ") : QStringLiteral(", ");
        text += hindrances[i].text;
    }
    return text;
}

} // namespace

QString Explanation::Conclusion() const
{
    if (!hindrances.empty())
        return QStringLiteral("Not in sync: %1.").arg(JoinedWithAnd(hindrances));
    if (clientsStatus)
        return QStringLiteral("Nothing on record or on disk keeps it from being in sync, unless its status %1 does, "
                              "which is the client's own.")
            .arg(*clientsStatus);
    return QStringLiteral("Nothing on record or on disk keeps it from being in sync.");
}

std::optional<Explanation> Explain(std::shared_ptr<IDatabaseFactory> const& store, ExplanationRequest const& request)
{
    return Explainer(store, request).Explain();
}

} // namespace tandry::findings
