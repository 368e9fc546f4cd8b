// Which operations may have queued a record: every operation is run with its sample values,
// with other values for each argument, and with its model records and the utility's values
// changed; an operation whose records never start and end as the input does (what no value
// changed) is not tried. DalTarsel's operations are run once, on a device without a dialect,
// and their records put through each family's translation as the generic send would; an
// operation whose sample call on a family differs from that is run on the family itself.
#include "engine_detail.h"

#include "dialects/translators.h"
#include "json_members.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <QHash>

#include <map>
#include <mutex>
#include <tuple>

namespace engine::detail {

int commandStart(const QString& part) {
    return part == QLatin1String("command")  ? 0
           : part == QLatin1String("head")   ? 2
           : part == QLatin1String("header") ? 0
                                             : -1;
}

namespace {

// A record the native family was sent, as the family's device would have been sent it. The
// utility's values the translation reads must be those of the record's call.
model_Protocoldata translated(model_Protocoldata rec, const Family& family) {
    if (rec.deviceType == family::native)
        translate::forDevice(rec, family.code);
    return rec;
}

// ---- the runs of one operation
// -----------------------------------------------------------------------

struct SurveyRun {
    Call call;
    Outcome outcome;
};

// One operation's runs, in branches: runs that queue as many records, each with the same
// CMD, device type and kind of payload, form one branch.
struct OperationSurvey {
    const Operation* op = nullptr;
    QVector<SurveyRun> runs;
    QVector<QVector<int>> branches;
};

QByteArray branchKey(const Outcome& o) {
    QByteArray key =
        QByteArray::number(o.records.size()) + '/' + QByteArray::number(o.osdRecords.size());
    for (const model_Protocoldata& rec : o.records)
        key += char(rec.cmdHead[2]) + QByteArray::number(rec.deviceType) +
               char('0' + rec.Datablock.isEmpty());
    for (const model_OsdParam& rec : o.osdRecords)
        key += char(rec.frameHead[4]);
    return key;
}

// A JSON argument with every member the operation reads set.
QString everyMember(const Operation& op, int number, const QString& text) {
    QJsonObject object;
    for (const dal::json::Member& m : dal::json::membersOf(op.name))
        object.insert(QLatin1String(m.name),
                      m.kind == dal::json::Kind::Text ? QJsonValue(text) : QJsonValue(number));
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

// Values beside the sample's: enough to reach each branch that a small value, a byte's edge
// or a large value takes.
QStringList surveyValues(const Operation& op, const Parameter& p) {
    if (p.kind == args::Kind::Json)
        return {everyMember(op, 37, QStringLiteral("#253545")),
                everyMember(op, 23130, QStringLiteral("Zq1.0"))};
    if (p.kind == args::Kind::Integer)
        return {QStringLiteral("0"),  QStringLiteral("2"),     QStringLiteral("3"),
                QStringLiteral("5"),  QStringLiteral("255"),   QStringLiteral("256"),
                QStringLiteral("-1"), QStringLiteral("23130"), QStringLiteral("1515870810")};
    if (p.kind == args::Kind::Decimal)
        return {QStringLiteral("0"), QStringLiteral("2.25"), QStringLiteral("-1"),
                QStringLiteral("23130.5")};
    return {QString::fromUtf8(args::infoOf(p.kind).second)};
}

// How the built-in models are changed for a survey: every value, and the lists grown long
// enough for the larger counts (which some operations refuse); every value; or only the values
// in lists, the counts kept.
enum class Change { Grown, Every, InLists };

// The built-in models changed a little (37) or a lot (0x5A5A).
const Models& changedModels(int step, Change change) {
    static std::map<std::pair<int, Change>, Models> all;
    auto it = all.find({step, change});
    if (it != all.end())
        return it->second;
    Models& changed = all[{step, change}];
    changed = [step, change] {
        Models m = Models::defaults();
        for (const QString& record : members::children(m, QString())) {
            const QStringList lists = members::lists(m, record);
            for (const QString& path : change == Change::InLists ? lists : QStringList{record})
                members::shift(m, path, step);
            for (const QString& list : change == Change::Grown ? lists : QStringList())
                if (members::children(m, list).size() < 48)
                    members::resize(m, list, 48);
        }
        return m;
    }();
    return changed;
}

// The utility's values changed: to a plain number and text, or (where a value is compared
// with one) to a device-type code the families have, or the local address setting "Default".
UtilityValues changedUtility(const UtilityValues& from, const QString& number,
                             const QString& text) {
    UtilityValues u = from;
    for (const UtilityOption& o : utilityOptions())
        o.set(u, o.text ? text : number);
    return u;
}

OperationSurvey survey(const Operation& op, const Family& family) {
    OperationSurvey s;
    s.op = &op;
    const Call base = sampleCall(op, family.code);
    QHash<QByteArray, int> branchOf;
    auto add = [&](const Call& call) {
        const Run r = runCall(call);
        if (!r.ok || r.outcome.empty())
            return;
        const QByteArray key = branchKey(r.outcome);
        if (!branchOf.contains(key)) {
            branchOf.insert(key, int(s.branches.size()));
            s.branches << QVector<int>();
        }
        s.branches[branchOf.value(key)] << int(s.runs.size());
        s.runs << SurveyRun{call, r.outcome};
    };
    auto varied = [&](const Call& from) {
        for (int i = 0; i < op.arguments.size(); ++i)
            for (const QString& value : surveyValues(op, op.arguments[i])) {
                Call c = from;
                c.words[i] = value;
                add(c);
            }
        if (!op.modelRecords().isEmpty())
            for (int step : {37, 0x5A5A})
                for (Change change : {Change::Grown, Change::Every, Change::InLists}) {
                    Call c = from;
                    c.models = changedModels(step, change);
                    add(c);
                }
        QStringList numbers{QStringLiteral("37")};
        for (const Family& f : families())
            for (int code : f.codes.mid(1))
                numbers << QString::number(code);
        for (const QString& number : numbers) {
            Call c = from;
            c.utility = changedUtility(from.utility, number, QStringLiteral("Zq1.0"));
            add(c);
        }
        Call c = from;
        c.utility = changedUtility(from.utility, numbers.first(), QStringLiteral("Default"));
        add(c);
    };
    add(base);
    const bool sampleQueued = !s.runs.isEmpty();
    varied(base);
    // A branch that another value reached has every value changed from there too, so that its
    // fixed ends are only what no value changes.
    const int reached = int(s.branches.size());
    for (int b = 0; b < reached; ++b)
        if (!sampleQueued || s.branches[b].first() != 0) {
            const Call from = s.runs[s.branches[b].first()].call; // the runs grow meanwhile
            varied(from);
        }
    return s;
}

// ---- every family's operations
// --------------------------------------------------------------------

struct Entry {
    const OperationSurvey* survey;
    bool translate; // its runs were made on the native family
};

class Surveys {
public:
    const QVector<Entry>& of(const Family& family) {
        std::lock_guard<std::mutex> lock(guard);
        QVector<Entry>& list = entries[family.name];
        if (!list.isEmpty())
            return list;
        const Quiet quiet;
        const bool tarsel = family.routed();
        for (const Operation& op : operations()) {
            if (op.className != family.className || !explainable(op))
                continue;
            if (!tarsel) {
                list << Entry{&own(op, family), false};
                continue;
            }
            const OperationSurvey& native = own(op, families().first());
            const bool alike = sameAsTranslated(op, family);
            list << Entry{alike ? &native : &own(op, family), alike};
        }
        return list;
    }

private:
    const OperationSurvey& own(const Operation& op, const Family& family) {
        const auto key = std::make_pair(family.name, &op);
        auto it = surveys.find(key);
        if (it == surveys.end())
            it = surveys.emplace(key, survey(op, family)).first;
        return it->second;
    }

    // Whether the operation's sample call on the family queues what its native call does,
    // translated.
    static bool sameAsTranslated(const Operation& op, const Family& family) {
        const Family& native = families().first();
        if (&family == &native)
            return true;
        const Run there = runCall(sampleCall(op, family.code));
        const Run here = runCall(sampleCall(op, native.code));
        if (there.ok != here.ok || there.outcome.records.size() != here.outcome.records.size())
            return false;
        applyUtility(sampleCall(op, family.code).utility);
        for (int k = 0; k < here.outcome.records.size(); ++k) {
            const model_Protocoldata a = translated(here.outcome.records[k], family);
            const model_Protocoldata& b = there.outcome.records[k];
            if (recordJson(a) != recordJson(b))
                return false;
        }
        return true;
    }

    std::mutex guard;
    std::map<std::pair<QString, const Operation*>, OperationSurvey> surveys;
    QHash<QString, QVector<Entry>> entries;
};

Surveys& surveys() {
    static Surveys all;
    return all;
}

// ---- the fixed ends
// ----------------------------------------------------------------------------------

bool comparedByEnds(const Part& p) {
    return p.binary || p.name == QLatin1String("text") || p.name == QLatin1String("strAux1") ||
           p.name == QLatin1String("tag");
}

// What every run of a branch renders alike in one part: of a head, only the command (CMD and
// DAT1, or the OSD marker and command) where no run changed it, as a value that no run changed
// may still reach the other bytes; of other parts, the start and end every run shares.
struct Ends {
    bool none = true;   // no run queued the record
    bool empty = true;  // every run left the part empty
    int size = -1;      // a head's size, the same in every run (-2: sizes differ)
    QString fixed;      // a head's command bytes, '\0' where runs differ...
    QVector<bool> held; // ...and where they agree
    QString prefix, suffix;
};

Ends endsOf(const QStringList& renderings, const QString& part) {
    Ends e;
    if (renderings.isEmpty())
        return e;
    e.none = false;
    const QString& f = renderings.first();
    const int command = commandStart(part);
    if (command >= 0) {
        e.size = int(f.size());
        for (const QString& r : renderings)
            if (r.size() != f.size())
                e.size = -2;
        const int end = command + (part == QLatin1String("header") ? 5 : 2);
        for (int at = command; e.size >= 0 && at < end && at < f.size(); ++at) {
            e.fixed += f[at];
            e.held << std::all_of(renderings.begin(), renderings.end(),
                                  [&](const QString& r) { return r[at] == f[at]; });
        }
        return e;
    }
    e.empty = std::all_of(renderings.begin(), renderings.end(),
                          [](const QString& r) { return r.isEmpty(); });
    int prefix = int(f.size()), shortest = prefix;
    for (const QString& r : renderings) {
        shortest = std::min(shortest, int(r.size()));
        int same = 0;
        while (same < prefix && same < r.size() && r[same] == f[same])
            ++same;
        prefix = same;
    }
    int suffix = shortest - prefix;
    for (const QString& r : renderings) {
        int same = 0;
        while (same < suffix && r[r.size() - 1 - same] == f[f.size() - 1 - same])
            ++same;
        suffix = same;
    }
    e.prefix = f.left(prefix);
    e.suffix = f.right(suffix);
    return e;
}

// Whether the target's part starts and ends as every run of the branch renders it.
bool endsFit(const Ends& e, const Part& part) {
    const QString& wanted = part.value;
    if (e.none)
        return false;
    const int command = commandStart(part.name);
    if (command >= 0) {
        if (e.size != wanted.size())
            return false;
        for (int i = 0; i < e.held.size(); ++i)
            if (e.held[i] && wanted[command + i] != e.fixed[i])
                return false;
        return true;
    }
    // A part no run gave anything can give nothing else.
    if (e.empty)
        return wanted.isEmpty();
    // Compared as texts: a null text starts with no empty one.
    return wanted.size() >= e.prefix.size() + e.suffix.size() &&
           wanted.left(e.prefix.size()) == e.prefix && wanted.right(e.suffix.size()) == e.suffix;
}

} // namespace

// Whether a record's device type says it went to the family; a record that names no family
// (the device search's first probes) counts as the native family's.
bool sentTo(int deviceType, const Family& family) {
    const Family* own = familyOfCode(deviceType);
    return own ? own == &family : &family == &families().first();
}

// The device a target's record went to: the code it carries, if it is the family's, else the
// family's own.
int deviceOf(const Target& target, const Family& family) {
    for (const Part& p : target.parts)
        if (p.name == QLatin1String("deviceType") && family.codes.contains(p.value.toInt()))
            return p.value.toInt();
    return family.code;
}

QVector<Candidate> candidatesFor(const Target& target, const Family& family) {
    QVector<Candidate> found;
    const Quiet quiet;
    // The keyboard's class also sends the device search's probes to the processor families.
    QVector<Entry> entries = surveys().of(family);
    if (family.routed())
        for (const Family* f : familiesOf(QStringLiteral("Dal_Pommet")))
            entries += surveys().of(*f);
    for (const Entry& entry : entries) {
        const OperationSurvey& s = *entry.survey;
        for (const QVector<int>& branch : s.branches) {
            const Outcome& first = s.runs[branch.first()].outcome;
            const int records =
                target.osd ? int(first.osdRecords.size()) : int(first.records.size());
            for (int k = 0; k < records; ++k) {
                bool fits = true;
                if (!target.osd) {
                    const model_Protocoldata& rec = first.records[k];
                    const int tag = entry.translate && rec.deviceType == family::native
                                        ? family.code
                                        : rec.deviceType;
                    fits = sentTo(tag, family);
                }
                for (int p = 0; fits && p < target.parts.size(); ++p) {
                    const Part& wanted = target.parts[p];
                    if (!comparedByEnds(wanted))
                        continue;
                    // The heads are the same in every family but Cadex: they are compared
                    // untranslated, and a part that translation makes is read after it.
                    const bool translate =
                        entry.translate &&
                        (!wanted.binary || wanted.name == QLatin1String("block") ||
                         family.name == QLatin1String("Cadex"));
                    // Every target compares the same ends: they are found once.
                    static std::map<
                        std::tuple<const OperationSurvey*, int, int, const Family*, bool, QString>,
                        Ends>
                        known;
                    const auto key = std::make_tuple(&s, int(&branch - s.branches.data()), k,
                                                     &family, translate, wanted.name);
                    auto ends = known.find(key);
                    if (ends == known.end()) {
                        QStringList renderings;
                        for (int run : branch) {
                            const SurveyRun& r = s.runs[run];
                            if (target.osd) {
                                renderings
                                    << partsOf(r.outcome.osdRecords[k], Target{true, {wanted}})
                                           .first()
                                           .value;
                                continue;
                            }
                            if (translate)
                                applyUtility(r.call.utility);
                            const model_Protocoldata rec =
                                translate ? translated(r.outcome.records[k], family)
                                          : r.outcome.records[k];
                            renderings << partsOf(rec, Target{false, {wanted}}).first().value;
                        }
                        ends = known.emplace(key, endsOf(renderings, wanted.name)).first;
                    }
                    fits = endsFit(ends->second, wanted);
                }
                if (!fits)
                    continue;
                // The run whose record comes closest is where the search starts.
                int closest = branch.first();
                long long best = -1;
                for (int run : branch) {
                    const SurveyRun& r = s.runs[run];
                    if (target.osd)
                        break; // an OSD frame's fixed ends are all there is to compare
                    applyUtility(r.call.utility);
                    const model_Protocoldata rec = entry.translate
                                                       ? translated(r.outcome.records[k], family)
                                                       : r.outcome.records[k];
                    const long long d = distance(partsOf(rec, target), target);
                    if (best < 0 || d < best) {
                        closest = run;
                        best = d;
                    }
                }
                Call start = s.runs[closest].call;
                if (family.routed() && s.op->className == family.className)
                    start.utility.deviceType = deviceOf(target, family);
                found << Candidate{s.op, start, k};
            }
        }
    }
    return found;
}

} // namespace engine::detail
