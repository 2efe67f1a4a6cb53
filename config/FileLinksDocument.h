#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

namespace sync::config {

/// Returns the "FileLinks" document of a file's links and their date, in whole seconds; an empty text if there is
/// neither. Invalid links are left out.
QString WriteFileLinks(QList<FileLink> const& links, QDateTime const& date);

/// Returns the links of such a document. The names of its elements do not matter, and an element without an id has the
/// id 0.
///
/// Sets `date` to the date of the document, whose clock reading counts as UTC; an empty text leaves it unchanged. If
/// the text is no document or exceeds `XmlLimits`, returns no links and an invalid date; if it ends early, returns the
/// links before the break.
QList<FileLink> ReadFileLinks(QString const& text, QDateTime& date);

/// Reads a text in the form of `WriteFileLinks` with the same result as `ReadFileLinks`, in a fraction of the time.
/// Returns nothing for other texts, and leaves `date` unchanged.
std::optional<QList<FileLink>> ReadWrittenFileLinks(QString const& text, QDateTime& date);

} // namespace sync::config
