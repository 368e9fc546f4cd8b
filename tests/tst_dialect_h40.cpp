#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

const QByteArray kNative("\x41\x42", 2);
const QString kXml = R"(<?xml version="1.0" encoding="utf-8"?>)";
const QString kPlain = kXml + "\n<Message>\n <UserID>u7</UserID>\n</Message>\n";
const QString kAll =
    kXml + "\n<Message>\n <UserID>u7</UserID>\n<Cmd type=\"all\">\n</Cmd>\n</Message>\n";
const QString kComposedHead = kXml + "\n<Message>\n<UserID>u7</UserID>\n";

} // namespace

class tst_dialect_h40 : public QObject {
    Q_OBJECT
private slots:
    void init() {
        resetLibrary();
        Utility_Manage::setUserID("u7");
    }

    void translation_data();
    void translation();
    void h40bMessageCode();
    void senders();
};

// H40 keeps the native block beside its text; H40B sends the text's bytes and a message code.
void tst_dialect_h40::translation_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("text"); // empty: passed through unchanged
    QTest::addColumn<int>("msgCode");  // the native record arrives with 0
    const auto row = [](const char* name, int device, int timeout, const char* head,
                        const QString& text, int msgCode = 0) {
        QTest::newRow(name) << device << timeout << QByteArray::fromHex(head) << text << msgCode;
    };
    row("H40 two fields", 0x900000, 3000, "681a040900", "<save, 4, 9>");
    row("H40 DAT2 plus one", 0x900000, 3000, "6a0b040000", "<reid, 2, 5>");
    row("H40 time-out minus 3000", 0x900000, 3010, "f001010007", "<shut, 10, 7>");
    row("H40 negative", 0x900000, 2990, "f001060000", "<Torb, -10, 0>");
    row("H40 from DAT3", 0x900000, 3000, "f108020500", "<winf, 5>");
    row("H40 from DAT2", 0x900000, 3000, "f13b020500", "<winf, 2>");
    row("H40 DAT2 decides", 0x900000, 3005, "f001030000", "");
    row("H40B scene", 0x900001, 3000, "681a040100",
        kXml + "<Message>\n<UserID>u7</UserID\n><Scene id=\"10004\" screenId=\"1\" name=\"5\" "
               "group=>\n<Scol>1</Scol>\n<osd>0</osd>\n<input>0</input>\n"
               "<Img w=\"0\" h=\"0\">666666</Img>\n</Scene>\n</Message>",
        20400);
    row("H40B reid", 0x900001, 3000, "6a0b020000", "<reid, 2, 3>");
    row("H40B plain", 0x900001, 3000, "8500000000", kPlain, 20012);
    row("H40B all", 0x900001, 3000, "9003000000", kAll, 20300);
    row("H40B composed", 0x900001, 3000, "9200050200",
        kComposedHead + "<Scene id=\"20005\" screenId=\"2\">\n</Scene>\n</Message>", 20402);
    row("H40B passes", 0x900001, 3000, "f002000000", "");
}

void tst_dialect_h40::translation() {
    QFETCH(int, device);
    QFETCH(int, timeout);
    QFETCH(QByteArray, head);
    QFETCH(QString, text);
    QFETCH(int, msgCode);
    const model_Protocoldata rec = sendTo(device, head, kNative, QString(), timeout);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(int(rec.msgCode), msgCode);
    QCOMPARE(rec.arryDatablock, device == 0x900000 ? kNative : text.toLocal8Bit());
    QCOMPARE(headOf(rec).toHex(), head.toHex());
    QCOMPARE(rec.deviceType, device);
}

// 92/1 keeps the text it came with and resets the message code; 6A/3 keeps the code.
void tst_dialect_h40::h40bMessageCode() {
    const model_Protocoldata kept =
        sendTo(0x900001, QByteArray::fromHex("9201000000"), QByteArray(), "<a/>");
    QCOMPARE(kept.arryDatablock, QByteArray("<a/>"));
    model_Protocoldata in;
    in.msgCode = 55;
    in.cmdHead[2] = 0x6A, in.cmdHead[3] = 3;
    QCOMPARE(int(DalTarsel().transformBufToQStringForH40B(in).msgCode), 55);
    in.cmdHead[2] = 0x92;
    QCOMPARE(int(DalTarsel().transformBufToQStringForH40B(in).msgCode), 0);
}

// The direct senders: connect type 4, head truncated; nothing while the link is down.
void tst_dialect_h40::senders() {
    Utility_Manage::setConnectType(9);
    DalTarsel dal;
    QString text = "<cfg, 1>";
    dal.f_SendCmdForH40(700, 0x1F0, 0x3B, 1, 2, 3, text, QByteArray("ignored"));
    dal.sendHeartbeatForH40(800);
    dal.setOutputTPForH40(10, text);
    dal.sendHeartbeatForH40B(900, QByteArray("beat"));
    const auto q = takeQueued();
    QCOMPARE(describe(q),
             QStringList({"f03b010203 700 3c6366672c20313e '<cfg, 1>'",
                          "901f000000 800 3c747265613e '<trea>'",
                          "9006000000 10 3c6366672c20313e '<cfg, 1>'", "901f000000 900 62656174"})
                 .join(" | "));
    for (const model_Protocoldata& rec : q)
        QCOMPARE(int(rec.connectType), 4);
    QCOMPARE(q[0].deviceType, 0x900000);
    QCOMPARE(q[3].deviceType, 0x900001);
    QCOMPARE(int(q[3].msgCode), 20004);

    DalTarsel::isConnected = false;
    dal.sendHeartbeatForH40(100);
    dal.sendHeartbeatForH40B(100, QByteArray("beat"));
    QVERIFY(takeQueued().isEmpty());
}

QTEST_GUILESS_MAIN(tst_dialect_h40)
#include "tst_dialect_h40.moc"
