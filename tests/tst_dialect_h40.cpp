#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

const QByteArray kNativeBytes("\x41\x42", 2);

model_Protocoldata routed(int device, int timeout, int cmd, int d1, int d2, int d3, int d4,
                          QByteArray data = kNativeBytes, QString text = QString()) {
    Utility_Manage::setDeviceType(device);
    DalTarsel().f_SendCmd(timeout, cmd, d1, d2, d3, d4,
                          reinterpret_cast<unsigned char*>(data.data()), data.size(), text);
    const QVector<model_Protocoldata> queued = takeQueued();
    return queued.size() == 1 ? queued.first() : model_Protocoldata();
}

QByteArray head(int cmd, int d1, int d2 = 0, int d3 = 0, int d4 = 0) {
    return QByteArray() + char(cmd) + char(d1) + char(d2) + char(d3) + char(d4);
}

const QString kXml = R"(<?xml version="1.0" encoding="utf-8"?>)";
const QString kPlain = kXml + "\n<Message>\n <UserID>u7</UserID>\n</Message>\n";
const QString kAll =
    kXml + "\n<Message>\n <UserID>u7</UserID>\n<Cmd type=\"all\">\n</Cmd>\n</Message>\n";
const QString kComposedHead = kXml + "\n<Message>\n<UserID>u7</UserID>\n";

// A 128-byte EDID base block: the fixed header, then bytes up to the checksum that makes the
// block sum to zero.
QByteArray edidBlock() {
    QByteArray edid = QByteArray::fromHex("00ffffffffffff00");
    for (int i = edid.size(); i < 127; ++i)
        edid.append(char(i * 37));
    int sum = 0;
    for (char c : edid)
        sum += static_cast<unsigned char>(c);
    return edid.append(char(-sum));
}

// Each byte as the character of the same code, and those characters in UTF-8, the suite's
// locale encoding.
QString latin1Text(const QByteArray& bytes) {
    QString text;
    for (char c : bytes)
        text += QChar(static_cast<unsigned char>(c));
    return text;
}

QByteArray utf8Of(const QByteArray& bytes) {
    QByteArray out;
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b < 0x80)
            out += char(b);
        else
            out += QByteArray() + char(0xC0 | b >> 6) + char(0x80 | (b & 0x3F));
    }
    return out;
}

} // namespace

class tst_dialect_h40 : public QObject {
    Q_OBJECT
private slots:
    void init() {
        resetLibrary();
        Utility_Manage::setUserID("u7");
    }

    void h40Translation_data();
    void h40Translation();
    void h40Sender();
    void h40bTranslation_data();
    void h40bTranslation();
    void h40bEdidCarriesBytes();
    void h40bEdidKeepsEveryByte_data();
    void h40bEdidKeepsEveryByte();
    void h40bSender();
    void gatedByConnection();
};

void tst_dialect_h40::h40Translation_data() {
    QTest::addColumn<int>("timeout");
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("d1");
    QTest::addColumn<int>("d2");
    QTest::addColumn<int>("d3");
    QTest::addColumn<int>("d4");
    QTest::addColumn<QString>("text"); // empty: passed through unchanged

    QTest::newRow("68/26") << 3000 << 0x68 << 26 << 4 << 9 << 0 << "<save, 4, 9>";
    QTest::newRow("6A/3") << 3000 << 0x6A << 3 << 0 << 0 << 0 << "<reid, 0, 1>";
    QTest::newRow("6A/9") << 3000 << 0x6A << 9 << 0 << 0 << 0 << "<reid, 1, 1>";
    QTest::newRow("6A/11") << 3000 << 0x6A << 11 << 4 << 0 << 0 << "<reid, 2, 5>";
    QTest::newRow("85/0") << 3000 << 0x85 << 0 << 0 << 0 << 0 << "<QIPR>";
    QTest::newRow("89/0") << 3000 << 0x89 << 0 << 0 << 0 << 0 << "<QIPR>";
    QTest::newRow("8D/0") << 3000 << 0x8D << 0 << 0 << 0 << 0 << "<QIPR>";
    QTest::newRow("89/1 passes") << 3000 << 0x89 << 1 << 0 << 0 << 0 << "";
    QTest::newRow("90/1") << 3000 << 0x90 << 1 << 0 << 0 << 0 << "<QIPR>";
    QTest::newRow("90/2 passes") << 3000 << 0x90 << 2 << 0 << 0 << 0 << "";
    QTest::newRow("90/3") << 3000 << 0x90 << 3 << 2 << 0 << 0 << "<rcpm, 3>";
    QTest::newRow("90/5") << 3000 << 0x90 << 5 << 0 << 0 << 0 << "<vinf>";
    QTest::newRow("92/0") << 3000 << 0x92 << 0 << 3 << 8 << 0 << "<call, 3, 8>";
    QTest::newRow("92/1") << 3000 << 0x92 << 1 << 6 << 7 << 0 << "<winf, 6>";
    QTest::newRow("92/3") << 3000 << 0x92 << 3 << 6 << 7 << 0 << "<winf, 6>";
    QTest::newRow("F0/1/1") << 3010 << 0xF0 << 1 << 1 << 0 << 7 << "<shut, 10, 7>";
    QTest::newRow("F0/1/2") << 3000 << 0xF0 << 1 << 2 << 9 << 0 << "<rset, 9>";
    QTest::newRow("F0/1/5") << 3005 << 0xF0 << 1 << 5 << 0 << 0 << "<Torb, 5, 1>";
    QTest::newRow("F0/1/6") << 2990 << 0xF0 << 1 << 6 << 0 << 0 << "<Torb, -10, 0>";
    QTest::newRow("F0/1/3 passes") << 3005 << 0xF0 << 1 << 3 << 0 << 0 << "";
    QTest::newRow("F0/2 passes") << 3005 << 0xF0 << 2 << 1 << 0 << 0 << "";
    QTest::newRow("F1/1") << 3021 << 0xF1 << 1 << 0 << 0 << 0 << "<widf, 21>";
    QTest::newRow("F1/3") << 3000 << 0xF1 << 3 << 0 << 0 << 0 << "<vinf>";
    QTest::newRow("F1/4") << 3000 << 0xF1 << 4 << 0 << 0 << 0 << "<vonf>";
    QTest::newRow("F1/8 from DAT3") << 3000 << 0xF1 << 8 << 2 << 5 << 0 << "<winf, 5>";
    QTest::newRow("F1/59 from DAT2") << 3000 << 0xF1 << 59 << 2 << 5 << 0 << "<winf, 2>";
}

void tst_dialect_h40::h40Translation() {
    QFETCH(int, timeout);
    QFETCH(int, cmd);
    QFETCH(int, d1);
    QFETCH(int, d2);
    QFETCH(int, d3);
    QFETCH(int, d4);
    QFETCH(QString, text);

    const model_Protocoldata rec = routed(0x900000, timeout, cmd, d1, d2, d3, d4);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(rec.arryDatablock, kNativeBytes);
    QCOMPARE(int(rec.dataType), 0);
    QCOMPARE(headOf(rec), head(cmd, d1, d2, d3, d4));
    QCOMPARE(rec.deviceType, 0x900000);
}

void tst_dialect_h40::h40Sender() {
    Utility_Manage::setConnectType(9);
    DalTarsel dal;
    QString text = "<cfg, 1>";
    dal.f_SendCmdForH40(700, 0x1F0, 0x3B, 1, 2, 3, text, QByteArray("ignored"));
    dal.sendHeartbeatForH40(800);
    dal.setContainerParamForH40(10, text);
    dal.setContainerFomatForH40(10, text);
    dal.setIPForH40(10, text);
    dal.setOutputTPForH40(10, text);
    dal.setMonitorIndexForH40(10, text);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 7);
    QCOMPARE(int(q[0].connectType), 4);
    QCOMPARE(headOf(q[0]), head(0xF0, 0x3B, 1, 2, 3));
    QCOMPARE(q[0].timeout, 700);
    QCOMPARE(q[0].arryDatablock, QByteArray("<cfg, 1>"));
    QCOMPARE(q[0].deviceType, 0x900000);
    QCOMPARE(q[1].Datablock, QString("<trea>"));
    QCOMPARE(q[1].arryDatablock, QByteArray("<trea>"));
    QCOMPARE(headOf(q[1]), head(0x90, 0x1F));
    const QByteArray heads[] = {head(0xF0, 0x3B), head(0x74, 0x00), head(0x88, 0x00),
                                head(0x90, 0x06), head(0xF0, 0x05)};
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(headOf(q[2 + i]), heads[i]);
        QCOMPARE(q[2 + i].Datablock, text);
    }
}

void tst_dialect_h40::h40bTranslation_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("d1");
    QTest::addColumn<int>("d2");
    QTest::addColumn<int>("d3");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("msgCode"); // the native record arrives with 0

    QTest::newRow("68/26") << 0x68 << 26 << 4 << 1
                           << kXml + "<Message>\n<UserID>u7</UserID\n>"
                                     "<Scene id=\"10004\" screenId=\"1\" name=\"5\" group=>\n"
                                     "<Scol>1</Scol>\n<osd>0</osd>\n<input>0</input>\n"
                                     "<Img w=\"0\" h=\"0\">666666</Img>\n</Scene>\n</Message>"
                           << 20400;
    QTest::newRow("6A/3") << 0x6A << 3 << 0 << 0 << "<reid, 0, 1>" << 0;
    QTest::newRow("6A/9") << 0x6A << 9 << 0 << 0 << "<reid, 1, 1>" << 0;
    QTest::newRow("6A/11") << 0x6A << 11 << 2 << 0 << "<reid, 2, 3>" << 0;
    QTest::newRow("85/0") << 0x85 << 0 << 0 << 0 << kPlain << 20012;
    QTest::newRow("89/0") << 0x89 << 0 << 0 << 0 << kPlain << 20012;
    QTest::newRow("8D/0") << 0x8D << 0 << 0 << 0 << kPlain << 20012;
    QTest::newRow("89/1 passes") << 0x89 << 1 << 0 << 0 << "" << 0;
    QTest::newRow("90/1") << 0x90 << 1 << 0 << 0 << kPlain << 20012;
    QTest::newRow("90/5") << 0x90 << 5 << 0 << 0 << kPlain << 20012;
    QTest::newRow("90/3") << 0x90 << 3 << 0 << 0 << kAll << 20300;
    QTest::newRow("90/2 passes") << 0x90 << 2 << 0 << 0 << "" << 0;
    QTest::newRow("92/0") << 0x92 << 0 << 5 << 2
                          << kComposedHead +
                                 "<Scene id=\"20005\" screenId=\"2\">\n</Scene>\n</Message>"
                          << 20402;
    QTest::newRow("F1/3") << 0xF1 << 3 << 0 << 0 << kAll << 20300;
    QTest::newRow("F1/4") << 0xF1 << 4 << 0 << 0 << kPlain << 20012;
    QTest::newRow("F1/8") << 0xF1 << 8 << 1 << 6
                          << kComposedHead +
                                 "<Screens>\n<Screen id=\"6\" />\n</Screens>\n</Message>"
                          << 20332;
    QTest::newRow("F0/2 passes") << 0xF0 << 2 << 0 << 0 << "" << 0;
}

void tst_dialect_h40::h40bTranslation() {
    QFETCH(int, cmd);
    QFETCH(int, d1);
    QFETCH(int, d2);
    QFETCH(int, d3);
    QFETCH(QString, text);
    QFETCH(int, msgCode);

    const model_Protocoldata rec = routed(0x900001, 3000, cmd, d1, d2, d3, 0);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(int(rec.msgCode), msgCode);
    // The bytes are always the text's, an empty array for an untranslated command.
    QCOMPARE(rec.arryDatablock, text.toLocal8Bit());
    QCOMPARE(rec.deviceType, 0x900001);
}

void tst_dialect_h40::h40bEdidCarriesBytes() {
    const model_Protocoldata rec = routed(0x900001, 3000, 0xF0, 12, 3, 0, 0,
                                          QByteArray("\x01"
                                                     "AB",
                                                     3));
    const QString expected = kComposedHead +
                             "<Edid port=\"3\" cmd=\"update\">\x01"
                             "AB</Edid>\n" +
                             "</Message>\n";
    QCOMPARE(rec.Datablock, expected);
    QCOMPARE(rec.arryDatablock, expected.toLocal8Bit());
    QCOMPARE(int(rec.msgCode), 20332);

    // 92/1 keeps the text it came with and resets the code.
    const model_Protocoldata kept = routed(0x900001, 3000, 0x92, 1, 0, 0, 0, QByteArray(), "<a/>");
    QCOMPARE(kept.Datablock, QString("<a/>"));
    QCOMPARE(kept.arryDatablock, QByteArray("<a/>"));

    model_Protocoldata in;
    in.msgCode = 55;
    in.cmdHead[2] = 0x6A, in.cmdHead[3] = 3;
    QCOMPARE(int(DalTarsel().transformBufToQStringForH40B(in).msgCode), 55);
    in.cmdHead[2] = 0x92, in.cmdHead[3] = 3;
    QCOMPARE(int(DalTarsel().transformBufToQStringForH40B(in).msgCode), 0);
}

void tst_dialect_h40::h40bEdidKeepsEveryByte_data() {
    QTest::addColumn<QByteArray>("edid");
    QTest::newRow("128-byte EDID") << edidBlock();
    QTest::newRow("zeros inside and at the end") << QByteArray("A\0\0B\xff\0", 6);
    QTest::newRow("only a zero") << QByteArray(1, '\0');
}

void tst_dialect_h40::h40bEdidKeepsEveryByte() {
    QFETCH(QByteArray, edid);
    const model_Protocoldata rec = routed(0x900001, 3000, 0xF0, 12, 5, 0, 0, edid);
    const QString element = "<Edid port=\"5\" cmd=\"update\">" + latin1Text(edid) + "</Edid>\n";
    QCOMPARE(rec.Datablock, kComposedHead + element + "</Message>\n");
    QCOMPARE(rec.arryDatablock,
             utf8Of((kComposedHead + "<Edid port=\"5\" cmd=\"update\">").toLatin1() + edid +
                    "</Edid>\n</Message>\n"));
}

void tst_dialect_h40::h40bSender() {
    DalTarsel().sendHeartbeatForH40B(900, QByteArray("beat"));
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 1);
    QCOMPARE(int(q[0].connectType), 4);
    QCOMPARE(headOf(q[0]), head(0x90, 0x1F));
    QCOMPARE(int(q[0].msgCode), 20004);
    QCOMPARE(q[0].arryDatablock, QByteArray("beat"));
    QVERIFY(q[0].Datablock.isEmpty());
    QCOMPARE(q[0].timeout, 900);
    QCOMPARE(q[0].deviceType, 0x900001);
}

void tst_dialect_h40::gatedByConnection() {
    DalTarsel::isConnected = false;
    DalTarsel dal;
    dal.sendHeartbeatForH40(100);
    dal.sendHeartbeatForH40B(100, QByteArray("beat"));
    routed(0x900000, 3000, 0x6A, 3, 0, 0, 0);
    routed(0x900001, 3000, 0x6A, 3, 0, 0, 0);
    QVERIFY(takeQueued().isEmpty());
}

QTEST_GUILESS_MAIN(tst_dialect_h40)
#include "tst_dialect_h40.moc"
