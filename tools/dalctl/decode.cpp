#include "decode.h"

#include "explain.h"
#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "records.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

constexpr int kRecordHeadSize = 8;  // address, 0, CMD, DAT1..DAT4, spare
constexpr int kMaxText = 64 * 1024; // far longer than any text a family is sent
constexpr int kShownText = 120;
const QByteArray kOsdMarker = QByteArray::fromHex("00fedc");
const int kTextFamilies[] = {0x250300, 0x250400, 0x250502, 0x2D0000, 0x900000, 0x900001, 0x2C0104};

QString hexPairs(const QByteArray& bytes) { return QString::fromLatin1(bytes.toHex(' ')); }

// ---- searching ---------------------------------------------------------------------------------

// Adds what a search found in one family, merging an operation found the same way in several.
void add(Reading& reading, const QVector<Candidate>& found, const QString& family) {
    for (const Candidate& c : found) {
        auto same = std::find_if(reading.found.begin(), reading.found.end(), [&](const Found& f) {
            return f.candidate.op == c.op && f.candidate.record == c.record &&
                   f.candidate.args == c.args && f.candidate.native == c.native;
        });
        if (same == reading.found.end()) {
            reading.found << Found{c, {}};
            same = reading.found.end() - 1;
        }
        if (!family.isEmpty() && !same->families.contains(family))
            same->families << family;
    }
}

// A search run in every family a record may have gone to: the one given, or all of them, with
// the operations of DalTarsel learnt on that family and, when `accessories`, those of the
// keyboard and the OSD box whose records carry the family's device type.
template <class Search>
Reading searchFamilies(Reading reading, const QVector<int>& codes, bool given, bool accessories,
                       Search search) {
    for (int code : codes) {
        const QString family = familyName(code);
        const engine::TagFilter sameFamily = [&family](int tag) {
            return tag != engine::kOsdTag && familyName(tag) == family;
        };
        add(reading, search(code, sameFamily), family);
        if (accessories)
            add(reading, search(engine::kAccessories, sameFamily), family);
    }
    if (given)
        for (Found& f : reading.found)
            f.families.clear();
    return reading;
}

QVector<int> codesFor(std::optional<int> device, const QVector<int>& all) {
    return device ? QVector<int>{*device} : all;
}

// A record's native head and block, a Cadex tunnel unwrapped.
QByteArray nativeOf(const model_Protocoldata& rec) {
    return nativeBytes(QByteArray(reinterpret_cast<const char*>(rec.cmdHead) + 2, kHeadSize),
                       rec.arryDatablock);
}

Reading headReading(const QString& label, const QByteArray& native, std::optional<int> device,
                    bool accessories) {
    return searchFamilies(Reading{label, hexPairs(native.left(kHeadSize)), {}},
                          codesFor(device, familyCodes()), bool(device), accessories,
                          [&](int code, const engine::TagFilter& keep) {
                              return engine::byHead(code, native, keep);
                          });
}

// The readings of a record whose device type is known: its native head, and its text when the
// head tells nothing.
QVector<Reading> recordReadings(const model_Protocoldata& rec) {
    const int tag = rec.deviceType;
    const engine::TagFilter sameTag = [tag](int t) { return t == tag; };
    const QByteArray native = nativeOf(rec);
    Reading byHead{QStringLiteral("head"), hexPairs(native.left(kHeadSize)), {}};
    for (int index : {tag, engine::kAccessories})
        add(byHead, engine::byHead(index, native, sameTag), QString());
    const Form form = formOf(rec);
    if (!byHead.found.isEmpty() || form.kind != Form::Text)
        return {byHead};
    Reading byText{QStringLiteral("text"), QString(), {}};
    bool shaped = false;
    for (int index : {tag, engine::kAccessories})
        add(byText, engine::byText(index, form.text, shaped, sameTag), QString());
    return {byHead, byText};
}

QVector<Reading> osdReadings(const QByteArray& frame) {
    Reading reading{QStringLiteral("OSD frame"), QString(), {}};
    add(reading,
        engine::byForm(engine::kAccessories, Form::Osd, frame,
                       [](int tag) { return tag == engine::kOsdTag; }),
        QString());
    return {reading};
}

QVector<Reading> hexReadings(const QByteArray& bytes, std::optional<int> device) {
    QVector<Reading> readings;
    if (bytes.startsWith(kFrameStart)) {
        const bool vm6s = bytes.size() == 23;
        Reading frame{vm6s ? QStringLiteral("VM6S frame")
                           : QStringLiteral("VantaZ frame, data block of %1 bytes")
                                 .arg(std::max(0, int(bytes.size()) - 15)),
                      QString(),
                      {}};
        readings << searchFamilies(frame, codesFor(device, {0x2C0104}), bool(device), false,
                                   [&](int code, const engine::TagFilter& keep) {
                                       return engine::byForm(code, Form::Frame, bytes, keep);
                                   });
    }
    if (bytes.size() > kOsdCommandAt && bytes.mid(1, 3) == kOsdMarker)
        readings += osdReadings(bytes);
    if (bytes.size() >= kHeadSize) {
        const QByteArray head = bytes.left(kHeadSize), block = bytes.mid(kHeadSize);
        readings << headReading(isTunnel(head, block)
                                    ? QStringLiteral("5-byte head, Cadex tunnel unwrapped")
                                    : QStringLiteral("5-byte head"),
                                nativeBytes(head, block), device, true);
    }
    // A record's own head: its second and last bytes are always 0.
    if (bytes.size() >= kRecordHeadSize && bytes[1] == 0 && bytes[kRecordHeadSize - 1] == 0) {
        const QByteArray head = bytes.mid(2, kHeadSize), block = bytes.mid(kRecordHeadSize);
        readings << headReading(isTunnel(head, block)
                                    ? QStringLiteral("8-byte head, Cadex tunnel unwrapped")
                                    : QStringLiteral("8-byte head"),
                                nativeBytes(head, block), device, true);
    }
    return readings;
}

// ---- reading the input --------------------------------------------------------------------------

// One record of the input, before it is decoded.
struct Item {
    enum Kind { Record, Osd, Trace } kind = Record;
    QString what;
    bool deviceKnown = false;
    model_Protocoldata rec;
    model_OsdParam osd;
    QByteArray line; // a trace line
};

// The lines of dalctl's printout of a record.
struct Patterns {
    const QRegularExpression record{
        QStringLiteral("^record (\\d+): device 0x([0-9A-Fa-f]{1,8}) \\(\\w+\\), connect (\\d+), "
                       "dataType (\\d+), msgCode (\\d+), status (\\d+), timeout (-?\\d+)$")};
    const QRegularExpression head{QStringLiteral("^head: ((?:[0-9a-fA-F]{2} ){7}[0-9a-fA-F]{2})$")};
    const QRegularExpression block{
        QStringLiteral("^arryDatablock \\((\\d+) bytes\\):(?: ([0-9a-fA-F]+))?$")};
    const QRegularExpression osd{
        QStringLiteral("^OSD record (\\d+): tag \"(.*)\", timeout (-?\\d+)$")};
    const QRegularExpression header{
        QStringLiteral("^header: ((?:[0-9a-fA-F]{2} ){10}[0-9a-fA-F]{2})$")};
    const QRegularExpression payload{
        QStringLiteral("^payload \\((\\d+) bytes\\):(?: ([0-9a-fA-F]+))?$")};
};

const Patterns& patterns() {
    static const Patterns compiled;
    return compiled;
}

// Reads the records of a printout, its JSON lines and its trace lines.
class Printout {
public:
    explicit Printout(const QByteArray& input) {
        for (QByteArray line : input.split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            lines << QString::fromUtf8(line);
        }
    }

    // False with `error` set when a record is cut or garbled.
    bool read(QVector<Item>& items, QString& error, QString& strayJson) {
        for (at = 0; at < lines.size();) {
            const QString line = lines[at].trimmed();
            QRegularExpressionMatch m;
            bool ok = true;
            if ((m = patterns().record.match(line)).hasMatch())
                ok = readRecord(m, items);
            else if (patterns().head.match(line).hasMatch())
                ok = readHeadless(items);
            else if ((m = patterns().osd.match(line)).hasMatch())
                ok = readOsd(m, items);
            else if (line.startsWith(QLatin1Char('{')))
                ok = readJson(line, items, strayJson);
            else if (readTraceLine(lines[at].toUtf8()).status != TracedRecord::NotTrace)
                items << traceItem();
            if (!ok) {
                error = problem;
                return false;
            }
            ++at;
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

    QString next() const { return at + 1 < lines.size() ? lines[at + 1].trimmed() : QString(); }

    // The quoted text that starts on line `at` after `label`, up to the line before the one
    // that starts with `until`; `at` is left on its last line.
    bool quoted(const QString& label, const QString& until, QString& text) {
        QString raw = lines[at].trimmed().mid(label.size());
        while (at + 1 < lines.size() && !lines[at + 1].trimmed().startsWith(until))
            raw += QLatin1Char('\n') + lines[++at];
        if (!raw.endsWith(QLatin1Char('"')))
            return false;
        raw.chop(1);
        text = raw;
        return true;
    }

    // The head line at `at` and what follows it: strAux1, Datablock and arryDatablock, each
    // required when `whole`.
    bool readBody(model_Protocoldata& rec, const QString& what, bool whole) {
        const QByteArray head =
            QByteArray::fromHex(patterns().head.match(lines[at].trimmed()).captured(1).toLatin1());
        std::copy(head.begin(), head.end(), rec.cmdHead);
        const QString aux = QStringLiteral("strAux1: \""), text = QStringLiteral("Datablock: \""),
                      block = QStringLiteral("arryDatablock (");
        if (next().startsWith(aux)) {
            ++at;
            if (!quoted(aux, text, rec.strAux1))
                return fail(what + QStringLiteral(" is cut or garbled in its strAux1 text"));
        }
        if (next().startsWith(text)) {
            ++at;
            if (!quoted(text, block, rec.Datablock))
                return fail(what + QStringLiteral(" is cut or garbled in its Datablock text"));
        } else if (whole) {
            return fail(what + QStringLiteral(" is cut: its Datablock line is missing"));
        }
        const QRegularExpressionMatch m = patterns().block.match(next());
        if (!m.hasMatch())
            return whole ? fail(what + QStringLiteral(" is cut: its arryDatablock line is missing"))
                         : true;
        ++at;
        if (!isHexPairs(m.captured(2)))
            return fail(what + QStringLiteral(" is garbled: its data block is not hex pairs"));
        rec.arryDatablock = QByteArray::fromHex(m.captured(2).toLatin1());
        if (rec.arryDatablock.size() != m.captured(1).toInt())
            return fail(QStringLiteral("%1 is cut: it says %2 bytes but holds %3")
                            .arg(what, m.captured(1))
                            .arg(rec.arryDatablock.size()));
        return true;
    }

    bool readRecord(const QRegularExpressionMatch& m, QVector<Item>& items) {
        Item item;
        item.what = where(QStringLiteral("record ") + m.captured(1));
        item.deviceKnown = true;
        model_Protocoldata& rec = item.rec;
        rec.deviceType = int(m.captured(2).toUInt(nullptr, 16));
        rec.connectType = static_cast<unsigned char>(m.captured(3).toInt());
        rec.dataType = static_cast<unsigned char>(m.captured(4).toInt());
        rec.msgCode = static_cast<unsigned short>(m.captured(5).toInt());
        rec.statusByte = static_cast<unsigned char>(m.captured(6).toInt());
        rec.timeout = m.captured(7).toInt();
        if (!patterns().head.match(next()).hasMatch())
            return fail(item.what + QStringLiteral(" is cut: its head line is missing"));
        ++at;
        if (!readBody(rec, item.what, true))
            return false;
        items << item;
        return true;
    }

    Item traceItem() const {
        Item item;
        item.kind = Item::Trace;
        item.what = where(QStringLiteral("trace line"));
        item.line = lines[at].toUtf8();
        return item;
    }

    bool readHeadless(QVector<Item>& items) {
        Item item;
        item.what = where(QStringLiteral("head"));
        if (!readBody(item.rec, item.what, false))
            return false;
        items << item;
        return true;
    }

    bool readOsd(const QRegularExpressionMatch& m, QVector<Item>& items) {
        Item item;
        item.kind = Item::Osd;
        item.what = where(QStringLiteral("OSD record ") + m.captured(1));
        const QRegularExpressionMatch header = patterns().header.match(next());
        if (!header.hasMatch())
            return fail(item.what + QStringLiteral(" is cut: its header line is missing"));
        ++at;
        const QRegularExpressionMatch payload = patterns().payload.match(next());
        if (!payload.hasMatch())
            return fail(item.what + QStringLiteral(" is cut: its payload line is missing"));
        ++at;
        if (!isHexPairs(payload.captured(2)))
            return fail(item.what + QStringLiteral(" is garbled: its payload is not hex pairs"));
        const QByteArray head = QByteArray::fromHex(header.captured(1).toLatin1());
        std::copy(head.begin(), head.end(), item.osd.frameHead);
        item.osd.payload = QByteArray::fromHex(payload.captured(2).toLatin1());
        if (item.osd.payload.size() != payload.captured(1).toInt())
            return fail(QStringLiteral("%1 is cut: it says %2 bytes but holds %3")
                            .arg(item.what, payload.captured(1))
                            .arg(item.osd.payload.size()));
        items << item;
        return true;
    }

    bool readJson(const QString& line, QVector<Item>& items, QString& strayJson) {
        QJsonParseError parsed;
        const QJsonDocument doc = QJsonDocument::fromJson(line.toUtf8(), &parsed);
        if (!doc.isObject()) {
            strayJson = where(QStringLiteral("a line that starts like JSON but is not a JSON "
                                             "object"));
            return true;
        }
        const QJsonObject json = doc.object();
        Item item;
        QString error;
        if (json.contains(QLatin1String("head"))) {
            item.what = where(QStringLiteral("JSON record"));
            item.deviceKnown = json.contains(QLatin1String("deviceType"));
            if (!recordFromJson(json, item.rec, error))
                return fail(item.what + QStringLiteral(": ") + error);
        } else if (json.value(QLatin1String("osd")).toBool()) {
            item.kind = Item::Osd;
            item.what = where(QStringLiteral("JSON OSD record"));
            if (!osdRecordFromJson(json, item.osd, error))
                return fail(item.what + QStringLiteral(": ") + error);
        } else {
            // dalctl prints what an operation returned on a line of its own
            if (json.keys() != QStringList{QStringLiteral("returned")})
                strayJson = where(QStringLiteral("a JSON object that is not a record (it has no "
                                                 "\"head\")"));
            return true;
        }
        items << item;
        return true;
    }

    QStringList lines;
    int at = 0;
    QString problem;
};

QString shown(const QString& text) {
    return text.size() > kShownText ? text.left(kShownText) + QStringLiteral("...") : text;
}

QString recordWhat(const Item& item) {
    if (!item.deviceKnown)
        return item.what;
    return QStringLiteral("%1: device %2 (%3)")
        .arg(item.what, deviceCodeText(item.rec.deviceType), familyName(item.rec.deviceType));
}

bool validText(const QByteArray& input) {
    return !input.contains('\0') && QString::fromUtf8(input).toUtf8() == input;
}

Decoded refuse(const QString& error) {
    Decoded d;
    d.error = error;
    return d;
}

// The whole input as one record: hex, a trace line or a family's text.
Decoded decodeWhole(const QByteArray& input, std::optional<int> device, const QString& strayJson) {
    const QString text = QString::fromUtf8(input).trimmed();
    QString compact = text;
    compact.remove(QRegularExpression(QStringLiteral("\\s")));
    if (compact.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        compact = compact.mid(2);
    Decoded d;
    if (isHexPairs(compact)) {
        const QByteArray bytes = QByteArray::fromHex(compact.toLatin1());
        const QVector<Reading> readings = hexReadings(bytes, device);
        if (readings.isEmpty())
            return refuse(QStringLiteral("%1 bytes are too few: a native record starts with CMD "
                                         "DAT1 DAT2 DAT3 DAT4")
                              .arg(bytes.size()));
        d.answers << Answer{QStringLiteral("hex, %1 bytes").arg(bytes.size()), readings};
        return d;
    }
    if (text.size() > kMaxText)
        return refuse(QStringLiteral("a text of %1 characters is longer than any a family is sent")
                          .arg(text.size()));
    // The text as given first; a pasted text may have gained or lost white space at its ends.
    bool shaped = false;
    Reading reading;
    for (const QString& sent : {QString::fromUtf8(input), text}) {
        reading = searchFamilies(
            Reading{QStringLiteral("text"), QString(), {}},
            codesFor(device, QVector<int>(std::begin(kTextFamilies), std::end(kTextFamilies))),
            bool(device), true, [&](int code, const engine::TagFilter& keep) {
                return engine::byText(code, sent, shaped, keep);
            });
        if (!reading.found.isEmpty() || sent == text)
            break;
    }
    if (!shaped)
        return refuse(
            strayJson.isEmpty()
                ? QStringLiteral("\"%1\" is neither hex, a record as dalctl prints it, "
                                 "a trace line, nor a text that a device family is sent")
                      .arg(shown(text))
                : QStringLiteral("%1, nor a text that a device family is sent").arg(strayJson));
    d.answers << Answer{QStringLiteral("text \"%1\"").arg(shown(text)), {reading}};
    return d;
}

Answer answerOf(const Item& item, std::optional<int> device) {
    if (item.kind == Item::Osd)
        return {item.what, osdReadings(formOf(item.osd).bytes)};
    if (item.kind == Item::Trace) {
        const TracedRecord traced = readTraceLine(item.line);
        return {item.what,
                {headReading(traced.tunnel ? QStringLiteral("trace, Cadex tunnel unwrapped")
                                           : QStringLiteral("trace"),
                             traced.native, device, false)}};
    }
    if (!item.deviceKnown)
        return {item.what,
                {headReading(QStringLiteral("8-byte head"), nativeOf(item.rec), device, true)}};
    return {recordWhat(item), recordReadings(item.rec)};
}

} // namespace

bool Answer::found() const {
    return std::any_of(readings.begin(), readings.end(),
                       [](const Reading& r) { return !r.found.isEmpty(); });
}

QString Answer::text() const {
    QString out = what + QLatin1Char('\n');
    for (const Reading& r : readings) {
        const QString native =
            r.native.isEmpty() ? QString() : QStringLiteral(", native ") + r.native;
        if (r.found.isEmpty())
            out += QStringLiteral("  %1%2: no operation sends it\n").arg(r.label, native);
        for (const Found& f : r.found) {
            out += QStringLiteral("  %1%2: ").arg(r.label, native);
            if (r.native.isEmpty() && !f.candidate.native.isEmpty())
                out += QStringLiteral("native ") + f.candidate.native + QStringLiteral(": ");
            out += f.candidate.text();
            if (!f.families.isEmpty())
                out += QStringLiteral(" [") + f.families.join(QLatin1Char(' ')) + QLatin1Char(']');
            out += QLatin1Char('\n');
        }
    }
    return out;
}

Decoded decodeInput(const QByteArray& input, std::optional<int> device,
                    const std::function<void(const Answer&)>& each) {
    if (input.trimmed().isEmpty())
        return refuse(QStringLiteral("nothing to decode"));
    if (!validText(input))
        return refuse(QStringLiteral("the input is binary data, not text: decode takes hex, a "
                                     "family's text, a trace line or records as dalctl prints "
                                     "them"));
    QVector<Item> items;
    QString error, strayJson;
    if (!Printout(input).read(items, error, strayJson))
        return refuse(error);
    if (!items.isEmpty() && !strayJson.isEmpty())
        return refuse(strayJson);
    Decoded d = items.isEmpty() ? decodeWhole(input, device, strayJson) : Decoded();
    // Trace lines beside records are the records' own echo.
    if (std::any_of(items.begin(), items.end(),
                    [](const Item& i) { return i.kind != Item::Trace; }))
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [](const Item& i) { return i.kind == Item::Trace; }),
                    items.end());
    // Everything is refused before anything is answered.
    for (const Item& item : items) {
        if (item.kind == Item::Trace && readTraceLine(item.line).status != TracedRecord::Read)
            return refuse(item.what + QStringLiteral(" is cut or garbled"));
        if (item.kind == Item::Record && item.deviceKnown && device &&
            familyName(*device) != familyName(item.rec.deviceType))
            return refuse(
                QStringLiteral("%1 went to a %2 device, not %3: leave out --device to "
                               "decode it as printed")
                    .arg(recordWhat(item), familyName(item.rec.deviceType), familyName(*device)));
    }
    if (each)
        for (const Answer& answer : d.answers)
            each(answer);
    for (const Item& item : items) {
        d.answers << answerOf(item, device);
        if (each)
            each(d.answers.last());
    }
    return d;
}
