#include "biz_cmdswork.h"
#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QLoggingCategory>
#include <QtTest>

#include <thread>

class tst_core : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void routing_data();
    void routing();
    void recordAsFilled();
    void nullDataAndEmptyText();
    void traceLine_data();
    void traceLine();
    void traceSkippedWhenDebugDisabled();
    void gating();
    void concurrentSenders();
    void checkSum_data();
    void checkSum();
    void checkSumNegativeLengthWritesNothing();
    void byteHelpers();
    void debugSender();
    void resetOutPortFPGA_data();
    void resetOutPortFPGA();
    void queueHandOff();
    void everyCoreOperationRegistered();
};

void tst_core::routing_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("tag");

    QTest::newRow("unknown device") << 0x123456 << 0x68 << 0x700000;
    QTest::newRow("zero") << 0 << 0x68 << 0x700000;
    QTest::newRow("2C0101 stays untagged") << 0x2C0101 << 0x68 << 0x700000;
    QTest::newRow("2C0102 stays untagged") << 0x2C0102 << 0x90 << 0x700000;
    QTest::newRow("2C0105 stays untagged") << 0x2C0105 << 0x68 << 0x700000;
    QTest::newRow("2C0201 folds into 2C0202") << 0x2C0201 << 0x68 << 0x2C0202;
    QTest::newRow("2C0202") << 0x2C0202 << 0x90 << 0x2C0202;
    QTest::newRow("2C0103 folds into 2C0104") << 0x2C0103 << 0x68 << 0x2C0104;
    QTest::newRow("2C0103 tunnel") << 0x2C0103 << 0x91 << 0x2C0104;
    QTest::newRow("2C0104 tunnel") << 0x2C0104 << 0x90 << 0x2C0104;
    QTest::newRow("2C0104 truncated 0x190") << 0x2C0104 << 0x190 << 0x2C0104;
    const int ownCodes[] = {0x230102, 0x230106, 0x230107, 0x250000, 0x260000,
                            0x260002, 0x2C0100, 0x2C0106, 0x2C0107};
    for (int code : ownCodes) {
        QTest::addRow("%x keeps its code", code) << code << 0x68 << code;
        QTest::addRow("%x tunnel keeps its code", code) << code << 0x90 << code;
    }
    const int dialects[] = {0x250300, 0x250310, 0x250400, 0x250502, 0x2D0000, 0x900000, 0x900001};
    for (int code : dialects)
        QTest::addRow("%x", code) << code << 0x6A << code;
}

void tst_core::routing() {
    QFETCH(int, device);
    QFETCH(int, cmd);
    QFETCH(int, tag);
    Utility_Manage::setDeviceType(device);
    DalTarsel().f_SendCmd(3000, cmd, 3, 0, 0, 0, nullptr, 0, QString());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].deviceType, tag);
}

void tst_core::recordAsFilled() {
    Utility_Manage::setConnectType(0x1FE); // stored as one byte
    unsigned char block[] = {1, 2, 3, 4, 5};
    DalTarsel().f_SendCmd(4500, 0x1F0, 0x120, -1, 0x3C, 0xFF05, block, 3, QStringLiteral("tag"));
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    const model_Protocoldata& rec = records[0];
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(rec.cmdHead), 8),
             QByteArray::fromHex("0000f020ff3c0500"));
    QCOMPARE(rec.timeout, 4500);
    QCOMPARE(rec.connectType, 0xFE);
    QCOMPARE(rec.arryDatablock, QByteArray::fromHex("010203"));
    QCOMPARE(rec.Datablock, QStringLiteral("tag"));
    QCOMPARE(rec.statusByte, 0);
    QCOMPARE(rec.dataType, 0);
    QCOMPARE(rec.msgCode, 0);
    QCOMPARE(rec.deviceType, 0x700000);
}

void tst_core::nullDataAndEmptyText() {
    unsigned char block[] = {9};
    DalTarsel dal;
    dal.f_SendCmd(3000, 0x68, 1, 0, 0, 0, nullptr, 5, QString());
    dal.f_SendCmd(3000, 0x68, 1, 0, 0, 0, block, 0, QStringLiteral(""));
    dal.f_SendCmd(3000, 0x68, 1, 0, 0, 0, block, -4, QString());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    for (const auto& rec : records) {
        QVERIFY(rec.arryDatablock.isEmpty());
        QVERIFY(rec.Datablock.isEmpty());
    }
}

void tst_core::traceLine_data() {
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("native") << QByteArray::fromHex("0a00ff") << QString()
                            << "---addToQueue----CMD= \"78\" ---DAT1= \"0\" ---DAT2= \"f4\" "
                               "---DAT3= \"10\" ---DAT4= \"1\" ---arryDatablock= \"0a00ff\" "
                               "---Datablock= \"\"";
    QTest::newRow("text") << QByteArray() << QStringLiteral("say \"hi\"")
                          << "---addToQueue----CMD= \"78\" ---DAT1= \"0\" ---DAT2= \"f4\" "
                             "---DAT3= \"10\" ---DAT4= \"1\" ---arryDatablock= \"\" "
                             "---Datablock= \"say \\\"hi\\\"\"";
}

void tst_core::traceLine() {
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    TraceCapture trace;
    DalTarsel().f_SendCmd(3000, 0x78, 0, 0xF4, 0x10, 1,
                          block.isEmpty() ? nullptr
                                          : reinterpret_cast<unsigned char*>(block.data()),
                          block.size(), text);
    QCOMPARE(trace.lines(), QStringList{expected});
}

void tst_core::traceSkippedWhenDebugDisabled() {
    TraceCapture trace;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    DalTarsel().f_SendCmd(3000, 0x78, 0, 0, 0, 0, nullptr, 0, QString());
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(trace.lines().isEmpty());
    QCOMPARE(takeQueued().size(), 1);
}

void tst_core::gating() {
    DalTarsel::isConnected = false;
    TraceCapture trace;
    DalTarsel dal;
    dal.f_SendCmd(3000, 0x6A, 3, 0, 0, 0, nullptr, 0, QString());
    dal.f_SendCmdForDebug(3000, 0x21, 0xF4, 2, 0, 1, 0, nullptr, 0);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(trace.lines().size(), 1); // the generic send traces even when dropping
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

void tst_core::checkSum_data() {
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<int>("sum");
    QTest::newRow("carry dropped") << QByteArray::fromHex("ff02") << 0x01;
    QTest::newRow("empty") << QByteArray() << 0x00;
    QTest::newRow("no complement") << QByteArray::fromHex("10203040") << 0xA0;
    QTest::newRow("wraps twice") << QByteArray(3, char(0xFF)) << 0xFD;
}

void tst_core::checkSum() {
    QFETCH(QByteArray, block);
    QFETCH(int, sum);
    QByteArray buffer = block + QByteArray::fromHex("ee55");
    DalTarsel().setCheckSum(reinterpret_cast<unsigned char*>(buffer.data()), block.size());
    QCOMPARE(buffer.left(block.size()), block);
    QCOMPARE(static_cast<unsigned char>(buffer[block.size()]), sum);
    QCOMPARE(static_cast<unsigned char>(buffer[block.size() + 1]), 0x55); // nothing past it
}

void tst_core::checkSumNegativeLengthWritesNothing() {
    QByteArray buffer = QByteArray::fromHex("aabbcc");
    DalTarsel().setCheckSum(reinterpret_cast<unsigned char*>(buffer.data()) + 2, -2);
    QCOMPARE(buffer, QByteArray::fromHex("aabbcc"));
}

void tst_core::byteHelpers() {
    DalTarsel dal;
    unsigned char low = 0, high = 0;
    dal.splitTwoByte(0x1234, low, high);
    QCOMPARE(int(low), 0x34);
    QCOMPARE(int(high), 0x12);
    dal.splitTwoByte(-2, low, high);
    QCOMPARE(int(low), 0xFE);
    QCOMPARE(int(high), 0xFF);

    QCOMPARE(dal.f_RGBtoInt(1, 2, 3), 0x010203);
    QCOMPARE(dal.f_RGBtoInt(0, 256, 0), 0x10000);
    QCOMPARE(dal.f_RGBtoInt(0, 0, 0x1FF), 0x1FF);
    QCOMPARE(dal.f_RGBtoInt(0x10000, 0, 0), 0); // wraps, never undefined
    QCOMPARE(dal.f_RGBtoInt(0, 0, -1), -1);

    unsigned char bytes[] = {7, 8, 9};
    QCOMPARE(dal.getBlock(bytes, 2), QByteArray::fromHex("0708"));
    QVERIFY(dal.getBlock(bytes, 0).isEmpty());
    QVERIFY(dal.getBlock(nullptr, -1).isEmpty());
}

void tst_core::debugSender() {
    Utility_Manage::setDeviceType(0x250300); // neither read nor translated
    Utility_Manage::setConnectType(4);
    unsigned char block[] = {0xAB, 0xCD};
    TraceCapture trace;
    DalTarsel().f_SendCmdForDebug(777, 0x122, 0x1F4, 2, 0x20, 1, 0, block, 2);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(records[0].cmdHead), 8),
             QByteArray::fromHex("2200f40220010000"));
    QCOMPARE(records[0].timeout, 777);
    QCOMPARE(records[0].deviceType, 0x700000);
    QCOMPARE(records[0].connectType, 0);
    QCOMPARE(records[0].arryDatablock, QByteArray::fromHex("abcd"));
    QVERIFY(trace.lines().isEmpty());
}

void tst_core::resetOutPortFPGA_data() {
    QTest::addColumn<int>("port");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("half");
    QTest::newRow("0") << 0 << 0x21 << 0x00;
    QTest::newRow("3") << 3 << 0x21 << 0x20;
    QTest::newRow("5") << 5 << 0x22 << 0x00;
    QTest::newRow("6") << 6 << 0x22 << 0x20;
    QTest::newRow("-1 keeps the remainder's sign") << -1 << 0x21 << 0x20;
    QTest::newRow("-4") << -4 << 0x20 << 0x00;
    QTest::newRow("-7") << -7 << 0x20 << 0x20;
}

void tst_core::resetOutPortFPGA() {
    QFETCH(int, port);
    QFETCH(int, address);
    QFETCH(int, half);
    DalTarsel().resetOutPortFPGA(3000, port);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(int(records[0].cmdHead[0]), address);
    QCOMPARE(headOf(records[0]),
             QByteArray::fromHex("f402") + char(half) + QByteArray::fromHex("0100"));
}

void tst_core::queueHandOff() {
    DalTarsel dal;
    model_Protocoldata rec;
    rec.strAux2 = QStringLiteral("aux");
    rec.cmdHead[7] = 0x77;
    dal.addToReceivedQueue(rec);
    dal.setRetFlagStatus(true);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(biz_CMDSWork::receivequeueHexCmd.size(), size_t(1));
    QCOMPARE(biz_CMDSWork::receivequeueHexCmd.front().strAux2, QStringLiteral("aux"));
    QCOMPARE(int(biz_CMDSWork::receivequeueHexCmd.front().cmdHead[7]), 0x77);
    QVERIFY(biz_CMDSWork::bRetFlag);
    dal.setRetFlagStatus(false);
    QVERIFY(!biz_CMDSWork::bRetFlag);
}

void tst_core::everyCoreOperationRegistered() {
    const QStringList ops = QStringList()
// clang-format off
#include "group_signatures_begin.h"
#include "core.def"
#include "group_signatures_end.h"
        // clang-format on
        ;
    verifyGroup(ops, QStringLiteral("core.txt"));
}

QTEST_GUILESS_MAIN(tst_core)
#include "tst_core.moc"
