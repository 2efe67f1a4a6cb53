#include "config/FileLinksDocument.h"

#include "config/IsoDate.h"
#include "config/StoredDocument.h"
#include "config/WrittenDocument.h"

#include <QDomDocument>

#include <array>
#include <utility>

namespace sync::config {

namespace {

const QString FileLinksElement = QStringLiteral("FileLinks");
const QString FileLinkElement = QStringLiteral("FileLink");
const QString FileDate = QStringLiteral("FileDate");
const QString FileId = QStringLiteral("FileId");
const QString RefId = QStringLiteral("RefId");
const QString ServerFileId = QStringLiteral("ServerFileId");
const QString Path = QStringLiteral("Path");

void AppendIfValid(QList<FileLink>& links, FileLink const& link)
{
    if (link.IsValid())
        links.append(link);
}

/// The four attributes of a link, each once, in the order in which they happened to be written.
bool TakeLinkAttributes(WrittenDocument& document, FileLink& link)
{
    QString id;
    std::array<std::pair<QString const&, QString&>, 4> const attributes{
        {{FileId, id}, {RefId, link.refId}, {ServerFileId, link.serverFileId}, {Path, link.path}}};
    unsigned missing = (1U << attributes.size()) - 1;
    while (missing != 0) {
        QStringView name;
        if (!document.Take(QLatin1String(" ")) || !document.TakeName(name) || !document.Take(QLatin1String("=\"")))
            return false;
        std::size_t which = 0;
        while (which < attributes.size() && attributes[which].first != name)
            ++which;
        if (which == attributes.size() || (missing & 1U << which) == 0 ||
            !document.TakeAttributeValue(attributes[which].second))
            return false;
        missing &= ~(1U << which);
    }
    link.fileId = id.toInt();
    return true;
}

} // namespace

QString WriteFileLinks(QList<FileLink> const& links, QDateTime const& date)
{
    if (links.isEmpty() && !date.isValid())
        return QStringLiteral(""); // what most files have: no document is made for it

    QDomDocument document;
    QDomElement root = document.createElement(FileLinksElement);
    document.appendChild(root);
    root.setAttribute(FileDate, date.toString(Qt::ISODate));

    for (FileLink const& link : links) {
        if (!link.IsValid())
            continue;
        QDomElement element = document.createElement(FileLinkElement);
        element.setAttribute(FileId, link.fileId);
        element.setAttribute(RefId, link.refId);
        element.setAttribute(ServerFileId, link.serverFileId);
        element.setAttribute(Path, link.path);
        root.appendChild(element);
    }
    return document.toString(1);
}

QList<FileLink> ReadFileLinks(QString const& text, QDateTime& date)
{
    QList<FileLink> links;
    if (text.isEmpty())
        return links;
    if (auto const written = ReadWrittenFileLinks(text, date))
        return *written;

    QDomDocument document;
    LoadStoredDocument(text, document);
    QDomElement const root = document.documentElement();
    date = ReadIsoDate(root.attribute(FileDate));
    for (QDomElement element = root.firstChildElement(); !element.isNull(); element = element.nextSiblingElement()) {
        FileLink link;
        link.fileId = element.attribute(FileId).toInt();
        link.refId = element.attribute(RefId);
        link.serverFileId = element.attribute(ServerFileId);
        link.path = element.attribute(Path);
        AppendIfValid(links, link);
    }
    return links;
}

std::optional<QList<FileLink>> ReadWrittenFileLinks(QString const& text, QDateTime& date)
{
    QList<FileLink> links;
    QString dateText;
    WrittenDocument document(text);
    if (!document.Take(QLatin1String("<FileLinks FileDate=\"")) || !document.TakeAttributeValue(dateText))
        return std::nullopt;
    if (!document.Take(QLatin1String("/>\n"))) {
        if (!document.Take(QLatin1String(">\n <FileLink")))
            return std::nullopt;
        do {
            FileLink link;
            if (!TakeLinkAttributes(document, link) || !document.Take(QLatin1String("/>\n")))
                return std::nullopt;
            AppendIfValid(links, link);
        } while (document.Take(QLatin1String(" <FileLink")));
        if (!document.Take(QLatin1String("</FileLinks>\n")))
            return std::nullopt;
    }
    if (!document.isAtEnd())
        return std::nullopt;
    date = ReadIsoDate(dateText);
    return links;
}

} // namespace sync::config
