#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"

#include <QtTest>

#include <mutex>

namespace {

std::mutex warningLock;
QStringList warnings;

void collectWarning(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type != QtWarningMsg)
        return;
    std::lock_guard<std::mutex> lock(warningLock);
    warnings << message;
}

using ColourSetter = void (*)(DalTarsel&, int, QString const&);

const struct {
    const char* name;
    ColourSetter setter;
    int dat1;
} kColourSetters[] = {
    {"previewFont", [](DalTarsel& d, int t, QString const& c) { d.setPreviewFontColor(t, c); },
     0x1E},
    {"previewFrame", [](DalTarsel& d, int t, QString const& c) { d.setPreviewFrameColor(t, c); },
     0x22},
    {"h265Font", [](DalTarsel& d, int t, QString const& c) { d.setH265FontColor(t, c); }, 0x26},
    {"h265Frame", [](DalTarsel& d, int t, QString const& c) { d.setH265FrameColor(t, c); }, 0x2A}};

} // namespace

class tst_catalog_inputs : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void hdrDecimal_data();
    void hdrDecimal();
    void colour_data();
    void colour();
    void malformedColour_data();
    void malformedColour();
    void bankPlayClock_data();
    void bankPlayClock();
    void autoLoopTimes_data();
    void autoLoopTimes();
    void getMacSendsTwoCommands();
    void modelFields_data();
    void modelFields();
    void everyOperationRegistered();
};

void tst_catalog_inputs::hdrDecimal_data() {
    QTest::addColumn<bool>("gamma");
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("gamma 2.2") << true << 2.2 << QByteArray::fromHex("7752030214");
    QTest::newRow("gamma 0.05") << true << 0.05 << QByteArray::fromHex("7752030005");
    QTest::newRow("gamma 10.999 rounds up") << true << 10.999 << QByteArray::fromHex("7752030b00");
    QTest::newRow("gamma 1") << true << 1.0 << QByteArray::fromHex("7752030100");
    QTest::newRow("bright 1.75") << false << 1.75 << QByteArray::fromHex("775403014b");
    QTest::newRow("bright 0.5") << false << 0.5 << QByteArray::fromHex("7754030032");
}

void tst_catalog_inputs::hdrDecimal() {
    QFETCH(bool, gamma);
    QFETCH(double, value);
    QFETCH(QByteArray, head);
    DalTarsel dal;
    if (gamma)
        dal.setHdrGamma(1500, 3, value);
    else
        dal.setHdrBrightFactor(1500, 3, value);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), head);
    QCOMPARE(records[0].timeout, 1500);
    QVERIFY(records[0].arryDatablock.isEmpty());
}

void tst_catalog_inputs::colour_data() {
    QTest::addColumn<int>("setter");
    QTest::addColumn<QString>("colour");
    QTest::addColumn<QByteArray>("rgb");
    for (int i = 0; i < 4; ++i) {
        QTest::addRow("%s mixed case", kColourSetters[i].name)
            << i << "#1A2b3C" << QByteArray::fromHex("1a2b3c");
        QTest::addRow("%s white", kColourSetters[i].name)
            << i << "#FFFFFF" << QByteArray::fromHex("ffffff");
        QTest::addRow("%s black", kColourSetters[i].name)
            << i << "#000000" << QByteArray::fromHex("000000");
    }
}

void tst_catalog_inputs::colour() {
    QFETCH(int, setter);
    QFETCH(QString, colour);
    QFETCH(QByteArray, rgb);
    DalTarsel dal;
    kColourSetters[setter].setter(dal, 2500, colour);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]),
             QByteArray::fromHex("79") + char(kColourSetters[setter].dat1) + rgb);
    QCOMPARE(records[0].timeout, 2500);
}

void tst_catalog_inputs::malformedColour_data() {
    QTest::addColumn<QString>("colour");
    QTest::newRow("empty") << QString();
    QTest::newRow("hash only") << "#";
    QTest::newRow("short") << "#12345";
    QTest::newRow("long") << "#1234567";
    QTest::newRow("no hash") << "123456";
    QTest::newRow("no hash, seven") << "A123456";
    QTest::newRow("not hex") << "#12345G";
    QTest::newRow("signed") << "#-12345";
    QTest::newRow("spaces") << "# 1 2 3";
    QTest::newRow("0x prefix") << "#0x1234";
}

void tst_catalog_inputs::malformedColour() {
    QFETCH(QString, colour);
    DalTarsel dal;
    for (const auto& s : kColourSetters) {
        warnings.clear();
        const QtMessageHandler previous = qInstallMessageHandler(collectWarning);
        s.setter(dal, 3000, colour);
        qInstallMessageHandler(previous);
        QVERIFY(takeQueued().isEmpty());
        QCOMPARE(warnings.size(), 1);
        QVERIFY(warnings[0].contains(QLatin1String("Color--bad colour=")));
    }
}

void tst_catalog_inputs::bankPlayClock_data() {
    QTest::addColumn<QString>("op");
    QTest::addColumn<int>("year");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("year 2024") << "setBankPlayYear" << 2024 << QByteArray::fromHex("8b00001418");
    QTest::newRow("year 1999") << "setBankPlayYear" << 1999 << QByteArray::fromHex("8b00001363");
    QTest::newRow("year 2100") << "setBankPlayYear" << 2100 << QByteArray::fromHex("8b00001500");
    QTest::newRow("date") << "setBankPlayDate" << 0 << QByteArray::fromHex("8b00010c1f");
    QTest::newRow("week") << "setBankPlayWeek" << 0 << QByteArray::fromHex("8b00020600");
    QTest::newRow("time") << "setBankPlayTime" << 0 << QByteArray::fromHex("8b02173b3a");
    QTest::newRow("switch") << "setBankPlayClockSwitch" << 0 << QByteArray::fromHex("8b06010000");
}

void tst_catalog_inputs::bankPlayClock() {
    QFETCH(QString, op);
    QFETCH(int, year);
    QFETCH(QByteArray, head);
    ModelBankPlayer player;
    player.timeout = 4321;
    player.year = year;
    player.month = 12;
    player.day = 31;
    player.weekday = 6;
    player.hours = 23;
    player.minutes = 59;
    player.seconds = 58;
    player.clockSwitch = 1;
    DalTarsel dal;
    if (op == QLatin1String("setBankPlayYear"))
        dal.setBankPlayYear(player);
    else if (op == QLatin1String("setBankPlayDate"))
        dal.setBankPlayDate(player);
    else if (op == QLatin1String("setBankPlayWeek"))
        dal.setBankPlayWeek(player);
    else if (op == QLatin1String("setBankPlayTime"))
        dal.setBankPlayTime(player);
    else
        dal.setBankPlayClockSwitch(player);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), head);
    QCOMPARE(records[0].timeout, 4321);
}

void tst_catalog_inputs::autoLoopTimes_data() {
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("two banks") << QList<int>{1, 0x1234} << QByteArray::fromHex("0100341247");
    QTest::newRow("sum wraps") << QList<int>{0xFFFF, 0x0202} << QByteArray::fromHex("ffff020202");
    QTest::newRow("none") << QList<int>{} << QByteArray::fromHex("00");
}

void tst_catalog_inputs::autoLoopTimes() {
    QFETCH(QList<int>, times);
    QFETCH(QByteArray, block);
    ModelBankPlayer player;
    player.timeout = 3500;
    player.autoLoopTimes = times;
    DalTarsel().setAutoLoopTimes(player);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("8b2000") + char(block.size()) + '\0');
    QCOMPARE(records[0].arryDatablock, block);
    QCOMPARE(records[0].timeout, 3500);
}

void tst_catalog_inputs::getMacSendsTwoCommands() {
    DalTarsel().getMac(1200);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 2);
    QCOMPARE(headOf(records[0]), QByteArray::fromHex("8e05000000"));
    QCOMPARE(headOf(records[1]), QByteArray::fromHex("8e07000000"));
    QCOMPARE(records[1].timeout, 1200);
}

void tst_catalog_inputs::modelFields_data() {
    QTest::addColumn<QString>("op");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("setIP") << "setIP" << QByteArray::fromHex("880a0102fe");
    QTest::newRow("setMaskIP short text") << "setMaskIP" << QByteArray::fromHex("84ffff0000");
    QTest::newRow("setGateWayIP not numeric")
        << "setGateWayIP" << QByteArray::fromHex("8c00000000");
    QTest::newRow("setUSBCurFileIndex")
        << "setUSBCurFileIndex" << QByteArray::fromHex("7724023412");
    QTest::newRow("setByPassMode") << "setByPassMode" << QByteArray::fromHex("7740020500");
    QTest::newRow("setByPassMode past the list")
        << "setByPassMode9" << QByteArray::fromHex("7740090000");
    QTest::newRow("setPreviewX") << "setPreviewX" << QByteArray::fromHex("a014800700");
    QTest::newRow("setVGAX sends the low byte twice")
        << "setVGAX" << QByteArray::fromHex("7704043434");
}

void tst_catalog_inputs::modelFields() {
    QFETCH(QString, op);
    QFETCH(QByteArray, head);
    ModelTarsel model;
    model.timeout = 2000;
    model.ip = QStringLiteral("10.1.2.254");
    model.maskIP = QStringLiteral("255.255");
    model.gateWayIP = QStringLiteral("gateway");
    model.usbFileIndex = 0x1234;
    model.byPassModes = {0, 0, 5};
    model.previewX = 1920;
    DalTarsel dal;
    if (op == QLatin1String("setIP"))
        dal.setIP(model);
    else if (op == QLatin1String("setMaskIP"))
        dal.setMaskIP(model);
    else if (op == QLatin1String("setGateWayIP"))
        dal.setGateWayIP(model);
    else if (op == QLatin1String("setUSBCurFileIndex"))
        dal.setUSBCurFileIndex(2, model);
    else if (op == QLatin1String("setByPassMode"))
        dal.setByPassMode(2, model);
    else if (op == QLatin1String("setByPassMode9"))
        dal.setByPassMode(9, model);
    else if (op == QLatin1String("setPreviewX"))
        dal.setPreviewX(model);
    else
        dal.setVGAX(2000, 0x1234);
    const auto records = takeQueued();
    QCOMPARE(records.size(), 1);
    QCOMPARE(headOf(records[0]), head);
    QCOMPARE(records[0].timeout, 2000);
}

void tst_catalog_inputs::everyOperationRegistered() {
    // clang-format off
    const QStringList ops = QStringList()
#include "group_signatures_begin.h"
#include "catalog/inputs.def"
#include "group_signatures_end.h"
        ;
    // clang-format on
    QCOMPARE(ops.size(), 126);
    verifyGroup(ops, QStringLiteral("inputs.txt"));
}

QTEST_GUILESS_MAIN(tst_catalog_inputs)
#include "tst_catalog_inputs.moc"
