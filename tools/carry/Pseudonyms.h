#pragma once

#include "config/RecordColumns.h"

#include <QByteArray>
#include <QCache>
#include <QString>
#include <QVariant>

namespace tandry::carry {

/// Replaces texts by pseudonyms: the same text by the same one, and no one can guess the text without the key.
///
/// What a bug may depend on stays: null and empty texts, the parts of a path and its slashes, whether two names differ
/// only in case or only in Unicode form, whether a name has letters beyond ASCII, and its length in classes that double
/// from 16. Markers in names stay too.
class Pseudonyms
{
public:
    /// Takes a random key, which is lost with the object.
    Pseudonyms();
    explicit Pseudonyms(QByteArray key);

    /// Returns the pseudonym of a value in a column of this kind; numbers and times stay as they are. Documents are
    /// written anew, and broken ones stay broken.
    [[nodiscard]] QVariant Of(sync::config::ColumnKind kind, QVariant const& value);

    /// Returns the pseudonym of a text, part by part between slashes.
    [[nodiscard]] QString OfText(QString const& text);

private:
    QString _OfPart(QString const& part);
    QString _OfName(QString const& name) const;
    QString _OfProperties(QString const& document);
    QString _OfLinks(QString const& document);
    /// Returns letters that depend on the key and the text.
    QString _Letters(QString const& text, int count) const;

    QByteArray const _key;
    /// Paths have folders in common.
    QCache<QString, QString> _parts;
};

} // namespace tandry::carry
