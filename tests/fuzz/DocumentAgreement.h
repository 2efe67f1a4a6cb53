#pragma once

#include "config/FileLink.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>

namespace tandry::fuzz {

/// Whether the text was read without QDomDocument because it has the form that the library writes.
enum class ReadAs
{
    Written,
    Document,
};

/// Reads a text with the library and, step by step, with QDomDocument. Aborts the program unless the results are equal.
/// A text that exceeds the limits of stored documents must read as empty.
ReadAs RequireNameValuesAgree(QString const& text);
ReadAs RequireFileLinksAgree(QString const& text);

struct FileLinks
{
    QList<sync::config::FileLink> links;
    QDateTime date;
};

/// What QDomDocument has of a text.
QMap<QString, QString> NameValuesByQt(QString const& text);
FileLinks FileLinksByQt(QString const& text);

/// Whether a text certainly does not exceed the limits of stored documents.
bool IsWithinLimits(QString const& text);

} // namespace tandry::fuzz
