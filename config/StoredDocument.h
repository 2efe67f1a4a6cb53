#pragma once

#include <QString>

class QDomDocument;

namespace sync::config {

/// Loads a document that a row holds, in time and memory proportional to the text's length and with two thirds of a
/// stack of 512 KiB. A text that breaks off leaves what stands before the break.
///
/// A text that exceeds one of `XmlLimits` leaves the document empty.
void LoadStoredDocument(QString const& text, QDomDocument& document);

} // namespace sync::config
