#include "benchmarks/Runner.h"

#include "benchmarks/PeakMemory.h"

#include <algorithm>
#include <memory>
#include <string>

namespace sync::benchmarks {

namespace {

/// In which passes are added, in seconds of all entrants' work, and how many at most.
constexpr double TimeToFill = 3;
constexpr int MostPasses = 25;

/// Takes what Google Benchmark measured, and prints nothing.
class Stopwatch : public benchmark::BenchmarkReporter
{
public:
    explicit Stopwatch(Clock clock)
        : _clock(clock)
    {}

    double Seconds(std::string const& name, std::function<void()> const& measured)
    {
        benchmark::ClearRegisteredBenchmarks();
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&](benchmark::State& state) {
                                         for ([[maybe_unused]] auto const iteration : state)
                                             measured();
                                     })
            ->Iterations(1)
            ->UseRealTime()
            ->MeasureProcessCPUTime();
        benchmark::RunSpecifiedBenchmarks(this);
        return _seconds;
    }

    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override
    {
        Run const& run = runs.front();
        _seconds = _clock == Clock::Elapsed ? run.real_accumulated_time : run.cpu_accumulated_time;
    }

private:
    Clock const _clock;
    double _seconds = 0;
};

std::vector<std::unique_ptr<Participant>> ParticipantsOf(Case const& benchmark, SampleStore& store)
{
    std::vector<std::unique_ptr<Participant>> participants;
    for (Entrant const entrant : Entrants)
        if (benchmark.concernsSql || entrant == Entrant::Managers || entrant == Entrant::ByHand)
            participants.push_back(std::make_unique<Participant>(entrant, store.CopyFor(entrant)));
    return participants;
}

} // namespace

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::size_t const middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double Measurement::median() const
{
    return Median(microseconds);
}

Result Run(Case const& benchmark, SampleStore& store, int repetitions, Clock clock)
{
    Result result{benchmark.workload, benchmark.rows, benchmark.operations, benchmark.limit, {}};
    auto participants = ParticipantsOf(benchmark, store);

    benchmark.prepare(0);
    for (auto const& participant : participants) {
        benchmark.reset(*participant);
        PeakMemory const memory;
        benchmark.run(*participant);
        result.measurements[participant->entrant].peakBytes = memory.beyondStart();
    }

    Stopwatch stopwatch(clock);
    double filled = 0;
    auto const takesMore = [&](int pass) { return benchmark.goesOn && filled < TimeToFill && pass <= MostPasses; };
    for (int pass = 1; pass <= repetitions || takesMore(pass); ++pass) {
        benchmark.prepare(pass);
        for (auto const& participant : participants) {
            benchmark.reset(*participant);
            double const seconds =
                stopwatch.Seconds(benchmark.name().toStdString(), [&] { benchmark.run(*participant); });
            result.measurements[participant->entrant].microseconds.push_back(seconds * 1e6 /
                                                                             double(benchmark.operations));
            filled += seconds;
        }
        std::rotate(participants.begin(), participants.begin() + 1, participants.end());
    }
    return result;
}

} // namespace sync::benchmarks
