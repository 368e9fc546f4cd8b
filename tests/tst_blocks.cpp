#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

// Models whose every sent field holds a distinct value, so that a swapped or misplaced field
// shows.
ModelTarsel twoOutputs() {
    ModelTarsel model;
    model.timeout = 3300;
    model.maxOutputCount = 2;
    model.maxLayerCount = 2;
    model.outPortParams = {{0x41, 0x0102, 0x0304, 0x0506, 0x0708, 0x77, 0x77, 0x1B4},
                           {0x42, 0x1112, 0x1314, 0x1516, 0x1718, 0x77, 0x77, 0x5A}};
    model.lcdBorders = {{300, 0x0203, 0x0405, 0x0607}, {0, 0, 0, 0}};
    _DSKInfo listEntry, layerEntry;
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

ModelTarsel containers(int count, int mode) {
    ModelTarsel model;
    model.timeout = 2500;
    model.maxContainerCount = count;
    _ContainerParam_Destktop c;
    c.containerParam0 = 0x0102;
    c.containerParam1 = 0x0304;
    c.containerParam2 = 0x0506;
    c.containerParam3 = 0x0708;
    c.containerParam4 = 0x090A;
    c.containerParam5 = 0x55; // not sent
    c.containerParam9 = 0x0B;
    c.containerMode = mode;
    c.containerParam11 = 0x0C;
    c.containerParam12 = 0x11D;
    model.containerParams = QVector<_ContainerParam_Destktop>(count, c).toList();
    return model;
}

_Take_Desktop take(float alpha, int black, int v0, int v1, int v2) {
    _Take_Desktop t;
    t.alphaTime = alpha;
    t.blackValue = static_cast<unsigned char>(black);
    t.takeValue0 = static_cast<unsigned char>(v0);
    t.takeValue1 = static_cast<unsigned char>(v1);
    t.takeValue2 = static_cast<unsigned char>(v2);
    return t;
}

ModelScene takeScene() {
    ModelScene scene;
    scene.timeout = 4200;
    scene.maxContainerCount = 3;
    scene.takes = {take(1.5f, 0x11, 1, 2, 3), take(0.0005f, 0x22, 4, 5, 6),
                   take(70.0f, 0x33, 7, 8, 9)};
    return scene;
}

// Scene 1 of two holds a layer of distinct values, then one of zeros with a few values set.
ModelScene twoLayerScene() {
    _LayerParam_Desktop l;
    l.regionA = {0x0102, 0x0304, 0x0506, 0x0708};
    l.regionB = {0x1112, 0x1314, 0x1516, 0x1718};
    l.layerParam8 = 0x21;
    l.layerParam9 = 0x22;
    l.layerParam10 = 0x123; // sent as its low byte
    l.alpha = 0x24;
    l.order = 0x25;
    l.containerIndex = 0x26;
    l.locked = 0x27;
    l.groupNum = 0x28;
    l.extraByte0 = 0x29;
    l.extraByte1 = 0x2A;
    l.extraByte2 = 0x2B;
    _LayerParam_Desktop second;
    second.regionB.x = -1;
    second.alpha = 0x31;
    second.order = 0x32;
    _Scene_Layer s;
    s.layerList = {l, second};
    s.bankValues[0] = 0x41;
    s.bankValues[1] = 0x42;
    s.bankValues[2] = 0x43;
    s.bankValues[3] = 0x44; // beyond the bank count: not sent
    s.backgroundIndex = 0x50;
    ModelScene scene;
    scene.timeout = 4500;
    scene.maxLayerCount = 2;
    scene.maxBankCount = 3;
    scene.sceneList = {_Scene_Layer(), s};
    return scene;
}

ModelScene sceneOfSize(int layers, int banks) {
    ModelScene scene;
    scene.maxLayerCount = layers;
    scene.maxBankCount = banks;
    _Scene_Layer s;
    s.layerList.resize(layers);
    s.backgroundIndex = 0x50;
    scene.sceneList = {s};
    return scene;
}

const QString kLayer = "12111413161518170201040306050807212223";

QString zeros(int count) { return QString("00").repeated(count); }

} // namespace

class tst_blocks : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void outputBlocks();
    void emptyAndLargestBlocks();
    void perOutputCommands();
    void containerBlocks();
    void containerMode();
    void sceneBlocks();
    void layerAttributes();
    void queuedDirectly();
    void outOfContract();
};

void tst_blocks::outputBlocks() {
    DalTarsel dal;
    const ModelTarsel model = twoOutputs();
    dal.setOutPortCfgMs(model);
    dal.setOutPortCfg(model);
    dal.setOutPortRotate(model);
    dal.setPreviewPort(model);
    dal.setDskInfo(2, model);
    dal.setLayerDSKInfo(2, model);
    dal.setMultiLayerDSKInfo(model);
    ModelTarsel one = model;
    one.maxOutputCount = 1;
    dal.setLcdBorderSetting(one);
    const QString ports = "f005001300 3300 0201040306050807121114131615181741424b";
    QCOMPARE(describe(takeQueued()),
             QStringList({ports, ports, "f00d000300 3300 b45a0e", "f014000300 3300 05060b",
                          "f00b020b00 3300 ff0102030405060708092c",
                          "f044020b00 3300 303132333435363738390d",
                          "f044ff1500 3300 " + zeros(10) + "303132333435363738390d",
                          "f016000900 3300 2c0103020504070648"})
                 .join(" | "));
}

// No entries still send the checksum byte; the largest blocks that fit their buffers.
void tst_blocks::emptyAndLargestBlocks() {
    ModelTarsel none;
    none.timeout = 1;
    DalTarsel dal;
    dal.setOutPortRotate(none);
    dal.setLcdBorderSetting(none);
    dal.setMultiLayerDSKInfo(none);
    dal.setContainerParam(none, 0);
    QCOMPARE(describe(takeQueued()), QStringLiteral("f00d000100 1 00 | f016000100 1 00 | "
                                                    "f044ff0100 1 00 | f03b000100 1 00"));

    ModelTarsel largest = containers(146, 0); // 2045 bytes
    largest.maxLayerCount = 102;
    largest.layerDskInfos.resize(102);
    dal.setMultiLayerDSKInfo(largest);
    dal.setContainerParam(largest, 0);
    QStringList heads;
    for (const model_Protocoldata& rec : takeQueued())
        heads << QString::fromLatin1(headOf(rec).toHex());
    QCOMPARE(heads.join(' '), QStringLiteral("f044fffd03 f03b00fd07"));
}

void tst_blocks::perOutputCommands() {
    using PerOutput = void (DalTarsel::*)(int, ModelTarsel);
    const PerOutput de[] = {&DalTarsel::setDeSwitch,     &DalTarsel::setDeY,
                            &DalTarsel::setDeX,          &DalTarsel::setDeWidth,
                            &DalTarsel::setDeHeight,     &DalTarsel::setDeOutputMode,
                            &DalTarsel::setDePolarity,   &DalTarsel::setDeDataRange,
                            &DalTarsel::setDeColorSpace, &DalTarsel::setDeOutputSignal};
    DalTarsel dal;
    const ModelTarsel model = twoOutputs();
    for (PerOutput op : de)
        (dal.*op)(1, model);
    dal.setDeWidth(2, model); // 2 is the output count: the "all" entry
    dal.setTPMode(1, model);
    dal.setTPColor(1, model);
    dal.setOutPutBrightness(1, model);
    dal.setOutPutBrightness(2, model);
    MessageCapture messages;
    dal.setOutput3DState(model, -1);
    dal.setOutput3DState(model, 2);
    QVERIFY(messages.warnings().isEmpty()); // the range check is the operation's own rule
    dal.setOutput3DState(model, 1);
    QStringList heads;
    for (const model_Protocoldata& rec : takeQueued())
        heads << QString::fromLatin1(headOf(rec).toHex());
    QCOMPARE(heads, QStringList({"8600010100", "8602013804", "8604018007", "8606013412",
                                 "860801bc0a", "860a011500", "860c01191a", "860e011700",
                                 "8612011800", "8614011600", "8606ff000f", "7d00010500",
                                 "7d02332211", "7620014400", "7620ff5500", "7622010100"}));
}

void tst_blocks::containerBlocks() {
    DalTarsel dal;
    ModelTarsel model = containers(1, 6);
    dal.setContainerParam(model, 0x2C0104);
    dal.setContainerParam(model, 0x2C0103); // the raw mode byte
    const ModelScene scene = takeScene();
    dal.setBlackDuetoContainer(scene);
    // 1.5 s is 1500 ms; 0.0005 s rounds to 0; 70 s keeps the low 16 bits of 70000.
    dal.setAlphaTimeDuetoContainer(scene);
    for (int selector : {0, 1, 2, 3, 4, -1}) // 2 and 3 share a member; others send nothing
        dal.setTakeDuetoContainer(0x137, selector, scene);
    ModelScene negative = scene;
    negative.maxContainerCount = 1;
    negative.takes[0].alphaTime = -0.0015f; // truncates toward zero: -1 ms
    dal.setAlphaTimeDuetoContainer(negative);
    QCOMPARE(
        describe(takeQueued()),
        QStringList({"f03b000f00 2500 02010403060508070a09010b0c1d6c",
                     "f03b000f00 2500 02010403060508070a09060b0c1d71", "f039000400 4200 11223366",
                     "f03a000700 4200 dc050000701162", "f038370400 4200 0104070c",
                     "f038370400 4200 0205080f", "f038370400 4200 03060912",
                     "f038370400 4200 03060912", "f03a000300 4200 fffffe"})
            .join(" | "));

    // Geometry of one layer of an output property group, and the 4K60 input and crop.
    ModelScene geometry;
    geometry.timeout = 900;
    geometry.outProperties = {{}, QVector<_OutProperty>(3)};
    _OutProperty& p = geometry.outProperties[1][2];
    p.unread0to22[22] = 0x7F;
    p.outProp23 = 0x1A3;
    p.outProp24 = 0x2424;
    p.outProp25 = 0x2525;
    p.outProp26 = 0x2626;
    p.outProp27 = 0x2727;
    p.outProp28 = 0x2828;
    p.outProp29 = 0x7F;
    dal.setCurrSceneLayerXYWHR(1, 2, geometry);
    _InProperty_4K_60 in;
    const int inMembers[13] = {0x11,   0x12, 0x13, 0x14, 0x15, 0x16, 0x0717,
                               0x0818, 0x19, 0x1A, 0x1B, 0x1C, 0x11D};
    std::copy(std::begin(inMembers), std::end(inMembers), in.member);
    model.timeout = 1200;
    model.inProperty4K60 = {_InProperty_4K_60(), in};
    dal.set4k60InputProperty(model, 1);
    _InPropertyCrop_4K_60 crop;
    const int cropMembers[12] = {0x0102, 0x0304, 0x05, 0x0607, 0x0809, 0x0A,
                                 0x0B0C, 0x0D0E, 0x0F, 0x1011, 0x1213, 0x14};
    std::copy(std::begin(cropMembers), std::end(cropMembers), crop.member);
    geometry.inPropertyCrops4K60 = {crop};
    dal.set4k60CropInfo(geometry, 0);
    QCOMPARE(describe(takeQueued()),
             QStringList({"f033020c00 900 26262727282824242525a31f",
                          "f027011000 1200 11121314151617071808191a1b1c1d3a",
                          "f02b001500 900 0201040305070609080a0c0b0e0d0f1110131214d2"})
                 .join(" | "));
}

// The mode byte: translated by its table for the listed device codes, raw for the others.
void tst_blocks::containerMode() {
    const int rows[][3] = {{0x2C0100, 0, 3}, {0x2C0100, 1, 2},     {0x2C0100, 6, 1},
                           {0x2C0100, 5, 0}, {0x2C0100, 7, 7},     {0x2C0100, 8, 8},
                           {0x2C0100, 2, 0}, {0x2C0100, -1, 0},    {0x2C0101, 0, 3},
                           {0x629000, 0, 3}, {0x2C0103, 0x105, 5}, {0x700000, 0x105, 5}};
    for (const auto& row : rows) {
        ModelTarsel model = containers(1, row[1]);
        DalTarsel().setContainerParam(model, row[0]);
        QCOMPARE(int(static_cast<unsigned char>(takeQueued().value(0).arryDatablock.at(10))),
                 row[2]);
    }
}

void tst_blocks::sceneBlocks() {
    DalTarsel dal;
    ModelScene scene = twoLayerScene();
    scene.deviceType = 0x230102;
    dal.setLayerDate(1, 0, scene);
    scene.deviceType = 0xA00000; // three extra bytes in the single-layer form
    dal.setLayerDate(1, 0, scene);
    dal.setLayerDateMs(1, 0, scene); // no device branch here
    dal.setSceneDate(1, scene);
    dal.setSceneDate(0, sceneOfSize(0, 0));
    dal.setLayerAlphaAndOrder(1, scene);
    dal.setSaveCurrentBlackground(1, scene);
    QCOMPARE(scene.timeout, 3000); // written back to the caller's scene
    const QString second = "ffff" + zeros(17) + "3132";
    QCOMPARE(
        describe(takeQueued()),
        QStringList({"f001001400 4500 " + kLayer + "2e", "f001001700 4500 " + kLayer + "292a2bac",
                     "f001001500 4500 " + kLayer + "2654",
                     "f008012f00 4500 " + kLayer + "2425" + second + "41424350ee",
                     "f008000200 0 5050", "f002010500 4500 24312532ac", "681c500000 3000"})
            .join(" | "));

    dal.setSceneDate(0, sceneOfSize(190, 16));
    dal.setSceneDate(0, sceneOfSize(194, 16)); // 4092 bytes: the largest that fits
    const auto big = takeQueued();
    QCOMPARE(big.size(), 2);
    QCOMPARE(headOf(big[0]).toHex(), QByteArray("f00800a80f"));
    QCOMPARE(big[0].arryDatablock.right(2).toHex(), QByteArray("5050"));
    QCOMPARE(big[1].arryDatablock.size(), 4092);
}

// One byte per layer; the container index only for the device codes that take it.
void tst_blocks::layerAttributes() {
    DalTarsel dal;
    ModelScene scene = twoLayerScene();
    ModelScene empty = sceneOfSize(0, 0);
    Utility_Manage::setDeviceType(0x910000);
    dal.setSceneLayerLocked(1, scene);
    dal.setSceneLayerGroupNum(1, scene);
    dal.setLayerContainerIndex(777, 1, scene);
    dal.setSceneLayerLocked(0, empty);
    QCOMPARE(describe(takeQueued()),
             QStringLiteral("f017010300 3000 270027 | f01a010300 4500 280028 | "
                            "f01d010300 777 260026 | f017000100 3000 00"));
    for (int code : {0x220000, 0x230100, 0x230107, 0x240000, 0x240200, 0x260002, 0x230103, 0x250300,
                     0x700000}) {
        Utility_Manage::setDeviceType(code);
        dal.setLayerContainerIndex(3000, 1, scene);
        QCOMPARE(takeQueued().size(),
                 QList<int>({0x230103, 0x250300, 0x700000}).contains(code) ? 0 : 1);
    }
}

// The scene plan's records and the two device-search probes are queued directly: no
// routing, trace or connect type.
void tst_blocks::queuedDirectly() {
    Utility_Manage::setDeviceType(0x250300);
    Utility_Manage::setConnectType(3);
    ModelTarsel model;
    model.timeout = 6500;
    MessageCapture messages;
    DalTarsel dal;
    dal.setCurrentSceneIndexForSysPlan(0x105, QStringLiteral("plan"), model);
    dal.doTakeForSysPlan(7, QStringLiteral("take"), model);
    dal.searchDeivce(model);
    const auto records = takeQueued();
    QCOMPARE(describe(records), QStringLiteral("6818050000 6500 'plan' | 7800070000 6500 'take' | "
                                               "6801000000 6500 | 6a11000000 6500"));
    for (const model_Protocoldata& rec : records) {
        QCOMPARE(int(rec.connectType), 0);
        QCOMPARE(int(rec.statusByte), rec.Datablock.isEmpty() ? 1 : 0);
        QCOMPARE(rec.deviceType, model_Protocoldata().deviceType);
    }
    QVERIFY(messages.debug().isEmpty());
}

void tst_blocks::outOfContract() {
    DalTarsel dal;
    ModelTarsel model = twoOutputs();
    verifyRefused([&] { dal.setDeX(3, model); }, "setDeX", "output 3 outside the 3");
    verifyRefused([&] { dal.setTPMode(2, model); }, "setTPMode", "output 2 outside the 2");
    verifyRefused([&] { dal.setDskInfo(3, model); }, "setDskInfo", "3 outside the 3");
    model.maxOutputCount = 3;
    verifyRefused([&] { dal.setOutPortRotate(model); }, "setOutPortRotate", "0..2");
    verifyRefused([&] { dal.setPreviewPort(model); }, "setPreviewPort", "0..2");
    model.output3DStates = {0};
    verifyRefused([&] { dal.setOutput3DState(model, 1); }, "setOutput3DState", "output 1");

    ModelTarsel many = containers(147, 0);
    verifyRefused([&] { dal.setContainerParam(many, 0); }, "setContainerParam", "2049-byte");
    many.maxOutputCount = 228;
    many.outPortParams = QVector<_OutPortParam_Desktop>(257).toList();
    verifyRefused([&] { dal.setOutPortCfgMs(many); }, "setOutPortCfgMs", "2049-byte");
    many.maxOutputCount = 257;
    many.lcdBorders = QVector<_LcdBorderSetting>(257).toList();
    verifyRefused([&] { dal.setLcdBorderSetting(many); }, "setLcdBorderSetting", "2049-byte");
    many.maxOutputCount = 256;
    dal.setLcdBorderSetting(many);
    QCOMPARE(takeQueued().size(), 1);
    many.maxLayerCount = 103;
    many.layerDskInfos.resize(103);
    verifyRefused([&] { dal.setMultiLayerDSKInfo(many); }, "setMultiLayerDSKInfo", "1024-byte");
    ModelBankPlayer player;
    player.loopTimings.resize(143);
    verifyRefused([&] { dal.setBankPlayLoopTiming(player); }, "setBankPlayLoopTiming", "0..143");
    verifyRefused([&] { dal.setBankPlayLoopTimes(player); }, "setBankPlayLoopTimes", "0..0");

    ModelScene scene = takeScene();
    scene.maxContainerCount = 4;
    verifyRefused([&] { dal.setBlackDuetoContainer(scene); }, "setBlackDuetoContainer", "0..3");
    verifyRefused([&] { dal.setTakeDuetoContainer(0, 1, scene); }, "setTakeDuetoContainer", "0..3");
    scene.outProperties = {QVector<_OutProperty>(2)};
    verifyRefused([&] { dal.setCurrSceneLayerXYWHR(1, 0, scene); }, "setCurrSceneLayerXYWHR",
                  "group 1");
    verifyRefused([&] { dal.setCurrSceneLayerXYWHR(0, 2, scene); }, "setCurrSceneLayerXYWHR",
                  "item 2");
    verifyRefused([&] { dal.set4k60InputProperty(ModelTarsel(), 0); }, "set4k60InputProperty",
                  "input 0");
    verifyRefused([&] { dal.set4k60CropInfo(ModelScene(), -1); }, "set4k60CropInfo", "input -1");

    scene = twoLayerScene();
    verifyRefused([&] { dal.setLayerDate(2, 0, scene); }, "setLayerDate", "scene 2 outside the 2");
    verifyRefused([&] { dal.setLayerDate(1, 2, scene); }, "setLayerDate", "layer 2 outside the 2");
    verifyRefused([&] { dal.setSaveCurrentBlackground(9, scene); }, "setSaveCurrentBlackground",
                  "2");
    scene.maxLayerCount = 3;
    verifyRefused([&] { dal.setSceneDate(1, scene); }, "setSceneDate", "0..2");
    scene = twoLayerScene();
    scene.maxBankCount = 17;
    verifyRefused([&] { dal.setSceneDate(1, scene); }, "setSceneDate", "0..16");
    verifyRefused([&] { dal.setSceneDate(0, sceneOfSize(195, 16)); }, "setSceneDate", "4096-byte");
    scene = sceneOfSize(2049, 0);
    verifyRefused([&] { dal.setSceneLayerLocked(0, scene); }, "setSceneLayerLocked", "2049-byte");
    Utility_Manage::setDeviceType(0x220000);
    scene = sceneOfSize(1024, 0);
    verifyRefused([&] { dal.setLayerContainerIndex(3000, 0, scene); }, "setLayerContainerIndex",
                  "1024-byte");
    scene = sceneOfSize(1023, 0);
    dal.setLayerContainerIndex(3000, 0, scene);
    QCOMPARE(takeQueued().size(), 1);
}

QTEST_GUILESS_MAIN(tst_blocks)
#include "tst_blocks.moc"
