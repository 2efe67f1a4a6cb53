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

/// Returns the steps of a document.
///
/// In a block that begins with "```console" a step begins with "$ "; lines with "> " continue its command. Below a line
/// "<!-- file: NAME -->" a block of any language is a step that writes the block to this file of the home and prints
/// nothing. A block below a line "<!-- not run: REASON -->" has no steps.
std::vector<TranscriptStep> ReadTranscript(QString const& document);

/// Whether a command printed these lines. In the transcript, a line "…" stands for any number of lines, and "…" within
/// a line for any text.
bool MatchesTranscript(QStringList const& transcript, QStringList const& printed);

} // namespace tandryctl::test
