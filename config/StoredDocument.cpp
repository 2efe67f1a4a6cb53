#include "config/StoredDocument.h"

#include "config/XmlLimits.h"

#include <QDomDocument>
#include <QXmlInputSource>

namespace sync::config {

// The source that the document reads a text from by itself.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED

namespace {

/// Hands out a text as long as it stays within the limits, and then ends it. So what is counted is what the reader
/// reads, in one pass.
class LimitedSource : public QXmlInputSource
{
public:
    explicit LimitedSource(QString const& text) { setData(text); }

    /// The reader asks for the next character when it has accepted the one before.
    QChar next() override
    {
        if (!_isWithinLimits || !(_isWithinLimits = _limits.Take(_handedOut)))
            return QChar(EndOfDocument);
        _handedOut = QXmlInputSource::next();
        return _handedOut;
    }

    bool isWithinLimits() const { return _isWithinLimits; }

private:
    XmlLimits _limits;
    bool _isWithinLimits = true;
    QChar _handedOut = QChar(EndOfData); // no character at first, and none that counts
};

} // namespace

LoadedDocument LoadStoredDocument(QString const& text, QDomDocument& document)
{
    LimitedSource source(text);
    bool const isWhole = document.setContent(&source, false);
    if (!source.isWithinLimits()) {
        document.clear();
        return LoadedDocument::OverLimits;
    }
    return isWhole ? LoadedDocument::Whole : LoadedDocument::BrokenOff;
}

QT_WARNING_POP

} // namespace sync::config
