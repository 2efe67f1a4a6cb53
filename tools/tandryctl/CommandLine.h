#pragma once

#include "ExitStatus.h"
#include "Session.h"
#include "Terminal.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace CLI {
class App;
class Option;
class ParseError;
class Success;
} // namespace CLI

namespace tandry::findings {
class ValueNames;
}

namespace tandryctl {

class CommandLine;
class Failure;

/// Declares a command: its arguments and options, the examples in its help, and its action.
///
/// The variables that receive arguments and options must outlive the run of the command; usually its action owns them.
/// Optional ones stay empty if they are not given. Names have CLI11's form: "--long" for an option, a word in capitals
/// for a positional argument.
class Command
{
public:
    /// Adds a sub-command. One without `Run` is a group of sub-commands.
    Command Add(char const* name, char const* summary);

    Command& Argument(char const* name, QString& target, char const* help);
    Command& Argument(char const* name, int& id, char const* help);
    /// Takes any number of words.
    Command& Argument(char const* name, QStringList& words, char const* help);
    Command& OptionalArgument(char const* name, std::optional<int>& id, char const* help);
    Command& OptionalArgument(char const* name, std::optional<QString>& target, char const* help);

    Command& Required(char const* option, QString& target, char const* value, char const* help);
    Command& Required(char const* option, int& id, char const* help);
    Command& Option(char const* option, std::optional<QString>& target, char const* value, char const* help);
    /// Takes a text each time that it is given.
    Command& Repeated(char const* option, QStringList& texts, char const* value, char const* help);
    /// Takes an id, a whole number from 1 up.
    Command& Option(char const* option, std::optional<int>& id, char const* help);
    /// Takes any whole number.
    Command& Number(char const* option, std::optional<int>& number, char const* help);
    /// Takes a value of a column, by its number or by its name, such as "not-synced". The help text must list the
    /// names.
    Command& Value(char const* option,
                   std::optional<int>& value,
                   tandry::findings::ValueNames const& names,
                   char const* kind,
                   char const* help);
    /// Takes a count, a whole number from 1 up.
    Command& Count(char const* option, std::optional<int>& count, char const* help);
    Command& Flag(char const* option, bool& target, char const* help);
    /// Takes one of these words, in any case, and sets `chosen` to its index. The help text must list them.
    Command& Choice(
        char const* option, std::optional<int>& chosen, QStringList const& words, char const* value, char const* help);
    /// Makes an option required that has been declared as optional.
    Command& Require(char const* option);
    /// Refuses the two options in one command line.
    Command& Excludes(char const* option, char const* other);

    /// Adds --dry-run to a command whose access does not tell that it changes something. Its action asks
    /// `Session::isDryRun`.
    Command& DryRun();

    /// Refuses stores on a server. `instead` says what to do with those, without a full stop.
    Command& OnlyOnFiles(char const* instead);

    /// Adds an example to the help: a command line without the program's name.
    Command& Example(char const* line, char const* purpose);
    /// Adds a paragraph to the help, behind the options. Call it before `Example`.
    Command& Remark(char const* text);

    /// Returns the help on a command below this one, such as {"root", "add"}, or on this one itself. Throws if there
    /// is no such command.
    QString HelpOn(QStringList const& names) const;

    /// Sets the action. It gets a session whose store was opened as `access` says.
    void Run(StoreAccess access, std::function<ExitStatus(Session&)> action);
    /// The same for a command whose options decide how the store is opened, but without --dry-run. One that may write
    /// to a file must call `DryRun`.
    void Run(std::function<StoreAccess()> access, std::function<ExitStatus(Session&)> action);

private:
    friend class CommandLine;

    Command(CommandLine& line, CLI::App& app)
        : _line(&line)
        , _app(&app)
    {}

    CommandLine* _line;
    CLI::App* _app;
    /// Null if the command takes a store on a server.
    char const* _insteadOnServer = nullptr;
};

/// The program's command line: the common options and the tree of commands.
class CommandLine
{
public:
    CommandLine();
    ~CommandLine();

    Command TopLevel();

    /// Parses the arguments and runs their command. Reports a failure as one line or object on standard error.
    ExitStatus Run(int argc, char const* const* argv);

    /// Returns all commands and groups by their full names, such as "root add".
    QStringList Commands() const;
    /// Returns all options behind their commands, such as "root add --name".
    QStringList Options() const;

private:
    friend class Command;
    Q_DISABLE_COPY_MOVE(CommandLine)

    struct ChosenCommand
    {
        StoreAccess access;
        std::function<ExitStatus(Session&)> action;
        char const* insteadOnServer;
    };

    ExitStatus _Report(Failure const& failure) const;
    ExitStatus _Print(CLI::Success const& help) const;
    QString _ErrorText(CLI::ParseError const& error) const;
    ExitStatus _RunAndReport();
    void _CheckStoreName() const;
    ExitStatus _RunChosen();

    std::unique_ptr<CLI::App> _app;
    SessionOptions _options;
    TerminalUse _terminal;
    std::optional<ChosenCommand> _chosen;
};

} // namespace tandryctl
