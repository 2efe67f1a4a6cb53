#pragma once

#include <QMap>
#include <QString>

#include <optional>

namespace sync::config {

/// The "NameValueXml" document of a record's open-ended properties. Keys must be XML names, and values must not hold
/// "]]>": nothing checks.
QString WriteNameValues(QMap<QString, QString> const& properties);

/// The entries of such a document; a later entry of the same name wins. A text that is no document gives an empty map,
/// as does one that exceeds `XmlLimits`; one that breaks off gives what stands before the break.
QMap<QString, QString> ReadNameValues(QString const& text);

/// What `ReadNameValues` returns, if the text has the form that `WriteNameValues` gives it; that takes a fraction of
/// the time. Nothing for other texts.
std::optional<QMap<QString, QString>> ReadWrittenNameValues(QString const& text);

} // namespace sync::config
