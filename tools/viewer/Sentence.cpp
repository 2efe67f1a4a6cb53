#include "tools/viewer/Sentence.h"

namespace tandry::viewer {

QString ToSentence(QString const& part)
{
    QString sentence = part.trimmed();
    if (sentence.isEmpty())
        return sentence;
    sentence[0] = sentence.at(0).toUpper();
    if (!sentence.endsWith(QLatin1Char('.')))
        sentence += QLatin1Char('.');
    return sentence;
}

} // namespace tandry::viewer
