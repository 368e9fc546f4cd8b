#include "biz_cmdswork.h"
#include "dalTarsel.h"
#include "families.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QLoggingCategory>
#include <QtTest>

#include <thread>
#include <vector>

class tst_core : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void routing_data();
    void routing();
    void refusedPastTheFramesLimit();
    void traitsDriveTheirOperations();
    void recordAsFilled();
    void gating();
    void concurrentSenders();
    void checkSum();
    void byteHelpers();
    void debugSenderAndFpgaReset();
    void queueHandOff();
};

// Which translator a device code and CMD select shows in the text and the block they leave.
void tst_core::routing_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("blockSize");

    QTest::newRow("unknown code") << 0x123456 << 0x6A << 0x700000 << "" << 1;
    QTest::newRow("2C0101 has no row") << 0x2C0101 << 0x90 << 0x700000 << "" << 1;
    QTest::newRow("T9") << 0x250300 << 0x6A << 0x250300 << "Command=GetVersion" << 1;
    QTest::newRow("T3 250310") << 0x250310 << 0x6A << 0x250310 << "<GVER>" << 6;
    QTest::newRow("T3 250400") << 0x250400 << 0x6A << 0x250400 << "<GVER>" << 6;
    QTest::newRow("KR2") << 0x250502 << 0x6A << 0x250502 << "(ver)" << 5;
    QTest::newRow("NV") << 0x2D0000 << 0x6A << 0x2D0000 << "Command=GetVersion" << 18;
    QTest::newRow("H40") << 0x900000 << 0x6A << 0x900000 << "<reid, 0, 1>" << 1;
    QTest::newRow("H40B") << 0x900001 << 0x6A << 0x900001 << "<reid, 0, 1>" << 12;
    QTest::newRow("VM6S 2C0103 folds") << 0x2C0103 << 0x6A << 0x2C0104 << "" << 23;
    QTest::newRow("VM6S 2C0104") << 0x2C0104 << 0x6A << 0x2C0104 << "" << 23;
    QTest::newRow("VantaZ 2C0103 90") << 0x2C0103 << 0x90 << 0x2C0104 << "" << 16;
    QTest::newRow("VantaZ CMD 0x190 cut to 90") << 0x2C0104 << 0x190 << 0x2C0104 << "" << 16;
    for (int code : {0x230102, 0x230106, 0x230107, 0x250000, 0x260000, 0x260002, 0x2C0100, 0x2C0106,
                     0x2C0107}) {
        QTest::addRow("Cadex %x tunnel", code) << code << 0x90 << code << "" << 7;
        QTest::addRow("Cadex %x native", code) << code << 0x6A << code << "" << 1;
    }
    QTest::newRow("2C0201 folds into 2C0202") << 0x2C0201 << 0x6A << 0x2C0202 << "" << 1;
    QTest::newRow("2C0202 tunnel stays native") << 0x2C0202 << 0x91 << 0x2C0202 << "" << 1;
}

void tst_core::routing() {
    QFETCH(int, device);
    QFETCH(int, cmd);
    QFETCH(int, tag);
    QFETCH(QString, text);
    QFETCH(int, blockSize);
    Utility_Manage::setDeviceType(device);
    unsigned char block[] = {0xAA};
    DalTarsel().f_SendCmd(3000, cmd, 3, 0, 0, 0, block, 1, QString());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].deviceType, tag);
    QCOMPARE(records[0].Datablock, text);
    QCOMPARE(records[0].arryDatablock.size(), blockSize);
}

// VantaZ frames take at most 242 block bytes, Cadex 250: one more is refused, not wrapped.
void tst_core::refusedPastTheFramesLimit() {
    for (const auto& [device, cmd, limit] :
         {std::tuple(0x2C0103, 0x91, 242), std::tuple(0x230102, 0x90, 250)}) {
        QByteArray block(limit + 1, char(0x01));
        sendTo(device, QByteArray(1, char(cmd)) + QByteArray(4, '\0'), block.left(limit));
        MessageCapture messages;
        DalTarsel().f_SendCmd(3000, cmd, 1, 0, 0, 0, reinterpret_cast<unsigned char*>(block.data()),
                              block.size(), QString());
        QVERIFY(takeQueued().isEmpty());
        QCOMPARE(messages.warnings().size(), 1);
        QVERIFY(messages.debug().isEmpty());
    }
}

// Each trait of the device table changes its operation for exactly the codes that have it,
// among the table's codes and one outside it.
void tst_core::traitsDriveTheirOperations() {
    ModelScene scene;
    scene.maxLayerCount = 1;
    scene.sceneList.resize(1);
    scene.sceneList[0].layerList.resize(1);
    ModelTarsel model;
    model.maxContainerCount = 1;
    model.containerParams = {_ContainerParam_Destktop()}; // mode 0, sent as 3 where translated
    const auto byte10 = [](const model_Protocoldata& r) { return r.arryDatablock.mid(10, 1); };
    const auto flag = [](bool shown, device::Trait trait) { return shown ? unsigned(trait) : 0u; };
    const auto vm6s = [](const char* h) { return sendTo(family::VM6S, QByteArray::fromHex(h)); };
    std::vector<device::Row> rows(std::begin(device::kRows), std::end(device::kRows));
    rows.push_back({0x123456, "none", 0});
    unsigned seen = 0, all = 0;
    for (const device::TraitText& trait : device::kTraits)
        all |= trait.trait;
    DalTarsel dal;
    for (const device::Row& row : rows) {
        Utility_Manage::setDeviceType(row.code);
        dal.setLayerContainerIndex(3000, 0, scene);
        unsigned shown = flag(takeQueued().size() == 1, device::ContainerIndexes);
        dal.geth264inputrtsp(model, 5, 11);
        shown |= flag(takeQueued().value(0).cmdHead[4] == 0x5B, device::SixteenChannels);
        Utility_Manage::setDeviceType(family::native);
        dal.setContainerParam(model, row.code);
        shown |= flag(byte10(takeQueued().value(0)) == "\x03", device::ContainerModes);
        scene.deviceType = row.code;
        dal.setLayerDate(0, 0, scene);
        shown |= flag(takeQueued().value(0).arryDatablock.size() == 23, device::LayerExtraBytes);
        Utility_Manage::setDeviceSubType(row.code);
        shown |= flag(byte10(vm6s("6806000000")) == "\x01", device::SubTypeOne);
        shown |= flag(byte10(vm6s("6a03000000")) == QByteArray(1, 0), device::NamedSubType);
        QVERIFY2(shown == row.traits, qPrintable(QString::number(row.code, 16)));
        seen |= row.traits;
    }
    QCOMPARE(seen, all); // each trait is seen on a code and off the last one
}

void tst_core::recordAsFilled() {
    Utility_Manage::setConnectType(0x1FE); // stored as one byte
    unsigned char block[] = {1, 2, 3, 4, 5};
    DalTarsel dal;
    dal.f_SendCmd(4500, 0x1F0, 0x120, -1, 0x3C, 0xFF05, block, 3, QStringLiteral("tag"));
    dal.f_SendCmd(3000, 0x68, 1, 0, 0, 0, nullptr, 5, QString());
    dal.f_SendCmd(3000, 0x68, 1, 0, 0, 0, block, -4, QString());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    const model_Protocoldata& rec = records[0];
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(rec.cmdHead), 8).toHex(),
             QByteArray("0000f020ff3c0500"));
    QCOMPARE(describe({rec}), QStringLiteral("f020ff3c05 4500 010203 'tag'"));
    QCOMPARE(int(rec.connectType), 0xFE);
    QCOMPARE(int(rec.statusByte) + rec.dataType + rec.msgCode, 0);
    QCOMPARE(rec.deviceType, 0x700000);
    QCOMPARE(describe(records.mid(1)), QStringLiteral("6801000000 3000 | 6801000000 3000"));
}

void tst_core::gating() {
    DalTarsel::isConnected = false;
    MessageCapture messages;
    DalTarsel dal;
    dal.f_SendCmd(3000, 0x6A, 3, 0, 0, 0, nullptr, 0, QString());
    dal.f_SendCmdForDebug(3000, 0x21, 0xF4, 2, 0, 1, 0, nullptr, 0);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(messages.debug().size(), 1); // the generic send traces even when dropping
}

void tst_core::concurrentSenders() {
    constexpr int kThreads = 8;
    constexpr int kPerThread = 10000;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([t] {
            DalTarsel dal;
            for (int i = 0; i < kPerThread; ++i)
                dal.f_SendCmd(i, 0x68, t, i & 0xFF, (i >> 8) & 0xFF, 0, nullptr, 0, QString());
        });
    for (auto& thread : threads)
        thread.join();
    QLoggingCategory::setFilterRules(QString());

    const auto records = takeQueued();
    QCOMPARE(records.size(), kThreads * kPerThread);
    int next[kThreads] = {};
    for (const auto& rec : records) {
        const int t = rec.cmdHead[3];
        QVERIFY(t < kThreads);
        QCOMPARE(rec.timeout, next[t]); // each thread's records in its own order
        QCOMPARE(rec.cmdHead[4] | (rec.cmdHead[5] << 8), next[t]);
        ++next[t];
    }
}

// The checksum is the plain sum of the bytes, carries dropped, written after them.
void tst_core::checkSum() {
    const char* rows[][3] = {
        {"ff02ee55", "2", "ff020155"}, {"ee55", "0", "0055"}, {"10203040ee", "4", "10203040a0"}};
    for (const auto& row : rows) {
        QByteArray block = QByteArray::fromHex(row[0]);
        DalTarsel().setCheckSum(reinterpret_cast<unsigned char*>(block.data()), atoi(row[1]));
        QCOMPARE(block.toHex(), QByteArray(row[2]));
    }
    QByteArray untouched = QByteArray::fromHex("aabbcc");
    DalTarsel().setCheckSum(reinterpret_cast<unsigned char*>(untouched.data()) + 2, -2);
    QCOMPARE(untouched.toHex(), QByteArray("aabbcc"));
}

void tst_core::byteHelpers() {
    DalTarsel dal;
    unsigned char low = 0, high = 0;
    dal.splitTwoByte(0x1234, low, high);
    QCOMPARE(int(low) | int(high) << 8, 0x1234);
    dal.splitTwoByte(-2, low, high);
    QCOMPARE(int(low) | int(high) << 8, 0xFFFE);

    QCOMPARE(dal.f_RGBtoInt(1, 2, 3), 0x010203);
    QCOMPARE(dal.f_RGBtoInt(0x10000, 0, 0), 0); // wraps, never undefined
    QCOMPARE(dal.f_RGBtoInt(0, 0, -1), -1);

    unsigned char bytes[] = {7, 8, 9};
    QCOMPARE(dal.getBlock(bytes, 2), QByteArray::fromHex("0708"));
    QVERIFY(dal.getBlock(bytes, 0).isEmpty());
    QVERIFY(dal.getBlock(nullptr, -1).isEmpty());
}

// The debug sender neither reads the device nor translates nor traces; the reset of an
// output port's FPGA goes through it, addressed by board and half.
void tst_core::debugSenderAndFpgaReset() {
    Utility_Manage::setDeviceType(0x250300);
    Utility_Manage::setConnectType(4);
    unsigned char block[] = {0xAB, 0xCD};
    MessageCapture messages;
    DalTarsel dal;
    dal.f_SendCmdForDebug(777, 0x122, 0x1F4, 2, 0x20, 1, 0, block, 2);
    for (int port : {0, 3, 5, 6, -1, -4, -7})
        dal.resetOutPortFPGA(3000, port);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 8);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(records[0].cmdHead), 8).toHex(),
             QByteArray("2200f40220010000"));
    QCOMPARE(describe({records[0]}), QStringLiteral("f402200100 777 abcd"));
    QCOMPARE(records[0].deviceType, 0x700000);
    QCOMPARE(int(records[0].connectType), 0);
    QVERIFY(messages.debug().isEmpty());
    QStringList resets; // address and DAT2 (the half)
    for (const auto& rec : records.mid(1))
        resets << QString::number(rec.cmdHead[0], 16) + '/' + QString::number(rec.cmdHead[4], 16);
    QCOMPARE(resets.join(' '), QStringLiteral("21/0 21/20 22/0 22/20 21/20 20/0 20/20"));
    QCOMPARE(describe({records[1]}), QStringLiteral("f402000100 3000"));
}

void tst_core::queueHandOff() {
    DalTarsel dal;
    dal.addToReceivedQueue(model_Protocoldata());
    dal.setRetFlagStatus(true);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(biz_CMDSWork::receivequeueHexCmd.size(), size_t(1));
    QVERIFY(biz_CMDSWork::bRetFlag);
    dal.setRetFlagStatus(false);
    QVERIFY(!biz_CMDSWork::bRetFlag);
}

QTEST_GUILESS_MAIN(tst_core)
#include "tst_core.moc"
