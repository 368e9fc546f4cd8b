#include "block_checks.h"
#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"

#include <QtTest>

namespace {

_ContainerParam_Destktop distinctContainer(int mode) {
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
    return c;
}

ModelTarsel containerModel(int count, int mode) {
    ModelTarsel model;
    model.timeout = 2500;
    model.maxContainerCount = count;
    for (int k = 0; k < count; ++k)
        model.containerParams.append(distinctContainer(mode));
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

} // namespace

class tst_blocks_containers : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void containerLayout();
    void containerMode_data();
    void containerMode();
    void containerCounts();
    void blackPerContainer();
    void alphaTimeRounding();
    void takeSelector_data();
    void takeSelector();
    void outputPropertyGeometry();
    void inputProperty4k60();
    void crop4k60();
    void outOfContract();
    void everyContainerOperationRegistered();
};

void tst_blocks_containers::containerLayout() {
    ModelTarsel model = containerModel(1, 6);
    DalTarsel().setContainerParam(model, 0x2C0104);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f03b000f00"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("02010403060508070a09010b0c1d6c"));
    QCOMPARE(rec.timeout, 2500);

    DalTarsel().setContainerParam(model, 0x2C0103); // raw mode byte
    TAKE_ONE(raw);
    QCOMPARE(raw.arryDatablock, QByteArray::fromHex("02010403060508070a09060b0c1d71"));
}

void tst_blocks_containers::containerMode_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("sent");
    const int rows[][2] = {{0, 3}, {1, 2}, {6, 1}, {5, 0}, {7, 7}, {8, 8}, {2, 0}, {9, 0}, {-1, 0}};
    for (const auto& row : rows)
        QTest::addRow("2C0100 mode %d", row[0]) << 0x2C0100 << row[0] << row[1];
    for (int device :
         {0x2C0101, 0x2C0102, 0x2C0104, 0x2C0105, 0x2C0106, 0x2C0107, 0x2C0200, 0x280100, 0x629000})
        QTest::addRow("%x translates", device) << device << 0 << 3;
    for (int device : {0x2C0103, 0x2C0108, 0x2C0201, 0x700000, 0})
        QTest::addRow("%x raw", device) << device << 0x105 << 0x05;
}

void tst_blocks_containers::containerMode() {
    QFETCH(int, device);
    QFETCH(int, mode);
    QFETCH(int, sent);
    ModelTarsel model = containerModel(1, mode);
    DalTarsel().setContainerParam(model, device);
    TAKE_ONE(rec);
    QCOMPARE(int(static_cast<unsigned char>(rec.arryDatablock.at(10))), sent);
}

void tst_blocks_containers::containerCounts() {
    ModelTarsel none = containerModel(0, 0);
    DalTarsel().setContainerParam(none, 0);
    TAKE_ONE(empty);
    QCOMPARE(headOf(empty), QByteArray::fromHex("f03b000100"));
    QCOMPARE(empty.arryDatablock, QByteArray(1, '\0'));

    ModelTarsel largest = containerModel(146, 0); // 2045 bytes
    DalTarsel().setContainerParam(largest, 0);
    TAKE_ONE(big);
    QCOMPARE(headOf(big), QByteArray::fromHex("f03b00fd07"));
    QCOMPARE(big.arryDatablock.size(), 2045);
}

void tst_blocks_containers::blackPerContainer() {
    DalTarsel().setBlackDuetoContainer(takeScene());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f039000400"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("11223366"));
    QCOMPARE(rec.timeout, 4200);

    ModelScene none;
    DalTarsel().setBlackDuetoContainer(none);
    TAKE_ONE(empty);
    QCOMPARE(empty.arryDatablock, QByteArray(1, '\0'));
    QCOMPARE(int(empty.cmdHead[5]), 1);
}

void tst_blocks_containers::alphaTimeRounding() {
    // 1.5 s -> 1500 (dc 05); 0.0005 s -> 0; 70 s -> 70000, low 16 bits 0x1170.
    DalTarsel().setAlphaTimeDuetoContainer(takeScene());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f03a000700"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("dc050000701162"));

    ModelScene negative = takeScene();
    negative.maxContainerCount = 1;
    negative.takes[0].alphaTime = -0.0015f; // -1.5 ms truncates toward zero: -1
    DalTarsel().setAlphaTimeDuetoContainer(negative);
    TAKE_ONE(neg);
    QCOMPARE(neg.arryDatablock, QByteArray::fromHex("fffffe"));
}

void tst_blocks_containers::takeSelector_data() {
    QTest::addColumn<int>("selector");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("0") << 0 << QByteArray::fromHex("0104070c");
    QTest::newRow("1") << 1 << QByteArray::fromHex("0205080f");
    QTest::newRow("2") << 2 << QByteArray::fromHex("03060912");
    QTest::newRow("3") << 3 << QByteArray::fromHex("03060912");
    QTest::newRow("4") << 4 << QByteArray();
    QTest::newRow("-1") << -1 << QByteArray();
}

void tst_blocks_containers::takeSelector() {
    QFETCH(int, selector);
    QFETCH(QByteArray, block);
    WarningCapture warnings;
    DalTarsel().setTakeDuetoContainer(0x137, selector, takeScene());
    const auto records = takeQueued();
    QVERIFY(warnings.lines().isEmpty()); // an unknown selector is ignored silently
    if (block.isEmpty()) {
        QVERIFY(records.isEmpty());
        return;
    }
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f038370400"));
    QCOMPARE(records[0].arryDatablock, block);
}

void tst_blocks_containers::outputPropertyGeometry() {
    ModelScene scene;
    scene.timeout = 900;
    scene.outProperties.resize(2);
    scene.outProperties[1].resize(3);
    _OutProperty& p = scene.outProperties[1][2];
    p.unread0to22[22] = 0x7F;
    p.outProp23 = 0x1A3;
    p.outProp24 = 0x2424;
    p.outProp25 = 0x2525;
    p.outProp26 = 0x2626;
    p.outProp27 = 0x2727;
    p.outProp28 = 0x2828;
    p.outProp29 = 0x7F;
    DalTarsel().setCurrSceneLayerXYWHR(1, 2, scene);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f033020c00"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("26262727282824242525a31f"));
    QCOMPARE(rec.timeout, 900);
}

void tst_blocks_containers::inputProperty4k60() {
    ModelTarsel model;
    model.timeout = 1200;
    _InProperty_4K_60 in;
    const int members[13] = {0x11,   0x12, 0x13, 0x14, 0x15, 0x16, 0x0717,
                             0x0818, 0x19, 0x1A, 0x1B, 0x1C, 0x11D};
    std::copy(std::begin(members), std::end(members), in.member);
    model.inProperty4K60 = {_InProperty_4K_60(), in};
    DalTarsel().set4k60InputProperty(model, 1);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f027011000"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("11121314151617071808191a1b1c1d3a"));
}

void tst_blocks_containers::crop4k60() {
    ModelScene scene;
    scene.timeout = 1300;
    _InPropertyCrop_4K_60 crop;
    const int members[12] = {0x0102, 0x0304, 0x05, 0x0607, 0x0809, 0x0A,
                             0x0B0C, 0x0D0E, 0x0F, 0x1011, 0x1213, 0x14};
    std::copy(std::begin(members), std::end(members), crop.member);
    scene.inPropertyCrops4K60 = {crop};
    DalTarsel().set4k60CropInfo(scene, 0);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f02b001500"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("0201040305070609080a0c0b0e0d0f1110131214d2"));
    QCOMPARE(rec.timeout, 1300);
}

void tst_blocks_containers::outOfContract() {
    DalTarsel dal;
    ModelTarsel tooMany = containerModel(147, 0);
    verifyRefused([&] { dal.setContainerParam(tooMany, 0); }, "setContainerParam", "2049-byte");
    ModelTarsel short_ = containerModel(2, 0);
    short_.maxContainerCount = 3;
    verifyRefused([&] { dal.setContainerParam(short_, 0); }, "setContainerParam", "0..2");

    ModelScene scene = takeScene();
    scene.maxContainerCount = 4;
    verifyRefused([&] { dal.setBlackDuetoContainer(scene); }, "setBlackDuetoContainer", "0..3");
    verifyRefused([&] { dal.setAlphaTimeDuetoContainer(scene); }, "setAlphaTimeDuetoContainer",
                  "0..3");
    verifyRefused([&] { dal.setTakeDuetoContainer(0, 1, scene); }, "setTakeDuetoContainer", "0..3");

    ModelScene geometry;
    geometry.outProperties.resize(1);
    geometry.outProperties[0].resize(2);
    verifyRefused([&] { dal.setCurrSceneLayerXYWHR(1, 0, geometry); }, "setCurrSceneLayerXYWHR",
                  "group 1");
    verifyRefused([&] { dal.setCurrSceneLayerXYWHR(0, 2, geometry); }, "setCurrSceneLayerXYWHR",
                  "item 2");
    verifyRefused([&] { dal.set4k60InputProperty(ModelTarsel(), 0); }, "set4k60InputProperty",
                  "input 0");
    verifyRefused([&] { dal.set4k60CropInfo(ModelScene(), -1); }, "set4k60CropInfo", "input -1");
}

void tst_blocks_containers::everyContainerOperationRegistered() {
    const QStringList ops = QStringList()
    // clang-format off
#include "group_signatures_begin.h"
#include "blocks/containers.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("blocks_containers.txt"));
}

QTEST_GUILESS_MAIN(tst_blocks_containers)
#include "tst_blocks_containers.moc"
