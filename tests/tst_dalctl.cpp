#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryFile>
#include <QtTest>

namespace {

struct Run {
    int exitCode;
    QString out;
    QString err;
};

Run dalctl(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral(DALCTL_PATH), arguments);
    process.waitForFinished(30000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

class tst_dalctl : public QObject {
    Q_OBJECT
private slots:
    void rawOnFamilyCode();
    void jsonRecord();
    void traceShowsTheLine();
    void outParametersAndResults();
    void modelOverride();
    void badInput_data();
    void badInput();
    void unknownOperationSuggests();
};

void tst_dalctl::rawOnFamilyCode() {
    const Run run = dalctl({"--device", "0x2C0201", "--connect-type", "3", "raw", "--timeout",
                            "1500", "0x16A", "3", "0", "0x102", "0", "a0b1"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.out.contains("device 0x2C0202 (native), connect 3"), qPrintable(run.out));
    QVERIFY(run.out.contains("timeout 1500"));
    QVERIFY(run.out.contains("head: 00 00 6a 03 00 02 00 00"));
    QVERIFY(run.out.contains("arryDatablock (2 bytes): a0b1"));
}

void tst_dalctl::jsonRecord() {
    const Run run = dalctl({"--json", "raw", "--text", "hello", "0x78", "0", "1", "0", "0"});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 1);
    const QJsonObject rec = QJsonDocument::fromJson(lines[0].toUtf8()).object();
    QCOMPARE(rec.value("head").toString(), QStringLiteral("0000780001000000"));
    QCOMPARE(rec.value("Datablock").toString(), QStringLiteral("hello"));
    QCOMPARE(rec.value("deviceType").toString(), QStringLiteral("0x700000"));
    QCOMPARE(rec.value("timeout").toInt(), 3000);
}

void tst_dalctl::traceShowsTheLine() {
    const Run quiet = dalctl({"raw", "0x6A", "3", "0", "0", "0"});
    QVERIFY(!quiet.out.contains("addToQueue"));
    const Run traced = dalctl({"--trace", "raw", "0x6A", "3", "0", "0", "0"});
    QVERIFY2(traced.out.contains("---addToQueue----CMD= \"6a\" ---DAT1= \"3\""),
             qPrintable(traced.out));
}

void tst_dalctl::outParametersAndResults() {
    const Run split = dalctl({"splitTwoByte", "0x1234"});
    QCOMPARE(split.exitCode, 0);
    QVERIFY2(split.out.contains("low: 52 (0x34)") && split.out.contains("high: 18 (0x12)"),
             qPrintable(split.out));
    const Run rgb = dalctl({"f_RGBtoInt", "1", "2", "3"});
    QVERIFY2(rgb.out.contains("returned: 66051 (0x10203)"), qPrintable(rgb.out));
    const Run block = dalctl({"getBlock", "a1b2c3", "2"});
    QVERIFY2(block.out.contains("returned: 2 bytes: a1b2"), qPrintable(block.out));
}

void tst_dalctl::modelOverride() {
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write(R"({"ModelTarsel": {"maxOutputCount": 9}})");
    file.flush();
    QCOMPARE(dalctl({"--model", file.fileName(), "raw", "1", "2", "3", "4", "5"}).exitCode, 0);

    QTemporaryFile bad;
    QVERIFY(bad.open());
    bad.write(R"({"noSuchMember": 1})");
    bad.flush();
    const Run run = dalctl({"--model", bad.fileName(), "raw", "1", "2", "3", "4", "5"});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains("noSuchMember"), qPrintable(run.err));
}

void tst_dalctl::badInput_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no operation") << QStringList{} << "no operation given";
    QTest::newRow("too few arguments") << QStringList{"f_RGBtoInt", "1"} << "does not take 1";
    QTest::newRow("not an integer")
        << QStringList{"f_RGBtoInt", "1", "x", "3"} << "\"x\" is not an integer";
    QTest::newRow("integer too wide")
        << QStringList{"splitTwoByte", "70000"} << "outside -32768..32767";
    QTest::newRow("odd hex") << QStringList{"getBlock", "abc", "1"} << "not hex bytes";
    QTest::newRow("length past buffer")
        << QStringList{"setCheckSum", "0102", "3"} << "buffer holds 2 bytes";
    QTest::newRow("bad boolean") << QStringList{"setRetFlagStatus", "maybe"} << "not a boolean";
    QTest::newRow("bad record json")
        << QStringList{"addToQueue", "{\"head\":\"00\"}"} << "8 bytes of hex";
    QTest::newRow("raw arity") << QStringList{"raw", "1", "2"} << "raw takes 5 or 6 arguments";
    QTest::newRow("unknown device")
        << QStringList{"--device", "T99", "raw", "1", "2", "3", "4", "5"} << "unknown device T99";
    QTest::newRow("unreadable model")
        << QStringList{"--model", "/nonexistent/m.json", "raw", "1", "2", "3", "4", "5"}
        << "cannot read model file";
    QTest::newRow("unknown option") << QStringList{"--bogus", "raw"} << "Unknown option";
}

void tst_dalctl::badInput() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Run run = dalctl(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());
}

void tst_dalctl::unknownOperationSuggests() {
    const Run run = dalctl({"resetOutPortFPGB", "1", "2"});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains("unknown operation resetOutPortFPGB; did you mean: "
                              "DalTarsel::resetOutPortFPGA"),
             qPrintable(run.err));
}

QTEST_GUILESS_MAIN(tst_dalctl)
#include "tst_dalctl.moc"
