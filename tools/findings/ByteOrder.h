#pragma once

#include <QByteArray>
#include <QtEndian>
#include <QtGlobal>

namespace tandry::findings {

/// Returns the big-endian number at the offset. The caller makes sure that its bytes are there.
template <class Number>
Number BigEndianAt(QByteArray const& bytes, int offset)
{
    return qFromBigEndian<Number>(bytes.constData() + offset);
}

} // namespace tandry::findings
