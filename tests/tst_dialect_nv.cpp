#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

const QByteArray kNativeBytes("\x01\x02", 2);

model_Protocoldata routed(int device, int cmd, int d1, int d2, int d3, int d4,
                          QByteArray data = kNativeBytes, QString text = QString()) {
    Utility_Manage::setDeviceType(device);
    DalTarsel().f_SendCmd(3000, cmd, d1, d2, d3, d4, reinterpret_cast<unsigned char*>(data.data()),
                          data.size(), text);
    const QVector<model_Protocoldata> queued = takeQueued();
    return queued.size() == 1 ? queued.first() : model_Protocoldata();
}

QByteArray head(int cmd, int d1, int d2 = 0, int d3 = 0, int d4 = 0) {
    return QByteArray() + char(cmd) + char(d1) + char(d2) + char(d3) + char(d4);
}

QString systemQuery(const char* key) {
    return QString(R"({"Function":"getSystemMsg","Type":"System","Value":{"%1":"echo"}})").arg(key);
}

} // namespace

class tst_dialect_nv : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void translation_data();
    void translation();
    void saveSceneCutsAtNul();
    void sender();
    void queries_data();
    void queries();
    void gatedByConnection();
};

void tst_dialect_nv::translation_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("d1");
    QTest::addColumn<int>("d2");
    QTest::addColumn<int>("d3");
    QTest::addColumn<int>("d4");
    QTest::addColumn<int>("kind"); // the native record arrives with 0
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("keepsBytes");

    QTest::newRow("68/6") << 0x68 << 6 << 0 << 0 << 0 << 4 << R"({"Command":"RemoveAllSettings"})"
                          << false;
    QTest::newRow("68/42") << 0x68 << 42 << 0 << 0 << 0 << 4
                           << R"({"Command":"SetFanRpm","FrameId":1,"Rpm":100})" << false;
    QTest::newRow("68/43") << 0x68 << 43 << 0 << 0 << 0 << 2 << "Command=GetFanRpm&FrameId=1"
                           << false;
    QTest::newRow("6A/3") << 0x6A << 3 << 0 << 0 << 0 << 2 << "Command=GetVersion" << false;
    QTest::newRow("6A/9") << 0x6A << 9 << 0 << 0 << 0 << 2 << "Command=GetCardVersion" << false;
    QTest::newRow("6A/11") << 0x6A << 11 << 0 << 0 << 0 << 2 << "Command=GetCardVersion" << false;
    QTest::newRow("74/1") << 0x74 << 1 << 0 << 0 << 0 << 2 << "Command=GetDisplayModeList" << false;
    QTest::newRow("85/0") << 0x85 << 0 << 0 << 0 << 0 << 2 << "Command=GetIpAddr" << false;
    QTest::newRow("8D/0") << 0x8D << 0 << 0 << 0 << 0 << 2 << "Command=GetIpAddr" << false;
    QTest::newRow("89/0") << 0x89 << 0 << 0 << 0 << 0 << 0 << systemQuery("get_net_config")
                          << false;
    QTest::newRow("90/1") << 0x90 << 1 << 0 << 0 << 0 << 0 << systemQuery("get_venc_config")
                          << false;
    QTest::newRow("90/5") << 0x90 << 5 << 0 << 0 << 0 << 0 << "reply:" << false;
    QTest::newRow("90/37") << 0x90 << 37 << 0 << 0 << 0 << 0 << "reply:" << false;
    QTest::newRow("90/7") << 0x90 << 7 << 0 << 0 << 0 << 0 << "replyoled" << false;
    QTest::newRow("90/39") << 0x90 << 39 << 0 << 0 << 0 << 0 << "replyoled" << false;
    QTest::newRow("90/9") << 0x90 << 9 << 0 << 0 << 0 << 0 << "getKvmInfo" << false;
    QTest::newRow("90/13") << 0x90 << 13 << 0 << 0 << 0 << 2 << "Command=GetAllIpEnc" << false;
    QTest::newRow("90/21") << 0x90 << 21 << 0 << 0 << 0 << 2 << "Command=GetCardVersion" << false;
    QTest::newRow("90/23") << 0x90 << 23 << 3 << 0 << 0 << 2
                           << "Command=GetCurrentOSD&ScreenGroup=3" << false;
    QTest::newRow("90/33") << 0x90 << 33 << 0 << 0 << 0 << 0 << systemQuery("get_software_config")
                           << false;
    QTest::newRow("92/1") << 0x92 << 1 << 0 << 0 << 0 << 2 << "Command=GetAllModal&ScreenGroup=0"
                          << false;
    QTest::newRow("92/3") << 0x92 << 3 << 0 << 0 << 0 << 2 << "Command=GetGroupsSettings" << false;
    QTest::newRow("92/5") << 0x92 << 5 << 4 << 0 << 0 << 2
                          << "Command=GetAllModalGroup&ScreenGroup=4" << false;
    const char* camera[] = {"turn",  "turnReset",  "turnStop",  "zoom",      "zoomReset",
                            "focus", "focusReset", "focusAuto", "brightness"};
    for (int i = 0; i < 9; ++i)
        QTest::addRow("92/%d", 16 + 2 * i)
            << 0x92 << 16 + 2 * i << 0 << 0 << 0 << 0 << camera[i] << true;
    QTest::newRow("F1/3") << 0xF1 << 3 << 0 << 0 << 0 << 2 << "Command=GetActiveVideo" << false;
    QTest::newRow("F1/4") << 0xF1 << 4 << 0 << 0 << 0 << 2 << "Command=GetVOList" << false;
    QTest::newRow("F1/8") << 0xF1 << 8 << 4 << 0 << 0 << 2
                          << "Command=GetOneModal&ScreenGroup=1&ModalName=5" << false;
    QTest::newRow("F1/9") << 0xF1 << 9 << 0 << 0x10 << 0x01 << 2 << "Command=GetViParam&VideoNo=272"
                          << false;
    QTest::newRow("F1/10") << 0xF1 << 10 << 0 << 0 << 0 << 2 << "Command=GetViSettings" << false;
    QTest::newRow("F1/33") << 0xF1 << 33 << 0 << 0 << 0 << 2 << "Command=GetAllDecoder" << false;
    QTest::newRow("F1/59") << 0xF1 << 59 << 8 << 0 << 0 << 2
                           << "Command=GetScrGroupSettings&GroupId=9" << false;
    QTest::newRow("89/1 passes") << 0x89 << 1 << 0 << 0 << 0 << 0 << "" << false;
    QTest::newRow("90/41 passes") << 0x90 << 41 << 0 << 0 << 0 << 0 << "" << false;
    QTest::newRow("92/21 passes") << 0x92 << 21 << 0 << 0 << 0 << 0 << "" << false;
}

void tst_dialect_nv::translation() {
    QFETCH(int, cmd);
    QFETCH(int, d1);
    QFETCH(int, d2);
    QFETCH(int, d3);
    QFETCH(int, d4);
    QFETCH(int, kind);
    QFETCH(QString, text);
    QFETCH(bool, keepsBytes);

    const model_Protocoldata rec = routed(0x2D0000, cmd, d1, d2, d3, d4);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(int(rec.dataType), kind);
    QCOMPARE(rec.arryDatablock, keepsBytes ? kNativeBytes : text.toLocal8Bit());
    QCOMPARE(headOf(rec), head(cmd, d1, d2, d3, d4));
    QCOMPARE(rec.deviceType, 0x2D0000);
}

void tst_dialect_nv::saveSceneCutsAtNul() {
    const QString name = QString("Hall") + QChar(0) + "xyz";
    const model_Protocoldata rec = routed(0x2D0000, 0x68, 26, 2, 0, 0, QByteArray(), name);
    QCOMPARE(rec.Datablock, QString("{SaveScene;600001;2,Hall}"));
    QCOMPARE(rec.arryDatablock, QByteArray("{SaveScene;600001;2,Hall}"));
    QCOMPARE(int(rec.dataType), 0);

    const model_Protocoldata plain = routed(0x2D0000, 0x68, 26, 7, 3, 0, QByteArray(), "Lobby");
    QCOMPARE(plain.Datablock, QString("{SaveScene;600004;7,Lobby}"));
}

void tst_dialect_nv::sender() {
    Utility_Manage::setConnectType(5);
    DalTarsel dal;
    dal.f_SendCmdFoNV(600, 0x192, 1, 2, 3, 4, "abc", QByteArray());
    dal.f_SendCmdFoNV(600, 0x92, 1, 2, 3, 4, "abc", QByteArray("\x09", 1));
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 2);
    QCOMPARE(int(q[0].connectType), 5);
    QCOMPARE(headOf(q[0]), head(0x92, 1, 2, 3, 4));
    QCOMPARE(q[0].timeout, 600);
    QCOMPARE(q[0].Datablock, QString("abc"));
    QCOMPARE(q[0].arryDatablock, QByteArray("abc"));
    QCOMPARE(q[0].deviceType, 0x2D0000);
    QCOMPARE(q[1].arryDatablock, QByteArray("\x09", 1));
}

void tst_dialect_nv::queries_data() {
    QTest::addColumn<int>("op");
    QTest::addColumn<int>("flag");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("text");

    QTest::newRow("getNvInfo 0") << 0 << 0 << head(0x90, 0x01, 6) << systemQuery("get_venc_config");
    QTest::newRow("getNvInfo 1") << 0 << 1 << head(0x90, 0x21, 6)
                                 << systemQuery("get_software_config");
    QTest::newRow("getComInfoForNV 0") << 1 << 0 << head(0x90, 0x05) << "reply:";
    QTest::newRow("getComInfoForNV 1") << 1 << 1 << head(0x90, 0x25) << "reply:";
    QTest::newRow("getLCDInfoForNV 0") << 2 << 0 << head(0x90, 0x07) << "replyoled";
    QTest::newRow("getLCDInfoForNV 2") << 2 << 2 << head(0x90, 0x27) << "replyoled";
    QTest::newRow("getKVMInfoForNV 0") << 3 << 0 << head(0x90, 0x09) << "getKvmInfo";
    QTest::newRow("getKVMInfoForNV 1") << 3 << 1 << head(0x90, 0x29) << "";
}

void tst_dialect_nv::queries() {
    QFETCH(int, op);
    QFETCH(int, flag);
    QFETCH(QByteArray, head);
    QFETCH(QString, text);

    Utility_Manage::setDeviceType(0x2D0000);
    DalTarsel dal;
    switch (op) {
    case 0:
        dal.getNvInfo(400, 6, flag);
        break;
    case 1:
        dal.getComInfoForNV(400, flag);
        break;
    case 2:
        dal.getLCDInfoForNV(400, flag);
        break;
    case 3:
        dal.getKVMInfoForNV(400, flag);
        break;
    }
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 1);
    QCOMPARE(headOf(q[0]), head);
    QCOMPARE(q[0].timeout, 400);
    QCOMPARE(q[0].Datablock, text);
    QCOMPARE(q[0].arryDatablock, text.toLocal8Bit());
}

void tst_dialect_nv::gatedByConnection() {
    DalTarsel::isConnected = false;
    DalTarsel().f_SendCmdFoNV(600, 0x92, 1, 2, 3, 4, "abc", QByteArray());
    routed(0x2D0000, 0x6A, 3, 0, 0, 0);
    QVERIFY(takeQueued().isEmpty());
}

QTEST_GUILESS_MAIN(tst_dialect_nv)
#include "tst_dialect_nv.moc"
