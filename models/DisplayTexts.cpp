#include "models/DisplayTexts.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

namespace sync::models {

QString DisplayText(sync::config::ValueNames const& names, int value)
{
    QStringList words = names.Of(value);
    for (QString& word : words) {
        word = QCoreApplication::translate("sync::config::ValueNames", word.toLatin1());
        word.replace(0, 1, QLocale().toUpper(word.left(1)));
    }
    return words.isEmpty() ? QString::number(value)
                           : words.join(QCoreApplication::translate("sync::config::ValueNames", ", ", "between names"));
}

} // namespace sync::models
