#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace {

const QByteArray kNativeBytes("\x01\x02", 2);

// One native command through the generic send to a T9; returns what was queued.
model_Protocoldata throughT9(int cmd, int d1, int d2, int d3, int d4) {
    Utility_Manage::setDeviceType(0x250300);
    QByteArray data = kNativeBytes;
    DalTarsel().f_SendCmd(3000, cmd, d1, d2, d3, d4, reinterpret_cast<unsigned char*>(data.data()),
                          data.size(), QString());
    const QVector<model_Protocoldata> queued = takeQueued();
    return queued.size() == 1 ? queued.first() : model_Protocoldata();
}

QJsonObject jsonOf(const model_Protocoldata& rec) {
    return QJsonDocument::fromJson(rec.Datablock.toUtf8()).object();
}

QByteArray head(int cmd, int d1, int d2 = 0, int d3 = 0, int d4 = 0) {
    return QByteArray() + char(cmd) + char(d1) + char(d2) + char(d3) + char(d4);
}

} // namespace

class tst_dialect_t9 : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void translation_data();
    void translation();
    void traceShowsTranslatedRecord();
    void senderStampsFields();
    void directJson_data();
    void directJson();
    void directTexts();
    void osdTextMapsMembers();
    void ipcMembersDefaultWhenMissing();
    void gatedByConnection();
};

void tst_dialect_t9::translation_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("d1");
    QTest::addColumn<int>("d2");
    QTest::addColumn<int>("d3");
    QTest::addColumn<int>("d4");
    QTest::addColumn<int>("kind"); // 0: passed through unchanged
    QTest::addColumn<QString>("text");

    QTest::newRow("68/6") << 0x68 << 6 << 0 << 0 << 0 << 4 << R"({"Command":"RemoveAllSettings"})";
    QTest::newRow("68/25 group from DAT4")
        << 0x68 << 25 << 7 << 8 << 3 << 2 << "Command=GetCurrModal&ScreenGroup=3";
    QTest::newRow("68/42 inverted")
        << 0x68 << 42 << 0 << 30 << 0 << 4 << R"({"Command":"SetFanRpm","FrameId":1,"Rpm":70})";
    QTest::newRow("68/42 unclamped")
        << 0x68 << 42 << 0 << 130 << 0 << 4 << R"({"Command":"SetFanRpm","FrameId":1,"Rpm":-30})";
    QTest::newRow("68/43") << 0x68 << 43 << 0 << 0 << 0 << 2 << "Command=GetFanRpm&FrameId=1";
    QTest::newRow("68/26 passes") << 0x68 << 26 << 1 << 2 << 0 << 0 << "";
    QTest::newRow("6A/3") << 0x6A << 3 << 0 << 0 << 0 << 2 << "Command=GetVersion";
    QTest::newRow("6A/9") << 0x6A << 9 << 0 << 0 << 0 << 2 << "Command=GetCardVersion";
    QTest::newRow("6A/11") << 0x6A << 11 << 0 << 0 << 0 << 2 << "Command=GetCardVersion";
    QTest::newRow("6A/10 passes") << 0x6A << 10 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("74/1") << 0x74 << 1 << 0 << 0 << 0 << 2 << "Command=GetDisplayModeList";
    QTest::newRow("74/0 passes") << 0x74 << 0 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("85/0") << 0x85 << 0 << 0 << 0 << 0 << 2 << "Command=GetIpAddr";
    QTest::newRow("89/0") << 0x89 << 0 << 0 << 0 << 0 << 2 << "Command=GetIpAddr";
    QTest::newRow("8D/0") << 0x8D << 0 << 0 << 0 << 0 << 2 << "Command=GetIpAddr";
    QTest::newRow("89/1 passes") << 0x89 << 1 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("90/1") << 0x90 << 1 << 0 << 0 << 0 << 2 << "Command=GetMacAddress";
    QTest::newRow("90/2 passes") << 0x90 << 2 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("90/3") << 0x90 << 3 << 0 << 0 << 0 << 2 << "Command=GetViCustomWH";
    QTest::newRow("90/13") << 0x90 << 13 << 0 << 0 << 0 << 2 << "Command=GetAllIpEnc";
    QTest::newRow("90/21") << 0x90 << 21 << 0 << 0 << 0 << 2 << "Command=GetCardVersion";
    QTest::newRow("90/23 unshifted")
        << 0x90 << 23 << 4 << 9 << 8 << 2 << "Command=GetCurrentOSD&ScreenGroup=4";
    QTest::newRow("90/33") << 0x90 << 33 << 0 << 0 << 0 << 2 << "Command=GetLanguage";
    QTest::newRow("92/1 group 0") << 0x92 << 1 << 0 << 5 << 6 << 2
                                  << "Command=GetAllModal&ScreenGroup=0";
    QTest::newRow("92/3") << 0x92 << 3 << 0 << 0 << 0 << 2 << "Command=GetGroupsSettings";
    QTest::newRow("92/5") << 0x92 << 5 << 6 << 0 << 0 << 2
                          << "Command=GetAllModalGroup&ScreenGroup=6";
    QTest::newRow("92/7") << 0x92 << 7 << 0 << 0 << 0 << 2 << "Command=GetAllIpEnc";
    QTest::newRow("92/15") << 0x92 << 15 << 0 << 0 << 0 << 2 << "Command=GetAllIpCam";
    QTest::newRow("92/21") << 0x92 << 21 << 2 << 0 << 0 << 2 << "Command=GetScrControl&ScrGroup=2";
    QTest::newRow("92/2 passes") << 0x92 << 2 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("F1/3") << 0xF1 << 3 << 0 << 0 << 0 << 2 << "Command=GetActiveVideo";
    QTest::newRow("F1/4") << 0xF1 << 4 << 0 << 0 << 0 << 2 << "Command=GetVOList";
    QTest::newRow("F1/8 crossed") << 0xF1 << 8 << 4 << 0 << 9 << 2
                                  << "Command=GetOneModal&ScreenGroup=1&ModalName=5";
    // The utility combines its first argument as the low byte: 1 + 2 * 256.
    QTest::newRow("F1/9") << 0xF1 << 9 << 7 << 1 << 2 << 2 << "Command=GetViParam&VideoNo=513";
    QTest::newRow("F1/9 top") << 0xF1 << 9 << 0 << 0xFF << 0xFF << 2
                              << "Command=GetViParam&VideoNo=65535";
    QTest::newRow("F1/10") << 0xF1 << 10 << 0 << 0 << 0 << 2 << "Command=GetViSettings";
    QTest::newRow("F1/33") << 0xF1 << 33 << 0 << 0 << 0 << 2 << "Command=GetAllDecoder";
    QTest::newRow("F1/59") << 0xF1 << 59 << 0 << 0 << 0 << 2
                           << "Command=GetScrGroupSettings&GroupId=1";
    QTest::newRow("F1/2 passes") << 0xF1 << 2 << 0 << 0 << 0 << 0 << "";
    QTest::newRow("F0/2 passes") << 0xF0 << 2 << 0 << 0 << 0 << 0 << "";
}

void tst_dialect_t9::translation() {
    QFETCH(int, cmd);
    QFETCH(int, d1);
    QFETCH(int, d2);
    QFETCH(int, d3);
    QFETCH(int, d4);
    QFETCH(int, kind);
    QFETCH(QString, text);

    const model_Protocoldata rec = throughT9(cmd, d1, d2, d3, d4);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(int(rec.dataType), kind);
    QCOMPARE(rec.arryDatablock, kNativeBytes);
    QCOMPARE(headOf(rec), head(cmd, d1, d2, d3, d4));
    QCOMPARE(rec.deviceType, 0x250300);
    QCOMPARE(rec.timeout, 3000);
}

void tst_dialect_t9::traceShowsTranslatedRecord() {
    TraceCapture capture;
    throughT9(0x6A, 3, 0, 0, 0);
    QCOMPARE(capture.lines().size(), 1);
    QVERIFY(capture.lines().first().endsWith("---Datablock= \"Command=GetVersion\""));
}

void tst_dialect_t9::senderStampsFields() {
    Utility_Manage::setConnectType(9);
    DalTarsel().f_SendCmdForT9(1234, 0x190, 0x101, 2, 3, 4, "x", 7, "ab");
    const QVector<model_Protocoldata> queued = takeQueued();
    QCOMPARE(queued.size(), 1);
    const model_Protocoldata& rec = queued.first();
    QCOMPARE(int(rec.connectType), 3);
    QCOMPARE(headOf(rec), head(0x90, 0x01, 2, 3, 4));
    QCOMPARE(rec.timeout, 1234);
    QCOMPARE(rec.Datablock, QString("x"));
    QCOMPARE(int(rec.dataType), 7);
    QCOMPARE(rec.arryDatablock, QByteArray("ab"));
    QCOMPARE(rec.deviceType, 0x250300);
}

void tst_dialect_t9::directJson_data() {
    QTest::addColumn<int>("op");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QJsonObject>("json");

    // The input number 0x01020304 stands for frame 1, card 2, sub-card 3, port 4.
    const QJsonObject element{{"Frame", 1}, {"Card", 2}, {"Sub", 3}, {"Port", 4}};
    auto with = [&](QJsonObject obj) {
        for (auto it = element.begin(); it != element.end(); ++it)
            obj.insert(it.key(), it.value());
        return obj;
    };
    QTest::newRow("setEDIDForT9") << 0 << head(0x90, 0x04)
                                  << QJsonObject{{"Command", "SetViCustomWH"},
                                                 {"Type", 1},
                                                 {"Width", 1920},
                                                 {"Height", 1080}};
    QTest::newRow("setViPhaseForT9")
        << 1 << head(0x90, 0x0A) << with({{"Command", "SetViPhase"}, {"Phase", 12}});
    QTest::newRow("setVgaParamForT9")
        << 2 << head(0x90, 0x0C)
        << with({{"Command", "SetVgaParam"}, {"Vert", 5}, {"Horz", 6}, {"Phase", 7}});
    QTest::newRow("setVideoFormat auto")
        << 3 << head(0x92, 0x1A) << with({{"Command", "SetViMode"}, {"Manual", 0}, {"Mode", 44}});
    QTest::newRow("setVideoFormat manual")
        << 4 << head(0x92, 0x1A) << with({{"Command", "SetViMode"}, {"Manual", 1}, {"Mode", 9}});
    QTest::newRow("setBgOnStatusForT9 off")
        << 5 << head(0x92, 0x16)
        << QJsonObject{{"Command", "ScreenCtrl"}, {"ScreenGroup", 2}, {"Control", "BgOff"}};
    QTest::newRow("setBgOnStatusForT9 on")
        << 6 << head(0x92, 0x16)
        << QJsonObject{{"Command", "ScreenCtrl"}, {"ScreenGroup", 2}, {"Control", "BgOn"}};
    QTest::newRow("clearGroupOSDForT9")
        << 7 << head(0x90, 0x1A) << QJsonObject{{"Command", "ClearOsdText"}, {"ScrGroup", 3}};
    QTest::newRow("clearPortOSDForT9")
        << 8 << head(0x90, 0x1C)
        << QJsonObject{{"Command", "CloseOsdText"}, {"ScrGroup", 3}, {"Name", "osd1"}};
    QTest::newRow("deleteIPCInfo")
        << 9 << head(0x92, 0x0C)
        << QJsonObject{{"Command", "RemoveIpCam"}, {"CamList", QJsonArray{"cam1"}}};
    QTest::newRow("loadBGFile") << 10 << head(0x92, 0x12)
                                << QJsonObject{{"Command", "LoadBGImage"}, {"ScreenGroup", 4}};
    QTest::newRow("refreshModal") << 11 << head(0x92, 0x18)
                                  << QJsonObject{{"Command", "RefreshModal"},
                                                 {"IsCloudScreen", 0},
                                                 {"ScreenGroup", 4}};
    // getCardNum_T9 splits card 0x0102 into frame 1, card 2 and takes the port as sub-card.
    QTest::newRow("setPortTypeForT9")
        << 12 << head(0x90, 0x16)
        << QJsonObject{{"Command", "SetCardType"},
                       {"CardList", QJsonArray{QJsonObject{
                                        {"Frame", 1}, {"Card", 2}, {"Sub", 5}, {"IsHDMI", 1}}}}};
    QTest::newRow("setViClipForT9")
        << 13 << head(0x90, 0x06)
        << with({{"Command", "SetViClip"}, {"Left", 1}, {"Top", 2}, {"Right", 3}, {"Bottom", 4}});
    QTest::newRow("setViPropertyForT9") << 14 << head(0x90, 0x08)
                                        << with({{"Command", "SetViProperty"},
                                                 {"Bright", 5},
                                                 {"Contrast", 6},
                                                 {"Hue", 7},
                                                 {"Sat", 8}});
}

void tst_dialect_t9::directJson() {
    QFETCH(int, op);
    QFETCH(QByteArray, head);
    QFETCH(QJsonObject, json);

    DalTarsel dal;
    const int id = 0x01020304;
    QString name = op == 9 ? "cam1" : "osd1";
    ModelTarsel m;
    m.viClipLeft = 1, m.viClipTop = 2, m.viClipRight = 3, m.viClipBottom = 4;
    m.viBright = 5, m.viContrast = 6, m.viHue = 7, m.viSat = 8;
    switch (op) {
    case 0:
        dal.setEDIDForT9(500, 1, 1920, 1080);
        break;
    case 1:
        dal.setViPhaseForT9(500, id, 12);
        break;
    case 2:
        dal.setVgaParamForT9(500, id, 5, 6, 7);
        break;
    case 3:
        dal.setVideoFormat(500, id, 0, 9);
        break;
    case 4:
        dal.setVideoFormat(500, id, 1, 9);
        break;
    case 5:
        dal.setBgOnStatusForT9(500, 2, false);
        break;
    case 6:
        dal.setBgOnStatusForT9(500, 2, true);
        break;
    case 7:
        dal.clearGroupOSDForT9(500, 3);
        break;
    case 8:
        dal.clearPortOSDForT9(500, 3, name);
        break;
    case 9:
        dal.deleteIPCInfo(500, name);
        break;
    case 10:
        dal.loadBGFile(500, 4);
        break;
    case 11:
        dal.refreshModal(500, 4);
        break;
    case 12:
        dal.setPortTypeForT9(500, 0x0102, 5, 1);
        break;
    case 13:
        dal.setViClipForT9(500, id, m);
        break;
    case 14:
        dal.setViPropertyForT9(500, id, m);
        break;
    }
    const QVector<model_Protocoldata> queued = takeQueued();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(headOf(queued.first()), head);
    QCOMPARE(int(queued.first().dataType), 4);
    QCOMPARE(queued.first().timeout, 500);
    QCOMPARE(jsonOf(queued.first()), json);
}

void tst_dialect_t9::directTexts() {
    DalTarsel dal;
    QString name = "bg.png";
    QByteArray file("\x00\xFF\x10", 3);
    QString text = R"({"Command":"X"})";
    dal.sendHeartbeat(100);
    dal.getIPCInfo(100, name);
    dal.downloadBGFile(100, 1, 2, 3, name);
    dal.uploadOSDFileForT9(100, name, file);
    dal.uploadBGFileForT9(100, name, file);
    dal.setIPForT9(100, text);
    dal.setAddrForT9(100, text);
    dal.newModalGroup(100, text);
    dal.removeModalGroup(100, text);
    dal.setContainerParamForT9(100, text);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 10);
    QCOMPARE(q[0].Datablock, QString("Command=HeartBeat"));
    QCOMPARE(headOf(q[0]), head(0x90, 0x1F));
    QCOMPARE(int(q[0].dataType), 2);
    QCOMPARE(q[1].Datablock, QString("Command=GetOneIpCam&Name=bg.png"));
    QCOMPARE(headOf(q[1]), head(0x92, 0x0D));
    QCOMPARE(headOf(q[2]), head(0x92, 0x14, 1, 2, 3));
    QCOMPARE(int(q[2].dataType), 6);
    QCOMPARE(q[2].Datablock, name);
    QVERIFY(q[2].arryDatablock.isEmpty());
    QCOMPARE(headOf(q[3]), head(0x90, 0x1E));
    QCOMPARE(headOf(q[4]), head(0x92, 0x10));
    for (int i : {3, 4}) {
        QCOMPARE(int(q[i].dataType), 7);
        QCOMPARE(q[i].Datablock, name);
        QCOMPARE(q[i].arryDatablock, file);
    }
    const QByteArray passHeads[] = {head(0x88, 0), head(0x90, 0x0E), head(0x92, 0x04),
                                    head(0x92, 0x06), head(0xF0, 0x3B)};
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(headOf(q[5 + i]), passHeads[i]);
        QCOMPARE(q[5 + i].Datablock, text);
        QCOMPARE(int(q[5 + i].dataType), 4);
    }
}

void tst_dialect_t9::osdTextMapsMembers() {
    QJsonObject osd{{"posX", 10},      {"posY", 20},       {"posH", 40},      {"osdText", "Hi"},
                    {"topPostion", 3}, {"fontColor", 255}, {"groupIndex", 2}, {"fontName", "Sans"}};
    DalTarsel().setOsdTextForT9(100, osd);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 1);
    QCOMPARE(headOf(q[0]), head(0x90, 0x18));
    const QJsonObject expected{{"Command", "SetOsdText"},
                               {"ScrRange", QJsonArray{10, 20, 0, 40}},
                               {"ScrGroup", 2},
                               {"Name", ""},
                               {"Alpha", 0},
                               {"BgColor", 0},
                               {"FontSize", 0},
                               {"FontName", "Sans"},
                               {"TextColor", 255},
                               {"ScrollDir", 0},
                               {"ScrollSpeed", 0},
                               {"Text", "Hi"},
                               {"TopPostion", 3},
                               {"SendBits", 0},
                               {"TextLine", 0},
                               {"RowHeight", 0}};
    QCOMPARE(jsonOf(q[0]), expected);
}

void tst_dialect_t9::ipcMembersDefaultWhenMissing() {
    QJsonObject query{{"authMode", 1}, {"userName", "admin"}};
    QJsonObject cam{{"ipcName", "door"}, {"transMode", 2}, {"auxUrl", "rtsp://a"}};
    DalTarsel dal;
    dal.findIPC(100, query);
    dal.updateIPCInfo(100, cam);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 2);
    QCOMPARE(headOf(q[0]), head(0x92, 0x08));
    QCOMPARE(
        jsonOf(q[0]),
        (QJsonObject{
            {"Command", "FindIpCam"}, {"IsNeedUser", 1}, {"UserName", "admin"}, {"Password", ""}}));
    QCOMPARE(headOf(q[1]), head(0x92, 0x0A));
    QCOMPARE(jsonOf(q[1]), (QJsonObject{{"Command", "AddOneIpCam"},
                                        {"Group", 0},
                                        {"Name", "door"},
                                        {"AuthMode", 0},
                                        {"AuthName", ""},
                                        {"AuthPwd", ""},
                                        {"TransferMode", 2},
                                        {"Url", ""},
                                        {"Width", 0},
                                        {"Height", 0},
                                        {"AuxUrl", "rtsp://a"},
                                        {"AuxWidth", 0},
                                        {"AuxHeight", 0}}));
}

void tst_dialect_t9::gatedByConnection() {
    DalTarsel::isConnected = false;
    ModelTarsel m;
    m.decoderIp = "10.0.0.2";
    DalTarsel dal;
    dal.sendHeartbeat(100);
    dal.setH265InfoForT9(100, m);
    throughT9(0x6A, 3, 0, 0, 0);
    QVERIFY(takeQueued().isEmpty());

    DalTarsel::isConnected = true;
    m.decoderFrame = 1, m.decoderCard = 2, m.decoderSub = 3;
    m.decoderGateway = "10.0.0.1", m.decoderMask = "255.0.0.0", m.decoderDns1 = "8.8.8.8";
    dal.setH265InfoForT9(100, m);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 2);
    QCOMPARE(headOf(q[0]), head(0x90, 0x12));
    QCOMPARE(jsonOf(q[0]), (QJsonObject{{"Command", "SetSubDecoderList"},
                                        {"Frame", 1},
                                        {"Card", 2},
                                        {"Sub", 3},
                                        {"IP", "10.0.0.2"}}));
    QCOMPARE(headOf(q[1]), head(0x90, 0x14));
    QCOMPARE(jsonOf(q[1]), (QJsonObject{{"Command", "SetDecoderGeneral"},
                                        {"DHCP", 0},
                                        {"Gateway", "10.0.0.1"},
                                        {"Mask", "255.0.0.0"},
                                        {"DNS1", "8.8.8.8"},
                                        {"DNS2", "0.0.0.0"}}));
}

QTEST_GUILESS_MAIN(tst_dialect_t9)
#include "tst_dialect_t9.moc"
