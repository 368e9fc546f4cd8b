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

#include <numeric>

namespace engine::detail {

namespace {

// A record the native family was sent, as the family's device would have been sent it. The
// utility's values the translation reads must be those of the record's call.
model_Protocoldata translated(model_Protocoldata rec, const Family& family) {
    if (rec.deviceType == family::native)
        translate::forDevice(rec, family.code);
    return rec;
}

// The parts of record k of an outcome as the family's device receives it.
Parts partsFor(const Call& call, const Outcome& o, int k, const Target& shape,
               const Family* translateFor) {
    if (!translateFor || k >= o.records.size())
        return o.parts(k, shape.parts).value_or(Parts());
    applyUtility(call.utility);
    return partsOf(translated(o.records[k], *translateFor), shape.parts).value_or(Parts());
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
    if (p.kind == Kind::Json)
        return {everyMember(op, kMemberStep, QStringLiteral("#253545")),
                everyMember(op, 23130, kUtilityText)};
    const QStringList& surveyed = hintsOf(p.kind).surveyed;
    return surveyed.isEmpty() ? QStringList{QString::fromUtf8(args::infoOf(p.kind).second)}
                              : surveyed;
}

// How the built-in models are changed for a survey: every value, and the lists grown long
// enough for the larger counts (which some operations refuse); every value; or only the values
// in lists, the counts kept.
enum class Change { Grown, Every, InLists };

const Models& changedModels(int step, Change change) {
    static std::map<std::pair<int, Change>, Models> all;
    const auto key = std::make_pair(step, change);
    if (const auto it = all.find(key); it != all.end())
        return it->second;
    Models m = Models::defaults();
    for (const QString& record : members::children(m, QString())) {
        const QStringList lists = members::lists(m, record);
        for (const QString& path : change == Change::InLists ? lists : QStringList{record})
            members::shift(m, path, step);
        for (const QString& list : change == Change::Grown ? lists : QStringList())
            if (members::children(m, list).size() < 48)
                members::resize(m, list, 48);
    }
    // Its key in runs kept: what it was made from, not every change made.
    m.changes = QStringLiteral("survey %1 %2\x1f").arg(step).arg(int(change));
    return all[key] = m;
}

// The utility's values changed: to a plain number and text, or (where a value is compared
// with one) to a device-type code the families have, or the local address setting.
UtilityValues changedUtility(const UtilityValues& from, const QString& number,
                             const QString& text) {
    UtilityValues u = from;
    for (const UtilityOption& o : utilityOptions())
        o.set(u, o.text ? text : number);
    return u;
}

OperationSurvey survey(const Operation& op, int device) {
    OperationSurvey s;
    s.op = &op;
    QHash<QByteArray, int> branchOf;
    auto add = [&](const Call& call) {
        const Run r = runOf(call);
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
    QStringList numbers{kUtilityNumber};
    for (const Family& f : families())
        for (int code : f.codes.mid(1))
            numbers << QString::number(code);
    auto varied = [&](const Call& from) {
        for (int i = 0; i < op.arguments.size(); ++i)
            for (const QString& value : surveyValues(op, op.arguments[i])) {
                Call c = from;
                c.words[i] = value;
                add(c);
            }
        if (!op.modelRecords().isEmpty())
            for (int step : kModelSteps)
                for (Change change : {Change::Grown, Change::Every, Change::InLists}) {
                    Call c = from;
                    c.models = changedModels(step, change);
                    add(c);
                }
        for (const QString& number : numbers) {
            Call c = from;
            c.utility = changedUtility(from.utility, number, kUtilityText);
            add(c);
        }
        Call c = from;
        c.utility = changedUtility(from.utility, numbers.first(), kDefaultAddress);
        add(c);
    };
    add(sampleCall(op, device));
    const bool sampleQueued = !s.runs.isEmpty();
    varied(sampleCall(op, device));
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

// ---- every device's operations
// --------------------------------------------------------------------

struct Entry {
    const OperationSurvey* survey;
    const Family* translateFor; // the family its native runs are translated for, if any
};

// Whether the operation's sample call queues the same records on a device of code `there` as
// on one of code `here`: translated for a family, or else but for their device types.
bool sameRecords(const Operation& op, int there, int here, const Family* translateFor) {
    const Run a = runOf(sampleCall(op, there)), b = runOf(sampleCall(op, here));
    if ((translateFor && a.ok != b.ok) || a.outcome.records.size() != b.outcome.records.size())
        return false;
    applyUtility(sampleCall(op, there).utility);
    for (int k = 0; k < b.outcome.records.size(); ++k)
        if (!(translateFor ? sameFields(translated(b.outcome.records[k], *translateFor),
                                        a.outcome.records[k])
                           : sameFields(a.outcome.records[k], b.outcome.records[k],
                                        {QStringLiteral("deviceType")})))
            return false;
    return true;
}

const OperationSurvey& surveyOf(const Operation& op, int device) {
    // Never freed, like the runs they hold.
    static auto& surveys = *new std::map<std::pair<int, const Operation*>, OperationSurvey>;
    const auto key = std::make_pair(device, &op);
    auto known = surveys.find(key);
    if (known == surveys.end())
        known = surveys.emplace(key, survey(op, device)).first;
    return known->second;
}

// Devices alike in what the library does with them share their entries.
QString entriesKey(const Device& device) {
    return device.apart() ? deviceCodeText(device.code) + (device.beside ? "+" : "")
                          : device.family->name;
}

// The operations to try on a device: of a family's code, each operation's survey (on the
// native family, translated, where that gives what the family is sent); of a code the library
// treats apart, the operations whose records differ there surveyed there, and (but beside the
// family's own code) the others as on the family's own code.
const QVector<Entry>& entriesOf(const Device& device) {
    static QHash<QString, QVector<Entry>> entries;
    const Family& family = *device.family;
    const bool apart = device.apart();
    QVector<Entry>& list = entries[entriesKey(device)];
    if (!list.isEmpty())
        return list;
    for (const Operation& op : operations()) {
        if (op.className != family.className || !explainable(op))
            continue;
        if (apart && !sameRecords(op, device.code, family.code, nullptr))
            list << Entry{&surveyOf(op, device.code), nullptr};
        else if (!device.beside && family.routed() &&
                 (&family == &families().first() ||
                  sameRecords(op, family.code, family::native, &family)))
            list << Entry{&surveyOf(op, family::native), &family};
        else if (!device.beside)
            list << Entry{&surveyOf(op, family.code), nullptr};
    }
    return list;
}

} // namespace

// ---- the fixed ends
// ----------------------------------------------------------------------------------

Ends endsOf(const QStringList& renderings, const QString& part) {
    Ends e;
    if (renderings.isEmpty())
        return e;
    e.none = false;
    const QString& f = renderings.first();
    e.command = commandBytesOf(part);
    if (const std::optional<CommandBytes>& command = e.command) {
        e.size = int(f.size());
        for (const QString& r : renderings)
            if (r.size() != f.size())
                e.size = -2;
        for (int at = command->at; e.size >= 0 && at < command->at + command->held && at < f.size();
             ++at) {
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

bool endsFit(const Ends& e, const Part& part) {
    const QString& wanted = part.value;
    if (e.none)
        return false;
    if (const std::optional<CommandBytes>& command = e.command) {
        if (e.size != wanted.size())
            return false;
        for (int i = 0; i < e.held.size(); ++i)
            if (e.held[i] && wanted[command->at + i] != e.fixed[i])
                return false;
        return true;
    }
    // A part no run gave anything can give nothing else.
    if (e.empty)
        return wanted.isEmpty();
    // Compared as texts: a null text starts with no empty one.
    return wanted.size() >= e.prefix.size() + e.suffix.size() &&
           QStringView(wanted).left(e.prefix.size()) == QStringView(e.prefix) &&
           QStringView(wanted).right(e.suffix.size()) == QStringView(e.suffix);
}

namespace {

// The runs of a branch that render a record's compared-by-ends parts apart: the first of each,
// in the branch's order, with the parts a target names.
struct RunParts {
    int run;
    Parts parts;
};

// Record k of a branch of an entry, which a device may have been sent: where a search may
// start. What every target asks of it is found once: its ends per part, its distinct runs per
// list of the parts a target names.
struct Slot {
    Entry entry;
    int branch;
    int k;
    QVector<std::pair<QString, Ends>> ends;
    QVector<std::pair<QString, QVector<RunParts>>> runs;

    const QVector<int>& branchRuns() const { return entry.survey->branches[branch]; }
    Parts partsOf(int run, const Target& shape) const {
        const SurveyRun& r = entry.survey->runs[run];
        return partsFor(r.call, r.outcome, k, shape, entry.translateFor);
    }

    const Ends& endsOfPart(const QString& part) {
        for (const auto& known : ends)
            if (known.first == part)
                return known.second;
        QStringList renderings;
        for (int run : branchRuns()) {
            const Parts one = partsOf(run, {{Part{part, true, {}}}});
            renderings << (one.isEmpty() ? QString() : one.first().value);
        }
        ends.append({part, endsOf(renderings, part)});
        return ends.last().second;
    }

    // Whether every run of the branch renders the parts with the target's ends.
    bool endsMatch(const Parts& byEnds) {
        return std::all_of(byEnds.begin(), byEnds.end(), [&](const Part& wanted) {
            return endsFit(endsOfPart(wanted.name), wanted);
        });
    }

    const QVector<RunParts>& distinctRuns(const QString& names, const Target& target) {
        for (const auto& known : runs)
            if (known.first == names)
                return known.second;
        QVector<RunParts> found;
        QVector<Parts> seen;
        for (int run : branchRuns()) {
            const Parts parts = partsOf(run, target);
            Parts bytes;
            for (const Part& p : parts)
                if (comparedByEnds(p.name))
                    bytes << p;
            if (!seen.contains(bytes)) {
                seen << bytes;
                found << RunParts{run, parts};
            }
        }
        runs.append({names, found});
        return runs.last().second;
    }
};

// The slots of a device. For a command part (a head, a header) they are indexed by the command
// bytes that every run of theirs holds there: a key names the part, its size, which bytes are
// held and those bytes, and a target looks up each way the slots hold them. A slot whose runs
// differ in size is under no key, as no target fits it.
struct DeviceSlots {
    QVector<Slot> all;
    QHash<QString, QVector<std::pair<int, QVector<bool>>>> holds; // per part: sizes, bytes held
    QHash<QString, QVector<int>> byKey;                           // ascending

    // The key of a part of `size` whose command bytes, from the first, are `bytes`: each byte
    // held, and a mark that is no byte where the runs differ.
    static QString key(const QString& part, int size, const QVector<bool>& held,
                       QStringView bytes) {
        QString k = part + QString::number(size) + QLatin1Char(':');
        for (int i = 0; i < held.size(); ++i)
            k += held[i] ? bytes[i] : QChar(0x100);
        return k;
    }

    void index(const QString& part) {
        QVector<std::pair<int, QVector<bool>>>& ways = holds[part];
        for (int i = 0; i < all.size(); ++i) {
            const Ends& e = all[i].endsOfPart(part);
            if (e.none || e.size < 0)
                continue;
            if (!ways.contains({e.size, e.held}))
                ways.append({e.size, e.held});
            byKey[key(part, e.size, e.held, e.fixed)] << i;
        }
    }

    // The slots, in order, whose command part may fit the target's; all, when it has none.
    QVector<int> toTry(const Parts& byEnds) {
        QVector<int> found;
        for (const Part& p : byEnds)
            if (const std::optional<CommandBytes> command = commandBytesOf(p.name)) {
                if (!holds.contains(p.name))
                    index(p.name);
                const QStringView bytes = QStringView(p.value).mid(command->at);
                for (const auto& [size, held] : holds.value(p.name))
                    if (size == p.value.size())
                        found += byKey.value(key(p.name, size, held, bytes));
                std::sort(found.begin(), found.end());
                return found;
            }
        found.resize(all.size());
        std::iota(found.begin(), found.end(), 0);
        return found;
    }
};

// The records of every entry of a device that its family may have been sent. The keyboard's
// class also sends the device search's probes to the processor families.
DeviceSlots& slotsOf(const Device& device) {
    static auto& devices = *new QHash<QString, DeviceSlots>; // never freed, as the surveys
    const Family& family = *device.family;
    DeviceSlots& known = devices[entriesKey(device)];
    QVector<Slot>& kept = known.all;
    if (!kept.isEmpty())
        return known;
    QVector<Entry> entries = entriesOf(device);
    if (family.routed() && !device.beside)
        for (const Family* f : familiesOf(QStringLiteral("Dal_Pommet")))
            entries += entriesOf(Device{f, f->code, {}});
    for (const Entry& entry : entries) {
        const OperationSurvey& s = *entry.survey;
        for (int b = 0; b < s.branches.size(); ++b) {
            const Outcome& first = s.runs[s.branches[b].first()].outcome;
            for (int k = 0; k < first.count(); ++k) {
                std::optional<int> tag = first.deviceType(k);
                if (tag && entry.translateFor && *tag == family::native)
                    tag = family.code;
                if (sentTo(tag, family))
                    kept << Slot{entry, b, k, {}, {}};
            }
        }
    }
    return known;
}

} // namespace

// Whether a record's device type says it went to the family; a record that names no family
// (the device search's first probes) counts as the native family's. The keyboard's records go
// wherever its operations send them, and the OSD box's name no device.
bool sentTo(std::optional<int> deviceType, const Family& family) {
    return !deviceType || !family.routed() || deviceOfCode(*deviceType).family == &family;
}

QVector<Candidate> candidatesFor(const Target& target, const Device& device) {
    QVector<Candidate> found;
    const Quiet quiet;
    const Family& family = *device.family;
    QString names;
    Parts byEnds;
    for (const Part& p : target.parts) {
        names += p.name + QLatin1Char('/');
        if (comparedByEnds(p.name))
            byEnds << p;
    }
    DeviceSlots& known = slotsOf(device);
    for (int i : known.toTry(byEnds)) {
        Slot& slot = known.all[i];
        if (!slot.endsMatch(byEnds))
            continue;
        // The runs whose records come closest are where the search starts, one run of each
        // head, block and text.
        std::multimap<long long, int> near; // of as near, the first found first
        for (const RunParts& r : slot.distinctRuns(names, target))
            near.emplace(distance(r.parts, target), r.run);
        const OperationSurvey& s = *slot.entry.survey;
        Candidate c{s.op, {}, slot.k};
        for (auto n = near.begin(); n != near.end() && c.starts.size() < kStarts; ++n) {
            c.starts << s.runs[n->second].call;
            if (family.routed() && s.op->className == family.className)
                c.starts.last().utility.deviceType = device.code;
        }
        found << c;
    }
    return found;
}

} // namespace engine::detail
