#include "decode.h"

#include "explain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

constexpr int kRecordHeadSize = 8; // address, 0, CMD, DAT1..DAT4, spare
constexpr int kHeadSize = 5;       // CMD, DAT1..DAT4
constexpr int kOsdHeaderSize = 11;
constexpr int kMaxText = 64 * 1024; // far longer than any text a family is sent
constexpr int kShownText = 120;
const QByteArray kFrameStart = QByteArray::fromHex("680000000168");
const QByteArray kOsdMarker = QByteArray::fromHex("00fedc");

bool sendsHeads(const Family& f) { return f.form != Form::Osd; }
bool sendsOsd(const Family& f) { return f.form == Form::Osd; }
bool sendsTexts(const Family& f) { return f.form == Form::Text || f.form == Form::Frame; }
bool sendsFrames(const Family& f) { return f.form == Form::Frame; }

// The devices a record of unknown device may have gone to: the one given, or each device of
// the families that queue records of that kind.
QVector<Device> searched(const Device* device, bool (*keep)(const Family&)) {
    return device ? QVector<Device>{*device} : devicesWhere(keep);
}

QString shown(const QString& text) {
    return text.size() > kShownText ? text.left(kShownText) + QStringLiteral("...") : text;
}

// ---- one reader per form of input
// -----------------------------------------------------------------

// The input's lines, read one form at a time into the records they hold.
struct Input {
    QStringList lines;
    const Device* device;
    QVector<Decoding> records; // printed and JSON records, in order
    QVector<Decoding> traces;  // trace lines: the records' own echo, when there are records
    QString stray;             // a line that looks like JSON and is no record
    QVector<int> returned;     // lines of what an operation returned, as dalctl --json says it
    QString error;

    QString where(const QString& what, int at) const {
        return QStringLiteral("%1 (line %2)").arg(what).arg(at + 1);
    }
    bool fail(const QString& what) {
        error = what;
        return false;
    }
    // A record read whole (every field, its device type among them) is decoded on the device
    // given, else on its own device type (a code no family has included); an OSD record on the
    // OSD box.
    void whole(Decoding& d, const AnyRecord& rec) {
        const auto* own = std::get_if<model_Protocoldata>(&rec);
        if (own)
            d.what += QStringLiteral(": device %1 (%2)")
                          .arg(deviceCodeText(own->deviceType), familyName(own->deviceType));
        d.readings << Reading{QLatin1String(own ? "record" : "OSD record"),
                              engine::wholeRecord(rec),
                              device ? QVector<Device>{*device}
                              : own  ? devicesTagged(own->deviceType)
                                     : devicesWhere(sendsOsd)};
        records << d;
    }
    // A head and what the input says beside it, searched on every family that sends heads.
    void head(Decoding& d, const Parts& parts) {
        const bool command = parts.first().name == QLatin1String("command");
        d.readings << Reading{QLatin1String(command ? "5-byte head" : "8-byte head"),
                              {parts},
                              searched(device, sendsHeads)};
        records << d;
    }
};

// Records as dalctl prints them, or a head line with what follows it.
bool readPrinted(Input& in, int& at) {
    PrintedRecord read;
    QString error;
    if (!readRecord(in.lines, at, read, error))
        return in.fail(error);
    Decoding d{read.what, {}};
    if (read.deviceKnown) {
        in.whole(d, read.rec);
        return true;
    }
    // A head line alone is read by its length: a record's 8-byte head, or CMD..DAT4.
    if (read.head.size() != kRecordHeadSize && read.head.size() != kHeadSize)
        return in.fail(QStringLiteral("%1 holds %2 bytes: a record's head has %3 (address, 0, "
                                      "CMD, DAT1..DAT4, spare), or %4 (CMD, DAT1..DAT4)")
                           .arg(read.what)
                           .arg(read.head.size())
                           .arg(kRecordHeadSize)
                           .arg(kHeadSize));
    Parts said;
    for (const Part& p : fieldParts(read.rec))
        if (read.parts.contains(p.name))
            said << (p.name == QLatin1String("head") && read.head.size() == kHeadSize
                         ? bytesPart("command", read.head)
                         : p);
    in.head(d, said);
    return true;
}

// dalctl's --json lines, and what it prints of an operation's return value.
bool readJsonLine(Input& in, int at) {
    const QJsonDocument doc = QJsonDocument::fromJson(in.lines[at].trimmed().toUtf8());
    const QJsonObject json = doc.object();
    const bool osd = json.value(QLatin1String("osd")).toBool();
    if (!doc.isObject() || (!json.contains(QLatin1String("head")) && !osd)) {
        if (!doc.isObject())
            in.stray = in.where(
                QStringLiteral("a line that starts like JSON but is not a JSON object"), at);
        else if (json.keys() == QStringList{QStringLiteral("returned")})
            in.returned << at;
        else
            in.stray = in.where(
                QStringLiteral("a JSON object that is not a record (it has no \"head\")"), at);
        return true;
    }
    AnyRecord rec;
    QString error;
    Decoding d{in.where(QLatin1String(osd ? "JSON OSD record" : "JSON record"), at), {}};
    if (!recordFromJson(json, rec, error))
        return in.fail(d.what + QStringLiteral(": ") + error);
    if (osd || json.contains(QLatin1String("deviceType")))
        in.whole(d, rec);
    else
        in.head(d, fieldParts(rec));
    return true;
}

// Trace lines of the generic send.
bool readTrace(Input& in, int at, const TracedRecord& traced) {
    Decoding d{in.where(QStringLiteral("trace line"), at), {}};
    if (traced.status != TracedRecord::Read)
        return in.fail(d.what + QStringLiteral(" is cut or garbled"));
    d.readings << Reading{QStringLiteral("trace"),
                          engine::traceLine(traced.head, traced.block, traced.text),
                          searched(in.device, [](const Family& f) { return f.routed(); })};
    in.traces << d;
    return true;
}

bool readLines(Input& in) {
    for (int at = 0; at < in.lines.size(); ++at) {
        const QString line = in.lines[at].trimmed();
        bool ok = true;
        if (isRecordStart(line))
            ok = readPrinted(in, at);
        else if (line.startsWith(QLatin1Char('{')))
            ok = readJsonLine(in, at);
        else if (const TracedRecord traced = readTraceLine(in.lines[at].toUtf8());
                 traced.status != TracedRecord::NotTrace)
            ok = readTrace(in, at, traced);
        if (!ok)
            return false;
    }
    return true;
}

// The whole input as one record in hex: a frame, an OSD frame, a 5-byte head and block, a
// record's 8-byte head and block.
bool readHex(const QByteArray& bytes, const Device* device, Decoding& d, QString& error) {
    d.what = QStringLiteral("hex, %1 bytes").arg(bytes.size());
    if (bytes.startsWith(kFrameStart))
        d.readings << Reading{QStringLiteral("frame"), engine::frameAlone(bytes),
                              searched(device, sendsFrames)};
    if (bytes.size() >= kOsdHeaderSize && bytes.mid(1, 3) == kOsdMarker)
        d.readings << Reading{QStringLiteral("OSD frame"), engine::osdFrame(bytes),
                              devicesWhere(sendsOsd)};
    // A record's own head: its second byte is always 0.
    for (const int size : {kHeadSize, kRecordHeadSize})
        if (bytes.size() >= size && (size == kHeadSize || bytes[1] == 0))
            d.readings << Reading{QStringLiteral("%1-byte head").arg(size),
                                  engine::headAndBlock(bytes.left(size), bytes.mid(size)),
                                  searched(device, sendsHeads)};
    if (d.readings.isEmpty())
        error = QStringLiteral("%1 bytes are too few: a native record starts with CMD DAT1 DAT2 "
                               "DAT3 DAT4")
                    .arg(bytes.size());
    return d.readings.size();
}

// The whole input as a text a family is sent: as it stands, or without the white space a paste
// may have added at its ends.
bool readText(const QString& sent, const Device* device, Decoding& d, QString& error) {
    const QString text = sent.trimmed();
    if (text.size() > kMaxText) {
        error = QStringLiteral("a text of %1 characters is longer than any a family is sent")
                    .arg(text.size());
        return false;
    }
    if (d.what.isEmpty())
        d.what = QStringLiteral("text %1").arg(quote(shown(text)));
    const bool alternative = !d.readings.isEmpty();
    d.readings << Reading{QStringLiteral("text"), engine::textAlone(sent),
                          searched(device, sendsTexts), engine::textAlone(text)};
    d.readings.last().alternative = alternative;
    return true;
}

// The whole input as hex, as a text, or (a text that reads as hex) as both.
bool readWhole(const QString& input, const Device* device, bool asText, Decoding& d,
               QString& error) {
    QString compact = input.trimmed();
    compact.remove(QRegularExpression(QStringLiteral("\\s")));
    if (compact.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        compact = compact.mid(2);
    const bool hex = !asText && isHexPairs(compact) && !compact.isEmpty();
    const bool texts = !searched(device, sendsTexts).isEmpty();
    if (hex && !readHex(QByteArray::fromHex(compact.toLatin1()), device, d, error)) {
        if (!texts)
            return false;
        d.what.clear(); // too few bytes for any record: a text alone
    }
    QString textError;
    if ((!hex || texts) && !readText(input, device, d, textError) && d.readings.isEmpty())
        error = textError;
    return !d.readings.isEmpty();
}

Decoded refuse(const QString& error) { return Decoded{error, {}}; }

// The same answer on several devices is one line, with its devices.
struct Line {
    QString text;
    QStringList devices;
    const engine::Answer* answer;
};

// A reading's answers as lines; those that hold for any text are said apart, by the operations
// that send any text as it stands and the devices they do so on.
struct Answers {
    QVector<Line> lines;
    QStringList anyTextOperations;
    QStringList anyTextDevices;
};

void addNew(QStringList& list, const QString& item) {
    if (!list.contains(item))
        list << item;
}

Answers answersOf(const Reading& r) {
    Answers all;
    for (const engine::Answer& a : r.result.answers) {
        const QString text = a.text();
        auto same = std::find_if(all.lines.begin(), all.lines.end(), [&](const Line& l) {
            return l.text == text && l.answer->bytes.size() == a.bytes.size();
        });
        if (a.anyText) {
            addNew(all.anyTextOperations, a.call.op->name);
            addNew(all.anyTextDevices, a.device.name());
        } else if (same != all.lines.end()) {
            same->devices << a.device.name();
        } else {
            all.lines << Line{text, {a.device.name()}, &a};
        }
    }
    return all;
}

QString bytesLine(const engine::ByteName& b) {
    const QString range =
        b.from == b.to ? QString::number(b.from) : QStringLiteral("%1-%2").arg(b.from).arg(b.to);
    const QString value = b.value.isEmpty() ? QString()
                          : b.what == QLatin1String("constant")
                              ? QLatin1Char(' ') + b.value
                              : QStringLiteral(" = ") + shownWord(b.value);
    return QStringLiteral("    %1 %2: %3%4\n").arg(b.part, range, b.what, value);
}

// Whether an answer names what the input says, not only that any text would do.
bool specific(const engine::Result& result) {
    return std::any_of(result.answers.begin(), result.answers.end(),
                       [](const engine::Answer& a) { return !a.anyText; });
}

} // namespace

bool Decoding::found() const {
    return std::any_of(readings.begin(), readings.end(),
                       [](const Reading& r) { return !answersOf(r).lines.isEmpty(); });
}

QString Decoding::text() const {
    QString out = what + QLatin1Char('\n');
    for (const Reading& r : readings)
        out += readingText(r);
    return out;
}

QString Decoding::textAsProven(int proven) const {
    return (proven <= 1 ? what + QLatin1Char('\n') : QString()) +
           (proven > 0 ? readingText(readings[proven - 1]) : QString());
}

QString Decoding::readingText(const Reading& r) const {
    const Answers answers = answersOf(r);
    const QStringList& anyText = answers.anyTextOperations;
    if (r.alternative && answers.lines.isEmpty() && found())
        return QString();
    if (answers.lines.isEmpty() && anyText.isEmpty())
        return QStringLiteral("  %1: no operation sends it").arg(r.label) +
               (r.result.closest ? QStringLiteral("; ") + r.result.closest->text() : QString()) +
               QLatin1Char('\n');
    QString out;
    for (const Line& line : answers.lines) {
        out += QStringLiteral("  %1 on %2: %3\n")
                   .arg(r.label, line.devices.join(QLatin1Char(' ')), line.text);
        out += QStringLiteral("    replay: %1\n").arg(line.answer->replay());
        for (const engine::ByteName& b : line.answer->bytes)
            out += bytesLine(b);
    }
    if (!anyText.isEmpty())
        out += QStringLiteral("  %1 on %2: any text at all, sent as it stands by %3: %4\n")
                   .arg(r.label, answers.anyTextDevices.join(QLatin1Char(' ')),
                        anyText.size() == 1 ? QStringLiteral("1 operation")
                                            : QStringLiteral("%1 operations").arg(anyText.size()),
                        anyText.join(QStringLiteral(", ")));
    return out;
}

QJsonObject Decoding::json() const {
    QJsonArray candidates;
    QJsonObject closest, anyText;
    for (const Reading& r : readings) {
        const Answers answers = answersOf(r);
        if (r.alternative && answers.lines.isEmpty() && found())
            continue;
        for (const engine::Answer& a : r.result.answers) {
            QJsonObject c = a.json();
            c.insert(QStringLiteral("read"), r.label);
            if (!a.anyText)
                candidates << c;
        }
        if (!answers.anyTextOperations.isEmpty() && anyText.isEmpty())
            anyText = {
                {QStringLiteral("read"), r.label},
                {QStringLiteral("devices"), QJsonArray::fromStringList(answers.anyTextDevices)},
                {QStringLiteral("operations"),
                 QJsonArray::fromStringList(answers.anyTextOperations)}};
        if (r.result.closest && closest.isEmpty()) {
            closest = r.result.closest->json();
            closest.insert(QStringLiteral("read"), r.label);
        }
    }
    QJsonObject json{{QStringLiteral("read"), what}, {QStringLiteral("candidates"), candidates}};
    if (!anyText.isEmpty())
        json.insert(QStringLiteral("anyText"), anyText);
    if (candidates.isEmpty() && anyText.isEmpty() && !closest.isEmpty())
        json.insert(QStringLiteral("closest"), closest);
    return json;
}

Decoded decodeInput(const QByteArray& input, const Device* device, bool asText,
                    const std::function<void(const Decoding&, int proven)>& each) {
    if (input.trimmed().isEmpty())
        return refuse(QStringLiteral("nothing to decode"));
    // Sized: Qt 5's overload for a QByteArray stops at a NUL, which a text may hold.
    const QString text = QString::fromUtf8(input.constData(), int(input.size()));
    if (text.toUtf8() != input)
        return refuse(QStringLiteral("the input is binary data, not text: decode takes hex, a "
                                     "family's text, a trace line or records as dalctl prints "
                                     "them"));
    Input in{{}, device, {}, {}, {}, {}, {}};
    for (QByteArray line : input.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        in.lines << QString::fromUtf8(line.constData(), int(line.size()));
    }
    if (!asText && !readLines(in))
        return refuse(in.error);
    if (!in.records.isEmpty() && !in.stray.isEmpty())
        return refuse(in.stray);
    // Trace lines beside records are the records' own echo.
    QVector<Decoding> records = in.records.isEmpty() ? in.traces : in.records;
    // What an operation returned is said beside its records, and is none.
    for (int at : records.isEmpty() ? in.returned : QVector<int>())
        records << Decoding{in.where(QStringLiteral("returned value"), at) +
                                QStringLiteral(": what an operation returned, not a record"),
                            {}};
    if (records.isEmpty()) {
        Decoding whole;
        QString error;
        if (!readWhole(text, device, asText, whole, error))
            return refuse(error);
        records << whole;
    }
    // Everything has been read before anything is run.
    Decoded d;
    for (Decoding& record : records) {
        if (each && record.readings.isEmpty())
            each(record, 0);
        for (int i = 0; i < record.readings.size(); ++i) {
            Reading& r = record.readings[i];
            r.result = engine::prove(r.target, r.devices);
            // A text padded by a paste is read trimmed where only that finds a specific answer.
            if (!specific(r.result) && r.orElse && r.orElse->parts != r.target.parts) {
                engine::Result trimmed = engine::prove(*r.orElse, r.devices);
                if (specific(trimmed) || r.result.answers.isEmpty())
                    r.result = std::move(trimmed);
            }
            if (each)
                each(record, i + 1);
        }
        d.records << record;
    }
    return d;
}
