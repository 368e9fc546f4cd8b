// Lines per second of `dalctl explain` over a mixed application log (every other line a trace
// line of the generic send, from every operation), and the peak memory of a run over logs of
// growing length: explain streams, so the peak stays where it was.
#include "allocations.h"
#include "explain.h"
#include "samples.h"
#include "session.h"

#include <QStringList>
#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>

namespace {

QStringList traced;

void collect(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtDebugMsg && message.contains(QLatin1String("---addToQueue----CMD=")))
        traced << message;
}

// One trace line per record of every operation's sample call, each followed by a line of the
// application's own.
const QVector<QByteArray>& mixedLog() {
    static const QVector<QByteArray> log = [] {
        explainLine("", 0x700000, false); // learn the operations first, untraced
        const QtMessageHandler previous = qInstallMessageHandler(collect);
        for (const Operation& op : operations())
            if (op.className == QLatin1String("DalTarsel") && explainable(op))
                runOperation(op, sampleCall(op).mid(1), DeviceSetting(), Models::defaults());
        qInstallMessageHandler(previous);
        QVector<QByteArray> lines;
        for (const QString& line : traced)
            lines << "2024-05-01 12:00:00.123 [biz] " + line.toUtf8()
                  << "2024-05-01 12:00:00.124 [ui] take pressed on screen 2, layer 5 selected";
        return lines;
    }();
    return log;
}

void BM_ExplainLine(benchmark::State& state) {
    const QVector<QByteArray>& log = mixedLog();
    const std::size_t before = allocationCount();
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(explainLine(log[next], 0x700000, false));
        next = (next + 1) % log.size();
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["lines/s"] =
        benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["allocs/line"] = double(allocationCount() - before) / double(state.iterations());
}
BENCHMARK(BM_ExplainLine);

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// The whole path of the tool, file in and file out, over a log of state.range(0) lines.
void BM_ExplainStream(benchmark::State& state) {
    const QVector<QByteArray>& log = mixedLog();
    std::FILE* in = std::tmpfile();
    for (long i = 0; i < state.range(0); ++i) {
        const QByteArray& line = log[int(i % log.size())];
        std::fwrite(line.constData(), 1, std::size_t(line.size()), in);
        std::fputc('\n', in);
    }
    std::fflush(in);
    std::FILE* out = std::fopen("/dev/null", "w");
    const long peakBefore = peakKilobytes();
    for (auto _ : state) {
        ::lseek(fileno(in), 0, SEEK_SET);
        explainStream(fileno(in), out, 0x700000, false);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["lines/s"] = benchmark::Counter(double(state.iterations() * state.range(0)),
                                                   benchmark::Counter::kIsRate);
    state.counters["peak KB"] = double(peakKilobytes());
    state.counters["peak growth KB"] = double(peakKilobytes() - peakBefore);
    std::fclose(out);
    std::fclose(in);
}
BENCHMARK(BM_ExplainStream)->Arg(100000)->Arg(400000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
