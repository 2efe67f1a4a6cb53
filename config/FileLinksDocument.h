#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

namespace sync::config {

/// The "FileLinks" document of a file's links and of the date that travels with them, in whole seconds; an empty text
/// for neither. Invalid links are left out.
QString WriteFileLinks(QList<FileLink> const& links, QDateTime const& date);

/// The links of such a document. Elements count whatever their name, and one without an id has the id 0.
///
/// `date` becomes the document's date with its clock reading taken as UTC; an empty text leaves it alone. A text that
/// is no document gives no links and an invalid date, as does one that exceeds `XmlLimits`; one that breaks off gives
/// what stands before the break.
QList<FileLink> ReadFileLinks(QString const& text, QDateTime& date);

/// What `ReadFileLinks` returns, if the text has the form that `WriteFileLinks` gives it; that takes a fraction of the
/// time. Nothing for other texts, which leave `date` alone.
std::optional<QList<FileLink>> ReadWrittenFileLinks(QString const& text, QDateTime& date);

} // namespace sync::config
