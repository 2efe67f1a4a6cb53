#pragma once

#include "ExitStatus.h"
#include "Session.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace CLI {
class App;
class Option;
class ParseError;
} // namespace CLI

namespace tandryctl {

class CommandLine;

/// A command that is being declared: its arguments and options, examples for its help, and what it does.
///
/// The places that arguments and options are written to must live until the command has run; a command that runs
/// usually holds them. Optional ones stay empty when they are not given. Names follow the library of the parser:
/// "--long" for options, a word in capitals for positional arguments.
class Command
{
public:
    /// A sub-command, or a group of sub-commands when it is never given a `Run`.
    Command Add(char const* name, char const* summary);

    Command& Argument(char const* name, QString& target, char const* help);
    Command& Argument(char const* name, int& id, char const* help);
    Command& OptionalArgument(char const* name, std::optional<int>& id, char const* help);

    Command& Required(char const* option, QString& target, char const* value, char const* help);
    Command& Required(char const* option, int& id, char const* help);
    Command& Option(char const* option, std::optional<QString>& target, char const* value, char const* help);
    /// An id: a whole number from 1 on.
    Command& Option(char const* option, std::optional<int>& id, char const* help);
    /// Any whole number.
    Command& Number(char const* option, std::optional<int>& number, char const* help);
    Command& Flag(char const* option, bool& target, char const* help);
    /// One of these words, in any case; `chosen` gets its place in the list. The help has to name them.
    Command& Choice(
        char const* option, std::optional<int>& chosen, QStringList const& words, char const* value, char const* help);
    /// Makes an option that was declared before one that has to be given.
    Command& Demands(char const* option);
    /// Forbids the two options together.
    Command& Excludes(char const* option, char const* other);

    /// A command line without the program's name, shown in the help.
    Command& Example(char const* line, char const* purpose);
    /// A paragraph of the help behind the options.
    Command& Remark(char const* text);

    /// What the command does, with a session that has opened the store as `access` says.
    void Run(StoreAccess access, std::function<ExitStatus(Session&)> action);

private:
    friend class CommandLine;

    Command(CommandLine& line, CLI::App& app)
        : _line(&line)
        , _app(&app)
    {}

    CommandLine* _line;
    CLI::App* _app;
};

/// The program's command line: the options of all commands, the tree of commands, and the way from arguments to an
/// exit status.
class CommandLine
{
public:
    CommandLine();
    ~CommandLine();

    Command Top();

    /// Parses the arguments and runs the command that they name. Every failure is one line on standard error.
    ExitStatus Run(int argc, char const* const* argv);

    /// Every command with its sub-commands spelt out ("root add"), and every option of each ("root add --name").
    QStringList Commands() const;
    QStringList Options() const;

private:
    friend class Command;
    Q_DISABLE_COPY_MOVE(CommandLine)

    struct Chosen
    {
        StoreAccess access;
        std::function<ExitStatus(Session&)> action;
    };

    QString _Reason(CLI::ParseError const& error) const;
    ExitStatus _RunChosen();

    std::unique_ptr<CLI::App> _app;
    SessionOptions _options;
    std::optional<Chosen> _chosen;
};

} // namespace tandryctl
