#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QString>

namespace sync::config {

/// The "FileLinks" document of a file's links and of the date that travels with them, in whole seconds; an empty text
/// for neither. Invalid links are left out.
QString WriteFileLinks(QList<FileLink> const& links, QDateTime const& date);

/// The links of such a document. Elements count whatever their name, and one without an id has the id 0.
///
/// `date` becomes the document's date with its clock reading taken as UTC, invalid in a text that is no document; an
/// empty text leaves it alone.
QList<FileLink> ReadFileLinks(QString const& text, QDateTime& date);

} // namespace sync::config
