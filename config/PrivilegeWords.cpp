#include "config/PrivilegeWords.h"

#include <QString>
#include <QStringList>

namespace sync::config {

namespace {

int Privilege(QString const& text)
{
    for (NamedValue const& privilege : PrivilegeNames) {
        if (text.compare(QLatin1String(privilege.name), Qt::CaseInsensitive) == 0)
            return privilege.value;
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
