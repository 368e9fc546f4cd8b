#include "block_checks.h"
#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

// A layer whose every field differs, so that a swapped or misplaced field shows.
_LayerParam_Desktop distinctLayer() {
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
    return l;
}

// Scene 1 of two holds the distinct layer, then a layer of zeros with a few values set.
ModelScene twoLayerScene() {
    ModelScene scene;
    scene.timeout = 4500;
    scene.maxLayerCount = 2;
    scene.maxBankCount = 3;
    _LayerParam_Desktop second;
    second.regionB.x = -1;
    second.alpha = 0x31;
    second.order = 0x32;
    _Scene_Layer s;
    s.layerList = {distinctLayer(), second};
    s.bankValues[0] = 0x41;
    s.bankValues[1] = 0x42;
    s.bankValues[2] = 0x43;
    s.bankValues[3] = 0x44; // beyond the bank count: not sent
    s.backgroundIndex = 0x50;
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

const QByteArray kHead = QByteArray::fromHex("12111413161518170201040306050807212223");

} // namespace

class tst_blocks_scenes : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void singleLayer_data();
    void singleLayer();
    void singleLayerWithContainer();
    void wholeScene();
    void wholeSceneEmpty();
    void wholeSceneLengthAbove255();
    void alphaAndOrder();
    void perLayerAttribute_data();
    void perLayerAttribute();
    void containerIndexFilter_data();
    void containerIndexFilter();
    void saveBackgroundWritesTimeout();
    void scenePlanQueuedDirectly();
    void outOfContract();
    void everySceneOperationRegistered();
};

void tst_blocks_scenes::singleLayer_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("plain") << 0x230102 << kHead + QByteArray::fromHex("2e");
    QTest::newRow("0xA00000 extra bytes") << 0xA00000 << kHead + QByteArray::fromHex("292a2bac");
}

void tst_blocks_scenes::singleLayer() {
    QFETCH(int, device);
    QFETCH(QByteArray, block);
    ModelScene scene = twoLayerScene();
    scene.deviceType = device;
    DalTarsel().setLayerDate(1, 0, scene);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f00100") + char(block.size()) + '\0');
    QCOMPARE(rec.arryDatablock, block);
    QCOMPARE(rec.timeout, 4500);
}

void tst_blocks_scenes::singleLayerWithContainer() {
    ModelScene scene = twoLayerScene();
    scene.deviceType = 0xA00000; // no device branch here
    DalTarsel().setLayerDateMs(1, 0, scene);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f001001500"));
    QCOMPARE(rec.arryDatablock, kHead + QByteArray::fromHex("2654"));
}

void tst_blocks_scenes::wholeScene() {
    DalTarsel().setSceneDate(1, twoLayerScene());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f008012f00"));
    const QByteArray second =
        QByteArray::fromHex("ffff") + QByteArray(17, '\0') + QByteArray::fromHex("3132");
    QCOMPARE(rec.arryDatablock,
             kHead + QByteArray::fromHex("2425") + second + QByteArray::fromHex("41424350ee"));
    QCOMPARE(rec.timeout, 4500);
}

void tst_blocks_scenes::wholeSceneEmpty() {
    DalTarsel().setSceneDate(0, sceneOfSize(0, 0));
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f008000200"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("5050"));
}

void tst_blocks_scenes::wholeSceneLengthAbove255() {
    DalTarsel().setSceneDate(0, sceneOfSize(190, 16));
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f00800a80f"));
    QCOMPARE(rec.arryDatablock.size(), 4008);
    QCOMPARE(rec.arryDatablock.right(2), QByteArray::fromHex("5050"));

    DalTarsel().setSceneDate(0, sceneOfSize(194, 16)); // 4092 bytes: the largest that fits
    TAKE_ONE(largest);
    QCOMPARE(largest.arryDatablock.size(), 4092);
}

void tst_blocks_scenes::alphaAndOrder() {
    DalTarsel().setLayerAlphaAndOrder(1, twoLayerScene());
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f002010500"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("24312532ac"));
}

void tst_blocks_scenes::perLayerAttribute_data() {
    QTest::addColumn<int>("dat1");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("locked") << 0x17 << 3000 << QByteArray::fromHex("270027");
    QTest::newRow("group") << 0x1A << 4500 << QByteArray::fromHex("280028");
    QTest::newRow("container") << 0x1D << 777 << QByteArray::fromHex("260026");
}

void tst_blocks_scenes::perLayerAttribute() {
    QFETCH(int, dat1);
    QFETCH(int, timeout);
    QFETCH(QByteArray, block);
    Utility_Manage::setDeviceType(0x910000);
    ModelScene scene = twoLayerScene();
    DalTarsel dal;
    if (dat1 == 0x17)
        dal.setSceneLayerLocked(1, scene);
    else if (dat1 == 0x1A)
        dal.setSceneLayerGroupNum(1, scene);
    else
        dal.setLayerContainerIndex(777, 1, scene);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f0") + char(dat1) + QByteArray::fromHex("010300"));
    QCOMPARE(rec.arryDatablock, block);
    QCOMPARE(rec.timeout, timeout);

    ModelScene empty = sceneOfSize(0, 0);
    dal.setSceneLayerLocked(0, empty);
    TAKE_ONE(none);
    QCOMPARE(none.arryDatablock, QByteArray(1, '\0'));
    QCOMPARE(int(none.cmdHead[5]), 1);
}

void tst_blocks_scenes::containerIndexFilter_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("records");
    for (int code : {0x220000, 0x230100, 0x230101, 0x230102, 0x230106, 0x230107, 0x240000, 0x240100,
                     0x240200, 0x260000, 0x260002, 0x910000})
        QTest::addRow("%x sends", code) << code << 1;
    for (int code : {0x230103, 0x250300, 0x700000, 0})
        QTest::addRow("%x ignored", code) << code << 0;
}

void tst_blocks_scenes::containerIndexFilter() {
    QFETCH(int, device);
    QFETCH(int, records);
    Utility_Manage::setDeviceType(device);
    DalTarsel().setLayerContainerIndex(3000, 1, twoLayerScene());
    QCOMPARE(takeQueued().size(), records);
}

void tst_blocks_scenes::saveBackgroundWritesTimeout() {
    ModelScene scene = twoLayerScene();
    DalTarsel().setSaveCurrentBlackground(1, scene);
    QCOMPARE(scene.timeout, 3000);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("681c500000"));
    QCOMPARE(rec.timeout, 3000);
    QVERIFY(rec.arryDatablock.isEmpty());
}

void tst_blocks_scenes::scenePlanQueuedDirectly() {
    Utility_Manage::setDeviceType(0x250300); // would be translated through f_SendCmd
    Utility_Manage::setConnectType(3);
    ModelTarsel model;
    model.timeout = 6500;
    TraceCapture trace;
    DalTarsel dal;
    dal.setCurrentSceneIndexForSysPlan(0x105, QStringLiteral("plan"), model);
    dal.doTakeForSysPlan(7, QStringLiteral("take"), model);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("6818050000"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("7800070000"));
    QCOMPARE(records[0].Datablock, QStringLiteral("plan"));
    QCOMPARE(records[1].Datablock, QStringLiteral("take"));
    for (const model_Protocoldata& rec : records) {
        QCOMPARE(rec.timeout, 6500);
        QCOMPARE(int(rec.connectType), 0);
        QCOMPARE(rec.deviceType, model_Protocoldata().deviceType);
        QCOMPARE(int(rec.statusByte), 0);
        QVERIFY(rec.arryDatablock.isEmpty());
    }
    QVERIFY(trace.lines().isEmpty());
}

void tst_blocks_scenes::outOfContract() {
    DalTarsel dal;
    ModelScene scene = twoLayerScene();
    verifyRefused([&] { dal.setLayerDate(2, 0, scene); }, "setLayerDate", "scene 2 outside the 2");
    verifyRefused([&] { dal.setLayerDate(1, 2, scene); }, "setLayerDate", "layer 2 outside the 2");
    verifyRefused([&] { dal.setLayerDateMs(-1, 0, scene); }, "setLayerDateMs", "2");
    verifyRefused([&] { dal.setSaveCurrentBlackground(9, scene); }, "setSaveCurrentBlackground",
                  "2");

    ModelScene tooFewLayers = twoLayerScene();
    tooFewLayers.maxLayerCount = 3;
    verifyRefused([&] { dal.setSceneDate(1, tooFewLayers); }, "setSceneDate", "0..2");
    verifyRefused([&] { dal.setLayerAlphaAndOrder(1, tooFewLayers); }, "setLayerAlphaAndOrder",
                  "0..2");
    verifyRefused([&] { dal.setSceneLayerGroupNum(1, tooFewLayers); }, "setSceneLayerGroupNum",
                  "0..2");

    ModelScene tooManyBanks = twoLayerScene();
    tooManyBanks.maxBankCount = 17;
    verifyRefused([&] { dal.setSceneDate(1, tooManyBanks); }, "setSceneDate", "0..16");

    verifyRefused([&] { dal.setSceneDate(0, sceneOfSize(195, 16)); }, "setSceneDate", "4096-byte");
    ModelScene tooManyLayers = sceneOfSize(2049, 0);
    verifyRefused([&] { dal.setSceneLayerLocked(0, tooManyLayers); }, "setSceneLayerLocked",
                  "2049-byte");
    Utility_Manage::setDeviceType(0x220000);
    verifyRefused([&] { dal.setLayerContainerIndex(3000, 0, sceneOfSize(1024, 0)); },
                  "setLayerContainerIndex", "1024-byte");
    dal.setLayerContainerIndex(3000, 0, sceneOfSize(1023, 0));
    QCOMPARE(takeQueued().size(), 1);
}

void tst_blocks_scenes::everySceneOperationRegistered() {
    const QStringList ops = QStringList()
    // clang-format off
#include "group_signatures_begin.h"
#include "blocks/scenes.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("blocks_scenes.txt"));
}

QTEST_GUILESS_MAIN(tst_blocks_scenes)
#include "tst_blocks_scenes.moc"
