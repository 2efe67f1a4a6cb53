#pragma once

#include <QString>
#include <QStringList>

namespace tandryctl {

/// Returns the word that was probably meant, such as "list" for "lsit"; null if none is near enough.
QString NearestWord(QString const& mistyped, QStringList const& words);

/// Returns a question to append to a message, " (did you mean 'list'?)"; empty if no word is near enough.
QString DidYouMean(QString const& mistyped, QStringList const& words);
/// Returns this question for what was meant.
QString AskWhether(QString const& meant);

} // namespace tandryctl
