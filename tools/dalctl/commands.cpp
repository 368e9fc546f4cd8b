// dalctl's command line: one table of options and one of commands drive the usage, the help
// pages, the manual page, the bash completion, the dispatch and the checks that refuse an option
// or a word a command does not take.
#include "commands.h"

#include "decode.h"
#include "doc.h"
#include "explain.h"
#include "pacing.h"
#include "records.h"
#include "registry.h"
#include "session.h"
#include "sweep.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTextStream>

#include <cstdio>

namespace {

enum ExitCode { kAnswer, kNothing, kBadInput };
const char* const kExitCodes[] = {"an answer", "nothing found or nothing queued", "bad input"};

const QString kPurpose = QStringLiteral(
    "shows exactly what libDAL_Manage queues for an operation on a device family, and which "
    "operation queued a record");
const QString kOptionsAnywhere = QStringLiteral(
    "Options go anywhere on the line; after \"--\" every argument is a value. \"dalctl COMMAND "
    "--help\" describes a command, \"dalctl OPERATION --help\" an operation.");

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

// Input that cannot be read as given: what is wrong, and the usage that says what would do.
struct BadInput {
    QString message;
    QString usage = QString();
};

int badInput(const QString& message, const QString& usage = QString()) {
    out().flush();
    err() << "dalctl: " << message << '\n' << (usage.isEmpty() ? "" : usage + '\n');
    err().flush();
    return kBadInput;
}

int print(const QByteArray& bytes) {
    out().flush();
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout);
    return kAnswer;
}

QString jsonLine(const QJsonObject& object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + '\n';
}

QString exitCodesText() {
    QStringList codes;
    for (int code : {kAnswer, kNothing, kBadInput})
        codes << QStringLiteral("%1 %2").arg(code).arg(QLatin1String(kExitCodes[code]));
    return "Exit codes: " + codes.join(", ") + ".\n";
}

// ---- the options -------------------------------------------------------------------------------

struct OptionRow {
    QString name;
    QString value; // empty: a flag
    QString help;
    QString byDefault = QString();

    QString described() const {
        return byDefault.isEmpty() ? help : QStringLiteral("%1 (default %2)").arg(help, byDefault);
    }
};

const QVector<OptionRow>& optionRows() {
    static const QVector<OptionRow> rows = [] {
        QVector<OptionRow> all{{"device", "CODE|FAMILY",
                                "The device family, or a device-type code of one: where an "
                                "operation is run, or where the records decoded went."}};
        for (const UtilityOption& o : utilityOptions())
            all << OptionRow{QLatin1String(o.option), QLatin1String(o.valueName),
                             QLatin1String(o.help), QLatin1String(o.byDefault)};
        return all + QVector<OptionRow>{
                         {"model", "JSON|FILE",
                          "Model records from JSON text, or from a JSON file: whole records or "
                          "any part of them, lists included."},
                         {"json", "", "One JSON object per line."},
                         {"trace", "", "Show the library's trace lines."},
                         {"timeout", "MS", "The reply time-out.", "3000"},
                         {"text", "TEXT", "The text payload."},
                         {"file", "FILE", "Read the input from FILE."},
                         {"as-text", "",
                          "Read the input as a text a family is sent, though it reads as hex."},
                         {"out", "FILE", "Write the page to FILE."},
                         {"help", "", "Describe dalctl, or the command or operation named (-h)."},
                         {"version", "", "Print the library's version and Qt's."}};
    }();
    return rows;
}

// The options named, or all of them, as the help pages list them.
QString optionsHelp(const QStringList& names = QStringList()) {
    QString text = "\nOptions:\n";
    for (const OptionRow& o : optionRows())
        if (names.isEmpty() || names.contains(o.name))
            text += QStringLiteral("  --%1%2\n      %3\n")
                        .arg(o.name, o.value.isEmpty() ? "" : ' ' + o.value, o.described());
    return text;
}

// ---- the commands ------------------------------------------------------------------------------

struct CommandRow;

struct Context {
    const QCommandLineParser& parser;
    const CommandRow& row;
    QString command;   // as given: a command's name or an operation's
    QStringList words; // after it
    std::optional<Device> device;
};

struct CommandRow {
    QString name; // "OPERATION" stands for any operation
    QString usage;
    QString summary;
    QStringList options;
    QString example;
    int most; // the most words it takes after its name; -1: as many as its handler reads
    int (*run)(Context&);

    QString what() const { return name == "OPERATION" ? QStringLiteral("an operation") : name; }
};

const QVector<CommandRow>& commandRows();

const CommandRow& rowOf(const QString& command) {
    for (const CommandRow& row : commandRows())
        if (row.name == command)
            return row;
    return commandRows().first(); // an operation
}

QString usageOf(const CommandRow& row) { return "usage: dalctl " + row.usage; }

QString helpOf(const CommandRow& row) {
    return usageOf(row) + "\n\n" + row.summary + '\n' +
           (row.options.isEmpty() ? QString() : optionsHelp(row.options)) + "\nExample:\n  " +
           row.example + "\n\n" + exitCodesText();
}

QString generalHelp() {
    QString text = kPurpose.at(0).toUpper() + kPurpose.mid(1) + ".\n\nCommands:\n";
    for (const CommandRow& row : commandRows())
        text += QStringLiteral("  dalctl %1\n      %2\n").arg(row.usage, row.summary);
    return text + optionsHelp() + '\n' + kOptionsAnywhere + '\n' + exitCodesText();
}

// Text as roff reads it: a backslash and a minus sign escaped, no line taken for a request.
QString roff(QString text) {
    text.replace('\\', "\\e").replace('-', "\\-");
    return text.replace(QRegularExpression("^([.'])", QRegularExpression::MultilineOption),
                        "\\&\\1");
}

QByteArray manualPage() {
    QString page = QStringLiteral(".TH DALCTL 1 \"\" \"libDAL_Manage %1\" \"User Commands\"\n"
                                  ".SH NAME\ndalctl \\- %2\n.SH SYNOPSIS\n.nf\n")
                       .arg(DAL_MANAGE_VERSION, roff(kPurpose));
    for (const CommandRow& row : commandRows())
        page += "\\fBdalctl\\fR " + roff(row.usage) + '\n';
    page += QStringLiteral(".fi\n.SH DESCRIPTION\ndalctl %1.\n.PP\n%2\n.SH COMMANDS\n")
                .arg(roff(kPurpose), roff(kOptionsAnywhere));
    for (const CommandRow& row : commandRows())
        page += ".TP\n\\fBdalctl\\fR " + roff(row.usage) + '\n' + roff(row.summary) + '\n' +
                (row.options.isEmpty()
                     ? QString()
                     : ".IP\nOptions: " + roff("--" + row.options.join(", --")) + ".\n");
    page += ".SH OPTIONS\n";
    for (const OptionRow& o : optionRows())
        page += ".TP\n\\fB" + roff("--" + o.name) + "\\fR" +
                (o.value.isEmpty() ? QString() : " \\fI" + roff(o.value) + "\\fR") + '\n' +
                roff(o.described()) + '\n';
    page += ".SH \"EXIT STATUS\"\n";
    for (int code : {kAnswer, kNothing, kBadInput})
        page += QStringLiteral(".TP\n%1\n%2\n").arg(code).arg(QLatin1String(kExitCodes[code]));
    page += ".SH EXAMPLES\n.nf\n";
    for (const CommandRow& row : commandRows())
        page += roff(row.example) + '\n';
    page += ".fi\n.SH FILES\n" +
            roff("dalctl keeps nothing on disk: it reads and writes only the files named by "
                 "--model, --file and --out, and the log explain is given.") +
            "\n.TP\n" + roff("/usr/share/bash-completion/completions/dalctl") +
            "\nThe bash completion, as \\fBdalctl completion\\fR writes it.\n";
    return page.toUtf8();
}

QByteArray completionScript() {
    QStringList words, takingFamily, options, valued[3]; // valued: by a family, a file, else
    for (const CommandRow& row : commandRows().mid(1)) {
        words << row.name;
        if (row.usage.contains("FAMILY"))
            takingFamily << row.name;
    }
    for (const Operation& op : operations())
        if (!words.contains(op.name))
            words << op.name;
    for (const OptionRow& o : optionRows()) {
        options << "--" + o.name;
        if (!o.value.isEmpty())
            valued[o.value.contains("FAMILY") ? 0
                   : o.value.contains("FILE") ? 1
                                              : 2]
                << "--" + o.name;
    }
    // An option's value follows it; the first other word is the command, and a command that
    // takes a family is offered the families next.
    return QStringLiteral(
               "# bash completion of dalctl, written by `dalctl completion`.\n"
               "_dalctl() {\n"
               "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
               "    local families=\"%1\" command= i\n"
               "    local -i after=0\n"
               "    case $prev in\n"
               "        %2) COMPREPLY=($(compgen -W \"$families\" -- \"$cur\")); return ;;\n"
               "        %3) COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n"
               "        %4) return ;;\n"
               "    esac\n"
               "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
               "        case ${COMP_WORDS[i]} in\n"
               "            %5) ((i++)) ;;\n"
               "            -?*) ;;\n"
               "            *) [[ $command ]] && after+=1 || command=${COMP_WORDS[i]} ;;\n"
               "        esac\n"
               "    done\n"
               "    if [[ $cur == -* ]]; then\n"
               "        COMPREPLY=($(compgen -W \"%6\" -- \"$cur\"))\n"
               "    elif [[ -z $command ]]; then\n"
               "        COMPREPLY=($(compgen -W \"%7\" -- \"$cur\"))\n"
               "    elif ((after == 0)); then\n"
               "        case $command in\n"
               "            %8) COMPREPLY=($(compgen -W \"$families\" -- \"$cur\")) ;;\n"
               "        esac\n"
               "    fi\n"
               "}\n"
               "complete -o default -F _dalctl dalctl\n")
        .arg(familyNames().join(' '), valued[0].join('|'), valued[1].join('|'), valued[2].join('|'),
             (valued[0] + valued[1] + valued[2]).join('|'), options.join(' '), words.join(' '),
             takingFamily.join('|'))
        .toUtf8();
}

// ---- what several commands read ----------------------------------------------------------------

QString familyList() { return familyNames().join(", "); }

// Opens `name` for reading, "-" for standard input.
void openInput(QFile& file, const QString& name) {
    file.setFileName(name);
    if (!(name == "-" ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly)))
        throw BadInput{QStringLiteral("cannot read %1: %2").arg(name, file.errorString())};
}

QByteArray readInput(const QString& name) {
    QFile file;
    openInput(file, name);
    return file.readAll();
}

// The device --device names, if any; what the library does with a code no family has is said
// on standard error.
std::optional<Device> deviceOption(const QCommandLineParser& parser) {
    if (!parser.isSet("device"))
        return std::nullopt;
    const std::optional<Device> device = deviceNamed(parser.value("device"));
    if (!device)
        throw BadInput{QStringLiteral("unknown device %1: the families are %2; or unknown, or any "
                                      "device-type code in decimal or 0x-hex")
                           .arg(parser.value("device"), familyList())};
    if (!device->ofFamily())
        err() << "dalctl: " << describeCode(device->code) << Qt::endl;
    return device;
}

long long integerOption(const QCommandLineParser& parser, const QString& name, long long min,
                        long long max) {
    try {
        return args::parseInteger(parser.value(name), min, max);
    } catch (const ArgError& e) {
        throw BadInput{QStringLiteral("--%1: %2").arg(name, QString::fromStdString(e.what()))};
    }
}

// The utility's values the options set, for the device.
UtilityValues utilityFrom(const QCommandLineParser& parser, const Device& device) {
    UtilityValues u;
    u.deviceType = device.code;
    for (const UtilityOption& o : utilityOptions()) {
        if (!o.text)
            integerOption(parser, QLatin1String(o.option), o.min, o.max);
        o.set(u, parser.value(QLatin1String(o.option)));
    }
    return u;
}

// The built-in models changed by --model's JSON text, or by the JSON file it names: an answer's
// replay line carries the text itself.
Models modelsFrom(const QCommandLineParser& parser) {
    Models models = Models::defaults();
    const QString given = parser.value("model");
    const bool text = given.trimmed().startsWith('{') || given.trimmed().startsWith('[');
    const QString problem =
        !parser.isSet("model") ? QString() : models.apply(text ? given.toUtf8() : readInput(given));
    if (!problem.isEmpty())
        throw BadInput{QStringLiteral("--model %1: %2").arg(text ? "JSON" : given, problem)};
    return models;
}

// Prints what a call queued; the exit code says whether it queued (or returned) anything.
int printOutcome(const Outcome& outcome, bool json) {
    if (json && !outcome.returned.isEmpty())
        out() << jsonLine(QJsonObject{{QStringLiteral("returned"), outcome.returned}});
    for (int k = 0; json && k < outcome.count(); ++k)
        out() << jsonLine(outcome.json(k));
    if (!json)
        out() << (outcome.returned.isEmpty() ? QString() : outcome.returned + '\n')
              << (outcome.empty() ? "no record queued\n" : "") << outcome.recordsText();
    out().flush();
    return outcome.empty() && outcome.returned.isEmpty() ? kNothing : kAnswer;
}

// A record that went to another family than the device's is pointed out.
void noteOtherFamilies(const Outcome& outcome, const Device& named, const QString& operation) {
    QStringList others;
    for (const model_Protocoldata& rec : outcome.records) {
        const Family* f = familyOfCode(rec.deviceType);
        const QString family = f ? f->name : "device type " + deviceCodeText(rec.deviceType);
        if (rec.deviceType != named.code && f != named.family && !others.contains(family))
            others << family;
    }
    if (!others.isEmpty())
        err() << "dalctl: note: " << operation << " sends to " << others.join(", ")
              << " whatever the device; " << named.word() << " was named\n";
    err().flush();
}

// The written form of each argument whose kind has more to it than its name, after the
// signature: lists, JSON objects and records, colours.
QString writtenForms(const Operation& op) {
    using args::Kind;
    const QVector<Kind> plain{Kind::Integer, Kind::Boolean, Kind::Decimal, Kind::Text, Kind::Bytes};
    QStringList forms;
    for (const Parameter& p : op.arguments)
        if (p.kind == Kind::Json && !op.jsonMembers.isEmpty())
            forms << p.name + ": JSON of " + op.jsonMembers.join(' ');
        else if (!plain.contains(p.kind))
            forms << p.name + ": " + QLatin1String(args::infoOf(p.kind).written);
    return forms.isEmpty() ? QString() : "    # " + forms.join("; ");
}

// ---- the commands' handlers --------------------------------------------------------------------

int runOperation(Context& c) {
    // A short name is looked up first in the class that sends to the device named.
    const Operation& op =
        operationFor(c.command, c.words, c.device ? c.device->family->className : QString());
    // A family the class never sends to is refused; a code no family has runs as the library
    // runs it.
    const QVector<const Family*> sending = familiesOf(op.className);
    const Device device = c.device.value_or(Device{sending.first(), sending.first()->code, {}});
    if (device.ofFamily() && !sending.contains(device.family)) {
        QStringList names;
        for (const Family* f : sending)
            names << f->name;
        throw BadInput{
            QStringLiteral("%1 is an operation of %2, which never sends to the %3 "
                           "family; its families: %4")
                .arg(op.qualifiedName(), op.className, device.family->name, names.join(", "))};
    }
    Outcome outcome;
    try {
        outcome = run(Call{&op, c.words, modelsFrom(c.parser), utilityFrom(c.parser, device)});
    } catch (const ArgError& e) {
        throw BadInput{op.name + ": " + QString::fromStdString(e.what()),
                       "usage: dalctl [options] " + op.usage()};
    }
    noteOtherFamilies(outcome, device, op.name);
    return printOutcome(outcome, c.parser.isSet("json"));
}

int runRawCommand(Context& c) {
    const Device device = c.device.value_or(deviceOfCode(family::native));
    if (!device.family->routed())
        throw BadInput{"raw sends through DalTarsel::f_SendCmd, which never sends to the " +
                       device.family->name + " family"};
    const int timeout = int(integerOption(c.parser, "timeout", INT_MIN, INT_MAX));
    return printOutcome(
        runRaw(c.words, timeout, c.parser.value("text"), utilityFrom(c.parser, device)),
        c.parser.isSet("json"));
}

int runList(Context& c) {
    const QString pattern = c.words.value(0);
    const bool wildcard = pattern.contains('*') || pattern.contains('?');
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
    if (!c.words.isEmpty() && !family)
        throw BadInput{"unknown family " + c.words[0] + ": the families are " + familyList(),
                       usageOf(c.row)};
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
    if (c.device && !c.device->family->routed())
        throw BadInput{"trace lines come from DalTarsel's families, not " + c.device->family->name};
    const QString name = c.words.value(0, QStringLiteral("-"));
    QFile file;
    openInput(file, name);
    out().flush();
    const long long answered = explainStream(file.handle(), stdout, c.device ? &*c.device : nullptr,
                                             c.parser.isSet("json"));
    if (answered < 0)
        throw BadInput{"error reading " + name};
    return answered > 0 ? kAnswer : kNothing;
}

int runDecode(Context& c) {
    const QString fileName = c.parser.value("file");
    if (c.words.isEmpty() == fileName.isEmpty())
        throw BadInput{c.words.isEmpty() ? "decode takes a record: as arguments, - for standard "
                                           "input, or --file FILE"
                                         : "decode takes its input either as arguments or from "
                                           "--file, not both",
                       usageOf(c.row)};
    QByteArray input = c.words.join(' ').toUtf8();
    if (c.words == QStringList{QStringLiteral("-")} || !fileName.isEmpty()) {
        // A file's last line ends where its line ending starts.
        input = readInput(fileName.isEmpty() ? QStringLiteral("-") : fileName);
        input.chop(input.endsWith("\r\n") ? 2 : input.endsWith('\n') ? 1 : 0);
    }
    const bool json = c.parser.isSet("json");
    // A reading is printed as soon as it is proven; a JSON line once its record is made.
    const auto print = [json](const Decoding& record, int proven) {
        if (!json)
            out() << record.textAsProven(proven);
        else if (proven == record.readings.size())
            out() << jsonLine(record.json());
        out().flush();
    };
    const Decoded decoded =
        decodeInput(input, c.device ? &*c.device : nullptr, c.parser.isSet("as-text"), print);
    if (!decoded.error.isEmpty())
        throw BadInput{decoded.error};
    const bool everyFound = std::all_of(decoded.records.begin(), decoded.records.end(),
                                        [](const Decoding& record) { return record.found(); });
    return everyFound ? kAnswer : kNothing;
}

int runDoc(Context& c) {
    QString error;
    if (!c.parser.isSet("out"))
        return print(referencePage());
    if (!writeReferencePage(c.parser.value("out"), error))
        throw BadInput{error};
    return kAnswer;
}

int runCompletion(Context&) { return print(completionScript()); }

int runManual(Context&) { return print(manualPage()); }

const QVector<CommandRow>& commandRows() {
    static const QVector<CommandRow> rows = [] {
        QStringList utility{QStringLiteral("device")};
        for (const UtilityOption& o : utilityOptions())
            utility << QLatin1String(o.option);
        return QVector<CommandRow>{
            {"OPERATION", "[options] OPERATION [ARG...]",
             "Runs one operation of DalTarsel, Dal_Pommet or dal_Osd on a device family and "
             "prints every record it queues. Arguments are typed by the operation's parameters: "
             "integers in decimal or 0x-hex, booleans true/false, decimals, text, byte buffers as "
             "hex, numbers as 1,2,3 (or 1-2-3 where the parameter says so), JSON objects as JSON "
             "text. Model records are built in; --model changes them.",
             utility + QStringList{"model", "json", "trace"}, "dalctl --device T3 saveScene 3000 5",
             -1, runOperation},
            {"list", "list [PATTERN]",
             "Lists the operations (names containing PATTERN, or matching it with * and ?) with "
             "their parameters, and the written form of each parameter that has one beyond its "
             "type: lists, JSON objects, records, colours.",
             QStringList(), "dalctl list Oled", 1, runList},
            {"raw", "raw [--timeout MS] [--text TEXT] CMD DAT1 DAT2 DAT3 DAT4 [HEX]",
             "Sends one native command through the generic send: CMD and DAT1..DAT4 as hex bytes "
             "(as every printout shows them, 0x allowed), then an optional data block in hex.",
             utility + QStringList{"timeout", "text", "json", "trace"},
             "dalctl --device T3 raw 6a 03 00 00 00", -1, runRawCommand},
            {"demo", "demo", "Prints representative requests as every device family receives them.",
             QStringList(), "dalctl demo", 0, runDemo},
            {"sweep", "sweep [FAMILY]",
             "Runs every operation with sample arguments on every family (or the one named) and "
             "prints each request, its trace lines and every record it queued.",
             QStringList(), "dalctl sweep T3", 1, runSweepCommand},
            {"explain", "explain [--device D] [--json] [FILE|-]",
             "Copies a log (a file, or standard input as it grows) line by line and appends to "
             "each trace line of the generic send \"  # dal: \" and the operations proven to "
             "queue it, with their values.",
             QStringList{"device", "json"}, "tail -F app.log | dalctl explain -", 1, runExplain},
            {"decode", "decode [--device D] [--json] [--as-text] INPUT... | - | --file FILE",
             "Names the operations proven to queue each record of the input, with every value "
             "they read and what produced each byte: records as dalctl prints them (or their "
             "--json lines), trace lines, hex heads and blocks, frames, or a family's text.",
             QStringList{"device", "json", "file", "as-text"},
             "dalctl --device T3 saveScene 3000 5 | dalctl decode -", -1, runDecode},
            {"doc", "doc [--out FILE]",
             "Writes the protocol reference page: one self-contained HTML file with every "
             "operation's records on every family.",
             QStringList{"out"}, "dalctl doc --out reference.html", 0, runDoc},
            {"completion", "completion",
             "Prints the bash completion of dalctl (commands, operations, families, options).",
             QStringList(), "source <(dalctl completion)", 0, runCompletion},
            {"man", "man", "Prints this manual page, dalctl(1), in roff.", QStringList(),
             "dalctl man > dalctl.1", 0, runManual},
        };
    }();
    return rows;
}

// ---- the command line --------------------------------------------------------------------------

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
        const bool value = ended || a == "-" || !a.startsWith('-') || a.at(1).isDigit() ||
                           a.at(1) == '.' || a.startsWith("---");
        if (a == "--" && !ended) {
            ended = true;
        } else if (value) {
            line.words << a;
        } else {
            line.options << a;
            const QString name = a.mid(a.startsWith("--") ? 2 : 1);
            if (valued.contains(name) && i + 1 < arguments.size())
                line.options << arguments[++i];
        }
    }
    return line;
}

// Refuses the words past the `most` that `what` takes (-1: any number).
void refuseExtra(const QString& what, int most, const QStringList& words,
                 const QString& usage = QString()) {
    if (most >= 0 && words.size() > most)
        throw BadInput{QStringLiteral("%1 takes %2; extra: %3")
                           .arg(what,
                                most ? QStringLiteral("at most %1 argument(s)").arg(most)
                                     : QStringLiteral("no arguments"),
                                words.mid(most).join(' ')),
                       usage};
}

// Refuses the first option given that the command does not read, naming the commands that do.
void refuseForeignOption(const QCommandLineParser& parser, const CommandRow& row) {
    for (const OptionRow& o : optionRows()) {
        if (!parser.isSet(o.name) || row.options.contains(o.name))
            continue;
        QStringList readers;
        for (const CommandRow& other : commandRows())
            if (other.options.contains(o.name))
                readers << other.what();
        throw BadInput{QStringLiteral("--%1 is an option of %2, not of %3")
                           .arg(o.name, readers.join(", "), row.what())};
    }
}

// The general help, or the page of the command or operation named.
int printHelp(const Context& c, const QStringList& words) {
    refuseExtra(QStringLiteral("--help"), 1, words);
    if (words.isEmpty())
        return print(generalHelp().toUtf8());
    const QVector<const Operation*> named = findOperations(c.command);
    if (c.row.name == "OPERATION" && named.isEmpty())
        throw BadInput{"no command or operation is named " + c.command,
                       QStringLiteral("dalctl --help lists the commands")};
    for (const Operation* op : named)
        out() << "usage: dalctl [options] " << op->usage() << writtenForms(*op) << '\n';
    out() << (named.isEmpty() ? "" : "\n") << helpOf(c.row);
    return kAnswer;
}

} // namespace

int runCommandLine(const QStringList& arguments) {
    qInstallMessageHandler(handleMessage);
    // dalctl runs operations to see what they queue, not to drive a keyboard: no pauses.
    dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
    QCommandLineParser parser;
    for (const OptionRow& o : optionRows())
        parser.addOption(
            QCommandLineOption(o.name == "help" ? QStringList{"h", o.name} : QStringList{o.name},
                               o.help, o.value, o.byDefault));
    const CommandLine line = split(arguments);
    if (!parser.parse(line.options))
        return badInput(parser.errorText(), QStringLiteral("dalctl --help lists the commands"));
    const QString command = line.words.value(0);
    Context c{parser, rowOf(command), command, line.words.mid(1), std::nullopt};
    try {
        if (parser.isSet("version")) {
            refuseExtra(QStringLiteral("--version"), 0, line.words);
            out() << "dalctl (libDAL_Manage " DAL_MANAGE_VERSION "), Qt " << qVersion() << '\n';
            return kAnswer;
        }
        if (parser.isSet("help"))
            return printHelp(c, line.words);
        if (line.words.isEmpty())
            return badInput(QStringLiteral("no operation given"), generalHelp());
        refuseExtra(c.row.name, c.row.most, c.words, usageOf(c.row));
        refuseForeignOption(parser, c.row);
        c.device = deviceOption(parser);
        showTrace = parser.isSet("trace");
        if (!showTrace)
            QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        return c.row.run(c);
    } catch (const BadInput& e) {
        return badInput(e.message, e.usage);
    } catch (const UsageError& e) {
        return badInput(QString::fromStdString(e.what()),
                        e.usage.isEmpty() ? usageOf(c.row) : e.usage);
    }
}
