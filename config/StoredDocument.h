#pragma once

#include <QString>

class QDomDocument;

namespace sync::config {

/// What a text was found to be.
enum class LoadedDocument
{
    Whole,
    /// The document holds what stands before the first error.
    BrokenOff,
    /// The document is empty.
    OverLimits,
};

/// Loads a document that a row holds, in time and memory proportional to the text's length and with two thirds of a
/// stack of 512 KiB. A text that breaks off leaves what stands before the break.
///
/// A text that exceeds one of `XmlLimits` leaves the document empty.
LoadedDocument LoadStoredDocument(QString const& text, QDomDocument& document);

} // namespace sync::config
