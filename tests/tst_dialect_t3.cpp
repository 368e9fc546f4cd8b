#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QLoggingCategory>
#include <QtTest>

#include <climits>

// in(DAT2) = DAT2 + 1 and inP(DAT2) = DAT2 + 11, so each text shows which lookup it used.
int t3Index(int code, int rows, int) { return code + 10 * (1 - rows); }

class tst_dialect_t3 : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        // The trace lines of the long texts would drown the report.
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    }
    void init() {
        resetLibrary();
        Utility_Manage::setDeviceType(0x250400);
        Utility_Manage::setInputIndexForT3Resolver(t3Index);
    }

    void table_data();
    void table();
    void unmatched_data();
    void unmatched();
    void edidWrite_data();
    void edidWrite();
    void edidExtensionSumsToZero();
    void networkWrite_data();
    void networkWrite();
    void bothDeviceCodes_data();
    void bothDeviceCodes();
    void directSender();
    void operationsRegistered();
};

namespace {

QByteArray five(int cmd, int dat1, int dat2, int dat3, int dat4) {
    QByteArray head;
    for (int value : {cmd, dat1, dat2, dat3, dat4})
        head.append(char(value));
    return head;
}

model_Protocoldata sendOne(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                           QByteArray block = QByteArray(), QString text = QString()) {
    DalTarsel().f_SendCmd(timeout, cmd, dat1, dat2, dat3, dat4,
                          block.isNull() ? nullptr : reinterpret_cast<unsigned char*>(block.data()),
                          block.size(), text);
    const auto records = takeQueued();
    if (records.size() != 1)
        qFatal("expected one queued record, got %d", int(records.size()));
    return records[0];
}

} // namespace

void tst_dialect_t3::table_data() {
    QTest::addColumn<int>("timeout");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("dat1");
    QTest::addColumn<int>("dat2");
    QTest::addColumn<int>("dat3");
    QTest::addColumn<int>("dat4");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");

    auto row = [&](const char* name, int cmd, int dat1, int dat2, int dat3, int dat4,
                   const char* text, int timeout = 3000, QByteArray block = QByteArray()) {
        QTest::newRow(name) << timeout << cmd << dat1 << dat2 << dat3 << dat4 << block
                            << QString::fromLatin1(text);
    };
    row("RSTF", 0x68, 0x06, 0, 0, 0, "<RSTF>");
    row("WPWR", 0x68, 0x10, 7, 0, 0, "<WPWR,7>");
    row("SVCN first", 0x68, 0x1A, 0, 0, 0, "<SVCN, 1A>");
    row("SVCN", 0x68, 0x1A, 4, 5, 0, "<SVCN, 5F>");
    row("GVER", 0x6A, 0x03, 0, 0, 0, "<GVER>");
    row("board GVER uses second argument 0", 0x6A, 0x09, 2, 0, 0, "<13P,GVER>");
    row("ROUT under 74 from DAT4", 0x74, 0x33, 5, 0, 2, "<9Y,ROUT>");
    row("RDIP mask", 0x85, 0x00, 0, 0, 0, "<RDIP>");
    row("RDIP ip", 0x89, 0x00, 0, 0, 0, "<RDIP>");
    row("RDIP gateway", 0x8D, 0x00, 0, 0, 0, "<RDIP>");
    row("RMAC", 0x90, 0x01, 0, 0, 0, "<RMAC>");
    row("RDID", 0x90, 0x03, 2, 0, 0, "<3X,RDID>");
    row("GETR", 0x90, 0x04, 0, 0, 0, "<1X,GETR>");
    row("ROUT under 90 from DAT2", 0x90, 0x07, 3, 0, 9, "<4Y,ROUT>");
    row("GPM3", 0x90, 0x09, 1, 0, 0, "<2X,GPM3>");
    row("GTLP letter at DAT2", 0x90, 0x0B, 1, 0, 0, "<GTLP,1B>");
    row("RIIP", 0x90, 0x0D, 2, 1, 2, "<3.22X,RIIP>");
    row("RIIP first fractions", 0x90, 0x0D, 2, 0, 0, "<3.1X,RIIP>");
    row("RIIP last fractions", 0x90, 0x0D, 2, 3, 4, "<3.44X,RIIP>");
    row("GBGP letter at DAT2 - 1", 0x90, 0x11, 1, 0, 0, "<GBGP,1A>");
    row("GBGP last letter", 0x90, 0x11, 6, 0, 0, "<GBGP,1F>");
    row("GCHN literal", 0x90, 0x1B, 0, 0, 0, "<GCHN,0x10>");
    row("GPTX", 0x90, 0x1F, 4, 0, 0, "<5X,GPTX>");
    row("GETR cvbs", 0x90, 0x21, 0, 2, 0, "<1.3X,GETR>");
    row("GETR cvbs whole", 0x90, 0x21, 1, 9, 0, "<3X,GETR>");
    row("GACT", 0x90, 0x23, 1, 0, 0, "<GACT,2>");
    row("GYNC", 0x90, 0x29, 0, 0, 0, "<GYNC,1>");
    row("GPMD", 0x90, 0x2B, 1, 3, 0, "<2.4X,GPMD>");
    row("GOST", 0x90, 0x2D, 0, 0, 0, "<1Y,GOST>");
    row("CLCN", 0x92, 0x00, 1, 2, 0, "<CLCN, 2C>");
    row("winf", 0x92, 0x03, 9, 0, 0, "<winf, 9>");
    row("SHUT port", 0xF0, 0x01, 1, 3, 1, "<SHUT, 4B>");
    row("SHUT all", 0xF0, 0x01, 2, 9, 3, "<SHUT, 0D>");
    row("MOVZ minus 2999", 0xF0, 0x01, 5, 7, 0, "<MOVZ, 6A, 7>", 3005);
    row("WPM1 signed high bytes", 0xF0, 0x09, 0, 0, 0, "<1X,WPM1,1,-1,4660,-32768>", 3000,
        QByteArray::fromHex("0100ffff34120080"));
    row("WPM1 short block reads zeros", 0xF0, 0x09, 1, 0, 0, "<2X,WPM1,255,0,0,0>", 3000,
        QByteArray::fromHex("ff"));
    row("widf minus 3000", 0xF1, 0x01, 0, 0, 0, "<widf, 5>", 3005);
    row("widf negative", 0xF1, 0x01, 0, 0, 0, "<widf, -3000>", 0);
    row("widf extreme time-out", 0xF1, 0x01, 0, 0, 0, "<widf, -2147486648>", INT_MIN);
    row("GCHN", 0xF1, 0x04, 0, 0, 0, "<GCHN,2>");
    row("CLCN program", 0xF1, 0x06, 0, 5, 0, "<CLCN, 1F, 1>");
    row("CLCN layer", 0xF1, 0x08, 2, 0, 0, "<CLCN, 3A, 1>");
    row("RPM1", 0xF1, 0x09, 3, 0, 0, "<4X,RPM1>");
    row("REDI", 0xF1, 0x0C, 0, 0, 0, "<1X,REDI>");
    row("RNET", 0xF1, 0x21, 1, 0, 0, "<2X,RNET>");
    row("RCN", 0xF1, 0x3B, 4, 0, 0, "<RCN5>");
}

void tst_dialect_t3::table() {
    QFETCH(int, timeout);
    QFETCH(int, cmd);
    QFETCH(int, dat1);
    QFETCH(int, dat2);
    QFETCH(int, dat3);
    QFETCH(int, dat4);
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    const model_Protocoldata rec = sendOne(timeout, cmd, dat1, dat2, dat3, dat4, block);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(rec.arryDatablock, text.toLatin1());
    QCOMPARE(headOf(rec), five(cmd, dat1, dat2, dat3, dat4));
    QCOMPARE(rec.timeout, timeout);
    QCOMPARE(rec.deviceType, 0x250400);
}

void tst_dialect_t3::unmatched_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("dat1");
    QTest::addColumn<int>("dat2");
    QTest::addColumn<int>("dat3");
    QTest::addColumn<int>("dat4");

    QTest::newRow("board info query") << 0x90 << 0x05 << 0 << 0 << 0;
    QTest::newRow("unknown CMD") << 0x73 << 0x01 << 0 << 0 << 0;
    QTest::newRow("SHUT DAT2 3") << 0xF0 << 0x01 << 3 << 0 << 0;
    QTest::newRow("GTLP past F") << 0x90 << 0x0B << 6 << 0 << 0;
    QTest::newRow("GTLP far past F") << 0x90 << 0x0B << 255 << 0 << 0;
    QTest::newRow("GBGP DAT2 0") << 0x90 << 0x11 << 0 << 0 << 0;
    QTest::newRow("GBGP past F") << 0x90 << 0x11 << 7 << 0 << 0;
    QTest::newRow("RIIP tenth past list") << 0x90 << 0x0D << 0 << 4 << 0;
    QTest::newRow("RIIP hundredth past list") << 0x90 << 0x0D << 0 << 0 << 5;
    QTest::newRow("GPMD tenth past list") << 0x90 << 0x2B << 0 << 255 << 0;
    QTest::newRow("SVCN letter past F") << 0x68 << 0x1A << 0 << 6 << 0;
    QTest::newRow("CLCN letter past F") << 0xF1 << 0x08 << 0 << 200 << 0;
    QTest::newRow("SHUT letter past F") << 0xF0 << 0x01 << 2 << 0 << 6;
    QTest::newRow("MOVZ letter past F") << 0xF0 << 0x01 << 5 << 0 << 255;
}

// No text for the command: the caller's text and head pass through, the native block is lost.
void tst_dialect_t3::unmatched() {
    QFETCH(int, cmd);
    QFETCH(int, dat1);
    QFETCH(int, dat2);
    QFETCH(int, dat3);
    QFETCH(int, dat4);
    model_Protocoldata rec = sendOne(3000, cmd, dat1, dat2, dat3, dat4, QByteArray("\x01\x02", 2),
                                     QStringLiteral("keep"));
    QCOMPARE(rec.Datablock, QStringLiteral("keep"));
    QCOMPARE(rec.arryDatablock, QByteArray("keep"));
    QCOMPARE(headOf(rec), five(cmd, dat1, dat2, dat3, dat4));

    rec = sendOne(3000, cmd, dat1, dat2, dat3, dat4, QByteArray("\x01\x02", 2));
    QVERIFY(rec.Datablock.isEmpty());
    QVERIFY(rec.arryDatablock.isEmpty());
}

namespace {

const QByteArray kExtension = QByteArray::fromHex("02032E014F905F61666564633F5F0514"
                                                  "07061615E2002B6E030C001000307820"
                                                  "80800102030467D85DC4017880000474"
                                                  "0030F2705A80B0588A00B61C3200001A"
                                                  "34E90030F2705A80B0588A00FFFFFF00"
                                                  "001E023A801871382D40582C4500C48E"
                                                  "2100001E565E00A0A0A0295030203500"
                                                  "C48F2100001E000000000000000000B5");

QString signedList(const QByteArray& bytes) {
    QStringList values;
    for (char byte : bytes)
        values << QString::number(static_cast<signed char>(byte));
    return values.join(QLatin1Char(','));
}

} // namespace

void tst_dialect_t3::edidWrite_data() {
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");

    QTest::newRow("length 0") << 0 << QByteArray::fromHex("1122") << QStringLiteral("<1X,WEDI,>");
    QTest::newRow("length 1") << 1 << QByteArray::fromHex("11") << QStringLiteral("<1X,WEDI,>");
    QTest::newRow("length 3") << 3 << QByteArray::fromHex("10ff99")
                              << QStringLiteral("<1X,WEDI,16,-1>");
    QTest::newRow("length 3 empty block") << 3 << QByteArray() << QStringLiteral("<1X,WEDI,0,0>");
    QByteArray ramp;
    for (int i = 0; i < 129; ++i)
        ramp.append(char(i + 100)); // 100..228: crosses into negative numbers at 128
    QTest::newRow("length 129") << 129 << ramp
                                << QStringLiteral("<1X,WEDI,") + signedList(ramp.left(128)) + ">";
    const QByteArray head(10, char(0x80));
    QTest::newRow("length 257 short block gets the extension")
        << 257 << head + QByteArray(1, char(0x77))
        << QStringLiteral("<1X,WEDI,") + signedList(head + QByteArray(118, '\0') + kExtension) +
               ">";
    QByteArray full(300, char(0x01));
    QTest::newRow("length 257 long block replaced from 128")
        << 257 << full
        << QStringLiteral("<1X,WEDI,") + signedList(QByteArray(128, char(0x01)) + kExtension) + ">";
    QTest::newRow("length 65535 past the block reads zeros")
        << 65535 << QByteArray::fromHex("05ff")
        << QStringLiteral("<1X,WEDI,5") + QStringLiteral(",0").repeated(65533) + ">";
}

void tst_dialect_t3::edidWrite() {
    QFETCH(int, length);
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    const model_Protocoldata rec =
        sendOne(3000, 0xF0, 0x0C, 0, length & 0xFF, (length >> 8) & 0xFF, block);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(rec.arryDatablock, text.toLatin1());
}

void tst_dialect_t3::edidExtensionSumsToZero() {
    QCOMPARE(kExtension.size(), 128);
    int sum = 0;
    for (char byte : kExtension)
        sum += static_cast<unsigned char>(byte);
    QCOMPARE(sum % 256, 0);
}

void tst_dialect_t3::networkWrite_data() {
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty block") << QByteArray()
                                 << QStringLiteral("<3X,WNET") + QStringLiteral(",0").repeated(18) +
                                        ">";
    QTest::newRow("three bytes") << QByteArray::fromHex("ff0102")
                                 << QStringLiteral(
                                        "<3X,WNET,0,0,0,0,0,0,255,1,2,0,0,0,0,0,0,0,0,0>");
    QTest::newRow("tail first") << QByteArray::fromHex("0102030405060708090a0b0c0d0e0f101112ee")
                                << QStringLiteral(
                                       "<3X,WNET,13,14,15,16,17,18,1,2,3,4,5,6,7,8,9,10,11,12>");
}

void tst_dialect_t3::networkWrite() {
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    const model_Protocoldata rec = sendOne(3000, 0xF0, 0x21, 2, 0x12, 0, block);
    QCOMPARE(rec.Datablock, text);
}

void tst_dialect_t3::bothDeviceCodes_data() {
    QTest::addColumn<int>("device");
    QTest::newRow("250310") << 0x250310;
    QTest::newRow("250400") << 0x250400;
}

void tst_dialect_t3::bothDeviceCodes() {
    QFETCH(int, device);
    Utility_Manage::setDeviceType(device);
    const model_Protocoldata rec = sendOne(3000, 0x6A, 0x03, 0, 0, 0);
    QCOMPARE(rec.Datablock, QStringLiteral("<GVER>"));
    QCOMPARE(rec.arryDatablock, QByteArray("<GVER>"));
    QCOMPARE(rec.deviceType, device);
}

void tst_dialect_t3::directSender() {
    Utility_Manage::setDeviceType(0x250310);
    Utility_Manage::setConnectType(0x105);
    DalTarsel dal;
    dal.f_SendCmdForT3(1234, 0x1F0, 0x13B, 2, 3, 4, QStringLiteral("<RCN1>"), QByteArray());
    dal.f_SendCmdForT3(1234, 0x91, 0x0D, 0, 0, 0, QStringLiteral("<X>"), QByteArray("\x00\x09", 2));
    QString text = QStringLiteral("<WCN1,1,2>");
    dal.setContainerParamForT3(5000, text);
    auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f03b020304"));
    QCOMPARE(records[0].timeout, 1234);
    QCOMPARE(records[0].connectType, 0x05);
    QCOMPARE(records[0].deviceType, 0x250310);
    QCOMPARE(records[0].Datablock, QStringLiteral("<RCN1>"));
    QCOMPARE(records[0].arryDatablock, QByteArray("<RCN1>"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("910d000000")); // not translated
    QCOMPARE(records[1].Datablock, QStringLiteral("<X>"));
    QCOMPARE(records[1].arryDatablock, QByteArray("\x00\x09", 2));
    QCOMPARE(headOf(records[2]), QByteArray::fromHex("f03b000000"));
    QCOMPARE(records[2].timeout, 5000);
    QCOMPARE(records[2].arryDatablock, QByteArray("<WCN1,1,2>"));

    DalTarsel::isConnected = false;
    dal.setContainerParamForT3(5000, text);
    QVERIFY(takeQueued().isEmpty());
}

void tst_dialect_t3::operationsRegistered() {
    // clang-format off
    const QStringList ops = QStringList()
#include "group_signatures_begin.h"
#include "dialects/t3.def"
#include "dialects/vm6s.def"
#include "dialects/vantaz.def"
#include "dialects/cadex.def"
#include "group_signatures_end.h"
        ;
    // clang-format on
    verifyGroup(ops, QStringLiteral("dialects2.txt"));
}

QTEST_GUILESS_MAIN(tst_dialect_t3)
#include "tst_dialect_t3.moc"
