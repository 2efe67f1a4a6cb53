#include "config/ValueNames.h"

#include <QString>

namespace sync::config {

QStringList ValueNames::Of(int value) const
{
    QStringList names;
    bool const isSet = _areBits && value != 0;
    auto unnamed = static_cast<unsigned>(value);
    for (NamedValue const& named : *this) {
        auto const bits = static_cast<unsigned>(named.value);
        if (isSet ? (unnamed & bits) != 0 : named.value == value)
            names.append(QLatin1String(named.name));
        if (isSet)
            unnamed &= ~bits;
    }
    if (isSet && unnamed != 0)
        names.append(QString::number(unnamed));
    return names;
}

} // namespace sync::config
