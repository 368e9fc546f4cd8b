// Records per second of the library's hot paths, each also shown as a ratio to the floor: the
// cost of copying a prebuilt record into the send queue under its lock, which every path pays.
#include "allocations.h"
#include "biz_cmdswork.h"
#include "dalTarsel.h"
#include "utility_manage.h"

#include <QLoggingCategory>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

constexpr int kDrainEvery = 4096; // keeps the queue's memory flat in every benchmark alike

void drainSometimes(benchmark::State& state) {
    if (state.iterations() % kDrainEvery == 0) {
        std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
        biz_CMDSWork::queueHexCmd.clear();
    }
}

// Runs `body` once per iteration and reports records per second and allocations per record.
template <class Body>
void measure(benchmark::State& state, Body body) {
    DalTarsel::isConnected = true;
    const std::size_t before = allocationCount();
    for (auto _ : state) {
        body();
        drainSometimes(state);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["allocs/record"] =
        benchmark::Counter(double(allocationCount() - before) / double(state.iterations()));
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::queueHexCmd.clear();
}

void quietTrace() { QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); }

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

void BM_Floor(benchmark::State& state) {
    model_Protocoldata rec;
    rec.cmdHead[2] = 0x6A;
    rec.cmdHead[3] = 3;
    rec.timeout = 3000;
    rec.deviceType = 0x700000;
    measure(state, [&] {
        std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
        biz_CMDSWork::queueHexCmd.push_back(rec);
    });
}
BENCHMARK(BM_Floor);

void BM_SendNativeTraceDisabled(benchmark::State& state) {
    quietTrace();
    Utility_Manage::setDeviceType(0x700000);
    DalTarsel dal;
    measure(state, [&] { dal.f_SendCmd(3000, 0x6A, 3, 0, 0, 0, nullptr, 0, QString()); });
}
BENCHMARK(BM_SendNativeTraceDisabled);

void BM_SendNativeTraceDiscarded(benchmark::State& state) {
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=true"));
    const QtMessageHandler previous = qInstallMessageHandler(discardMessage);
    Utility_Manage::setDeviceType(0x700000);
    DalTarsel dal;
    measure(state, [&] { dal.f_SendCmd(3000, 0x6A, 3, 0, 0, 0, nullptr, 0, QString()); });
    qInstallMessageHandler(previous);
    quietTrace();
}
BENCHMARK(BM_SendNativeTraceDiscarded);

// Keeps each benchmark's rate so that the ratios can be printed after the run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto items = run.counters.find("items_per_second");
            if (items != run.counters.end())
                rates[run.benchmark_name()] = items->second;
        }
    }

    void printRatios() const {
        const auto floor = rates.find("BM_Floor");
        if (floor == rates.end())
            return;
        std::printf("\n%-34s %14s %10s\n", "benchmark", "records/s", "x floor");
        for (const auto& [name, rate] : rates)
            std::printf("%-34s %14.0f %10.2f\n", name.c_str(), rate, floor->second / rate);
    }

private:
    std::map<std::string, double> rates;
};

} // namespace

int main(int argc, char** argv) {
    quietTrace();
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    benchmark::Shutdown();
    return 0;
}
