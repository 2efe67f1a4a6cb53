#include "tools/findings/Documents.h"

#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"
#include "config/StoredDocument.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/Examination.h"
#include "tools/findings/Fix.h"
#include "tools/findings/PathText.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>
#include <QDir>
#include <QDomDocument>
#include <QHash>
#include <QStringList>

namespace tandry::findings {

using sync::config::FileLink;
using sync::config::LoadedDocument;
using sync::interf::IQSqlQueryWrapper;

namespace {

constexpr char const* NameValues = "nameValueProperties";
constexpr char const* Links = "fileLinks";

/// The columns with documents, all of a table in one pass.
struct DocumentColumns
{
    char const* table;
    std::vector<char const*> columns;
};

std::vector<DocumentColumns> const& AllDocumentColumns()
{
    static std::vector<DocumentColumns> const all{
        {Servers, {NameValues}},
        {Accounts, {NameValues}},
        {Products, {NameValues}},
        {Folders, {NameValues}},
        {Files, {NameValues, Links}},
        {GeneratedFiles, {NameValues, Links}},
        {BaseFiles, {NameValues, Links}},
    };
    return all;
}

/// Which files the links name, asked for once each.
class LinkTargets
{
public:
    explicit LinkTargets(StoreStatements& statements)
        : _statements(statements)
    {}

    bool Exists(int fileId)
    {
        auto known = _known.find(fileId);
        if (known == _known.end())
            known = _known.insert(
                fileId,
                !_statements.Value(QStringLiteral("SELECT 1 FROM FileConfiguration WHERE id = :id"), {{":id", fileId}})
                     .isNull());
        return *known;
    }

private:
    StoreStatements& _statements;
    QHash<int, bool> _known;
};

LoadedDocument Load(QString const& text)
{
    QDomDocument document;
    return sync::config::LoadStoredDocument(text, document);
}

/// Adds the row if its document is not whole. Most documents have the form that the library gives them, and are then
/// read in a fraction of the time.
class DocumentReader
{
public:
    explicit DocumentReader(StoreStatements& statements)
        : _targets(statements)
    {}

    void Read(FoundRow const& row, char const* column, QString const& text)
    {
        if (text.isEmpty())
            return;
        bool const hasLinks = column == Links;
        QDateTime date;
        auto links = hasLinks ? sync::config::ReadWrittenFileLinks(text, date) : std::nullopt;
        if (!links && (hasLinks || !sync::config::ReadWrittenNameValues(text)) && !_IsWhole(row, column, text))
            return;
        if (hasLinks)
            _ReadLinks(row, links ? *links : sync::config::ReadFileLinks(text, date));
    }

    DocumentFindings findings;

private:
    bool _IsWhole(FoundRow row, char const* column, QString const& text)
    {
        LoadedDocument const loaded = Load(text);
        if (loaded == LoadedDocument::Whole)
            return true;
        row.detail = QLatin1String(column);
        (loaded == LoadedDocument::OverLimits ? findings.overLimits : findings.broken).push_back(row);
        return false;
    }

    /// Ids below 1 name no row.
    void _ReadLinks(FoundRow row, QList<FileLink> const& links)
    {
        QStringList missing;
        for (FileLink const& link : links) {
            if (link.fileId > 0 && !_targets.Exists(link.fileId))
                missing.append(QString::number(link.fileId));
        }
        row.detail = QStringLiteral("FileId ") + missing.join(QStringLiteral(", "));
        if (!missing.isEmpty())
            findings.linksToNothing.push_back(row);
    }

    LinkTargets _targets;
};

QString TextIn(Examination& examination, FoundRow const& row, QString const& column)
{
    return examination.statements()
        .Value(QStringLiteral("SELECT %2 FROM %1 WHERE id = :id").arg(row.table, column), {{":id", row.id.value_or(0)}})
        .toString();
}

void WriteText(Examination& examination, FoundRow const& row, QString const& column, QString const& text)
{
    examination.statements().Write(QStringLiteral("UPDATE %1 SET %2 = :text WHERE id = :id").arg(row.table, column),
                                   {{":text", text}, {":id", row.id.value_or(0)}});
}

/// Returns the id of the file at a link's path, looked up as the client does it; -1 if there is none.
int FileAt(Examination& examination, QString const& path, QString const& linkingPath)
{
    if (path.isEmpty())
        return -1;
    bool const isRelative = QDir::isRelativePath(path);
    QString const absolute = isRelative ? FolderOf(QDir::cleanPath(linkingPath)) + QLatin1Char('/') + path : path;
    QVariant const id =
        examination.statements().Value(QStringLiteral("SELECT min(id) FROM FileConfiguration WHERE clientPath = :path"),
                                       {{":path", QDir::cleanPath(absolute)}});
    return id.isNull() ? -1 : id.toInt();
}

/// True for rows with a document that says something.
QString HasDocument(std::vector<char const*> const& columns)
{
    QStringList conditions;
    for (char const* column : columns)
        conditions.append(QStringLiteral("(bad.%1 <> '' AND bad.%1 <> :empty)").arg(QLatin1String(column)));
    return conditions.join(QStringLiteral(" OR "));
}

} // namespace

DocumentFindings ExamineDocuments(Examination& examination)
{
    DocumentReader reader(examination.statements());
    for (auto const& [table, columns] : AllDocumentColumns()) {
        QStringList names;
        for (char const* column : columns)
            names.append(QLatin1String(column));
        examination.ReadRows(table,
                             HasDocument(columns),
                             names.join(QStringLiteral(", ")),
                             {{":empty", sync::config::WriteNameValues({})}},
                             [&, &columns = columns](FoundRow const& found, IQSqlQueryWrapper& row) {
                                 for (std::size_t i = 0; i < columns.size(); ++i)
                                     reader.Read(found, columns[i], row.value(2 + int(i)).toString());
                             });
    }
    return std::move(reader.findings);
}

void WriteDocumentsAnew(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed)
{
    for (FoundRow const& row : rows) {
        QString const text = TextIn(examination, row, row.detail);
        if (row.detail == QLatin1String(Links)) {
            QDateTime date;
            auto const links = sync::config::ReadFileLinks(text, date);
            WriteText(examination, row, row.detail, sync::config::WriteFileLinks(links, date));
        }
        else {
            WriteText(examination, row, row.detail, sync::config::WriteNameValues(sync::config::ReadNameValues(text)));
        }
        fixed.push_back({row, QStringLiteral("written anew with what could be read")});
    }
}

void ResolveLinks(Examination& examination, std::vector<FoundRow> const& rows, std::vector<FixedRow>& fixed)
{
    LinkTargets targets(examination.statements());
    for (FoundRow const& row : rows) {
        bool const hasChanged = ChangeLinks(examination, row, [&](int fileId, QString const& path) {
            return targets.Exists(fileId) ? fileId : FileAt(examination, path, row.name);
        });
        if (hasChanged)
            fixed.push_back({row, QStringLiteral("links resolved by their paths")});
    }
}

bool ChangeLinks(Examination& examination,
                 FoundRow const& row,
                 std::function<int(int fileId, QString const& path)> const& newId)
{
    QString const attribute = QStringLiteral("FileId");
    QDomDocument document;
    sync::config::LoadStoredDocument(TextIn(examination, row, QLatin1String(Links)), document);
    bool hasChanged = false;
    QDomElement link = document.documentElement().firstChildElement();
    for (; !link.isNull(); link = link.nextSiblingElement()) {
        int const fileId = link.attribute(attribute).toInt();
        int const changed = fileId > 0 ? newId(fileId, link.attribute(QStringLiteral("Path"))) : fileId;
        if (changed != fileId) {
            link.setAttribute(attribute, changed);
            hasChanged = true;
        }
    }
    if (hasChanged)
        WriteText(examination, row, QLatin1String(Links), document.toString(1));
    return hasChanged;
}

} // namespace tandry::findings
