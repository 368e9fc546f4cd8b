#include "dalTarsel.h"
#include "testsupport.h"

#include <QtTest>

class tst_catalog : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void calls_data();
    void calls();
    void malformedColour_data();
    void malformedColour();
    void autoLoopTimes();
    void kilobyteBlocks();
    void outOfContract();
};

namespace {

QString zeros(int count) { return QString("00").repeated(count); }

// A record that carries a text and the text's bytes.
QString withText(const char* headAndTimeout, const QString& text) {
    return headAndTimeout + (' ' + QString::fromLatin1(text.toLatin1().toHex())) + " '" + text +
           '\'';
}

// The bytes 0, 1, ..., count - 1 in hex, as the default bank player's loop lists hold them.
QString ramp(int count) {
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char(i));
    return QString::fromLatin1(bytes.toHex());
}

struct Call {
    QString call;
    QByteArray model; // JSON applied to the default models
    int device;
    QString expected;
};

void row(const char* call, const QString& expected, const char* model = "", int device = 0x700000) {
    QTest::addRow("%s %s", call, model) << Call{call, model, device, expected};
}

} // namespace

Q_DECLARE_METATYPE(Call)

// Catalog operations called through the registry: "HEAD TIMEOUT[ BLOCK]" of what they queue.
void tst_catalog::calls_data() {
    QTest::addColumn<Call>("call");

    // Time-outs: lengthened, or fixed by the operation.
    row("getCurrentSceneIndex 2000", "6819000000 3000");
    row("getNormalOutBoardFormat 500 0x102", "7433000002 1500");
    row("getLayerAlpha 2 7", "f108070000 4000");
    row("getMac 1200", "8e05000000 1200 | 8e07000000 1200");
    // Truncation, choices, model fields.
    row("savePage 0x1234", "6812340000 3000");
    row("setH264InputWorkMode 5", "7824000500 3000"); // no mode listed for input 5
    row("setByPassMode 9", "7740090000 3000");
    row("getInProperty 3 0x0512", "f109031205 3000");
    row("getWebAddress 2", "f120220000 3000");
    row("getH265InputUrl 700 4 9", "f162210000 700");
    row("getLayerAlpha 3 7", "");
    row("getOSD 5 1", "f10fff0000 3000");
    row("getOSD 5 2", "");
    // The index equal to the output count stands for every output.
    row("getDeSwitch 7", "8601070000 3000", R"({"maxOutputCount":8})");
    row("getDeSwitch 8", "8601ff0000 3000", R"({"maxOutputCount":8})");
    row("getDeSwitch 0x108", "8601080000 3000", R"({"maxOutputCount":8})");
    // 16-bit values: low byte first, or high first where the command says so.
    const char* timings[] = {"HTotal", "VTotal", "HSize",    "VSize",
                             "HPos",   "VPos",   "Polarity", "SyncWidth"};
    for (int i = 0; i < 8; ++i)
        QTest::addRow("16-bit %s", timings[i])
            << Call{QStringLiteral("setAdvancedTimingOut%1").arg(timings[i]),
                    QStringLiteral(R"({"out%1":4660})").arg(timings[i]).toLatin1(), 0x700000,
                    "74" + QString::number(0x102 + 2 * i, 16).mid(1) + "003412 3000"};
    row("setOutAlphaTime", "760200e803 3000");
    row("setBoardBrightness 300 2 356", "7462020164 300");
    row("setUSBCurFileIndex 2", "7724023412 3000", R"({"usbFileIndex":4660})");
    row("setOutCustomFormatFreq 700 3 59.94", "7416026a17 700"); // 5994 hundredths of a hertz
    // Decimals: the whole part and two rounded fraction digits.
    row("setHdrGamma 1500 3 2.2", "7752030214 1500");
    row("setHdrGamma 1500 3 10.999", "7752030b00 1500");
    row("setHdrBrightFactor 1500 3 1.75", "775403014b 1500");
    row("setPreviewFontColor 2500 #1A2b3C", "791e1a2b3c 2500");
    row("setH265FrameColor 2500 #a0B1cF", "792aa0b1cf 2500");
    // Dates and addresses.
    row("setBankPlayYear", "8b00001418 3000", R"({"year":2024})");
    row("setBankPlayYear", "8b00001363 3000", R"({"year":1999})");
    row("setIP", "880a0102fe 3000", R"({"ip":"10.1.2.254"})");
    row("setMaskIP", "84ffff0000 3000", R"({"maskIP":"255.255"})");
    // The RTSP read packs source and channel; device 0x220000 has sixteen channels a source.
    row("geth264inputrtsp 5 9", "f125590000 3000", "", 0x220000);
    row("geth264inputrtsp 16 3", "f125030000 3000", "", 0x220000);
    row("geth264inputrtsp 5 9", "f125290000 3000");
    row("geth264inputrtsp 16 3", "f125830000 3000");
    row("geth264inputrtsp 32 3", "f128030000 3000");
    // Camera commands carry their VISCA block.
    row("ptzTurn 2000 8 0", "9210000000 2000 8101060108080301ff");
    row("ptzTurn 2000 8 3", "9210000300 2000 8101060108080203ff");
    row("ptzTurn 2000 8 4", "");
    row("ptzZoom 2000 0x125", "9216250000 2000 8101040725ff");
    row("ptzFocusAuto 2000 1", "921e010000 2000 8101043802ff");
    row("ptzFocusAuto 2000 4", "921e040000 2000 81010438ffff");
    row("ptzBrightness 2000 0x3C", "9220000000 2000 810104a10000003cff");
    // Data blocks with a checksum.
    row("setOutCustomFormatWHForVM6S 900 1920 1080", "7416000000 900 80073804c3");
    row("setSupplierName 1000 3 4142", "f058030300 1000 414283");
    row("setUserFileData 1500 2 010203 3", "f040020400 1500 01020306");
    row("setUserFileData 1500 2 010203 0", "f040020000 1500");
    row("setUserSetting", "f007000b00 3000 112201020304feffffff38",
        R"({"userSettingByte0":17,"userSettingByte1":34,"userSettingValue0":67305985,)"
        R"("userSettingValue1":-2})");
    const char* stream = R"({"streamInputIp":"192.168.1.20","streamInputMask":"255.255.255.0",)"
                         R"("streamInputGateway":"192.168.1.1","streamInputPort":554})";
    row("seth264inputip 1", "f021011700 3000 c0a80114ffffff00c0a801012a02000000000000000010",
        stream);
    row("setH265InputIpInfo 1 7", "f061011100 3000 07c0a80114ffffff00c0a801012a020017", stream);
    row("setH265InputMode 1 2 5", "f060010200 3000 2525");
    row("setH264InputDisplayPic 1", "f023010200 3000 3737", R"({"h264DisplayPic":55})");
    row("setH264InputDisplayPic 4", "f023ff0200 3000 3737", R"({"h264DisplayPic":55})");
    row("setEDIDParm_4k 3 3840 2160 60 true AB",
        "f019031500 30000 000f70083c00014142" + zeros(11) + "47");
    row("setBrightAndGamma 1000 2 0x31 0x0102 0x0304 0x0506 0x0708 0x090A true 0x33",
        "f050020e00 1000 3102010403060508070a0901339c");
    row("setSendCardParams 1000 2 0x0102 0x0304 0x0506 0x0708 0x090a",
        "f052020c00 1000 02010403060508070a090037");
    row("setPreviewModeSignal 1000 4 1-2-3 9-8",
        "f046042100 1000 010203" + zeros(13) + "0908" + zeros(14) + "17");
    // The checksums: 0 + 1 + ... + 143 = 10296 and 0 + 1 + ... + 127 = 8128.
    row("setBankPlayLoopTiming", "8b04010000 3000 " + ramp(144) + "38");
    row("setBankPlayLoopTimes", "8b08010000 3000 " + ramp(128) + "c0");
    // Only flagged containers lengthen the time-out, by their alpha time.
    row("setTakeAlphaDuetoContainer 0,1,0,0", "f03c000d00 4000 00f40101e80300dc0500d00799");
    row("setContainerAndBankArr 1000 7 1,2,3,4", "f068000600 1000 070102030411");
    // "-" lists: one byte per number; layer byte and 16-bit width pairs up to the shorter list.
    row("setLayerBlackWhiteEffect 1-0-257", "f043000400 3000 01000102");
    row("setLayerMultiBlendingWidth 1-2 300-4-9", "f042000700 3000 012c0102040034");
    row("setSourceFrameInfo 900 4 {\"status\":1,\"size\":9,\"color\":\"#A1B2C3\"}",
        "f065040600 900 01a1b2c30920");
    row("setSourceFrameInfo 900 4 {}", "f065040600 900 000000000000");
    row("setDanteAudioInfo 900 4 {\"hdmi1\":1,\"hdmi2\":2,\"lan1\":3,\"lan2\":4,\"lan4\":6,"
        "\"loopIn1\":7,\"loopIn2\":8,\"loopIn3\":9,\"loopIn4\":10}",
        "f066040b00 900 0102030400060708090a32");
    row("setOutBoardAudioInfo 900 4 {\"switch1\":1,\"switch2\":2,\"switch3\":3,\"switch4\":4,"
        "\"source1\":17,\"source2\":18,\"source3\":19,\"source4\":20}",
        "f067040900 900 010203041112131454");
    // Family commands built directly: T9's JSON (an input number 0x01020304 is frame 1, card
    // 2, sub-card 3, port 4) and NV's queries, DAT1 chosen by the flag.
    row("setViClipForT9 500 0x01020304",
        R"(9006000000 500 '{"Bottom":4,"Card":2,"Command":"SetViClip","Frame":1,"Left":1,)"
        R"("Port":4,"Right":3,"Sub":3,"Top":2}')",
        R"({"viClipLeft":1,"viClipTop":2,"viClipRight":3,"viClipBottom":4})");
    row("setViPropertyForT9 500 0x01020304",
        R"(9008000000 500 '{"Bright":5,"Card":2,"Command":"SetViProperty","Contrast":6,"Frame":1,)"
        R"("Hue":7,"Port":4,"Sat":8,"Sub":3}')",
        R"({"viBright":5,"viContrast":6,"viHue":7,"viSat":8})");
    row("setVgaParamForT9 500 0x01020304 5 6 7",
        R"(900c000000 500 '{"Card":2,"Command":"SetVgaParam","Frame":1,"Horz":6,"Phase":7,)"
        R"("Port":4,"Sub":3,"Vert":5}')");
    row("setH265InfoForT9 500",
        R"(9012000000 500 '{"Card":2,"Command":"SetSubDecoderList","Frame":1,"IP":"","Sub":3}' | )"
        R"(9014000000 500 '{"Command":"SetDecoderGeneral","DHCP":0,"DNS1":"","DNS2":"0.0.0.0",)"
        R"("Gateway":"","Mask":""}')",
        R"({"decoderFrame":1,"decoderCard":2,"decoderSub":3})");
    row("setEDIDForT9 500 1 1920 1080",
        R"(9004000000 500 '{"Command":"SetViCustomWH","Height":1080,"Type":1,"Width":1920}')");
    row(R"(setOsdTextForT9 500 {"posX":1,"posY":2,"posW":3,"posH":4,"groupIndex":5,"fileName":"f",)"
        R"("bgAlpha":6,"bgColor":7,"fontSize":8,"fontName":"n","fontColor":9,"scrollDir":10,)"
        R"("scrollSpeed":11,"osdText":"t","topPostion":12,"sendBits":13,"textLine":14,"rowHeight":15})",
        R"(9018000000 500 '{"Alpha":6,"BgColor":7,"Command":"SetOsdText","FontName":"n","FontSize":8,)"
        R"("Name":"f","RowHeight":15,"ScrGroup":5,"ScrRange":[1,2,3,4],"ScrollDir":10,)"
        R"("ScrollSpeed":11,"SendBits":13,"Text":"t","TextColor":9,"TextLine":14,"TopPostion":12}')");
    row(R"(updateIPCInfo 500 {"group":1,"ipcName":"c","authMode":2,"userName":"u","pwd":"p",)"
        R"("transMode":3,"url":"r","width":4,"height":5,"auxUrl":"a","auxWidth":6,"auxHeight":7})",
        R"(920a000000 500 '{"AuthMode":2,"AuthName":"u","AuthPwd":"p","AuxHeight":7,"AuxUrl":"a",)"
        R"("AuxWidth":6,"Command":"AddOneIpCam","Group":1,"Height":5,"Name":"c","TransferMode":3,)"
        R"("Url":"r","Width":4}')");
    row("clearPortOSDForT9 500 6 n1",
        R"(901c000000 500 '{"Command":"CloseOsdText","Name":"n1","ScrGroup":6}')");
    row("refreshModal 500 6",
        R"(9218000000 500 '{"Command":"RefreshModal","IsCloudScreen":0,"ScreenGroup":6}')");
    row("setViPhaseForT9 500 0x01020304 7",
        R"(900a000000 500 '{"Card":2,"Command":"SetViPhase","Frame":1,"Phase":7,"Port":4,"Sub":3}')");
    row("setVideoFormat 500 0x01020304 0 9",
        R"(921a000000 500 '{"Card":2,"Command":"SetViMode","Frame":1,"Manual":0,"Mode":44,)"
        R"("Port":4,"Sub":3}')");
    row("setVideoFormat 500 0x01020304 1 9",
        R"(921a000000 500 '{"Card":2,"Command":"SetViMode","Frame":1,"Manual":1,"Mode":9,)"
        R"("Port":4,"Sub":3}')");
    row("setBgOnStatusForT9 500 2 false",
        R"(9216000000 500 '{"Command":"ScreenCtrl","Control":"BgOff","ScreenGroup":2}')");
    row("setPortTypeForT9 500 0x0102 5 1",
        R"(9016000000 500 '{"CardList":[{"Card":2,"Frame":1,"IsHDMI":1,"Sub":5}],)"
        R"("Command":"SetCardType"}')");
    row(R"(findIPC 100 {"authMode":1,"userName":"admin"})",
        R"(9208000000 100 '{"Command":"FindIpCam","IsNeedUser":1,"Password":"","UserName":"admin"}')");
    row("getNvInfo 400 6 1",
        withText("9021060000 400", R"({"Function":"getSystemMsg","Type":"System","Value":)"
                                   R"({"get_software_config":"echo"}})"),
        "", 0x2D0000);
    row("getComInfoForNV 400 1", withText("9025000000 400", "reply:"), "", 0x2D0000);
    row("getLCDInfoForNV 400 2", withText("9027000000 400", "replyoled"), "", 0x2D0000);
    row("getKVMInfoForNV 400 0", withText("9009000000 400", "getKvmInfo"), "", 0x2D0000);
    row("getKVMInfoForNV 400 1", "9029000000 400", "", 0x2D0000);
    // The url carries source and channel in DAT2; outside them nothing is sent.
    row("setH265InputUrl 2 3 rtsp", "f062230600 3000 7274737000c9");
    row("setH265InputUrl 0 15 rtsp", "f0620f0600 3000 7274737000c9");
    row("setH265InputUrl -1 3 rtsp", "");
    row("setH265InputUrl 4 3 rtsp", "");
    row("setH265InputUrl 2 16 rtsp", "");
}

void tst_catalog::calls() {
    QFETCH(Call, call);
    MessageCapture messages;
    QCOMPARE(run(call.call, call.model, call.device), call.expected);
    QVERIFY(messages.warnings().isEmpty());
}

void tst_catalog::malformedColour_data() {
    QTest::addColumn<QString>("colour");
    for (const char* colour : {"#", "#12345", "#1234567", "123456", "A123456", "#12345G", "#-12345",
                               "#0x1234", "#12:456"})
        QTest::newRow(colour) << colour;
}

void tst_catalog::malformedColour() {
    QFETCH(QString, colour);
    MessageCapture messages;
    DalTarsel().setH265FrameColor(3000, colour);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(messages.warnings(), QStringList("---setH265FrameColor--bad colour= " + colour));
}

// 16-bit loop counts, low byte first; the length and the checksum wrap.
void tst_catalog::autoLoopTimes() {
    ModelBankPlayer player;
    player.timeout = 3500;
    DalTarsel dal;
    for (const QList<int>& times : {QList<int>{1, 0x1234}, QList<int>{0xFFFF, 0x0202}, {}}) {
        player.autoLoopTimes = times;
        dal.setAutoLoopTimes(player);
    }
    player.autoLoopTimes = QVector<int>(128, 1).toList(); // 257 bytes
    dal.setAutoLoopTimes(player);
    const auto records = takeQueued();
    QCOMPARE(describe(records.mid(0, 3)), QStringLiteral("8b20000500 3500 0100341247 | "
                                                         "8b20000500 3500 ffff020202 | "
                                                         "8b20000100 3500 00"));
    QCOMPARE(headOf(records[3]).toHex(), QByteArray("8b20000101"));
    QCOMPARE(records[3].arryDatablock.right(1).toHex(), QByteArray("80"));
}

// Blocks of 1024 bytes: user information cut to 1023 bytes, the login type as text.
void tst_catalog::kilobyteBlocks() {
    DalTarsel dal;
    dal.setUserInfos(1000, 5, QByteArray("abc"));
    dal.setUserInfos(1000, 5, QByteArray(2000, 'a'));
    dal.setLoginType(1100, -3);
    QByteArray largest(1023, '\x01');
    dal.setUserFileData(1500, 2, largest.data(), 1023);
    const auto r = takeQueued();
    QCOMPARE(r.size(), 4);
    QCOMPARE(describe({r[0]}), "f063050004 1000 616263" + zeros(1020) + "26");
    QCOMPARE(describe({r[1]}), "f063050004 1000 " + QString("61").repeated(1023) + "9f");
    QCOMPARE(describe({r[2]}), "f064000004 1100 2d33" + zeros(1021) + "60");
    QCOMPARE(headOf(r[3]).toHex(), QByteArray("f040020004"));
    QCOMPARE(r[3].arryDatablock.toHex().right(2), QByteArray("ff")); // 1023 mod 256
}

void tst_catalog::outOfContract() {
    DalTarsel dal;
    QByteArray big(1024, '\x01');
    verifyRefused([&] { dal.setUserFileData(1000, 1, big.data(), 1024); }, "setUserFileData",
                  "0..1023");
    verifyRefused([&] { dal.setUserFileData(1000, 1, big.data(), -1); }, "setUserFileData", "-1");
    verifyRefused([&] { dal.setUserFileData(1000, 1, nullptr, 5); }, "setUserFileData", "0..0");
    verifyRefused([&] { dal.setInputPortEdid(nullptr, 1, 4, ModelTarsel()); }, "setInputPortEdid",
                  "0..0");
    verifyRefused(
        [&] {
            dal.setInputPortEdid(reinterpret_cast<unsigned char*>(big.data()), 1, 1024,
                                 ModelTarsel());
        },
        "setInputPortEdid", "0..1023");
    verifyRefused([&] { dal.setPreviewHip(ModelTarsel(), QByteArray(255, 'x')); }, "setPreviewHip",
                  "255-byte");
    dal.setPreviewHip(ModelTarsel(), QByteArray(254, 'x'));
    QCOMPARE(headOf(takeQueued().value(0)).toHex(), QByteArray("f02000ff00"));
    verifyRefused([&] { dal.setR4Reset(1000, 1, QByteArray(1024, 'x')); }, "setR4Reset",
                  "block of 1025 bytes exceeds the 1024-byte buffer");
    verifyRefused(
        [&] { dal.setPreviewModeSignal(1000, 1, QString("1-").repeated(16) + "17", QString()); },
        "setPreviewModeSignal", "0..16");
    ModelTarsel sources;
    sources.maxSourceCount = 4;
    verifyRefused([&] { dal.setH265InputUrl(sources, 1, 1, QString(1023, QLatin1Char('u'))); },
                  "setH265InputUrl", "1024-byte");
    ModelScene scene;
    scene.maxContainerCount = 1;
    int flags[] = {1};
    verifyRefused([&] { dal.setTakeAlphaDuetoContainer(scene, flags); },
                  "setTakeAlphaDuetoContainer", "0..0");
}

QTEST_GUILESS_MAIN(tst_catalog)
#include "tst_catalog.moc"
