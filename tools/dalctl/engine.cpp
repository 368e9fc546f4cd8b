#include "engine.h"

#include "bytes.h"
#include "engine_index.h"
#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "records.h"
#include "samples.h"
#include "session.h"

#include <QRegularExpression>

#include <algorithm>
#include <bitset>
#include <limits>
#include <map>
#include <memory>
#include <mutex>

namespace {

unsigned char byteAt(const QByteArray& bytes, int at) {
    return static_cast<unsigned char>(bytes[at]);
}

} // namespace

namespace engine {

namespace {

constexpr int kNative = 0x700000;
constexpr int kNobody = -1;    // a probe that changes no argument (only model members)
constexpr int kModelProbe = 7; // the value every numeric model member takes in one probe
constexpr int kMaxBranches = 8;

quint64 bitOf(int arg) { return arg < 64 ? quint64(1) << arg : ~quint64(0); }

// ---- what an argument does to the bytes ------------------------------------------------------

enum class ArgKind { Integer, Boolean, Other };

ArgKind kindOf(const QString& type) {
    const QString sample = sampleArgument(type);
    if (sample == QLatin1String("true"))
        return ArgKind::Boolean;
    if (sample == QLatin1String("1") && !type.contains(QLatin1String("double")) &&
        !type.contains(QLatin1String("float")))
        return ArgKind::Integer;
    return ArgKind::Other;
}

// One record of a call, in every shape the engine keeps.
struct Sent {
    Form head;
    Form out;
    Form raw;
    int tag;
    QJsonObject json; // the record as printed, for the call that makes a signature
};

struct Probe {
    long long value;
    QVector<Sent> sent;
};

QByteArray rawHead(const model_Protocoldata& rec) {
    return QByteArray(reinterpret_cast<const char*>(rec.cmdHead), sizeof rec.cmdHead);
}

bool runProbe(const Operation& op, const QStringList& arguments, int device, const Models& models,
              QVector<Sent>& sent, bool printed = false) {
    DeviceSetting setting;
    setting.deviceType = device;
    Outcome outcome;
    try {
        outcome = runOperation(op, arguments, setting, models);
    } catch (const std::exception&) {
        return false;
    }
    for (const model_Protocoldata& rec : outcome.records)
        sent << Sent{
            {Form::Head, nativeBytes(rawHead(rec).mid(2, kHeadSize), rec.arryDatablock), {}},
            formOf(rec),
            {Form::Frame, rawHead(rec), {}}, // compared byte by byte, as a frame is
            rec.deviceType,
            printed ? recordJson(rec) : QJsonObject()};
    for (const model_OsdParam& rec : outcome.osdRecords) {
        const Form form = formOf(rec);
        sent << Sent{{Form::Osd, {}, {}},
                     form,
                     {Form::Osd, QByteArray(form.bytes.left(sizeof rec.frameHead)), {}},
                     kOsdTag,
                     printed ? osdRecordJson(rec) : QJsonObject()};
    }
    return true;
}

// Whether byte `at` of two records of one operation can be compared: a native head always, the
// rest of a form only when the two are the same length.
bool comparable(const Form& a, const Form& b, int at) {
    return at < b.bytes.size() &&
           (a.kind == Form::Head ? at < kHeadSize : a.bytes.size() == b.bytes.size());
}

// Marks what the probes of argument `arg` changed in `shape` and finds the rules it follows.
void learn(Shape& shape, int arg, ArgKind kind, long long base,
           const QVector<QPair<long long, const Form*>>& probes) {
    const QByteArray& bytes = shape.form.bytes;
    for (const auto& probe : probes) {
        if (arg >= 0 && kind != ArgKind::Other && probe.second->text != shape.form.text &&
            !shape.textArgs.contains(arg))
            shape.textArgs << arg;
        for (int at = 0; at < bytes.size(); ++at)
            if (!comparable(shape.form, *probe.second, at) ||
                probe.second->bytes[at] != bytes[at]) {
                shape.varies[at] = 1;
                if (arg != kNobody)
                    shape.reached[at] |= bitOf(arg);
            }
    }
    // byte == ((value + offset) >> shift) & 0xFF for the sample and every probe
    auto follows = [&](int at, int shift, int offset) {
        bool changed = false;
        for (const auto& probe : probes) {
            const QByteArray& other = probe.second->bytes;
            if (!comparable(shape.form, *probe.second, at) ||
                byteAt(other, at) != (((probe.first + offset) >> shift) & 0xFF))
                return false;
            changed = changed || other[at] != bytes[at];
        }
        return changed && (((base + offset) >> shift) & 0xFF) == byteAt(bytes, at);
    };
    auto ruled = [&](int at) {
        return std::any_of(shape.rules.begin(), shape.rules.end(),
                           [at](const Rule& rule) { return rule.at == at; });
    };
    if (kind == ArgKind::Other) // its bytes vary, by no rule a value can be read back with
        return;
    if (kind == ArgKind::Boolean) {
        for (int at = 0; at < bytes.size(); ++at)
            if (!probes.isEmpty() && comparable(shape.form, *probes[0].second, at) &&
                probes[0].second->bytes[at] != bytes[at] && !ruled(at))
                shape.rules << Rule{Rule::Bool, at, arg, byteAt(bytes, at),
                                    byteAt(probes[0].second->bytes, at)};
        return;
    }
    if (probes.size() < 2)
        return;
    int lowOffset = 0; // a high byte shares the offset of its low byte
    for (int at = 0; at < bytes.size(); ++at) {
        const int offset = static_cast<signed char>(byteAt(bytes, at) - base);
        if (!ruled(at) && follows(at, 0, offset)) {
            shape.rules << Rule{Rule::Low, at, arg, offset, 0};
            lowOffset = offset;
        }
    }
    for (int at = 0; at < bytes.size(); ++at)
        if (!ruled(at) && follows(at, 8, lowOffset))
            shape.rules << Rule{Rule::High, at, arg, lowOffset, 0};
}

Shape shapeOf(const Form& form) {
    Shape shape;
    shape.form = form;
    shape.varies = QByteArray(form.bytes.size(), 0);
    shape.reached = QVector<quint64>(form.bytes.size(), 0);
    return shape;
}

// The command (CMD, DAT1) of a call's first record and the kind of form it goes out as: calls
// that differ in either are another branch of the operation, not a variation of this one.
QByteArray branchOf(const QVector<Sent>& sent) {
    return sent.isEmpty() ? QByteArray() : sent[0].head.bytes.left(2) + char(sent[0].out.kind);
}

// A byte that two arguments change carries neither alone.
void dropSharedBytes(Shape& shape) {
    shape.rules.erase(std::remove_if(shape.rules.begin(), shape.rules.end(),
                                     [&](const Rule& rule) {
                                         return std::bitset<64>(shape.reached[rule.at]).count() > 1;
                                     }),
                      shape.rules.end());
}

// Every shape of record k, learnt from the probes of one argument (or of the model).
void learnRecord(Signature& s, int k, int arg, ArgKind kind, long long base,
                 const QVector<Probe>& probes) {
    QVector<QPair<long long, const Form*>> heads, outs, raws;
    for (const Probe& probe : probes) {
        heads << qMakePair(probe.value, &probe.sent[k].head);
        outs << qMakePair(probe.value, &probe.sent[k].out);
        raws << qMakePair(probe.value, &probe.sent[k].raw);
    }
    learn(s.head, arg, kind, base, heads);
    learn(s.out, arg, kind, base, outs);
    learn(s.raw, arg, kind, base, raws);
}

// Probes the operation from one call (`base`) and, one level deep, from each call of another
// command that the probes came across. `seen` holds the commands already probed.
QVector<Signature> probeCall(const Operation& op, int device, const Models& models,
                             const QStringList& base, QVector<QByteArray>& seen, bool branch) {
    QVector<Sent> sent;
    if (!runProbe(op, base, device, models, sent, true) || sent.isEmpty() ||
        seen.contains(branchOf(sent)))
        return {};
    seen << branchOf(sent);
    QVector<Signature> signatures;
    for (int k = 0; k < sent.size(); ++k)
        signatures << Signature{&op,
                                device,
                                base,
                                k + 1,
                                int(sent.size()),
                                sent[k].tag,
                                shapeOf(sent[k].head),
                                shapeOf(sent[k].out),
                                shapeOf(sent[k].raw),
                                sent[k].json};
    QVector<QStringList> branches;
    for (int arg = 0; arg < base.size(); ++arg) {
        const QString& type = op.argumentTypes[arg];
        const ArgKind kind = kindOf(type);
        const long long value =
            kind == ArgKind::Boolean ? base[arg] == QLatin1String("true") : base[arg].toLongLong();
        QStringList values;
        if (kind == ArgKind::Integer)
            for (long long v : {0, 2, 3, 5, 9, 0x1234})
                values << QString::number(v);
        else
            values << (kind == ArgKind::Boolean ? QString::fromLatin1(value ? "false" : "true")
                                                : otherArgument(type));
        QVector<Probe> probes;
        for (const QString& v : values) {
            QStringList arguments = base;
            arguments[arg] = v;
            Probe probe{kind == ArgKind::Boolean ? !value : v.toLongLong(), {}};
            if (arguments[arg] == base[arg] || !runProbe(op, arguments, device, models, probe.sent))
                continue;
            if (branchOf(probe.sent) != branchOf(sent))
                branches << arguments;
            else if (probe.sent.size() == sent.size())
                probes << probe;
        }
        for (int k = 0; k < signatures.size(); ++k)
            learnRecord(signatures[k], k, arg, kind, value, probes);
    }
    // Bytes taken from a model record's members are not fixed either.
    Probe model{0, {}};
    const bool modelRun = runProbe(op, base, device, models.withNumbers(kModelProbe), model.sent) &&
                          model.sent.size() == sent.size();
    for (int k = 0; k < signatures.size(); ++k) {
        dropSharedBytes(signatures[k].head);
        dropSharedBytes(signatures[k].out);
        if (modelRun)
            learnRecord(signatures[k], k, kNobody, ArgKind::Other, 0, {model});
    }
    for (int i = 0; !branch && i < branches.size() && i < kMaxBranches; ++i)
        signatures += probeCall(op, device, models, branches[i], seen, true);
    return signatures;
}

QVector<Signature> probeOperation(const Operation& op, int device, const Models& models) {
    QVector<QByteArray> seen;
    return probeCall(op, device, models, sampleCall(op).mid(1), seen, false);
}

// A text without its numbers, separators, raw bytes and the port letter that follows a number:
// two texts of the same row share it, whatever values and however many of them they carry.
QString skeleton(const QString& text) {
    static const QRegularExpression port(QStringLiteral("(\\d)[A-F](?![A-Za-z])"));
    static const QRegularExpression values(
        QStringLiteral("[-0-9., \\x{00}-\\x{1f}\\x{7f}-\\x{ff}]"));
    return QString(text).replace(port, QStringLiteral("\\1@")).remove(values);
}

// ---- the index of one device ------------------------------------------------------------------

// What is derived from the signatures rather than learnt: text skeletons and the CMD lookup.
void complete(Index& index) {
    for (int i = 0; i < index.signatures.size(); ++i) {
        Signature& s = index.signatures[i];
        s.out.skeleton = skeleton(s.out.form.text);
        if (s.head.form.kind == Form::Head && !s.head.varies.isEmpty() && !s.head.varies[0])
            index.byCmd[byteAt(s.head.form.bytes, 0)] << i;
    }
}

std::unique_ptr<Index> learnIndex(int device) {
    const Quiet quiet;
    const Models models = Models::defaults();
    auto index = std::make_unique<Index>();
    for (const Operation& op : operations()) {
        const bool tarsel = op.className == QLatin1String("DalTarsel");
        if (explainable(op) && tarsel == (device != kAccessories))
            index->signatures << probeOperation(op, tarsel ? device : kNative, models);
    }
    return index;
}

QString& cacheFolder() {
    static QString folder;
    return folder;
}

std::unique_ptr<Index> buildIndex(int device) {
    const bool kept = !cacheFolder().isEmpty();
    std::unique_ptr<Index> index = kept ? loadKeptIndex(device) : nullptr;
    if (!index) {
        index = learnIndex(device);
        if (kept)
            keepIndex(device, *index);
    }
    complete(*index);
    return index;
}

const Index& indexFor(int device) {
    static std::mutex lock;
    static std::map<int, std::unique_ptr<Index>> indexes;
    std::lock_guard<std::mutex> guard(lock);
    std::unique_ptr<Index>& index = indexes[device];
    if (!index)
        index = buildIndex(device);
    return *index;
}

// ---- reading arguments off bytes --------------------------------------------------------------

// The arguments that `bytes` carry by the shape's rules, over its first `checked` bytes; false
// when a fixed byte differs or two bytes disagree on an argument.
bool readArguments(const Shape& shape, const QByteArray& bytes, int checked, Candidate& c) {
    const QByteArray& expected = shape.form.bytes;
    for (int at = 0; at < checked; ++at)
        if (!shape.varies[at] && bytes[at] != expected[at])
            return false;
    std::map<int, long long> low, high;
    for (const Rule& rule : shape.rules) {
        if (rule.at >= checked)
            continue;
        const int b = byteAt(bytes, rule.at);
        long long value;
        std::map<int, long long>& into = rule.kind == Rule::High ? high : low;
        if (rule.kind == Rule::Bool) {
            if (b != rule.offset && b != rule.falseByte)
                return false;
            value = b == rule.offset;
        } else {
            value = rule.kind == Rule::Low ? (b - rule.offset) & 0xFF : b;
        }
        const auto known = into.find(rule.arg);
        if (known != into.end() && known->second != value)
            return false;
        into[rule.arg] = value;
    }
    for (const auto& entry : low) {
        long long value = entry.second;
        const auto h = high.find(entry.first);
        if (h != high.end()) {
            int offset = 0;
            for (const Rule& rule : shape.rules)
                if (rule.arg == entry.first && rule.kind == Rule::Low)
                    offset = rule.offset;
            value = ((h->second << 8 | ((value + offset) & 0xFF)) - offset) & 0xFFFF;
        }
        c.args << qMakePair(c.op->argumentNames.value(entry.first), value);
    }
    return true;
}

Candidate candidateOf(const Signature& s) {
    Candidate c;
    c.op = s.op;
    c.record = s.record;
    c.records = s.records;
    c.tag = s.tag;
    return c;
}

// ---- decoding a text --------------------------------------------------------------------------

constexpr int kMaxRuns = 2048; // combinations tried in full per candidate text
constexpr int kRounds = 3;     // passes over the arguments when there are more

// Values worth trying for an integer argument that reached `text`: its numbers, one off (the
// devices count from 1), 3000 above (parameters riding in the time-out) and small ones.
QStringList valuesFor(ArgKind kind, const QString& sample, const QString& text) {
    if (kind == ArgKind::Boolean)
        return {sample,
                sample == QLatin1String("true") ? QStringLiteral("false") : QStringLiteral("true")};
    static const QRegularExpression number(QStringLiteral("-?\\d+"));
    QStringList values{sample};
    auto add = [&](long long v) {
        if (!values.contains(QString::number(v)))
            values << QString::number(v);
    };
    for (auto it = number.globalMatch(text); it.hasNext();) {
        const long long n = it.next().captured().toLongLong();
        for (long long v : {n, n - 1, n + 1, n + 3000, n + 2999})
            add(v);
    }
    for (int v = 0; v < 6; ++v)
        add(v);
    return values;
}

const Models& sampleModels() {
    static const Models models = Models::defaults();
    return models;
}

// The text an operation sends as record `s.record` for `arguments`, or a null string.
QString textOf(const Signature& s, const QStringList& arguments, QByteArray& head) {
    QVector<Sent> sent;
    if (!runProbe(*s.op, arguments, s.device, sampleModels(), sent) || sent.size() < s.record)
        return QString();
    head = sent[s.record - 1].head.bytes.left(kHeadSize);
    return sent[s.record - 1].out.text;
}

// How many of the target's numbers a text carries in the same places.
int closeness(const QString& text, const QString& target) {
    static const QRegularExpression number(QStringLiteral("-?\\d+"));
    QStringList a, b;
    for (auto it = number.globalMatch(text); it.hasNext();)
        a << it.next().captured();
    for (auto it = number.globalMatch(target); it.hasNext();)
        b << it.next().captured();
    int same = 0;
    for (int i = 0; i < a.size() && i < b.size(); ++i)
        same += a[i] == b[i];
    return text == target ? std::numeric_limits<int>::max() : same;
}

// Runs the operation with the values that reach its text until it sends exactly `text`: every
// combination when they are few, otherwise one argument at a time, keeping the value that
// brings the most of the text's numbers into place.
bool searchText(const Signature& s, const QString& text, Candidate& c) {
    const QVector<int>& args = s.out.textArgs;
    QVector<QStringList> choices;
    long long combinations = 1;
    for (int arg : args) {
        choices << valuesFor(kindOf(s.op->argumentTypes[arg]), s.base[arg], text);
        combinations *= choices.last().size();
    }
    const Quiet quiet;
    QStringList current = s.base;
    QByteArray head;
    auto found = [&](const QStringList& arguments) {
        if (textOf(s, arguments, head) != text)
            return false;
        for (int arg : args) {
            const QString& value = arguments[arg];
            c.args << qMakePair(s.op->argumentNames.value(arg), value == QLatin1String("true") ? 1LL
                                                                : value == QLatin1String("false")
                                                                    ? 0LL
                                                                    : value.toLongLong());
        }
        c.native = QString::fromLatin1(head.toHex(' '));
        return true;
    };
    if (combinations <= kMaxRuns) {
        for (long long run = 0; run < combinations; ++run) {
            long long rest = run;
            for (int i = 0; i < args.size(); ++i) {
                current[args[i]] = choices[i][int(rest % choices[i].size())];
                rest /= choices[i].size();
            }
            if (found(current))
                return true;
        }
        return false;
    }
    for (int round = 0; round < kRounds; ++round)
        for (int i = 0; i < args.size(); ++i) {
            QString best = current[args[i]];
            int bestCloseness = closeness(textOf(s, current, head), text);
            for (const QString& value : choices[i]) {
                QStringList trial = current;
                trial[args[i]] = value;
                const int close = closeness(textOf(s, trial, head), text);
                if (close > bestCloseness) {
                    best = value;
                    bestCloseness = close;
                }
            }
            current[args[i]] = best;
        }
    return found(current);
}

// The native head of a signature with "??" where it follows an argument.
QString headPattern(const Shape& head) {
    QStringList bytes;
    for (int at = 0; at < kHeadSize && at < head.form.bytes.size(); ++at)
        bytes << (head.varies[at] ? QStringLiteral("??")
                                  : QString::fromLatin1(head.form.bytes.mid(at, 1).toHex()));
    return bytes.join(QLatin1Char(' '));
}

// Whether `c` says nothing that `other`, a reading of the same record, does not say too.
bool coveredBy(const Candidate& c, const Candidate& other) {
    return &c != &other && c.op == other.op && c.record == other.record &&
           c.args.size() < other.args.size() &&
           std::all_of(c.args.begin(), c.args.end(), [&](const QPair<QString, long long>& arg) {
               return other.args.contains(arg);
           });
}

// Two signatures of one operation (its branches) can both match a record, one of them
// reading fewer of its arguments: only the fuller reading is kept.
QVector<Candidate> fullest(const QVector<Candidate>& found) {
    QVector<Candidate> kept;
    for (const Candidate& c : found)
        if (std::none_of(found.begin(), found.end(),
                         [&](const Candidate& other) { return coveredBy(c, other); }))
            kept << c;
    return kept;
}

QStringList namesOf(const Operation& op, quint64 arguments) {
    QStringList names;
    for (int arg = 0; arg < op.argumentNames.size(); ++arg)
        if (arguments & bitOf(arg))
            names << op.argumentNames[arg];
    return names;
}

} // namespace

// ---- public -----------------------------------------------------------------------------------

void setCacheDirectory(const QString& folder) { cacheFolder() = folder; }

QString cacheDirectory() { return cacheFolder(); }

void learn(int index) { indexFor(index); }

QVector<Candidate> byHead(int device, const QByteArray& native, const TagFilter& keep) {
    QVector<Candidate> found;
    if (native.size() < kHeadSize)
        return found;
    const Index& index = indexFor(device);
    for (int i : index.byCmd[byteAt(native, 0)]) {
        const Signature& s = index.signatures[i];
        Candidate c = candidateOf(s);
        c.native = QString::fromLatin1(native.left(kHeadSize).toHex(' '));
        if (keep(s.tag) && readArguments(s.head, native, kHeadSize, c))
            found << c;
    }
    return fullest(found);
}

QVector<Candidate> byForm(int device, Form::Kind kind, const QByteArray& bytes,
                          const TagFilter& keep) {
    QVector<Candidate> found;
    for (const Signature& s : indexFor(device).signatures) {
        const QByteArray& expected = s.out.form.bytes;
        if (s.out.form.kind != kind || !keep(s.tag))
            continue;
        const int checked = bytes.size() == expected.size() ? int(expected.size())
                            : kind == Form::Osd && bytes.size() > kOsdCommandAt ? kOsdCommandAt + 1
                                                                                : -1;
        Candidate c = candidateOf(s);
        c.native = headPattern(s.head);
        if (checked > 0 && readArguments(s.out, bytes, checked, c))
            found << c;
    }
    return fullest(found);
}

QVector<Candidate> byText(int device, const QString& text, bool& shaped, const TagFilter& keep) {
    QVector<Candidate> found;
    const QString shape = skeleton(text);
    for (const Signature& s : indexFor(device).signatures) {
        if (s.out.form.kind != Form::Text || s.out.skeleton != shape || !keep(s.tag))
            continue;
        shaped = true;
        Candidate c = candidateOf(s);
        if (searchText(s, text, c))
            found << c;
    }
    return fullest(found);
}

QVector<SampleRecord> sampleRecords(int device, const Operation& op) {
    QVector<SampleRecord> records;
    const QStringList sample = sampleCall(op).mid(1);
    for (const Signature& s : indexFor(device).signatures) {
        if (s.op != &op || s.base != sample)
            continue;
        SampleRecord r{s.json, {}};
        for (quint64 arguments : s.raw.reached)
            r.marks << namesOf(op, arguments);
        records << r;
    }
    return records;
}

} // namespace engine

// ---- forms ------------------------------------------------------------------------------------

// A Cadex tunnel: F1 5D carrying a native head and block, with their length (checksum
// included) in DAT3 and DAT4 and their sum in the last byte.
bool isTunnel(const QByteArray& head, const QByteArray& block) {
    const int length = block.size();
    return head.size() >= kHeadSize && byteAt(head, 0) == 0xF1 && byteAt(head, 1) == 0x5D &&
           length > kHeadSize && length == (byteAt(head, 3) | byteAt(head, 4) << 8) &&
           dal::withCheckSum(block.left(length - 1)) == block;
}

QByteArray nativeBytes(const QByteArray& head, const QByteArray& block) {
    return isTunnel(head, block) ? block.left(block.size() - 1) : head + block;
}

Form formOf(const model_Protocoldata& rec) {
    const QString family = familyName(rec.deviceType);
    if (family == QLatin1String("VM6S") && rec.arryDatablock.startsWith(kFrameStart))
        return {Form::Frame, rec.arryDatablock, QString()};
    const bool textFamily = family != QLatin1String("native") && family != QLatin1String("Cadex") &&
                            family != QLatin1String("VantaZ") &&
                            family != QLatin1String("keyboard");
    if (textFamily && !rec.Datablock.isEmpty())
        return {Form::Text, QByteArray(), rec.Datablock};
    const QByteArray head(reinterpret_cast<const char*>(rec.cmdHead) + 2, kHeadSize);
    return {Form::Head, nativeBytes(head, rec.arryDatablock), QString()};
}

Form formOf(const model_OsdParam& rec) {
    return {Form::Osd,
            QByteArray(reinterpret_cast<const char*>(rec.frameHead), sizeof rec.frameHead) +
                rec.payload,
            QString()};
}

bool explainable(const Operation& op) {
    if (op.argumentNames.contains(QLatin1String("cmd")))
        return false;
    for (const QString& type : op.argumentTypes)
        if (type.contains(QLatin1String("model_Protocoldata")) ||
            type.contains(QLatin1String("model_OsdParam")))
            return false;
    return true;
}

QString Candidate::text() const {
    QStringList shown;
    for (const auto& arg : args)
        shown << QStringLiteral("%1=%2").arg(arg.first).arg(arg.second);
    QString text = (op->className == QLatin1String("DalTarsel") ? op->name : op->qualifiedName()) +
                   QLatin1Char('(') + shown.join(QStringLiteral(", ")) + QLatin1Char(')');
    if (records > 1)
        text += QStringLiteral(" record %1/%2").arg(record).arg(records);
    return text;
}

QJsonObject Candidate::json() const {
    QJsonObject values;
    for (const auto& arg : args)
        values.insert(arg.first, arg.second);
    return {{QStringLiteral("operation"), op->qualifiedName()},
            {QStringLiteral("arguments"), values},
            {QStringLiteral("record"), record},
            {QStringLiteral("records"), records}};
}
