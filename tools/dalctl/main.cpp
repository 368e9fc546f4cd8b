#include "explain.h"
#include "records.h"
#include "registry.h"
#include "session.h"
#include "sweep.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr int kBadInput = 2;

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& err() {
    static QTextStream stream(stderr);
    return stream;
}

bool showTrace = false;

void handleMessage(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtDebugMsg) {
        if (showTrace)
            out() << "trace: " << message << Qt::endl;
        return;
    }
    out().flush();
    err() << (type == QtInfoMsg ? "info: " : "warning: ") << message << Qt::endl;
}

int badInput(const QString& message, const QString& usage) {
    err() << "dalctl: " << message << '\n';
    if (!usage.isEmpty())
        err() << usage << '\n';
    err().flush();
    return kBadInput;
}

void listOperations(const QString& pattern) {
    const bool wildcard = pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'));
    const QRegularExpression glob(QRegularExpression::wildcardToRegularExpression(pattern),
                                  QRegularExpression::CaseInsensitiveOption);
    for (const Operation& op : operations()) {
        const bool shown =
            pattern.isEmpty() ||
            (wildcard ? glob.match(op.name).hasMatch() || glob.match(op.qualifiedName()).hasMatch()
                      : op.qualifiedName().contains(pattern, Qt::CaseInsensitive));
        if (shown)
            out() << op.usage() << '\n';
    }
}

void printOutcome(const Outcome& outcome, bool json) {
    if (json) {
        if (!outcome.returned.isEmpty())
            out() << QJsonDocument(QJsonObject{{QStringLiteral("returned"), outcome.returned}})
                         .toJson(QJsonDocument::Compact)
                  << '\n';
        for (const model_Protocoldata& rec : outcome.records)
            out() << QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact) << '\n';
        for (const model_OsdParam& rec : outcome.osdRecords)
            out() << QJsonDocument(osdRecordJson(rec)).toJson(QJsonDocument::Compact) << '\n';
        return;
    }
    if (!outcome.returned.isEmpty())
        out() << outcome.returned << '\n';
    if (outcome.records.isEmpty() && outcome.osdRecords.isEmpty())
        out() << "no record queued\n";
    for (int i = 0; i < outcome.records.size(); ++i)
        out() << recordText(outcome.records[i], i + 1);
    for (int i = 0; i < outcome.osdRecords.size(); ++i)
        out() << osdRecordText(outcome.osdRecords[i], i + 1);
}

const char* const kDescription =
    "Shows exactly what libDAL_Manage queues for an operation on a device family.\n\n"
    "  dalctl list [PATTERN]                 operations and their parameter types\n"
    "  dalctl [options] OPERATION [ARG...]   run one operation and print its records\n"
    "  dalctl [options] raw [--timeout MS] [--text TEXT] CMD DAT1 DAT2 DAT3 DAT4 [HEX]\n"
    "  dalctl demo                           representative requests for every family\n"
    "  dalctl sweep [FAMILY]                 every operation with sample arguments, with\n"
    "                                        its trace, on every family or the one named\n"
    "  dalctl [--device D] [--json] explain [FILE|-]   annotate the trace lines of a log\n"
    "  dalctl [--device D] decode TEXT|HEX   the operations that send one record\n\n"
    "Arguments: integers in decimal or 0x-hex, booleans true/false, decimals, text, byte\n"
    "buffers as hex, integer lists as 1,2,3, JSON objects as JSON text. Model records are\n"
    "built in; --model FILE.json overrides their scalar members by name.";

int explain(const QStringList& call, int deviceType, bool json) {
    if (call.size() > 2)
        return badInput(QStringLiteral("explain takes at most one file"),
                        QStringLiteral("usage: dalctl [--device D] [--json] explain [FILE|-]"));
    const QString name = call.value(1, QStringLiteral("-"));
    std::FILE* in = name == QLatin1String("-") ? stdin : std::fopen(qPrintable(name), "rb");
    if (!in)
        return badInput(QStringLiteral("cannot read %1").arg(name), QString());
    out().flush();
    const bool read = explainStream(in, stdout, deviceType, json);
    if (in != stdin)
        std::fclose(in);
    std::fflush(stdout);
    return read ? 0 : badInput(QStringLiteral("error reading %1").arg(name), QString());
}

int decode(const QStringList& call, int deviceType) {
    if (call.size() < 2)
        return badInput(QStringLiteral("decode takes one record"),
                        QStringLiteral("usage: dalctl [--device D] decode TEXT|HEX"));
    const Decoded decoded = decodeRecord(call.mid(1).join(QLatin1Char(' ')), deviceType);
    if (decoded.status == Decoded::BadInput)
        return badInput(decoded.message, QString());
    out() << decoded.message << '\n';
    if (decoded.candidates.isEmpty())
        out() << "no operation sends it\n";
    for (const Candidate& c : decoded.candidates)
        out() << "  " << (c.native.isEmpty() ? QString() : "native " + c.native + ": ") << c.text()
              << '\n';
    out().flush();
    return decoded.status == Decoded::Found ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("dalctl"));
    qInstallMessageHandler(handleMessage);

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(kDescription));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption deviceOption(QStringLiteral("device"),
                                          QStringLiteral("Device family or type code."),
                                          QStringLiteral("CODE|FAMILY"), QStringLiteral("native"));
    const QCommandLineOption subtypeOption(QStringLiteral("subtype"),
                                           QStringLiteral("Device sub-type code."),
                                           QStringLiteral("CODE"), QStringLiteral("0"));
    const QCommandLineOption connectOption(QStringLiteral("connect-type"),
                                           QStringLiteral("Link kind reported by the utility."),
                                           QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption toneFlagOption(
        QStringLiteral("tone-flag"), QStringLiteral("Keyboard link confirmed (1) or not (0)."),
        QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption toneVersionOption(QStringLiteral("tone-ver"),
                                               QStringLiteral("Keyboard firmware version."),
                                               QStringLiteral("TEXT"));
    const QCommandLineOption localIpOption(QStringLiteral("local-ip"),
                                           QStringLiteral("Local address setting."),
                                           QStringLiteral("TEXT"));
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QStringLiteral("One JSON object per record per line."));
    const QCommandLineOption traceOption(QStringLiteral("trace"),
                                         QStringLiteral("Show the library's trace lines."));
    const QCommandLineOption modelOption(QStringLiteral("model"),
                                         QStringLiteral("Override model members from JSON."),
                                         QStringLiteral("FILE.json"));
    parser.addOptions({deviceOption, subtypeOption, connectOption, toneFlagOption,
                       toneVersionOption, localIpOption, jsonOption, traceOption, modelOption});

    if (!parser.parse(QCoreApplication::arguments()))
        return badInput(parser.errorText(), parser.helpText());
    if (parser.isSet(helpOption)) {
        out() << parser.helpText();
        return 0;
    }
    const QStringList call = parser.positionalArguments();
    if (call.isEmpty())
        return badInput(QStringLiteral("no operation given"), parser.helpText());

    showTrace = parser.isSet(traceOption) || call.first() == QLatin1String("sweep");
    if (!showTrace)
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    if (call.first() == QLatin1String("list")) {
        if (call.size() > 2)
            return badInput(QStringLiteral("list takes at most one pattern"),
                            QStringLiteral("usage: dalctl list [PATTERN]"));
        listOperations(call.value(1));
        return 0;
    }
    if (call.first() == QLatin1String("sweep")) {
        if (call.size() > 2 || !printSweep(out(), call.value(1)))
            return badInput(QStringLiteral("sweep takes at most one family: %1")
                                .arg(familyNames().join(QLatin1Char(' '))),
                            QStringLiteral("usage: dalctl sweep [FAMILY]"));
        return 0;
    }
    if (call.first() == QLatin1String("demo")) {
        printDemo(out());
        return 0;
    }

    DeviceSetting device;
    if (!deviceTypeFromText(parser.value(deviceOption), device.deviceType))
        return badInput(QStringLiteral("unknown device %1").arg(parser.value(deviceOption)),
                        QString());
    try {
        device.subType = static_cast<int>(
            args::parseInteger(parser.value(subtypeOption), -0x80000000LL, 0x7FFFFFFFLL));
        device.connectType =
            static_cast<int>(args::parseInteger(parser.value(connectOption), 0, 0xFF));
        device.toneFlag = static_cast<int>(
            args::parseInteger(parser.value(toneFlagOption), -0x80000000LL, 0x7FFFFFFFLL));
    } catch (const ArgError& e) {
        return badInput(QString::fromLatin1(e.what()), QString());
    }

    device.toneVersion = parser.value(toneVersionOption);
    device.localIp = parser.value(localIpOption);

    Models models = Models::defaults();
    if (parser.isSet(modelOption)) {
        QFile file(parser.value(modelOption));
        if (!file.open(QIODevice::ReadOnly))
            return badInput(QStringLiteral("cannot read model file %1: %2")
                                .arg(file.fileName(), file.errorString()),
                            QString());
        const QString error = models.override(file.readAll());
        if (!error.isEmpty())
            return badInput(QStringLiteral("%1: %2").arg(file.fileName(), error), QString());
    }

    if (call.first() == QLatin1String("explain"))
        return explain(call, device.deviceType, parser.isSet(jsonOption));
    if (call.first() == QLatin1String("decode"))
        return decode(call, parser.isSet(deviceOption) ? device.deviceType : 0);

    try {
        printOutcome(runRequest(call, device, models), parser.isSet(jsonOption));
    } catch (const UsageError& e) {
        return badInput(QString::fromLatin1(e.what()), e.usage);
    }
    return 0;
}
