#include "explain.h"

#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "records.h"
#include "samples.h"
#include "session.h"

#include <QJsonArray>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>

// Everything here is learnt from the library itself: each operation of the registry is run with
// its sample arguments and then with other values for each integer or boolean argument, and
// the bytes and texts that change tell which argument travels where.
namespace {

constexpr int kHeadSize = 5; // CMD DAT1 DAT2 DAT3 DAT4
constexpr int kNative = 0x700000;
constexpr int kAllFamilies = 0;
constexpr int kOsdCommandAt = 4; // an OSD header's command byte
constexpr int kNobody = -1;      // no argument (or only a model member) changed a byte
constexpr int kSeveral = -2;     // more than one argument did
constexpr int kModelProbe = 7;   // the value every numeric model member takes in one probe
const QByteArray kFrameStart = QByteArray::fromHex("680000000168");
const QByteArray kOsdMarker = QByteArray::fromHex("00fedc");
const char kTraceLabel[] = "---addToQueue----CMD=";
const char kNote[] = "  # dal: ";

unsigned char byteAt(const QByteArray& bytes, int at) {
    return static_cast<unsigned char>(bytes[at]);
}

unsigned char checksum(const QByteArray& bytes, int length) {
    unsigned sum = 0;
    for (int i = 0; i < length; ++i)
        sum += byteAt(bytes, i);
    return static_cast<unsigned char>(sum);
}

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

// How one byte follows an argument: byte = ((value + offset) >> 8 * high) & 0xFF, or for a
// boolean, one byte when true and another when false.
struct Rule {
    enum Kind { Low, High, Bool };
    Kind kind;
    int at;
    int arg;
    int offset;    // Low, High; Bool: the byte when true
    int falseByte; // Bool
};

// One of an operation's records in one shape (its native head, or its family's form): the
// bytes or text of the sample call, which bytes any probe changed and the rules found.
struct Shape {
    Form form;
    QByteArray varies;
    QVector<Rule> rules;
    QVector<int> textArgs;  // arguments that change a text form
    QString skeleton;       // of a text form
    QVector<int> changedBy; // per byte: the argument that changed it, kNobody or kSeveral
};

struct Signature {
    const Operation* op;
    int device;
    QStringList base; // the call probed
    int record;
    int records;
    Shape head; // the native head and block, on the device it was probed on
    Shape out;  // the form the family sends
};

struct Probe {
    long long value;
    QVector<Form> heads;
    QVector<Form> outs;
};

bool runProbe(const Operation& op, const QStringList& arguments, int device, const Models& models,
              QVector<Form>& heads, QVector<Form>& outs) {
    DeviceSetting setting;
    setting.deviceType = device;
    Outcome outcome;
    try {
        outcome = runOperation(op, arguments, setting, models);
    } catch (const std::exception&) {
        return false;
    }
    for (const model_Protocoldata& rec : outcome.records) {
        heads << Form{
            Form::Head,
            nativeBytes(QByteArray(reinterpret_cast<const char*>(rec.cmdHead) + 2, kHeadSize),
                        rec.arryDatablock),
            QString()};
        outs << formOf(rec);
    }
    for (const model_OsdParam& rec : outcome.osdRecords) {
        heads << Form{Form::Osd, QByteArray(), QString()};
        outs << formOf(rec);
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
        if (arg >= 0 && probe.second->text != shape.form.text && !shape.textArgs.contains(arg))
            shape.textArgs << arg;
        for (int at = 0; at < bytes.size(); ++at)
            if (!comparable(shape.form, *probe.second, at) ||
                probe.second->bytes[at] != bytes[at]) {
                shape.varies[at] = 1;
                int& by = shape.changedBy[at];
                if (arg != kNobody)
                    by = by == kNobody || by == arg ? arg : kSeveral;
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
    if (kind == ArgKind::Other)
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
    shape.changedBy = QVector<int>(form.bytes.size(), kNobody);
    return shape;
}

// The command (CMD, DAT1) of a call's first record and the kind of form it goes out as: calls
// that differ in either are another branch of the operation, not a variation of this one.
QByteArray branchOf(const QVector<Form>& heads, const QVector<Form>& outs) {
    return heads.isEmpty() ? QByteArray() : heads[0].bytes.left(2) + char(outs[0].kind);
}

// A byte that two arguments change carries neither alone.
void dropSharedBytes(Shape& shape) {
    shape.rules.erase(
        std::remove_if(shape.rules.begin(), shape.rules.end(),
                       [&](const Rule& rule) { return shape.changedBy[rule.at] == kSeveral; }),
        shape.rules.end());
}

constexpr int kMaxBranches = 8;

// Probes the operation from one call (`base`) and, one level deep, from each call of another
// command that the probes came across. `seen` holds the commands already probed.
QVector<Signature> probeCall(const Operation& op, int device, const Models& models,
                             const QStringList& base, QVector<QByteArray>& seen, bool branch) {
    QVector<Form> heads, outs;
    if (!runProbe(op, base, device, models, heads, outs) || heads.isEmpty() ||
        seen.contains(branchOf(heads, outs)))
        return {};
    seen << branchOf(heads, outs);
    QVector<Signature> signatures;
    for (int k = 0; k < heads.size(); ++k)
        signatures << Signature{
            &op, device, base, k + 1, int(heads.size()), shapeOf(heads[k]), shapeOf(outs[k])};
    QVector<QStringList> branches;
    for (int arg = 0; arg < base.size(); ++arg) {
        const ArgKind kind = kindOf(op.argumentTypes[arg]);
        if (kind == ArgKind::Other)
            continue;
        const long long value =
            kind == ArgKind::Boolean ? base[arg] == QLatin1String("true") : base[arg].toLongLong();
        const QVector<long long> values = kind == ArgKind::Boolean
                                              ? QVector<long long>{1 - value}
                                              : QVector<long long>{0, 2, 3, 5, 9, 0x1234};
        QVector<Probe> probes;
        for (long long v : values) {
            QStringList arguments = base;
            arguments[arg] = kind == ArgKind::Boolean ? QString::fromLatin1(v ? "true" : "false")
                                                      : QString::number(v);
            Probe probe{v, {}, {}};
            if (!runProbe(op, arguments, device, models, probe.heads, probe.outs))
                continue;
            if (branchOf(probe.heads, probe.outs) != branchOf(heads, outs))
                branches << arguments;
            else if (probe.heads.size() == heads.size())
                probes << probe;
        }
        for (int k = 0; k < signatures.size(); ++k) {
            QVector<QPair<long long, const Form*>> headForms, outForms;
            for (const Probe& probe : probes) {
                headForms << qMakePair(probe.value, &probe.heads[k]);
                outForms << qMakePair(probe.value, &probe.outs[k]);
            }
            learn(signatures[k].head, arg, kind, value, headForms);
            learn(signatures[k].out, arg, kind, value, outForms);
        }
    }
    // Bytes taken from a model record's members are not fixed either.
    QVector<Form> modelHeads, modelOuts;
    const bool modelRun =
        runProbe(op, base, device, models.withNumbers(kModelProbe), modelHeads, modelOuts) &&
        modelHeads.size() == heads.size();
    for (int k = 0; k < signatures.size(); ++k) {
        dropSharedBytes(signatures[k].head);
        dropSharedBytes(signatures[k].out);
        if (modelRun) {
            learn(signatures[k].head, kNobody, ArgKind::Other, 0, {qMakePair(0LL, &modelHeads[k])});
            learn(signatures[k].out, kNobody, ArgKind::Other, 0, {qMakePair(0LL, &modelOuts[k])});
        }
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

struct Index {
    QVector<Signature> signatures;
    QVector<int> byCmd[256]; // signatures whose head starts with a fixed CMD
};

// Operations of DalTarsel run on a processor family; the keyboard's and the OSD box's do not
// depend on the device and form one index of their own.
constexpr int kAccessories = -1;

// Keeps the library's trace and warnings out of the log while operations are tried.
class Quiet {
public:
    Quiet() {
        category->setEnabled(QtDebugMsg, false);
        category->setEnabled(QtWarningMsg, false);
    }
    ~Quiet() {
        category->setEnabled(QtDebugMsg, debug);
        category->setEnabled(QtWarningMsg, warning);
    }

private:
    QLoggingCategory* category = QLoggingCategory::defaultCategory();
    bool debug = category->isDebugEnabled();
    bool warning = category->isWarningEnabled();
};

std::unique_ptr<Index> buildIndex(int device) {
    const Quiet quiet;
    const Models models = Models::defaults();
    auto index = std::make_unique<Index>();
    for (const Operation& op : operations()) {
        const bool tarsel = op.className == QLatin1String("DalTarsel");
        if (explainable(op) && tarsel == (device != kAccessories))
            index->signatures << probeOperation(op, tarsel ? device : kNative, models);
    }
    for (int i = 0; i < index->signatures.size(); ++i) {
        Shape& out = index->signatures[i].out;
        out.skeleton = skeleton(out.form.text);
        const Shape& head = index->signatures[i].head;
        if (head.form.kind == Form::Head && !head.varies.isEmpty() && !head.varies[0])
            index->byCmd[byteAt(head.form.bytes, 0)] << i;
    }
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
    return Candidate{s.op, s.record, s.records, {}, QString()};
}

QVector<Candidate> byHead(const Index& index, const QByteArray& native) {
    QVector<Candidate> found;
    for (int i : index.byCmd[byteAt(native, 0)]) {
        const Signature& s = index.signatures[i];
        Candidate c = candidateOf(s);
        c.native = QString::fromLatin1(native.left(kHeadSize).toHex(' '));
        if (readArguments(s.head, native, kHeadSize, c))
            found << c;
    }
    return found;
}

// ---- trace lines ------------------------------------------------------------------------------

struct Cursor {
    const char* at;
    const char* end;
    bool take(const char* literal) {
        const std::size_t n = std::strlen(literal);
        if (std::size_t(end - at) < n || std::memcmp(at, literal, n) != 0)
            return false;
        at += n;
        return true;
    }
    // A quoted run of lowercase hex digits.
    bool hex(const char*& from, const char*& to) {
        if (!take("\""))
            return false;
        from = at;
        while (at < end && ((*at >= '0' && *at <= '9') || (*at >= 'a' && *at <= 'f')))
            ++at;
        to = at;
        return take("\"");
    }
};

int hexValue(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

// Parses the trace fields after the label: the five head bytes and the data block.
bool parseTrace(Cursor c, unsigned char head[kHeadSize], const char*& block,
                const char*& blockEnd) {
    static const char* const kLabels[] = {" ",
                                          " ---DAT1= ", " ---DAT2= ", " ---DAT3= ", " ---DAT4= "};
    for (int i = 0; i < kHeadSize; ++i) {
        const char *from, *to;
        if (!c.take(kLabels[i]) || !c.hex(from, to) || to == from || to - from > 2)
            return false;
        head[i] = static_cast<unsigned char>(
            to - from == 1 ? hexValue(*from) : hexValue(*from) * 16 + hexValue(from[1]));
    }
    if (!c.take(" ---arryDatablock= ") || !c.hex(block, blockEnd) || (blockEnd - block) % 2 ||
        !c.take(" ---Datablock= \""))
        return false;
    // The text is quoted with backslash escapes and closes the line.
    if (c.end == c.at)
        return false;
    const char* last = c.end - 1;
    int backslashes = 0;
    for (const char* p = last - 1; p >= c.at && *p == '\\'; --p)
        ++backslashes;
    return *last == '"' && backslashes % 2 == 0;
}

// The annotation of one native head, in text or as a JSON member list; kept per head.
class Annotations {
public:
    const QByteArray& of(int device, const QByteArray& native, bool tunnel, bool json) {
        const QByteArray key =
            QByteArray::number(device) + native.left(kHeadSize) + char(tunnel) + char(json);
        auto it = cache.find(key.toStdString());
        if (it != cache.end())
            return it->second;
        if (cache.size() > kLimit) // bounded, so that memory does not grow with the log
            cache.clear();
        return cache[key.toStdString()] = build(device, native, tunnel, json);
    }

private:
    static constexpr std::size_t kLimit = 4096;

    static QByteArray build(int device, const QByteArray& native, bool tunnel, bool json) {
        const QVector<Candidate> found = byHead(indexFor(device), native);
        const QByteArray head = native.left(kHeadSize).toHex(' ');
        if (json) {
            QJsonArray list;
            for (const Candidate& c : found)
                list << c.json();
            return "\"native\":\"" + native.left(kHeadSize).toHex() +
                   "\",\"tunnel\":" + (tunnel ? "true" : "false") +
                   ",\"candidates\":" + QJsonDocument(list).toJson(QJsonDocument::Compact);
        }
        QStringList texts;
        for (const Candidate& c : found)
            texts << c.text();
        QByteArray note = tunnel ? "tunnelled " + head + ": " : QByteArray();
        return note + (texts.isEmpty() ? "no operation sends " + head
                                       : texts.join(QStringLiteral(" | ")).toUtf8());
    }

    std::unordered_map<std::string, QByteArray> cache;
};

// ---- decoding one record ----------------------------------------------------------------------

const int kTextFamilies[] = {0x250300, 0x250400, 0x250502, 0x2D0000, 0x900000, 0x900001, 0x2C0104};
constexpr int kKeyboard = 0x400000;
constexpr int kVm6s = 0x2C0104;
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
    QVector<Form> heads, outs;
    if (!runProbe(*s.op, arguments, s.device, sampleModels(), heads, outs) ||
        outs.size() < s.record)
        return QString();
    head = heads[s.record - 1].bytes.left(kHeadSize);
    return outs[s.record - 1].text;
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

QVector<Candidate> byForm(const Index& index, Form::Kind kind, const QByteArray& bytes) {
    QVector<Candidate> found;
    for (const Signature& s : index.signatures) {
        const QByteArray& expected = s.out.form.bytes;
        if (s.out.form.kind != kind)
            continue;
        const int checked = bytes.size() == expected.size() ? int(expected.size())
                            : kind == Form::Osd && bytes.size() > kOsdCommandAt ? kOsdCommandAt + 1
                                                                                : -1;
        Candidate c = candidateOf(s);
        c.native = headPattern(s.head);
        if (checked > 0 && readArguments(s.out, bytes, checked, c))
            found << c;
    }
    return found;
}

Decoded decodeBytes(const QByteArray& bytes, int device) {
    Decoded d;
    if (bytes.startsWith(kFrameStart)) {
        d.message =
            bytes.size() == 23
                ? QStringLiteral("VM6S frame")
                : QStringLiteral("VantaZ frame, data block of %1 bytes").arg(bytes.size() - 15);
        d.candidates =
            byForm(indexFor(device == kAllFamilies ? kVm6s : device), Form::Frame, bytes);
    } else if (bytes.size() > kOsdCommandAt && bytes.mid(1, 3) == kOsdMarker) {
        d.message = QStringLiteral("OSD frame, command %1").arg(byteAt(bytes, kOsdCommandAt));
        d.candidates = byForm(indexFor(kAccessories), Form::Osd, bytes);
    } else if (bytes.size() >= kHeadSize) {
        const QByteArray native = nativeBytes(bytes.left(kHeadSize), bytes.mid(kHeadSize));
        d.message =
            QStringLiteral("native head %1%2")
                .arg(QString::fromLatin1(native.left(kHeadSize).toHex(' ')),
                     native.size() + 1 == bytes.size() - kHeadSize ? QStringLiteral(", tunnelled")
                                                                   : QString());
        if (device != kKeyboard)
            d.candidates = byHead(indexFor(device == kAllFamilies ? kNative : device), native);
        if (device == kKeyboard || device == kAllFamilies)
            d.candidates += byHead(indexFor(kAccessories), native);
    } else {
        d.message = QStringLiteral("%1 bytes are too few: a native record starts with CMD DAT1 "
                                   "DAT2 DAT3 DAT4")
                        .arg(bytes.size());
        return d;
    }
    d.status = d.candidates.isEmpty() ? Decoded::NoOperation : Decoded::Found;
    return d;
}

Decoded decodeText(const QString& text, int device) {
    QVector<int> devices{kAccessories};
    if (device == kAllFamilies)
        devices += QVector<int>(std::begin(kTextFamilies), std::end(kTextFamilies));
    else
        devices << device;
    Decoded d;
    const QString shape = skeleton(text);
    bool known = false;
    for (int dev : devices)
        for (const Signature& s : indexFor(dev).signatures) {
            if (s.out.form.kind != Form::Text || s.out.skeleton != shape)
                continue;
            known = true;
            Candidate c = candidateOf(s);
            if (searchText(s, text, c))
                d.candidates << c;
        }
    if (!known) {
        d.message = QStringLiteral("\"%1\" is neither hex nor a text that a device family is sent")
                        .arg(text);
        return d;
    }
    d.message = QStringLiteral("text \"%1\"").arg(text);
    d.status = d.candidates.isEmpty() ? Decoded::NoOperation : Decoded::Found;
    return d;
}

} // namespace

// ---- public -----------------------------------------------------------------------------------

QByteArray nativeBytes(const QByteArray& head, const QByteArray& block) {
    const int length = block.size();
    const bool tunnel = byteAt(head, 0) == 0xF1 && byteAt(head, 1) == 0x5D && length > kHeadSize &&
                        length == (byteAt(head, 3) | byteAt(head, 4) << 8) &&
                        checksum(block, length - 1) == byteAt(block, length - 1);
    return tunnel ? block.left(length - 1) : head + block;
}

Form formOf(const model_Protocoldata& rec) {
    const QString family = familyName(rec.deviceType);
    if (family == QLatin1String("VM6S") && rec.arryDatablock.startsWith(kFrameStart))
        return {Form::Frame, rec.arryDatablock, QString()};
    const bool textFamily = family != QLatin1String("native") && family != QLatin1String("Cadex") &&
                            family != QLatin1String("keyboard");
    if (textFamily && !rec.Datablock.isEmpty())
        return {Form::Text, QByteArray(), rec.Datablock};
    return {Form::Head,
            nativeBytes(QByteArray(reinterpret_cast<const char*>(rec.cmdHead) + 2, kHeadSize),
                        rec.arryDatablock),
            QString()};
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

QByteArray explainLine(const QByteArray& line, int deviceType, bool json, long long number) {
    static Annotations annotations;
    const auto label = line.indexOf(kTraceLabel);
    if (label < 0)
        return json ? QByteArray() : line;
    unsigned char head[kHeadSize];
    const char *block = nullptr, *blockEnd = nullptr;
    const Cursor cursor{line.constData() + label + int(sizeof kTraceLabel) - 1,
                        line.constData() + line.size()};
    const QByteArray prefix = json ? "{\"line\":" + QByteArray::number(number) + ',' : line + kNote;
    if (!parseTrace(cursor, head, block, blockEnd))
        return prefix +
               (json ? "\"error\":\"cut or garbled trace line\"}" : "cut or garbled trace line");
    QByteArray native(reinterpret_cast<const char*>(head), kHeadSize);
    bool tunnel = false;
    if (head[0] == 0xF1 && head[1] == 0x5D) {
        const QByteArray bytes = QByteArray::fromHex(QByteArray(block, int(blockEnd - block)));
        native = nativeBytes(native, bytes);
        tunnel = native.size() == bytes.size() - 1;
    }
    const QByteArray& note = annotations.of(deviceType, native, tunnel, json);
    return json ? prefix + note + '}' : prefix + note;
}

bool explainStream(std::FILE* in, std::FILE* out, int deviceType, bool json) {
    char* buffer = nullptr; // one buffer, as long as the longest line, for the whole log
    std::size_t capacity = 0;
    long long number = 0;
    for (ssize_t length; (length = getline(&buffer, &capacity, in)) != -1;) {
        while (length > 0 && (buffer[length - 1] == '\n' || buffer[length - 1] == '\r'))
            --length;
        const QByteArray written =
            explainLine(QByteArray::fromRawData(buffer, int(length)), deviceType, json, ++number);
        if (!written.isEmpty() || !json) {
            std::fwrite(written.constData(), 1, std::size_t(written.size()), out);
            std::fputc('\n', out);
        }
    }
    std::free(buffer);
    return !std::ferror(in);
}

Decoded decodeRecord(const QString& input, int deviceType) {
    QString compact = input;
    compact.remove(QRegularExpression(QStringLiteral("\\s")));
    static const QRegularExpression hexDigits(QStringLiteral("^([0-9A-Fa-f]{2})+$"));
    if (hexDigits.match(compact).hasMatch())
        return decodeBytes(QByteArray::fromHex(compact.toLatin1()), deviceType);
    if (input.trimmed().isEmpty()) {
        Decoded d;
        d.message = QStringLiteral("nothing to decode");
        return d;
    }
    return decodeText(input, deviceType);
}
