#include "fuzz/DocumentAgreement.h"

#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"
#include "config/XmlLimits.h"
#include "fuzz/FuzzInput.h"

#include <QDomDocument>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <tuple>

namespace tandry::fuzz {

namespace {

using sync::config::FileLink;
using sync::config::XmlLimits;
using NameValues = QMap<QString, QString>;

} // namespace

// The steps with QDomDocument.

NameValues NameValuesByQt(QString const& text)
{
    NameValues properties;
    QDomDocument document(QStringLiteral("NameValueXml"));
    document.setContent(text);
    for (QDomNode node = document.documentElement().firstChild(); !node.isNull(); node = node.nextSibling())
        properties[node.nodeName()] = node.childNodes().at(0).nodeValue();
    return properties;
}

FileLinks FileLinksByQt(QString const& text)
{
    FileLinks read;
    if (text.isEmpty())
        return read;
    QDomDocument document;
    document.setContent(text);
    QDomElement const root = document.documentElement();
    read.date = QDateTime::fromString(root.attribute(QStringLiteral("FileDate")), Qt::ISODate);
    read.date.setTimeSpec(Qt::UTC);
    for (QDomElement element = root.firstChildElement(); !element.isNull(); element = element.nextSiblingElement()) {
        FileLink link;
        link.fileId = element.attribute(QStringLiteral("FileId")).toInt();
        link.refId = element.attribute(QStringLiteral("RefId"));
        link.serverFileId = element.attribute(QStringLiteral("ServerFileId"));
        link.path = element.attribute(QStringLiteral("Path"));
        if (link.IsValid())
            read.links.append(link);
    }
    return read;
}

namespace {

// The limits, measured with Qt's reader.

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

class LimitsHandler : public QXmlDefaultHandler
{
public:
    bool startElement(QString const&, QString const&, QString const&, QXmlAttributes const& attributes) override
    {
        exceeded = exceeded || ++_levels > XmlLimits::Levels || attributes.count() > XmlLimits::Attributes;
        return !exceeded;
    }

    bool endElement(QString const&, QString const&, QString const&) override
    {
        --_levels;
        return true;
    }

    bool exceeded = false;

private:
    int _levels = 0;
};

enum class Size
{
    WithinLimits,
    BeyondLimits,
    NotKnown,
};

Size SizeOf(QString const& text)
{
    // Qt's reader limits document types only by its stack and memory.
    if (text.contains(QLatin1String("<!EN")) ||
        (text.contains(QLatin1String("<!D")) && text.size() > XmlLimits::DocumentTypeSize))
        return Size::NotKnown;
    LimitsHandler handler;
    QXmlSimpleReader reader;
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setContentHandler(&handler);
    QXmlInputSource source;
    source.setData(text);
    reader.parse(source);
    return handler.exceeded ? Size::BeyondLimits : Size::WithinLimits;
}

QT_WARNING_POP

} // namespace

bool IsWithinLimits(QString const& text)
{
    return SizeOf(text) == Size::WithinLimits;
}

namespace {

// Equality that distinguishes a null text from an empty one.

bool Same(QString const& left, QString const& right)
{
    return left == right && left.isNull() == right.isNull();
}

bool Same(NameValues const& left, NameValues const& right)
{
    return left.size() == right.size() &&
           std::equal(left.keyValueBegin(),
                      left.keyValueEnd(),
                      right.keyValueBegin(),
                      [](auto const& a, auto const& b) { return Same(a.first, b.first) && Same(a.second, b.second); });
}

bool Same(FileLinks const& left, FileLinks const& right)
{
    return left.date == right.date && left.date.isValid() == right.date.isValid() &&
           left.date.timeSpec() == right.date.timeSpec() && left.links.size() == right.links.size() &&
           std::equal(left.links.begin(), left.links.end(), right.links.begin(), [](auto const& a, auto const& b) {
               return a.fileId == b.fileId && Same(a.refId, b.refId) && Same(a.serverFileId, b.serverFileId) &&
                      Same(a.path, b.path);
           });
}

template <class Read>
ReadAs RequireAgree(QString const& text,
                    std::optional<Read> const& written,
                    Read const& read,
                    Read (*byQt)(QString const&),
                    Read const& nothing)
{
    if (written) {
        Require(Same(*written, byQt(text)), "a document in the written form reads as Qt's document has it");
        Require(Same(*written, read), "a document in the written form is read as such");
        return ReadAs::Written;
    }
    Size const size = SizeOf(text);
    if (size == Size::WithinLimits)
        Require(Same(read, byQt(text)), "a document reads as Qt's document has it");
    else if (size == Size::BeyondLimits)
        Require(Same(read, nothing), "a document beyond the limits reads as empty");
    return ReadAs::Document;
}

} // namespace

ReadAs RequireNameValuesAgree(QString const& text)
{
    return RequireAgree(text,
                        sync::config::ReadWrittenNameValues(text),
                        sync::config::ReadNameValues(text),
                        NameValuesByQt,
                        NameValues());
}

ReadAs RequireFileLinksAgree(QString const& text)
{
    FileLinks read;
    read.links = sync::config::ReadFileLinks(text, read.date);
    std::optional<FileLinks> written;
    QDateTime date;
    if (auto const links = sync::config::ReadWrittenFileLinks(text, date))
        written = FileLinks{*links, date};
    FileLinks nothing;
    nothing.date.setTimeSpec(Qt::UTC);
    return RequireAgree(text, written, read, FileLinksByQt, nothing);
}

} // namespace tandry::fuzz
