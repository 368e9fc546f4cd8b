#include "biz_osd_cmdswork.h"
#include "dal_osd.h"

#include <QtTest>

using OsdCall = std::function<void(dal_Osd&)>;
Q_DECLARE_METATYPE(OsdCall)

namespace {

QVector<model_OsdParam> takeOsdQueued() {
    std::lock_guard<std::mutex> lock(biz_Osd_CMDSWork::sendQueueLock);
    QVector<model_OsdParam> records(biz_Osd_CMDSWork::sendQueue.begin(),
                                    biz_Osd_CMDSWork::sendQueue.end());
    biz_Osd_CMDSWork::sendQueue.clear();
    return records;
}

QByteArray headerOf(const model_OsdParam& rec) {
    return QByteArray(reinterpret_cast<const char*>(rec.frameHead), sizeof rec.frameHead);
}

// The header as the box expects it for a command and payload length.
QByteArray header(int cmd, int length) {
    return QByteArray::fromHex("0000fedc") + char(cmd) + QByteArray(2, '\0') + char(length >> 8) +
           char(length & 0xFF) + QByteArray::fromHex("0d0a");
}

} // namespace

class tst_osd : public QObject {
    Q_OBJECT
private slots:
    void init() { takeOsdQueued(); }
    void commands_data();
    void commands();
    void textInfoLongText();
    void nullDataKeepsLength();
    void checkSumKept();
};

void tst_osd::commands_data() {
    QTest::addColumn<OsdCall>("call");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("timeout");

    QTest::newRow("clearScreen") << OsdCall([](dal_Osd& o) { o.clearScreen("t"); }) << 2
                                 << QByteArray() << 5000;
    QTest::newRow("checkTime") << OsdCall([](dal_Osd& o) { o.checkTime("t"); }) << 3 << QByteArray()
                               << 1000;
    QTest::newRow("sendShowText fourth first")
        << OsdCall([](dal_Osd& o) { o.sendShowText(1, 2, 3, 4, 5, 0x106, "t"); }) << 5
        << QByteArray::fromHex("040102030506") << 1000;
    QTest::newRow("sendScrollInfo little-endian")
        << OsdCall([](dal_Osd& o) { o.sendScrollInfo(1, 2, 0x1234, "t"); }) << 10
        << QByteArray::fromHex("01023412") << 1000;
    QTest::newRow("setOsdShowModel 1") << OsdCall([](dal_Osd& o) { o.setOsdShowModel(1, "t"); })
                                       << 11 << QByteArray::fromHex("01") << 2000;
    QTest::newRow("setOsdShowModel 2") << OsdCall([](dal_Osd& o) { o.setOsdShowModel(2, "t"); })
                                       << 11 << QByteArray::fromHex("00") << 2000;
    QTest::newRow("setOsdShowModel 257") << OsdCall([](dal_Osd& o) { o.setOsdShowModel(257, "t"); })
                                         << 11 << QByteArray::fromHex("00") << 2000;
    QTest::newRow("sendTextInfo big-endian pairs") << OsdCall([](dal_Osd& o) {
        o.sendTextInfo(0x0102, 0x0304, 5, 6, 7, 8, 9, 10, 11, "AB", 99, "t");
    }) << 17 << QByteArray::fromHex("030401020502060708090a0b4142")
                                                   << 2000;
    QTest::newRow("sendTextInfo empty text") << OsdCall([](dal_Osd& o) {
        o.sendTextInfo(0x1FF02, -1, 0x105, 6, 7, 8, 9, 10, 11, QString(), 0, "t");
    }) << 17
                                             << QByteArray::fromHex("ffffff0205000607"
                                                                    "08090a0b")
                                             << 2000;
}

void tst_osd::commands() {
    QFETCH(OsdCall, call);
    QFETCH(int, cmd);
    QFETCH(QByteArray, payload);
    QFETCH(int, timeout);
    dal_Osd osd;
    call(osd);
    const auto records = takeOsdQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headerOf(records[0]), header(cmd, payload.size()));
    QCOMPARE(records[0].payload, payload);
    QCOMPARE(records[0].timeout, timeout);
    QCOMPARE(records[0].tag, QStringLiteral("t"));
    QCOMPARE(records[0].flag, 0);
    QCOMPARE(records[0].counter, 0);
    QVERIFY(records[0].replyData.isEmpty());
}

void tst_osd::textInfoLongText() {
    const QString text(300, QLatin1Char('x'));
    dal_Osd().sendTextInfo(0, 0, 0, 0, 0, 0, 0, 0, 0, text, 0, "long");
    const auto records = takeOsdQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(records[0].payload.size(), 312);
    QCOMPARE(int(static_cast<unsigned char>(records[0].payload[5])), 300 & 0xFF); // wraps
    QCOMPARE(headerOf(records[0]), header(17, 312));                              // 0x01 0x38
}

void tst_osd::nullDataKeepsLength() {
    dal_Osd().f_SendCmd(0x107, nullptr, 0x1234, "n", 7);
    const auto records = takeOsdQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headerOf(records[0]), header(7, 0x1234));
    QVERIFY(records[0].payload.isEmpty());
}

void tst_osd::checkSumKept() {
    QByteArray buffer = QByteArray::fromHex("ff0277");
    dal_Osd().setCheckSum(reinterpret_cast<unsigned char*>(buffer.data()), 2);
    QCOMPARE(buffer, QByteArray::fromHex("ff0201"));
    dal_Osd().setCheckSum(reinterpret_cast<unsigned char*>(buffer.data()), 0);
    QCOMPARE(buffer, QByteArray::fromHex("000201"));
}

QTEST_GUILESS_MAIN(tst_osd)
#include "tst_osd.moc"
