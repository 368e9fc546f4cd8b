#include "block_checks.h"
#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"

#include <QJsonDocument>
#include <QtTest>

namespace {

QJsonObject json(const char* text) { return QJsonDocument::fromJson(text).object(); }

ModelTarsel streamModel() {
    ModelTarsel model;
    model.timeout = 2200;
    model.maxSourceCount = 4;
    model.streamInputIp = QStringLiteral("192.168.1.20");
    model.streamInputMask = QStringLiteral("255.255.255.0");
    model.streamInputGateway = QStringLiteral("192.168.1.1");
    model.streamInputPort = 554;
    return model;
}

const QByteArray kAddresses = QByteArray::fromHex("c0a80114ffffff00c0a801012a02");

} // namespace

class tst_catalog_setters : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void userInfos_data();
    void userInfos();
    void loginType();
    void userFileData();
    void supplierRecords();
    void jsonSetters_data();
    void jsonSetters();
    void h265Url_data();
    void h265Url();
    void chosenLayouts();
    void takeAlphaTimeout();
    void outOfContract();
    void everySetterRegistered();
};

void tst_catalog_setters::userInfos_data() {
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<int>("last"); // byte 1022
    QTest::addColumn<int>("sum");  // byte 1023
    QTest::newRow("short") << QByteArray("abc") << QByteArray("abc") << 0 << 0x26;
    QTest::newRow("1022 kept") << QByteArray(1022, 'a') << QByteArray(1022, 'a') << 0 << 0x3E;
    QTest::newRow("2000 cut to 1023")
        << QByteArray(2000, 'a') << QByteArray(1023, 'a') << 0x61 << 0x9F;
}

void tst_catalog_setters::userInfos() {
    QFETCH(QByteArray, info);
    QFETCH(QByteArray, start);
    QFETCH(int, last);
    QFETCH(int, sum);
    DalTarsel().setUserInfos(1000, 5, info);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f063050004"));
    QCOMPARE(rec.arryDatablock.size(), 1024);
    QVERIFY(rec.arryDatablock.startsWith(start));
    QCOMPARE(int(static_cast<unsigned char>(rec.arryDatablock.at(1022))), last);
    QCOMPARE(int(static_cast<unsigned char>(rec.arryDatablock.at(1023))), sum);
    QCOMPARE(rec.timeout, 1000);
}

void tst_catalog_setters::loginType() {
    DalTarsel().setLoginType(1100, 12);
    DalTarsel().setLoginType(1100, -3);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f064000004"));
    QCOMPARE(records[0].arryDatablock,
             QByteArray("12") + QByteArray(1021, '\0') + QByteArray::fromHex("63"));
    QCOMPARE(records[1].arryDatablock,
             QByteArray("-3") + QByteArray(1021, '\0') + QByteArray::fromHex("60"));
}

void tst_catalog_setters::userFileData() {
    DalTarsel dal;
    char data[] = {1, 2, 3};
    dal.setUserFileData(1500, 2, data, 0);
    dal.setUserFileData(1500, 2, data, 3);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f040020000"));
    QVERIFY(records[0].arryDatablock.isEmpty());
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("f040020400"));
    QCOMPARE(records[1].arryDatablock, QByteArray::fromHex("01020306"));
    QCOMPARE(records[1].timeout, 1500);

    QByteArray largest(1023, '\x01');
    dal.setUserFileData(1500, 2, largest.data(), 1023);
    TAKE_ONE(big);
    QCOMPARE(headOf(big), QByteArray::fromHex("f040020004"));
    QCOMPARE(big.arryDatablock.at(1023), char(0xFF)); // 1023 mod 256
}

void tst_catalog_setters::supplierRecords() {
    DalTarsel dal;
    dal.setSupplierName(1000, 3, QByteArray("AB"));
    dal.setSupplierInfo(1000, 0x5A, 3, QByteArray("AB"));
    dal.setSupplierEndInfo(1000, 3);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f058030300"));
    QCOMPARE(records[0].arryDatablock, QByteArray::fromHex("414283"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("f05a030300"));
    QCOMPARE(records[1].arryDatablock, QByteArray::fromHex("414283"));
    QCOMPARE(headOf(records[2]), QByteArray::fromHex("f057030000"));
    QVERIFY(records[2].arryDatablock.isEmpty());

    dal.setSupplierName(1000, 3, QByteArray(300, '\x01')); // length above 255
    TAKE_ONE(longName);
    QCOMPARE(headOf(longName), QByteArray::fromHex("f058032d01"));
}

void tst_catalog_setters::jsonSetters_data() {
    QTest::addColumn<int>("which");
    QTest::addColumn<QJsonObject>("obj");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("frame") << 0 << json(R"({"status":1,"size":9,"color":"#A1B2C3"})")
                           << QByteArray::fromHex("f065040600")
                           << QByteArray::fromHex("01a1b2c30920");
    QTest::newRow("frame, no keys")
        << 0 << QJsonObject() << QByteArray::fromHex("f065040600") << QByteArray(6, '\0');
    QTest::newRow("dante")
        << 1
        << json(R"({"hdmi1":1,"hdmi2":2,"lan1":3,"lan2":4,"lan3":5,"lan4":6,"loopIn1":7,)"
                R"("loopIn2":8,"loopIn3":9,"loopIn4":10})")
        << QByteArray::fromHex("f066040b00") << QByteArray::fromHex("0102030405060708090a37");
    QTest::newRow("dante, lan3 missing")
        << 1
        << json(R"({"hdmi1":1,"hdmi2":2,"lan1":3,"lan2":4,"lan4":6,"loopIn1":7,)"
                R"("loopIn2":8,"loopIn3":9,"loopIn4":10})")
        << QByteArray::fromHex("f066040b00") << QByteArray::fromHex("0102030400060708090a32");
    QTest::newRow("out board")
        << 2
        << json(R"({"switch1":1,"switch2":2,"switch3":3,"switch4":4,"source1":17,)"
                R"("source2":18,"source3":19,"source4":20})")
        << QByteArray::fromHex("f067040900") << QByteArray::fromHex("010203041112131454");
    QTest::newRow("out board, no keys")
        << 2 << QJsonObject() << QByteArray::fromHex("f067040900") << QByteArray(9, '\0');
}

void tst_catalog_setters::jsonSetters() {
    QFETCH(int, which);
    QFETCH(QJsonObject, obj);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    DalTarsel dal;
    if (which == 0)
        dal.setSourceFrameInfo(900, 4, obj);
    else if (which == 1)
        dal.setDanteAudioInfo(900, 4, obj);
    else
        dal.setOutBoardAudioInfo(900, 4, obj);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), head);
    QCOMPARE(rec.arryDatablock, block);
    QCOMPARE(rec.timeout, 900);
}

void tst_catalog_setters::h265Url_data() {
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("url");
    QTest::addColumn<int>("dat2"); // -1: nothing sent
    QTest::newRow("sent") << 2 << 3 << "rtsp" << 0x23;
    QTest::newRow("last channel") << 0 << 15 << "rtsp" << 0x0F;
    QTest::newRow("negative source") << -1 << 3 << "rtsp" << -1;
    QTest::newRow("source = count") << 4 << 3 << "rtsp" << -1;
    QTest::newRow("channel 16") << 2 << 16 << "rtsp" << -1;
    QTest::newRow("negative channel") << 2 << -1 << "rtsp" << -1;
    QTest::newRow("empty url") << 2 << 3 << "" << -1;
}

void tst_catalog_setters::h265Url() {
    QFETCH(int, source);
    QFETCH(int, channel);
    QFETCH(QString, url);
    QFETCH(int, dat2);
    WarningCapture warnings;
    DalTarsel().setH265InputUrl(streamModel(), source, channel, url);
    const auto records = takeQueued();
    QVERIFY(warnings.lines().isEmpty());
    if (dat2 < 0) {
        QVERIFY(records.isEmpty());
        return;
    }
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]),
             QByteArray::fromHex("f062") + char(dat2) + QByteArray::fromHex("0600"));
    QCOMPARE(records[0].arryDatablock, QByteArray::fromHex("7274737000c9"));
}

// Blocks whose layout this library chose: one record each with distinct values.
void tst_catalog_setters::chosenLayouts() {
    DalTarsel dal;
    ModelTarsel model = streamModel();
    model.userSettingByte0 = 0x11;
    model.userSettingByte1 = 0x22;
    model.userSettingValue0 = 0x04030201;
    model.userSettingValue1 = -2;
    dal.setUserSetting(model);
    dal.seth264inputip(model, 1);
    dal.setH265InputIpInfo(model, 1, 7);
    dal.setH265InputMode(model, 1, 2, 5);
    dal.setEDIDParm_4k(model, 3, 3840, 2160, 60, true, QStringLiteral("AB"));
    dal.setBrightAndGamma(1000, 2, 0x31, 0x0102, 0x0304, 0x0506, 0x0708, 0x090A, true, 0x33);
    dal.setPreviewModeSignal(1000, 4, QStringLiteral("1-2-3"), QStringLiteral("9-8"));
    int banks[] = {1, 2, 3, 4};
    dal.setContainerAndBankArr(1000, 7, banks);
    const auto r = takeQueued();
    QCOMPARE(r.size(), 8);
    QCOMPARE(headOf(r[0]), QByteArray::fromHex("f007000b00"));
    QCOMPARE(r[0].arryDatablock, QByteArray::fromHex("1122010203"
                                                     "04feffffff38"));
    QCOMPARE(headOf(r[1]), QByteArray::fromHex("f021011700"));
    QCOMPARE(r[1].arryDatablock, kAddresses + QByteArray(8, '\0') + char(0x10));
    QCOMPARE(headOf(r[2]), QByteArray::fromHex("f061011100"));
    QCOMPARE(r[2].arryDatablock, char(7) + kAddresses + QByteArray(1, '\0') + char(0x17));
    QCOMPARE(headOf(r[3]), QByteArray::fromHex("f060010200"));
    QCOMPARE(r[3].arryDatablock, QByteArray::fromHex("2525"));
    QCOMPARE(headOf(r[4]), QByteArray::fromHex("f019031500"));
    QCOMPARE(r[4].arryDatablock,
             QByteArray::fromHex("000f70083c00014142") + QByteArray(11, '\0') + char(0x47));
    QCOMPARE(r[4].timeout, 30000);
    QCOMPARE(headOf(r[5]), QByteArray::fromHex("f050020e00"));
    QCOMPARE(r[5].arryDatablock, QByteArray::fromHex("3102010403060508"
                                                     "070a0901339c"));
    QCOMPARE(headOf(r[6]), QByteArray::fromHex("f046042100"));
    QCOMPARE(r[6].arryDatablock, QByteArray::fromHex("010203") + QByteArray(13, '\0') +
                                     QByteArray::fromHex("0908") + QByteArray(14, '\0') +
                                     char(0x17));
    QCOMPARE(headOf(r[7]), QByteArray::fromHex("f068000600"));
    QCOMPARE(r[7].arryDatablock, QByteArray::fromHex("070102030411"));
}

void tst_catalog_setters::takeAlphaTimeout() {
    ModelScene scene;
    scene.timeout = 4000;
    scene.maxContainerCount = 2;
    _Take_Desktop slow;
    slow.alphaTime = 1.5f;
    _Take_Desktop fast;
    fast.alphaTime = 0.25f;
    scene.takes = {slow, fast};
    int flags[] = {0, 1}; // only the second container takes: its 250 ms count
    DalTarsel().setTakeAlphaDuetoContainer(scene, flags);
    TAKE_ONE(rec);
    QCOMPARE(headOf(rec), QByteArray::fromHex("f03c000700"));
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("00dc0501fa00dc"));
    QCOMPARE(rec.timeout, 4250);
}

void tst_catalog_setters::outOfContract() {
    DalTarsel dal;
    QByteArray big(1024, '\x01');
    verifyRefused([&] { dal.setUserFileData(1000, 1, big.data(), 1024); }, "setUserFileData",
                  "0..1023");
    verifyRefused([&] { dal.setUserFileData(1000, 1, big.data(), -1); }, "setUserFileData", "-1");
    verifyRefused([&] { dal.setUserFileData(1000, 1, nullptr, 5); }, "setUserFileData", "0..0");
    verifyRefused([&] { dal.setInputPortEdid(nullptr, 1, 4, ModelTarsel()); }, "setInputPortEdid",
                  "0..0");
    verifyRefused([&] { dal.setPreviewHip(ModelTarsel(), QByteArray(255, 'x')); }, "setPreviewHip",
                  "255-byte");
    dal.setPreviewHip(ModelTarsel(), QByteArray(254, 'x'));
    TAKE_ONE(hip);
    QCOMPARE(headOf(hip), QByteArray::fromHex("f02000ff00"));
    verifyRefused([&] { dal.setR4Reset(1000, 1, QByteArray(1024, 'x')); }, "setR4Reset",
                  "1024-byte");
    verifyRefused(
        [&] {
            dal.setPreviewModeSignal(
                1000, 1, QStringLiteral("1-2-3-4-5-6-7-8-9-10-11-12-13-14-15-16-17"), QString());
        },
        "setPreviewModeSignal", "0..16");
    verifyRefused(
        [&] { dal.setH265InputUrl(streamModel(), 1, 1, QString(1023, QLatin1Char('u'))); },
        "setH265InputUrl", "1024-byte");
    ModelScene scene;
    scene.maxContainerCount = 1;
    int flags[] = {1};
    verifyRefused([&] { dal.setTakeAlphaDuetoContainer(scene, flags); },
                  "setTakeAlphaDuetoContainer", "0..0");
}

void tst_catalog_setters::everySetterRegistered() {
    const QStringList ops = QStringList()
    // clang-format off
#include "group_signatures_begin.h"
#include "catalog/setters.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("catalog_setters.txt"));
}

QTEST_GUILESS_MAIN(tst_catalog_setters)
#include "tst_catalog_setters.moc"
