#pragma once

#include <QString>

class QDomDocument;

namespace sync::config {

/// The result of loading a document.
enum class LoadedDocument
{
    Whole,
    /// The document contains the part of the text before the first error.
    BrokenOff,
    /// The document is empty.
    OverLimits,
};

/// Loads a document from a row. Takes time and memory proportional to the length of the text, and at most two thirds of
/// a stack of 512 KiB.
LoadedDocument LoadStoredDocument(QString const& text, QDomDocument& document);

} // namespace sync::config
