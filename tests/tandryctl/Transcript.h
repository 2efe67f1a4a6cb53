#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tandryctl::test {

/// A command of a transcript, and the lines that it prints on both streams.
struct TranscriptStep
{
    QString command;
    QStringList output;
};

/// Returns the steps of all blocks of a document that begin with "```console". A step begins with "$ "; lines with "> "
/// continue its command.
std::vector<TranscriptStep> ReadTranscript(QString const& document);

/// Whether a command printed these lines. In the transcript, a line "…" stands for any number of lines, and "…" within
/// a line for any text.
bool MatchesTranscript(QStringList const& transcript, QStringList const& printed);

} // namespace tandryctl::test
