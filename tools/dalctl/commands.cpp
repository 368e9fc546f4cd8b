// dalctl's command line: one table of options and one of commands drive the usage, each
// command's help, the dispatch and the check that refuses an option a command does not read.
#include "commands.h"

#include "decode.h"
#include "doc.h"
#include "engine.h"
#include "explain.h"
#include "pacing.h"
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
#include <QTextStream>

#include <cstdio>

namespace {

constexpr int kAnswer = 0;
constexpr int kNothing = 1;
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

int badInput(const QString& message, const QString& usage = QString()) {
    out().flush();
    err() << "dalctl: " << message << '\n';
    if (!usage.isEmpty())
        err() << usage << '\n';
    err().flush();
    return kBadInput;
}

// ---- the options
// ----------------------------------------------------------------------------------

struct OptionRow {
    QString name;
    QString value; // empty: a flag
    QString help;
    QString byDefault;
};

const QVector<OptionRow>& optionRows() {
    static const QVector<OptionRow> rows = [] {
        QVector<OptionRow> all{
            {"device", "CODE|FAMILY",
             "The device family, or a device-type code of one: where an operation is run, or "
             "where the records decoded went.",
             ""}};
        for (const UtilityOption& o : utilityOptions())
            all << OptionRow{QLatin1String(o.option), QLatin1String(o.valueName),
                             QLatin1String(o.help), QLatin1String(o.byDefault)};
        all << OptionRow{"model", "FILE.json",
                         "Model records from JSON, whole or in part, lists included.", ""}
            << OptionRow{"json", "", "One JSON object per line.", ""}
            << OptionRow{"trace", "", "Show the library's trace lines.", ""}
            << OptionRow{"timeout", "MS", "The reply time-out.", "3000"}
            << OptionRow{"text", "TEXT", "The text payload.", ""}
            << OptionRow{"file", "FILE", "Read the input from FILE.", ""}
            << OptionRow{"as-text", "",
                         "Read the input as a text a family is sent, though it reads as hex.", ""}
            << OptionRow{"out", "FILE", "Write the page to FILE.", ""};
        return all;
    }();
    return rows;
}

QStringList utilityOptionNames() {
    QStringList names{QStringLiteral("device")};
    for (const UtilityOption& o : utilityOptions())
        names << QLatin1String(o.option);
    return names;
}

// ---- the commands
// ---------------------------------------------------------------------------------

struct Context {
    QCommandLineParser& parser;
    QString command;   // as given: a command's name or an operation's
    QStringList words; // after it
};

struct CommandRow {
    QString name; // "OPERATION" stands for any operation
    QString usage;
    QString summary;
    QStringList options;
    QString example;
    int (*run)(Context&);
};

const QVector<CommandRow>& commandRows();

const CommandRow& rowOf(const QString& command) {
    for (const CommandRow& row : commandRows())
        if (row.name == command)
            return row;
    return commandRows().first(); // an operation
}

QString usageOf(const CommandRow& row) { return QStringLiteral("usage: dalctl %1").arg(row.usage); }

QString helpOf(const CommandRow& row) {
    QString text = usageOf(row) + QStringLiteral("\n\n") + row.summary + QLatin1Char('\n');
    if (!row.options.isEmpty()) {
        text += QStringLiteral("\nOptions:\n");
        for (const OptionRow& o : optionRows())
            if (row.options.contains(o.name))
                text += QStringLiteral("  --%1%2\n      %3%4\n")
                            .arg(o.name, o.value.isEmpty() ? QString() : QLatin1Char(' ') + o.value,
                                 o.help,
                                 o.byDefault.isEmpty()
                                     ? QString()
                                     : QStringLiteral(" (default %1)").arg(o.byDefault));
    }
    text += QStringLiteral("\nExample:\n  %1\n\nExit codes: 0 an answer, 1 nothing found or "
                           "nothing queued, 2 bad input.\n")
                .arg(row.example);
    return text;
}

QString generalHelp() {
    QString text = QStringLiteral(
        "Shows exactly what libDAL_Manage queues for an operation on a device family, and which "
        "operation queued a record.\n\nCommands:\n");
    for (const CommandRow& row : commandRows())
        text += QStringLiteral("  dalctl %1\n      %2\n").arg(row.usage, row.summary);
    text += QStringLiteral(
        "\nOptions go anywhere on the line; after \"--\" every argument is a value. "
        "\"dalctl COMMAND --help\" describes a command, \"dalctl OPERATION --help\" an "
        "operation.\nExit codes: 0 an answer, 1 nothing found or nothing queued, 2 bad input.\n");
    return text;
}

// ---- what several commands read ---------------------------------------------------------------

QString familyList() { return familyNames().join(QStringLiteral(", ")); }

// The device given by --device, or nothing when none was given; `error` is set when the option
// names none. What the library does with a code no family has is said on standard error.
std::optional<Device> deviceOption(const QCommandLineParser& parser, QString& error) {
    if (!parser.isSet(QStringLiteral("device")))
        return std::nullopt;
    const QString given = parser.value(QStringLiteral("device"));
    const std::optional<Device> device = deviceNamed(given);
    if (!device)
        error = QStringLiteral("unknown device %1: the families are %2; or unknown, or any "
                               "device-type code in decimal or 0x-hex")
                    .arg(given, familyList());
    else if (const QString what = describeCode(device->code); !device->ofFamily())
        err() << "dalctl: " << what << Qt::endl;
    return device;
}

// The utility's values the options set, for the device.
bool utilityFrom(const QCommandLineParser& parser, const Device& device, UtilityValues& u,
                 QString& error) {
    u = UtilityValues();
    u.deviceType = device.code;
    for (const UtilityOption& o : utilityOptions()) {
        const QString value = parser.isSet(QLatin1String(o.option))
                                  ? parser.value(QLatin1String(o.option))
                                  : QLatin1String(o.byDefault);
        if (!o.text) {
            try {
                args::parseInteger(value, o.min, o.max);
            } catch (const ArgError& e) {
                error = QStringLiteral("--%1: %2")
                            .arg(QLatin1String(o.option), QString::fromStdString(e.what()));
                return false;
            }
        }
        o.set(u, value);
    }
    return true;
}

bool modelsFrom(const QCommandLineParser& parser, Models& models, QString& error) {
    models = Models::defaults();
    if (!parser.isSet(QStringLiteral("model")))
        return true;
    QFile file(parser.value(QStringLiteral("model")));
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read model file %1: %2")
                    .arg(file.fileName(), file.errorString());
        return false;
    }
    const QString problem = models.apply(file.readAll());
    if (!problem.isEmpty())
        error = QStringLiteral("%1: %2").arg(file.fileName(), problem);
    return problem.isEmpty();
}

// Prints what a call queued; the exit code says whether it queued (or returned) anything.
int printOutcome(const Outcome& outcome, bool json) {
    if (json) {
        if (!outcome.returned.isEmpty())
            out() << QJsonDocument(QJsonObject{{QStringLiteral("returned"), outcome.returned}})
                         .toJson(QJsonDocument::Compact)
                  << '\n';
        for (const model_Protocoldata& rec : outcome.records)
            out() << QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact) << '\n';
        for (const model_OsdParam& rec : outcome.osdRecords)
            out() << QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact) << '\n';
    } else {
        if (!outcome.returned.isEmpty())
            out() << outcome.returned << '\n';
        if (outcome.empty())
            out() << "no record queued\n";
        out() << outcome.recordsText();
    }
    out().flush();
    return outcome.empty() && outcome.returned.isEmpty() ? kNothing : kAnswer;
}

// A record that went to another family than the device's is pointed out.
void noteOtherFamilies(const Outcome& outcome, const Device& named, const QString& operation) {
    QStringList others;
    for (const model_Protocoldata& rec : outcome.records) {
        const Family* f = familyOfCode(rec.deviceType);
        const QString family =
            f ? f->name : QStringLiteral("device type ") + deviceCodeText(rec.deviceType);
        if (rec.deviceType != named.code && f != named.family && !others.contains(family))
            others << family;
    }
    if (!others.isEmpty())
        err() << "dalctl: note: " << operation << " sends to " << others.join(QStringLiteral(", "))
              << " whatever the device; " << named.word() << " was named\n";
    err().flush();
}

// ---- the commands' handlers --------------------------------------------------------------------

int runOperation(Context& c) {
    QString error;
    const std::optional<Device> given = deviceOption(c.parser, error);
    if (!error.isEmpty())
        return badInput(error);
    const Operation* op = nullptr;
    try {
        op = &operationFor(c.command, c.words);
    } catch (const UsageError& e) {
        return badInput(QString::fromStdString(e.what()), e.usage);
    }
    // A family the class never sends to is refused; a code no family has runs as the library
    // runs it.
    const QVector<const Family*> own = familiesOf(op->className);
    const Device device = given.value_or(Device{own.first(), own.first()->code, {}});
    if (device.ofFamily() && !own.contains(device.family)) {
        QStringList names;
        for (const Family* f : own)
            names << f->name;
        return badInput(QStringLiteral("%1 is an operation of %2, which never sends to the %3 "
                                       "family; its families: %4")
                            .arg(op->qualifiedName(), op->className, device.family->name,
                                 names.join(QStringLiteral(", "))));
    }
    Call call;
    call.op = op;
    call.words = c.words;
    if (!utilityFrom(c.parser, device, call.utility, error) ||
        !modelsFrom(c.parser, call.models, error))
        return badInput(error);
    Outcome outcome;
    try {
        outcome = run(call);
    } catch (const ArgError& e) {
        return badInput(QStringLiteral("%1: %2").arg(op->name, QString::fromStdString(e.what())),
                        QStringLiteral("usage: dalctl [options] %1").arg(op->usage()));
    }
    noteOtherFamilies(outcome, device, op->name);
    return printOutcome(outcome, c.parser.isSet(QStringLiteral("json")));
}

int runRawCommand(Context& c) {
    QString error;
    const Device device = deviceOption(c.parser, error).value_or(deviceOfCode(family::native));
    if (!error.isEmpty())
        return badInput(error);
    if (!device.family->routed())
        return badInput(QStringLiteral("raw sends through DalTarsel::f_SendCmd, which never sends "
                                       "to the %1 family")
                            .arg(device.family->name));
    UtilityValues u;
    if (!utilityFrom(c.parser, device, u, error))
        return badInput(error);
    long long timeout = 0;
    try {
        timeout = args::parseInteger(c.parser.value(QStringLiteral("timeout")), INT_MIN, INT_MAX);
    } catch (const ArgError& e) {
        return badInput(QStringLiteral("--timeout: %1").arg(QString::fromStdString(e.what())));
    }
    try {
        return printOutcome(
            runRaw(c.words, int(timeout), c.parser.value(QStringLiteral("text")), u),
            c.parser.isSet(QStringLiteral("json")));
    } catch (const UsageError& e) {
        return badInput(QString::fromStdString(e.what()), usageOf(rowOf(c.command)));
    }
}

// A list argument's written form, after the signature.
QString writtenForms(const Operation& op) {
    QStringList forms;
    for (const Parameter& p : op.arguments)
        if (p.kind == args::Kind::Numbers || p.kind == args::Kind::DashNumbers)
            forms << QStringLiteral("%1: %2").arg(p.name,
                                                  QLatin1String(args::infoOf(p.kind).written));
        else if (p.kind == args::Kind::Json && !op.jsonMembers.isEmpty())
            forms << QStringLiteral("%1: JSON of %2")
                         .arg(p.name, op.jsonMembers.join(QLatin1Char(' ')));
    return forms.isEmpty() ? QString()
                           : QStringLiteral("    # ") + forms.join(QStringLiteral("; "));
}

int runList(Context& c) {
    if (c.words.size() > 1)
        return badInput(QStringLiteral("list takes at most one pattern"),
                        usageOf(rowOf(c.command)));
    const QString pattern = c.words.value(0);
    const bool wildcard = pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'));
    const QRegularExpression glob(QRegularExpression::wildcardToRegularExpression(pattern),
                                  QRegularExpression::CaseInsensitiveOption);
    int shown = 0;
    for (const Operation& op : operations())
        if (pattern.isEmpty() ||
            (wildcard ? glob.match(op.name).hasMatch() || glob.match(op.qualifiedName()).hasMatch()
                      : op.qualifiedName().contains(pattern, Qt::CaseInsensitive))) {
            out() << op.usage() << writtenForms(op) << '\n';
            ++shown;
        }
    out().flush();
    if (!shown)
        err() << "dalctl: no operation matches " << pattern << '\n';
    return shown ? kAnswer : kNothing;
}

int runSweepCommand(Context& c) {
    const Family* family = c.words.isEmpty() ? nullptr : familyOf(c.words[0]);
    if (c.words.size() > 1 || (!c.words.isEmpty() && !family))
        return badInput(QStringLiteral("sweep takes at most one family: %1").arg(familyList()),
                        usageOf(rowOf(c.command)));
    showTrace = true;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=true"));
    printSweep(out(), family);
    return kAnswer;
}

int runDemo(Context&) {
    printDemo(out());
    return kAnswer;
}

int runExplain(Context& c) {
    QString error;
    const std::optional<Device> device = deviceOption(c.parser, error);
    if (!error.isEmpty())
        return badInput(error);
    if (device && !device->family->routed())
        return badInput(QStringLiteral("trace lines come from DalTarsel's families, not %1")
                            .arg(device->family->name));
    if (c.words.size() > 1)
        return badInput(QStringLiteral("explain takes at most one file"),
                        usageOf(rowOf(c.command)));
    const QString name = c.words.value(0, QStringLiteral("-"));
    QFile file(name);
    const bool opened = name == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                   : file.open(QIODevice::ReadOnly);
    if (!opened)
        return badInput(QStringLiteral("cannot read %1: %2").arg(name, file.errorString()));
    out().flush();
    const long long answered = explainStream(file.handle(), stdout, device ? &*device : nullptr,
                                             c.parser.isSet(QStringLiteral("json")));
    if (answered < 0)
        return badInput(QStringLiteral("error reading %1").arg(name));
    return answered > 0 ? kAnswer : kNothing;
}

int runDecode(Context& c) {
    QString error;
    const std::optional<Device> device = deviceOption(c.parser, error);
    if (!error.isEmpty())
        return badInput(error);
    const QString fileName = c.parser.value(QStringLiteral("file"));
    const bool stdIn = c.words == QStringList{QStringLiteral("-")};
    if (c.words.isEmpty() && fileName.isEmpty())
        return badInput(QStringLiteral("decode takes a record: as arguments, - for standard input, "
                                       "or --file FILE"),
                        usageOf(rowOf(c.command)));
    if (!c.words.isEmpty() && !fileName.isEmpty())
        return badInput(QStringLiteral("decode takes its input either as arguments or from "
                                       "--file, not both"),
                        usageOf(rowOf(c.command)));
    QByteArray input;
    if (stdIn || !fileName.isEmpty()) {
        QFile file(fileName);
        const bool opened =
            stdIn ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
        if (!opened)
            return badInput(QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString()));
        input = file.readAll();
    } else {
        input = c.words.join(QLatin1Char(' ')).toUtf8();
    }
    const bool json = c.parser.isSet(QStringLiteral("json"));
    const Decoded decoded = decodeInput(
        input, device ? &*device : nullptr, c.parser.isSet(QStringLiteral("as-text")),
        [json](const Decoding& record) {
            out() << (json ? QString::fromUtf8(
                                 QJsonDocument(record.json()).toJson(QJsonDocument::Compact)) +
                                 '\n'
                           : record.text());
            out().flush();
        });
    if (!decoded.error.isEmpty())
        return badInput(decoded.error);
    const bool everyFound = std::all_of(decoded.records.begin(), decoded.records.end(),
                                        [](const Decoding& record) { return record.found(); });
    return everyFound ? kAnswer : kNothing;
}

int runDoc(Context& c) {
    if (!c.words.isEmpty())
        return badInput(QStringLiteral("doc takes no arguments"), usageOf(rowOf(c.command)));
    const QString path = c.parser.value(QStringLiteral("out"));
    if (path.isEmpty()) {
        out().flush();
        const QByteArray page = referencePage();
        std::fwrite(page.constData(), 1, std::size_t(page.size()), stdout);
        return kAnswer;
    }
    QString error;
    return writeReferencePage(path, error) ? kAnswer : badInput(error);
}

int runCompletion(Context& c) {
    if (!c.words.isEmpty())
        return badInput(QStringLiteral("completion takes no arguments"), usageOf(rowOf(c.command)));
    out() << completionScript();
    return kAnswer;
}

const QVector<CommandRow>& commandRows() {
    static const QVector<CommandRow> rows = [] {
        const QStringList utility = utilityOptionNames();
        return QVector<CommandRow>{
            {"OPERATION", "[options] OPERATION [ARG...]",
             "Runs one operation of DalTarsel, Dal_Pommet or dal_Osd on a device family and "
             "prints every record it queues. Arguments are typed by the operation's parameters: "
             "integers in decimal or 0x-hex, booleans true/false, decimals, text, byte buffers as "
             "hex, numbers as 1,2,3 (or 1-2-3 where the parameter says so), JSON objects as JSON "
             "text. Model records are built in; --model changes them.",
             utility + QStringList{"model", "json", "trace"}, "dalctl --device T3 saveScene 3000 5",
             runOperation},
            {"list",
             "list [PATTERN]",
             "Lists the operations (names containing PATTERN, or matching it with * and ?) with "
             "their parameters, and the written form of each list and JSON parameter.",
             {},
             "dalctl list Oled",
             runList},
            {"raw", "raw [--timeout MS] [--text TEXT] CMD DAT1 DAT2 DAT3 DAT4 [HEX]",
             "Sends one native command through the generic send: CMD and DAT1..DAT4 as hex bytes "
             "(as every printout shows them, 0x allowed), then an optional data block in hex.",
             utility + QStringList{"timeout", "text", "json", "trace"},
             "dalctl --device T3 raw 6a 03 00 00 00", runRawCommand},
            {"demo",
             "demo",
             "Prints representative requests as every device family receives them.",
             {},
             "dalctl demo",
             runDemo},
            {"sweep",
             "sweep [FAMILY]",
             "Runs every operation with sample arguments on every family (or the one named) and "
             "prints each request, its trace lines and every record it queued.",
             {},
             "dalctl sweep T3",
             runSweepCommand},
            {"explain",
             "explain [--device D] [--json] [FILE|-]",
             "Copies a log (a file, or standard input as it grows) line by line and appends to "
             "each trace line of the generic send \"  # dal: \" and the operations proven to "
             "queue it, with their values.",
             {"device", "json"},
             "tail -F app.log | dalctl explain -",
             runExplain},
            {"decode",
             "decode [--device D] [--json] [--as-text] INPUT... | - | --file FILE",
             "Names the operations proven to queue each record of the input, with every value "
             "they read and what produced each byte: records as dalctl prints them (or their "
             "--json lines), trace lines, hex heads and blocks, frames, or a family's text.",
             {"device", "json", "file", "as-text"},
             "dalctl --device T3 saveScene 3000 5 | dalctl decode -",
             runDecode},
            {"doc",
             "doc [--out FILE]",
             "Writes the protocol reference page: one self-contained HTML file with every "
             "operation's records on every family.",
             {"out"},
             "dalctl doc --out reference.html",
             runDoc},
            {"completion",
             "completion",
             "Prints the bash completion of dalctl (commands, operations, families, options).",
             {},
             "source <(dalctl completion)",
             runCompletion},
        };
    }();
    return rows;
}

// ---- the command line
// ------------------------------------------------------------------------------

// The command line with its options taken out wherever they stand: an argument that starts
// with a dash is an option unless it is "-" (standard input) or a negative number, and "--"
// ends the options.
struct CommandLine {
    QStringList options;
    QStringList words;
};

CommandLine split(const QStringList& arguments) {
    QStringList valued;
    for (const OptionRow& o : optionRows())
        if (!o.value.isEmpty())
            valued << o.name;
    CommandLine line{{arguments.value(0)}, {}};
    bool ended = false;
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& a = arguments[i];
        // A value: "-", a negative number, or a word no option looks like (a trace line
        // starts "---addToQueue").
        const bool value = ended || a == QLatin1String("-") || !a.startsWith(QLatin1Char('-')) ||
                           a.at(1).isDigit() || a.at(1) == QLatin1Char('.') ||
                           a.startsWith(QLatin1String("---"));
        if (a == QLatin1String("--") && !ended) {
            ended = true;
        } else if (value) {
            line.words << a;
        } else {
            line.options << a;
            const QString name = a.mid(a.startsWith(QLatin1String("--")) ? 2 : 1);
            if (valued.contains(name) && i + 1 < arguments.size())
                line.options << arguments[++i];
        }
    }
    return line;
}

// The first option given that the command does not read, with the commands that do.
QString foreignOption(const QCommandLineParser& parser, const CommandRow& row) {
    for (const OptionRow& o : optionRows()) {
        if (!parser.isSet(o.name) || row.options.contains(o.name))
            continue;
        QStringList readers;
        for (const CommandRow& other : commandRows())
            if (other.options.contains(o.name))
                readers << (other.name == QLatin1String("OPERATION")
                                ? QStringLiteral("an operation")
                                : other.name);
        return QStringLiteral("--%1 is an option of %2, not of %3")
            .arg(o.name, readers.join(QStringLiteral(", ")),
                 row.name == QLatin1String("OPERATION") ? QStringLiteral("an operation")
                                                        : row.name);
    }
    return QString();
}

} // namespace

int runCommandLine(const QStringList& arguments) {
    qInstallMessageHandler(handleMessage);
    // dalctl runs operations to see what they queue, not to drive a keyboard: no pauses.
    dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
    QCoreApplication::setApplicationName(QStringLiteral("dalctl"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DAL_MANAGE_VERSION));
    QCommandLineParser parser;
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringLiteral("version"));
    parser.addOption(help);
    parser.addOption(version);
    for (const OptionRow& o : optionRows())
        parser.addOption(QCommandLineOption(o.name, o.help, o.value, o.byDefault));
    const CommandLine line = split(arguments);
    if (!parser.parse(line.options))
        return badInput(parser.errorText(), QStringLiteral("dalctl --help lists the commands"));
    if (parser.isSet(version)) {
        out() << "dalctl (libDAL_Manage " DAL_MANAGE_VERSION "), Qt " << qVersion() << '\n';
        return kAnswer;
    }
    if (line.words.isEmpty()) {
        if (parser.isSet(help)) {
            out() << generalHelp();
            return kAnswer;
        }
        return badInput(QStringLiteral("no operation given"), generalHelp());
    }
    Context context{parser, line.words.first(), line.words.mid(1)};
    const CommandRow& row = rowOf(context.command);
    if (parser.isSet(help)) {
        const QVector<const Operation*> named = findOperations(context.command);
        if (row.name == QLatin1String("OPERATION") && named.isEmpty())
            return badInput(
                QStringLiteral("no command or operation is named %1").arg(context.command),
                QStringLiteral("dalctl --help lists the commands"));
        for (const Operation* op : named)
            out() << "usage: dalctl [options] " << op->usage() << writtenForms(*op) << '\n';
        out() << (named.isEmpty() ? "" : "\n") << helpOf(row);
        return kAnswer;
    }
    const QString foreign = foreignOption(parser, row);
    if (!foreign.isEmpty())
        return badInput(foreign);
    showTrace = parser.isSet(QStringLiteral("trace"));
    if (!showTrace)
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    return row.run(context);
}

QByteArray completionScript() {
    QStringList commands, operations_, options;
    for (const CommandRow& row : commandRows())
        if (row.name != QLatin1String("OPERATION"))
            commands << row.name;
    for (const Operation& op : operations())
        if (!operations_.contains(op.name))
            operations_ << op.name;
    for (const OptionRow& o : optionRows())
        options << QStringLiteral("--") + o.name;
    options << QStringLiteral("--help") << QStringLiteral("--version");
    QStringList valued;
    for (const OptionRow& o : optionRows())
        if (!o.value.isEmpty())
            valued << QStringLiteral("--") + o.name;
    return QStringLiteral(
               "# bash completion of dalctl, written by `dalctl completion`.\n"
               "_dalctl() {\n"
               "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
               "    case $prev in\n"
               "        --device) COMPREPLY=($(compgen -W \"%1\" -- \"$cur\")); return ;;\n"
               "        --model|--file|--out) COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n"
               "        %2) return ;;\n"
               "    esac\n"
               "    if [[ $cur == -* ]]; then\n"
               "        COMPREPLY=($(compgen -W \"%3\" -- \"$cur\"))\n"
               "    elif (( COMP_CWORD == 1 )) || [[ ${COMP_WORDS[COMP_CWORD-1]} == -* && "
               "${COMP_WORDS[COMP_CWORD-2]} != --* ]]; then\n"
               "        COMPREPLY=($(compgen -W \"%4 %5\" -- \"$cur\"))\n"
               "    fi\n"
               "}\n"
               "complete -o default -F _dalctl dalctl\n")
        .arg(familyNames().join(QLatin1Char(' ')),
             QStringList(valued)
                 .filter(QRegularExpression(QStringLiteral("^--(?!device|model|file|out)")))
                 .join(QLatin1Char('|')),
             options.join(QLatin1Char(' ')), commands.join(QLatin1Char(' ')),
             operations_.join(QLatin1Char(' ')))
        .toUtf8();
}
