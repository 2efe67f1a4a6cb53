#pragma once

#include "benchmarks/Contestant.h"

#include <benchmark/benchmark.h>

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace sync::benchmarks {

/// A contestant on its own copy of a sample store, open while it is used.
class Participant
{
public:
    Participant(Entrant who, QString where)
        : entrant(who)
        , path(std::move(where))
    {}

    Contestant& store()
    {
        if (!_store)
            _store = Enter(entrant, path);
        return *_store;
    }
    void Close() { _store.reset(); }

    Entrant const entrant;
    QString const path;

private:
    std::unique_ptr<Contestant> _store;
};

/// A workload over so many rows: what each contestant does in one pass, with the same keys for all.
struct Case
{
    QString workload;
    qint64 rows = 0;
    /// In one pass.
    qint64 operations = 1;
    /// The most that the managers may take, as a multiple of what it takes by hand; 0 where nothing is set.
    double limit = 0;
    bool changesStore = false;
    /// Whether Qt SQL has something to do with it, and the time for it.
    bool concernsSql = true;
    /// Whether there is work left for more passes than were asked for.
    bool goesOn = true;

    /// Once for each pass, not measured: makes the keys.
    std::function<void(int pass)> prepare = [](int) {};
    /// Before each measurement, not measured.
    std::function<void(Participant&)> reset = [](Participant&) {};
    /// What is measured.
    std::function<void(Participant&)> run;

    QString name() const { return QStringLiteral("%1/%2").arg(workload).arg(rows); }
};

/// Runs the statements on the participant's store behind its back, in one transaction, and works off the log, so that
/// everybody's next writes find it empty.
void ExecuteOn(Participant const& participant, QStringList const& statements);

/// A case that does one thing with one key after the other. `makeKey` is given a number that no other pass is given.
template <class MakeKey, class Step>
Case Each(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Step step)
{
    using Key = decltype(makeKey(0));
    auto const keys = std::make_shared<std::vector<Key>>();

    Case each;
    each.workload = workload;
    each.rows = rows;
    each.operations = operations;
    each.prepare = [=](int pass) {
        keys->clear();
        for (int i = 0; i < operations; ++i)
            keys->push_back(makeKey(pass * operations + i));
    };
    each.run = [=](Participant& participant) {
        Contestant& store = participant.store();
        for (Key& key : *keys)
            step(store, key);
    };
    return each;
}

/// A read: the answer has to be there, but nothing is done with it.
template <class MakeKey, class Read>
Case EachRead(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Read read)
{
    Case each = Each(workload, rows, operations, makeKey, [read](Contestant& store, auto const& key) {
        auto const answer = read(store, key);
        benchmark::DoNotOptimize(&answer);
        benchmark::ClobberMemory();
    });
    each.limit = 1.3;
    return each;
}

/// A write that is durable when it returns.
template <class MakeKey, class Step>
Case EachWrite(QString const& workload, qint64 rows, int operations, MakeKey makeKey, Step step)
{
    Case each = Each(workload, rows, operations, makeKey, step);
    each.changesStore = true;
    each.limit = 1.1;
    each.reset = [](Participant const& participant) { ExecuteOn(participant, {}); };
    return each;
}

/// The same in one bracket, its end included.
inline Case InBracket(Case each)
{
    each.limit = 1.3;
    each.run = [run = std::move(each.run)](Participant& participant) {
        participant.store().Begin();
        run(participant);
        participant.store().Commit();
    };
    return each;
}

} // namespace sync::benchmarks
