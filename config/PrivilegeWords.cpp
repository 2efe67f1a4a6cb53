#include "config/PrivilegeWords.h"

#include <QString>
#include <QVector>

#include <array>

namespace sync::config {

namespace {

const std::array<QString, 5> Words{QStringLiteral("view"),
                                   QStringLiteral("download"),
                                   QStringLiteral("update"),
                                   QStringLiteral("delete"),
                                   QStringLiteral("share")};

int Privilege(QStringRef const& text)
{
    int bit = 1;
    for (QString const& word : Words) {
        if (text.compare(word, Qt::CaseInsensitive) == 0)
            return bit;
        bit <<= 1;
    }
    return 0;
}

} // namespace

int PrivilegesFromWords(QString const& text)
{
    int privileges = 0;
    for (QStringRef const& word : text.splitRef(QLatin1Char(' '), Qt::SkipEmptyParts))
        privileges |= Privilege(word);
    return privileges;
}

} // namespace sync::config
