#pragma once

#include <QString>

namespace tandry::viewer {

/// Returns a part of a sentence as a sentence: with a capital, unless it begins with a path, and a full stop.
QString ToSentence(QString const& part);

} // namespace tandry::viewer
