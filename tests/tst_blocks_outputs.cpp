#include "block_checks.h"
#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

ModelTarsel twoOutputs() {
    ModelTarsel model;
    model.timeout = 3300;
    model.maxOutputCount = 2;
    model.maxLayerCount = 2;

    _OutPortParam_Desktop first{0x41, 0x0102, 0x0304, 0x0506, 0x0708, 0x77, 0x77, 0x1B4};
    _OutPortParam_Desktop second{0x42, 0x1112, 0x1314, 0x1516, 0x1718, 0x77, 0x77, 0x5A};
    model.outPortParams = {first, second};
    model.lcdBorders = {{300, 0x0203, 0x0405, 0x0607}, {0, 0, 0, 0}};

    _DSKInfo listEntry;
    _DSKInfo layerEntry;
    for (int k = 0; k < 10; ++k) {
        listEntry.member[k] = k;
        layerEntry.member[k] = 0x30 + k;
    }
    listEntry.member[0] = 0x1FF;
    model.dskInfoList = {_DSKInfo(), _DSKInfo(), listEntry};
    model.layerDskInfos = {_DSKInfo(), layerEntry, layerEntry};

    const _DeInfo distinct{0x101, 1920, 0x0438, 0x1234, 0x0ABC, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A};
    _DeInfo all = distinct;
    all.deWidth = 0x0F00;
    model.deInfos = {_DeInfo(), distinct, all};

    model.testPatternModes = {0, 0x105};
    model.testPatternColor1 = {0, 0x11};
    model.testPatternColor2 = {0, 0x22};
    model.testPatternColor3 = {0, 0x33};
    model.outputBrightness = {0, 0x44};
    model.allOutputsBrightness = 0x55;
    model.output3DStates = {0, 1};
    model.previewPorts = {0x105, 0x06};
    return model;
}

ModelBankPlayer bankPlayer() {
    ModelBankPlayer player;
    player.timeout = 7000;
    for (int i = 0; i < 144; ++i)
        player.loopTimings.append(static_cast<unsigned char>(i));
    for (int i = 0; i < 128; ++i)
        player.loopTimes.append(static_cast<unsigned char>(i));
    return player;
}

using PerOutput = void (DalTarsel::*)(int, ModelTarsel);

} // namespace

Q_DECLARE_METATYPE(PerOutput)

class tst_blocks_outputs : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void portConfiguration();
    void portConfigurationCopy();
    void rotationAndBorders();
    void emptyOutputBlocks();
    void dskEntries();
    void dskAllLayers();
    void deFamily_data();
    void deFamily();
    void deAllOutputs();
    void testPatternsAndBrightness();
    void output3DStateRange();
    void previewPort();
    void bankPlayerLoops();
    void deviceSearch();
    void outOfContract();
    void everyOutputOperationRegistered();
};

void tst_blocks_outputs::portConfiguration() {
    DalTarsel().setOutPortCfgMs(twoOutputs());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f005001300"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("0201040306050807121114131615181741424b"));
    QCOMPARE(rec.timeout, 3300);
}

void tst_blocks_outputs::portConfigurationCopy() {
    DalTarsel().setOutPortCfgMs(twoOutputs());
    DalTarsel().setOutPortCfg(twoOutputs());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[1]), headOf(records[0]));
    QCOMPARE(records[1].arryDatablock, records[0].arryDatablock);
}

void tst_blocks_outputs::rotationAndBorders() {
    DalTarsel dal;
    dal.setOutPortRotate(twoOutputs());
    TAKE_ONE(rotate);
    QCOMPARE(headOf(rotate), QByteArray::fromHex("f00d000300"));
    QCOMPARE(rotate.arryDatablock, QByteArray::fromHex("b45a0e"));

    ModelTarsel one = twoOutputs();
    one.maxOutputCount = 1;
    dal.setLcdBorderSetting(one);
    TAKE_ONE(border);
    QCOMPARE(headOf(border), QByteArray::fromHex("f016000900"));
    QCOMPARE(border.arryDatablock, QByteArray::fromHex("2c0103020504070648"));
}

void tst_blocks_outputs::emptyOutputBlocks() {
    ModelTarsel none;
    DalTarsel dal;
    dal.setOutPortRotate(none);
    dal.setOutPortCfgMs(none);
    dal.setLcdBorderSetting(none);
    dal.setPreviewPort(none);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 4);
    for (const model_Protocoldata& rec : records) {
        QCOMPARE(rec.arryDatablock, QByteArray(1, '\0'));
        QCOMPARE(int(rec.cmdHead[5]), 1);
        QCOMPARE(int(rec.cmdHead[6]), 0);
    }
}

void tst_blocks_outputs::dskEntries() {
    DalTarsel dal;
    dal.setDskInfo(2, twoOutputs());
    dal.setLayerDSKInfo(2, twoOutputs());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f00b020b00"));
    QCOMPARE(records[0].arryDatablock, QByteArray::fromHex("ff0102030405060708092c"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("f044020b00"));
    QCOMPARE(records[1].arryDatablock, QByteArray::fromHex("303132333435363738390d"));
}

void tst_blocks_outputs::dskAllLayers() {
    DalTarsel dal;
    dal.setMultiLayerDSKInfo(twoOutputs());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f044ff1500"));
    QCOMPARE(rec.arryDatablock,
             QByteArray(10, '\0') + QByteArray::fromHex("30313233343536373839") + char(0x0D));

    ModelTarsel none;
    dal.setMultiLayerDSKInfo(none);
    TAKE_ONE(empty);
    QCOMPARE(headOf(empty), QByteArray::fromHex("f044ff0100"));
    QCOMPARE(empty.arryDatablock, QByteArray(1, '\0'));

    ModelTarsel largest;
    largest.maxLayerCount = 102;
    largest.layerDskInfos.resize(102);
    dal.setMultiLayerDSKInfo(largest);
    TAKE_ONE(big);
    QCOMPARE(headOf(big), QByteArray::fromHex("f044fffd03"));
}

void tst_blocks_outputs::deFamily_data() {
    QTest::addColumn<PerOutput>("op");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("switch") << PerOutput(&DalTarsel::setDeSwitch)
                            << QByteArray::fromHex("8600010100");
    QTest::newRow("Y at 02") << PerOutput(&DalTarsel::setDeY) << QByteArray::fromHex("8602013804");
    QTest::newRow("X at 04") << PerOutput(&DalTarsel::setDeX) << QByteArray::fromHex("8604018007");
    QTest::newRow("width") << PerOutput(&DalTarsel::setDeWidth)
                           << QByteArray::fromHex("8606013412");
    QTest::newRow("height") << PerOutput(&DalTarsel::setDeHeight)
                            << QByteArray::fromHex("860801bc0a");
    QTest::newRow("mode") << PerOutput(&DalTarsel::setDeOutputMode)
                          << QByteArray::fromHex("860a011500");
    QTest::newRow("polarity") << PerOutput(&DalTarsel::setDePolarity)
                              << QByteArray::fromHex("860c01191a");
    QTest::newRow("range") << PerOutput(&DalTarsel::setDeDataRange)
                           << QByteArray::fromHex("860e011700");
    QTest::newRow("colour space") << PerOutput(&DalTarsel::setDeColorSpace)
                                  << QByteArray::fromHex("8612011800");
    QTest::newRow("signal") << PerOutput(&DalTarsel::setDeOutputSignal)
                            << QByteArray::fromHex("8614011600");
}

void tst_blocks_outputs::deFamily() {
    QFETCH(PerOutput, op);
    QFETCH(QByteArray, head);
    DalTarsel dal;
    (dal.*op)(1, twoOutputs());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), head);
    QVERIFY(rec.arryDatablock.isEmpty());
    QCOMPARE(rec.timeout, 3300);
}

void tst_blocks_outputs::deAllOutputs() {
    DalTarsel().setDeWidth(2, twoOutputs()); // 2 is the output count: the "all" entry
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("8606ff000f"));
}

void tst_blocks_outputs::testPatternsAndBrightness() {
    DalTarsel dal;
    dal.setTPMode(1, twoOutputs());
    dal.setTPColor(1, twoOutputs());
    dal.setOutPutBrightness(1, twoOutputs());
    dal.setOutPutBrightness(2, twoOutputs());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 4);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("7d00010500"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("7d02332211"));
    QCOMPARE(headOf(records[2]), QByteArray::fromHex("7620014400"));
    QCOMPARE(headOf(records[3]), QByteArray::fromHex("7620ff5500"));
}

void tst_blocks_outputs::output3DStateRange() {
    DalTarsel dal;
    WarningCapture warnings;
    dal.setOutput3DState(twoOutputs(), -1);
    dal.setOutput3DState(twoOutputs(), 2);
    QVERIFY(takeQueued().isEmpty());
    QVERIFY(warnings.lines().isEmpty()); // the range check is the operation's own rule
    dal.setOutput3DState(twoOutputs(), 1);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("7622010100"));
}

void tst_blocks_outputs::previewPort() {
    DalTarsel().setPreviewPort(twoOutputs());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f014000300"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("05060b"));
}

void tst_blocks_outputs::bankPlayerLoops() {
    DalTarsel dal;
    dal.setBankPlayLoopTiming(bankPlayer());
    dal.setBankPlayLoopTimes(bankPlayer());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("8b04010000"));
    QCOMPARE(records[0].arryDatablock.size(), 145);
    QCOMPARE(records[0].arryDatablock.at(143), char(143));
    QCOMPARE(records[0].arryDatablock.at(144), char(0x38)); // 0 + 1 + ... + 143 = 10296
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("8b08010000"));
    QCOMPARE(records[1].arryDatablock.size(), 129);
    QCOMPARE(records[1].arryDatablock.at(128), char(0xC0)); // 0 + 1 + ... + 127 = 8128
    QCOMPARE(records[1].timeout, 7000);
}

void tst_blocks_outputs::deviceSearch() {
    Utility_Manage::setDeviceType(0x250300);
    Utility_Manage::setConnectType(3);
    TraceCapture trace;
    DalTarsel().searchDeivce(twoOutputs());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("6801000000"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("6a11000000"));
    for (const model_Protocoldata& rec : records) {
        QCOMPARE(int(rec.statusByte), 1);
        QCOMPARE(rec.timeout, 3300);
        QCOMPARE(int(rec.connectType), 0);
        QCOMPARE(rec.deviceType, model_Protocoldata().deviceType);
        QVERIFY(rec.Datablock.isEmpty());
    }
    QVERIFY(trace.lines().isEmpty());
}

void tst_blocks_outputs::outOfContract() {
    DalTarsel dal;
    ModelTarsel model = twoOutputs();
    verifyRefused([&] { dal.setDeX(3, model); }, "setDeX", "output 3 outside the 3");
    verifyRefused([&] { dal.setDePolarity(-1, model); }, "setDePolarity", "output -1");
    verifyRefused([&] { dal.setTPMode(2, model); }, "setTPMode", "output 2 outside the 2");
    verifyRefused([&] { dal.setTPColor(5, model); }, "setTPColor", "output 5");
    verifyRefused([&] { dal.setOutPutBrightness(3, model); }, "setOutPutBrightness", "output 3");
    verifyRefused([&] { dal.setDskInfo(3, model); }, "setDskInfo", "3 outside the 3");
    verifyRefused([&] { dal.setLayerDSKInfo(-2, model); }, "setLayerDSKInfo", "-2");

    ModelTarsel fewerEntries = model;
    fewerEntries.maxOutputCount = 3;
    verifyRefused([&] { dal.setOutPortRotate(fewerEntries); }, "setOutPortRotate", "0..2");
    verifyRefused([&] { dal.setLcdBorderSetting(fewerEntries); }, "setLcdBorderSetting", "0..2");
    verifyRefused([&] { dal.setPreviewPort(fewerEntries); }, "setPreviewPort", "0..2");
    ModelTarsel short3D = model;
    short3D.output3DStates = {0};
    verifyRefused([&] { dal.setOutput3DState(short3D, 1); }, "setOutput3DState", "output 1");

    ModelTarsel many;
    many.maxOutputCount = 228; // the lists hold 257 entries
    for (int i = 0; i < 257; ++i) {
        many.outPortParams.append(_OutPortParam_Desktop());
        many.lcdBorders.append(_LcdBorderSetting());
    }
    verifyRefused([&] { dal.setOutPortCfgMs(many); }, "setOutPortCfgMs", "2049-byte");
    many.maxOutputCount = 227;
    dal.setOutPortCfgMs(many);
    QCOMPARE(takeQueued().size(), 1);
    many.maxOutputCount = 257;
    verifyRefused([&] { dal.setLcdBorderSetting(many); }, "setLcdBorderSetting", "2049-byte");
    many.maxOutputCount = 256;
    dal.setLcdBorderSetting(many);
    QCOMPARE(takeQueued().size(), 1);

    ModelTarsel layers;
    layers.maxLayerCount = 103;
    layers.layerDskInfos.resize(103);
    verifyRefused([&] { dal.setMultiLayerDSKInfo(layers); }, "setMultiLayerDSKInfo", "1024-byte");

    ModelBankPlayer shortPlayer = bankPlayer();
    shortPlayer.loopTimings.resize(143);
    shortPlayer.loopTimes.clear();
    verifyRefused([&] { dal.setBankPlayLoopTiming(shortPlayer); }, "setBankPlayLoopTiming",
                  "0..143");
    verifyRefused([&] { dal.setBankPlayLoopTimes(shortPlayer); }, "setBankPlayLoopTimes", "0..0");
}

void tst_blocks_outputs::everyOutputOperationRegistered() {
    const QStringList ops = QStringList()
    // clang-format off
#include "group_signatures_begin.h"
#include "blocks/outports.def"
#include "blocks/dsk.def"
#include "blocks/outputs.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("blocks_outputs.txt"));
}

QTEST_GUILESS_MAIN(tst_blocks_outputs)
#include "tst_blocks_outputs.moc"
