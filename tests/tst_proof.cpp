// Every operation the engine reads, on every family, called with seeded random values of every
// kind; each record it queues, fed back in every form decode takes, must come back proven, with
// the operation that sent it and every value it carries.
#include "decode.h"
#include "engine_detail.h"
#include "explain.h"
#include "json_members.h"
#include "pacing.h"
#include "records.h"
#include "testsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QtTest>

#include <sys/resource.h>

namespace {

// Seeded random values of each kind an operation reads.
class Random {
public:
    explicit Random(quint32 seed) : gen(seed) {}

    // Wild values first; an operation that refuses them is called with tamer ones.
    QString integer(int tameness) {
        const qint64 wild[] = {0,
                               -1,
                               -gen.bounded(1, 100000),
                               gen.bounded(256),
                               gen.bounded(65536),
                               qint64(gen.generate()) - (1LL << 31)};
        const qint64 tame[] = {0, 1, 2, 3, gen.bounded(4)};
        return QString::number(tameness == 0 ? wild[gen.bounded(int(std::size(wild)))]
                                             : tame[gen.bounded(int(std::size(tame)))]);
    }
    QString decimal() { return QString::number(gen.bounded(1, 30000) / 100.0); }
    QString text() {
        static const QString letters = QStringLiteral("aZq7é✓ü.-");
        QString t;
        for (int n = gen.bounded(1, 9); n > 0; --n)
            t += letters[gen.bounded(int(letters.size()))];
        return t;
    }
    QString bytes() {
        QByteArray b;
        for (int n = gen.bounded(1, 11); n > 0; --n)
            b += char(gen.bounded(256));
        return QString::fromLatin1(b.toHex());
    }
    QString numbers(QChar separator, int tameness) {
        QStringList n;
        for (int count = gen.bounded(1, 6); count > 0; --count)
            n << (separator == QLatin1Char('-') ? QString::number(gen.bounded(tameness ? 4 : 256))
                                                : integer(tameness));
        return n.join(separator);
    }
    QString json(const Operation& op) {
        QJsonObject object;
        for (const dal::json::Member& m : dal::json::membersOf(op.name))
            if (gen.bounded(2))
                object.insert(QLatin1String(m.name), m.kind == dal::json::Kind::Text
                                                         ? QJsonValue(text())
                                                         : QJsonValue(gen.bounded(256)));
        return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    }
    // An address where the member holds one, else a text.
    QString textLike(const QString& now) {
        if (now.count(QLatin1Char('.')) != 3)
            return text();
        QStringList octets;
        for (int i = 0; i < 4; ++i)
            octets << QString::number(gen.bounded(256));
        return octets.join(QLatin1Char('.'));
    }
    // The built-in models with some of the members that reach the records changed, each to a
    // value of its kind: integers, decimals, texts and addresses, list entries.
    Models models(const Call& sample) {
        Models m = Models::defaults();
        if (sample.op->modelRecords().isEmpty())
            return m;
        const QVector<engine::detail::Variable> reaching =
            engine::detail::modelMembers(sample, engine::Target{});
        for (int changes = gen.bounded(1, 6); changes > 0 && !reaching.isEmpty(); --changes) {
            const engine::detail::Variable& v = reaching[gen.bounded(int(reaching.size()))];
            const QString now = members::get(m, v.path);
            members::set(m, v.path,
                         v.kind == args::Kind::Text ? textLike(now)
                         : v.kind == args::Kind::Decimal
                             ? decimal()
                             : QString::number(gen.bounded(v.max > 0 && v.max < 256 ? 256 : 4000)));
        }
        return m;
    }
    UtilityValues utility(const Family& family) {
        UtilityValues u;
        // Any code whose records the family's routing makes, codes of no family among them.
        QVector<int> codes;
        for (const device::Row& row : device::kRows)
            if (deviceOfCode(row.code).family == &family)
                codes << row.code;
        if (!codes.isEmpty()) // the OSD box has no device type
            u.deviceType = codes[gen.bounded(int(codes.size()))];
        u.subType = gen.bounded(2) ? 0x2C0103 : int(gen.bounded(100));
        u.connectType = gen.bounded(256);
        u.toneVersion = gen.bounded(2) ? QStringLiteral("1.01") : QStringLiteral("2.5");
        u.localIp = gen.bounded(2) ? QStringLiteral("Default") : text();
        u.userId = text();
        return u;
    }
    Call call(const Operation& op, const Family& family, int tameness) {
        Call c{&op, {}, models(sampleCall(op, family.code)), utility(family)};
        for (const Parameter& p : op.arguments) {
            switch (p.kind) {
            case args::Kind::Boolean:
                c.words << (gen.bounded(2) ? QStringLiteral("true") : QStringLiteral("false"));
                break;
            case args::Kind::Decimal:
                c.words << decimal();
                break;
            case args::Kind::Text:
                c.words << text();
                break;
            case args::Kind::Bytes:
                c.words << bytes();
                break;
            case args::Kind::Colour:
                c.words << QStringLiteral("#%1").arg(gen.bounded(1 << 24), 6, 16, QLatin1Char('0'));
                break;
            case args::Kind::Numbers:
            case args::Kind::DashNumbers:
                c.words << numbers(
                    p.kind == args::Kind::Numbers ? QLatin1Char(',') : QLatin1Char('-'), tameness);
                break;
            case args::Kind::Json:
                c.words << json(op);
                break;
            default:
                c.words << integer(tameness);
            }
        }
        return c;
    }

private:
    QRandomGenerator gen;
};

// What the input says of record k of a call, or nothing when the call queues no such record.
Parts recordOf(const Call& call, int k, const engine::Target& target) {
    const Quiet quiet;
    try {
        return run(call).parts(k, target.parts).value_or(Parts());
    } catch (const ArgError&) {
    }
    return {};
}

// Whether the answer's call gives the record exactly as the given call does (so that its values
// are as good as the given ones: the record cannot tell them apart), and whether the answer
// names each argument either with its value or as not carried.
bool sameValues(const engine::Answer& a, const Call& given, int k, const engine::Target& target) {
    if (recordOf(a.call, k, target) != recordOf(given, k, target))
        return false;
    for (const Parameter& p : given.op->arguments) {
        const QString named = p.name + QLatin1String(" = ");
        const QString element = p.name + QLatin1Char('[');
        if (!a.notCarried.contains(p.name) &&
            std::none_of(a.values.begin(), a.values.end(), [&](const QString& v) {
                return v.startsWith(named) || v.startsWith(element) ||
                       v.startsWith(p.name + QLatin1Char('.')) ||
                       v.startsWith(QLatin1String("length of ") + p.name);
            }))
            return false;
    }
    return true;
}

// The call an answer's JSON says to run: its device, options, model file and arguments, as
// dalctl would read them.
Call replayed(const QJsonObject& answer) {
    Call c;
    QStringList words;
    for (const QJsonValue& w : answer.value(QLatin1String("arguments")).toArray())
        words << w.toString();
    c.op = &operationFor(answer.value(QLatin1String("operation")).toString(), words);
    c.words = words;
    c.models = Models::defaults();
    if (answer.contains(QLatin1String("model")))
        c.models.apply(QJsonDocument(answer.value(QLatin1String("model")).toObject()).toJson());
    const QString device = answer.value(QLatin1String("device")).toString();
    c.utility.deviceType = device.startsWith(QLatin1String("0x")) ? device.mid(2).toInt(nullptr, 16)
                                                                  : familyOf(device)->code;
    const QJsonArray options = answer.value(QLatin1String("options")).toArray();
    for (int i = 0; i + 1 < options.size(); i += 2)
        if (const UtilityOption* o = utilityOption(options[i].toString().mid(2)))
            o->set(c.utility, options[i + 1].toString());
    return c;
}

// Whether one of the answers is the call's record k with every value the call gave.
bool found(const Decoded& d, const Call& call, int index, const engine::Target& target,
           QString& seen) {
    for (const Decoding& record : d.records)
        for (const Reading& r : record.readings)
            for (const engine::Answer& a : r.result.answers) {
                seen += a.text() + QLatin1Char('\n');
                if (a.call.op == call.op && a.record == index + 1 &&
                    sameValues(a, call, index, target) &&
                    recordOf(replayed(a.json()), index, target) == recordOf(call, index, target))
                    return true;
            }
    return false;
}

struct Input {
    QString name;
    QByteArray input;
    std::optional<Device> device;
    engine::Target target; // what the input says of the record
};

// The record in every form decode takes.
QVector<Input> formsOf(const Outcome& outcome, int k, const Device& ranOn,
                       const QStringList& traced) {
    if (k >= outcome.records.size()) {
        const model_OsdParam& rec = outcome.osdRecords[k - outcome.records.size()];
        const QByteArray frame =
            QByteArray(reinterpret_cast<const char*>(rec.frameHead), 11) + rec.payload;
        return {{"printed", recordText(rec, 1).toUtf8(), {}, engine::wholeRecord(rec)},
                {"json",
                 QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact),
                 {},
                 engine::wholeRecord(rec)},
                {"frame", frame.toHex(), {}, engine::osdFrame(frame)}};
    }
    const model_Protocoldata& rec = outcome.records[k];
    const Family* family = familyOfCode(rec.deviceType);
    // Read on the device the call ran on, or on the family the record says it went to.
    const std::optional<Device> own = family == ranOn.family ? std::optional<Device>(ranOn)
                                      : family ? std::optional<Device>(deviceOfCode(rec.deviceType))
                                               : std::nullopt;
    const QByteArray head(reinterpret_cast<const char*>(rec.cmdHead), 8);
    QVector<Input> forms{{"printed", recordText(rec, 1).toUtf8(), {}, engine::wholeRecord(rec)},
                         {"json",
                          QJsonDocument(recordJson(rec)).toJson(QJsonDocument::Compact),
                          {},
                          engine::wholeRecord(rec)},
                         {"8-byte head", (head + rec.arryDatablock).toHex(), own,
                          engine::headAndBlock(head, rec.arryDatablock)}};
    if (family && family->form == Form::Text && !rec.Datablock.isEmpty())
        forms << Input{"text", rec.Datablock.toUtf8(), own, engine::textAlone(rec.Datablock)};
    else
        forms << Input{"5-byte head", (head.mid(2, 5) + rec.arryDatablock).toHex(), own,
                       engine::headAndBlock(head.mid(2, 5), rec.arryDatablock)};
    if (k < traced.size() && family == ranOn.family)
        forms << Input{"trace", traced[k].toUtf8(), own,
                       engine::traceLine(head.mid(2, 5), rec.arryDatablock, rec.Datablock)};
    return forms;
}

// Every operation written as one native command: its class, signature and the cells that make
// CMD and DAT1..DAT4.
struct SendRow {
    const char* className;
    const char* name;
    const char* params;
    const char* cells[5];
};

const SendRow kSendRows[] = {
#define DAL_SEND(name, params, timeout, cmd, dat1, dat2, dat3, dat4)                               \
    {CLASS_NAME, #name, #params, {#cmd, #dat1, #dat2, #dat3, #dat4}},
#define CLASS_NAME "DalTarsel"
#include "dalTarsel.def"
#undef CLASS_NAME
#define DAL_SEND(name, params, timeout, cmd, dat1, dat2, dat3, dat4)                               \
    {CLASS_NAME, #name, #params, {#cmd, #dat1, #dat2, #dat3, #dat4}},
#define CLASS_NAME "Dal_Pommet"
#include "dal_pommet.def"
#undef CLASS_NAME
};

} // namespace

class tst_proof : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
        // A fault that keeps every record ever queued fails here, not by filling the machine.
        const rlimit memory{rlim_t(3) << 30, rlim_t(3) << 30};
        setrlimit(RLIMIT_AS, &memory);
    }
    void roundTrip_data();
    void roundTrip();
    void changedMemberComesBack_data();
    void changedMemberComesBack();
    void sendRowMarks_data();
    void sendRowMarks();
    void everyDeclaredMemberIsListed();
    void editDistances_data();
    void editDistances();
    void fixedEnds_data();
    void fixedEnds();
    void changedRanges_data();
    void changedRanges();
    void linesThroughReadings_data();
    void linesThroughReadings();
    void summaryCutsLongBlocks();
    void readingsAsProven();
};

void tst_proof::roundTrip_data() {
    QTest::addColumn<QString>("family");
    for (const Family& f : families())
        QTest::newRow(qPrintable(f.name)) << f.name;
}

void tst_proof::roundTrip() {
    QFETCH(QString, family);
    const Family& f = *familyOf(family);
    int checked = 0;
    QStringList missed;
    // PROOF_OP=name narrows the test to one operation, to look into a miss.
    for (const Operation& op : operations()) {
        if (op.className != f.className || !engine::explainable(op) ||
            (qEnvironmentVariableIsSet("PROOF_OP") && op.name != qEnvironmentVariable("PROOF_OP")))
            continue;
        Random random(quint32(qHash(family + op.usage())));
        Call call;
        Outcome outcome;
        QStringList traced;
        for (int attempt = 0; attempt < 6 && outcome.empty(); ++attempt) {
            call = attempt < 5 ? random.call(op, f, attempt > 2) : sampleCall(op, f.code);
            MessageCapture capture;
            try {
                outcome = run(call);
            } catch (const ArgError&) {
                continue;
            }
            traced = capture.debug().filter(QStringLiteral("---addToQueue----CMD="));
        }
        QVERIFY2(outcome.count() < 256, qPrintable(op.name + " queued more records than it sends"));
        for (int k = 0; k < outcome.records.size() + outcome.osdRecords.size(); ++k)
            for (const Input& form : formsOf(outcome, k,
                                             f.routed() ? deviceOfCode(call.utility.deviceType)
                                                        : Device{&f, f.code, {}},
                                             traced)) {
                const Decoded d = decodeInput(form.input, form.device ? &*form.device : nullptr);
                QString seen = d.error;
                const int index = k < outcome.records.size() ? k : k - int(outcome.records.size());
                if (!found(d, call, index, form.target, seen))
                    missed << QStringLiteral("%1 %2 [%3] on %4, models %5, as %6:\n%7\n%8")
                                  .arg(op.name, call.words.join(' '))
                                  .arg(index + 1)
                                  .arg(deviceCodeText(call.utility.deviceType), call.models.changes,
                                       form.name, QString::fromUtf8(form.input.left(300)), seen);
                ++checked;
            }
    }
    qInfo("%d records checked, %d missed", checked, int(missed.size()));
    QVERIFY2(missed.isEmpty(), qPrintable(missed.mid(0, 8).join(QStringLiteral("\n\n"))));
}

// A record whose block a model member fills, one byte of that member changed and the checksum
// made good: decoded, the member comes back changed by that byte's weight.
void tst_proof::changedMemberComesBack_data() {
    QTest::addColumn<QString>("call");
    QTest::addColumn<int>("member"); // which of the block's members to change
    QTest::newRow("scene, first member") << "setSceneDate 1" << 0;
    QTest::newRow("scene, a later layer") << "setSceneDate 2" << 20;
    QTest::newRow("layer") << "setLayerDate 1 2" << 3;
    QTest::newRow("user setting, 32 bits") << "setUserSetting" << 2;
    QTest::newRow("output property, in a list of lists") << "setCurrSceneLayerXYWHR 1 2" << 5;
}

void tst_proof::changedMemberComesBack() {
    QFETCH(QString, call);
    QFETCH(int, member);
    QStringList words = call.split(QLatin1Char(' '));
    const Operation& op = operationFor(words.takeFirst(), words);
    const Outcome sent = run(Call{&op, words, Models::defaults(), UtilityValues()});
    QVERIFY(!sent.records.isEmpty());
    const model_Protocoldata& rec = sent.records.first();
    const QByteArray head = headOf(rec);
    auto answerOf = [&](const QByteArray& block) -> std::optional<engine::Answer> {
        for (const engine::Answer& a :
             engine::prove(engine::headAndBlock(head, block), {deviceOfCode(family::native)})
                 .answers)
            if (a.call.op == &op)
                return a;
        return std::nullopt;
    };
    const auto before = answerOf(rec.arryDatablock);
    QVERIFY(before);
    QVector<engine::ByteName> members, checksums;
    for (const engine::ByteName& b : before->bytes)
        (b.what == QLatin1String("checksum") ? checksums : members) << b;
    members.erase(std::remove_if(members.begin(), members.end(),
                                 [](const engine::ByteName& b) {
                                     return b.part != QLatin1String("block") ||
                                            !b.what.contains(QLatin1Char('.'));
                                 }),
                  members.end());
    QVERIFY2(member < members.size() && checksums.size() == 1, qPrintable(call));
    const engine::ByteName& named = members[member];

    // The member's first byte one up (or down, from 0xFF), the checksum with it.
    const int step = quint8(rec.arryDatablock[named.from]) == 0xFF ? -1 : 1;
    QByteArray changed = rec.arryDatablock;
    changed[named.from] = char(changed[named.from] + step);
    changed[checksums.first().from] = char(changed[checksums.first().from] + step);
    const auto after = answerOf(changed);
    QVERIFY2(after, qPrintable(named.what));
    QVERIFY(before->values.contains(named.what + QStringLiteral(" = ") + named.value));
    // Its first byte is its low byte, or its high byte where it is sent big-endian.
    const QString prefix = named.what + QStringLiteral(" = ");
    const auto found = std::find_if(after->values.begin(), after->values.end(),
                                    [&](const QString& v) { return v.startsWith(prefix); });
    QVERIFY2(found != after->values.end(), qPrintable(after->values.join(QStringLiteral("; "))));
    const long long moved = found->mid(prefix.size()).toLongLong() - named.value.toLongLong();
    QVERIFY2(moved == step || moved == 256 * step,
             qPrintable(*found + QStringLiteral(", was ") + named.value));
    // Its JSON, model included, replays the changed record.
    QCOMPARE(run(replayed(after->json())).records.value(0).arryDatablock.toHex(), changed.toHex());
}

// For every operation written as one native command, decode's marks on its first family name
// exactly its row's cells for CMD and DAT1..DAT4: a constant is unmarked, a cell naming a
// parameter or a model member is marked by it, and a cell computing from several names is
// marked by them (or by the members of a model record it names).
void tst_proof::sendRowMarks_data() {
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(kSendRows)); ++i)
        QTest::newRow(kSendRows[i].name) << i;
}

void tst_proof::sendRowMarks() {
    QFETCH(int, row);
    const SendRow& send = kSendRows[row];
    const auto op = std::find_if(operations().begin(), operations().end(), [&](const Operation& o) {
        return o.className == QLatin1String(send.className) && o.name == QLatin1String(send.name) &&
               o.params == QLatin1String(send.params);
    });
    QVERIFY(op != operations().end());
    const QVector<engine::SampleRecord> records =
        engine::sampleRecords(*op, *familiesOf(op->className).first());
    QVERIFY(!records.isEmpty());
    // The names a cell reads: parameters and members, not the functions it calls (a member's
    // function, such as a list's value(), stands for the member).
    static const QRegularExpression name(QStringLiteral("(?<![\\w.])([A-Za-z_][\\w.]*)(\\()?"));
    for (int i = 0; i < 5; ++i) {
        const QString cell = QLatin1String(send.cells[i]);
        const QStringList marks = records.first().marks[2 + i];
        QStringList names;
        for (auto m = name.globalMatch(cell); m.hasNext();) {
            const QRegularExpressionMatch next = m.next();
            if (next.captured(2).isEmpty() || next.captured(1).contains(QLatin1Char('.')))
                names << next.captured(1).section(QLatin1Char('.'), 0,
                                                  next.captured(2).isEmpty() ? -1 : -2);
        }
        const QString where =
            QStringLiteral("%1 byte %2 (%3): %4").arg(send.name).arg(i).arg(cell, marks.join(','));
        if (names.isEmpty())
            QVERIFY2(marks.isEmpty(), qPrintable(where));
        else if (names == QStringList{cell})
            QVERIFY2(marks == names, qPrintable(where));
        else
            QVERIFY2(!marks.isEmpty() &&
                         std::all_of(marks.begin(), marks.end(),
                                     [&](const QString& m) {
                                         return std::any_of(
                                             names.begin(), names.end(), [&](const QString& n) {
                                                 return m == n || m.startsWith(n + '.') ||
                                                        m.startsWith(n + '[');
                                             });
                                     }),
                     qPrintable(where));
    }
}

// Each record and element type the model headers declare has, in order, the members the engine
// walks at some node below the four records: a member left out of the tool's lists fails here.
void tst_proof::everyDeclaredMemberIsListed() {
    const Models models = Models::defaults();
    QSet<QStringList> walked;
    for (QStringList next = members::children(models, QString()); !next.isEmpty();) {
        const QString path = next.takeFirst();
        QStringList names;
        for (const QString& child : members::children(models, path)) {
            names << child.section(QLatin1Char('.'), -1);
            if (!child.endsWith(QLatin1Char(']')) || child.endsWith(QLatin1String("[0]")))
                next << child;
        }
        walked << names;
    }
    static const QRegularExpression type(QStringLiteral("^(?:struct|class) (\\w+) \\{$"));
    static const QRegularExpression member(
        QStringLiteral("^\\s+[^(/~]*?(\\w+)(\\[\\d+\\])?( = [^;]*| *\\{\\})?;"));
    for (const char* header : {"model_elements.h", "modelscene.h", "modeltarsel.h",
                               "modelbankplayer.h", "model_pommetparam.h"}) {
        QFile file(QStringLiteral(DAL_SOURCE_DIR "/../platform/") + QLatin1String(header));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QString name;
        QStringList declared;
        for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
            const QRegularExpressionMatch opened = type.match(line), held = member.match(line);
            if (opened.hasMatch()) {
                name = opened.captured(1);
                declared.clear();
            } else if (held.hasMatch()) {
                declared << held.captured(1);
            } else if (line.startsWith(QLatin1String("};"))) {
                QVERIFY2(walked.contains(declared), qPrintable(name + ": " + declared.join(' ')));
            }
        }
    }
    // A path one past a list's or an array's end reaches nothing.
    for (const char* past :
         {"ModelTarsel.previewPorts[4]", "ModelScene.sceneList[0].bankValues[16]"})
        QVERIFY2(members::at(models, QLatin1String(past)).node == members::Node::Missing, past);
}

// The distance that ranks misspelt names and texts read nearly right.
void tst_proof::editDistances_data() {
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("caseless");
    QTest::addColumn<int>("edits");
    QTest::newRow("change, insert") << "kitten"
                                    << "sitting" << false << 3;
    QTest::newRow("deletions only") << "saveScene"
                                    << "save" << false << 5;
    QTest::newRow("from nothing") << ""
                                  << "abc" << false << 3;
    QTest::newRow("case counts") << "getSN"
                                 << "GETsn" << false << 5;
    QTest::newRow("case ignored") << "getSN"
                                  << "GETsm" << true << 1;
    // Longer than a word of the bit-parallel table: the rows' carries cross from word to word.
    QTest::newRow("across words") << "b" + QString(130, 'a') << QString(130, 'a') + "b" << false
                                  << 2;
}

void tst_proof::editDistances() {
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, caseless);
    QFETCH(int, edits);
    const Qt::CaseSensitivity cs = caseless ? Qt::CaseInsensitive : Qt::CaseSensitive;
    QCOMPARE(editDistance(a, b, cs), edits);
    QCOMPARE(editDistance(b, a, cs), edits);
}

// Where a value lands is read off these ranges: a range cut wrong marks the wrong bytes.
void tst_proof::changedRanges_data() {
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("bytes");
    QTest::addColumn<QString>("ranges"); // from-to in a, * where b's range has another width
    QTest::newRow("text aligned on a character both keep") << "aXbYc"
                                                           << "aZbWc" << false << "1-2 3-4";
    QTest::newRow("text inserted around a kept character") << "abcde"
                                                           << "abXcYde" << false << "2-2* 3-3*";
    QTest::newRow("text aligned where most of it is kept") << "ab"
                                                           << "bcaba" << false << "0-0* 2-2*";
    QTest::newRow("text, one character dropped, another added") << "Xb"
                                                                << "bY" << false << "0-1* 2-2*";
    QTest::newRow("text inserted at the end of the start") << "abc"
                                                           << "abXc" << false << "2-2*";
    QTest::newRow("numbers, the commas kept") << "192,168,1,20"
                                              << "211,211,2,11" << false << "0-3 4-7 8-9 10-12";
    QTest::newRow("a number one digit longer") << "<S,5>"
                                               << "<S,23>" << false << "3-4*";
    QTest::newRow("bytes of one length, in place") << "abab"
                                                   << "baba" << true << "0-4";
}

void tst_proof::changedRanges() {
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, bytes);
    QStringList found;
    for (const engine::detail::Change& c : engine::detail::changes(a, b, bytes))
        found << QStringLiteral("%1-%2%3").arg(c.from).arg(c.to).arg(c.resized ? "*" : "");
    QTEST(found.join(' '), "ranges");
}

// A number is read back off the line its readings follow: over the numbers, or modulo a byte's
// (or more bits') size, where an even slope leaves several values and some goals none.
void tst_proof::linesThroughReadings_data() {
    QTest::addColumn<double>("x0");
    QTest::addColumn<double>("step");
    QTest::addColumn<QVector<double>>("ys");
    QTest::addColumn<double>("goal");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QString>("found");
    const QVector<double> odd{5, 8, 11}, even{1, 3, 5};
    QTest::newRow("numbers") << 0.0 << 1.0 << even << 7.0 << 0 << "3";
    QTest::newRow("numbers, off the line")
        << 0.0 << 1.0 << QVector<double>{1, 3, 6} << 7.0 << 0 << "";
    QTest::newRow("numbers, flat") << 0.0 << 1.0 << QVector<double>{4, 4, 4} << 4.0 << 0 << "";
    QTest::newRow("decimals") << 0.0 << 1.25 << QVector<double>{1, 3.5, 6} << 4.0 << 0 << "1.5";
    QTest::newRow("a byte, odd slope") << 0.0 << 1.0 << odd << 2.0 << 8 << "255 -1";
    QTest::newRow("a byte, even slope") << 0.0 << 1.0 << even << 7.0 << 8 << "3 -125";
    QTest::newRow("a byte, a goal no value gives") << 0.0 << 1.0 << even << 8.0 << 8 << "";
    QTest::newRow("a byte, the readings wrapped")
        << 126.0 << 1.0 << QVector<double>{122, 125, 128} << 1.0 << 8 << "171 -85";
    QTest::newRow("16 bits") << 0.0 << 1.0 << odd << 2.0 << 16 << "65535 -1";
}

void tst_proof::linesThroughReadings() {
    QFETCH(double, x0);
    QFETCH(double, step);
    QFETCH(QVector<double>, ys);
    QFETCH(double, goal);
    QFETCH(int, bits);
    const double xs[] = {x0, x0 + step, x0 + 2 * step};
    QStringList found;
    for (double x : engine::detail::onLine(xs, ys.constData(), goal, bits))
        found << QString::number(x);
    QTEST(found.join(' '), "found");
}

// What every run of a branch renders alike, which decides whether a target is tried there: too
// long an end and an operation is never tried, too short and every input tries it.
void tst_proof::fixedEnds_data() {
    QTest::addColumn<QStringList>("renderings");
    QTest::addColumn<QString>("part");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<bool>("fits");
    const auto head = [](const char* hex) { return latin1(QByteArray::fromHex(hex)); };
    const QStringList texts{"<S,5>", "<S,23>", "<S,51>"};
    QTest::newRow("text, a run agreeing again past a difference") << texts << "text"
                                                                  << "<S,7>" << true;
    QTest::newRow("text, another start") << texts << "text"
                                         << "<T,7>" << false;
    QTest::newRow("text, another end") << texts << "text"
                                       << "<S,7)" << false;
    QTest::newRow("text, ends that would overlap") << QStringList{"ab", "abab"} << "text"
                                                   << "ab" << true;
    QTest::newRow("text, always empty") << QStringList{"", ""} << "text"
                                        << "x" << false;
    QTest::newRow("no run") << QStringList() << "text"
                            << "" << false;
    const QStringList dat2Varies{head("681a010000"), head("681a020000")};
    QTest::newRow("command, CMD and DAT1 held")
        << dat2Varies << "command" << head("681a090000") << true;
    QTest::newRow("command, another DAT1")
        << dat2Varies << "command" << head("681b010000") << false;
    QTest::newRow("command, DAT1 varies") << QStringList{head("681a010000"), head("681b010000")}
                                          << "command" << head("6830000000") << true;
    QTest::newRow("command, sizes differ") << QStringList{head("681a010000"), head("681a01")}
                                           << "command" << head("681a010000") << false;
    QTest::newRow("head, held past the address")
        << QStringList{head("0000681a01000000"), head("0000681a02000000")} << "head"
        << head("0000691a01000000") << false;
}

void tst_proof::fixedEnds() {
    QFETCH(QStringList, renderings);
    QFETCH(QString, part);
    QFETCH(QString, wanted);
    QFETCH(bool, fits);
    using namespace engine::detail;
    QCOMPARE(endsFit(endsOf(renderings, part), Part{part, part != "text", wanted}), fits);
}

// The demo's one-line summary shows a block's first 32 bytes and marks a longer block as cut.
void tst_proof::summaryCutsLongBlocks() {
    model_Protocoldata rec;
    const QString shown = QStringLiteral(" ") + QStringLiteral("5a").repeated(32);
    rec.arryDatablock = QByteArray(32, 0x5a);
    QVERIFY(recordSummary(rec).endsWith(QStringLiteral("(32)") + shown));
    rec.arryDatablock = QByteArray(33, 0x5a);
    QVERIFY(recordSummary(rec).endsWith(QStringLiteral("(33)") + shown + QStringLiteral("...")));
}

// decode gives each reading as soon as it is proven, before the next is tried; the pieces it
// gives make the whole record's text.
void tst_proof::readingsAsProven() {
    const Device native = *deviceNamed(QStringLiteral("native"));
    QVector<int> counts;
    QString pieces;
    bool laterProven = false;
    const Decoded d = decodeInput(
        "0000f05805040000414243c6", &native, false, [&](const Decoding& record, int proven) {
            counts << proven;
            pieces += record.textAsProven(proven);
            for (int i = proven; i < record.readings.size(); ++i)
                laterProven |= record.readings[i].result.closest ||
                               !record.readings[i].result.answers.isEmpty();
        });
    QCOMPARE(d.records.size(), 1);
    QCOMPARE(counts, QVector<int>({1, 2, 3})); // 5-byte head, 8-byte head, text
    QVERIFY(!laterProven);
    QCOMPARE(pieces, d.records[0].text());
}

QTEST_GUILESS_MAIN(tst_proof)
#include "tst_proof.moc"
