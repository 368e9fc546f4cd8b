#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

#include <mutex>

// in(DAT2) = DAT2 + 21 and inP(DAT2) = DAT2 + 31: neither equals the plain DAT2 + 1.
int vm6sIndex(int code, int rows, int) { return code + 10 * (1 - rows) + 20; }

namespace {

std::mutex messageLock;
QStringList warnings;
QStringList debugLines;

void collectMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
    std::lock_guard<std::mutex> lock(messageLock);
    (type == QtDebugMsg ? debugLines : warnings) << message;
}

QByteArray hex(const char* text) { return QByteArray::fromHex(text); }

model_Protocoldata sendOne(int cmd, int dat1, int dat2, int dat3, int dat4,
                           QByteArray block = QByteArray(), QString text = QString()) {
    DalTarsel().f_SendCmd(3000, cmd, dat1, dat2, dat3, dat4,
                          block.isNull() ? nullptr : reinterpret_cast<unsigned char*>(block.data()),
                          block.size(), text);
    const auto records = takeQueued();
    if (records.size() != 1)
        qFatal("expected one queued record, got %d", int(records.size()));
    return records[0];
}

model_Protocoldata nativeRecord(int cmd, int dat1, int dat2, int dat3, int dat4,
                                QByteArray block = QByteArray()) {
    model_Protocoldata rec;
    const int head[] = {cmd, dat1, dat2, dat3, dat4};
    for (int i = 0; i < 5; ++i)
        rec.cmdHead[2 + i] = static_cast<unsigned char>(head[i]);
    rec.arryDatablock = block;
    return rec;
}

} // namespace

class tst_dialect_vm6s : public QObject {
    Q_OBJECT
private slots:
    void init() {
        resetLibrary();
        Utility_Manage::setInputIndexForT3Resolver(vm6sIndex);
        std::lock_guard<std::mutex> lock(messageLock);
        warnings.clear();
        debugLines.clear();
    }
    void initTestCase() { qInstallMessageHandler(collectMessages); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

    void vm6sFrames_data();
    void vm6sFrames();
    void vm6sTexts_data();
    void vm6sTexts();
    void vm6sUnmatchedDropsBlock();
    void finisherDirect();
    void vantaz_data();
    void vantaz();
    void vantazIgnoresHead();
    void cadex_data();
    void cadex();
    void refusedPastLimit_data();
    void refusedPastLimit();
    void routing_data();
    void routing();
};

void tst_dialect_vm6s::vm6sFrames_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("subType");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("frame");

    const QByteArray none;
    const QString noText;
    QTest::newRow("black switch on 2C0104")
        << 0x2C0104 << 0x2C0104 << hex("7806010000") << none << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 00 02 01 00 00 00 00 00 00 00 F5 16");
    QTest::newRow("black switch on 2C0103")
        << 0x2C0103 << 0x2C0103 << hex("7806010000") << none << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 01 00 02 01 00 00 00 00 00 00 00 EE 16");
    QTest::newRow("black switch on another sub-type")
        << 0x2C0103 << 0x2C0101 << hex("7806010000") << none << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 00 02 01 00 00 00 00 00 00 00 F5 16");
    QTest::newRow("board version on 2C0103 keeps 0")
        << 0x2C0103 << 0x2C0103 << hex("6a03000000") << none << noText
        << hex("68 00 00 00 01 68 0D 00 0C 00 00 00 02 00 00 00 00 00 00 00 00 EC 16");
    QTest::newRow("board version on 2C0104 keeps 0")
        << 0x2C0104 << 0x2C0104 << hex("6a03000000") << none << noText
        << hex("68 00 00 00 01 68 0D 00 0C 00 00 00 02 00 00 00 00 00 00 00 00 EC 16");
    QTest::newRow("board version on another sub-type gets 8")
        << 0x2C0104 << 0x123 << hex("6a03000000") << none << noText
        << hex("68 00 00 00 01 68 0D 00 0C 00 08 00 02 00 00 00 00 00 00 00 00 F4 16");
    QTest::newRow("scene save DAT3 + 1 wraps")
        << 0x2C0104 << 0x2C0104 << hex("681a00ff09") << none << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 00 08 00 00 00 00 00 00 00 00 FA 16");
    QTest::newRow("logo grab DAT2 + 1")
        << 0x2C0104 << 0x2C0104 << hex("9200040000") << none << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 00 09 05 00 00 00 00 00 00 00 00 16");
    QTest::newRow("custom format from the block")
        << 0x2C0104 << 0x2C0104 << hex("7416000000") << hex("07800438") << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 81 06 07 80 04 38 00 00 00 00 3C 16");
    QTest::newRow("window size from the text")
        << 0x2C0104 << 0x2C0104 << hex("f001050000") << none << QStringLiteral("0,0,1920,1080")
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 01 04 00 00 00 00 07 80 04 38 BA 16");
    QTest::newRow("window position, odd numbers")
        << 0x2C0103 << 0x2C0103 << hex("f001030000") << none << QStringLiteral("300,-1,x,65535")
        << hex("68 00 00 00 01 68 0C 00 0C 01 01 81 08 01 2C 00 FF 00 00 FF FF 9E 16");
    QTest::newRow("window position, missing numbers overwrite the defaults")
        << 0x2C0104 << 0x2C0104 << hex("f001030000") << none << QStringLiteral("1")
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 81 08 00 01 00 00 00 00 00 00 7C 16");
    QByteArray property(44, '\0');
    property.replace(38, 6, hex("aabbccdd1234"));
    QTest::newRow("lower-case 0c template, bytes 38..41")
        << 0x2C0104 << 0x2C0104 << hex("f009000000") << property << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 01 02 AA BB CC DD 00 00 00 00 03 16");
    QTest::newRow("lower-case 0c template, bytes 42..43")
        << 0x2C0104 << 0x2C0104 << hex("f009010000") << property << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 01 03 12 34 00 00 00 00 00 00 3C 16");
    QTest::newRow("short property block leaves zeros")
        << 0x2C0104 << 0x2C0104 << hex("f009000000") << hex("0102") << noText
        << hex("68 00 00 00 01 68 0C 00 0C 01 08 01 02 00 00 00 00 00 00 00 00 F5 16");
    QTest::newRow("container read shares the custom format template")
        << 0x2C0104 << 0x2C0104 << hex("f13b000000") << none << noText
        << hex("68 00 00 00 01 68 0D 00 0C 01 08 81 06 00 00 00 00 00 00 00 00 7A 16");
}

void tst_dialect_vm6s::vm6sFrames() {
    QFETCH(int, device);
    QFETCH(int, subType);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    QFETCH(QByteArray, frame);
    Utility_Manage::setDeviceType(device);
    Utility_Manage::setDeviceSubType(subType);
    const model_Protocoldata rec =
        sendOne(head[0], head[1], head[2], head[3], head[4], block, text);
    QCOMPARE(rec.arryDatablock.toHex(' '), frame.toHex(' '));
    QCOMPARE(headOf(rec), head);
    QCOMPARE(rec.deviceType, 0x2C0104);
}

void tst_dialect_vm6s::vm6sTexts_data() {
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("text");

    QTest::newRow("board MCU uses second argument 0")
        << hex("6a09020000") << QStringLiteral("<33P,GVER>");
    QTest::newRow("output board MCU") << hex("6a0b040000") << QStringLiteral("<5Q,GVER>");
    QTest::newRow("RDID looks the input up") << hex("9003020000") << QStringLiteral("<23X,RDID>");
    QTest::newRow("GETR looks the input up") << hex("9004000000") << QStringLiteral("<21X,GETR>");
    QTest::newRow("ROUT") << hex("9007000000") << QStringLiteral("<1Y,ROUT>");
    QTest::newRow("GPM3 does not look up") << hex("9009020000") << QStringLiteral("<3X,GPM3>");
    QTest::newRow("GTLP last letter") << hex("900b050000") << QStringLiteral("<GTLP,1F>");
    QTest::newRow("GTLP past the letters") << hex("900b060000") << QString();
    QTest::newRow("GTLP far past the letters") << hex("900bff0000") << QString();
}

// Text rows carry no frame, so the finisher leaves them untouched.
void tst_dialect_vm6s::vm6sTexts() {
    QFETCH(QByteArray, head);
    QFETCH(QString, text);
    Utility_Manage::setDeviceSubType(0x2C0104);
    DalTarsel dal;
    model_Protocoldata rec = nativeRecord(head[0], head[1], head[2], head[3], head[4], hex("0102"));
    rec = dal.transformBufToQStringForVM6S(rec);
    rec = dal.convertCheckSumForVMS(rec);
    QCOMPARE(rec.Datablock, text);
    QVERIFY(rec.arryDatablock.isEmpty());
    QCOMPARE(headOf(rec), head);
}

void tst_dialect_vm6s::vm6sUnmatchedDropsBlock() {
    Utility_Manage::setDeviceType(0x2C0103);
    const model_Protocoldata rec =
        sendOne(0x68, 0x10, 1, 0, 0, hex("0102"), QStringLiteral("keep"));
    QVERIFY(rec.arryDatablock.isEmpty());
    QCOMPARE(rec.Datablock, QStringLiteral("keep"));
    QCOMPARE(headOf(rec), hex("6810010000"));
}

void tst_dialect_vm6s::finisherDirect() {
    DalTarsel dal;
    model_Protocoldata rec = nativeRecord(0x68, 0x10, 0, 0, 0, hex("010203"));
    QCOMPARE(
        dal.convertCheckSumForVMS(rec).arryDatablock.toHex(' '),
        hex("01 02 03 00 00 00 00 00 00 00 08 00 00 00 00 00 00 00 00 00 00 0E 00").toHex(' '));
    rec.arryDatablock = QByteArray(30, char(0x01));
    const QByteArray cut = dal.convertCheckSumForVMS(rec).arryDatablock;
    QCOMPARE(cut.size(), 23);
    QCOMPARE(int(static_cast<unsigned char>(cut[21])), 20 + 8);
    rec.arryDatablock.clear();
    rec.Datablock = QStringLiteral("<X>");
    const model_Protocoldata same = dal.convertCheckSumForVMS(rec);
    QVERIFY(same.arryDatablock.isEmpty());
    QCOMPARE(same.Datablock, QStringLiteral("<X>"));
}

void tst_dialect_vm6s::vantaz_data() {
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("empty") << QByteArray() << hex("68 00 00 00 01 68 0C 00 04 00 00 00 01 E2 16");
    QTest::newRow("one byte") << hex("05")
                              << hex("68 00 00 00 01 68 0C 00 05 00 00 00 01 05 E8 16");
    QTest::newRow("242 bytes") << QByteArray(242, char(0x01))
                               << hex("68 00 00 00 01 68 0C 00 F6 00 00 00 01") +
                                      QByteArray(242, char(0x01)) + hex("C6 16");
}

void tst_dialect_vm6s::vantaz() {
    QFETCH(QByteArray, block);
    QFETCH(QByteArray, frame);
    Utility_Manage::setDeviceType(0x2C0103);
    const model_Protocoldata rec = sendOne(0x91, 1, 2, 3, 4, block, QStringLiteral("t"));
    QCOMPARE(rec.arryDatablock.toHex(' '), frame.toHex(' '));
    QCOMPARE(headOf(rec), hex("9101020304"));
    QCOMPARE(rec.Datablock, QStringLiteral("t"));
    QCOMPARE(rec.deviceType, 0x2C0104);
    std::lock_guard<std::mutex> lock(messageLock);
    QCOMPARE(debugLines.filter(QStringLiteral("------VantaZ-----tmpData.arryDatablock=")).size(),
             1);
    QVERIFY(debugLines.join('\n').contains(QString::fromLatin1(frame.toHex())));
}

void tst_dialect_vm6s::vantazIgnoresHead() {
    DalTarsel dal;
    model_Protocoldata a = nativeRecord(0x90, 1, 2, 3, 4, hex("aa"));
    model_Protocoldata b = nativeRecord(0x91, 9, 8, 7, 6, hex("aa"));
    QCOMPARE(dal.transformBufToQStringForVantaZ(a).arryDatablock,
             dal.transformBufToQStringForVantaZ(b).arryDatablock);
}

void tst_dialect_vm6s::cadex_data() {
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QByteArray>("tunnelHead");
    QTest::addColumn<QByteArray>("payload");

    QTest::newRow("no block") << hex("9003020000") << QByteArray() << hex("f15d000600")
                              << hex("900302000095");
    QTest::newRow("one byte") << hex("9000000000") << hex("01") << hex("f15d000700")
                              << hex("90000000000191");
    QTest::newRow("two bytes, DAT4 to DAT2")
        << hex("9101020307") << hex("aa55") << hex("f15d070800") << hex("91010203 07aa559d");
    QByteArray largest(250, char(0x02));
    QTest::newRow("250 bytes") << hex("9000000000") << largest << hex("f15d000001")
                               << hex("9000000000") + largest + hex("84");
}

void tst_dialect_vm6s::cadex() {
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    QFETCH(QByteArray, tunnelHead);
    QFETCH(QByteArray, payload);
    Utility_Manage::setDeviceType(0x260000);
    const model_Protocoldata rec =
        sendOne(head[0], head[1], head[2], head[3], head[4], block, QStringLiteral("t"));
    QCOMPARE(headOf(rec).toHex(' '), tunnelHead.toHex(' '));
    QCOMPARE(rec.arryDatablock.toHex(' '), payload.toHex(' '));
    QCOMPARE(rec.Datablock, QStringLiteral("t"));
    QCOMPARE(rec.deviceType, 0x260000);
    std::lock_guard<std::mutex> lock(messageLock);
    QCOMPARE(debugLines.filter(QStringLiteral("------VantaZ-----tmpData.arryDatablock=")).size(),
             1);
}

void tst_dialect_vm6s::refusedPastLimit_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("length");

    QTest::newRow("VantaZ 243") << 0x2C0104 << 0x90 << 243;
    QTest::newRow("VantaZ 256") << 0x2C0103 << 0x91 << 256;
    QTest::newRow("Cadex 251") << 0x230102 << 0x91 << 251;
    QTest::newRow("Cadex 1000") << 0x2C0107 << 0x90 << 1000;
}

void tst_dialect_vm6s::refusedPastLimit() {
    QFETCH(int, device);
    QFETCH(int, cmd);
    QFETCH(int, length);
    Utility_Manage::setDeviceType(device);
    QByteArray block(length, char(0x01));
    DalTarsel().f_SendCmd(3000, cmd, 1, 0, 0, 0, reinterpret_cast<unsigned char*>(block.data()),
                          block.size(), QString());
    QVERIFY(takeQueued().isEmpty());
    std::lock_guard<std::mutex> lock(messageLock);
    QCOMPARE(warnings.size(), 1);
    QVERIFY(debugLines.isEmpty());
}

void tst_dialect_vm6s::routing_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<int>("frameSize");
    QTest::addColumn<int>("tag");

    QTest::newRow("2C0103 VM6S") << 0x2C0103 << 0x78 << hex("7806010000") << 23 << 0x2C0104;
    QTest::newRow("2C0104 VM6S") << 0x2C0104 << 0x78 << hex("7806010000") << 23 << 0x2C0104;
    QTest::newRow("2C0103 VantaZ") << 0x2C0103 << 0x90 << hex("9006010000") << 16 << 0x2C0104;
    QTest::newRow("2C0104 VantaZ") << 0x2C0104 << 0x91 << hex("9106010000") << 16 << 0x2C0104;
    QTest::newRow("2C0104 VantaZ from 0x190")
        << 0x2C0104 << 0x190 << hex("9006010000") << 16 << 0x2C0104;
    const int cadex[] = {0x230102, 0x230106, 0x230107, 0x250000, 0x260000,
                         0x260002, 0x2C0100, 0x2C0106, 0x2C0107};
    for (int code : cadex) {
        QTest::addRow("%x tunnel", code) << code << 0x90 << hex("f15d000700") << 7 << code;
        QTest::addRow("%x native", code) << code << 0x78 << hex("7806010000") << 1 << code;
    }
}

void tst_dialect_vm6s::routing() {
    QFETCH(int, device);
    QFETCH(int, cmd);
    QFETCH(QByteArray, head);
    QFETCH(int, frameSize);
    QFETCH(int, tag);
    Utility_Manage::setDeviceType(device);
    const model_Protocoldata rec = sendOne(cmd, 0x06, 1, 0, 0, hex("aa"));
    QCOMPARE(headOf(rec).toHex(' '), head.toHex(' '));
    QCOMPARE(rec.arryDatablock.size(), frameSize);
    QCOMPARE(rec.deviceType, tag);
}

QTEST_GUILESS_MAIN(tst_dialect_vm6s)
#include "tst_dialect_vm6s.moc"
