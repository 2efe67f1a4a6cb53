#include "config/XmlLimits.h"

namespace sync::config {

bool XmlLimits::Take(QChar character)
{
    ushort const unit = character.unicode();
    if (_isInDocumentType && ++_documentTypeSize > DocumentTypeSize)
        return false;
    if (_quote != 0) {
        if (unit == _quote)
            _quote = 0;
        return true;
    }

    switch (_in) {
    case In::Content:
        if (unit == '<')
            _in = In::Opening;
        return true;
    case In::Opening:
        TakeAfterOpening(unit);
        return true;
    case In::Exclamation:
        TakeAfterExclamation(unit);
        return true;
    case In::CommentDash:
        _in = In::Comment;
        return true;
    case In::Comment:
        EndBehind('-', 2, unit);
        return true;
    case In::Section:
        EndBehind(']', 2, unit);
        return true;
    case In::Instruction:
        EndBehind('?', 1, unit);
        return true;
    case In::StartTag:
        return TakeInStartTag(unit);
    case In::EmptyTag:
        _in = In::Content;
        return true;
    case In::EndTag:
        if (unit == '>') {
            --_levels;
            _in = In::Content;
        }
        return true;
    case In::DocumentType:
    case In::Subset:
        TakeInDocumentType(unit);
        return true;
    case In::Declaration:
        if (!BeginsLiteral(unit) && unit == '>')
            _in = In::Subset;
        return true;
    case In::DeclarationE:
        _in = In::Declaration;
        return unit != 'N'; // "<!ENTITY"
    }
    return true;
}

void XmlLimits::TakeAfterOpening(ushort unit)
{
    _endMarks = 0;
    _attributes = 0;
    switch (unit) {
    case '!':
        _in = In::Exclamation;
        break;
    case '?':
        _in = In::Instruction;
        break;
    case '/':
        _in = In::EndTag;
        break;
    default:
        _in = In::StartTag;
    }
}

void XmlLimits::TakeAfterExclamation(ushort unit)
{
    if (unit == '-') {
        _in = In::CommentDash;
    }
    else if (unit == '[') {
        _in = In::Section;
    }
    else if (_isInDocumentType) {
        _in = unit == 'E' ? In::DeclarationE : In::Declaration;
    }
    else {
        _in = In::DocumentType;
        _isInDocumentType = true;
        _documentTypeSize += 3; // "<!D"
    }
}

bool XmlLimits::TakeInStartTag(ushort unit)
{
    if (BeginsLiteral(unit))
        return true;
    switch (unit) {
    case '=':
        return ++_attributes <= Attributes;
    case '>':
        _in = In::Content;
        return ++_levels <= Levels;
    case '/':
        _in = In::EmptyTag;
        return _levels < Levels;
    default:
        return true;
    }
}

void XmlLimits::TakeInDocumentType(ushort unit)
{
    if (_in == In::Subset) {
        if (unit == '<')
            _in = In::Opening;
        else if (unit == ']')
            _in = In::DocumentType;
    }
    else if (unit == '[') {
        _in = In::Subset;
    }
    else if (!BeginsLiteral(unit) && unit == '>') {
        _in = In::Content;
        _isInDocumentType = false;
    }
}

void XmlLimits::EndBehind(ushort mark, int marks, ushort unit)
{
    if (unit == mark)
        ++_endMarks;
    else if (unit == '>' && _endMarks >= marks)
        _in = _isInDocumentType ? In::Subset : In::Content;
    else
        _endMarks = 0;
}

bool XmlLimits::BeginsLiteral(ushort unit)
{
    if (unit != '"' && unit != '\'')
        return false;
    _quote = unit;
    return true;
}

} // namespace sync::config
