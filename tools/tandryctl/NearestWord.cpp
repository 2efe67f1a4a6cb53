#include "NearestWord.h"

#include <QVector>

#include <algorithm>

namespace tandryctl {

namespace {

/// Returns how many letters must be inserted, removed or replaced, or exchanged with their neighbours.
int Distance(QString const& from, QString const& to)
{
    QVector<QVector<int>> table(from.size() + 1, QVector<int>(to.size() + 1));
    for (int i = 0; i <= from.size(); ++i) {
        for (int j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                table[i][j] = std::max(i, j);
                continue;
            }
            bool const isSame = from.at(i - 1) == to.at(j - 1);
            int least = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && from.at(i - 1) == to.at(j - 2) && from.at(i - 2) == to.at(j - 1))
                least = std::min(least, table[i - 2][j - 2] + 1);
            table[i][j] = least;
        }
    }
    return table[from.size()][to.size()];
}

} // namespace

QString NearestWord(QString const& mistyped, QStringList const& words)
{
    constexpr int lettersPerMistake = 3;
    constexpr int longestWord = 40; // what is longer is no mistyped word
    if (mistyped.size() > longestWord)
        return {};
    QString nearest;
    int least = std::max(1, int(mistyped.size()) / lettersPerMistake) + 1;
    for (QString const& word : words) {
        int const distance = Distance(mistyped.toLower(), word.toLower());
        if (distance < least) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
}

QString DidYouMean(QString const& mistyped, QStringList const& words)
{
    QString const nearest = NearestWord(mistyped, words);
    return nearest.isNull() ? QString() : AskWhether(nearest);
}

QString AskWhether(QString const& meant)
{
    return QStringLiteral(" (did you mean '%1'?)").arg(meant);
}

} // namespace tandryctl
