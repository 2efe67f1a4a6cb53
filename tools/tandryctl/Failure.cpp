#include "Failure.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tandryctl {

Failure Failure::InOtherStore(QString const& path) const
{
    Failure failure = *this;
    failure._otherStore = path.toUtf8();
    return failure;
}

QString Failure::InFormat(OutputFormat format) const
{
    if (format == OutputFormat::Plain)
        return QStringLiteral("tandryctl: ") + message() + QStringLiteral("; ") + hint();
    QJsonObject const object{{QStringLiteral("code"), WordOf(_code)},
                             {QStringLiteral("message"), message()},
                             {QStringLiteral("hint"), hint()}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

} // namespace tandryctl
