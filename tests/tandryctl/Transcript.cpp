#include "Transcript.h"

#include <QRegularExpression>

namespace tandryctl::test {

namespace {

QString const Ellipsis = QStringLiteral("…");

QString PatternOf(QString const& line)
{
    if (line == Ellipsis)
        return QStringLiteral("(?:.*\n)*?");
    QStringList parts = line.split(Ellipsis);
    for (QString& part : parts)
        part = QRegularExpression::escape(part);
    return parts.join(QStringLiteral(".*")) + QLatin1Char('\n');
}

} // namespace

std::vector<TranscriptStep> ReadTranscript(QString const& document)
{
    std::vector<TranscriptStep> steps;
    bool isInBlock = false;
    for (QString const& line : document.split(QLatin1Char('\n'))) {
        if (line.startsWith(QStringLiteral("```")))
            isInBlock = line == QStringLiteral("```console");
        else if (isInBlock && line.startsWith(QStringLiteral("$ ")))
            steps.push_back({line.mid(2), {}});
        else if (isInBlock && !steps.empty() && steps.back().output.isEmpty() && line.startsWith(QStringLiteral("> ")))
            steps.back().command += QLatin1Char('\n') + line.mid(2);
        else if (isInBlock && !steps.empty())
            steps.back().output.append(line);
    }
    return steps;
}

bool MatchesTranscript(QStringList const& transcript, QStringList const& printed)
{
    QString pattern;
    for (QString const& line : transcript)
        pattern += PatternOf(line);
    QString text;
    for (QString const& line : printed)
        text += line + QLatin1Char('\n');
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

} // namespace tandryctl::test
