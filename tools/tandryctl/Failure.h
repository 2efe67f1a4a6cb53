#pragma once

#include "FailureCode.h"
#include "Output.h"

#include <QByteArray>
#include <QString>

#include <exception>

namespace tandryctl {

/// Ends a command. Thrown by commands and caught in `CommandLine::Run`; no exception passes through the libraries.
class Failure : public std::exception
{
public:
    /// The message says what is wrong, with the name of the file or record; the hint says what to do about it. Neither
    /// has a line break or a full stop at its end.
    Failure(FailureCode code, QString const& message, QString const& hint)
        : _code(code)
        , _message(message.toUtf8())
        , _hint(hint.toUtf8())
    {}

    /// Returns the failure of a store that is not the command's own.
    Failure InOtherStore(QString const& path) const;

    FailureCode code() const noexcept { return _code; }
    /// The store that has failed, if it is not the command's own; null otherwise.
    QString otherStore() const { return QString::fromUtf8(_otherStore); }
    QString message() const { return QString::fromUtf8(_message); }
    QString hint() const { return QString::fromUtf8(_hint); }
    /// Returns what is printed: a line for people, or an object for programs.
    QString InFormat(OutputFormat format) const;
    char const* what() const noexcept override { return _message.constData(); }

private:
    FailureCode _code;
    QByteArray _message;
    QByteArray _hint;
    QByteArray _otherStore;
};

} // namespace tandryctl
