#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

#include <functional>

// One catalog call on a fresh library object.
using Call = std::function<void(DalTarsel&)>;
Q_DECLARE_METATYPE(Call)

namespace {

ModelTarsel device() {
    ModelTarsel m;
    m.timeout = 4200;
    m.maxOutputCount = 8;
    return m;
}

ModelScene scene() {
    ModelScene s;
    s.timeout = 2500;
    return s;
}

QByteArray head(int cmd, int dat1, int dat2, int dat3, int dat4) {
    const char bytes[] = {char(cmd), char(dat1), char(dat2), char(dat3), char(dat4)};
    return QByteArray(bytes, 5);
}

} // namespace

class tst_catalog_system : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void sends_data();
    void sends();
    void emptyBodiesSendNothing();
    void boardMcuFlagChangesNothing_data();
    void boardMcuFlagChangesNothing();
    void outputFrequencyFromUtility();
    void vm6sWidthHeightBlock();
    void everySystemOperationRegistered();
    void everyOutputOperationRegistered();
};

// Rows that exercise logic or a fault-prone cell: choices, time-out arithmetic, truncation,
// model and scene fields, 16-bit splits, the all-outputs rule.
void tst_catalog_system::sends_data() {
    QTest::addColumn<Call>("call");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QByteArray>("head");

    ModelTarsel m = device();
    m.deviceState = 2;
    m.recallDelaySwitch = 1;
    m.recallDelayTime = 0x10A; // one byte each, truncated
    m.operationMode = 3;
    m.operationAuxMode = 4;
    m.operationModeParam = 5;
    m.logoDisplayMode = 6;
    m.outHTotal = 2200;
    m.outVSize = 1080;
    m.outColorSpace = 0x102;
    m.twoSplitMode = 1;
    m.h264InputWorkModes = {7, 9};
    ModelScene s = scene();
    s.blackSwitch = 1;
    s.takeSwitch = 0x1FE;
    s.outAlphaTime = 1000;

    QTest::newRow("getCurrentSceneIndex p1+1000")
        << Call([](DalTarsel& d) { d.getCurrentSceneIndex(2000); }) << 3000
        << head(0x68, 0x19, 0, 0, 0);
    QTest::newRow("getNormalOutBoardFormat p1+1000")
        << Call([](DalTarsel& d) { d.getNormalOutBoardFormat(500, 0x102); }) << 1500
        << head(0x74, 0x33, 0, 0, 0x02);
    QTest::newRow("checkSavePage time-out is p2")
        << Call([](DalTarsel& d) { d.checkSavePage(9, 1200); }) << 1200
        << head(0x68, 0x15, 9, 0, 0);
    QTest::newRow("setTakeAlphaValue fixed 5000")
        << Call([](DalTarsel& d) { d.setTakeAlphaValue(0x180); }) << 5000
        << head(0x78, 0x08, 0x80, 0, 0);
    QTest::newRow("savePage truncated") << Call([m](DalTarsel& d) { d.savePage(0x1234, m); })
                                        << 4200 << head(0x68, 0x12, 0x34, 0, 0);
    QTest::newRow("clearAllPage") << Call([m](DalTarsel& d) { d.clearAllPage(m); }) << 4200
                                  << head(0x68, 0x14, 0xFF, 0, 0);
    QTest::newRow("setTempUnits in DAT4") << Call([](DalTarsel& d) { d.setTempUnits(3000, -1); })
                                          << 3000 << head(0x68, 0x90, 0, 0, 0xFF);
    QTest::newRow("saveScene") << Call([](DalTarsel& d) { d.saveScene(700, 12); }) << 700
                               << head(0x68, 0x1A, 0x01, 12, 0);
    QTest::newRow("doCut") << Call([](DalTarsel& d) { d.doCut(900, 2); }) << 900
                           << head(0x78, 0x00, 2, 0x01, 0);
    QTest::newRow("doTBarTakeEnd") << Call([m](DalTarsel& d) { d.doTBarTakeEnd(0x37, m); }) << 4200
                                   << head(0x78, 0x00, 0, 0x04, 0x37);
    QTest::newRow("setOutputSwitchMode bools")
        << Call([](DalTarsel& d) { d.setOutputSwitchMode(100, true, false); }) << 100
        << head(0x68, 0x60, 1, 0, 0);
    QTest::newRow("setDeviceState")
        << Call([m](DalTarsel& d) { d.setDeviceState(m); }) << 4200 << head(0x68, 0x10, 2, 0, 0);
    QTest::newRow("setDelay_Recall") << Call([m](DalTarsel& d) { d.setDelay_Recall(m); }) << 4200
                                     << head(0x68, 0x28, 1, 0x0A, 0);
    QTest::newRow("setOperationMode model")
        << Call([m](DalTarsel& d) { d.setOperationMode(m); }) << 4200 << head(0x78, 0x04, 3, 4, 5);
    QTest::newRow("setOperationMode ints")
        << Call([](DalTarsel& d) { d.setOperationMode(800, 3, 4); }) << 800
        << head(0x78, 0x04, 3, 4, 0);
    QTest::newRow("setLogoDisplayMode") << Call([m](DalTarsel& d) { d.setLogoDisplayMode(2, m); })
                                        << 4200 << head(0x71, 0x0C, 2, 6, 0);
    QTest::newRow("setBlackSwitch scene time-out")
        << Call([s](DalTarsel& d) { d.setBlackSwitch(s); }) << 2500 << head(0x78, 0x06, 1, 0, 0);
    QTest::newRow("setTakeSwitch truncated")
        << Call([s](DalTarsel& d) { d.setTakeSwitch(s); }) << 2500 << head(0x78, 0x0C, 0xFE, 0, 0);
    QTest::newRow("setH264InputWorkMode listed input")
        << Call([m](DalTarsel& d) { d.setH264InputWorkMode(m, 1); }) << 4200
        << head(0x78, 0x24, 9, 1, 0);
    QTest::newRow("setH264InputWorkMode unlisted input")
        << Call([m](DalTarsel& d) { d.setH264InputWorkMode(m, 5); }) << 4200
        << head(0x78, 0x24, 0, 5, 0);

    // Outputs group.
    QTest::newRow("setInputSync on") << Call([](DalTarsel& d) { d.setInputSync(600, true); }) << 600
                                     << head(0x74, 0x48, 0xFF, 0x01, 0xFF);
    QTest::newRow("setInputSync off") << Call([](DalTarsel& d) { d.setInputSync(600, false); })
                                      << 600 << head(0x74, 0x48, 0xFF, 0x00, 0xFF);
    QTest::newRow("setAdvancedTimingOutHTotal 2200")
        << Call([m](DalTarsel& d) { d.setAdvancedTimingOutHTotal(m); }) << 4200
        << head(0x74, 0x02, 0, 0x98, 0x08);
    QTest::newRow("setAdvancedTimingOutVSize 1080")
        << Call([m](DalTarsel& d) { d.setAdvancedTimingOutVSize(m); }) << 4200
        << head(0x74, 0x08, 0, 0x38, 0x04);
    QTest::newRow("setAdvancedTimingOutColorSpace")
        << Call([m](DalTarsel& d) { d.setAdvancedTimingOutColorSpace(m); }) << 4200
        << head(0x74, 0x12, 0, 0x02, 0);
    QTest::newRow("setTwoSpliteMode")
        << Call([m](DalTarsel& d) { d.setTwoSpliteMode(m); }) << 4200 << head(0x75, 0x42, 1, 0, 0);
    QTest::newRow("setOutAlphaTime 1000 ms") << Call([s](DalTarsel& d) { d.setOutAlphaTime(s); })
                                             << 2500 << head(0x76, 0x02, 0, 0xE8, 0x03);
    QTest::newRow("setBoardBrightness 356")
        << Call([](DalTarsel& d) { d.setBoardBrightness(300, 2, 356); }) << 300
        << head(0x74, 0x62, 2, 0x01, 0x64);
    QTest::newRow("setCustomEDIDWidth")
        << Call([](DalTarsel& d) { d.setCustomEDIDWidth(300, 0x44, 3); }) << 300
        << head(0x73, 0x1C, 3, 0x44, 0x44);
    QTest::newRow("setOutBoardCustomFormatFreq order")
        << Call([](DalTarsel& d) { d.setOutBoardCustomFormatFreq(300, 1, 2, 3); }) << 300
        << head(0x74, 0x44, 3, 1, 2);
    QTest::newRow("setTS2TPColor fixed DAT4")
        << Call([](DalTarsel& d) { d.setTS2TPColor(300, 5, 99); }) << 300
        << head(0x76, 0x32, 5, 0, 0x10);
    QTest::newRow("setLayerBlendingWidth fixed 3000")
        << Call([](DalTarsel& d) { d.setLayerBlendingWidth(1, 2, 3); }) << 3000
        << head(0x75, 0x20, 1, 2, 3);

    // The all-outputs rule: the index equal to the output count (8) means every output.
    using Reader = void (DalTarsel::*)(int, ModelTarsel);
    const struct {
        const char* name;
        Reader read;
        int cmd;
        int dat1;
    } readers[] = {
        {"getOutPutBrightness", &DalTarsel::getOutPutBrightness, 0x76, 0x21},
        {"getDeSwitch", &DalTarsel::getDeSwitch, 0x86, 0x01},
        {"getDeY", &DalTarsel::getDeY, 0x86, 0x03},
        {"getDeX", &DalTarsel::getDeX, 0x86, 0x05},
        {"getDeWidth", &DalTarsel::getDeWidth, 0x86, 0x07},
        {"getDeHeight", &DalTarsel::getDeHeight, 0x86, 0x09},
        {"getDeOutputMode", &DalTarsel::getDeOutputMode, 0x86, 0x0B},
        {"getDePolarity", &DalTarsel::getDePolarity, 0x86, 0x0D},
        {"getDeDataRange", &DalTarsel::getDeDataRange, 0x86, 0x0F},
        {"getDeColorSpace", &DalTarsel::getDeColorSpace, 0x86, 0x13},
        {"getDeOutputSignal", &DalTarsel::getDeOutputSignal, 0x86, 0x15},
    };
    for (const auto& r : readers) {
        const Reader read = r.read;
        QTest::addRow("%s one output", r.name)
            << Call([=](DalTarsel& d) { (d.*read)(7, m); }) << 4200 << head(r.cmd, r.dat1, 7, 0, 0);
        QTest::addRow("%s all outputs", r.name) << Call([=](DalTarsel& d) { (d.*read)(8, m); })
                                                << 4200 << head(r.cmd, r.dat1, 0xFF, 0, 0);
        QTest::addRow("%s 0x108 is output 8, not all", r.name)
            << Call([=](DalTarsel& d) { (d.*read)(0x108, m); }) << 4200
            << head(r.cmd, r.dat1, 0x08, 0, 0);
    }
    QTest::newRow("setHDRSwitch all outputs")
        << Call([m](DalTarsel& d) { d.setHDRSwitch(m, 1, 8); }) << 4200
        << head(0x74, 0x52, 0xFF, 1, 0);
    QTest::newRow("getHDRSwitch one output")
        << Call([m](DalTarsel& d) { d.getHDRSwitch(m, 3); }) << 4200 << head(0x74, 0x53, 3, 0, 0);
}

void tst_catalog_system::sends() {
    QFETCH(Call, call);
    QFETCH(int, timeout);
    QFETCH(QByteArray, head);
    DalTarsel d;
    call(d);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]).toHex(' '), head.toHex(' '));
    QCOMPARE(records[0].timeout, timeout);
    QVERIFY(records[0].arryDatablock.isEmpty());
    QVERIFY(records[0].Datablock.isEmpty());
}

void tst_catalog_system::emptyBodiesSendNothing() {
    DalTarsel d;
    d.setOutPortEdid(device());
    d.getEquipmentClock(device());
    QVERIFY(takeQueued().isEmpty());
}

void tst_catalog_system::boardMcuFlagChangesNothing_data() {
    QTest::addColumn<bool>("input");
    QTest::newRow("input board") << true;
    QTest::newRow("output board") << false;
}

void tst_catalog_system::boardMcuFlagChangesNothing() {
    QFETCH(bool, input);
    DalTarsel d;
    for (bool flag : {true, false}) {
        if (input)
            d.getInputBoardMcu(5, device(), flag);
        else
            d.getOutputBoardMcu(5, device(), flag);
    }
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    const QByteArray expected = head(0x6A, input ? 0x09 : 0x0B, 5, 0, 0);
    for (const auto& rec : records) {
        QCOMPARE(headOf(rec).toHex(' '), expected.toHex(' '));
        QCOMPARE(rec.timeout, 4200);
    }
}

// The stand-in utility encodes a frequency as hundredths of a hertz: 59.94 Hz is 5994 (0x176A).
void tst_catalog_system::outputFrequencyFromUtility() {
    DalTarsel().setOutCustomFormatFreq(700, 3, 59.94);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]).toHex(' '), head(0x74, 0x16, 0x02, 0x6A, 0x17).toHex(' '));
    QCOMPARE(records[0].timeout, 700);
}

// 1920 x 1080: 80 07 38 04, checksum 0x80 + 0x07 + 0x38 + 0x04 = 0xC3.
void tst_catalog_system::vm6sWidthHeightBlock() {
    DalTarsel().setOutCustomFormatWHForVM6S(900, 1920, 1080);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]).toHex(' '), head(0x74, 0x16, 0, 0, 0).toHex(' '));
    QCOMPARE(records[0].arryDatablock.toHex(' '), QByteArray("80 07 38 04 c3"));
    QCOMPARE(records[0].timeout, 900);
}

void tst_catalog_system::everySystemOperationRegistered() {
    const QStringList ops = QStringList()
// clang-format off
#include "group_signatures_begin.h"
#include "catalog/system.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("system.txt"));
}

void tst_catalog_system::everyOutputOperationRegistered() {
    const QStringList ops = QStringList()
// clang-format off
#include "group_signatures_begin.h"
#include "catalog/outputs.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("outputs.txt"));
}

QTEST_GUILESS_MAIN(tst_catalog_system)
#include "tst_catalog_system.moc"
