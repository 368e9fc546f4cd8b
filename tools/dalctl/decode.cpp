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

// The families a record of unknown family may have gone to: the one given, or each family
// of the classes that queue records of that kind.
QVector<const Family*> searched(const Family* device, bool (*keep)(const Family&)) {
    return device ? QVector<const Family*>{device} : familiesWhere(keep);
}

// The family a record's device type names, or the native family for one that names none.
const Family* familyOf(int deviceType) {
    const Family* family = familyOfCode(deviceType);
    return family ? family : &families().first();
}

QString shown(const QString& text) {
    return text.size() > kShownText ? text.left(kShownText) + QStringLiteral("...") : text;
}

// ---- one reader per form of input
// -----------------------------------------------------------------

// The input's lines, read one form at a time into the records they hold.
struct Input {
    QStringList lines;
    const Family* device;
    QVector<Decoding> records; // printed and JSON records, in order
    QVector<Decoding> traces;  // trace lines: the records' own echo, when there are records
    QString stray;             // a line that looks like JSON and is no record
    QString error;

    QString where(const QString& what, int at) const {
        return QStringLiteral("%1 (line %2)").arg(what).arg(at + 1);
    }
    bool fail(const QString& what) {
        error = what;
        return false;
    }
    // A record read whole (every field, its device type among them) is decoded on its device's
    // family alone; an OSD record on the OSD box. A record that names no family (the device
    // search's first probes) is decoded on the native family, which sends records unchanged.
    bool whole(Decoding& d, const AnyRecord& rec) {
        const auto* own = std::get_if<model_Protocoldata>(&rec);
        const Family* family = own ? familyOf(own->deviceType) : familiesWhere(sendsOsd).first();
        if (device && family != device)
            return fail(QStringLiteral("%1 went to a %2 device, not %3: leave out --device to "
                                       "decode it as printed")
                            .arg(d.what, family->name, device->name));
        if (own)
            d.what += QStringLiteral(": device %1 (%2)")
                          .arg(deviceCodeText(own->deviceType), familyName(own->deviceType));
        d.readings << Reading{QLatin1String(own ? "record" : "OSD record"),
                              engine::wholeRecord(rec),
                              own ? QVector<const Family*>{family} : familiesWhere(sendsOsd),
                              {}};
        records << d;
        return true;
    }
    // A head and what the input says beside it, searched on every family that sends heads.
    void head(Decoding& d, const Parts& parts) {
        d.readings << Reading{
            QStringLiteral("8-byte head"), {parts}, searched(device, sendsHeads), {}};
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
    if (read.deviceKnown)
        return in.whole(d, read.rec);
    Parts said;
    for (const Part& p : fieldParts(read.rec))
        if (read.parts.contains(p.name))
            said << p;
    in.head(d, said);
    return true;
}

// dalctl's --json lines, and what it prints of an operation's return value.
bool readJsonLine(Input& in, int at) {
    const QJsonDocument doc = QJsonDocument::fromJson(in.lines[at].trimmed().toUtf8());
    const QJsonObject json = doc.object();
    if (!doc.isObject() ||
        (!json.contains(QLatin1String("head")) && !json.value(QLatin1String("osd")).toBool())) {
        if (!doc.isObject())
            in.stray = in.where(
                QStringLiteral("a line that starts like JSON but is not a JSON object"), at);
        else if (json.keys() != QStringList{QStringLiteral("returned")})
            in.stray = in.where(
                QStringLiteral("a JSON object that is not a record (it has no \"head\")"), at);
        return true;
    }
    AnyRecord rec;
    QString error;
    const bool osd = json.value(QLatin1String("osd")).toBool();
    Decoding d{in.where(QLatin1String(osd ? "JSON OSD record" : "JSON record"), at), {}};
    if (!recordFromJson(json, rec, error))
        return in.fail(d.what + QStringLiteral(": ") + error);
    if (osd || json.contains(QLatin1String("deviceType")))
        return in.whole(d, rec);
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
                          searched(in.device, [](const Family& f) { return f.routed(); }),
                          {}};
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
bool readHex(const QByteArray& bytes, const Family* device, Decoding& d, QString& error) {
    d.what = QStringLiteral("hex, %1 bytes").arg(bytes.size());
    if (bytes.startsWith(kFrameStart))
        d.readings << Reading{
            QStringLiteral("frame"), engine::frameAlone(bytes), searched(device, sendsFrames), {}};
    if (bytes.size() >= kOsdHeaderSize && bytes.mid(1, 3) == kOsdMarker)
        d.readings << Reading{
            QStringLiteral("OSD frame"), engine::osdFrame(bytes), familiesWhere(sendsOsd), {}};
    if (bytes.size() >= kHeadSize)
        d.readings << Reading{QStringLiteral("5-byte head"),
                              engine::headAndBlock(bytes.left(kHeadSize), bytes.mid(kHeadSize)),
                              searched(device, sendsHeads),
                              {}};
    // A record's own head: its second byte is always 0.
    if (bytes.size() >= kRecordHeadSize && bytes[1] == 0)
        d.readings << Reading{
            QStringLiteral("8-byte head"),
            engine::headAndBlock(bytes.left(kRecordHeadSize), bytes.mid(kRecordHeadSize)),
            searched(device, sendsHeads),
            {}};
    if (d.readings.isEmpty())
        error = QStringLiteral("%1 bytes are too few: a native record starts with CMD DAT1 DAT2 "
                               "DAT3 DAT4")
                    .arg(bytes.size());
    return d.readings.size();
}

// The whole input as a text a family is sent; a pasted text may have gained or lost white
// space at its ends.
bool readText(const QByteArray& input, const Family* device, Decoding& d, QString& error) {
    const QString sent = QString::fromUtf8(input);
    const QString text = sent.trimmed();
    if (text.size() > kMaxText) {
        error = QStringLiteral("a text of %1 characters is longer than any a family is sent")
                    .arg(text.size());
        return false;
    }
    d.what = QStringLiteral("text %1").arg(quote(shown(text)));
    d.readings << Reading{
        QStringLiteral("text"), engine::textAlone(sent), searched(device, sendsTexts), {}};
    if (text != sent)
        d.readings << Reading{QStringLiteral("text, trimmed"),
                              engine::textAlone(text),
                              searched(device, sendsTexts),
                              {}};
    return true;
}

bool readWhole(const QByteArray& input, const Family* device, Decoding& d, QString& error) {
    QString compact = QString::fromUtf8(input).trimmed();
    compact.remove(QRegularExpression(QStringLiteral("\\s")));
    if (compact.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        compact = compact.mid(2);
    if (isHexPairs(compact) && !compact.isEmpty())
        return readHex(QByteArray::fromHex(compact.toLatin1()), device, d, error);
    return readText(input, device, d, error);
}

Decoded refuse(const QString& error) { return Decoded{error, {}}; }

// The same answer on several families is one line, with its families.
struct Line {
    QString text;
    QStringList families;
    const engine::Answer* answer;
};

QVector<Line> linesOf(const Reading& r) {
    QVector<Line> lines;
    for (const engine::Answer& a : r.result.answers) {
        const QString text = a.text();
        auto same = std::find_if(lines.begin(), lines.end(), [&](const Line& l) {
            return l.text == text && l.answer->bytes.size() == a.bytes.size();
        });
        if (same != lines.end())
            same->families << a.family->name;
        else
            lines << Line{text, {a.family->name}, &a};
    }
    return lines;
}

} // namespace

bool Decoding::found() const {
    return std::any_of(readings.begin(), readings.end(),
                       [](const Reading& r) { return !r.result.answers.isEmpty(); });
}

QString Decoding::text() const {
    QString out = what + QLatin1Char('\n');
    for (const Reading& r : readings) {
        if (r.result.answers.isEmpty()) {
            out += QStringLiteral("  %1: no operation sends it").arg(r.label);
            if (r.result.closest)
                out += QStringLiteral("; ") + r.result.closest->text();
            out += QLatin1Char('\n');
            continue;
        }
        for (const Line& line : linesOf(r)) {
            out += QStringLiteral("  %1 on %2: %3\n")
                       .arg(r.label, line.families.join(QLatin1Char(' ')), line.text);
            out += QStringLiteral("    replay: %1\n").arg(line.answer->replay());
            for (const engine::ByteName& b : line.answer->bytes) {
                const QString range = b.from == b.to
                                          ? QString::number(b.from)
                                          : QStringLiteral("%1-%2").arg(b.from).arg(b.to);
                out += QStringLiteral("    %1 %2: %3%4\n")
                           .arg(b.part, range, b.what,
                                b.value.isEmpty() ? QString()
                                : b.what == QLatin1String("constant")
                                    ? QLatin1Char(' ') + b.value
                                    : QStringLiteral(" = ") + b.value);
            }
        }
    }
    return out;
}

QJsonObject Decoding::json() const {
    QJsonArray candidates;
    QJsonObject closest;
    for (const Reading& r : readings) {
        for (const engine::Answer& a : r.result.answers) {
            QJsonObject c = a.json();
            c.insert(QStringLiteral("read"), r.label);
            candidates << c;
        }
        if (r.result.closest && closest.isEmpty()) {
            closest = r.result.closest->json();
            closest.insert(QStringLiteral("read"), r.label);
        }
    }
    QJsonObject json{{QStringLiteral("read"), what}, {QStringLiteral("candidates"), candidates}};
    if (candidates.isEmpty() && !closest.isEmpty())
        json.insert(QStringLiteral("closest"), closest);
    return json;
}

Decoded decodeInput(const QByteArray& input, const Family* device,
                    const std::function<void(const Decoding&)>& each) {
    if (input.trimmed().isEmpty())
        return refuse(QStringLiteral("nothing to decode"));
    if (input.contains('\0') || QString::fromUtf8(input).toUtf8() != input)
        return refuse(QStringLiteral("the input is binary data, not text: decode takes hex, a "
                                     "family's text, a trace line or records as dalctl prints "
                                     "them"));
    Input in{{}, device, {}, {}, {}, {}};
    for (QByteArray line : input.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        in.lines << QString::fromUtf8(line);
    }
    if (!readLines(in))
        return refuse(in.error);
    if (!in.records.isEmpty() && !in.stray.isEmpty())
        return refuse(in.stray);
    // Trace lines beside records are the records' own echo.
    QVector<Decoding> records = in.records.isEmpty() ? in.traces : in.records;
    if (records.isEmpty()) {
        Decoding whole;
        QString error;
        if (!readWhole(input, device, whole, error))
            return refuse(error);
        records << whole;
    }
    // Everything has been read before anything is run.
    Decoded d;
    for (Decoding& record : records) {
        for (Reading& r : record.readings)
            r.result = engine::prove(r.target, r.families);
        d.records << record;
        if (each)
            each(record);
    }
    return d;
}
