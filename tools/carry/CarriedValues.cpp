#include "tools/carry/CarriedValues.h"

#include "tools/findings/JsonText.h"

#include <QDateTime>
#include <QLocale>
#include <QMetaType>
#include <QRegularExpression>

#include <limits>

namespace tandry::carry {

using sync::config::ColumnKind;

namespace {

constexpr char const* Missing = "missing";
// Types that a column should not hold.
constexpr char const* TextType = "text";
constexpr char const* RealType = "real";
constexpr char const* BlobType = "blob";

bool IsText(ColumnKind kind)
{
    return kind == ColumnKind::Text || kind == ColumnKind::Properties || kind == ColumnKind::Links;
}

void AppendTyped(QByteArray& json, char const* type, QString const& text)
{
    json += "{\"";
    json += type;
    json += "\":";
    findings::AppendJsonString(json, text);
    json += '}';
}

std::optional<QVariant> Stored(char const* type, QString const& text)
{
    if (type == TextType)
        return text;
    if (type == RealType) {
        bool isNumber = false;
        double const real = text.toDouble(&isNumber);
        return isNumber && QString::number(real, 'g', QLocale::FloatingPointShortest) == text
                   ? std::optional<QVariant>(real)
                   : std::nullopt;
    }
    auto const blob = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return blob && QString::fromLatin1(blob.decoded.toBase64()) == text
               ? std::optional<QVariant>(blob.decoded.isNull() ? QByteArray("") : blob.decoded)
               : std::nullopt;
}

} // namespace

void AppendValue(QByteArray& json, ColumnKind kind, QVariant const& value)
{
    if (value.isNull()) {
        json += "null";
        return;
    }
    switch (value.userType()) {
    case QMetaType::QString:
        if (IsText(kind))
            findings::AppendJsonString(json, value.toString());
        else
            AppendTyped(json, TextType, value.toString());
        break;
    case QMetaType::QDateTime: {
        QDateTime const time = value.toDateTime();
        json += QByteArray::number(QDateTime(time.date(), time.time(), Qt::UTC).toMSecsSinceEpoch());
        break;
    }
    case QMetaType::Double:
        AppendTyped(json, RealType, QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest));
        break;
    case QMetaType::QByteArray:
        AppendTyped(json, BlobType, QString::fromLatin1(value.toByteArray().toBase64()));
        break;
    default:
        json += QByteArray::number(value.toLongLong());
    }
}

std::optional<QVariant> ToStored(JsonValue const& value, ColumnKind kind, QString& reason)
{
    bool const isText = IsText(kind);
    reason =
        isText ? QStringLiteral("a text or null is expected") : QStringLiteral("a whole number or null is expected");
    switch (value.type) {
    case JsonValue::Type::Null:
        return QVariant();
    case JsonValue::Type::Integer:
        return isText ? std::nullopt : std::optional<QVariant>(qlonglong(value.integer));
    case JsonValue::Type::Text:
        if (!value.text.isValidUtf16()) {
            reason = QStringLiteral("the text has a lone surrogate, which a store cannot hold");
            return std::nullopt;
        }
        return isText ? std::optional<QVariant>(value.text) : std::nullopt;
    case JsonValue::Type::Object:
        break;
    case JsonValue::Type::Bool:
        return std::nullopt;
    }
    if (value.members.size() != 1 || value.members.front().value.type != JsonValue::Type::Text)
        return std::nullopt;
    JsonMember const& member = value.members.front();
    for (char const* type : {TextType, RealType, BlobType}) {
        if (member.key == QLatin1String(type) && !(isText && type == TextType))
            return member.value.text.isValidUtf16() ? Stored(type, member.value.text) : std::nullopt;
    }
    return std::nullopt;
}

void reference::Append(QByteArray& json, qint64 id, std::optional<qint64> number)
{
    if (number)
        json += QByteArray::number(*number);
    else if (NamesNone(id))
        json += QByteArray::number(id);
    else
        json += QByteArray("{\"") + Missing + "\":" + QByteArray::number(-(ToMissing(id) + 1)) + '}';
}

std::optional<qint64> reference::MissingId(JsonValue const& value)
{
    if (value.type != JsonValue::Type::Object || value.members.size() != 1)
        return std::nullopt;
    JsonMember const& member = value.members.front();
    if (member.key != QLatin1String(Missing) || member.value.type != JsonValue::Type::Integer ||
        member.value.integer < 1)
        return std::nullopt;
    return ToMissing(member.value.integer);
}

std::optional<QString> ReplaceFileIds(QString const& links,
                                      std::function<std::optional<qint64>(qint64 id)> const& newId)
{
    static QRegularExpression const attribute(QStringLiteral("\\sFileId\\s*=\\s*[\"'](\\d+)[\"']"));
    QString replaced;
    int done = 0;
    auto found = attribute.globalMatch(links);
    while (found.hasNext()) {
        QRegularExpressionMatch const match = found.next();
        qint64 const id = match.captured(1).toLongLong();
        if (id < 1)
            continue;
        std::optional<qint64> const changed = newId(id);
        if (!changed)
            return std::nullopt;
        replaced += links.mid(done, match.capturedStart(1) - done);
        replaced += QString::number(*changed);
        done = match.capturedEnd(1);
    }
    if (done == 0)
        return links;
    replaced += links.mid(done);
    return replaced;
}

} // namespace tandry::carry
