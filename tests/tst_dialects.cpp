#include "dalTarsel.h"
#include "families.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QLoggingCategory>
#include <QtTest>

#include <climits>

// in(DAT2) = DAT2 + 1 and inP(DAT2) = DAT2 + 11, so each text shows which lookup it used.
int inputIndex(int code, int rows, int) { return code + 10 * (1 - rows); }

namespace {

enum Bytes { NativeKept, TextBytes };

constexpr int T9 = 0x250300, T3 = 0x250400, KR2 = 0x250502, NV = 0x2D0000, H40 = 0x900000,
              H40B = 0x900001;
const QByteArray kNative = QByteArray::fromHex("0102");

struct Rule {
    int device;
    QByteArray head;
    QString text;
    int kind;
    Bytes bytes;
    int timeout;
    QByteArray block;
    int msgCode = 0; // the native record arrives with 0
};

// H40B sends the text's bytes and a message code.
void h40b(const char* name, const char* head, const QString& text, int msgCode = 0) {
    QTest::newRow(name) << Rule{H40B, QByteArray::fromHex(head),   text,   0, TextBytes,
                                3000, QByteArray::fromHex("0102"), msgCode};
}

void rule(const char* name, int device, const char* head, const QString& text, int kind = 0,
          Bytes bytes = TextBytes, int timeout = 3000, const char* block = "0102") {
    QTest::newRow(name) << Rule{device,  QByteArray::fromHex(head), text, kind, bytes,
                                timeout, QByteArray::fromHex(block)};
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

QString systemQuery(const char* key) {
    return QString(R"({"Function":"getSystemMsg","Type":"System","Value":{"%1":"echo"}})").arg(key);
}

QString signedList(const QByteArray& bytes) {
    QStringList values;
    for (char byte : bytes)
        values << QString::number(static_cast<signed char>(byte));
    return values.join(QLatin1Char(','));
}

} // namespace

Q_DECLARE_METATYPE(Rule)

class tst_dialects : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); // long texts
    }
    void init() {
        resetLibrary();
        Utility_Manage::setInputIndexForT3Resolver(inputIndex);
        Utility_Manage::setUserID("u7");
    }

    void translation_data();
    void translation();
    void publicTranslators_data();
    void publicTranslators();
    void t3Edid_data();
    void t3Edid();
    void t3EdidExtension();
    void t3PassesTheCallersText();
    void vm6sFrames_data();
    void vm6sFrames();
    void vm6sFinisher();
    void tunnels_data();
    void tunnels();
    void tunnelDebugLine_data();
    void tunnelDebugLine();
    void directSenders();
    void kr2ContainerAndEdid();
    void nvSceneName();
    void h40bMessageCode();
    void h40bEdidKeepsEveryByte_data();
    void h40bEdidKeepsEveryByte();
};

// One row per kind of rule: fixed texts, fields copied or shifted by one, lookups, letters,
// fractions, time-out parameters, signed block values, JSON, and commands that pass untouched.
void tst_dialects::translation_data() {
    QTest::addColumn<Rule>("rule");
    rule("T9 JSON", T9, "6806000000", R"({"Command":"RemoveAllSettings"})", 4, NativeKept);
    rule("T9 group from DAT4", T9, "6819070803", "Command=GetCurrModal&ScreenGroup=3", 2,
         NativeKept);
    rule("T9 fan inverted", T9, "682a001e00", R"({"Command":"SetFanRpm","FrameId":1,"Rpm":70})", 4,
         NativeKept);
    rule("T9 group from DAT2", T9, "9205060000", "Command=GetAllModalGroup&ScreenGroup=6", 2,
         NativeKept);
    rule("T9 fields plus one, crossed", T9, "f108040009",
         "Command=GetOneModal&ScreenGroup=1&ModalName=5", 2, NativeKept);
    rule("T9 video number", T9, "f109070102", "Command=GetViParam&VideoNo=513", 2, NativeKept);
    rule("T9 passes", T9, "681a010200", "", 0, NativeKept);
    rule("KR2 fixed", KR2, "6806000000", "(CLEAR)");
    rule("KR2 DAT3 plus one", KR2, "682a003100", "(fan,50)");
    rule("KR2 DAT2 plus one", KR2, "9004020809", "(info,res,3)");
    rule("KR2 DAT4 plus one", KR2, "f001020603", "(wnd,clear,4)");
    rule("KR2 DAT2", KR2, "f108070300", "(sync,scewnd,7)");
    rule("KR2 passes", KR2, "6a09000000", "");
    rule("NV JSON", NV, "682a000000", R"({"Command":"SetFanRpm","FrameId":1,"Rpm":100})", 4);
    rule("NV query", NV, "8900000000", systemQuery("get_net_config"));
    rule("NV camera keeps the block", NV, "9220000000", "brightness", 0, NativeKept);
    rule("NV video number", NV, "f109001001", "Command=GetViParam&VideoNo=272", 2);
    rule("NV group plus one", NV, "f13b080000", "Command=GetScrGroupSettings&GroupId=9", 2);
    rule("T3 value", T3, "6810070000", "<WPWR,7>");
    rule("T3 letter", T3, "681a040500", "<SVCN, 5F>");
    rule("T3 board lookup", T3, "6a09020000", "<13P,GVER>");
    rule("T3 from DAT4", T3, "7433050002", "<9Y,ROUT>");
    rule("T3 input lookup", T3, "9003020000", "<3X,RDID>");
    rule("T3 fractions", T3, "900d020102", "<3.22X,RIIP>");
    rule("T3 last fractions", T3, "900d020304", "<3.44X,RIIP>");
    rule("T3 tenths", T3, "9021000200", "<1.3X,GETR>");
    rule("T3 letter DAT2 - 1", T3, "9011060000", "<GBGP,1F>");
    rule("T3 literal", T3, "901b000000", "<GCHN,0x10>");
    rule("T3 DAT2 decides", T3, "f001020903", "<SHUT, 0D>");
    rule("T3 minus 2999", T3, "f001050700", "<MOVZ, 6A, 7>", 0, TextBytes, 3005);
    rule("T3 minus 3000", T3, "f101000000", "<widf, -3000>", 0, TextBytes, 0);
    rule("T3 extreme time-out", T3, "f101000000", "<widf, -2147486648>", 0, TextBytes, INT_MIN);
    rule("T3 signed block values", T3, "f009000000", "<1X,WPM1,1,-1,4660,-32768>", 0, TextBytes,
         3000, "0100ffff34120080");
    rule("T3 network tail first", T3, "f021021200",
         "<3X,WNET,13,14,15,16,17,18,1,2,3,4,5,6,7,8,9,"
         "10,11,12>",
         0, TextBytes, 3000, "0102030405060708090a0b0c0d0e0f101112ee");
    rule("T3 network empty", T3, "f021021200", "<3X,WNET" + QString(",0").repeated(18) + ">", 0,
         TextBytes, 3000, "");
    rule("T3 no row", T3, "9005000000", "");
    rule("T3 letter past F", T3, "900b060000", "");
    rule("T3 fraction past the list", T3, "900d020400", "");
    rule("T3 DAT2 past the rows", T3, "f001030000", "");
    rule("H40 two fields", H40, "681a040900", "<save, 4, 9>", 0, NativeKept);
    rule("H40 DAT2 plus one", H40, "6a0b040000", "<reid, 2, 5>", 0, NativeKept);
    rule("H40 time-out minus 3000", H40, "f001010007", "<shut, 10, 7>", 0, NativeKept, 3010);
    rule("H40 negative", H40, "f001060000", "<Torb, -10, 0>", 0, NativeKept, 2990);
    rule("H40 from DAT3", H40, "f108020500", "<winf, 5>", 0, NativeKept);
    rule("H40 from DAT2", H40, "f13b020500", "<winf, 2>", 0, NativeKept);
    rule("H40 DAT2 decides", H40, "f001030000", "", 0, NativeKept, 3005);
    h40b("H40B scene", "681a040100",
         kXml + "<Message>\n<UserID>u7</UserID\n><Scene id=\"10004\" screenId=\"1\" name=\"5\" "
                "group=>\n<Scol>1</Scol>\n<osd>0</osd>\n<input>0</input>\n"
                "<Img w=\"0\" h=\"0\">666666</Img>\n</Scene>\n</Message>",
         20400);
    h40b("H40B reid", "6a0b020000", "<reid, 2, 3>");
    h40b("H40B plain", "8500000000", kPlain, 20012);
    h40b("H40B all", "9003000000", kAll, 20300);
    h40b("H40B composed", "9200050200",
         kComposedHead + "<Scene id=\"20005\" screenId=\"2\">\n</Scene>\n</Message>", 20402);
    h40b("H40B passes", "f002000000", "");
}

void tst_dialects::translation() {
    QFETCH(Rule, rule);
    const model_Protocoldata rec = sendTo(rule.device, rule.head, rule.block, {}, rule.timeout);
    QCOMPARE(rec.Datablock, rule.text);
    QCOMPARE(int(rec.dataType), rule.kind);
    QCOMPARE(rec.arryDatablock, rule.bytes == NativeKept ? rule.block : rule.text.toLocal8Bit());
    QCOMPARE(headOf(rec).toHex(), rule.head.toHex());
    QCOMPARE(rec.timeout, rule.timeout);
    QCOMPARE(rec.deviceType, rule.device);
    QCOMPARE(int(rec.msgCode), rule.msgCode);
}

// Each public translator gives what the generic send's route gives its family (before the
// tag), on commands each dialect has a rule for, with and without a block and text.
void tst_dialects::publicTranslators_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<QString>("translation");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("withBlockAndText");
    const QByteArray heads = QByteArray::fromHex("6806000000 681a040500 6a09020000 682a001e00 "
                                                 "f108040009 f001030400 9003020000 9101020307");
    for (int at = 0; at < heads.size(); at += 5)
        for (bool both : {false, true}) {
            const QByteArray head = heads.mid(at, 5);
            const bool tunnelled = (uchar(head[0]) & 0xFE) == 0x90;
#define DAL_FAMILY(name, cls, form, tag, other, tunnel, longest)                                   \
    if (const QString t = tunnelled ? #tunnel : #other; t != "nullptr")                            \
        QTest::addRow("%s %s %d", #name, head.toHex().constData(), both)                           \
            << family::name << t << head << both;
#include "families.def"
        }
}

void tst_dialects::publicTranslators() {
    QFETCH(int, device);
    QFETCH(QString, translation);
    QFETCH(QByteArray, head);
    QFETCH(bool, withBlockAndText);
    const QByteArray block = withBlockAndText ? kNative : QByteArray();
    const QString text = withBlockAndText ? QStringLiteral("t") : QString();
    model_Protocoldata rec = sendTo(family::native, head, block, text); // as the send fills it
    DalTarsel dal;
    model_Protocoldata vm6s = dal.transformBufToQStringForVM6S(rec);
    const QMap<QString, model_Protocoldata> byName = {
        {"t9", dal.transformBufToQStringForT9(rec)},
        {"t3", dal.transformBufToQStringForT3(rec)},
        {"kr2", dal.transformBufToQStringForKR2(rec)},
        {"nv", dal.transformBufToQStringForNV(rec)},
        {"h40", dal.transformBufToQStringForH40(rec)},
        {"h40b", dal.transformBufToQStringForH40B(rec)},
        {"vm6sFramed", dal.convertCheckSumForVMS(vm6s)},
        {"vantaz", dal.transformBufToQStringForVantaZ(rec)},
        {"cadex", dal.transformBufToQStringForCadex(rec)}};
    QVERIFY2(byName.contains(translation), qPrintable(translation));
    const auto fields = [](const model_Protocoldata& r) { // what translators set
        return describe({r}) + QString::asprintf(" type %d msg %d", r.dataType, r.msgCode);
    };
    QCOMPARE(fields(byName[translation]), fields(sendTo(device, head, block, text)));
}

// EDID bytes as signed numbers, DAT3/DAT4 the length; from 257 bytes on, the second block is
// replaced by the standard extension; bytes past the block read 0.
void tst_dialects::t3Edid_data() {
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("numbers");
    QByteArray ramp;
    for (int i = 0; i < 129; ++i)
        ramp.append(char(i + 100)); // 100..228: crosses into negative numbers at 128
    QTest::newRow("1") << 1 << QByteArray::fromHex("11") << "";
    QTest::newRow("3") << 3 << QByteArray::fromHex("10ff99") << "16,-1";
    QTest::newRow("129") << 129 << ramp << signedList(ramp.left(128));
    QTest::newRow("65535") << 65535 << QByteArray::fromHex("05ff")
                           << "5" + QString(",0").repeated(65533);
}

void tst_dialects::t3Edid() {
    QFETCH(int, length);
    QFETCH(QByteArray, block);
    QFETCH(QString, numbers);
    const QByteArray head = QByteArray::fromHex("f00c00") + char(length) + char(length >> 8);
    QCOMPARE(sendTo(T3, head, block).Datablock, "<1X,WEDI," + numbers + ">");
}

// From 257 bytes on, the second block is the standard extension (tag 2, revision 3), its
// bytes summing to 0, in place of the caller's.
void tst_dialects::t3EdidExtension() {
    const QStringList numbers = sendTo(T3, QByteArray::fromHex("f00c000101"), QByteArray(300, 1))
                                    .Datablock.mid(9)
                                    .chopped(1)
                                    .split(',');
    QCOMPARE(numbers.size(), 256);
    QCOMPARE(numbers.mid(0, 128), QVector<QString>(128, "1").toList());
    QCOMPARE(numbers.mid(128, 2), QStringList({"2", "3"}));
    int sum = 0;
    for (const QString& number : numbers.mid(128))
        sum += number.toInt();
    QCOMPARE(sum & 0xFF, 0);
}

void tst_dialects::t3PassesTheCallersText() {
    const model_Protocoldata rec =
        sendTo(0x250310, QByteArray::fromHex("7301000000"), kNative, QStringLiteral("keep"));
    QCOMPARE(rec.Datablock, QStringLiteral("keep"));
    QCOMPARE(rec.arryDatablock, QByteArray("keep"));
    QCOMPARE(rec.deviceType, 0x250310);
}

void tst_dialects::vm6sFrames_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("subType");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("frame");
    const auto row = [](const char* name, int device, int subType, const char* head,
                        const QByteArray& block, const char* text, const char* frame) {
        QTest::newRow(name) << device << subType << QByteArray::fromHex(head)
                            << QByteArray::fromHex(block) << text << frame;
    };
    // Byte 10 stamps the sub-type, byte 21 sums bytes 0..20.
    row("2C0104 value of DAT2", 0x2C0104, 0x2C0104, "7806010000", "", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 00 02 01 00 00 00 00 00 00 00 F5 16");
    row("2C0103 stamps 1", 0x2C0103, 0x2C0103, "7806010000", "", "",
        "68 00 00 00 01 68 0C 00 0C 01 01 00 02 01 00 00 00 00 00 00 00 EE 16");
    row("board version keeps 0", 0x2C0103, 0x2C0103, "6a03000000", "", "",
        "68 00 00 00 01 68 0D 00 0C 00 00 00 02 00 00 00 00 00 00 00 00 EC 16");
    row("board version on another sub-type", 0x2C0104, 0x123, "6a03000000", "", "",
        "68 00 00 00 01 68 0D 00 0C 00 08 00 02 00 00 00 00 00 00 00 00 F4 16");
    row("DAT3 plus one wraps", 0x2C0104, 0x2C0104, "681a00ff09", "", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 00 08 00 00 00 00 00 00 00 00 FA 16");
    row("DAT2 plus one", 0x2C0104, 0x2C0104, "9200040000", "", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 00 09 05 00 00 00 00 00 00 00 00 16");
    row("value of DAT3", 0x2C0104, 0x2C0104, "f001040500", "", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 01 01 05 00 00 00 00 00 00 00 F9 16");
    row("the block's first four bytes", 0x2C0104, 0x2C0104, "7416000000", "0780043899", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 81 06 07 80 04 38 00 00 00 00 3C 16");
    row("four numbers of the text", 0x2C0103, 0x2C0103, "f001030000", "", "300,-1,x,65535",
        "68 00 00 00 01 68 0C 00 0C 01 01 81 08 01 2C 00 FF 00 00 FF FF 9E 16");
    const QByteArray property = QByteArray(38, '\0').toHex() + "aabbccdd1234";
    row("bytes 42..43 of the block", 0x2C0104, 0x2C0104, "f009010000", property, "",
        "68 00 00 00 01 68 0C 00 0C 01 08 01 03 12 34 00 00 00 00 00 00 3C 16");
    row("short block leaves zeros", 0x2C0104, 0x2C0104, "f009000000", "0102", "",
        "68 00 00 00 01 68 0C 00 0C 01 08 01 02 00 00 00 00 00 00 00 00 F5 16");
}

void tst_dialects::vm6sFrames() {
    QFETCH(int, device);
    QFETCH(int, subType);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    QFETCH(QString, text);
    QFETCH(QString, frame);
    Utility_Manage::setDeviceSubType(subType);
    const model_Protocoldata rec = sendTo(device, head, block, text);
    QCOMPARE(rec.arryDatablock.toHex(), QByteArray::fromHex(frame.toLatin1()).toHex());
    QCOMPARE(headOf(rec).toHex(), head.toHex());
    QCOMPARE(rec.deviceType, 0x2C0104);
}

// Text rows carry no frame; commands without a row lose their block. The finisher pads or
// cuts to 23 bytes, stamps and sums; a text record passes untouched.
void tst_dialects::vm6sFinisher() {
    QCOMPARE(sendTo(0x2C0104, QByteArray::fromHex("6a09020000"), kNative).Datablock,
             QStringLiteral("<13P,GVER>"));
    QVERIFY(sendTo(0x2C0103, QByteArray::fromHex("6810010000"), kNative).arryDatablock.isEmpty());
    DalTarsel dal;
    model_Protocoldata rec;
    rec.arryDatablock = QByteArray::fromHex("010203");
    QCOMPARE(
        dal.convertCheckSumForVMS(rec).arryDatablock.toHex(),
        QByteArray::fromHex("01 02 03 00 00 00 00 00 00 00 08 00 00 00 00 00 00 00 00 00 00 0E 00")
            .toHex());
    rec.arryDatablock = QByteArray(30, char(0x01));
    QCOMPARE(dal.convertCheckSumForVMS(rec).arryDatablock.toHex().right(6), QByteArray("011c01"));
    rec.arryDatablock.clear();
    rec.Datablock = QStringLiteral("<X>");
    QCOMPARE(dal.convertCheckSumForVMS(rec).Datablock, QStringLiteral("<X>"));
}

// Tunnel commands: VantaZ frames the block (length, sum, end byte) whatever the head; Cadex
// wraps head and block, DAT4 to DAT2, under F1/5D.
void tst_dialects::tunnels_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QString>("record");
    QTest::newRow("VantaZ empty") << 0x2C0103 << QByteArray::fromHex("9101020304") << QByteArray()
                                  << "9101020304 3000 6800000001680c000400000001e216 't'";
    QTest::newRow("VantaZ one byte")
        << 0x2C0104 << QByteArray::fromHex("9009080706") << QByteArray::fromHex("05")
        << "9009080706 3000 6800000001680c00050000000105e816 't'";
    QTest::newRow("VantaZ 242 bytes")
        << 0x2C0104 << QByteArray::fromHex("9101020304") << QByteArray(242, char(0x01))
        << "9101020304 3000 6800000001680c00f600000001" + QString("01").repeated(242) + "c616 't'";
    QTest::newRow("Cadex no block") << 0x260000 << QByteArray::fromHex("9003020000") << QByteArray()
                                    << "f15d000600 3000 900302000095 't'";
    QTest::newRow("Cadex DAT4 to DAT2")
        << 0x260000 << QByteArray::fromHex("9101020307") << QByteArray::fromHex("aa55")
        << "f15d070800 3000 9101020307aa559d 't'";
    QTest::newRow("Cadex 250 bytes")
        << 0x2C0107 << QByteArray::fromHex("9000000000") << QByteArray(250, char(0x02))
        << "f15d000001 3000 9000000000" + QString("02").repeated(250) + "84 't'";
}

void tst_dialects::tunnels() {
    QFETCH(int, device);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    QFETCH(QString, record);
    QCOMPARE(describe({sendTo(device, head, block, QStringLiteral("t"))}), record);

    // The public translator wraps a record exactly as the sender does.
    model_Protocoldata rec;
    std::copy(head.begin(), head.end(), rec.cmdHead + 2);
    rec.arryDatablock = block;
    rec.Datablock = QStringLiteral("t");
    rec.timeout = 3000;
    DalTarsel dal;
    const bool cadex = record.startsWith(QLatin1String("f15d"));
    QCOMPARE(describe({cadex ? dal.transformBufToQStringForCadex(rec)
                             : dal.transformBufToQStringForVantaZ(rec)}),
             record);
}

// A VantaZ frame and a Cadex tunnel each write one debug line under the VantaZ label: the
// finished frame, or the tunnelled payload, in hexadecimal as the debug stream quotes it.
void tst_dialects::tunnelDebugLine_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QStringList>("lines");
    const QString label = QStringLiteral("------VantaZ-----tmpData.arryDatablock= ");
    QTest::newRow("VantaZ, one byte")
        << 0x2C0104 << QByteArray::fromHex("9009080706") << QByteArray::fromHex("05")
        << QStringList{label + "\"6800000001680c00050000000105e816\""};
    QTest::newRow("Cadex, no block") << 0x260000 << QByteArray::fromHex("9003020000")
                                     << QByteArray() << QStringList{label + "\"900302000095\""};
    QTest::newRow("Cadex, not tunnelled") << 0x260000 << QByteArray::fromHex("6a03000000")
                                          << QByteArray::fromHex("05") << QStringList();
}

void tst_dialects::tunnelDebugLine() {
    QFETCH(int, device);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    QFETCH(QStringList, lines);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=true"));
    MessageCapture messages;
    sendTo(device, head, block);
    const QStringList written = messages.debug().filter(QStringLiteral("VantaZ"));
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QCOMPARE(written, lines);
}

// The families' own senders: head bytes truncated, the text and its bytes unless bytes are
// given, the utility's connect type (T9: 3, H40: 4); nothing while the link is down.
void tst_dialects::directSenders() {
    Utility_Manage::setDeviceType(0x250310);
    Utility_Manage::setConnectType(0x105);
    DalTarsel dal;
    dal.f_SendCmdForT3(1234, 0x1F0, 0x13B, 2, 3, 4, QStringLiteral("<RCN1>"), QByteArray());
    QString text = QStringLiteral("<WCN1,1,2>");
    dal.setContainerParamForT3(5000, text);
    dal.f_SendCmdForKR2(500, 0x168, 6, 1, 2, 3, "(x)", QByteArray());
    dal.sendHeartbeatForKR2(800);
    dal.f_SendCmdFoNV(600, 0x192, 1, 2, 3, 4, "abc", QByteArray("\x09", 1));
    dal.f_SendCmdForT9(1234, 0x190, 0x101, 2, 3, 4, "x", 7, "ab");
    dal.sendHeartbeat(100);
    dal.f_SendCmdForH40(700, 0x1F0, 0x3B, 1, 2, 3, text, QByteArray("ignored"));
    dal.sendHeartbeatForH40(800);
    dal.setOutputTPForH40(10, text);
    dal.sendHeartbeatForH40B(900, QByteArray("beat"));
    const auto q = takeQueued();
    QCOMPARE(
        describe(q),
        QStringList({"f03b020304 1234 3c52434e313e '<RCN1>'",
                     "f03b000000 5000 3c57434e312c312c323e '<WCN1,1,2>'",
                     "6806010203 500 287829 '(x)'", "901f000000 800 28697029 '(ip)'",
                     "9201020304 600 09 'abc'", "9001020304 1234 6162 'x'",
                     "901f000000 100 'Command=HeartBeat'",
                     "f03b010203 700 3c57434e312c312c323e '<WCN1,1,2>'",
                     "901f000000 800 3c747265613e '<trea>'",
                     "9006000000 10 3c57434e312c312c323e '<WCN1,1,2>'", "901f000000 900 62656174"})
            .join(" | "));
    QStringList tags;
    for (const model_Protocoldata& rec : q)
        tags << QString::number(rec.deviceType, 16) + '/' + QString::number(rec.connectType) + '/' +
                    QString::number(rec.dataType);
    QCOMPARE(tags.join(' '), QStringLiteral("250310/5/0 250310/5/0 250502/5/0 "
                                            "250502/5/0 2d0000/5/0 250300/3/7 250300/3/2 "
                                            "900000/4/0 900000/4/0 900000/4/0 900001/4/0"));
    QCOMPARE(int(q.last().msgCode), 20004);

    DalTarsel::isConnected = false;
    dal.setContainerParamForT3(5000, text);
    dal.sendHeartbeatForKR2(100);
    dal.f_SendCmdFoNV(600, 0x92, 1, 2, 3, 4, "abc", QByteArray());
    dal.sendHeartbeat(100);
    dal.sendHeartbeatForH40(100);
    dal.sendHeartbeatForH40B(100, QByteArray("beat"));
    QVERIFY(takeQueued().isEmpty());
}

// KR2: an EDID upload drops the checksum byte; the container index is kept, and sent to a
// KR2 only.
void tst_dialects::kr2ContainerAndEdid() {
    QByteArray block(129, '\0');
    for (int i = 0; i < block.size(); ++i)
        block[i] = char(i);
    const model_Protocoldata edid = sendTo(KR2, QByteArray::fromHex("f00c008100"), block);
    QCOMPARE(edid.Datablock, QStringLiteral("edid file"));
    QCOMPARE(edid.arryDatablock, block.left(128));
    QVERIFY(sendTo(KR2, QByteArray::fromHex("f00c000000"), "").arryDatablock.isEmpty());

    DalTarsel dal;
    Utility_Manage::setDeviceType(T9);
    dal.setCurContainerIndexForT9(7);
    QCOMPARE(dal.curContainerIndex, 7);
    QVERIFY(takeQueued().isEmpty());
    Utility_Manage::setDeviceType(KR2);
    dal.setCurContainerIndexForT9(-2);
    QCOMPARE(dal.curContainerIndex, -2);
    QCOMPARE(describe(takeQueued()),
             QStringLiteral("f03bfe0000 3000 2873657474696e672c636772702c2d3229 "
                            "'(setting,cgrp,-2)'"));
}

// NV: the scene name is cut at its first NUL.
void tst_dialects::nvSceneName() {
    const QString name = QString("Hall") + QChar(0) + "xyz";
    QCOMPARE(sendTo(NV, QByteArray::fromHex("681a020000"), {}, name).Datablock,
             QStringLiteral("{SaveScene;600001;2,Hall}"));
    QCOMPARE(sendTo(NV, QByteArray::fromHex("681a070300"), {}, "Lobby").Datablock,
             QStringLiteral("{SaveScene;600004;7,Lobby}"));
}

// 92/1 keeps the text it came with and resets the message code; 6A/3 keeps the code.
void tst_dialects::h40bMessageCode() {
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

void tst_dialects::h40bEdidKeepsEveryByte_data() {
    QTest::addColumn<QByteArray>("edid");
    QTest::newRow("128-byte EDID") << edidBlock();
    QTest::newRow("zeros inside and at the end") << QByteArray("A\0\0B\xff\0", 6);
    QTest::newRow("only a zero") << QByteArray(1, '\0');
}

void tst_dialects::h40bEdidKeepsEveryByte() {
    QFETCH(QByteArray, edid);
    const model_Protocoldata rec = sendTo(0x900001, QByteArray::fromHex("f00c050000"), edid);
    const QString element = "<Edid port=\"5\" cmd=\"update\">" + latin1Text(edid) + "</Edid>\n";
    QCOMPARE(rec.Datablock, kComposedHead + element + "</Message>\n");
    QCOMPARE(rec.arryDatablock,
             utf8Of((kComposedHead + "<Edid port=\"5\" cmd=\"update\">").toLatin1() + edid +
                    "</Edid>\n</Message>\n"));
    QCOMPARE(int(rec.msgCode), 20332);
}

QTEST_GUILESS_MAIN(tst_dialects)
#include "tst_dialects.moc"
