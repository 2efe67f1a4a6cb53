#pragma once

#include <QMap>
#include <QString>

#include <optional>

namespace sync::config {

/// Returns the "NameValueXml" document of a record's name-value properties. Keys must be XML names, and values must not
/// contain "]]>". The function does not check either.
QString WriteNameValues(QMap<QString, QString> const& properties);

/// Returns the entries of such a document; of several entries with the same name, the last one counts. Returns an empty
/// map if the text is no document or exceeds `XmlLimits`, and the entries before the break if it ends early.
QMap<QString, QString> ReadNameValues(QString const& text);

/// Reads a text in the form of `WriteNameValues` with the same result as `ReadNameValues`, in a fraction of the time.
/// Returns nothing for other texts.
std::optional<QMap<QString, QString>> ReadWrittenNameValues(QString const& text);

} // namespace sync::config
