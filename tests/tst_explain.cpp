#include "decode.h"
#include "explain.h"
#include "records.h"
#include "samples.h"
#include "session.h"
#include "testsupport.h"

#include <QJsonDocument>
#include <QtTest>

#include <optional>

namespace {

// Whether `op` is among the candidates, as its record `record`, with every argument it reports
// equal to the one it was called with.
bool among(const Decoded& d, const Operation& op, int record, const QStringList& given) {
    for (const Answer& answer : d.answers)
        for (const Reading& reading : answer.readings)
            for (const Found& found : reading.found) {
                const Candidate& c = found.candidate;
                if (c.op != &op || c.record != record)
                    continue;
                bool same = true;
                for (const auto& arg : c.args) {
                    const QString value = given.value(op.argumentNames.indexOf(arg.first));
                    same = same &&
                           (value == QLatin1String("true")    ? arg.second == 1
                            : value == QLatin1String("false") ? arg.second == 0
                                                              : value.toLongLong() == arg.second);
                }
                if (same)
                    return true;
            }
    return false;
}

struct Input {
    QByteArray text;
    std::optional<int> device;
};

// What a record went out as, in the text that decode takes, read with the record's family.
Input familyForm(const model_Protocoldata& rec) {
    const Form form = formOf(rec);
    const QByteArray bytes =
        form.kind == Form::Frame ? rec.arryDatablock : headOf(rec) + rec.arryDatablock;
    return {form.kind == Form::Text ? form.text.toUtf8() : bytes.toHex(), rec.deviceType};
}

// The record as dalctl prints it, as its --json line, and as its 8-byte head and block.
QVector<Input> printedForms(const model_Protocoldata& rec) {
    const QByteArray head(reinterpret_cast<const char*>(rec.cmdHead), sizeof rec.cmdHead);
    return {{recordText(rec, 1).toUtf8(), std::nullopt},
            {QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact), std::nullopt},
            {(head + rec.arryDatablock).toHex(), rec.deviceType}};
}

QVector<Input> printedForms(const model_OsdParam& rec) {
    return {{osdRecordText(rec, 1).toUtf8(), std::nullopt},
            {QJsonDocument(osdRecordJson(rec)).toJson(QJsonDocument::Compact), std::nullopt},
            {formOf(rec).bytes.toHex(), std::nullopt}};
}

// Runs the operation, its trace lines caught; empty when it refuses the arguments.
std::optional<Outcome> run(const Operation& op, const QStringList& arguments, int device,
                           QStringList& traced) {
    DeviceSetting setting;
    setting.deviceType = device;
    MessageCapture capture;
    try {
        const Outcome outcome = runOperation(op, arguments, setting, Models::defaults());
        traced = capture.debug().filter(QStringLiteral("---addToQueue----CMD="));
        return outcome;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool queued(const std::optional<Outcome>& outcome) {
    return outcome && (!outcome->records.isEmpty() || !outcome->osdRecords.isEmpty());
}

} // namespace

class tst_explain : public QObject {
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void traceLines_data();
    void traceLines();
    void readers_data();
    void readers();
    void marks_data();
    void marks();
};

void tst_explain::roundTrip_data() {
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("device");
    for (const QString& family : familyNames()) {
        int device = 0;
        deviceTypeFromText(family, device);
        if (family != QLatin1String("keyboard"))
            QTest::newRow(qPrintable(family)) << "DalTarsel" << device;
    }
    QTest::newRow("keyboard") << "Dal_Pommet" << 0x700000;
    QTest::newRow("OSD") << "dal_Osd" << 0x700000;
}

// Every operation is found again, with the arguments it was given, from its trace lines and
// from each record it queued: as the record went out to its family (called with distinct
// small integers, so that an argument read from the wrong byte shows), and as dalctl prints
// it, as its --json line and as its 8-byte head and block (called as `dalctl sweep` calls it).
void tst_explain::roundTrip() {
    QFETCH(QString, className);
    QFETCH(int, device);
    explainLine("", device, false); // learn the operations before any trace is captured
    int checked = 0, byHead = 0, traces = 0;
    for (const Operation& op : operations()) {
        if (op.className != className || !explainable(op))
            continue;
        const QStringList sample = sampleCall(op).mid(1);
        QStringList distinct = sample, traced, sweepTrace;
        for (int i = 0; i < distinct.size(); ++i)
            if (distinct[i] == QLatin1String("1") && op.argumentTypes[i] != QLatin1String("double"))
                distinct[i] = QString::number(2 + i);
        const std::optional<Outcome> swept = run(op, sample, device, sweepTrace);
        std::optional<Outcome> given = run(op, distinct, device, traced);
        if (!queued(given)) {
            given = swept;
            distinct = sample;
            traced = sweepTrace;
        }
        if (!queued(given))
            continue;
        traces += traced.size();
        for (const QString& line : traced) {
            const QByteArray note = explainLine(line.toUtf8(), device, true);
            const QString name = QStringLiteral("\"operation\":\"%1\"").arg(op.qualifiedName());
            QVERIFY2(note.contains(name.toUtf8()), qPrintable(line + " -> " + note));
        }
        auto verify = [&](const Input& input, int record, const QStringList& arguments) {
            const Decoded d = decodeInput(input.text, input.device);
            QVERIFY2(among(d, op, record, arguments),
                     qPrintable(op.usage() + ": " + input.text + " -> " + d.error +
                                (d.answers.isEmpty() ? QString() : d.answers[0].text())));
            ++checked;
        };
        for (int k = 0; k < given->records.size(); ++k) {
            const model_Protocoldata& rec = given->records[k];
            // A dialect family with no form for the command: it goes out as its native head.
            byHead += !QStringList{"native", "Cadex", "VantaZ"}.contains(familyName(device)) &&
                      formOf(rec).kind == Form::Head && className == QLatin1String("DalTarsel");
            verify(familyForm(rec), k + 1, distinct);
        }
        for (int k = 0; k < given->osdRecords.size(); ++k)
            verify({formOf(given->osdRecords[k]).bytes.toHex(), std::nullopt}, k + 1, distinct);
        for (int k = 0; k < swept->records.size(); ++k)
            for (const Input& input : printedForms(swept->records[k]))
                verify(input, k + 1, sample);
        for (int k = 0; k < swept->osdRecords.size(); ++k)
            for (const Input& input : printedForms(swept->osdRecords[k]))
                verify(input, k + 1, sample);
    }
    QVERIFY(checked > 0);
    QVERIFY(traces > 0 || className != QLatin1String("DalTarsel"));
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

namespace {

// What dalctl prints for a request on a family: its records, or their --json lines.
QByteArray printed(const QStringList& call, const char* family, bool json = false) {
    DeviceSetting setting;
    deviceTypeFromText(QString::fromLatin1(family), setting.deviceType);
    MessageCapture quiet;
    QByteArray text;
    const Outcome outcome = runRequest(call, setting, Models::defaults());
    for (int i = 0; i < outcome.records.size(); ++i)
        text += json
                    ? QJsonDocument(recordJson(outcome.records[i])).toJson(QJsonDocument::Compact) +
                          '\n'
                    : recordText(outcome.records[i], i + 1).toUtf8();
    return text;
}

} // namespace

void tst_explain::readers_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("answers");
    QTest::addColumn<QString>("expected"); // a line of the answers, or of the error
    const QByteArray version = printed({"getComBoardVer"}, "T3");
    const QByteArray supplier = printed({"setSupplierName", "3000", "5", "414243"}, "native");
    const QByteArray supplierHex =
        QJsonDocument::fromJson(printed({"setSupplierName", "3000", "5", "414243"}, "native", true))
            .object()
            .value("head")
            .toString()
            .toLatin1() +
        "414243c6";
    const QByteArray trace =
        "trace: ---addToQueue----CMD= \"6a\" ---DAT1= \"3\" ---DAT2= \"0\" ---DAT3= \"0\" "
        "---DAT4= \"0\" ---arryDatablock= \"3c475645523e\" ---Datablock= \"<GVER>\"\n";

    QTest::newRow("printout, two records")
        << version + "== next\n" + supplier << "" << 2
        << "  head, native f0 58 05 04 00: setSupplierName(index=5)";
    QTest::newRow("16-bit argument and another")
        << printed({"setBoardBrightness", "3000", "2", "1000"}, "native") << "" << 1
        << "setBoardBrightness(p2=2, p3=1000)";
    QTest::newRow("json lines") << "{\"returned\":\"x\"}\n" +
                                       printed({"getComBoardVer"}, "T3", true)
                                << "" << 1 << "JSON record (line 2): device 0x250400 (T3)";
    QTest::newRow("trace echo skipped") << trace + version << "" << 1 << "getComBoardVer()";
    QTest::newRow("Cadex tunnel")
        << QByteArray("---addToQueue----CMD= \"f1\" ---DAT1= \"5d\" ---DAT2= \"0\" ---DAT3= \"6\" "
                      "---DAT4= \"0\" ---arryDatablock= \"900302000095\" ---Datablock= \"\"")
        << "Cadex" << 1
        << "trace, Cadex tunnel unwrapped, native 90 03 02 00 00: getEDIDForT9(p2=2, p3=0)";
    QTest::newRow("head line") << QByteArray("  head: 00 00 6a 03 00 00 00 00") << "T3" << 1
                               << "8-byte head, native 6a 03 00 00 00: getComBoardVer()";
    QTest::newRow("5- and 8-byte heads")
        << supplierHex << "native" << 1 << "8-byte head, native f0 58 05 04 00: setSupplierName";
    QTest::newRow("probe of one family") << QByteArray("6801000000") << "" << 1
                                         << "Dal_Pommet::searchDeviceForT3() record 1/2 [T3]\n";
    QTest::newRow("text of two families")
        << QByteArray("Command=GetAllDecoder") << "" << 1 << "geth264inputip() [T9 NV]";

    QTest::newRow("empty") << QByteArray(" \n") << "" << 0 << "nothing to decode";
    QTest::newRow("binary") << QByteArray("6a\0\x01", 4) << "" << 0 << "binary data";
    QTest::newRow("too short") << QByteArray("6a03") << "" << 0 << "2 bytes are too few";
    QTest::newRow("no family's text") << QByteArray("hello") << "" << 0 << "neither hex";
    QTest::newRow("1 MB line") << QByteArray(1 << 20, 'x') << "" << 0 << "longer than any";
    QTest::newRow("cut printout") << version.left(version.lastIndexOf("  arryDatablock")) << "" << 0
                                  << "record 1 (line 1) is cut";
    QTest::newRow("block shorter than said")
        << QByteArray(version).replace("(6 bytes)", "(7 bytes)") << "" << 0
        << "says 7 bytes but holds 6";
    QTest::newRow("json, not a record")
        << QByteArray("{\"Comand\":1}") << "" << 0 << "not a record";
    QTest::newRow("json record, bad block")
        << QByteArray(printed({"getComBoardVer"}, "T3", true)).replace("3c4756", "3c47zz") << ""
        << 0 << "arryDatablock must be hex";
    QTest::newRow("another device given") << version << "H40" << 0 << "leave out --device";
}

void tst_explain::readers() {
    QFETCH(QByteArray, input);
    QFETCH(QString, device);
    QFETCH(int, answers);
    QFETCH(QString, expected);
    std::optional<int> code;
    if (!device.isEmpty())
        QVERIFY(deviceTypeFromText(device, code.emplace()));
    const Decoded d = decodeInput(input, code);
    QString text = d.error;
    for (const Answer& answer : d.answers)
        text += answer.text();
    QCOMPARE(d.answers.size(), answers);
    QVERIFY2(d.error.isEmpty() == (answers > 0), qPrintable(d.error));
    QVERIFY2(text.contains(expected), qPrintable(text));
}

void tst_explain::marks_data() {
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("device");
    QTest::addColumn<QList<int>>("bytes"); // of the record's 8-byte head
    QTest::addColumn<QStringList>("names");
    // DAT2 carries the index, DAT3 (the block's length) varies with the name's length only.
    QTest::newRow("block setter") << "DalTarsel::setSupplierName" << 0x700000 << QList<int>{4, 5}
                                  << QStringList{"index", "name"};
    QTest::newRow("fixed command") << "DalTarsel::setSupplierName" << 0x700000
                                   << QList<int>{2, 3, 6, 7} << QStringList{"", "", "", ""};
    QTest::newRow("address byte") << "DalTarsel::resetOutPortFPGA" << 0x250400
                                  << QList<int>{0, 1, 4} << QStringList{"port", "", "port"};
    QTest::newRow("keyboard") << "Dal_Pommet::setDevTypeLED" << engine::kAccessories
                              << QList<int>{4, 5} << QStringList{"type", ""};
}

// The head bytes that each argument reaches, as the reference page marks them.
void tst_explain::marks() {
    QFETCH(QString, operation);
    QFETCH(int, device);
    QFETCH(QList<int>, bytes);
    QFETCH(QStringList, names);
    const QVector<const Operation*> ops = findOperations(operation);
    QCOMPARE(ops.size(), 1);
    const QVector<engine::SampleRecord> records = engine::sampleRecords(device, *ops.first());
    QCOMPARE(records.size(), 1);
    for (int i = 0; i < bytes.size(); ++i)
        QCOMPARE(records[0].marks.value(bytes[i]).join(','), names[i]);
}

QTEST_GUILESS_MAIN(tst_explain)
#include "tst_explain.moc"
