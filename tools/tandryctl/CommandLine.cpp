#include "CommandLine.h"

#include "Failure.h"
#include "Interruption.h"
#include "NearestWord.h"
#include "ServerStore.h"
#include "StandardOutput.h"
#include "StoreFailure.h"
#include "Text.h"

#include "tools/findings/StoreLocation.h"
#include "tools/findings/ValueNames.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace tandryctl {

using tandry::findings::StoreVariable;

namespace {

constexpr int HelpColumn = 34;
constexpr char const* ExamplesTitle = "Examples:\n";
constexpr char const* StoreOption = "--store";

std::string Name(std::string const& argument)
{
    if (IsOnServer(QString::fromStdString(argument)))
        return "the URI of a store"; // it may contain a password
    return QuotedBytes(QByteArray::fromStdString(argument)).toStdString();
}

QString DecodeOrThrow(std::string const& argument)
{
    std::optional<QString> const text = DecodeUtf8(QByteArray::fromStdString(argument));
    if (!text)
        throw CLI::ValidationError(Name(argument) + " is not valid UTF-8");
    return *text;
}

/// Returns the error for a word that is not among these, with the nearest of them, or with all.
CLI::ValidationError NotAValid(char const* kind, QString const& word, char const* which, QStringList const& words)
{
    QString const nearest = DidYouMean(word, words);
    QString const all = QStringLiteral(", which is %1 %2").arg(QLatin1String(which), JoinWithAnd(words));
    return CLI::ValidationError(QStringLiteral("%1 is not a valid %2%3")
                                    .arg(Quoted(word), QLatin1String(kind), nearest.isNull() ? all : nearest)
                                    .toStdString());
}

template <class Target>
CLI::Option* AddText(CLI::App& app, char const* name, Target& target, char const* help)
{
    return app.add_option_function<std::string>(
        name, [&target](std::string const& argument) { target = DecodeOrThrow(argument); }, help);
}

CLI::Option* AddTexts(CLI::App& app, char const* name, QStringList& texts, char const* help)
{
    auto const take = [&texts](std::vector<std::string> const& arguments) {
        for (std::string const& argument : arguments)
            texts.append(DecodeOrThrow(argument));
    };
    return app.add_option_function<std::vector<std::string>>(name, take, help);
}

/// Says behind an option's description, not in its column, what the option excludes.
class HelpFormatter : public CLI::Formatter
{
public:
    std::string make_option_opts(CLI::Option const* option) const override
    {
        std::string const opts = Formatter::make_option_opts(option);
        return opts.substr(0, opts.find(" Excludes:"));
    }

    std::string make_option_desc(CLI::Option const* option) const override
    {
        std::string description = Formatter::make_option_desc(option);
        for (CLI::Option const* other : option->get_excludes())
            description += " (not with " + other->get_name() + ")";
        return description;
    }
};

/// A whole number: the least one, and what an argument that is none is told to be.
struct NumberForm
{
    int least;
    char const* fault;
};

constexpr NumberForm IdForm{1, " is not an id, a whole number from 1 up"};
constexpr NumberForm SizeForm{0, " is not a whole number from 0 up"};
constexpr NumberForm CountForm{1, " is not a whole number from 1 up"};
constexpr NumberForm AnyNumberForm{std::numeric_limits<int>::min(), " is not a whole number"};

template <class Target>
CLI::Option*
AddNumber(CLI::App& app, char const* name, Target& target, char const* help, NumberForm const& form = IdForm)
{
    auto const take = [&target, form](std::string const& argument) {
        bool isNumber = false;
        int const number = QString::fromStdString(argument).toInt(&isNumber);
        if (!isNumber || number < form.least)
            throw CLI::ValidationError(Name(argument) + form.fault);
        target = number;
    };
    return app.add_option_function<std::string>(name, take, help);
}

bool HasJsonOption(int argc, char const* const* argv)
{
    return std::any_of(argv, argv + argc, [](char const* argument) { return qstrcmp(argument, "--json") == 0; });
}

CLI::App const& DeepestSubcommand(CLI::App const& app)
{
    CLI::App const* deepest = &app;
    while (!deepest->get_subcommands().empty())
        deepest = deepest->get_subcommands().front();
    return *deepest;
}

QStringList SubcommandsOf(CLI::App const& app)
{
    QStringList names;
    for (CLI::App const* command : app.get_subcommands([](CLI::App const*) { return true; }))
        names.append(QString::fromStdString(command->get_name()));
    return names;
}

CLI::App const* SubcommandOf(CLI::App const& app, QString const& name)
{
    auto const commands =
        app.get_subcommands([&](CLI::App const* command) { return command->get_name() == name.toStdString(); });
    return commands.empty() ? nullptr : commands.front();
}

/// Returns the options that may stand behind a command, the common ones included.
QStringList OptionsOf(CLI::App const& app)
{
    QStringList names;
    for (CLI::App const* command = &app; command != nullptr; command = command->get_parent()) {
        for (CLI::Option const* option : command->get_options()) {
            for (std::string const& name : option->get_lnames())
                names.append(QStringLiteral("--") + QString::fromStdString(name));
        }
    }
    return names;
}

QString FullName(CLI::App const& app)
{
    QString const name = QString::fromStdString(app.get_name());
    return app.get_parent() == nullptr ? name : FullName(*app.get_parent()) + QLatin1Char(' ') + name;
}

QString SeeHelpOn(CLI::App const& app)
{
    return QStringLiteral("see '%1 --help'").arg(FullName(app));
}

/// Returns what is wrong with a command line: CLI11's message on one line and without a full stop, or another one where
/// that is unlike the tool's own.
QString MessageOf(CLI::ParseError const& error, CLI::App const& command)
{
    QString line = QString::fromUtf8(error.what()).trimmed();
    while (line.endsWith(QLatin1Char('.')))
        line.chop(1);
    line = OneLine(line.replace(QLatin1Char('\n'), QLatin1Char(' ')));
    if (command.get_require_subcommand_min() > 0 && dynamic_cast<CLI::RequiredError const*>(&error) != nullptr)
        return command.get_parent() == nullptr ? QStringLiteral("a command is missing")
                                               : QStringLiteral("'%1' needs one of the words %2")
                                                     .arg(FullName(command), JoinWithAnd(SubcommandsOf(command)));
    if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) != nullptr) // "--user: At Most 1 required but received 2"
        return line.section(QLatin1Char(':'), 0, 0) +
               QLatin1String(line.contains(QLatin1String("At Most")) ? " is given more than once" : " needs a value");
    if (dynamic_cast<CLI::ConversionError const*>(&error) != nullptr) // "Could not convert: --json = x"
        return line.section(QLatin1Char(' '), 3, 3) + QStringLiteral(" takes no value");
    return line;
}

template <class Visit>
void VisitCommands(CLI::App const& app, QString const& prefix, Visit const& visit)
{
    for (CLI::App const* command : app.get_subcommands([](CLI::App const*) { return true; })) {
        QString const name = prefix + QString::fromStdString(command->get_name());
        visit(name, *command);
        VisitCommands(*command, name + QLatin1Char(' '), visit);
    }
}

/// Whether words are those of a command in any order, as in "list servers" for "server list".
bool AreNearlyTheWordsOf(QString const& command, QStringList const& words)
{
    QStringList left = command.split(QLatin1Char(' '));
    return left.size() == words.size() && std::all_of(words.begin(), words.end(), [&](QString const& word) {
               return left.removeOne(NearestWord(word, left));
           });
}

/// Returns a question to append to a message about a word that is no sub-command of this command. `words` are those
/// that were given for a command.
QString
DidYouMeanCommand(CLI::App const& program, CLI::App const& command, QString const& word, QStringList const& words)
{
    QStringList const known = SubcommandsOf(command);
    if (!known.contains(word)) {
        QString question = DidYouMean(word, known);
        if (!question.isEmpty())
            return question;
    }
    QStringList meant;
    VisitCommands(program, QString(), [&](QString const& name, CLI::App const&) {
        if (AreNearlyTheWordsOf(name, words))
            meant.append(name);
    });
    return meant.isEmpty() ? QString() : AskWhether(meant.front());
}

} // namespace

Command Command::Add(char const* name, char const* summary)
{
    _app->require_subcommand(1);
    CLI::App* const command = _app->add_subcommand(name, summary);
    command->footer("");    // CLI11 copies the parent's footer
    command->fallthrough(); // accepts the common options behind the command too
    return {*_line, *command};
}

Command& Command::Argument(char const* name, QString& target, char const* help)
{
    AddText(*_app, name, target, help)->required()->type_name("");
    return *this;
}

Command& Command::Argument(char const* name, int& id, char const* help)
{
    AddNumber(*_app, name, id, help)->required()->type_name("");
    return *this;
}

Command& Command::Argument(char const* name, QStringList& words, char const* help)
{
    AddTexts(*_app, name, words, help)->type_name("");
    return *this;
}

Command& Command::OptionalArgument(char const* name, std::optional<int>& id, char const* help)
{
    AddNumber(*_app, name, id, help)->type_name("");
    return *this;
}

Command& Command::OptionalArgument(char const* name, std::optional<QString>& target, char const* help)
{
    AddText(*_app, name, target, help)->type_name("");
    return *this;
}

Command& Command::Required(char const* option, QString& target, char const* value, char const* help)
{
    AddText(*_app, option, target, help)->required()->type_name(value);
    return *this;
}

Command& Command::Required(char const* option, int& id, char const* help)
{
    AddNumber(*_app, option, id, help)->required()->type_name("ID");
    return *this;
}

Command& Command::Option(char const* option, std::optional<QString>& target, char const* value, char const* help)
{
    AddText(*_app, option, target, help)->type_name(value);
    return *this;
}

Command& Command::Repeated(char const* option, QStringList& texts, char const* value, char const* help)
{
    AddTexts(*_app, option, texts, help)->type_name(value)->allow_extra_args(false);
    return *this;
}

Command& Command::Option(char const* option, std::optional<int>& id, char const* help)
{
    AddNumber(*_app, option, id, help)->type_name("ID");
    return *this;
}

Command& Command::Number(char const* option, std::optional<int>& number, char const* help)
{
    AddNumber(*_app, option, number, help, AnyNumberForm)->type_name("N");
    return *this;
}

Command& Command::Value(char const* option,
                        std::optional<int>& value,
                        tandry::findings::ValueNames const& names,
                        char const* kind,
                        char const* help)
{
    auto const take = [&value, &names, kind](std::string const& argument) {
        QString const word = DecodeOrThrow(argument);
        bool isNumber = false;
        int const number = word.toInt(&isNumber);
        value = isNumber ? number : names.Find(word);
        if (!value)
            throw NotAValid(kind, word, "a number or one of", names.Words());
    };
    _app->add_option_function<std::string>(option, take, help)->type_name(kind);
    return *this;
}

Command& Command::Count(char const* option, std::optional<int>& count, char const* help)
{
    AddNumber(*_app, option, count, help, CountForm)->type_name("N");
    return *this;
}

Command& Command::Flag(char const* option, bool& target, char const* help)
{
    _app->add_flag(option, target, help);
    return *this;
}

Command& Command::Choice(
    char const* option, std::optional<int>& chosen, QStringList const& words, char const* value, char const* help)
{
    auto const take = [&chosen, words, value](std::string const& argument) {
        QString const word = DecodeOrThrow(argument);
        auto const isWord = [&word](QString const& known) { return known.compare(word, Qt::CaseInsensitive) == 0; };
        auto const place = std::find_if(words.begin(), words.end(), isWord);
        if (place == words.end())
            throw NotAValid(value, word, "one of", words);
        chosen = int(place - words.begin());
    };
    _app->add_option_function<std::string>(option, take, help)->type_name(value);
    return *this;
}

Command& Command::Require(char const* option)
{
    _app->get_option(option)->required();
    return *this;
}

Command& Command::Excludes(char const* option, char const* other)
{
    _app->get_option(option)->excludes(_app->get_option(other));
    return *this;
}

Command& Command::DryRun()
{
    return Flag("--dry-run", _line->_options.dryRun, "Print what would change, and change nothing");
}

Command& Command::OnlyOnFiles(char const* instead)
{
    _insteadOnServer = instead;
    return *this;
}

Command& Command::Example(char const* line, char const* purpose)
{
    std::string footer = _app->get_footer();
    if (footer.find(ExamplesTitle) == std::string::npos)
        footer += (footer.empty() ? "" : "\n\n") + std::string(ExamplesTitle);
    footer += std::string("  tandryctl ") + line + "\n      " + purpose + "\n";
    _app->footer(footer);
    return *this;
}

Command& Command::Remark(char const* text)
{
    _app->footer(text);
    return *this;
}

QString Command::HelpOn(QStringList const& names) const
{
    CLI::App const* command = _app;
    for (QString const& name : names) {
        CLI::App const* const next = SubcommandOf(*command, name);
        if (next == nullptr)
            throw Failure(FailureCode::WrongUsage,
                          QStringLiteral("there is no command %1%2")
                              .arg(Quoted(name), DidYouMeanCommand(*_app, *command, name, names)),
                          SeeHelpOn(*command));
        command = next;
    }
    // App::help would go on to the command that was parsed.
    return QString::fromStdString(
        command->get_formatter()->make_help(command, FullName(*command).toStdString(), CLI::AppFormatMode::Normal));
}

void Command::Run(StoreAccess access, std::function<ExitStatus(Session&)> action)
{
    if (access == StoreAccess::Create || access == StoreAccess::Write)
        DryRun();
    Run([access] { return access; }, std::move(action));
}

void Command::Run(std::function<StoreAccess()> access, std::function<ExitStatus(Session&)> action)
{
    _app->footer(_app->get_footer() +
                 "\nAll commands accept the options of 'tandryctl --help' too, such as --store, --json and --yes.");
    _app->final_callback(
        [line = _line, access = std::move(access), action = std::move(action), instead = _insteadOnServer] {
            // Run after parsing, so that its failures are not caught as errors of the parser.
            line->_chosen = CommandLine::ChosenCommand{access(), action, instead};
        });
}

CommandLine::CommandLine()
    : _app(std::make_unique<CLI::App>("Inspects and manages a store of synchronised folders.", "tandryctl"))
{
    auto const formatter = std::make_shared<HelpFormatter>();
    formatter->column_width(HelpColumn);
    _app->formatter(formatter);
    _app->set_version_flag("-V,--version", "tandryctl " TANDRYCTL_VERSION, "Print the version and exit");
    // CLI11 would ignore a variable that is empty.
    if (qEnvironmentVariableIsSet(StoreVariable))
        _options.storePath = qEnvironmentVariable(StoreVariable);
    AddText(*_app,
            StoreOption,
            _options.storePath,
            "The store file, or the URI of a profile; by default $TANDRY_STORE, or the user's own store")
        ->type_name("STORE");
    _app->add_flag("--json", _options.json, "Print JSON: an array of objects, or an object for an error");
    _app->add_flag("--utc", _options.utc, "Print times in UTC, as JSON always has them, instead of in local time");
    AddNumber(*_app,
              "--wait",
              _options.waitSeconds,
              "How long to wait for a store that another program has locked; 5 by default",
              SizeForm)
        ->type_name("SECONDS");
    _app->add_flag("-y,--yes", _options.yes, "Don't ask before removing, deleting and pruning");
    AddNumber(*_app,
              "--width",
              _options.width,
              "Fit tables into N columns, 0 for any; by default those of the terminal",
              SizeForm)
        ->type_name("N");
    auto const takeColours = [this](std::string const& word) {
        std::map<std::string, ColourMode> const modes{
            {"never", ColourMode::Never}, {"auto", ColourMode::Automatic}, {"always", ColourMode::Always}};
        auto const mode = modes.find(word);
        if (mode == modes.end())
            throw CLI::ValidationError(Name(word) + " is not one of never, auto and always");
        _terminal.colours = mode->second;
    };
    _app->add_option_function<std::string>("--color", takeColours, "Use colours: never, auto (the default) or always")
        ->type_name("WHEN");
    CLI::Option* const quiet = _app->add_flag_callback(
        "-q,--quiet", [this] { _terminal.verbosity = Verbosity::Quiet; }, "Print no notes and no progress");
    _app->add_flag_callback(
            "-v,--verbose",
            [this] { _terminal.verbosity = Verbosity::Verbose; },
            "Print what the library logs about the store too")
        ->excludes(quiet);
}

CommandLine::~CommandLine() = default;

Command CommandLine::TopLevel()
{
    return {*this, *_app};
}

ExitStatus CommandLine::Run(int argc, char const* const* argv)
{
    try {
        _app->parse(argc, argv);
    }
    catch (CLI::Success const& help) {
        return _Print(help);
    }
    catch (CLI::ParseError const& error) {
        _options.json = HasJsonOption(argc, argv); // the parser sets no option after an error
        return _Report({FailureCode::WrongUsage, _ErrorText(error), SeeHelpOn(DeepestSubcommand(*_app))});
    }

    ExitStatus const status = _RunAndReport();
    Interruption::EndProcess();
    return status;
}

ExitStatus CommandLine::_RunAndReport()
{
    SetTerminalUse(_terminal);
    try {
        return _RunChosen();
    }
    catch (Failure const& failure) {
        if (failure.code() != FailureCode::StoreLocked)
            return _Report(failure);
        QString const other = failure.otherStore();
        return _Report(WithLockHolders(failure, other.isNull() ? StorePathOf(_options) : other)); // closed by now
    }
}

ExitStatus CommandLine::_Report(Failure const& failure) const
{
    PrintFailure(failure, FormatOf(_options));
    return StatusOf(failure.code());
}

ExitStatus CommandLine::_Print(CLI::Success const& help) const
{
    std::ostringstream text;
    _app->exit(help, text, text);
    StandardOutput output;
    if (output.write(QByteArray::fromStdString(text.str())) < 0 || !output.Settle())
        return _Report(output.failure());
    return ExitStatus::Done;
}

QString CommandLine::_ErrorText(CLI::ParseError const& error) const
{
    CLI::App const& command = DeepestSubcommand(*_app);
    // CLI11 reports an unknown word as a missing command.
    std::vector<std::string> const unknown = _app->remaining(true);
    if (unknown.empty())
        return MessageOf(error, command);
    QString const word = QString::fromStdString(unknown.front());
    QStringList const words = FullName(command).split(QLatin1Char(' ')).mid(1) + QStringList{word};
    return QStringLiteral("unexpected argument ") + QString::fromStdString(Name(unknown.front())) +
           (word.startsWith(QLatin1Char('-')) ? DidYouMean(word.section(QLatin1Char('='), 0, 0), OptionsOf(command))
                                              : DidYouMeanCommand(*_app, command, word, words));
}

/// Throws if the common options name a store that they or the command cannot take.
void CommandLine::_CheckStoreName() const
{
    if (_chosen->access == StoreAccess::None || !_options.storePath || !IsOnServer(*_options.storePath))
        return;
    if (_app->get_option(StoreOption)->count() > 0)
        RefusePassword(*_options.storePath);
    if (_chosen->insteadOnServer != nullptr)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("this command works on store files, and the store is on a server"),
                      QLatin1String(_chosen->insteadOnServer));
}

ExitStatus CommandLine::_RunChosen()
{
    _CheckStoreName();
    Session session(_options, _chosen->access);
    try {
        ExitStatus const status = _chosen->action(session);
        session.Flush();
        if (session.isDryRun())
            PrintNote(QStringLiteral("this was a dry run; nothing was changed"));
        return status;
    }
    catch (Failure const& failure) {
        if (failure.code() == FailureCode::NotFound) {
            session.output().ListNothing();
            session.Flush();
        }
        throw;
    }
}

QStringList CommandLine::Commands() const
{
    QStringList names;
    VisitCommands(*_app, QString(), [&](QString const& name, CLI::App const&) { names.append(name); });
    return names;
}

QStringList CommandLine::Options() const
{
    QStringList names;
    auto const addOptionsOf = [&](QString const& name, CLI::App const& command) {
        for (CLI::Option const* option : command.get_options()) {
            for (std::string const& spelling : option->get_lnames())
                names.append((name + QStringLiteral(" --") + QString::fromStdString(spelling)).trimmed());
        }
    };
    addOptionsOf(QString(), *_app);
    VisitCommands(*_app, QString(), addOptionsOf);
    return names;
}

} // namespace tandryctl
