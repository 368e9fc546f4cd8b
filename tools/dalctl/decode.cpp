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

// The families a record of unknown family may have gone to: the one given, or each family
// of the classes that queue records of that kind.
QVector<const Family*> searched(const Family* device,
                                const std::function<bool(const Family&)>& keep) {
    return device ? QVector<const Family*>{device} : familiesWhere(keep);
}

bool sendsHeads(const Family& f) { return f.form != Form::Osd; }
bool sendsOsd(const Family& f) { return f.form == Form::Osd; }
bool sendsTexts(const Family& f) { return f.form == Form::Text || f.form == Form::Frame; }

// The family a record's device type names, or the native family for one that names none.
const Family* familyOf(int deviceType) {
    const Family* family = familyOfCode(deviceType);
    return family ? family : &families().first();
}

QString shown(const QString& text) {
    return text.size() > kShownText ? text.left(kShownText) + QStringLiteral("...") : text;
}

// ---- the input's records
// ---------------------------------------------------------------------------

Reading reading(const QString& label, const engine::Target& target,
                const QVector<const Family*>& families) {
    return Reading{label, target, families, {}};
}

class Printout {
public:
    Printout(const QByteArray& input, const Family* device) : device(device) {
        for (QByteArray line : input.split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            lines << QString::fromUtf8(line);
        }
    }

    // The records of a printout, its JSON lines and its trace lines; false with `error` set
    // when one is cut or garbled. `stray` names a line that looks like JSON and is no record.
    bool read(QVector<Answer>& items, QVector<Answer>& traces, QString& error, QString& stray) {
        for (at = 0; at < lines.size(); ++at) {
            const QString line = lines[at].trimmed();
            bool ok = true;
            if (isOsdRecordStart(line))
                ok = readOsd(items);
            else if (isRecordStart(line))
                ok = readRecord(items);
            else if (line.startsWith(QLatin1Char('{')))
                ok = readJson(line, items, stray);
            else if (const TracedRecord traced = readTraceLine(lines[at].toUtf8());
                     traced.status != TracedRecord::NotTrace)
                ok = readTrace(traced, traces);
            if (!ok) {
                error = problem;
                return false;
            }
        }
        return true;
    }

private:
    QString where(const QString& what) const {
        return QStringLiteral("%1 (line %2)").arg(what).arg(at + 1);
    }

    bool fail(const QString& what) {
        problem = what;
        return false;
    }

    // A record whose device is known is decoded on that family alone; one that names no family
    // (the device search's first probes) on the native family, which sends records unchanged.
    bool known(Answer& item, int deviceType) {
        const Family* family = familyOfCode(deviceType);
        if (!family)
            family = &families().first();
        if (device && family != device)
            return fail(QStringLiteral("%1 went to a %2 device, not %3: leave out --device to "
                                       "decode it as printed")
                            .arg(item.what, family->name, device->name));
        item.what += QStringLiteral(": device %1 (%2)")
                         .arg(deviceCodeText(deviceType), familyName(deviceType));
        return true;
    }

    bool readRecord(QVector<Answer>& items) {
        const int first = at;
        PrintedRecord read;
        QString error;
        if (!::readRecord(lines, at, read, error))
            return fail(error);
        Answer item;
        if (!read.deviceKnown) {
            item.what = QStringLiteral("head (line %1)").arg(first + 1);
            // A head line alone says the head, and what of the record follows it.
            engine::Target target;
            const engine::Target whole = engine::wholeRecord(read.rec);
            for (const Part& p : whole.parts)
                if (p.name == QLatin1String("head") ||
                    (p.name == QLatin1String("text") && at > first) ||
                    (p.name == QLatin1String("block") && at > first + 1))
                    target.parts << p;
            item.readings << reading(QStringLiteral("8-byte head"), target,
                                     searched(device, sendsHeads));
        } else {
            item.what = QStringLiteral("record %1 (line %2)").arg(read.number).arg(first + 1);
            if (!known(item, read.rec.deviceType))
                return false;
            item.readings << reading(QStringLiteral("record"), engine::wholeRecord(read.rec),
                                     {familyOf(read.rec.deviceType)});
        }
        items << item;
        return true;
    }

    bool readOsd(QVector<Answer>& items) {
        const int first = at;
        int number = 0;
        model_OsdParam rec;
        QString error;
        if (!readOsdRecord(lines, at, number, rec, error))
            return fail(error);
        if (device && device->form != Form::Osd)
            return fail(where(QStringLiteral("OSD record %1").arg(number)) +
                        QStringLiteral(" went to the OSD box, not %1").arg(device->name));
        Answer item{QStringLiteral("OSD record %1 (line %2)").arg(number).arg(first + 1), {}};
        item.readings << reading(QStringLiteral("OSD record"), engine::wholeRecord(rec),
                                 familiesWhere(sendsOsd));
        items << item;
        return true;
    }

    bool readJson(const QString& line, QVector<Answer>& items, QString& stray) {
        QJsonParseError parsed;
        const QJsonDocument doc = QJsonDocument::fromJson(line.toUtf8(), &parsed);
        if (!doc.isObject()) {
            stray = where(QStringLiteral("a line that starts like JSON but is not a JSON object"));
            return true;
        }
        const QJsonObject json = doc.object();
        QString error;
        if (json.value(QLatin1String("osd")).toBool()) {
            model_OsdParam rec;
            Answer item{where(QStringLiteral("JSON OSD record")), {}};
            if (!osdRecordFromJson(json, rec, error))
                return fail(item.what + QStringLiteral(": ") + error);
            item.readings << reading(QStringLiteral("OSD record"), engine::wholeRecord(rec),
                                     familiesWhere(sendsOsd));
            items << item;
            return true;
        }
        if (!json.contains(QLatin1String("head"))) {
            // dalctl prints what an operation returned on a line of its own
            if (json.keys() != QStringList{QStringLiteral("returned")})
                stray = where(QStringLiteral("a JSON object that is not a record (it has no "
                                             "\"head\")"));
            return true;
        }
        model_Protocoldata rec;
        Answer item{where(QStringLiteral("JSON record")), {}};
        if (!recordFromJson(json, rec, error))
            return fail(item.what + QStringLiteral(": ") + error);
        if (!json.contains(QLatin1String("deviceType"))) {
            item.readings << reading(QStringLiteral("8-byte head"), engine::wholeRecord(rec),
                                     searched(device, sendsHeads));
        } else {
            if (!known(item, rec.deviceType))
                return false;
            item.readings << reading(QStringLiteral("record"), engine::wholeRecord(rec),
                                     {familyOf(rec.deviceType)});
        }
        items << item;
        return true;
    }

    bool readTrace(const TracedRecord& traced, QVector<Answer>& traces) {
        Answer item{where(QStringLiteral("trace line")), {}};
        if (traced.status != TracedRecord::Read)
            return fail(item.what + QStringLiteral(" is cut or garbled"));
        item.readings << reading(QStringLiteral("trace"),
                                 engine::traceLine(traced.head, traced.block, traced.text),
                                 searched(device, &Family::routed));
        traces << item;
        return true;
    }

    const Family* device;
    QStringList lines;
    int at = 0;
    QString problem;
};

bool validText(const QByteArray& input) {
    return !input.contains('\0') && QString::fromUtf8(input).toUtf8() == input;
}

Decoded refuse(const QString& error) {
    Decoded d;
    d.error = error;
    return d;
}

// The whole input as one record: hex or a family's text.
bool readWhole(const QByteArray& input, const Family* device, Answer& item, QString& error) {
    const QString text = QString::fromUtf8(input).trimmed();
    QString compact = text;
    compact.remove(QRegularExpression(QStringLiteral("\\s")));
    if (compact.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        compact = compact.mid(2);
    if (isHexPairs(compact) && !compact.isEmpty()) {
        const QByteArray bytes = QByteArray::fromHex(compact.toLatin1());
        item.what = QStringLiteral("hex, %1 bytes").arg(bytes.size());
        if (bytes.startsWith(kFrameStart))
            item.readings << reading(
                QStringLiteral("frame"), engine::frameAlone(bytes),
                searched(device, [](const Family& f) { return f.form == Form::Frame; }));
        if (bytes.size() >= kOsdHeaderSize && bytes.mid(1, 3) == kOsdMarker)
            item.readings << reading(QStringLiteral("OSD frame"), engine::osdFrame(bytes),
                                     familiesWhere(sendsOsd));
        if (bytes.size() >= kHeadSize)
            item.readings << reading(
                QStringLiteral("5-byte head"),
                engine::headAndBlock(bytes.left(kHeadSize), bytes.mid(kHeadSize)),
                searched(device, sendsHeads));
        // A record's own head: its second byte is always 0.
        if (bytes.size() >= kRecordHeadSize && bytes[1] == 0)
            item.readings << reading(
                QStringLiteral("8-byte head"),
                engine::headAndBlock(bytes.left(kRecordHeadSize), bytes.mid(kRecordHeadSize)),
                searched(device, sendsHeads));
        if (item.readings.isEmpty()) {
            error = QStringLiteral("%1 bytes are too few: a native record starts with CMD DAT1 "
                                   "DAT2 DAT3 DAT4")
                        .arg(bytes.size());
            return false;
        }
        return true;
    }
    if (text.size() > kMaxText) {
        error = QStringLiteral("a text of %1 characters is longer than any a family is sent")
                    .arg(text.size());
        return false;
    }
    const QString sent = QString::fromUtf8(input);
    item.what = QStringLiteral("text %1").arg(quote(shown(text)));
    item.readings << reading(QStringLiteral("text"), engine::textAlone(sent),
                             searched(device, sendsTexts));
    // A pasted text may have gained or lost white space at its ends.
    if (text != sent)
        item.readings << reading(QStringLiteral("text, trimmed"), engine::textAlone(text),
                                 searched(device, sendsTexts));
    return true;
}

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

bool Answer::found() const {
    return std::any_of(readings.begin(), readings.end(),
                       [](const Reading& r) { return !r.result.answers.isEmpty(); });
}

QString Answer::text() const {
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

QJsonObject Answer::json() const {
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
                    const std::function<void(const Answer&)>& each) {
    if (input.trimmed().isEmpty())
        return refuse(QStringLiteral("nothing to decode"));
    if (!validText(input))
        return refuse(QStringLiteral("the input is binary data, not text: decode takes hex, a "
                                     "family's text, a trace line or records as dalctl prints "
                                     "them"));
    QVector<Answer> items, traces;
    QString error, stray;
    if (!Printout(input, device).read(items, traces, error, stray))
        return refuse(error);
    if (!items.isEmpty() && !stray.isEmpty())
        return refuse(stray);
    // Trace lines beside records are the records' own echo.
    if (items.isEmpty())
        items = traces;
    if (items.isEmpty()) {
        Answer whole;
        if (!readWhole(input, device, whole, error))
            return refuse(error);
        items << whole;
    }
    // Everything has been read before anything is run.
    Decoded d;
    for (Answer& answer : items) {
        for (Reading& r : answer.readings)
            r.result = engine::prove(r.target, r.families);
        d.answers << answer;
        if (each)
            each(answer);
    }
    return d;
}
