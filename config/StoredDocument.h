#pragma once

#include <QString>

class QDomDocument;

namespace sync::config {

/// Loads a document that a row holds. A text that breaks off leaves what stands before the break.
///
/// A text that nests its elements deeper than any document of ours leaves nothing: the document would take so many
/// calls to destroy that a thread's stack is not enough for them.
void LoadStoredDocument(QString const& text, QDomDocument& document);

} // namespace sync::config
