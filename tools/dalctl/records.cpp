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

QVector<const Family*> familiesOf(const QString& className) {
    QVector<const Family*> found;
    for (const Family& f : families())
        if (f.className == className)
            found << &f;
    return found;
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
    if (ofFamily())
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
    for (const Family& f : families())
        if (keep(f))
            found << Device{&f, f.code, {}};
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

bool failed(QString& error, const QString& text) {
    error = text;
    return false;
}

QString hexOf(const QByteArray& bytes) { return QString::fromLatin1(bytes.toHex()); }
QString spacedHex(const QByteArray& bytes) { return QString::fromLatin1(bytes.toHex(' ')); }

// A member's value as the field table holds it: a number, a text or bytes; and back.
QVariant valueOf(qlonglong number) { return number; }
QVariant valueOf(const QString& text) { return text; }
QVariant valueOf(const QByteArray& bytes) { return bytes; }
template <std::size_t N>
QVariant valueOf(const unsigned char (&head)[N]) {
    return dal::bytesOf(head, int(N));
}
template <class Number>
void assign(Number& to, const QVariant& v) {
    to = Number(v.toLongLong());
}
void assign(QString& to, const QVariant& v) { to = v.toString(); }
void assign(QByteArray& to, const QVariant& v) { to = v.toByteArray(); }
template <std::size_t N>
void assign(unsigned char (&head)[N], const QVariant& v) {
    const QByteArray from = v.toByteArray();
    std::copy(from.begin(), from.begin() + std::min<int>(int(N), from.size()), head);
}

// What a field holds, which decides how it is printed, written and read.
enum class Kind { Device, Number, Text, Head, Bytes };
// Where the printout has a field: on the record's first line, or on a line of its own (only
// when not empty, for an optional text).
enum class Line { First, Own, OwnUnlessEmpty };

// One field of a record: how it is named in the JSON line and in the printout, what it holds
// and how it is read and written. The fields on the printout's first line come first.
template <class Rec>
struct Field {
    const char* json;
    const char* label;
    const char* part; // as decode names and compares it
    Kind kind;
    Line line;
    std::function<QVariant(const Rec&)> get;
    std::function<void(Rec&, const QVariant&)> set;

    bool binary() const { return kind == Kind::Head || kind == Kind::Bytes; }
    bool ownLine() const { return line != Line::First; }
    int headSize() const { return int(get(Rec()).toByteArray().size()); } // fixed by the record
};

template <class Rec, class Member>
Field<Rec> field(const char* json, const char* label, const char* part, Kind kind,
                 Member Rec::*member, Line line = Line::First) {
    return {json,
            label,
            part,
            kind,
            line,
            [member](const Rec& r) { return valueOf(r.*member); },
            [member](Rec& r, const QVariant& v) { assign(r.*member, v); }};
}

// A kind of record: its title in the printout, and its fields.
template <class Rec>
struct Table {
    const char* title;
    QVector<Field<Rec>> fields;
};

template <class Rec>
const Table<Rec>& table();

template <>
const Table<model_Protocoldata>& table<model_Protocoldata>() {
    using R = model_Protocoldata;
    static const Table<R> records{
        "record",
        {field("deviceType", "device", "deviceType", Kind::Device, &R::deviceType),
         field("connectType", "connect", "connectType", Kind::Number, &R::connectType),
         field("dataType", "dataType", "dataType", Kind::Number, &R::dataType),
         field("msgCode", "msgCode", "msgCode", Kind::Number, &R::msgCode),
         field("statusByte", "status", "statusByte", Kind::Number, &R::statusByte),
         field("timeout", "timeout", "timeout", Kind::Number, &R::timeout),
         field("head", "head", "head", Kind::Head, &R::cmdHead, Line::Own),
         field("strAux1", "strAux1", "strAux1", Kind::Text, &R::strAux1, Line::OwnUnlessEmpty),
         field("Datablock", "Datablock", "text", Kind::Text, &R::Datablock, Line::Own),
         field("arryDatablock", "arryDatablock", "block", Kind::Bytes, &R::arryDatablock,
               Line::Own)}};
    return records;
}

template <>
const Table<model_OsdParam>& table<model_OsdParam>() {
    using R = model_OsdParam;
    static const Table<R> records{
        "OSD record",
        {field("tag", "tag", "tag", Kind::Text, &R::tag),
         field("timeout", "timeout", "timeout", Kind::Number, &R::timeout),
         field("header", "header", "header", Kind::Head, &R::frameHead, Line::Own),
         field("payload", "payload", "payload", Kind::Bytes, &R::payload, Line::Own)}};
    return records;
}

// The record's own head field: where a head line alone is read into.
constexpr int kHeadField = 6;

// A field by its part name, looked up in a table built once: decode asks this for every run.
template <class Rec>
const Field<Rec>* fieldNamed(const QString& part) {
    static const QHash<QString, const Field<Rec>*> byPart = [] {
        QHash<QString, const Field<Rec>*> all;
        for (const Field<Rec>& f : table<Rec>().fields)
            all.insert(QLatin1String(f.part), &f);
        return all;
    }();
    return byPart.value(part);
}

template <class Rec>
QString printed(const Rec& rec, int number) {
    QStringList first;
    QString own;
    for (const Field<Rec>& f : table<Rec>().fields) {
        const QVariant v = f.get(rec);
        const QString label = QLatin1String(f.label);
        if (!f.ownLine())
            first << label + QLatin1Char(' ') +
                         (f.kind == Kind::Device
                              ? QStringLiteral("%1 (%2)").arg(deviceCodeText(v.toInt()),
                                                              familyName(v.toInt()))
                          : f.kind == Kind::Text ? quote(v.toString())
                                                 : v.toString());
        else if (f.kind == Kind::Text && (f.line == Line::Own || !v.toString().isEmpty()))
            own += QStringLiteral("  %1: %2\n").arg(label, quote(v.toString()));
        else if (f.kind == Kind::Head)
            own += QStringLiteral("  %1: %2\n").arg(label, spacedHex(v.toByteArray()));
        else if (f.kind == Kind::Bytes)
            own += QStringLiteral("  %1 (%2 bytes):%3\n")
                       .arg(label)
                       .arg(v.toByteArray().size())
                       .arg(v.toByteArray().isEmpty() ? QString()
                                                      : QLatin1Char(' ') + hexOf(v.toByteArray()));
    }
    return QStringLiteral("%1 %2: ").arg(QLatin1String(table<Rec>().title)).arg(number) +
           first.join(QStringLiteral(", ")) + QLatin1Char('\n') + own;
}

template <class Rec>
QJsonObject asJson(const Rec& rec) {
    QJsonObject json;
    // The OSD box's record says so: its fields alone do not tell it from a cut record.
    if (std::is_same_v<Rec, model_OsdParam>)
        json.insert(QStringLiteral("osd"), true);
    for (const Field<Rec>& f : table<Rec>().fields) {
        const QVariant v = f.get(rec);
        if (f.kind == Kind::Device)
            json.insert(QStringLiteral("family"), familyName(v.toInt()));
        if (f.kind == Kind::Bytes)
            json.insert(QStringLiteral("length"), v.toByteArray().size());
        json.insert(QLatin1String(f.json),
                    f.kind == Kind::Device   ? QJsonValue(deviceCodeText(v.toInt()))
                    : f.kind == Kind::Number ? QJsonValue(v.toLongLong())
                    : f.kind == Kind::Text   ? QJsonValue(v.toString())
                                             : QJsonValue(hexOf(v.toByteArray())));
    }
    return json;
}

// Sets one field from its JSON value; false when the value is not of its kind.
template <class Rec>
bool setField(const Field<Rec>& f, Rec& rec, const QJsonValue& value) {
    // A number past what 64 bits hold is no field's value (converting it would be undefined).
    constexpr double kPast64Bits = 9223372036854775808.0; // 2^63
    const double number = value.toDouble();
    bool ok = value.isDouble() && number >= -kPast64Bits && number < kPast64Bits;
    QVariant v = qlonglong(ok ? number : 0);
    if (f.kind == Kind::Device) // a code no family has is still a record's: probes carry 0
        v = value.isString() ? value.toString().toInt(&ok, 0) : value.toInt();
    if (f.kind == Kind::Text) {
        ok = value.isString();
        v = value.toString();
    }
    if (f.binary()) {
        v = QByteArray::fromHex(value.toString().toLatin1());
        ok = value.isString() && isHexPairs(value.toString()) &&
             (f.kind == Kind::Bytes || v.toByteArray().size() == f.headSize());
    }
    if (ok)
        f.set(rec, v);
    return ok;
}

template <class Rec>
bool fromJson(const QJsonObject& json, Rec& rec, QString& error) {
    static const char* const kWanted[] = {"a device code", "a number", "a text", "", "hex"};
    const QVector<Field<Rec>>& fields = table<Rec>().fields;
    const QString what = QLatin1String(table<Rec>().title);
    rec = Rec();
    int counted = 0; // the bytes given, which a "length" member must count
    for (auto it = json.begin(); it != json.end(); ++it) {
        if (it.key() == QLatin1String("family") || it.key() == QLatin1String("length") ||
            it.key() == QLatin1String("osd"))
            continue;
        const auto f = std::find_if(fields.begin(), fields.end(), [&](const Field<Rec>& f) {
            return it.key() == QLatin1String(f.json);
        });
        if (f == fields.end())
            return failed(error, QStringLiteral("%1 has no field named %2").arg(what, it.key()));
        if (!setField(*f, rec, it.value()))
            return failed(error,
                          f->kind == Kind::Head
                              ? QStringLiteral("%1 %2 must be %3 bytes of hex")
                                    .arg(what, it.key())
                                    .arg(f->headSize())
                              : QStringLiteral("%1 %2 must be %3")
                                    .arg(what, it.key(), QLatin1String(kWanted[int(f->kind)])));
        if (f->kind == Kind::Bytes)
            counted = f->get(rec).toByteArray().size();
    }
    if (json.contains(QLatin1String("length")) &&
        json.value(QLatin1String("length")).toInt(-1) != counted)
        return failed(
            error, QStringLiteral("%1 length does not count its bytes: cut or garbled").arg(what));
    return true;
}

// The "command" part: the head's CMD and DAT1..DAT4.
constexpr int kCommandAt = 2;
constexpr int kCommandSize = 5;

template <class Rec>
Part partOf(const Field<Rec>& f, const Rec& rec) {
    const QVariant v = f.get(rec);
    return {QLatin1String(f.part), f.binary(),
            f.binary()             ? latin1(v.toByteArray())
            : f.kind == Kind::Text ? v.toString()
                                   : QString::number(v.toLongLong())};
}

template <class Rec>
std::optional<Parts> partsIn(const Rec& rec, const Parts& shape) {
    Parts parts;
    if (shape.isEmpty())
        for (const Field<Rec>& f : table<Rec>().fields)
            parts << partOf(f, rec);
    for (const Part& wanted : shape) {
        const bool command = wanted.name == QLatin1String("command");
        const Field<Rec>* f = fieldNamed<Rec>(command ? QStringLiteral("head") : wanted.name);
        if (!f)
            return std::nullopt;
        parts << partOf(*f, rec);
        if (command)
            parts.last() = {wanted.name, true, parts.last().value.mid(kCommandAt, kCommandSize)};
    }
    return parts;
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
    rec = json.value(QLatin1String("osd")).toBool() ? AnyRecord(model_OsdParam())
                                                    : AnyRecord(model_Protocoldata());
    return std::visit([&](auto& r) { return fromJson(json, r, error); }, rec);
}

Parts fieldParts(const model_Protocoldata& rec) { return *partsIn(rec, {}); }
Parts fieldParts(const model_OsdParam& rec) { return *partsIn(rec, {}); }
Parts fieldParts(const AnyRecord& rec) {
    return std::visit([](const auto& r) { return *partsIn(r, {}); }, rec);
}

std::optional<Parts> partsOf(const model_Protocoldata& rec, const Parts& shape) {
    return partsIn(rec, shape);
}

std::optional<Parts> partsOf(const model_OsdParam& rec, const Parts& shape) {
    return partsIn(rec, shape);
}

bool sameFields(const model_Protocoldata& a, const model_Protocoldata& b,
                const QStringList& ignoring) {
    const auto& fields = table<model_Protocoldata>().fields;
    return std::all_of(fields.begin(), fields.end(), [&](const auto& f) {
        return ignoring.contains(QLatin1String(f.part)) || f.get(a) == f.get(b);
    });
}

bool comparedByEnds(const QString& part) {
    const auto* f = fieldNamed<model_Protocoldata>(part);
    const auto* o = fieldNamed<model_OsdParam>(part);
    return part == QLatin1String("command") || (f && f->kind >= Kind::Text) ||
           (o && o->kind >= Kind::Text);
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
                          .arg(deviceCodeText(rec.deviceType),
                               spacedHex(dal::bytesOf(rec.cmdHead, int(sizeof rec.cmdHead))),
                               quote(rec.Datablock))
                          .arg(rec.arryDatablock.size());
    if (!rec.arryDatablock.isEmpty())
        summary += QLatin1Char(' ') + hexOf(rec.arryDatablock.left(kShownBytes));
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
const QRegularExpression& firstLinePattern() {
    static const QRegularExpression pattern = [] {
        QStringList parts;
        for (const Field<Rec>& f : table<Rec>().fields)
            if (!f.ownLine())
                parts << QLatin1String(f.label) + QLatin1Char(' ') +
                             (f.kind == Kind::Device
                                  ? QStringLiteral("0x([0-9A-Fa-f]{1,8}) \\(\\w+\\)")
                              : f.kind == Kind::Text ? kQuoted
                                                     : QStringLiteral("(-?\\d+)"));
        return QRegularExpression(
            QStringLiteral("^%1 (\\d+): ").arg(QLatin1String(table<Rec>().title)) +
            parts.join(QStringLiteral(", ")) + QLatin1Char('$'));
    }();
    return pattern;
}

// The pattern of a field's own line.
template <class Rec>
QRegularExpression ownLinePattern(const Field<Rec>& f) {
    const QString value = f.kind == Kind::Text ? QStringLiteral(": ") + kQuoted
                          : f.kind == Kind::Head
                              ? QStringLiteral(": ((?:[0-9a-fA-F]{2} )*[0-9a-fA-F]{2})")
                              : QStringLiteral(" \\((\\d+) bytes\\):(?: (\\S+))?");
    return QRegularExpression(QLatin1Char('^') + QLatin1String(f.label) + value + QLatin1Char('$'));
}

const QRegularExpression& headLine() {
    static const QRegularExpression pattern =
        ownLinePattern(table<model_Protocoldata>().fields[kHeadField]);
    return pattern;
}

// Reads the first line's values (when `first` matched) and then each own line in order, noting
// the parts read; a printout with its first line must hold every line that is not optional, a
// head line alone (its own first line) only the head.
template <class Rec>
bool readPrinted(const QRegularExpressionMatch& first, const QStringList& lines, int& at,
                 PrintedRecord& read, QString& error) {
    Rec rec;
    const QString& what = read.what;
    const bool titled = first.hasMatch();
    int group = 2;
    int next = titled ? at + 1 : at;
    for (const Field<Rec>& f : table<Rec>().fields) {
        const QString label = QLatin1String(f.label);
        QString text;
        if (!f.ownLine()) {
            if (!titled)
                continue;
            const QString word = first.captured(group++);
            if (f.kind == Kind::Text && !unquote(word, text))
                return failed(error, what + QStringLiteral(" is garbled in its %1").arg(label));
            f.set(rec, f.kind == Kind::Text     ? QVariant(text)
                       : f.kind == Kind::Device ? QVariant(int(word.toUInt(nullptr, 16)))
                                                : QVariant(word.toLongLong()));
            read.parts << QLatin1String(f.part);
            continue;
        }
        const QRegularExpressionMatch m =
            ownLinePattern(f).match(next < lines.size() ? lines[next].trimmed() : QString());
        if (!m.hasMatch()) {
            if (f.line == Line::OwnUnlessEmpty || (!titled && !read.parts.isEmpty()))
                continue;
            return failed(error,
                          what + QStringLiteral(" is cut: its %1 line is missing").arg(label));
        }
        at = next++;
        read.parts << QLatin1String(f.part);
        if (f.kind == Kind::Text) {
            if (!unquote(m.captured(1), text))
                return failed(error,
                              what + QStringLiteral(" is garbled in its %1 text").arg(label));
            f.set(rec, text);
        } else if (f.kind == Kind::Head) {
            read.head = QByteArray::fromHex(m.captured(1).remove(QLatin1Char(' ')).toLatin1());
            if (titled && read.head.size() != f.headSize())
                return failed(error, what + QStringLiteral(" is cut: its %1 line holds %2 bytes, "
                                                           "not %3")
                                                .arg(label)
                                                .arg(read.head.size())
                                                .arg(f.headSize()));
            f.set(rec, read.head);
        } else {
            const QByteArray bytes = QByteArray::fromHex(m.captured(2).toLatin1());
            if (!isHexPairs(m.captured(2)))
                return failed(
                    error,
                    what + QStringLiteral(" is garbled: its %1 is not hex pairs").arg(label));
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
    read.what = QStringLiteral("%1 (line %2)")
                    .arg(osd.hasMatch()     ? QStringLiteral("OSD record ") + osd.captured(1)
                         : read.deviceKnown ? QStringLiteral("record ") + first.captured(1)
                                            : QStringLiteral("head"))
                    .arg(at + 1);
    return osd.hasMatch() ? readPrinted<model_OsdParam>(osd, lines, at, read, error)
                          : readPrinted<model_Protocoldata>(first, lines, at, read, error);
}
