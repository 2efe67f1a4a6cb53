#include "config/StoredDocument.h"

#include "config/XmlLimits.h"

#include <QDomDocument>
#include <QRegularExpression>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

namespace sync::config {

// Qt 5.15 says that this reader is going, but its document reads with no other. Qt 6 has it in a module of its own.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

namespace {

constexpr uint LastUnit = 0xFFFF;

/// Returns the reference to a character beyond 16 bits that begins there, as Qt 5 reads it: cut off to 16 bits, in the
/// same number of digits. Returns an empty text if there is none.
QString CutReferenceAt(QString const& text, int at)
{
    static QRegularExpression const pattern(QStringLiteral("&#(?:x([0-9A-Fa-f]{5,})|([0-9]{5,}));"));
    auto const match =
        pattern.match(text, at, QRegularExpression::NormalMatch, QRegularExpression::AnchoredMatchOption);
    if (!match.hasMatch())
        return {};
    constexpr int hexadecimal = 1;
    constexpr int decimal = 2;
    int const form = match.capturedLength(hexadecimal) > 0 ? hexadecimal : decimal;
    int const base = form == hexadecimal ? 16 : 10;
    bool fits = false;
    uint const character = match.captured(form).toUInt(&fits, base);
    if (!fits || character <= LastUnit)
        return {};
    QString const digits =
        QStringLiteral("%1").arg(character & LastUnit, int(match.capturedLength(form)), base, QLatin1Char('0'));
    return match.captured().replace(match.captured(form), digits);
}

/// Hands out a text as long as it stays within the limits, and then ends it. So what is counted is what the reader
/// reads, in one pass.
class LimitedSource : public QXmlInputSource
{
public:
    explicit LimitedSource(QString const& text)
        : _text(text)
    {
        setData(text);
    }

    /// The reader asks for the next character when it has accepted the one before.
    QChar next() override
    {
        if (!_isWithinLimits || !(_isWithinLimits = _limits.Take(_handedOut)))
            return QChar(EndOfDocument);
        _handedOut = QXmlInputSource::next();
        if constexpr (QT_VERSION_MAJOR > 5)
            CutReferences();
        ++_position;
        return _handedOut;
    }

    bool isWithinLimits() const { return _isWithinLimits; }
    /// Whether the last accepted character is neither markup nor part of it.
    bool isInContent() const { return _limits.isInContent(); }

private:
    /// Replaces the character that is handed out if it is part of a reference that Qt 5 cuts off.
    void CutReferences()
    {
        if (_handedOut == QLatin1Char('&') && _limits.takesReferences()) {
            _cut = CutReferenceAt(_text, _position);
            _cutAt = _position;
        }
        if (_position - _cutAt < _cut.size())
            _handedOut = _cut.at(_position - _cutAt);
    }

    QString const _text;
    int _position = 0;
    QString _cut;
    int _cutAt = 0;
    XmlLimits _limits;
    bool _isWithinLimits = true;
    QChar _handedOut = QChar(EndOfData); // no character at first, and none that counts
};

/// Makes a document of what the reader reports, with the rules by which the document of Qt 5 is made. That of Qt 6 has
/// another reader, which accepts fewer texts and reads others differently: a client would read fewer properties and
/// then write only these.
class DocumentBuilder : public QXmlDefaultHandler
{
public:
    DocumentBuilder(QDomDocument& document, LimitedSource const& source)
        : _document(document)
        , _source(source)
        , _parent(document)
    {}

    /// Only comments and processing instructions can precede the document type.
    bool startDTD(QString const& name, QString const& publicId, QString const& systemId) override
    {
        QDomDocument document(QDomImplementation().createDocumentType(name, publicId, systemId));
        for (QDomNode node = _document.firstChild(); !node.isNull(); node = node.nextSibling())
            document.appendChild(document.importNode(node, true));
        _document = document;
        _parent = document;
        return true;
    }

    bool startElement(QString const&, QString const&, QString const& name, QXmlAttributes const& attributes) override
    {
        QDomElement element = _document.createElement(name);
        if (!Append(element))
            return false;
        for (int i = 0; i < attributes.count(); ++i)
            element.setAttribute(attributes.qName(i), attributes.value(i)); // of equal names, the last one counts
        _parent = element;
        return true;
    }

    bool endElement(QString const&, QString const&, QString const&) override
    {
        _parent = _parent.parentNode();
        return true;
    }

    bool characters(QString const& text) override
    {
        return Append(_isInSection ? _document.createCDATASection(text) : _document.createTextNode(text));
    }

    bool startCDATA() override
    {
        _isInSection = true;
        return true;
    }

    bool endCDATA() override
    {
        _isInSection = false;
        return true;
    }

    bool processingInstruction(QString const& target, QString const& data) override
    {
        return Append(_document.createProcessingInstruction(target, data));
    }

    bool comment(QString const& text) override { return Append(_document.createComment(text)); }

    /// In the value of an attribute and in a document type, an entity without a declaration leaves nothing.
    bool skippedEntity(QString const& name) override
    {
        return !_source.isInContent() || Append(_document.createEntityReference(name));
    }

private:
    /// A node is null if Qt refuses its name or text (`QDomImplementation::invalidDataPolicy`).
    bool Append(QDomNode const& node) { return !node.isNull() && !_parent.appendChild(node).isNull(); }

    QDomDocument& _document;
    LimitedSource const& _source;
    QDomNode _parent;
    bool _isInSection = false;
};

} // namespace

LoadedDocument LoadStoredDocument(QString const& text, QDomDocument& document)
{
    document = QDomDocument(QString()); // empty, but not null
    LimitedSource source(text);
    DocumentBuilder builder(document, source);
    QXmlSimpleReader reader;
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setFeature(QStringLiteral("http://trolltech.com/xml/features/report-whitespace-only-CharData"), false);
    reader.setContentHandler(&builder);
    reader.setLexicalHandler(&builder);
    reader.setErrorHandler(&builder);
    bool const isWhole = reader.parse(source);
    if (!source.isWithinLimits()) {
        document.clear();
        return LoadedDocument::OverLimits;
    }
    return isWhole ? LoadedDocument::Whole : LoadedDocument::BrokenOff;
}

QT_WARNING_POP

} // namespace sync::config
