#include "config/FileLinksDocument.h"

#include "config/StoredDocument.h"

#include <QDomDocument>

namespace sync::config {

namespace {

const QString FileLinksElement = QStringLiteral("FileLinks");
const QString FileLinkElement = QStringLiteral("FileLink");
const QString FileDate = QStringLiteral("FileDate");
const QString FileId = QStringLiteral("FileId");
const QString RefId = QStringLiteral("RefId");
const QString ServerFileId = QStringLiteral("ServerFileId");
const QString Path = QStringLiteral("Path");

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

    QDomDocument document;
    LoadStoredDocument(text, document);
    QDomElement const root = document.documentElement();
    date = QDateTime::fromString(root.attribute(FileDate), Qt::ISODate);
    date.setTimeSpec(Qt::UTC);

    for (QDomElement element = root.firstChildElement(); !element.isNull(); element = element.nextSiblingElement()) {
        FileLink link;
        link.fileId = element.attribute(FileId).toInt();
        link.refId = element.attribute(RefId);
        link.serverFileId = element.attribute(ServerFileId);
        link.path = element.attribute(Path);
        if (link.IsValid())
            links.append(link);
    }
    return links;
}

} // namespace sync::config
