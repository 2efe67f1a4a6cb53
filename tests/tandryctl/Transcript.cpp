#include "Transcript.h"

#include <QRegularExpression>

namespace tandryctl::test {

namespace {

QString const Ellipsis = QStringLiteral("…");

QString const EndOfFile = QStringLiteral("END_OF_FILE");

/// Returns the text of a line "<!-- kind: text -->", or nothing for other lines.
QString MarkedAs(QString const& line, QString const& kind)
{
    QString const begin = QStringLiteral("<!-- ") + kind + QStringLiteral(": ");
    QString const end = QStringLiteral(" -->");
    if (!line.startsWith(begin) || !line.endsWith(end))
        return {};
    return line.mid(begin.size(), line.size() - begin.size() - end.size());
}

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
    QString mark; // the line above the block
    bool isInBlock = false;
    bool isInFile = false;
    for (QString const& line : document.split(QLatin1Char('\n'))) {
        if (isInFile) {
            bool const ends = line == QStringLiteral("```");
            steps.back().command += (ends ? EndOfFile : line) + QLatin1Char('\n');
            isInFile = !ends;
        }
        else if (line.startsWith(QStringLiteral("```"))) {
            QString const name = MarkedAs(mark, QStringLiteral("file"));
            isInFile = !name.isEmpty();
            isInBlock = line == QStringLiteral("```console") && MarkedAs(mark, QStringLiteral("not run")).isEmpty();
            if (isInFile)
                steps.push_back(
                    {QStringLiteral("mkdir -p $(dirname ~/%1) && cat >~/%1 <<'%2'\n").arg(name, EndOfFile), {}});
        }
        else if (isInBlock && line.startsWith(QStringLiteral("$ ")))
            steps.push_back({line.mid(2), {}});
        else if (isInBlock && !steps.empty() && steps.back().output.isEmpty() && line.startsWith(QStringLiteral("> ")))
            steps.back().command += QLatin1Char('\n') + line.mid(2);
        else if (isInBlock && !steps.empty())
            steps.back().output.append(line);
        mark = line;
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
