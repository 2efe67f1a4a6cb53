#pragma once

#include "ExitStatus.h"

#include <QByteArray>
#include <QString>

#include <exception>

namespace tandryctl {

/// Ends a command with an exit status and a message. Thrown by commands and caught in `CommandLine::Run`; no exception
/// passes through the libraries.
///
/// The message is one line that says what is wrong and what to do about it.
class Failure : public std::exception
{
public:
    Failure(ExitStatus status, QString const& text)
        : _status(status)
        , _text(text.toUtf8())
    {}

    ExitStatus status() const noexcept { return _status; }
    QString text() const { return QString::fromUtf8(_text); }
    char const* what() const noexcept override { return _text.constData(); }

private:
    ExitStatus _status;
    QByteArray _text;
};

} // namespace tandryctl
