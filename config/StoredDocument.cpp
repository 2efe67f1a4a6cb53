#include "config/StoredDocument.h"

#include <QDomDocument>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

namespace sync::config {

namespace {

/// Ours have two. Each level takes about 300 bytes of stack.
constexpr int MostLevels = 500;
/// Of the shortest tag that opens a level.
constexpr int TagSize = 3;

// The classes that the document itself reads with, so that both see the same levels.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

class LevelCounter : public QXmlDefaultHandler
{
public:
    bool startElement(QString const&, QString const&, QString const&, QXmlAttributes const&) override
    {
        return ++_level <= MostLevels;
    }

    bool endElement(QString const&, QString const&, QString const&) override
    {
        --_level;
        return true;
    }

    bool hasTooMany() const { return _level > MostLevels; }

private:
    int _level = 0;
};

bool NestsTooDeep(QString const& text)
{
    LevelCounter counter;
    QXmlSimpleReader reader;
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setContentHandler(&counter);
    QXmlInputSource source;
    source.setData(text);
    reader.parse(source);
    return counter.hasTooMany();
}

QT_WARNING_POP

} // namespace

void LoadStoredDocument(QString const& text, QDomDocument& document)
{
    if (text.size() <= MostLevels * TagSize || !NestsTooDeep(text))
        document.setContent(text);
}

} // namespace sync::config
