// The values a call reads, the one probe through which every run is asked, and the values the
// engine probes with.
#include "engine_detail.h"

#include "json_members.h"

#include <QJsonDocument>

bool engine::explainable(const Operation& op) {
    return std::none_of(op.parameters.begin(), op.parameters.end(), [](const Parameter& p) {
        return p.name == QLatin1String("cmd") || p.kind == args::Kind::Record ||
               p.kind == args::Kind::OsdRecord;
    });
}

namespace engine::detail {

QString Variable::name(const Operation& op) const {
    const QString argument = op.arguments.value(this->argument).name;
    switch (where) {
    case Argument:
        return argument;
    case Element:
        return QStringLiteral("%1[%2]").arg(argument).arg(index);
    case Length:
        return QStringLiteral("length of %1").arg(argument);
    case Member:
        return argument + QLatin1Char('.') + path;
    case Model: {
        // The record's class gives way to the parameter's name: "scene.sceneList[1]...".
        const QString record = path.section(QLatin1Char('.'), 0, 0).section(QLatin1Char('['), 0, 0);
        for (const Parameter& p : op.parameters)
            if (p.kind == Kind::Model && p.type.startsWith(record))
                return p.name + path.mid(record.size());
        return path;
    }
    case Utility:
        return QLatin1String(utilityOption(path)->name);
    }
    return QString();
}

namespace {

// The words of a list argument's elements.
QStringList elementsOf(const QString& word, Kind kind) {
    return word.isEmpty() ? QStringList() : word.split(QLatin1Char(args::separatorOf(kind)));
}

QJsonObject objectOf(const QString& word) {
    return QJsonDocument::fromJson(word.toUtf8()).object();
}

// An integer probe that reaches every byte: alternate bits of each.
constexpr long long kEveryBit = 0x5A5A5A5ALL;

QString withinRange(long long value, const Variable& v) {
    if (v.max > v.min)
        value = std::clamp(value, v.min, v.max);
    return QString::number(value);
}

QStringList numbers(long long from, long long to) {
    QStringList words;
    for (long long x = from; x <= to; ++x)
        words << QString::number(x);
    return words;
}

} // namespace

QString valueOf(const Call& call, const Variable& v) {
    const QString word = call.words.value(v.argument);
    switch (v.where) {
    case Variable::Argument:
        return word;
    case Variable::Element:
        return elementsOf(word, call.op->arguments[v.argument].kind)
            .value(v.index, QStringLiteral("0"));
    case Variable::Length:
        return QString::number(elementsOf(word, call.op->arguments[v.argument].kind).size());
    case Variable::Member: {
        const QJsonValue member = objectOf(word).value(v.path);
        return member.isString() ? member.toString()
                                 : QString::number(member.toVariant().toLongLong());
    }
    case Variable::Model:
        return members::get(call.models, v.path);
    case Variable::Utility:
        return utilityOption(v.path)->get(call.utility);
    }
    return QString();
}

std::optional<Call> changed(const Call& from, const Variable& v, const QString& value) {
    Call call = from;
    if (v.where == Variable::Model)
        return members::set(call.models, v.path, value) ? std::optional<Call>(call) : std::nullopt;
    if (v.where == Variable::Utility) {
        utilityOption(v.path)->set(call.utility, value);
        return call;
    }
    QString& word = call.words[v.argument];
    const Kind kind = call.op->arguments[v.argument].kind;
    if (v.where == Variable::Argument) {
        word = value;
    } else if (v.where == Variable::Member) {
        QJsonObject object = objectOf(word);
        object.insert(v.path,
                      v.kind == Kind::Text ? QJsonValue(value) : QJsonValue(value.toLongLong()));
        word = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    } else {
        QStringList elements = elementsOf(word, kind);
        if (v.where == Variable::Length) {
            const int size = value.toInt();
            if (size < 0)
                return std::nullopt;
            while (elements.size() < size)
                elements << (elements.isEmpty() ? QStringLiteral("0") : elements.last());
            elements = elements.mid(0, size);
        } else {
            while (elements.size() <= v.index)
                elements << QStringLiteral("0");
            elements[v.index] = value;
        }
        word = elements.join(QLatin1Char(args::separatorOf(kind)));
    }
    return call;
}

bool pastTheEnd(const Call& call, const Variable& v) {
    return v.where == Variable::Element &&
           v.index >=
               elementsOf(call.words[v.argument], call.op->arguments[v.argument].kind).size();
}

QVector<Variable> variablesOf(const Call& call) {
    QVector<Variable> all;
    const Operation& op = *call.op;
    for (int i = 0; i < op.arguments.size(); ++i) {
        const Parameter& p = op.arguments[i];
        if (p.kind == Kind::Numbers || p.kind == Kind::DashNumbers) {
            // The elements the call may read, beyond those given: a list reads zeros past its
            // end, or is zero-padded.
            const int count = std::max(int(elementsOf(call.words[i], p.kind).size()), 16);
            const long long min = p.kind == Kind::Numbers ? p.min : 0;
            all << Variable{Variable::Length, i, -1, QString(), Kind::Integer, 0, 1024};
            for (int e = 0; e < count; ++e)
                all << Variable{Variable::Element, i, e, QString(), Kind::Integer, min, p.max};
        } else if (p.kind == Kind::Json) {
            for (const dal::json::Member& m : dal::json::membersOf(op.name)) {
                const Kind kind = m.kind == dal::json::Kind::Text ? Kind::Text : Kind::Integer;
                const QString name = QLatin1String(m.name);
                all << Variable{Variable::Member, i, -1, name, kind, INT_MIN, INT_MAX};
            }
        } else {
            // A colour is probed and read as the text it is.
            const Kind kind = p.kind == Kind::Colour ? Kind::Text : p.kind;
            all << Variable{Variable::Argument, i, -1, QString(), kind, p.min, p.max};
        }
    }
    for (const UtilityOption& o : utilityOptions()) {
        const Kind kind = o.text ? Kind::Text : Kind::Integer;
        all << Variable{Variable::Utility, -1, -1, QLatin1String(o.option), kind, o.min, o.max};
    }
    return all;
}

QVector<Variable> modelMembers(const Call& call, const Target& target) {
    const Run base = runOf(call);
    auto rendering = [&](const Run& r) {
        QVector<std::optional<Parts>> all;
        for (int j = 0; r.ok && j < r.count(); ++j)
            all << r.parts(j, target);
        return all;
    };
    const auto seen = rendering(base);
    // Moved a little and a lot: a member may keep the record as it was for one of the moves (the
    // digit appended to an address's last number may leave its byte).
    auto affects = [&](const QStringList& paths) {
        return std::any_of(std::begin(kModelSteps), std::end(kModelSteps), [&](int step) {
            Call c = call;
            for (const QString& path : paths)
                members::shift(c.models, path, step);
            const Run r = runOf(c);
            return r.ok != base.ok || rendering(r) != seen;
        });
    };
    QVector<Variable> found;
    // Halving: a group of members that changes nothing holds none that reaches the records.
    std::function<void(const QStringList&)> search = [&](const QStringList& paths) {
        if (paths.isEmpty() || !affects(paths))
            return;
        if (paths.size() > 1) {
            search(paths.mid(0, paths.size() / 2));
            search(paths.mid(paths.size() / 2));
            return;
        }
        const members::Leaf leaf = members::at(call.models, paths.first());
        if (leaf.node == members::Node::Value)
            found << Variable{Variable::Model, -1,       -1,      paths.first(),
                              leaf.kind,       leaf.min, leaf.max};
        else
            search(members::children(call.models, paths.first()));
    };
    QStringList roots;
    for (const QString& record : call.op->modelRecords())
        roots << members::children(call.models, record);
    search(roots);
    return found;
}

// ---- the one probe
// ----------------------------------------------------------------------------------

Run runOf(const Call& call) {
    // Bounded, so that memory does not grow with the input; never freed, as tearing down tens
    // of thousands of runs at exit would cost a short run a good part of its time.
    static auto& kept = *new QHash<Call::Key, Run>;
    const Call::Key key = call.key();
    const auto known = kept.constFind(key);
    if (known != kept.constEnd())
        return *known;
    if (kept.size() > 20000)
        kept.clear();
    Run run;
    try {
        run.outcome = ::run(call);
        run.ok = true;
    } catch (const std::exception&) {
    }
    return kept[key] = run;
}

std::optional<Parts> probe(const Call& call, const Variable& v, const QString& word, int k,
                           const Target& shape) {
    const std::optional<Call> c = changed(call, v, word);
    return c ? runOf(*c).parts(k, shape) : std::nullopt;
}

// ---- the values probed with
// ------------------------------------------------------------------------

const Hints& hintsOf(Kind kind) {
    static const QStringList small = numbers(-1, 16);
    static const QStringList edges{"0", "2", "3", "5", "255", "256", "-1", "23130", "1515870810"};
    static const std::map<Kind, Hints> hints{
        {Kind::Integer, {edges, small, {}, {}}},
        {Kind::Decimal, {{"0", "2.25", "-1", "23130.5"}, {}, {}, {}}},
        {Kind::Text, {{}, {}, "ab", "Zq"}},
        {Kind::Bytes, {{}, {}, "0a0b", "00"}},
        {Kind::Boolean, {{}, small, {}, {}}}};
    static const Hints other{};
    const auto it = hints.find(kind);
    return it == hints.end() ? other : it->second;
}

QStringList deviceCodeWords() {
    QStringList words;
    for (const Family& family : families())
        for (int code : family.codes)
            words << QString::number(code);
    return words;
}

QStringList probesOf(const Call& call, const Variable& v) {
    const QString now = valueOf(call, v);
    switch (v.kind) {
    case Kind::Boolean:
        return {now == QLatin1String("true") ? QStringLiteral("false") : QStringLiteral("true")};
    case Kind::Decimal: {
        const double x = now.toDouble();
        return {QString::number(x + 1.25), QString::number(x * 2 + 300.5)};
    }
    // A text or bytes changed at every place, and one grown longer.
    case Kind::Text: {
        QString other = now;
        for (QChar& c : other)
            c = c == QLatin1Char('Z') ? QLatin1Char('Y') : QLatin1Char('Z');
        // Every digit changed, so that a number or an address read out of the text moves in
        // each of its parts.
        QString digits = now;
        for (QChar& c : digits)
            if (c.isDigit())
                c = c == QLatin1Char('1') ? QLatin1Char('2') : QLatin1Char('1');
        // Long enough to fill a padded field to its end; and a colour, read as bytes.
        QStringList probes{other.isEmpty() ? QStringLiteral("q") : other,
                           now + QStringLiteral("Zq"), now + QStringLiteral("Zq").repeated(16),
                           QStringLiteral("#5a3c7e")};
        if (digits != now)
            probes << digits;
        return probes;
    }
    case Kind::Bytes: {
        QByteArray other = QByteArray::fromHex(now.toLatin1());
        for (char& c : other)
            c = static_cast<char>(c ^ 0xA5);
        return {other.isEmpty() ? QStringLiteral("5a") : QString::fromLatin1(other.toHex()),
                now + QStringLiteral("a5c3"), now + QString(64, QLatin1Char('7'))};
    }
    default: {
        const long long x = now.toLongLong();
        // One change reaches every byte a value can, the others stay near it.
        const long long mask = v.max > 0 && v.max < kEveryBit ? v.max : kEveryBit;
        return {withinRange(x ^ (kEveryBit & mask), v), withinRange(x + 1, v),
                withinRange(x - 1, v)};
    }
    }
}

} // namespace engine::detail
