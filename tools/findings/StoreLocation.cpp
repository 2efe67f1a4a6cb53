#include "tools/findings/StoreLocation.h"

#include <QRegularExpression>
#include <QStandardPaths>

namespace tandry::findings {

QString OwnStorePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/tandry/tandry.db");
}

bool IsOnServer(QString const& store)
{
    static QRegularExpression const isForLibpq(
        QStringLiteral("^(postgres(ql)?://|\\s*(\\w+\\s*=.*\\s)?(ssl)?password\\s*=)"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    return isForLibpq.match(store).hasMatch();
}

} // namespace tandry::findings
