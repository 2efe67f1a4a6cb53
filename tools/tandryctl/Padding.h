#pragma once

#include <QString>

namespace tandryctl {

/// Returns a printable text filled up with blanks to this width in columns of the terminal; a longer one as it is.
QString Padded(QString const& cell, int width, bool toTheRight);

} // namespace tandryctl
