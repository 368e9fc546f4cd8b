// Records per second of the library's hot paths, each also shown as a ratio to the floor: the
// cost of copying a prebuilt record into the send queue under its lock, which every path pays.
#include "allocations.h"
#include "biz_cmdswork.h"
#include "biz_osd_cmdswork.h"
#include "dalTarsel.h"
#include "dal_osd.h"
#include "dal_pommet.h"
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

// The generic send on a translated family: fill, translate, trace check, queue.
void sendTo(benchmark::State& state, int device, int cmd, int dat1, QByteArray block) {
    quietTrace();
    Utility_Manage::setDeviceType(device);
    Utility_Manage::setDeviceSubType(device);
    DalTarsel dal;
    auto* data = block.isEmpty() ? nullptr : reinterpret_cast<unsigned char*>(block.data());
    measure(state, [&] { dal.f_SendCmd(3000, cmd, dat1, 2, 3, 0, data, block.size(), QString()); });
    Utility_Manage::setDeviceType(0x700000);
}

void BM_TranslateT3(benchmark::State& state) { sendTo(state, 0x250400, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateT3);

void BM_TranslateT9(benchmark::State& state) { sendTo(state, 0x250300, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateT9);

void BM_FrameVM6S(benchmark::State& state) { sendTo(state, 0x2C0104, 0x68, 0x1A, {}); }
BENCHMARK(BM_FrameVM6S);

void BM_FrameVantaZ(benchmark::State& state) {
    sendTo(state, 0x2C0104, 0x90, 0x03, QByteArray(16, '\x05'));
}
BENCHMARK(BM_FrameVantaZ);

void BM_TunnelCadex(benchmark::State& state) {
    sendTo(state, 0x260000, 0x91, 0x03, QByteArray(16, '\x05'));
}
BENCHMARK(BM_TunnelCadex);

void BM_TranslateH40(benchmark::State& state) { sendTo(state, 0x900000, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateH40);

void BM_TranslateH40B(benchmark::State& state) { sendTo(state, 0x900001, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateH40B);

void BM_TranslateNV(benchmark::State& state) { sendTo(state, 0x2D0000, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateNV);

void BM_TranslateKR2(benchmark::State& state) { sendTo(state, 0x250502, 0x6A, 0x03, {}); }
BENCHMARK(BM_TranslateKR2);

void BM_SceneWith190Layers(benchmark::State& state) {
    quietTrace();
    Utility_Manage::setDeviceType(0x700000);
    ModelScene scene;
    scene.timeout = 3000;
    scene.maxLayerCount = 190;
    scene.maxBankCount = 16;
    _Scene_Layer layers;
    layers.layerList.resize(190);
    scene.sceneList.append(layers);
    DalTarsel dal;
    measure(state, [&] { dal.setSceneDate(0, scene); });
}
BENCHMARK(BM_SceneWith190Layers);

void BM_ContainersWith146(benchmark::State& state) {
    quietTrace();
    Utility_Manage::setDeviceType(0x700000);
    ModelTarsel model;
    model.timeout = 3000;
    model.maxContainerCount = 146;
    for (int i = 0; i < 146; ++i)
        model.containerParams.append(_ContainerParam_Destktop());
    DalTarsel dal;
    measure(state, [&] { dal.setContainerParam(model, 0x2C0104); });
}
BENCHMARK(BM_ContainersWith146);

// Built in full and dropped before the paced append: the link is down.
void BM_KeyboardGroupOled(benchmark::State& state) {
    quietTrace();
    Utility_Manage::setConnectToneFlag(1);
    Utility_Manage::setToneProcVer(QStringLiteral("1.1"));
    Model_PommetParam param;
    for (_KeyParam& key : param.keysKind1) {
        key.bytes[13] = 8;
        key.bytes[14] = 8;
        key.bytes[15] = 8;
    }
    Dal_Pommet::isConnected = false;
    Dal_Pommet keyboard;
    measure(state, [&] { keyboard.setGroupKeyOled(1, 0, param); });
}
BENCHMARK(BM_KeyboardGroupOled);

void BM_OsdTextInfo(benchmark::State& state) {
    dal_Osd osd;
    const QString text = QStringLiteral("Studio A - live");
    const QString tag = QStringLiteral("osd");
    int sent = 0;
    measure(state, [&] {
        osd.sendTextInfo(0x0102, 0x0304, 5, 6, 7, 8, 9, 10, 11, text, 0, tag);
        if (++sent % kDrainEvery == 0) {
            std::lock_guard<std::mutex> lock(biz_Osd_CMDSWork::sendQueueLock);
            biz_Osd_CMDSWork::sendQueue.clear();
        }
    });
}
BENCHMARK(BM_OsdTextInfo);

// Keeps each benchmark's rate so that the ratios can be printed after the run.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Each run is compared with the floor's run of the same kind: a single run, or the same
    // aggregate (mean, median) when runs are repeated.
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto items = run.counters.find("items_per_second");
            if (items == run.counters.end() || run.aggregate_name == "stddev" ||
                run.aggregate_name == "cv")
                continue;
            rates[run.benchmark_name()] = {run.aggregate_name, items->second};
            if (run.run_name.function_name == "BM_Floor")
                floors[run.aggregate_name] = items->second;
        }
    }

    void printRatios() const {
        if (floors.empty())
            return;
        std::printf("\n%-34s %14s %10s\n", "benchmark", "records/s", "x floor");
        for (const auto& [name, rate] : rates) {
            const auto floor = floors.find(rate.first);
            if (floor != floors.end())
                std::printf("%-34s %14.0f %10.2f\n", name.c_str(), rate.second,
                            floor->second / rate.second);
        }
    }

private:
    std::map<std::string, std::pair<std::string, double>> rates; // name: aggregate, rate
    std::map<std::string, double> floors;                        // by aggregate
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
