#pragma once

#include <QChar>

namespace sync::config {

/// Follows a text through Qt's XML reader and says when it exceeds what a stored document may cost.
///
/// Qt's reader and its document are called once per level of nested elements, take time that grows with the square of
/// an element's attributes when their names are chosen for it, and expand entities without bound. So there is a limit
/// to levels and attributes, and to what a document type declaration may hold.
///
/// The reader stops at the first character that is not well-formed XML. So no character behind an error arrives here,
/// and every character is taken to be in its place.
class XmlLimits
{
public:
    /// Levels of elements, the outermost included. Each takes 336 bytes of the stack in Qt 5.15 on x86-64: two thirds
    /// of 512 KiB in all.
    static constexpr int Levels = 1000;
    /// Of one element.
    static constexpr int Attributes = 100;
    /// Characters of all document type declarations, from the "<" of each to its ">".
    static constexpr int DocumentTypeSize = 1024;

    /// Takes the next character that the reader has accepted. Returns whether the text is still within the limits.
    [[nodiscard]] bool Take(QChar character);

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
    /// Ends a comment, section or instruction at a ">" behind so many marks.
    void EndBehind(ushort mark, int marks, ushort unit);
    bool BeginsLiteral(ushort unit);

    In _in = In::Content;
    bool _isInDocumentType = false;
    ushort _quote = 0; // the one that ends the literal; 0 outside of literals
    int _endMarks = 0; // dashes, brackets or question marks on end in a comment, section or instruction
    int _levels = 0;
    int _attributes = 0; // of the element whose tag is open
    int _documentTypeSize = 0;
};

} // namespace sync::config
