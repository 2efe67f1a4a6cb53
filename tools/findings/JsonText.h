#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVariant>

/// Writes JSON without making objects of it first, which takes most of the time where there are millions of rows. The
/// bytes are those of QJsonDocument in its compact form.
namespace tandry::findings {

/// Appends a text as a JSON string in UTF-8. Lone surrogates, which UTF-8 cannot express, become escapes.
void AppendJsonString(QByteArray& json, QString const& text);

/// Appends a time in ISO 8601 with milliseconds: with a Z if it is in UTC, or as a clock reading if it is in local
/// time. Appends nothing for a time that ISO 8601 cannot express: an invalid one, or one outside the years 1 to 9999.
void AppendIsoTime(QByteArray& text, QDateTime const& time);

/// Appends a value: a text, a number, a Boolean, a time, or a list or map of these; null for an invalid value, a null
/// text and an invalid time.
void AppendJsonValue(QByteArray& json, QVariant const& value);

} // namespace tandry::findings
