#include "records.h"

#include "bytes.h"
#include "families.h"
#include "quoting.h"

#include <QJsonValue>
#include <QRegularExpression>
#include <QVariant>

#include <algorithm>
#include <functional>

// ---- device families
// ------------------------------------------------------------------------------

const QVector<Family>& families() {
    static const QVector<Family> all = [] {
        QVector<Family> list;
#define DAL_FAMILY(name, cls, form, ...)                                                           \
    list << Family{QStringLiteral(#name), QStringLiteral(#cls), Form::form, family::name, {}};
#include "families.def"
        for (Family& f : list) // the device table's rows, each family's own code first
            for (const device::Row& row : device::kRows)
                if (f.name == QLatin1String(row.family))
                    f.codes << row.code;
        return list;
    }();
    return all;
}

QStringList familyNames() {
    QStringList names;
    for (const Family& f : families())
        names << f.name;
    return names;
}

QVector<const Family*> familiesWhere(const std::function<bool(const Family&)>& keep) {
    QVector<const Family*> found;
    for (const Family& f : families())
        if (keep(f))
            found << &f;
    return found;
}

QVector<const Family*> familiesOf(const QString& className) {
    return familiesWhere([&](const Family& f) { return f.className == className; });
}

const Family* familyOfCode(int deviceType) {
    for (const Family& f : families())
        if (f.codes.contains(deviceType))
            return &f;
    return nullptr;
}

const Family* familyOf(const QString& name) {
    for (const Family& f : families())
        if (name.compare(f.name, Qt::CaseInsensitive) == 0)
            return &f;
    return nullptr;
}

QString familyName(int deviceType) {
    const Family* f = familyOfCode(deviceType);
    return f ? f->name : QStringLiteral("unknown");
}

namespace {

// The traits of a code that the library reads off the utility's device type.
unsigned deviceTraits(int code) {
    unsigned traits = 0;
    for (const device::TraitText& t : device::kTraits)
        if (t.input == device::Input::DeviceType && device::has(code, t.trait))
            traits |= t.trait;
    return traits;
}

} // namespace

bool Device::apart() const { return deviceTraits(code) != deviceTraits(family->code); }

QString Device::name() const {
    if (family->codes.contains(code))
        return family->name;
    QStringList codes{deviceCodeText(code)};
    for (int other : alike)
        codes << deviceCodeText(other);
    return codes.join(QLatin1Char(' '));
}

QString Device::word() const { return code == family->code ? family->name : deviceCodeText(code); }

Device deviceOfCode(int code) {
    const Family* own = familyOfCode(code);
    return {own ? own : &families().first(), code, {}};
}

std::optional<Device> deviceNamed(const QString& word) {
    if (const Family* f = familyOf(word))
        return Device{f, f->code, {}};
    if (word == QLatin1String("unknown"))
        return deviceOfCode(0);
    bool ok = false;
    const qulonglong code = word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                                ? word.mid(2).toULongLong(&ok, 16)
                                : word.toULongLong(&ok, 10);
    return ok && code <= 0xFFFFFFFF ? std::optional<Device>(deviceOfCode(int(uint(code))))
                                    : std::nullopt;
}

QVector<Device> devicesWhere(const std::function<bool(const Family&)>& keep) {
    QVector<Device> found;
    for (const Family* f : familiesWhere(keep))
        found << Device{f, f->code, {}};
    // The codes a kept family's routing serves apart from its own code, one run per way.
    for (const device::Row& row : device::kRows) {
        const Device d = deviceOfCode(row.code);
        if (!keep(*d.family) || !d.apart())
            continue;
        const auto same = std::find_if(found.begin(), found.end(), [&](const Device& o) {
            return o.family == d.family && deviceTraits(o.code) == deviceTraits(d.code);
        });
        if (same != found.end()) {
            same->alike << d.code;
        } else {
            found << d;
            found.last().beside = true;
        }
    }
    return found;
}

QVector<Device> devicesTagged(int tag) {
    const Device own = deviceOfCode(tag);
    QVector<Device> found{own};
    for (const Device& d : devicesWhere([&](const Family& f) { return &f == own.family; }))
        if (d.beside && tag == own.family->code)
            found << d;
    return found;
}

QString describeCode(int code) {
    if (familyOfCode(code))
        return QString();
    QStringList with;
    for (const device::TraitText& t : device::kTraits)
        if (device::has(code, t.trait))
            with << QLatin1String(t.what);
    return QStringLiteral("%1: no family's code; native records").arg(deviceCodeText(code)) +
           (with.isEmpty() ? QString()
                           : QStringLiteral(", with ") + with.join(QStringLiteral(", and with ")));
}

QString deviceCodeText(int code) {
    return QStringLiteral("0x") +
           QString::number(uint(code), 16).toUpper().rightJustified(6, QLatin1Char('0'));
}

bool isHexPairs(const QString& text) {
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](QChar c) {
               return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
                      (c.toLower() >= QLatin1Char('a') && c.toLower() <= QLatin1Char('f'));
           });
}

QString quote(const QString& text) {
    QString quoted;
    quoted.reserve(text.size() + 2);
    dal::writeQuoted(text, [&](auto c) { quoted += QChar(c); });
    return quoted;
}

QString shownWord(const QString& word) {
    static const QRegularExpression plain(
        QStringLiteral("\\A[^\\s\\x00-\\x1f\\x7f\"\\\\,()=;]+\\z"));
    return plain.match(word).hasMatch() ? word : quote(word);
}

bool unquote(const QString& quoted, QString& text) {
    if (quoted.size() < 2 || !quoted.startsWith(QLatin1Char('"')) ||
        !quoted.endsWith(QLatin1Char('"')))
        return false;
    text.clear();
    const int end = int(quoted.size()) - 1;
    for (int i = 1; i < end; ++i) {
        const QChar c = quoted[i];
        if (c == QLatin1Char('"'))
            return false;
        if (c != QLatin1Char('\\')) {
            text += c;
            continue;
        }
        if (++i >= end)
            return false;
        const char kind = quoted[i].toLatin1();
        const int digits = kind == 'u' ? 4 : kind == 'U' ? 8 : 0;
        if (const char escaped = dal::escapedCharOf(kind)) {
            text += QLatin1Char(escaped);
            continue;
        }
        bool ok = false;
        const uint value = digits ? quoted.mid(i + 1, digits).toUInt(&ok, 16) : 0;
        if (!ok || i + digits >= end + 1 || value > 0x10FFFF)
            return false;
        text += value > 0xFFFF ? QString::fromUcs4(reinterpret_cast<const char32_t*>(&value), 1)
                               : QString(QChar(char16_t(value)));
        i += digits;
    }
    return true;
}

// ---- the fields of a record
// -----------------------------------------------------------------------

namespace {

QString spacedHex(const QByteArray& bytes) { return QString::fromLatin1(bytes.toHex(' ')); }

// One field of a record: how it is named in the JSON line and in the printout, what kind of
// value it holds and how it is read and written. The fields on the printout's first line come
// first; each of the others has a line of its own.
template <class Rec>
struct Field {
    enum Kind { Device, Number, Text, Head, Bytes };
    const char* json;
    const char* label;
    const char* part; // as decode names and compares it
    Kind kind;
    bool ownLine;
    bool optional; // on its line only when not empty
    std::function<QVariant(const Rec&)> get;
    std::function<void(Rec&, const QVariant&)> set;

    bool binary() const { return kind == Head || kind == Bytes; }
};

#define NUMBER(json, label, member)                                                                \
    {                                                                                              \
        json, label, json, Field<R>::Number, false, false,                                         \
            [](const R& r) { return QVariant(qlonglong(r.member)); },                              \
            [](R& r, const QVariant& v) { r.member = decltype(r.member)(v.toLongLong()); }         \
    }
#define TEXT(json, label, part, member, ownLine, optional)                                         \
    {                                                                                              \
        json, label, part, Field<R>::Text, ownLine, optional,                                      \
            [](const R& r) { return QVariant(r.member); },                                         \
            [](R& r, const QVariant& v) { r.member = v.toString(); }                               \
    }
#define BYTES(json, label, part, kind, member)                                                     \
    {                                                                                              \
        json, label, part, kind, true, false,                                                      \
            [](const R& r) { return QVariant(bytesOf(r.member)); },                                \
            [](R& r, const QVariant& v) { assign(r.member, v.toByteArray()); }                     \
    }

QByteArray bytesOf(const QByteArray& bytes) { return bytes; }
template <std::size_t N>
QByteArray bytesOf(const unsigned char (&head)[N]) {
    return dal::bytesOf(head, int(N));
}
void assign(QByteArray& to, const QByteArray& from) { to = from; }
template <std::size_t N>
void assign(unsigned char (&head)[N], const QByteArray& from) {
    std::copy(from.begin(), from.begin() + std::min<int>(int(N), from.size()), head);
}

const QVector<Field<model_Protocoldata>>& recordFields() {
    using R = model_Protocoldata;
    static const QVector<Field<R>> fields = {
        {"deviceType", "device", "deviceType", Field<R>::Device, false, false,
         [](const R& r) { return QVariant(r.deviceType); },
         [](R& r, const QVariant& v) { r.deviceType = v.toInt(); }},
        NUMBER("connectType", "connect", connectType),
        NUMBER("dataType", "dataType", dataType),
        NUMBER("msgCode", "msgCode", msgCode),
        NUMBER("statusByte", "status", statusByte),
        NUMBER("timeout", "timeout", timeout),
        BYTES("head", "head", "head", Field<R>::Head, cmdHead),
        TEXT("strAux1", "strAux1", "strAux1", strAux1, true, true),
        TEXT("Datablock", "Datablock", "text", Datablock, true, false),
        BYTES("arryDatablock", "arryDatablock", "block", Field<R>::Bytes, arryDatablock),
    };
    return fields;
}

const QVector<Field<model_OsdParam>>& osdFields() {
    using R = model_OsdParam;
    static const QVector<Field<R>> fields = {
        TEXT("tag", "tag", "tag", tag, false, false),
        NUMBER("timeout", "timeout", timeout),
        BYTES("header", "header", "header", Field<R>::Head, frameHead),
        BYTES("payload", "payload", "payload", Field<R>::Bytes, payload),
    };
    return fields;
}

#undef NUMBER
#undef TEXT
#undef BYTES

// The record's own head field: where a head line alone is read into.
constexpr int kHeadField = 6;

// What tells the two kinds of record apart: their fields, and their title in the printout.
template <class Rec>
struct KindOf;
template <>
struct KindOf<model_Protocoldata> {
    static const QVector<Field<model_Protocoldata>>& fields() { return recordFields(); }
    static constexpr const char* title = "record";
};
template <>
struct KindOf<model_OsdParam> {
    static const QVector<Field<model_OsdParam>>& fields() { return osdFields(); }
    static constexpr const char* title = "OSD record";
};

// The value of a first-line field as the printout shows it.
template <class Rec>
QString shown(const Field<Rec>& f, const Rec& rec) {
    const QVariant v = f.get(rec);
    switch (f.kind) {
    case Field<Rec>::Device:
        return QStringLiteral("%1 (%2)").arg(deviceCodeText(v.toInt()), familyName(v.toInt()));
    case Field<Rec>::Text:
        return quote(v.toString());
    default:
        return v.toString();
    }
}

template <class Rec>
QString printed(const Rec& rec, int number) {
    const QVector<Field<Rec>>& fields = KindOf<Rec>::fields();
    const QString title = QStringLiteral("%1 %2: ").arg(KindOf<Rec>::title).arg(number);
    QStringList first;
    for (const Field<Rec>& f : fields)
        if (!f.ownLine)
            first << QStringLiteral("%1 %2").arg(QLatin1String(f.label), shown(f, rec));
    QString text = title + first.join(QStringLiteral(", ")) + QLatin1Char('\n');
    for (const Field<Rec>& f : fields) {
        if (!f.ownLine)
            continue;
        const QVariant v = f.get(rec);
        if (f.kind == Field<Rec>::Text) {
            if (!f.optional || !v.toString().isEmpty())
                text +=
                    QStringLiteral("  %1: %2\n").arg(QLatin1String(f.label), quote(v.toString()));
        } else if (f.kind == Field<Rec>::Head) {
            text += QStringLiteral("  %1: %2\n")
                        .arg(QLatin1String(f.label), spacedHex(v.toByteArray()));
        } else {
            const QByteArray bytes = v.toByteArray();
            text +=
                QStringLiteral("  %1 (%2 bytes):%3\n")
                    .arg(QLatin1String(f.label))
                    .arg(bytes.size())
                    .arg(bytes.isEmpty() ? QString()
                                         : QLatin1Char(' ') + QString::fromLatin1(bytes.toHex()));
        }
    }
    return text;
}

template <class Rec>
QJsonObject asJson(const Rec& rec) {
    QJsonObject json;
    // The OSD box's record says so: its fields alone do not tell it from a cut record.
    if (std::is_same_v<Rec, model_OsdParam>)
        json.insert(QStringLiteral("osd"), true);
    for (const Field<Rec>& f : KindOf<Rec>::fields()) {
        const QVariant v = f.get(rec);
        switch (f.kind) {
        case Field<Rec>::Device:
            json.insert(QLatin1String(f.json), deviceCodeText(v.toInt()));
            json.insert(QStringLiteral("family"), familyName(v.toInt()));
            break;
        case Field<Rec>::Number:
            json.insert(QLatin1String(f.json), v.toLongLong());
            break;
        case Field<Rec>::Text:
            json.insert(QLatin1String(f.json), v.toString());
            break;
        case Field<Rec>::Bytes:
            json.insert(QStringLiteral("length"), v.toByteArray().size());
            Q_FALLTHROUGH();
        case Field<Rec>::Head:
            json.insert(QLatin1String(f.json), QString::fromLatin1(v.toByteArray().toHex()));
            break;
        }
    }
    return json;
}

// Sets one field from its JSON value or printed word; false when the value is not of its kind.
template <class Rec>
bool setField(const Field<Rec>& f, Rec& rec, const QJsonValue& value) {
    switch (f.kind) {
    case Field<Rec>::Device: {
        // A code no family has is still a record's: the device search's first probes carry 0.
        bool ok = value.isDouble();
        const int code = value.isString() ? value.toString().toInt(&ok, 0) : value.toInt();
        if (!ok)
            return false;
        f.set(rec, code);
        return true;
    }
    case Field<Rec>::Number:
        if (!value.isDouble())
            return false;
        f.set(rec, qlonglong(value.toDouble()));
        return true;
    case Field<Rec>::Text:
        if (!value.isString())
            return false;
        f.set(rec, value.toString());
        return true;
    default: {
        const QString hex = value.toString();
        if (!value.isString() || !isHexPairs(hex))
            return false;
        const QByteArray bytes = QByteArray::fromHex(hex.toLatin1());
        const int size = f.get(Rec()).toByteArray().size();
        if (f.kind == Field<Rec>::Head && bytes.size() != size)
            return false;
        f.set(rec, bytes);
        return true;
    }
    }
}

template <class Rec>
bool fromJson(const QJsonObject& json, Rec& rec, QString& error) {
    const QVector<Field<Rec>>& fields = KindOf<Rec>::fields();
    const QString what = QLatin1String(KindOf<Rec>::title);
    rec = Rec();
    QByteArray* counted = nullptr;
    QByteArray block;
    for (auto it = json.begin(); it != json.end(); ++it) {
        if (it.key() == QLatin1String("family") || it.key() == QLatin1String("length") ||
            it.key() == QLatin1String("osd"))
            continue;
        const auto f = std::find_if(fields.begin(), fields.end(), [&](const Field<Rec>& f) {
            return it.key() == QLatin1String(f.json);
        });
        if (f == fields.end()) {
            error = QStringLiteral("%1 has no field named %2").arg(what, it.key());
            return false;
        }
        if (!setField(*f, rec, it.value())) {
            error = f->kind == Field<Rec>::Head
                        ? QStringLiteral("%1 %2 must be %3 bytes of hex")
                              .arg(what, it.key())
                              .arg(f->get(Rec()).toByteArray().size())
                        : QStringLiteral("%1 %2 must be %3")
                              .arg(what, it.key(),
                                   QLatin1String(f->kind == Field<Rec>::Bytes    ? "hex"
                                                 : f->kind == Field<Rec>::Text   ? "a text"
                                                 : f->kind == Field<Rec>::Device ? "a device code"
                                                                                 : "a number"));
            return false;
        }
        if (f->kind == Field<Rec>::Bytes) {
            block = f->get(rec).toByteArray();
            counted = &block;
        }
    }
    // A "length" member, when there is one, must count the bytes given.
    if (json.contains(QLatin1String("length")) &&
        json.value(QLatin1String("length")).toInt(-1) != (counted ? counted->size() : 0)) {
        error = QStringLiteral("%1 length does not count its bytes: cut or garbled").arg(what);
        return false;
    }
    return true;
}

} // namespace

QString recordText(const model_Protocoldata& rec, int number) { return printed(rec, number); }
QString recordText(const model_OsdParam& rec, int number) { return printed(rec, number); }
QJsonObject recordJson(const model_Protocoldata& rec) { return asJson(rec); }
QJsonObject recordJson(const model_OsdParam& rec) { return asJson(rec); }

bool recordFromJson(const QJsonObject& json, model_Protocoldata& rec, QString& error) {
    return fromJson(json, rec, error);
}

bool recordFromJson(const QJsonObject& json, model_OsdParam& rec, QString& error) {
    return fromJson(json, rec, error);
}

bool recordFromJson(const QJsonObject& json, AnyRecord& rec, QString& error) {
    if (json.value(QLatin1String("osd")).toBool()) {
        rec = model_OsdParam();
        return fromJson(json, std::get<model_OsdParam>(rec), error);
    }
    rec = model_Protocoldata();
    return fromJson(json, std::get<model_Protocoldata>(rec), error);
}

// ---- the parts decode compares
// ---------------------------------------------------------------------

namespace {

// The "command" part: the head's CMD and DAT1..DAT4.
constexpr int kCommandAt = 2;
constexpr int kCommandSize = 5;

template <class Rec>
Part partOf(const Field<Rec>& f, const Rec& rec) {
    const QVariant v = f.get(rec);
    return {QLatin1String(f.part), f.binary(),
            f.binary()                   ? latin1(v.toByteArray())
            : f.kind == Field<Rec>::Text ? v.toString()
                                         : QString::number(v.toLongLong())};
}

// A field by its part name, looked up in a table built once: decode asks this for every run.
template <class Rec>
const Field<Rec>* fieldNamed(const QVector<Field<Rec>>& fields, const QString& part) {
    static const QHash<QString, const Field<Rec>*> byPart = [&] {
        QHash<QString, const Field<Rec>*> all;
        for (const Field<Rec>& f : fields)
            all.insert(QLatin1String(f.part), &f);
        return all;
    }();
    return byPart.value(part);
}

template <class Rec>
std::optional<Parts> partsIn(const QVector<Field<Rec>>& fields, const Rec& rec,
                             const Parts& shape) {
    Parts parts;
    if (shape.isEmpty()) {
        for (const Field<Rec>& f : fields)
            parts << partOf(f, rec);
        return parts;
    }
    for (const Part& wanted : shape) {
        const bool command = wanted.name == QLatin1String("command");
        const Field<Rec>* f = fieldNamed(fields, command ? QStringLiteral("head") : wanted.name);
        if (!f)
            return std::nullopt;
        parts << partOf(*f, rec);
        if (command)
            parts.last() = {wanted.name, true, parts.last().value.mid(kCommandAt, kCommandSize)};
    }
    return parts;
}

} // namespace

Parts fieldParts(const model_Protocoldata& rec) { return *partsIn(recordFields(), rec, {}); }
Parts fieldParts(const model_OsdParam& rec) { return *partsIn(osdFields(), rec, {}); }
Parts fieldParts(const AnyRecord& rec) {
    return std::visit([](const auto& r) { return fieldParts(r); }, rec);
}

std::optional<Parts> partsOf(const model_Protocoldata& rec, const Parts& shape) {
    return partsIn(recordFields(), rec, shape);
}

std::optional<Parts> partsOf(const model_OsdParam& rec, const Parts& shape) {
    return partsIn(osdFields(), rec, shape);
}

std::optional<Parts> partsOf(const Parts& fields, const Parts& shape) {
    Parts parts;
    for (const Part& wanted : shape) {
        const bool command = wanted.name == QLatin1String("command");
        const auto f = std::find_if(fields.begin(), fields.end(), [&](const Part& f) {
            return f.name == (command ? QStringLiteral("head") : wanted.name);
        });
        if (f == fields.end())
            return std::nullopt;
        parts << (command ? bytesPart("command", f->value.mid(kCommandAt, kCommandSize).toLatin1())
                          : *f);
    }
    return parts;
}

bool sameFields(const model_Protocoldata& a, const model_Protocoldata& b,
                const QStringList& ignoring) {
    return std::all_of(recordFields().begin(), recordFields().end(), [&](const auto& f) {
        return ignoring.contains(QLatin1String(f.part)) || f.get(a) == f.get(b);
    });
}

bool comparedByEnds(const QString& part) {
    const auto* f = fieldNamed(recordFields(), part);
    const auto* o = fieldNamed(osdFields(), part);
    return part == QLatin1String("command") || (f && f->kind >= Field<model_Protocoldata>::Text) ||
           (o && o->kind >= Field<model_OsdParam>::Text);
}

std::optional<CommandBytes> commandBytesOf(const QString& part) {
    // A record's head: address, 0, then CMD and DAT1; the command part starts at CMD; an OSD
    // frame's header: the marker, then the command.
    static const QHash<QString, CommandBytes> heads{{QStringLiteral("head"), {kCommandAt, 2}},
                                                    {QStringLiteral("command"), {0, 2}},
                                                    {QStringLiteral("header"), {0, 5}}};
    const auto it = heads.constFind(part);
    return it == heads.constEnd() ? std::nullopt : std::optional<CommandBytes>(*it);
}

QString recordSummary(const model_Protocoldata& rec) {
    constexpr int kShownBytes = 32;
    QString summary = QStringLiteral("%1 [%2] %3 (%4)")
                          .arg(deviceCodeText(rec.deviceType), spacedHex(bytesOf(rec.cmdHead)),
                               quote(rec.Datablock))
                          .arg(rec.arryDatablock.size());
    if (!rec.arryDatablock.isEmpty())
        summary +=
            QLatin1Char(' ') + QString::fromLatin1(rec.arryDatablock.left(kShownBytes).toHex());
    if (rec.arryDatablock.size() > kShownBytes)
        summary += QStringLiteral("...");
    return summary;
}

// ---- reading the printout back
// ----------------------------------------------------------------------

namespace {

const QString kQuoted = QStringLiteral("(\"(?:[^\"\\\\]|\\\\.)*\")");

// The pattern of a first line: its title, then each first-line field's value.
template <class Rec>
QRegularExpression firstLine() {
    QStringList parts;
    for (const Field<Rec>& f : KindOf<Rec>::fields()) {
        if (f.ownLine)
            continue;
        const QString value = f.kind == Field<Rec>::Device
                                  ? QStringLiteral("0x([0-9A-Fa-f]{1,8}) \\(\\w+\\)")
                              : f.kind == Field<Rec>::Text ? kQuoted
                                                           : QStringLiteral("(-?\\d+)");
        parts << QLatin1String(f.label) + QLatin1Char(' ') + value;
    }
    return QRegularExpression(QStringLiteral("^%1 (\\d+): ").arg(KindOf<Rec>::title) +
                              parts.join(QStringLiteral(", ")) + QLatin1Char('$'));
}

template <class Rec>
const QRegularExpression& firstLinePattern() {
    static const QRegularExpression pattern = firstLine<Rec>();
    return pattern;
}

// The pattern of a field's own line.
template <class Rec>
QRegularExpression ownLine(const Field<Rec>& f) {
    const QString label = QLatin1String(f.label);
    if (f.kind == Field<Rec>::Text)
        return QRegularExpression(QLatin1Char('^') + label + QStringLiteral(": ") + kQuoted + '$');
    if (f.kind == Field<Rec>::Head)
        return QRegularExpression(QLatin1Char('^') + label +
                                  QStringLiteral(": ((?:[0-9a-fA-F]{2} )*[0-9a-fA-F]{2})$"));
    return QRegularExpression(QLatin1Char('^') + label +
                              QStringLiteral(" \\((\\d+) bytes\\):(?: (\\S+))?$"));
}

const QRegularExpression& headLine() {
    static const QRegularExpression pattern = ownLine(recordFields()[kHeadField]);
    return pattern;
}

bool failed(QString& error, const QString& text) {
    error = text;
    return false;
}

// Reads the first line's values (when `first` matched) and then each own line in order, noting
// the parts read; a printout with its first line must hold every line that is not optional.
template <class Rec>
bool readPrinted(const QRegularExpressionMatch& first, const QStringList& lines, int& at,
                 PrintedRecord& read, QString& error) {
    Rec rec;
    const QString& what = read.what;
    int group = 2;
    for (const Field<Rec>& f : KindOf<Rec>::fields()) {
        if (f.ownLine || !first.hasMatch())
            continue;
        const QString word = first.captured(group++);
        QString text;
        if (f.kind == Field<Rec>::Text && !unquote(word, text))
            return failed(error, what + QStringLiteral(" is garbled in its %1").arg(f.label));
        f.set(rec, f.kind == Field<Rec>::Text     ? QVariant(text)
                   : f.kind == Field<Rec>::Device ? QVariant(int(word.toUInt(nullptr, 16)))
                                                  : QVariant(word.toLongLong()));
        read.parts << QLatin1String(f.part);
    }
    bool started = first.hasMatch();
    for (const Field<Rec>& f : KindOf<Rec>::fields()) {
        if (!f.ownLine)
            continue;
        const QString line = at + (started ? 1 : 0) < lines.size()
                                 ? lines[at + (started ? 1 : 0)].trimmed()
                                 : QString();
        const QRegularExpressionMatch m = ownLine(f).match(line);
        if (!m.hasMatch()) {
            if (f.optional || (!first.hasMatch() && started))
                continue;
            return failed(error,
                          what + QStringLiteral(" is cut: its %1 line is missing").arg(f.label));
        }
        if (started)
            ++at;
        started = true;
        read.parts << QLatin1String(f.part);
        if (f.kind == Field<Rec>::Text) {
            QString text;
            if (!unquote(m.captured(1), text))
                return failed(error,
                              what + QStringLiteral(" is garbled in its %1 text").arg(f.label));
            f.set(rec, text);
        } else if (f.kind == Field<Rec>::Head) {
            read.head = QByteArray::fromHex(m.captured(1).remove(QLatin1Char(' ')).toLatin1());
            const int size = int(f.get(Rec()).toByteArray().size());
            if (first.hasMatch() && read.head.size() != size)
                return failed(error, what + QStringLiteral(" is cut: its %1 line holds %2 bytes, "
                                                           "not %3")
                                                .arg(f.label)
                                                .arg(read.head.size())
                                                .arg(size));
            f.set(rec, read.head);
        } else {
            if (!isHexPairs(m.captured(2)))
                return failed(
                    error,
                    what + QStringLiteral(" is garbled: its %1 is not hex pairs").arg(f.label));
            const QByteArray bytes = QByteArray::fromHex(m.captured(2).toLatin1());
            if (bytes.size() != m.captured(1).toInt())
                return failed(error, QStringLiteral("%1 is cut: it says %2 bytes but holds %3")
                                         .arg(what, m.captured(1))
                                         .arg(bytes.size()));
            f.set(rec, bytes);
        }
    }
    read.rec = rec;
    return true;
}

} // namespace

bool isRecordStart(const QString& line) {
    const QString trimmed = line.trimmed();
    return firstLinePattern<model_Protocoldata>().match(trimmed).hasMatch() ||
           firstLinePattern<model_OsdParam>().match(trimmed).hasMatch() ||
           headLine().match(trimmed).hasMatch();
}

bool readRecord(const QStringList& lines, int& at, PrintedRecord& read, QString& error) {
    read = PrintedRecord();
    const QString line = lines[at].trimmed();
    const QRegularExpressionMatch osd = firstLinePattern<model_OsdParam>().match(line);
    const QRegularExpressionMatch first = firstLinePattern<model_Protocoldata>().match(line);
    const QRegularExpressionMatch& titled = osd.hasMatch() ? osd : first;
    read.deviceKnown = titled.hasMatch();
    read.number = titled.captured(1).toInt();
    read.what = QStringLiteral("%1 (line %2)")
                    .arg(osd.hasMatch()     ? QStringLiteral("OSD record ") + osd.captured(1)
                         : read.deviceKnown ? QStringLiteral("record ") + first.captured(1)
                                            : QStringLiteral("head"))
                    .arg(at + 1);
    return osd.hasMatch() ? readPrinted<model_OsdParam>(osd, lines, at, read, error)
                          : readPrinted<model_Protocoldata>(first, lines, at, read, error);
}
