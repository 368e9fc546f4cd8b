#include "biz_cmdswork.h"
#include "biz_osd_cmdswork.h"
#include "dal_osd.h"
#include "dal_pommet.h"
#include "pacing.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

#include <chrono>
#include <climits>
#include <thread>

namespace {

// A key whose every read field holds a distinct value; label lengths 3, 2 and 4.
_KeyParam key(unsigned char seed) {
    _KeyParam k;
    for (int i = 0; i < 101; ++i)
        k.bytes[i] = static_cast<unsigned char>(seed + i);
    k.bytes[13] = 3;
    k.bytes[14] = 2;
    k.bytes[15] = 4;
    return k;
}

Model_PommetParam keyboard() {
    Model_PommetParam p;
    p.waitTime = 1234;
    p.lockValue = 0x5A;
    for (int i = 0; i < p.keysKind1.size(); ++i)
        p.keysKind1[i] = key(static_cast<unsigned char>(i * 3));
    for (int i = 0; i < p.keysKind2.size(); ++i)
        p.keysKind2[i] = key(static_cast<unsigned char>(0x40 + i));
    for (int i = 0; i < p.keysKind6.size(); ++i)
        p.keysKind6[i].bytes[16] = i % 3 == 0 ? 'N' : 'S';
    return p;
}

QByteArray bytes(const _KeyParam& k, int from, int count) {
    return QByteArray(reinterpret_cast<const char*>(k.bytes + from), count);
}

QByteArray checked(QByteArray block) {
    unsigned char sum = 0;
    for (char c : block)
        sum += static_cast<unsigned char>(c);
    return block + char(sum);
}

QVector<model_OsdParam> takeOsdQueued() {
    std::lock_guard<std::mutex> lock(biz_Osd_CMDSWork::sendQueueLock);
    QVector<model_OsdParam> records(biz_Osd_CMDSWork::sendQueue.begin(),
                                    biz_Osd_CMDSWork::sendQueue.end());
    biz_Osd_CMDSWork::sendQueue.clear();
    return records;
}

} // namespace

class tst_keyboard : public QObject {
    Q_OBJECT
private slots:
    void init() {
        resetLibrary();
        Utility_Manage::setConnectToneFlag(1);
        Model_PommetParam::gOledLength = 5;
    }

    void defaultPacing(); // first: before any other test could change the pacing
    void linkFilter();
    void commands();
    void keyLeds();
    void labels();
    void firmwareChoosesLayout();
    void refused_data();
    void refused();
    void refusedAtIntLimits_data();
    void refusedAtIntLimits();
    void oversizeLabelBlock();
    void pacingHeldInsideTheLock();
    void probes();
    void osd();
};

// The application's pacing: 10 ms after each keyboard record, 500 ms between the probes.
void tst_keyboard::defaultPacing() {
    QCOMPARE(dal::pacing::keyboard(), std::chrono::milliseconds(10));
    QCOMPARE(dal::pacing::probes(), std::chrono::milliseconds(500));
    const Model_PommetParam p = keyboard();
    const auto start = std::chrono::steady_clock::now();
    Dal_Pommet().getSN(p);
    Dal_Pommet().getSN(p);
    QVERIFY(std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(18));
    QCOMPARE(takeQueued().size(), 2);
}

// Without a confirmed link only the probes pass; nothing passes while disconnected.
void tst_keyboard::linkFilter() {
    const int commands[][3] = {{0x6A, 0x11, 1}, {0xA2, 0x02, 1}, {0xA2, 0x15, 1}, {0xA2, 0x16, 1},
                               {0x9A, 0xB1, 1}, {0xA2, 0x43, 0}, {0x6A, 0x12, 0}, {0x9A, 0x11, 0}};
    Dal_Pommet keyboard;
    for (const auto& c : commands) {
        for (int flag : {0, 1}) {
            Utility_Manage::setConnectToneFlag(flag);
            keyboard.f_SendCmd(100, c[0], c[1], 0, 0, 0, nullptr, 0);
            QCOMPARE(takeQueued().size(), flag || c[2] ? 1 : 0);
        }
        Dal_Pommet::isConnected = false;
        keyboard.f_SendCmd(100, c[0], c[1], 0, 0, 0, nullptr, 0);
        QVERIFY(takeQueued().isEmpty());
        Dal_Pommet::isConnected = true;
    }
}

void tst_keyboard::commands() {
    Dal_Pommet k;
    const Model_PommetParam p = keyboard();
    k.setLockStatus(p);
    k.setTbarRate(p, 0x107);
    k.setTbarCalibration(p, 0);
    k.setTbarCalibration(p, 5);
    k.setDevTypeLED(0);
    k.setDevTypeLED(-3);
    k.setDevTypeLED(3);
    const auto records = takeQueued();
    QCOMPARE(describe(records), QStringLiteral("a2065a0000 1234 | a216070000 3000 | "
                                               "1004010000 3000 | 1004000000 3000 | "
                                               "a219030000 5000"));
    for (const model_Protocoldata& rec : records) {
        QCOMPARE(rec.deviceType, 0x400000);
        QCOMPARE(int(rec.statusByte), 0);
    }
}

void tst_keyboard::keyLeds() {
    Model_PommetParam p = keyboard();
    const _KeyParam& entry = p.keysKind1[2 * 16 + 110 - 105];
    Dal_Pommet k;
    k.setKeyLed(1, 2, 110, p);
    k.setKeyLed_New(1, 2, 110, p);
    k.getKeyLed_New(0x1FF, p);
    k.setInputGropLed(1, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 4);
    QCOMPARE(headOf(records[0]).toHex(), QByteArray("a242046e00"));
    QCOMPARE(records[0].arryDatablock, checked(bytes(entry, 8, 3)));
    QCOMPARE(headOf(records[1]).toHex(), QByteArray("f042000600"));
    QCOMPARE(records[1].arryDatablock, checked(QByteArray::fromHex("6e00") + bytes(entry, 8, 3)));
    QCOMPARE(describe({records[2]}), QStringLiteral("f142000000 1234 ff0100"));
    // An input key whose label starts with "N" has no signal: state 2, otherwise 5.
    QByteArray inputs;
    for (int i = 16; i < 32; ++i)
        inputs += QByteArray(1, char(i % 3 == 0 ? 2 : 5)) + QByteArray::fromHex("0101");
    QCOMPARE(headOf(records[3]).toHex(), QByteArray("f040063100"));
    QCOMPARE(records[3].arryDatablock, checked(inputs));

    // A group's LEDs: 16 keys, 13 for kind 2 on model 605, none for a kind without a table.
    for (int model : {0, 605}) {
        p.keyboardModel = model;
        for (int kind : {1, 2, 4})
            k.setGroupKeyLed(kind, 1, p);
    }
    const auto groups = takeQueued();
    QCOMPARE(groups.size(), 4);
    const int counts[] = {16, 16, 16, 13};
    for (int i = 0; i < 4; ++i) {
        const QVector<_KeyParam>& table = i % 2 == 0 ? p.keysKind1 : p.keysKind2;
        QByteArray leds;
        for (int n = 0; n < counts[i]; ++n)
            leds += bytes(table[16 + n], 8, 3);
        QCOMPARE(groups[i].arryDatablock, checked(leds));
        QCOMPARE(
            headOf(groups[i]).toHex(),
            (QByteArray::fromHex("f040") + char(i % 2 + 1) + char(leds.size() + 1) + '\0').toHex());
        QCOMPARE(groups[i].timeout, 8000);
    }
}

// The variable layout sends attributes, the three lengths and the lines; the single-key form
// reads line 3 from line 2's storage. The fixed layout sends G bytes of lines 1 and 2.
void tst_keyboard::labels() {
    Model_PommetParam p = keyboard();
    p.keyboardModel = 605;
    Dal_Pommet k;
    k.setKeyOled_P5(1, 0, 105, p);
    Utility_Manage::setToneProcVer("2.0");
    k.setGroupKeyOled(2, 0, p);
    Utility_Manage::setToneProcVer("1.0");
    k.setGroupKeyOled(2, 0, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    const _KeyParam& e = p.keysKind1[0];
    QCOMPARE(headOf(records[0]).toHex(), QByteArray("f043001200"));
    QCOMPARE(records[0].arryDatablock, checked(QByteArray::fromHex("016900") + bytes(e, 11, 2) +
                                               QByteArray::fromHex("030204") + bytes(e, 16, 3) +
                                               bytes(e, 47, 2) + bytes(e, 47, 4)));
    QByteArray variable, fixed;
    for (int i = 0; i < 13; ++i) {
        const _KeyParam& g = p.keysKind2[i];
        variable += bytes(g, 11, 2) + QByteArray::fromHex("030204") + bytes(g, 16, 3) +
                    bytes(g, 47, 2) + bytes(g, 78, 4);
        fixed += bytes(g, 11, 2) + bytes(g, 16, 5) + bytes(g, 47, 5);
    }
    QCOMPARE(headOf(records[1]).toHex(), QByteArray("f04102b700")); // 13 * 14 + 1 = 183
    QCOMPARE(records[1].arryDatablock, checked(variable));
    QCOMPARE(headOf(records[2]).toHex(), QByteArray("f041029d00")); // 13 * 12 + 1 = 157
    QCOMPARE(records[2].arryDatablock, checked(fixed));
    QCOMPARE(records[2].timeout, 4000);
}

// Firmware up to "1.02" takes the fixed layout (2G + 5 bytes), later firmware the variable one.
void tst_keyboard::firmwareChoosesLayout() {
    const Model_PommetParam p = keyboard();
    const _KeyParam& e = p.keysKind2[16];
    const QByteArray fixed =
        checked(QByteArray::fromHex("cb00") + bytes(e, 11, 2) + bytes(e, 16, 5) + bytes(e, 47, 5));
    for (const QString version : {"1.02", "", "1.1", "1.02a"}) {
        Utility_Manage::setToneProcVer(version);
        Dal_Pommet().setKeyOled_New(2, 1, 203, p);
        const model_Protocoldata rec = takeQueued().value(0);
        const bool isFixed = version.size() < 3 || version == QLatin1String("1.02");
        QCOMPARE(rec.arryDatablock.size(), isFixed ? 15 : 18);
        if (isFixed)
            QCOMPARE(rec.arryDatablock, fixed);
        QCOMPARE(headOf(rec).toHex().left(6), QByteArray("f04300"));
    }
}

// Keys outside their kind's table and labels reaching past the key's entry send nothing.
void tst_keyboard::refused_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("lengthAt"); // a label length byte set past the entry, or 0
    QTest::addColumn<int>("g");
    QTest::newRow("below first code") << 1 << 0 << 104 << 0 << 5;
    QTest::newRow("past last group") << 1 << 5 << 105 << 0 << 5;
    QTest::newRow("negative group") << 3 << -1 << 313 << 0 << 5;
    QTest::newRow("flat table end") << 4 << 0 << 600 << 0 << 5;
    QTest::newRow("line 1 too long") << 1 << 0 << 105 << 13 << 5;
    QTest::newRow("line 2 too long") << 1 << 0 << 105 << 14 << 5;
    QTest::newRow("fixed line 2 past the entry") << 1 << 0 << 105 << 0 << 60;
}

void tst_keyboard::refused() {
    QFETCH(int, kind);
    QFETCH(int, group);
    QFETCH(int, key);
    QFETCH(int, lengthAt);
    QFETCH(int, g);
    Model_PommetParam p = keyboard();
    for (_KeyParam& entry : p.keysKind1)
        entry.bytes[lengthAt] = lengthAt ? 90 : entry.bytes[0];
    Model_PommetParam::gOledLength = g;
    Utility_Manage::setToneProcVer("1.0");
    MessageCapture messages;
    Dal_Pommet k;
    if (!lengthAt && g == 5)
        k.setKeyLed(kind, group, key, p);
    if (g == 5)
        k.setKeyOled_P5(kind, group, key, p);
    else
        k.setKeyOled_New(kind, group, key, p);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(messages.warnings().size(), !lengthAt && g == 5 ? 2 : 1);
}

// Groups and keys near the int limits, whose table index would wrap into the table in 32 bits.
void tst_keyboard::refusedAtIntLimits_data() {
    QTest::addColumn<bool>("single"); // one key, else the whole group
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("key");
    QTest::newRow("key, group INT_MAX") << true << INT_MAX << 121;
    QTest::newRow("key, group INT_MIN") << true << INT_MIN << 105;
    QTest::newRow("group INT_MAX") << false << INT_MAX << 0;
    QTest::newRow("group INT_MAX / 16") << false << INT_MAX / 16 << 0;
}

void tst_keyboard::refusedAtIntLimits() {
    QFETCH(bool, single);
    QFETCH(int, group);
    QFETCH(int, key);
    const Model_PommetParam p = keyboard();
    verifyRefused(
        [&] {
            single ? Dal_Pommet().setKeyLed(1, group, key, p)
                   : Dal_Pommet().setGroupKeyLed(1, group, p);
        },
        single ? "setKeyLed" : "setGroupKeyLed", "is outside the table");
}

// Sixteen labels of the longest lines an entry holds outgrow the keyboard's block.
void tst_keyboard::oversizeLabelBlock() {
    Model_PommetParam p = keyboard();
    for (_KeyParam& entry : p.keysKind1) {
        entry.bytes[13] = 85;
        entry.bytes[14] = 54;
        entry.bytes[15] = 23;
    }
    // 16 keys of 2 + 3 + 85 + 54 + 23 bytes, then the checksum.
    verifyRefused([&] { Dal_Pommet().setGroupKeyOled_P5(1, 0, p); }, "setGroupKeyOled_P5",
                  "a block of 2673 bytes exceeds the keyboard's 2048");
}

// Another producer sees the keyboard's record only once its pause is over: the pause is
// taken before the queue lock is released.
void tst_keyboard::pacingHeldInsideTheLock() {
    const Model_PommetParam p = keyboard();
    const auto start = std::chrono::steady_clock::now();
    std::thread keys([&] { Dal_Pommet().getSN(p); });
    for (bool seen = false; !seen;) {
        std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
        seen = !biz_CMDSWork::queueHexCmd.empty();
    }
    const auto seenAfter = std::chrono::steady_clock::now() - start;
    keys.join();
    QVERIFY(seenAfter >= std::chrono::milliseconds(10));
    QCOMPARE(takeQueued().size(), 1);
}

// The discovery probes are queued whatever the link state, each tagged for its family.
void tst_keyboard::probes() {
    Dal_Pommet::isConnected = false;
    Utility_Manage::setConnectToneFlag(0);
    Utility_Manage::setLocalIP("default");
    MessageCapture messages;
    Dal_Pommet k;
    k.searchDeviceForT9(700);
    k.searchDeviceForKR2(701, true);
    k.searchDeviceForT3(702, false);
    k.searchDeviceForVM6S(703, true);
    k.searchDeviceForVantaZ(704, false);
    k.searchDeviceForNV(900, 0x107, QStringLiteral("Default"));
    Utility_Manage::setLocalIP("Default");
    k.searchDeviceForNV(900, 0x107, QStringLiteral("Default"));
    const auto r = takeQueued();
    QCOMPARE(describe({r[3], r[7], r[8]}),
             QStringLiteral("6801000000 702 3c47424d473e '<GBMG>' | "
                            "6801070000 900 46494e445f4e4f44455f424f415244 | "
                            "6801070000 900 46494e445f4e4f44455f554e49"));
    QStringList tags;
    for (const model_Protocoldata& rec : r)
        tags << QString::number(rec.deviceType, 16) + '/' + QString::number(rec.connectType) + '/' +
                    QString::number(rec.statusByte);
    QCOMPARE(tags.join(' '), QStringLiteral("250300/0/2 250502/1/1 250502/1/1 250400/0/1 "
                                            "250400/0/1 2c0104/1/1 2c0202/0/1 2d0000/0/1 "
                                            "2d0000/0/1"));
    QCOMPARE(r[7].strAux1, QStringLiteral("Default"));
    QCOMPARE(messages.debug(), QStringList({"-----------------searchDeviceForT3--isCom= false",
                                            "-----------------searchDeviceForVM6S--isCom= true",
                                            "-----------------searchDeviceForVM6S--isCom= false"}));

    // Concurrent searches keep each call's pair together.
    std::thread first([] { Dal_Pommet().searchDeivce(10); });
    std::thread second([] { Dal_Pommet().searchDeivce(20); });
    first.join();
    second.join();
    const auto pairs = takeQueued();
    QCOMPARE(pairs.size(), 4);
    for (int pair = 0; pair < 2; ++pair) {
        QCOMPARE(headOf(pairs[2 * pair]).toHex(), QByteArray("6801000000"));
        QCOMPARE(headOf(pairs[2 * pair + 1]).toHex(), QByteArray("6a11000000"));
        QCOMPARE(pairs[2 * pair].timeout, pairs[2 * pair + 1].timeout);
    }
}

// The OSD box's 11-byte header: command, then the payload length big-endian.
void tst_keyboard::osd() {
    dal_Osd osd;
    osd.clearScreen("t");
    osd.sendScrollInfo(1, 2, 0x1234, "t");
    osd.setOsdShowModel(257, "t");
    osd.sendTextInfo(0x0102, 0x0304, 5, 6, 7, 8, 9, 10, 11, "AB", 99, "t");
    osd.sendTextInfo(0, 0, 0, 0, 0, 0, 0, 0, 0, QString(300, 'x'), 0, "t");
    osd.f_SendCmd(0x107, nullptr, 0x1234, "t", 7);
    QStringList shown;
    for (const model_OsdParam& rec : takeOsdQueued()) {
        QCOMPARE(rec.tag, QStringLiteral("t"));
        shown << QString::fromLatin1(
                     QByteArray(reinterpret_cast<const char*>(rec.frameHead), 11).toHex()) +
                     ' ' + QString::number(rec.timeout) + ' ' +
                     QString::fromLatin1(rec.payload.left(16).toHex());
    }
    QCOMPARE(shown,
             QStringList({"0000fedc02000000000d0a 5000 ", "0000fedc0a000000040d0a 1000 01023412",
                          "0000fedc0b000000010d0a 2000 00",
                          "0000fedc110000000e0d0a 2000 030401020502060708090a0b4142",
                          "0000fedc11000001380d0a 2000 00000000002c00000000000078787878",
                          "0000fedc07000012340d0a 7 "}));
    QByteArray buffer = QByteArray::fromHex("ff0277");
    osd.setCheckSum(reinterpret_cast<unsigned char*>(buffer.data()), 2);
    QCOMPARE(buffer.toHex(), QByteArray("ff0201"));
}

QTEST_GUILESS_MAIN(tst_keyboard)
#include "tst_keyboard.moc"
