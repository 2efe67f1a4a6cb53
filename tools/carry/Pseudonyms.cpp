#include "tools/carry/Pseudonyms.h"

#include "config/CommonConstants.h"
#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"
#include "config/StoredDocument.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDomDocument>
#include <QMap>
#include <QMessageAuthenticationCode>
#include <QMetaType>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <array>

namespace tandry::carry {

using sync::config::ColumnKind;

namespace {

constexpr int MostCachedParts = 20'000;
constexpr int ShortestClass = 16;
constexpr QChar Slash = QLatin1Char('/');
constexpr QChar ComposedLetter(0xe9);    // é
constexpr QChar CombiningMark(0x301);    // behind an e, the same
constexpr QChar LetterOfOneForm(0x4e2d); // of a script without case and composed letters

QByteArray RandomKey()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), int(words.size()));
    return {reinterpret_cast<char const*>(words.data()), int(sizeof words)};
}

QByteArray Bytes(QString const& text)
{
    return {reinterpret_cast<char const*>(text.utf16()), text.size() * int(sizeof(QChar))};
}

int LengthClass(int length)
{
    int size = ShortestClass;
    while (size < length)
        size *= 2;
    return size;
}

bool IsWhole(QString const& document)
{
    QDomDocument loaded;
    return sync::config::LoadStoredDocument(document, loaded) == sync::config::LoadedDocument::Whole;
}

/// Parts that are no names: of a path, of a URL, and what the client adds to names.
bool IsKept(QString const& part)
{
    static QStringList const kept{QString(),
                                  QStringLiteral("."),
                                  QStringLiteral(".."),
                                  QStringLiteral("http:"),
                                  QStringLiteral("https:"),
                                  sync::config::SyncTempMarker,
                                  sync::config::SyncBackupMarker};
    return kept.contains(part);
}

} // namespace

Pseudonyms::Pseudonyms()
    : Pseudonyms(RandomKey())
{}

Pseudonyms::Pseudonyms(QByteArray key)
    : _key(std::move(key))
    , _parts(MostCachedParts)
{}

QVariant Pseudonyms::Of(ColumnKind kind, QVariant const& value)
{
    if (value.isNull())
        return value;
    if (value.userType() == QMetaType::QByteArray)
        return OfText(QString::fromLatin1(value.toByteArray().toHex())).toUtf8();
    if (value.userType() != QMetaType::QString)
        return value;
    QString const text = value.toString();
    if (kind == ColumnKind::Properties)
        return _OfProperties(text);
    if (kind == ColumnKind::Links)
        return _OfLinks(text);
    return OfText(text);
}

QString Pseudonyms::OfText(QString const& text)
{
    if (text.isEmpty())
        return text;
    QStringList parts = text.split(Slash);
    for (QString& part : parts)
        part = _OfPart(part);
    return parts.join(Slash);
}

QString Pseudonyms::_OfPart(QString const& part)
{
    if (IsKept(part))
        return part;
    if (QString const* const known = _parts.object(part))
        return *known;
    QString pseudonym;
    int done = 0;
    while (done <= part.size()) { // the names between markers
        int next = part.size();
        QString marker;
        for (QString const& candidate : {sync::config::SyncTempMarker, sync::config::SyncBackupMarker}) {
            int const found = part.indexOf(candidate, done);
            if (found >= 0 && found < next) {
                next = found;
                marker = candidate;
            }
        }
        if (next > done)
            pseudonym += _OfName(part.mid(done, next - done));
        pseudonym += marker;
        done = next + std::max(int(marker.size()), 1);
    }
    _parts.insert(part, new QString(pseudonym)); // owned by the cache
    return pseudonym;
}

QString Pseudonyms::_OfName(QString const& name) const
{
    QString const composed = name.normalized(QString::NormalizationForm_C);
    QString const decomposed = name.normalized(QString::NormalizationForm_D);
    // What names have in common that differ in case and form only.
    QString const folded = composed.toCaseFolded().normalized(QString::NormalizationForm_C);

    int const length = LengthClass(folded.size());
    QString pseudonym = _Letters(folded, length);
    if (composed != folded) {
        QString const choice = _Letters(QStringLiteral("case ") + composed, length);
        for (int i = 0; i < length; ++i) {
            if (i == 0 || choice.at(i) < QLatin1Char('i')) // half of the letters
                pseudonym[i] = pseudonym.at(i).toUpper();
        }
    }
    if (composed != decomposed) {
        // Twice, since a name may have letters of both forms.
        for (bool const isComposed : {name != decomposed, name == composed}) {
            if (isComposed)
                pseudonym += ComposedLetter;
            else
                (pseudonym += QLatin1Char('e')) += CombiningMark;
        }
    }
    else if (std::any_of(name.begin(), name.end(), [](QChar unit) { return unit.unicode() > 0x7f; })) {
        pseudonym += LetterOfOneForm;
    }
    return pseudonym;
}

QString Pseudonyms::_OfProperties(QString const& document)
{
    if (document.isEmpty())
        return document;
    if (!IsWhole(document))
        return QLatin1Char('<') + _Letters(document, LengthClass(document.size()));
    QMap<QString, QString> replaced;
    QMap<QString, QString> const properties = sync::config::ReadNameValues(document);
    for (auto property = properties.begin(); property != properties.end(); ++property)
        replaced.insert(OfText(property.key()), OfText(property.value()));
    return sync::config::WriteNameValues(replaced);
}

QString Pseudonyms::_OfLinks(QString const& document)
{
    if (document.isEmpty())
        return document;
    if (!IsWhole(document))
        return QLatin1Char('<') + _Letters(document, LengthClass(document.size()));
    QDateTime date;
    QList<sync::config::FileLink> links = sync::config::ReadFileLinks(document, date);
    for (sync::config::FileLink& link : links) {
        link.path = OfText(link.path);
        link.refId = OfText(link.refId);
        link.serverFileId = OfText(link.serverFileId);
    }
    return sync::config::WriteFileLinks(links, date);
}

QString Pseudonyms::_Letters(QString const& text, int count) const
{
    QString letters;
    letters.reserve(count);
    QByteArray const bytes = Bytes(text);
    for (int block = 0; letters.size() < count; ++block) {
        QByteArray const hash =
            QMessageAuthenticationCode::hash(QByteArray::number(block) + ' ' + bytes, _key, QCryptographicHash::Sha256);
        for (char const byte : hash) {
            for (int const half : {byte & 0xf, byte >> 4 & 0xf})
                letters += QLatin1Char(char('a' + half));
        }
    }
    letters.truncate(count);
    return letters;
}

} // namespace tandry::carry
