// `dalctl explain` inside one process, over a mixed application log: every other line a trace
// line of the generic send, a handful of distinct ones repeating as a log repeats them, each
// written by the library itself. Measured: lines per second of explainLine once every distinct
// line is proven, and of the whole path from file to file with its peak memory over logs of
// growing length (explain streams, so the peak stays where it was); and what proving one trace
// line costs, for lines the process has not seen (each of them is proven once). The rate of the
// tool as a process, proofs and start included, is bench/explain_rate.sh's.
#include "allocations.h"
#include "engine.h"
#include "explain.h"
#include "pacing.h"
#include "records.h"
#include "registry.h"
#include "session.h"

#include <QLoggingCategory>
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

// The trace lines one call writes, as the library writes them.
QStringList traceOf(const QString& familyName, const QString& operation, const QStringList& words) {
    Call call;
    call.op = &operationFor(operation, words);
    call.words = words;
    call.models = Models::defaults();
    call.utility.deviceType = familyOf(familyName)->code;
    traced.clear();
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=true"));
    const QtMessageHandler previous = qInstallMessageHandler(collect);
    run(call);
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    return traced;
}

// A handful of requests on several families: heads, texts, frames, a tunnel, data blocks.
const QStringList& distinctTraceLines() {
    static const QStringList lines = [] {
        dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
        QStringList all;
        all << traceOf("native", "saveScene", {"3000", "5"})
            << traceOf("native", "setSupplierName", {"3000", "5", "414243"})
            << traceOf("native", "setSceneDate", {"1"}) << traceOf("T3", "saveScene", {"3000", "2"})
            << traceOf("T9", "getComBoardVer", {}) << traceOf("H40B", "getComBoardVer", {})
            << traceOf("VM6S", "getComBoardVer", {})
            << traceOf("Cadex", "setSupplierName", {"3000", "5", "414243"});
        all.removeDuplicates();
        return all;
    }();
    return lines;
}

// Each distinct trace line after a timestamp, followed by a line of the application's own,
// over and over.
const QVector<QByteArray>& mixedLog() {
    static const QVector<QByteArray> log = [] {
        QVector<QByteArray> lines;
        for (const QString& line : distinctTraceLines())
            lines << "2024-05-01 12:00:00.123 [biz] " + line.toUtf8()
                  << "2024-05-01 12:00:00.124 [ui] take pressed on screen 2, layer 5 selected";
        return lines;
    }();
    return log;
}

void BM_ExplainLine(benchmark::State& state) {
    const QVector<QByteArray>& log = mixedLog();
    for (const QByteArray& line : log) // every distinct line proven before the clock starts
        explainLine(line, nullptr, false);
    const std::size_t before = allocationCount();
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(explainLine(log[next], nullptr, false));
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
        explainStream(fileno(in), out, nullptr, false);
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

// One proof of a trace line the process has not seen, on its own family and on every family:
// saveScene with a scene number of each iteration's own.
void BM_ProveNewLine(benchmark::State& state) {
    const bool everyFamily = state.range(0);
    const Family* native = familyOf(QStringLiteral("native"));
    QVector<const Family*> searched;
    for (const Family& f : families())
        if (f.className == QLatin1String("DalTarsel") && (everyFamily || &f == native))
            searched << &f;
    engine::prove(engine::textAlone(QString()), searched); // what is learnt once per process
    const Operation& op = operationFor(QStringLiteral("saveScene"), {"3000", "1"});
    int scene = 0;
    int found = 0;
    for (auto _ : state) {
        state.PauseTiming();
        Call call;
        call.op = &op;
        call.words = QStringList{QStringLiteral("3000"), QString::number(++scene % 256)};
        call.models = Models::defaults();
        call.utility.deviceType = native->code;
        const model_Protocoldata rec = run(call).records.value(0);
        const QByteArray head(reinterpret_cast<const char*>(rec.cmdHead) + 2, 5);
        state.ResumeTiming();
        found += !engine::prove(engine::traceLine(head, rec.arryDatablock, rec.Datablock), searched)
                      .answers.isEmpty();
    }
    state.counters["proven"] = double(found) / double(state.iterations());
}
BENCHMARK(BM_ProveNewLine)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(64);

} // namespace

BENCHMARK_MAIN();
