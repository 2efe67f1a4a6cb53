#include "tools/carry/TarFile.h"

#include <QIODevice>

namespace tandry::carry {

namespace {

constexpr int BlockBytes = 512;
constexpr qint64 PortionBytes = 64 * 1024;

QByteArray Octal(qint64 number, int digits)
{
    return QByteArray::number(number, 8).rightJustified(digits, '0');
}

/// The size in the usual form or, from 8 GiB up, in the binary one that all programs read.
QByteArray SizeField(qint64 size)
{
    constexpr int digits = 11;
    if (size < qint64(1) << 3 * digits)
        return Octal(size, digits) + '\0';
    QByteArray field(digits + 1, '\0');
    for (int i = digits; i > 0; --i, size >>= 8)
        field[i] = char(size & 0xff);
    field[0] = char(0x80);
    return field;
}

QByteArray Header(QByteArray const& name, qint64 size)
{
    constexpr int nameBytes = 100;
    constexpr int sumOffset = 148;
    QByteArray const zero = Octal(0, 7) + '\0';
    QByteArray header = name.leftJustified(nameBytes, '\0');
    header += Octal(0600, 7) + '\0';
    header += zero + zero; // user and group
    header += SizeField(size);
    header += Octal(0, 11) + '\0'; // time
    header += QByteArray(8, ' ');  // the sum, which counts as blanks
    header += '0';                 // a file
    header += QByteArray(nameBytes, '\0');
    header += QByteArray("ustar\0"
                         "00",
                         8);
    header = header.leftJustified(BlockBytes, '\0');
    qint64 sum = 0;
    for (char const byte : qAsConst(header))
        sum += static_cast<unsigned char>(byte);
    return header.replace(sumOffset, 8, Octal(sum, 6) + QByteArray("\0 ", 2));
}

} // namespace

bool TarFile::Add(QByteArray const& name, QIODevice& content)
{
    if (!_Write(Header(name, content.size())))
        return false;
    qint64 left = content.size();
    while (left > 0) {
        QByteArray const portion = content.read(qMin(left, PortionBytes));
        left -= portion.size();
        if (portion.isEmpty() || !_Write(portion))
            return false;
    }
    int const rest = int(content.size() % BlockBytes);
    return rest == 0 || _Write(QByteArray(BlockBytes - rest, '\0'));
}

bool TarFile::Finish()
{
    return _Write(QByteArray(2 * BlockBytes, '\0'));
}

bool TarFile::_Write(QByteArray const& bytes)
{
    return _device.write(bytes) == bytes.size();
}

} // namespace tandry::carry
