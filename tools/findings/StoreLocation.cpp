#include "tools/findings/StoreLocation.h"

#include <QStandardPaths>

namespace tandry::findings {

QString OwnStorePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/tandry/tandry.db");
}

} // namespace tandry::findings
