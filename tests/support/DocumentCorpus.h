#pragma once

#include "config/FileLink.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>

#include <vector>

namespace tandry::test {

/// The text of a document, and what Qt 5.15's QDomDocument has of it.
struct CorpusDocument
{
    QString text;
    /// What is read from it, as `Describe` gives it.
    QByteArray read;
};

/// Describes what the two readers of documents have read from one text: a line for each property, for the date and for
/// each link.
QByteArray
Describe(QMap<QString, QString> const& properties, QList<sync::config::FileLink> const& links, QDateTime const& date);

/// Returns the text in quotes, with `\uXXXX` for all but the printable characters of ASCII; `null` for a null text.
QByteArray ToLiteral(QString const& text);

/// Writes and reads the form of `tests/data/documents.txt`.
QByteArray ToCorpus(std::vector<CorpusDocument> const& documents);
std::vector<CorpusDocument> FromCorpus(QByteArray const& corpus);

} // namespace tandry::test
