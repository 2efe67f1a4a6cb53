#pragma once

#include <QChar>

namespace sync::config {

/// Follows a text through Qt's XML reader, and detects a text that would take too much time, memory or stack.
///
/// Qt's reader and its document recurse at each level of nested elements, take time that grows with the square of an
/// element's attributes if their names are chosen for it, and expand entities without bound. So the levels, the
/// attributes and the document type declarations are limited.
///
/// The reader stops at the first character that is not well-formed XML. So this class never gets a character after an
/// error, and does not check for errors.
class XmlLimits
{
public:
    /// Levels of elements, including the outermost. Each takes 336 bytes of stack in Qt 5.15 on x86-64: together two
    /// thirds of 512 KiB.
    static constexpr int Levels = 1000;
    /// Attributes of one element.
    static constexpr int Attributes = 100;
    /// Characters of all document type declarations together, each from its "<" to its ">".
    static constexpr int DocumentTypeSize = 1024;

    /// Takes the next character that the reader has accepted. Returns false if the text exceeds a limit.
    [[nodiscard]] bool Take(QChar character);

    /// Whether the last character taken was in the content of an element, or outside the root element.
    bool isInContent() const { return _in == In::Content; }

    /// Whether the reader replaces a reference that begins with the next character: in content and in quotes.
    bool takesReferences() const { return isInContent() || _quote != 0; }

private:
    /// The part of the document to which the next character belongs.
    enum class In
    {
        Content,     // or the text outside the root element
        Opening,     // behind "<"
        Exclamation, // behind "<!"
        CommentDash, // behind "<!-"
        Comment,
        Section,
        Instruction,
        StartTag,
        EmptyTag, // behind its slash
        EndTag,
        DocumentType, // outside its brackets
        Subset,       // inside them
        Declaration,  // of the subset
        DeclarationE, // behind "<!E"
    };

    void TakeAfterOpening(ushort unit);
    void TakeAfterExclamation(ushort unit);
    bool TakeInStartTag(ushort unit);
    void TakeInDocumentType(ushort unit);
    /// Ends a comment, section or instruction at a ">" after this number of marks.
    void EndBehind(ushort mark, int marks, ushort unit);
    bool BeginsLiteral(ushort unit);

    In _in = In::Content;
    bool _isInDocumentType = false;
    ushort _quote = 0; // the one that ends the literal; 0 outside literals
    int _endMarks = 0; // consecutive dashes, brackets or question marks in a comment, section or instruction
    int _levels = 0;
    int _attributes = 0; // of the element whose tag is open
    int _documentTypeSize = 0;
};

} // namespace sync::config
