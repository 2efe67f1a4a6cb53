#pragma once

#include <QMap>
#include <QString>

#include <optional>

namespace sync::config {

/// The "NameValueXml" document of a record's open-ended properties. Keys must be XML names, and values must not hold
/// "]]>": nothing checks.
QString WriteNameValues(QMap<QString, QString> const& properties);

/// Returns the entries of such a document; of several entries with the same name, the last one counts. A text that is
/// no document, or that exceeds `XmlLimits`, gives an empty map; a text that ends early gives the entries up to there.
QMap<QString, QString> ReadNameValues(QString const& text);

/// Reads a text in the form of `WriteNameValues` with the same result as `ReadNameValues`, in a fraction of the time.
/// Returns nothing for other texts.
std::optional<QMap<QString, QString>> ReadWrittenNameValues(QString const& text);

} // namespace sync::config
