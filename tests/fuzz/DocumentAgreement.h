#pragma once

#include <QString>

namespace tandry::fuzz {

/// Whether the text was read without Qt's document, because it has the form in which the library writes.
enum class ReadAs
{
    Written,
    Document,
};

/// Reads a text with the library and, step by step, with Qt's document; ends the program unless both read the same. A
/// text that exceeds the limits of stored documents must read as empty.
ReadAs RequireNameValuesAgree(QString const& text);
ReadAs RequireFileLinksAgree(QString const& text);

} // namespace tandry::fuzz
