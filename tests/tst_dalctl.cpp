#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run {
    int exitCode;
    QString out;
    QString err;
};

Run dalctl(const QStringList& arguments, const QByteArray& input = {},
           const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(DALCTL_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

const QByteArray kTraceLine =
    "t=1 ---addToQueue----CMD= \"68\" ---DAT1= \"12\" ---DAT2= \"7\" "
    "---DAT3= \"0\" ---DAT4= \"0\" ---arryDatablock= \"\" ---Datablock= \"\"\n";

} // namespace

class tst_dalctl : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void badInput_data();
    void badInput();
    void commands_data();
    void commands();
    void follow();
    void keptIndex_data();
    void keptIndex();

private:
    QTemporaryDir folder;
    QString log;
};

void tst_dalctl::initTestCase() {
    QVERIFY(folder.isValid());
    log = folder.filePath(QStringLiteral("app.log"));
    QFile file(log);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("started\n" + kTraceLine);
}

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
    QTest::newRow("option of another command")
        << QStringList{"getComBoardVer", "--timeout", "5"} << "--timeout is an option of raw";
    QTest::newRow("decode without input") << QStringList{"decode"} << "decode takes a record";
    QTest::newRow("decode, two inputs")
        << QStringList{"decode", "6a03000000", "--file", "x"} << "not both";
    QTest::newRow("decode, unreadable file")
        << QStringList{"decode", "--file", "/nonexistent/r.txt"} << "cannot read";
    QTest::newRow("doc into no folder")
        << QStringList{"doc", "--out", "/nonexistent/r.html"} << "cannot write /nonexistent/r.html";
    QTest::newRow("follow standard input")
        << QStringList{"explain", "--follow", "-"} << "--follow needs a FILE";
}

void tst_dalctl::badInput() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Run run = dalctl(arguments);
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY(run.out.isEmpty());
}

// Commands that work, options anywhere on the line: the exit code and a line of the output.
void tst_dalctl::commands_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("output");
    QTest::newRow("decode, options after") << QStringList{"decode", "--device", "T3", "<GVER>"}
                                           << QByteArray() << 0 << "getComBoardVer()";
    QTest::newRow("negative argument")
        << QStringList{"f_RGBtoInt", "-1", "2", "--json", "3"} << QByteArray() << 0 << "0xffff0203";
    QTest::newRow("raw, option last")
        << QStringList{"raw", "1", "2", "3", "4", "5", "--timeout", "7"} << QByteArray() << 0
        << "timeout 7";
    QTest::newRow("explain, json after") << QStringList{"explain", "@log", "--json"} << QByteArray()
                                         << 0 << "\"operation\":\"DalTarsel::savePage\"";
    QTest::newRow("decode a file") << QStringList{"decode", "--file", "@log"} << QByteArray() << 0
                                   << "trace, native 68 12 07 00 00: savePage(p1=7)";
    QTest::newRow("decode standard input")
        << QStringList{"decode", "-", "--device", "native"} << kTraceLine << 0 << "savePage(p1=7)";
    QTest::newRow("decode, nothing sends it")
        << QStringList{"--device", "native", "decode", "0312070000"} << QByteArray() << 1
        << "no operation sends it";
}

void tst_dalctl::commands() {
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, exitCode);
    QFETCH(QString, output);
    arguments.replaceInStrings(QStringLiteral("@log"), log);
    const Run run = dalctl(arguments, input);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(run.out.contains(output), qPrintable(run.out + run.err));
}

// A followed log is annotated line by line as it grows, and from the start once truncated.
void tst_dalctl::follow() {
    const QString path = folder.filePath(QStringLiteral("followed.log"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    QProcess process;
    process.start(QStringLiteral(DALCTL_PATH), {"explain", "--follow", path});
    QVERIFY(process.waitForStarted());
    auto written = [&](const QByteArray& line, const QByteArray& expected) {
        file.write(line);
        QByteArray seen;
        while (!seen.contains(expected) && process.waitForReadyRead(5000))
            seen += process.readAllStandardOutput();
        return seen.contains(expected);
    };
    QVERIFY(written("first\n", "first\n"));
    QVERIFY(written(kTraceLine, "# dal: savePage(p1=7)\n"));
    QVERIFY(written("a line in two", QByteArray()) && !process.waitForReadyRead(300));
    QVERIFY(written(" parts\n", "a line in two parts\n"));
    QVERIFY(file.resize(0) && file.seek(0));
    QVERIFY(written("after truncation\n", "after truncation\n"));
    process.kill();
    process.waitForFinished();
}

// A kept index that does not read back whole is learnt anew, with the same answers.
void tst_dalctl::keptIndex_data() {
    // bytes kept of each file; -1 flips one in the middle; -2 names an operation the registry
    // does not have, under a digest that matches
    QTest::addColumn<int>("cut");
    QTest::newRow("flipped byte") << -1;
    QTest::newRow("unknown operation, digest right") << -2;
    QTest::newRow("cut short") << 100;
}

void tst_dalctl::keptIndex() {
    QFETCH(int, cut);
    QTemporaryDir cache;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), cache.path());
    // A trace line is read with the family's index only, so no keyboard has to be learnt.
    const QStringList call{"decode", "--device", "T3", QString::fromLatin1(kTraceLine)};
    const Run learnt = dalctl(call, {}, environment);
    QCOMPARE(learnt.exitCode, 0);
    const QDir kept(cache.filePath(QStringLiteral("dalctl")));
    const QStringList files = kept.entryList({QStringLiteral("*.index")});
    QCOMPARE(files.size(), 1);
    QFile file(kept.filePath(files.first()));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray whole = file.readAll();
    QByteArray spoilt = whole;
    if (cut == -2) {
        QDataStream in(whole);
        QByteArray magic, payload, digest;
        in >> magic >> payload >> digest;
        payload.replace(4, 4, QByteArray("\x7f\xff\xff\xff", 4)); // the first signature's
        spoilt.clear();
        QDataStream out(&spoilt, QIODevice::WriteOnly);
        out << magic << payload << QCryptographicHash::hash(payload, QCryptographicHash::Sha1);
    } else if (cut == -1) {
        spoilt[spoilt.size() / 2] = char(~spoilt[spoilt.size() / 2]);
    } else {
        spoilt.truncate(cut);
    }
    QVERIFY(file.resize(0) && file.seek(0) && file.write(spoilt) == spoilt.size());
    file.close();
    const Run again = dalctl(call, {}, environment);
    QCOMPARE(again.exitCode, 0);
    QCOMPARE(again.out, learnt.out);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), whole);
}

QTEST_GUILESS_MAIN(tst_dalctl)
#include "tst_dalctl.moc"
