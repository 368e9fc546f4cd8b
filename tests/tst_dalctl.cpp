#include <QProcess>
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
    void badInput_data();
    void badInput();
};

void tst_dalctl::badInput_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no operation") << QStringList{} << "no operation given";
    QTest::newRow("too few arguments") << QStringList{"f_RGBtoInt", "1"} << "does not take 1";
    QTest::newRow("not an integer")
        << QStringList{"f_RGBtoInt", "1", "x", "3"} << "\"x\" is not an integer";
    QTest::newRow("length past buffer")
        << QStringList{"setCheckSum", "0102", "3"} << "buffer holds 2 bytes";
    QTest::newRow("bad record json")
        << QStringList{"addToQueue", "{\"head\":\"00\"}"} << "8 bytes of hex";
    QTest::newRow("raw arity") << QStringList{"raw", "1", "2"} << "raw takes 5 or 6 arguments";
    QTest::newRow("unknown device")
        << QStringList{"--device", "T99", "raw", "1", "2", "3", "4", "5"} << "unknown device T99";
    QTest::newRow("unreadable model")
        << QStringList{"--model", "/nonexistent/m.json", "raw", "1", "2", "3", "4", "5"}
        << "cannot read model file";
    QTest::newRow("unknown operation")
        << QStringList{"resetOutPortFPGB", "1", "2"}
        << "unknown operation resetOutPortFPGB; did you mean: DalTarsel::resetOutPortFPGA";
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

QTEST_GUILESS_MAIN(tst_dalctl)
#include "tst_dalctl.moc"
