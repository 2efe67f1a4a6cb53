#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Interruption.h"
#include "TableWords.h"
#include "Terminal.h"
#include "Text.h"

#include "config/FileConfiguration.h"
#include "database/AbsolutePath.h"
#include "database/SqliteDatabaseFactory.h"
#include "database/StoreChanges.h"
#include "tools/findings/ColumnReference.h"
#include "tools/findings/JsonText.h"
#include "tools/findings/RowStates.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>

#include <poll.h>
#include <signal.h>

namespace tandryctl {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::database::StoreChanges;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::NamesOfValues;
using tandry::findings::RowChange;
using tandry::findings::RowStates;

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int DefaultIntervalSeconds = 1;

struct Arguments
{
    std::optional<int> interval;
};

/// Sleeps until the descriptor is readable, the time has passed or a signal comes that `Interruption` takes. A
/// descriptor of -1 is never readable; without a time, there is no end.
void Sleep(int descriptor, std::optional<milliseconds> time)
{
    // A signal between the check and the call would be waited out if it were not blocked.
    sigset_t blocked = {};
    sigset_t before = {};
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGINT);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    if (!Interruption::IsRequested()) {
        pollfd waiting = {descriptor, POLLIN, 0};
        timespec timeout = {};
        if (time) {
            timeout.tv_sec = time->count() / 1000;
            timeout.tv_nsec = time->count() % 1000 * 1'000'000;
        }
        ::ppoll(&waiting, 1, time ? &timeout : nullptr, &before);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

QString WordOf(RowChange::Kind kind)
{
    switch (kind) {
    case RowChange::Kind::Added:
        return QStringLiteral("added");
    case RowChange::Kind::Removed:
        return QStringLiteral("removed");
    case RowChange::Kind::Status:
        break;
    }
    return QStringLiteral("status");
}

QString StatusText(char const* table, int status)
{
    QString const column = QStringLiteral("syncStatus");
    bool const isFolder = qstrcmp(table, tandry::findings::Folders) == 0;
    auto const* const names =
        isFolder ? NamesOfValues<FolderConfiguration>(column) : NamesOfValues<FileConfiguration>(column);
    return names == nullptr ? QString::number(status) : names->InWords(status);
}

/// Prints the changes of a store, and counts them.
class ChangePrinter
{
public:
    ChangePrinter(Output& output, RowStates& states)
        : _output(output)
        , _states(states)
    {}

    void Print(RowChange const& change)
    {
        ++(change.kind == RowChange::Kind::Added ? _added
                                                 : (change.kind == RowChange::Kind::Removed ? _removed : _changed));
        QString const name =
            change.kind == RowChange::Kind::Removed ? QString() : _states.NameOf(change.table, change.id);
        if (_output.format() == OutputFormat::Json)
            _PrintJson(change, name);
        else
            _PrintPlain(change, name);
    }

    void PrintSummary()
    {
        if (_output.format() == OutputFormat::Json)
            _PrintObject({{QStringLiteral("change"), QStringLiteral("end")},
                          {QStringLiteral("added"), _added},
                          {QStringLiteral("removed"), _removed},
                          {QStringLiteral("status"), _changed}});
        else
            _output.PrintLine(QStringLiteral("%1 added, %2 removed, %3 with another status")
                                  .arg(Counted(_added, "record", "records"))
                                  .arg(_removed)
                                  .arg(_changed));
    }

private:
    void _PrintPlain(RowChange const& change, QString const& name)
    {
        QStringList words{CellText(QDateTime::currentDateTimeUtc(), _output.plainForm().clock),
                          WordOf(change.kind),
                          WordForRecordOf(QLatin1String(change.table)),
                          QString::number(change.id)};
        if (!name.isNull())
            words.append(Quoted(name));
        QStringList statuses;
        for (std::optional<int> const& status : {change.before, change.after}) {
            if (status && change.kind != RowChange::Kind::Removed)
                statuses.append(StatusText(change.table, *status));
        }
        QString const line = words.join(QLatin1Char(' '));
        _output.PrintLine(statuses.isEmpty() ? line
                                             : line + QStringLiteral(": ") + statuses.join(QStringLiteral(" -> ")));
    }

    void _PrintJson(RowChange const& change, QString const& name)
    {
        QVariantMap object{{QStringLiteral("time"), QDateTime::currentDateTimeUtc()},
                           {QStringLiteral("change"), WordOf(change.kind)},
                           {QStringLiteral("kind"), WordForRecordOf(QLatin1String(change.table))},
                           {QStringLiteral("id"), change.id}};
        if (!name.isNull())
            object.insert(QStringLiteral("name"), name);
        if (change.before)
            object.insert(QStringLiteral("before"), *change.before);
        if (change.after)
            object.insert(QStringLiteral("after"), *change.after);
        _PrintObject(object);
    }

    void _PrintObject(QVariantMap const& object)
    {
        QByteArray json;
        tandry::findings::AppendJsonValue(json, object);
        _output.PrintText(QString::fromUtf8(json) + QLatin1Char('\n'));
    }

    Output& _output;
    RowStates& _states;
    qint64 _added = 0;
    qint64 _removed = 0;
    qint64 _changed = 0;
};

/// Throws if the session reads a copy of the store, which never changes.
void CheckIsStoreItself(Session& session)
{
    if (session.isOnServer())
        return;
    if (session.fileStore()->path() != sync::database::AbsolutePath(session.storePath()))
        throw Failure(FailureCode::StoreRefused,
                      QStringLiteral("only a copy of the store %1 can be read, which does not change")
                          .arg(Quoted(session.storePath())),
                      QStringLiteral("bring the store up to date with 'tandryctl init'"));
}

/// Returns false if the store cannot be read at the moment, since another program is just opening or closing it. Throws
/// on other failures.
bool PrintChanges(Session& session, RowStates& states, ChangePrinter& printer)
{
    bool const isComplete = states.Look([&](RowChange const& change) { printer.Print(change); });
    session.Flush();
    std::optional<StoreError> const error = session.store()->LastError();
    bool const isPassing = error && (error->kind == StoreErrorKind::Locked || error->kind == StoreErrorKind::NotClosed);
    if (!isComplete && !isPassing)
        session.CheckWritten(false);
    session.store()->ClearError(); // the name of a row may have been unreadable too
    return isComplete;
}

/// Prints the changes of a store that does not tell of commits until a signal comes.
void LookUntilInterrupted(Session& session, RowStates& states, milliseconds interval, ChangePrinter& printer)
{
    while (!Interruption::IsRequested()) {
        static_cast<void>(PrintChanges(session, states, printer));
        Sleep(-1, interval);
    }
}

/// Prints the changes until a signal comes.
void WatchUntilInterrupted(
    Session& session, StoreChanges& changes, RowStates& states, milliseconds interval, ChangePrinter& printer)
{
    SteadyClock::time_point nextLook = SteadyClock::now();
    bool hasChanged = false;
    while (!Interruption::IsRequested()) {
        StoreChanges::Sight const sight = changes.Look();
        if (sight.error)
            throw session.FailureOf(*sight.error);
        hasChanged = hasChanged || !sight.tables.isEmpty();
        SteadyClock::time_point const now = SteadyClock::now();
        if (hasChanged && now >= nextLook) {
            hasChanged = !PrintChanges(session, states, printer);
            nextLook = SteadyClock::now() + interval;
            continue;
        }
        std::optional<milliseconds> time;
        if (sight.pauseMsec)
            time = milliseconds(*sight.pauseMsec);
        if (hasChanged) {
            auto const rest = std::chrono::ceil<milliseconds>(nextLook - now);
            time = time ? std::min(*time, rest) : rest;
        }
        Sleep(sight.pauseMsec ? -1 : changes.descriptor(), time);
    }
}

ExitStatus Watch(Session& session, Arguments const& arguments)
{
    CheckIsStoreItself(session);
    Interruption const interruption;
    auto const changes = session.store()->WatchChanges(); // before the first look, so that no commit falls in between
    session.CheckWritten(changes != nullptr || session.isOnServer());
    RowStates states(session.store());
    session.CheckWritten(states.Look([](RowChange const&) {}));
    PrintNote(QStringLiteral("watching %1; Ctrl-C ends it").arg(Quoted(session.storePath())));

    ChangePrinter printer(session.output(), states);
    std::chrono::seconds const interval(arguments.interval.value_or(DefaultIntervalSeconds));
    if (changes != nullptr)
        WatchUntilInterrupted(session, *changes, states, interval, printer);
    else
        LookUntilInterrupted(session, states, interval, printer);
    printer.PrintSummary();
    Interruption::TakeAsHandled();
    return ExitStatus::Done;
}

} // namespace

void AddWatchCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("watch", "Print what changes in the store, until interrupted")
        .Count("--interval", arguments->interval, "The least number of seconds between two looks; by default 1")
        .Remark(
            "Prints records that are added or removed, or whose status changes, whichever program writes, with the\n"
            "time at which it was seen. What has changed and changed back between two looks is not seen. A look reads\n"
            "all ids and statuses and keeps them, 8 bytes for each record. Between looks no lock is held, and while\n"
            "nobody writes nothing is read, except from a profile that does not tell of commits, which is read at\n"
            "each interval. Ctrl-C ends it with a summary; --json prints one object per line.")
        .Example("watch", "see what a client does with its store")
        .Example("watch --json --interval 10", "the same for a program, and for a large store")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Watch(session, *arguments); });
}

} // namespace tandryctl
