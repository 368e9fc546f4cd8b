#include "biz_cmdswork.h"
#include "dal_pommet.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

#include <chrono>
#include <thread>

namespace {

// A key whose every read field holds a distinct value.
_KeyParam key(unsigned char seed) {
    _KeyParam k;
    for (int i = 0; i < 101; ++i)
        k.bytes[i] = static_cast<unsigned char>(seed + i);
    k.bytes[13] = 3; // L1
    k.bytes[14] = 2; // L2
    k.bytes[15] = 4; // L3
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

} // namespace

class tst_pommet : public QObject {
    Q_OBJECT
private slots:
    void init() {
        resetLibrary();
        Utility_Manage::setConnectToneFlag(1);
        Model_PommetParam::gOledLength = 5;
    }

    void linkFilter_data();
    void linkFilter();
    void simpleCommands();
    void keyLed();
    void groupLed_data();
    void groupLed();
    void inputGroupLed();
    void singleVariableLabel();
    void firmwareChoosesLayout_data();
    void firmwareChoosesLayout();
    void groupLabels();
    void outOfTableRefused_data();
    void outOfTableRefused();
    void pacingHeldInsideTheLock();
};

void tst_pommet::linkFilter_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("dat1");
    QTest::addColumn<bool>("probe");
    QTest::newRow("getSN") << 0x6A << 0x11 << true;
    QTest::newRow("setRuningStatus") << 0xA2 << 0x02 << true;
    QTest::newRow("getKeyBoardVersion") << 0xA2 << 0x15 << true;
    QTest::newRow("setTbarRate") << 0xA2 << 0x16 << true;
    QTest::newRow("read_MCU_VerSion") << 0x9A << 0xB1 << true;
    QTest::newRow("getKeyLed") << 0xA2 << 0x43 << false;
    QTest::newRow("6A/12") << 0x6A << 0x12 << false;
    QTest::newRow("9A/11") << 0x9A << 0x11 << false;
}

void tst_pommet::linkFilter() {
    QFETCH(int, cmd);
    QFETCH(int, dat1);
    QFETCH(bool, probe);
    Dal_Pommet keyboard;
    Utility_Manage::setConnectToneFlag(0);
    keyboard.f_SendCmd(100, cmd, dat1, 0, 0, 0, nullptr, 0);
    QCOMPARE(takeQueued().size(), probe ? 1 : 0);
    Utility_Manage::setConnectToneFlag(1);
    keyboard.f_SendCmd(100, cmd, dat1, 0, 0, 0, nullptr, 0);
    QCOMPARE(takeQueued().size(), 1);
    Dal_Pommet::isConnected = false;
    keyboard.f_SendCmd(100, cmd, dat1, 0, 0, 0, nullptr, 0);
    QCOMPARE(takeQueued().size(), 0);
}

void tst_pommet::simpleCommands() {
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
    QCOMPARE(records.size(), 5);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("a2065a0000"));
    QCOMPARE(records[0].timeout, 1234);
    QCOMPARE(records[0].deviceType, 0x400000);
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("a216070000"));
    QCOMPARE(records[1].timeout, 3000);
    QCOMPARE(headOf(records[2]), QByteArray::fromHex("1004010000"));
    QCOMPARE(headOf(records[3]), QByteArray::fromHex("1004000000"));
    QCOMPARE(headOf(records[4]), QByteArray::fromHex("a219030000"));
    QCOMPARE(records[4].timeout, 5000);
}

void tst_pommet::keyLed() {
    Dal_Pommet k;
    const Model_PommetParam p = keyboard();
    const _KeyParam& entry = p.keysKind1[2 * 16 + 110 - 105];
    k.setKeyLed(1, 2, 110, p);
    k.setKeyLed_New(1, 2, 110, p);
    k.getKeyLed_New(0x1FF, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 3);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("a242046e00"));
    QCOMPARE(records[0].arryDatablock, checked(bytes(entry, 8, 3)));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("f042000600"));
    QCOMPARE(records[1].arryDatablock, checked(QByteArray::fromHex("6e00") + bytes(entry, 8, 3)));
    QCOMPARE(headOf(records[2]), QByteArray::fromHex("f142000000"));
    QCOMPARE(records[2].arryDatablock, QByteArray::fromHex("ff0100"));
}

void tst_pommet::groupLed_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("keys");
    QTest::newRow("kind 2") << 2 << 0 << 16;
    QTest::newRow("kind 2 on model 605") << 2 << 605 << 13;
    QTest::newRow("kind 1 on model 605") << 1 << 605 << 16;
    QTest::newRow("kind without a table") << 4 << 0 << 0;
}

void tst_pommet::groupLed() {
    QFETCH(int, kind);
    QFETCH(int, model);
    QFETCH(int, keys);
    Model_PommetParam p = keyboard();
    p.keyboardModel = model;
    Dal_Pommet().setGroupKeyLed(kind, 1, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), keys ? 1 : 0);
    if (!keys)
        return;
    const QVector<_KeyParam>& table = kind == 1 ? p.keysKind1 : p.keysKind2;
    QByteArray expected;
    for (int i = 0; i < keys; ++i)
        expected += bytes(table[16 + i], 8, 3);
    QCOMPARE(records[0].arryDatablock, checked(expected));
    QCOMPARE(int(records[0].cmdHead[5]), keys * 3 + 1);
    QCOMPARE(headOf(records[0]).left(3), QByteArray::fromHex("f040") + char(kind));
    QCOMPARE(records[0].timeout, 8000);
}

void tst_pommet::inputGroupLed() {
    Dal_Pommet().setInputGropLed(1, keyboard());
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f040063100"));
    QByteArray expected;
    for (int i = 16; i < 32; ++i)
        expected += QByteArray(1, char(i % 3 == 0 ? 2 : 5)) + QByteArray::fromHex("0101");
    QCOMPARE(records[0].arryDatablock, checked(expected));
}

void tst_pommet::singleVariableLabel() {
    const Model_PommetParam p = keyboard();
    const _KeyParam& e = p.keysKind1[105 - 105];
    Dal_Pommet().setKeyOled_P5(1, 0, 105, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f043001200"));
    // Line 3 is read from line 2's storage.
    const QByteArray expected = QByteArray::fromHex("016900") + bytes(e, 11, 2) +
                                QByteArray::fromHex("030204") + bytes(e, 16, 3) + bytes(e, 47, 2) +
                                bytes(e, 47, 4);
    QCOMPARE(records[0].arryDatablock, checked(expected));
}

void tst_pommet::firmwareChoosesLayout_data() {
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("fixed");
    QTest::newRow("1.02") << "1.02" << true;
    QTest::newRow("0.9") << "0.9" << true;
    QTest::newRow("empty") << "" << true;
    QTest::newRow("1.1") << "1.1" << false;
    QTest::newRow("1.10") << "1.10" << false;
    QTest::newRow("1.02a") << "1.02a" << false;
}

void tst_pommet::firmwareChoosesLayout() {
    QFETCH(QString, version);
    QFETCH(bool, fixed);
    Utility_Manage::setToneProcVer(version);
    const Model_PommetParam p = keyboard();
    const _KeyParam& e = p.keysKind2[203 - 203 + 16];
    Dal_Pommet().setKeyOled_New(2, 1, 203, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    if (fixed) {
        const QByteArray expected =
            QByteArray::fromHex("cb00") + bytes(e, 11, 2) + bytes(e, 16, 5) + bytes(e, 47, 5);
        QCOMPARE(records[0].arryDatablock, checked(expected));
        QCOMPARE(headOf(records[0]), QByteArray::fromHex("f043000f00")); // 2G + 5
    } else {
        QCOMPARE(records[0].arryDatablock.size(), 18);
        QCOMPARE(int(records[0].arryDatablock[0]), 1);
    }
}

void tst_pommet::groupLabels() {
    Model_PommetParam p = keyboard();
    p.keyboardModel = 605;
    Utility_Manage::setToneProcVer("2.0");
    Dal_Pommet k;
    k.setGroupKeyOled(2, 0, p);
    Utility_Manage::setToneProcVer("1.0");
    k.setGroupKeyOled(2, 0, p);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QByteArray variable, fixed;
    for (int i = 0; i < 13; ++i) {
        const _KeyParam& e = p.keysKind2[i];
        variable += bytes(e, 11, 2) + QByteArray::fromHex("030204") + bytes(e, 16, 3) +
                    bytes(e, 47, 2) + bytes(e, 78, 4);
        fixed += bytes(e, 11, 2) + bytes(e, 16, 5) + bytes(e, 47, 5);
    }
    QCOMPARE(records[0].arryDatablock, checked(variable)); // 13 * 14 + 1 = 183
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("f04102b700"));
    QCOMPARE(records[1].arryDatablock, checked(fixed)); // 13 * 12 + 1 = 157
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("f041029d00"));
    QCOMPARE(records[1].timeout, 4000);
}

void tst_pommet::outOfTableRefused_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("key");
    QTest::newRow("below first code") << 1 << 0 << 104;
    QTest::newRow("past last group") << 1 << 5 << 105;
    QTest::newRow("negative group") << 3 << -1 << 313;
    QTest::newRow("flat table end") << 4 << 0 << 600;
    QTest::newRow("flat negative") << 7 << 0 << -1;
}

void tst_pommet::outOfTableRefused() {
    QFETCH(int, kind);
    QFETCH(int, group);
    QFETCH(int, key);
    const Model_PommetParam p = keyboard();
    Dal_Pommet k;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("setKeyLed: key"));
    k.setKeyLed(kind, group, key, p);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("setKeyOled_P5: key"));
    k.setKeyOled_P5(kind, group, key, p);
    QVERIFY(takeQueued().isEmpty());
}

void tst_pommet::pacingHeldInsideTheLock() {
    // Another producer sees the keyboard's record only once its pause is over: the pause is
    // taken before the queue lock is released.
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

QTEST_GUILESS_MAIN(tst_pommet)
#include "tst_pommet.moc"
