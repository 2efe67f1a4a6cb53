#include "config/PrivilegeWords.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <array>

namespace sync::config {

namespace {

const std::array<QString, 5> Words{QStringLiteral("view"),
                                   QStringLiteral("download"),
                                   QStringLiteral("update"),
                                   QStringLiteral("delete"),
                                   QStringLiteral("share")};

int Privilege(QString const& text)
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
    for (QString const& word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        privileges |= Privilege(word);
    return privileges;
}

} // namespace sync::config
