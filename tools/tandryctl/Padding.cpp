#include "Padding.h"

#include "Text.h"

#include <algorithm>

namespace tandryctl {

QString Padded(QString const& cell, int width, bool toTheRight)
{
    QString const blanks(std::max(0, width - DisplayWidth(cell)), QLatin1Char(' '));
    return toTheRight ? blanks + cell : cell + blanks;
}

} // namespace tandryctl
