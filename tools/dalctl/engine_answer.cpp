// Proven answers: the operations that queue a target, with the values they carry, what
// produced each byte, and what came closest when none does.
#include "engine_detail.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace engine {

namespace {

using namespace detail;

// The binary parts (a head and a block, or an OSD record's header and payload) whose bytes are
// named: those the input holds.
Target binaryParts(const Parts& parts) {
    Target t;
    for (const Part& p : parts)
        if (p.binary)
            t.parts << Part{p.name, true, QString()};
    return t;
}

// Whether the record stays as it is with the value set to `word`.
bool unchangedWith(const Call& call, const Variable& v, const QString& word, int k,
                   const Target& target, const Parts& now) {
    const std::optional<Parts> parts = probe(call, v, word, k, target);
    return parts && *parts == now;
}

// Whether changing the value changes the record (a value the operation refuses says nothing).
// A model member or utility value whose default would change it is carried too: a replay must
// set it.
bool carried(const Call& call, const Variable& v, const Target& target, int k, const Parts& now) {
    QStringList words = probesOf(call, v);
    if (v.where == Variable::Model)
        words << members::get(Models::defaults(), v.path);
    else if (v.where == Variable::Utility)
        words << QLatin1String(utilityOption(v.path)->byDefault);
    return std::any_of(words.begin(), words.end(), [&](const QString& word) {
        const std::optional<Parts> parts =
            word == valueOf(call, v) ? std::nullopt : probe(call, v, word, k, target);
        return parts && *parts != now;
    });
}

// The value the record carries only the low bits of: "low byte", "low 16 bits", or empty.
QString lowBits(const Call& call, const Variable& v, const Target& target, int k,
                const Parts& now) {
    // A text or bytes that may grow without the record changing: cut or padded.
    if (!hintsOf(v.kind).longer.isEmpty())
        return unchangedWith(call, v, valueOf(call, v) + hintsOf(v.kind).longer, k, target, now)
                   ? QStringLiteral("no more than the record holds")
                   : QString();
    if (v.kind != Kind::Integer && v.kind != Kind::Decimal)
        return QString();
    const double x = valueOf(call, v).toDouble();
    for (int bits : {8, 16}) {
        const double other = x + double(1LL << bits);
        if (v.max > v.min && (other > double(v.max) || v.max < (1LL << bits)))
            return QString();
        const QString word = v.kind == Kind::Integer ? QString::number(qint64(other))
                                                     : QString::number(other, 'f', 6);
        if (unchangedWith(call, v, word, k, target, now))
            return v.kind == Kind::Decimal
                       ? QStringLiteral("up to a multiple of %1").arg(1LL << bits)
                       : QLatin1String(bits == 8 ? "low byte" : "low 16 bits");
    }
    return QString();
}

unsigned char byteAt(const QString& part, int at) {
    return static_cast<unsigned char>(part[at].unicode());
}

// The number a head piece's bytes hold that a length would: little-endian, big-endian, or the
// byte alone as a low or high byte.
bool holdsLength(const QString& bytes, const Piece& piece, int length) {
    if (piece.to - piece.from > 4)
        return false; // no length is written in more than four bytes
    const QByteArray held = bytes.mid(piece.from, piece.to - piece.from).toLatin1();
    return int(numberOf(held, true)) == length || int(numberOf(held, false)) == length ||
           (piece.to - piece.from == 1 && (byteAt(bytes, piece.from) == (length & 0xFF) ||
                                           byteAt(bytes, piece.from) == ((length >> 8) & 0xFF)));
}

// Whether a head piece is the block's length: it holds it, and each change of a value that
// gives the block another length gives the piece that length too.
bool isLength(const Call& call, const QVector<Variable>& variables, int k, const Target& parts,
              const PartShape& head, const Piece& piece, const QString& block) {
    if (!holdsLength(head.part.value, piece, int(block.size())))
        return false;
    bool moved = false;
    for (int owner : piece.owners)
        for (const QString& word : probesOf(call, variables[owner])) {
            const std::optional<Parts> now = probe(call, variables[owner], word, k, parts);
            if (!now || now->size() < 2 || (*now)[1].value.size() == block.size())
                continue;
            if ((*now)[0].value.size() != head.part.value.size() ||
                !holdsLength((*now)[0].value, piece, int((*now)[1].value.size())))
                return false;
            moved = true;
        }
    return moved;
}

// Whether byte `at` is the checksum of the bytes before it: the low 8 bits of their sum.
bool isChecksum(const QString& bytes, int at) {
    unsigned sum = 0;
    for (int i = 0; i < at; ++i)
        sum += byteAt(bytes, i);
    return (sum & 0xFF) == byteAt(bytes, at);
}

// What made the bytes of one piece: a constant, the block's length, a checksum, or values. A
// model member is what made them even where an argument chose which member is read.
QString madeOf(const PartShape& ps, const Piece& piece, bool length,
               const QVector<Variable>& variables, const QStringList& names) {
    if (piece.owners.isEmpty())
        return QStringLiteral("constant");
    if (piece.to - piece.from == 1 && piece.from > 0 && piece.owners.size() > 1 &&
        isChecksum(ps.part.value, piece.from))
        return QStringLiteral("checksum");
    if (length)
        return QStringLiteral("length");
    QStringList owners, members;
    for (int owner : piece.owners) {
        owners << names.value(owner);
        if (owner >= 0 && variables[owner].where == Variable::Model)
            members << names.value(owner);
    }
    return (members.size() == 1 ? members : owners).join(QStringLiteral(", "));
}

// A piece that runs to a block's end whose last byte is the sum of the bytes before it: the
// checksum is a piece of its own.
QVector<Piece> withChecksumApart(const PartShape& ps) {
    QVector<Piece> pieces;
    const QString& bytes = ps.part.value;
    for (const Piece& piece : ps.pieces) {
        if (!piece.owners.isEmpty() && piece.to == bytes.size() && piece.to - piece.from > 1 &&
            isChecksum(bytes, piece.to - 1)) {
            pieces << Piece{piece.from, piece.to - 1, piece.owners, piece.resizes}
                   << Piece{piece.to - 1, piece.to, piece.owners + QVector<int>{-1}, false};
        } else {
            pieces << piece;
        }
    }
    return pieces;
}

QVector<ByteName> nameBytes(const Call& call, const QVector<Variable>& variables, int k,
                            const Target& parts, const QStringList& names,
                            const QStringList& values) {
    QVector<ByteName> named;
    if (parts.parts.isEmpty()) // an input of texts and numbers alone holds no bytes to name
        return named;
    const Shape shape = shapeOf(call, variables, k, parts);
    // A head's piece may be the length of the block beside it.
    const QString block = shape.parts.size() > 1 ? shape.parts[1].part.value : QString();
    for (const PartShape& ps : shape.parts)
        for (const Piece& piece : withChecksumApart(ps)) {
            if (piece.from == piece.to)
                continue;
            const bool length = &ps == &shape.parts.first() && shape.parts.size() > 1 &&
                                isLength(call, variables, k, parts, ps, piece, block);
            const QString what = madeOf(ps, piece, length, variables, names);
            const bool constant = what == QLatin1String("constant");
            const QString value =
                constant ? QString::fromLatin1(ps.part.value.mid(piece.from, piece.to - piece.from)
                                                   .toLatin1()
                                                   .toHex(' '))
                         : values.value(int(names.indexOf(what)));
            // Runs side by side that the same made are one.
            if (!named.isEmpty() && named.last().part == ps.part.name &&
                named.last().what == what && named.last().to + 1 == piece.from) {
                named.last().to = piece.to - 1;
                if (constant)
                    named.last().value += QLatin1Char(' ') + value;
            } else {
                named << ByteName{ps.part.name, piece.from, piece.to - 1, what, value};
            }
        }
    return named;
}

// A value the record carries only the low bits of is given as the smallest number with those
// bits (a decimal: scaled, hundredths in 16 bits, say), so that the answer reads as what was
// most likely meant.
void simplify(Call& call, const Target& target, int k, const Parts& now) {
    for (const Variable& v : variablesOf(call)) {
        QStringList smaller;
        if (v.kind == Kind::Decimal) {
            const double x = valueOf(call, v).toDouble();
            double best = x;
            for (int bits : {8, 16, 32})
                for (double scale : {1.0, 10.0, 100.0, 1000.0}) {
                    const double less = std::fmod(x, double(1LL << bits) / scale);
                    if (std::abs(less) < std::abs(best) &&
                        unchangedWith(call, v, QString::number(less, 'g', 12), k, target, now))
                        best = less;
                }
            if (best != x)
                smaller << QString::number(best, 'g', 12);
        } else if (v.kind == Kind::Integer) {
            const long long x = valueOf(call, v).toLongLong();
            const long long signedByte = static_cast<signed char>(x & 0xFF);
            const long long signedWord = static_cast<short>(x & 0xFFFF);
            for (long long less : {x < 0 ? signedByte : x & 0xFF, x < 0 ? signedWord : x & 0xFFFF})
                if (std::abs(less) < std::abs(x))
                    smaller << QString::number(less);
        }
        for (const QString& word : smaller)
            if (unchangedWith(call, v, word, k, target, now)) {
                call = changed(call, v, word).value_or(call);
                break;
            }
    }
}

// Whether the target is a text alone that the call copies from one of its texts, whatever
// that text is: any text at all is "sent" by such an operation.
bool copiesAnyText(const Call& call, const QVector<Variable>& carried, int k,
                   const Target& target) {
    if (target.parts.size() != 1 || target.parts.first().binary)
        return false;
    const QStringList others{QStringLiteral("Zq"), QStringLiteral("\u00e9 q\n")};
    return std::any_of(carried.begin(), carried.end(), [&](const Variable& v) {
        return v.kind == Kind::Text &&
               std::all_of(others.begin(), others.end(), [&](const QString& word) {
                   const std::optional<Parts> parts = probe(call, v, word, k, target);
                   return parts && parts->first().value == word;
               });
    });
}

Answer answerOf(const Call& call, const Device& device, int k, const Target& target) {
    Answer a;
    a.device = device;
    a.call = call;
    a.record = k + 1;
    const Run run = runOf(a.call);
    a.records = run.count();
    const Parts now = run.parts(k, target).value_or(Parts());
    const Operation& op = *a.call.op;
    simplify(a.call, target, k, now);
    QVector<Variable> carriedValues;
    QVector<bool> argumentCarried(op.arguments.size(), false);
    // The model members are found again at the values found: another index reads another entry.
    QVector<Variable> all = variablesOf(a.call);
    if (!op.modelRecords().isEmpty())
        all += modelMembers(a.call, target);
    QStringList names, values;
    for (const Variable& v : all) {
        // Elements past a list's end are not values of the answer: they read as zeros.
        if (pastTheEnd(a.call, v) || !carried(a.call, v, target, k, now))
            continue;
        carriedValues << v;
        if (v.argument >= 0)
            argumentCarried[v.argument] = true;
        names << v.name(op);
        values << valueOf(a.call, v);
        a.values << names.last() + QStringLiteral(" = ") + values.last();
        if (const QString low = lowBits(a.call, v, target, k, now); !low.isEmpty())
            a.lowBytes << names.last() + QStringLiteral(" (") + low + QLatin1Char(')');
        if (v.where == Variable::Model)
            a.modelPaths << v.path;
        if (v.where == Variable::Utility)
            a.utilityRead << v.path;
    }
    for (int i = 0; i < op.arguments.size(); ++i)
        if (!argumentCarried[i])
            a.notCarried << op.arguments[i].name;
    a.bytes = nameBytes(a.call, carriedValues, k, binaryParts(target.parts), names, values);
    a.anyText = copiesAnyText(a.call, carriedValues, k, target);
    return a;
}

// Where the closest record differs from the target.
QString differenceOf(const Run& run, const Target& target, int k) {
    const std::optional<Parts> got = run.parts(k, target);
    if (!got)
        return QStringLiteral("which queues no such record");
    for (int p = 0; p < target.parts.size(); ++p) {
        const Part& want = target.parts[p];
        const QString& have = (*got)[p].value;
        if (have == want.value)
            continue;
        // A number differs whole; a device type is shown as dalctl prints it.
        if (!comparedByEnds(want.name)) {
            const bool code = want.name == QLatin1String("deviceType");
            return QStringLiteral("%1 is %2 here, %3 sent")
                .arg(want.name, code ? deviceCodeText(want.value.toInt()) : want.value,
                     code ? deviceCodeText(have.toInt()) : have);
        }
        const QString unit = want.binary ? QStringLiteral("bytes") : QStringLiteral("characters");
        const QString apart = QString::number(std::abs(want.value.size() - have.size()));
        if (have.isEmpty())
            return QStringLiteral("which sends no %1; %2 more %3 here").arg(want.name, apart, unit);
        if (want.value.startsWith(have))
            return QStringLiteral("whose %1 ends sooner; %2 more %3 here")
                .arg(want.name, apart, unit);
        if (have.startsWith(want.value))
            return QStringLiteral("whose %1 goes on; %2 %3 fewer here").arg(want.name, apart, unit);
        int at = 0;
        while (at < have.size() && at < want.value.size() && have[at] == want.value[at])
            ++at;
        if (!want.binary)
            return QStringLiteral("%1 differs from character %2: %3 here, %4 sent")
                .arg(want.name, QString::number(at), quote(want.value.mid(at, 12)),
                     quote(have.mid(at, 12)));
        const int last = std::min(at, int(want.value.size()) - 1);
        return QStringLiteral("%1 byte %2 is %3 here, %4 sent")
            .arg(want.name, QString::number(at), QString::number(byteAt(want.value, last), 16),
                 at < have.size() ? QString::number(byteAt(have, at), 16) : QStringLiteral("none"));
    }
    return QString();
}

// A word as bash reads it back: as it is, between single quotes, or as $'...' with escapes
// where it holds control characters.
QString shellWord(const QString& word) {
    static const QRegularExpression plain(QStringLiteral("\\A[A-Za-z0-9_@%+=:,./-]+\\z"));
    if (plain.match(word).hasMatch())
        return word;
    if (std::none_of(word.begin(), word.end(),
                     [](QChar c) { return c.unicode() < 0x20 || c.unicode() == 0x7f; })) {
        QString quoted = word;
        return QLatin1Char('\'') + quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''")) +
               QLatin1Char('\'');
    }
    QString escaped = QStringLiteral("$'");
    for (const QChar c : word) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('\''))
            escaped += QLatin1Char('\\') + QString(c);
        else if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            escaped += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            escaped += c;
    }
    return escaped + QLatin1Char('\'');
}

// A utility value the record carries and dalctl does not set by itself.
bool replayed(const Answer& a, const UtilityOption& o) {
    return a.utilityRead.contains(QLatin1String(o.option)) &&
           o.get(a.call.utility) != QLatin1String(o.byDefault);
}

// Where no operation's record has the target's ends: the operation whose head it has, and
// how the rest differs ("which sends no block; 4 more bytes here").
std::optional<Closest> closestByHead(const Target& target, const QVector<Device>& devices) {
    Target head;
    for (const Part& p : target.parts)
        if (commandBytesOf(p.name))
            head.parts << p;
    if (head.parts.isEmpty() || head.parts.size() == target.parts.size())
        return std::nullopt;
    // Nearest by the parts that differ; of as near, the first family searched.
    auto apart = [&](const Run& run, int k) {
        const std::optional<Parts> got = run.parts(k, target);
        long long parts = 0;
        for (int p = 0; got && p < got->size(); ++p)
            parts += (*got)[p].value != target.parts[p].value;
        return got && !got->isEmpty() ? parts : LLONG_MAX;
    };
    std::optional<Closest> closest;
    long long best = -1;
    for (const Device& device : devices)
        for (const Candidate& c : candidatesFor(head, device)) {
            const Run run = runOf(c.starts.first());
            const long long d = apart(run, c.record);
            if (best < 0 || d < best) {
                best = d;
                closest =
                    Closest{c.op->qualifiedName(), device.name(),
                            QStringLiteral("head as sent, ") + differenceOf(run, target, c.record)};
            }
        }
    return closest;
}

Result proveAnew(const Target& target, const QVector<Device>& devices) {
    Result result;
    long long closest = -1;
    const Quiet quiet;
    for (const Device& device : devices)
        for (const Candidate& c : candidatesFor(target, device))
            for (const Call& start : c.starts) {
                const Call found = solved(start, target, c.record);
                const Run run = runOf(found);
                const long long d = distance(run, target, c.record);
                if (d == 0 && sentTo(run.outcome.deviceType(c.record), *device.family)) {
                    const Answer a = answerOf(found, device, c.record, target);
                    if (std::none_of(
                            result.answers.begin(), result.answers.end(), [&](const Answer& b) {
                                return a.call.op == b.call.op && a.record == b.record &&
                                       a.device.name() == b.device.name() && a.values == b.values;
                            }))
                        result.answers << a;
                    break;
                }
                if (closest < 0 || d < closest) {
                    closest = d;
                    result.closest = Closest{c.op->qualifiedName(), device.name(),
                                             differenceOf(run, target, c.record)};
                }
                if (d > kNearMiss) // only a near miss is worth another start
                    break;
            }
    if (!result.answers.isEmpty())
        result.closest.reset();
    else if (!result.closest)
        result.closest = closestByHead(target, devices);
    return result;
}

} // namespace

Result prove(const Target& target, const QVector<Device>& devices) {
    // The same record read again (a log repeats itself, a printout and its JSON line say the
    // same) is proven once.
    static QHash<QString, Result> proven;
    QString key;
    for (const Part& p : target.parts)
        key += QLatin1Char('\x1f') + p.name + QLatin1Char('\x1e') + p.value;
    for (const Device& device : devices)
        key += QLatin1Char('\x1d') + device.name() + QString::number(device.code);
    const auto known = proven.constFind(key);
    if (known != proven.constEnd())
        return *known;
    if (proven.size() > 1024) // bounded, so that memory does not grow with the input
        proven.clear();
    return proven[key] = proveAnew(target, devices);
}

QVector<SampleRecord> sampleRecords(const Operation& op, const Family& family) {
    QVector<SampleRecord> records;
    const Quiet quiet;
    const Call call = sampleCall(op, family.code);
    const Run run = runOf(call);
    const Device device{&family, family.code, {}};
    for (int k = 0; run.ok && k < run.count(); ++k) {
        SampleRecord r;
        r.json = run.outcome.json(k);
        Target parts;
        const Parts fields = run.outcome.parts(k, {}).value_or(Parts());
        for (const Part& p : fields)
            if (p.binary)
                parts.parts << p;
        // Each byte's marks: what made it, as an answer names it ("constant" left unmarked).
        r.marks.resize(parts.parts[0].value.size());
        r.blockMarks.resize(parts.parts[1].value.size());
        for (const ByteName& b : answerOf(call, device, k, parts).bytes) {
            QVector<QStringList>& marks = b.part == parts.parts[0].name ? r.marks : r.blockMarks;
            for (int at = b.from; at <= b.to && at < marks.size(); ++at)
                if (b.what != QLatin1String("constant"))
                    marks[at] = b.what.split(QStringLiteral(", "));
        }
        records << r;
    }
    return records;
}

// ---- answers
// -------------------------------------------------------------------------------------

QStringList Answer::options() const {
    QStringList words;
    for (const UtilityOption& o : utilityOptions())
        if (replayed(*this, o))
            words << QStringLiteral("--") + QLatin1String(o.option) << o.get(call.utility);
    return words;
}

QJsonObject Answer::model() const {
    // What the built-in models hold already need not be given.
    QStringList changed;
    for (const QString& path : modelPaths)
        if (members::get(call.models, path) != members::get(Models::defaults(), path))
            changed << path;
    return members::json(call.models, changed);
}

QString Answer::text() const {
    const Operation& op = *call.op;
    QStringList shown;
    for (int i = 0; i < op.arguments.size(); ++i)
        if (!notCarried.contains(op.arguments[i].name))
            shown << op.arguments[i].name + QLatin1Char('=') + shownWord(call.words[i]);
    // Then the model members and the utility's values the record carries.
    for (const QString& path : modelPaths)
        shown << Variable{Variable::Model, -1, -1, path}.name(op) + QLatin1Char('=') +
                     shownWord(members::get(call.models, path));
    for (const UtilityOption& o : utilityOptions())
        if (replayed(*this, o))
            shown << QLatin1String(o.name) + QLatin1Char('=') + shownWord(o.get(call.utility));
    QString text = (op.className == QLatin1String("DalTarsel") ? op.name : op.qualifiedName()) +
                   QLatin1Char('(') + shown.join(QStringLiteral(", ")) + QLatin1Char(')');
    if (records > 1)
        text += QStringLiteral(" record %1/%2").arg(record).arg(records);
    if (!notCarried.isEmpty())
        text += QStringLiteral("; not carried: ") + notCarried.join(QStringLiteral(", "));
    if (!lowBytes.isEmpty())
        text += QStringLiteral("; carried in part: ") + lowBytes.join(QStringLiteral(", "));
    return text;
}

QString Answer::deviceWord() const {
    // The keyboard's class sends its probes to other families: it is run as the keyboard.
    const Family* family = device.family;
    if (call.op->className != family->className)
        return familiesOf(call.op->className).first()->name;
    return family->routed() ? deviceOfCode(call.utility.deviceType).word() : family->name;
}

QString Answer::replay() const {
    QStringList words{QStringLiteral("dalctl"), QStringLiteral("--device"), deviceWord()};
    for (const QString& word : options())
        words << shellWord(word);
    if (!model().isEmpty())
        words << QStringLiteral("--model")
              << shellWord(
                     QString::fromUtf8(QJsonDocument(model()).toJson(QJsonDocument::Compact)));
    words << call.op->qualifiedName();
    for (const QString& word : call.words)
        words << shellWord(word);
    return words.join(QLatin1Char(' '));
}

QJsonObject Closest::json() const {
    return {{QStringLiteral("operation"), operation},
            {QStringLiteral("device"), device},
            {QStringLiteral("difference"), difference}};
}

QJsonObject Answer::json() const {
    QJsonArray named;
    for (const ByteName& b : bytes)
        named << QJsonObject{{QStringLiteral("part"), b.part},
                             {QStringLiteral("from"), b.from},
                             {QStringLiteral("to"), b.to},
                             {QStringLiteral("what"), b.what},
                             {QStringLiteral("value"), b.value}};
    QJsonObject json{{QStringLiteral("device"), deviceWord()},
                     {QStringLiteral("deviceType"), deviceCodeText(call.utility.deviceType)},
                     {QStringLiteral("operation"), call.op->qualifiedName()},
                     {QStringLiteral("record"), record},
                     {QStringLiteral("records"), records},
                     {QStringLiteral("options"), QJsonArray::fromStringList(options())},
                     {QStringLiteral("arguments"), QJsonArray::fromStringList(call.words)},
                     {QStringLiteral("values"), QJsonArray::fromStringList(values)},
                     {QStringLiteral("notCarried"), QJsonArray::fromStringList(notCarried)},
                     {QStringLiteral("lowBytes"), QJsonArray::fromStringList(lowBytes)},
                     {QStringLiteral("bytes"), named}};
    if (!model().isEmpty())
        json.insert(QStringLiteral("model"), model());
    return json;
}

} // namespace engine
