#include "explain.h"
#include "samples.h"
#include "session.h"
#include "testsupport.h"

#include <QtTest>

namespace {

// Whether `op` is among the candidates, as its record `record`, with every argument it reports
// equal to the one it was called with.
bool among(const QVector<Candidate>& found, const Operation& op, int record,
           const QStringList& given) {
    for (const Candidate& c : found) {
        if (c.op != &op || (record && c.record != record))
            continue;
        bool same = true;
        for (const auto& arg : c.args) {
            const QString value = given.value(op.argumentNames.indexOf(arg.first));
            same = same && (value == QLatin1String("true")    ? arg.second == 1
                            : value == QLatin1String("false") ? arg.second == 0
                                                              : value.toLongLong() == arg.second);
        }
        if (same)
            return true;
    }
    return false;
}

// What a record went out as, in the text that decode takes.
QString decodeInput(const Form& form, const model_Protocoldata& rec) {
    if (form.kind == Form::Text)
        return form.text;
    if (form.kind == Form::Frame)
        return QString::fromLatin1(rec.arryDatablock.toHex());
    return QString::fromLatin1((headOf(rec) + rec.arryDatablock).toHex());
}

} // namespace

class tst_explain : public QObject {
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void traceLines_data();
    void traceLines();
    void badDecodeInput_data();
    void badDecodeInput();
};

void tst_explain::roundTrip_data() {
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("device");
    const std::pair<const char*, int> families[] = {
        {"native", 0x700000}, {"T9", 0x250300},   {"T3", 0x250400},
        {"KR2", 0x250502},    {"NV", 0x2D0000},   {"H40", 0x900000},
        {"H40B", 0x900001},   {"VM6S", 0x2C0104}, {"Cadex", 0x260000}};
    for (const auto& family : families)
        QTest::newRow(family.first) << "DalTarsel" << family.second;
    QTest::newRow("keyboard") << "Dal_Pommet" << 0;
    QTest::newRow("OSD") << "dal_Osd" << 0;
}

// Every operation, called with its sample arguments, is found again from its trace lines and
// from each record as it went out, with the arguments it was given.
void tst_explain::roundTrip() {
    QFETCH(QString, className);
    QFETCH(int, device);
    explainLine("", device, false); // learn the operations before any trace is captured
    int checked = 0, byHead = 0;
    for (const Operation& op : operations()) {
        if (op.className != className || !explainable(op))
            continue;
        DeviceSetting setting;
        setting.deviceType = device ? device : 0x700000;
        // Distinct integers, so that an argument read from the wrong byte shows; the samples
        // where the operation refuses them.
        QStringList given = sampleCall(op).mid(1);
        for (int i = 0; i < given.size(); ++i)
            if (given[i] == QLatin1String("1") && op.argumentTypes[i] != QLatin1String("double"))
                given[i] = QString::number(2 + i);
        Outcome outcome;
        QStringList traced;
        const QStringList calls[] = {given, sampleCall(op).mid(1)};
        for (const QStringList& call : calls) {
            MessageCapture capture;
            try {
                outcome = runOperation(op, call, setting, Models::defaults());
            } catch (const std::exception&) {
                continue;
            }
            traced = capture.debug().filter(QStringLiteral("---addToQueue----CMD="));
            given = call;
            if (!outcome.records.isEmpty() || !outcome.osdRecords.isEmpty())
                break;
        }
        for (const QString& line : traced) {
            const QByteArray note = explainLine(line.toUtf8(), device, true);
            const QString name = QStringLiteral("\"operation\":\"%1\"").arg(op.qualifiedName());
            QVERIFY2(note.contains(name.toUtf8()), qPrintable(line + " -> " + note));
        }
        for (int k = 0; k < outcome.records.size(); ++k) {
            const model_Protocoldata& rec = outcome.records[k];
            const Form form = formOf(rec);
            // A dialect family with no form for the command: it goes out as its native head.
            byHead += device && device != 0x700000 && device != 0x260000 && form.kind == Form::Head;
            const Decoded d = decodeRecord(decodeInput(form, rec), device);
            QVERIFY2(among(d.candidates, op, k + 1, given),
                     qPrintable(op.usage() + ": " + decodeInput(form, rec) + " -> " + d.message));
            ++checked;
        }
        for (int k = 0; k < outcome.osdRecords.size(); ++k) {
            const Decoded d =
                decodeRecord(QString::fromLatin1(formOf(outcome.osdRecords[k]).bytes.toHex()), 0);
            QVERIFY2(among(d.candidates, op, k + 1, given), qPrintable(op.usage()));
            ++checked;
        }
    }
    QVERIFY(checked > 0);
    qInfo("%d records decoded, %d of them by their native head", checked, byHead);
}

void tst_explain::traceLines_data() {
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("note");
    const QString line =
        QStringLiteral("t=1 ---addToQueue----CMD= \"68\" ---DAT1= \"12\" ---DAT2= "
                       "\"7\" ---DAT3= \"0\" ---DAT4= \"0\" ---arryDatablock= \"\" "
                       "---Datablock= \"a\\\"b\"");
    QTest::newRow("other text") << "started"
                                << "started";
    QTest::newRow("argument") << line << line + "  # dal: savePage(p1=7)";
    QTest::newRow("cut") << line.left(60) << line.left(60) + "  # dal: cut or garbled trace line";
    QTest::newRow("open quote") << line + "\\\"" << line + "\\\"  # dal: cut or garbled trace line";
    const QString unsent = QString(line).replace("\"68\"", "\"3\"");
    QTest::newRow("unknown") << unsent << unsent + "  # dal: no operation sends 03 12 07 00 00";
}

void tst_explain::traceLines() {
    QFETCH(QString, line);
    QFETCH(QString, note);
    QCOMPARE(QString::fromUtf8(explainLine(line.toUtf8(), 0x700000, false)), note);
}

void tst_explain::badDecodeInput_data() {
    QTest::addColumn<QString>("input");
    QTest::addColumn<int>("status");
    QTest::newRow("odd hex") << "6a0" << int(Decoded::BadInput);
    QTest::newRow("short head") << "6a03" << int(Decoded::BadInput);
    QTest::newRow("no family's text") << "hello" << int(Decoded::BadInput);
    QTest::newRow("unsent head") << "0312070000" << int(Decoded::NoOperation);
    QTest::newRow("unsent T3 text") << "<SVCN, 3C>" << int(Decoded::NoOperation);
}

void tst_explain::badDecodeInput() {
    QFETCH(QString, input);
    QFETCH(int, status);
    QCOMPARE(int(decodeRecord(input, input.startsWith('<') ? 0x250400 : 0x700000).status), status);
}

QTEST_GUILESS_MAIN(tst_explain)
#include "tst_explain.moc"
