#include "decode.h"
#include "doc.h"
#include "engine.h"
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
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTextStream>

#include <cstdio>
#include <optional>

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

const QStringList kSubcommands = {QStringLiteral("list"),    QStringLiteral("raw"),
                                  QStringLiteral("demo"),    QStringLiteral("sweep"),
                                  QStringLiteral("explain"), QStringLiteral("decode"),
                                  QStringLiteral("learn"),   QStringLiteral("doc")};

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
    "  dalctl explain [--device D] [--json] [--follow] [FILE|-]\n"
    "                                        annotate the trace lines of a log\n"
    "  dalctl decode [--device D] INPUT...|-|--file FILE\n"
    "                                        the operations that send each record: hex, a\n"
    "                                        family's text, a trace line, or records as\n"
    "                                        dalctl prints them (text or --json lines)\n"
    "  dalctl learn                          learn what explain and decode need now\n"
    "  dalctl doc [--out FILE]               the protocol reference page (HTML)\n\n"
    "Options go anywhere on the line; after \"--\" every argument is a value. Arguments:\n"
    "integers in decimal or 0x-hex (negative ones too), booleans true/false, decimals, text,\n"
    "byte buffers as hex, integer lists as 1,2,3, JSON objects as JSON text. Model records are\n"
    "built in; --model FILE.json overrides their scalar members by name.";

// The command line with its options taken out wherever they stand: an argument that starts
// with a dash is an option unless it is "-" (standard input) or a negative number, and "--"
// ends the options.
struct CommandLine {
    QStringList options{QCoreApplication::applicationFilePath()};
    QStringList call;
};

CommandLine split(const QStringList& arguments, const QList<QCommandLineOption>& known) {
    QStringList valued;
    for (const QCommandLineOption& option : known)
        if (!option.valueName().isEmpty())
            valued += option.names();
    CommandLine line;
    bool ended = false;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& a = arguments[i];
        const bool value = ended || a == QLatin1String("-") || !a.startsWith(QLatin1Char('-')) ||
                           a.at(1).isDigit() || a.at(1) == QLatin1Char('.');
        if (a == QLatin1String("--") && !ended) {
            ended = true;
        } else if (value) {
            line.call << a;
        } else {
            line.options << a;
            const QString name = a.mid(a.startsWith(QLatin1String("--")) ? 2 : 1);
            if (valued.contains(name) && i + 1 < arguments.size())
                line.options << arguments[++i];
        }
    }
    return line;
}

int explain(const QStringList& call, int deviceType, bool json, bool follow) {
    const QString usage =
        QStringLiteral("usage: dalctl explain [--device D] [--json] [--follow] [FILE|-]");
    if (call.size() > 2)
        return badInput(QStringLiteral("explain takes at most one file"), usage);
    const QString name = call.value(1, QStringLiteral("-"));
    if (follow && name == QLatin1String("-"))
        return badInput(QStringLiteral("--follow needs a FILE to follow"), usage);
    QFile file(name);
    const bool opened = name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                   : file.open(QIODevice::ReadOnly);
    if (!opened)
        return badInput(QStringLiteral("cannot read %1: %2").arg(name, file.errorString()),
                        QString());
    out().flush();
    const bool read = explainStream(file.handle(), stdout, deviceType, json, follow);
    return read ? 0 : badInput(QStringLiteral("error reading %1").arg(name), QString());
}

int decode(const QStringList& call, const QString& fileName, std::optional<int> device) {
    const QString usage =
        QStringLiteral("usage: dalctl decode [--device D] INPUT...|-|--file FILE");
    const bool stdIn = call.size() == 2 && call[1] == QLatin1String("-");
    if (call.size() < 2 && fileName.isEmpty())
        return badInput(QStringLiteral("decode takes a record: as arguments, - for standard "
                                       "input, or --file FILE"),
                        usage);
    if (call.size() >= 2 && !fileName.isEmpty())
        return badInput(QStringLiteral("decode takes its input either as arguments or from "
                                       "--file, not both"),
                        usage);
    QByteArray input;
    if (stdIn || !fileName.isEmpty()) {
        QFile file(fileName);
        const bool opened =
            stdIn ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
        if (!opened)
            return badInput(QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString()),
                            QString());
        input = file.readAll();
    } else {
        input = call.mid(1).join(QLatin1Char(' ')).toUtf8();
    }
    const Decoded decoded = decodeInput(input, device, [](const Answer& answer) {
        out() << answer.text();
        out().flush();
    });
    if (!decoded.error.isEmpty())
        return badInput(decoded.error, QString());
    const bool everyFound = std::all_of(decoded.answers.begin(), decoded.answers.end(),
                                        [](const Answer& answer) { return answer.found(); });
    return everyFound ? 0 : 1;
}

// Learns every family's index and the accessories', and keeps them for later runs.
int learn() {
    const QVector<int> indexes = QVector<int>{engine::kAccessories} + familyCodes();
    for (int index : indexes) {
        engine::learn(index);
        if (!QFile::exists(engine::keptFile(index))) {
            err() << "dalctl: cannot keep what was learnt in " << engine::cacheDirectory() << '\n';
            return 1;
        }
    }
    out() << "learnt " << indexes.size() << " indexes, kept in " << engine::cacheDirectory()
          << '\n';
    return 0;
}

int doc(const QStringList& call, const QString& path) {
    if (call.size() > 1)
        return badInput(QStringLiteral("doc takes no arguments"),
                        QStringLiteral("usage: dalctl doc [--out FILE]"));
    if (path.isEmpty()) {
        out().flush();
        const QByteArray page = referencePage();
        std::fwrite(page.constData(), 1, std::size_t(page.size()), stdout);
        return 0;
    }
    QString error;
    return writeReferencePage(path, error) ? 0 : badInput(error, QString());
}

// Every option: its name, help, value and default, and the commands that read it (none: every
// command; "an operation" stands for an operation).
struct OptionRow {
    const char* name;
    const char* help;
    const char* value;
    const char* byDefault;
    const char* owners;
};

const OptionRow kOptions[] = {
    {"device", "Device family or type code.", "CODE|FAMILY", "native", nullptr},
    {"subtype", "Device sub-type code.", "CODE", "0", nullptr},
    {"connect-type", "Link kind reported by the utility.", "N", "0", nullptr},
    {"tone-flag", "Keyboard link confirmed (1) or not (0).", "N", "1", nullptr},
    {"tone-ver", "Keyboard firmware version.", "TEXT", "", nullptr},
    {"local-ip", "Local address setting.", "TEXT", "", nullptr},
    {"json", "One JSON object per record per line.", "", "", "an operation, raw and explain"},
    {"trace", "Show the library's trace lines.", "", "", nullptr},
    {"model", "Override model members from JSON.", "FILE.json", "", nullptr},
    {"timeout", "raw: the reply time-out.", "MS", "", "raw"},
    {"text", "raw: the text payload.", "TEXT", "", "raw"},
    {"follow", "explain: keep reading as the log grows.", "", "", "explain"},
    {"file", "decode: read the input from FILE.", "FILE", "", "decode"},
    {"out", "doc: write the page to FILE.", "FILE", "", "doc"},
};

QList<QCommandLineOption> options() {
    QList<QCommandLineOption> all;
    for (const OptionRow& row : kOptions)
        all << QCommandLineOption(QString::fromLatin1(row.name), QString::fromLatin1(row.help),
                                  QString::fromLatin1(row.value),
                                  QString::fromLatin1(row.byDefault));
    return all;
}

// The first option given that `command` does not read, with the commands that do; empty when
// there is none.
QString foreignOption(const QCommandLineParser& parser, const QString& command) {
    const QString kind = kSubcommands.contains(command) ? command : QStringLiteral("an operation");
    for (const OptionRow& row : kOptions) {
        const QString owners = QString::fromLatin1(row.owners);
        if (row.owners && parser.isSet(QString::fromLatin1(row.name)) &&
            !owners.split(QRegularExpression(QStringLiteral(", | and "))).contains(kind))
            return QStringLiteral("--%1 is an option of %2, not of %3")
                .arg(QString::fromLatin1(row.name), owners, command);
    }
    return QString();
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("dalctl"));
    qInstallMessageHandler(handleMessage);
    engine::setCacheDirectory(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));

    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(kDescription));
    const QCommandLineOption helpOption = parser.addHelpOption();
    parser.addOptions(options());

    const CommandLine line = split(QCoreApplication::arguments(), options());
    if (!parser.parse(line.options))
        return badInput(parser.errorText(), parser.helpText());
    if (parser.isSet(helpOption)) {
        out() << parser.helpText();
        return 0;
    }
    const QStringList call = line.call;
    if (call.isEmpty())
        return badInput(QStringLiteral("no operation given"), parser.helpText());
    const QString command = call.first();
    const QString foreign = foreignOption(parser, command);
    if (!foreign.isEmpty())
        return badInput(foreign, QString());

    showTrace = parser.isSet(QStringLiteral("trace")) || command == QLatin1String("sweep");
    if (!showTrace)
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    if (command == QLatin1String("list")) {
        if (call.size() > 2)
            return badInput(QStringLiteral("list takes at most one pattern"),
                            QStringLiteral("usage: dalctl list [PATTERN]"));
        listOperations(call.value(1));
        return 0;
    }
    if (command == QLatin1String("sweep")) {
        if (call.size() > 2 || !printSweep(out(), call.value(1)))
            return badInput(QStringLiteral("sweep takes at most one family: %1")
                                .arg(familyNames().join(QLatin1Char(' '))),
                            QStringLiteral("usage: dalctl sweep [FAMILY]"));
        return 0;
    }
    if (command == QLatin1String("demo")) {
        printDemo(out());
        return 0;
    }
    if (command == QLatin1String("learn"))
        return learn();
    if (command == QLatin1String("doc"))
        return doc(call, parser.value(QStringLiteral("out")));

    DeviceSetting device;
    if (!deviceTypeFromText(parser.value(QStringLiteral("device")), device.deviceType))
        return badInput(
            QStringLiteral("unknown device %1").arg(parser.value(QStringLiteral("device"))),
            QString());
    try {
        device.subType = static_cast<int>(args::parseInteger(
            parser.value(QStringLiteral("subtype")), -0x80000000LL, 0x7FFFFFFFLL));
        device.connectType = static_cast<int>(
            args::parseInteger(parser.value(QStringLiteral("connect-type")), 0, 0xFF));
        device.toneFlag = static_cast<int>(args::parseInteger(
            parser.value(QStringLiteral("tone-flag")), -0x80000000LL, 0x7FFFFFFFLL));
    } catch (const ArgError& e) {
        return badInput(QString::fromLatin1(e.what()), QString());
    }

    device.toneVersion = parser.value(QStringLiteral("tone-ver"));
    device.localIp = parser.value(QStringLiteral("local-ip"));

    Models models = Models::defaults();
    if (parser.isSet(QStringLiteral("model"))) {
        QFile file(parser.value(QStringLiteral("model")));
        if (!file.open(QIODevice::ReadOnly))
            return badInput(QStringLiteral("cannot read model file %1: %2")
                                .arg(file.fileName(), file.errorString()),
                            QString());
        const QString error = models.override(file.readAll());
        if (!error.isEmpty())
            return badInput(QStringLiteral("%1: %2").arg(file.fileName(), error), QString());
    }

    if (command == QLatin1String("explain"))
        return explain(call, device.deviceType, parser.isSet(QStringLiteral("json")),
                       parser.isSet(QStringLiteral("follow")));
    if (command == QLatin1String("decode"))
        return decode(call, parser.value(QStringLiteral("file")),
                      parser.isSet(QStringLiteral("device")) ? std::optional<int>(device.deviceType)
                                                             : std::nullopt);

    QStringList request = call;
    if (command == QLatin1String("raw")) {
        // raw reads its own options, and every value after them
        request = QStringList{command};
        if (parser.isSet(QStringLiteral("timeout")))
            request << QStringLiteral("--timeout=") + parser.value(QStringLiteral("timeout"));
        if (parser.isSet(QStringLiteral("text")))
            request << QStringLiteral("--text=") + parser.value(QStringLiteral("text"));
        request << QStringLiteral("--") << call.mid(1);
    }
    try {
        printOutcome(runRequest(request, device, models), parser.isSet(QStringLiteral("json")));
    } catch (const UsageError& e) {
        return badInput(QString::fromLatin1(e.what()), e.usage);
    }
    return 0;
}
