// Reading a record's values back: where each value lands is learnt by running the call with
// other values; each value is then found from what the record holds there, and the call with
// the values found is run to see that it queues exactly the record.
#include "engine_detail.h"

#include <bitset>

namespace engine::detail {

namespace {

constexpr long long kFar = 1LL << 40; // the record is not there at all
constexpr int kRounds = 6;

long long bitsApart(const QString& a, const QString& b) {
    long long d = 8 * std::abs(a.size() - b.size());
    for (int i = 0; i < std::min(a.size(), b.size()); ++i)
        d += std::bitset<16>(a[i].unicode() ^ b[i].unicode()).count();
    return d;
}

// The edits between two texts (past their common ends; by place where that is long), and how
// much their lengths differ: a value written one digit longer is nearer than one that shifts
// everything after it, and one of the right length nearer than one that is not.
long long charsApart(const QString& a, const QString& b) {
    const auto [from, suffix] = commonEnds(a, b);
    const int n = int(a.size()) - from - suffix, m = int(b.size()) - from - suffix;
    if (n > 200 || m > 200) {
        long long d = std::abs(n - m);
        for (int i = 0; i < std::min(n, m); ++i)
            d += a[from + i] != b[from + i];
        return d;
    }
    return editDistance(QStringView(a).mid(from, n), QStringView(b).mid(from, m),
                        Qt::CaseSensitive) +
           std::abs(n - m); // a text of the right length is nearer
}

// A record count and the lengths of the binary parts after it (0 for a text).
QVector<int> lengthsOf(int records, const Parts& parts) {
    QVector<int> lengths{records};
    for (const Part& p : parts)
        lengths << (p.binary ? int(p.value.size()) : 0);
    return lengths;
}

// The lengths a run gives the target's binary parts of record k, after its record count.
QVector<int> lengthsOf(const Run& run, const Target& target, int k) {
    return lengthsOf(run.ok ? run.count() : -1, run.parts(k, target).value_or(Parts()));
}

// A value that may say how many entries a list or a block holds: a list's length, an integer
// argument, or an integer member of a model record itself (not of its entries).
bool isCount(const Variable& v) {
    const bool topMember = v.where == Variable::Model &&
                           !v.path.section(QLatin1Char('.'), 1).contains(QLatin1Char('.')) &&
                           !v.path.contains(QLatin1Char('['));
    return v.kind == Kind::Integer &&
           (v.where == Variable::Length || v.where == Variable::Argument || topMember);
}

// The call with a count set, where the count takes it: a model record's lists then hold at
// least that many entries (up to the most any block of the protocol has room for).
Call withCount(const Call& call, const Variable& v, long long size) {
    Call c = changed(call, v, QString::number(size)).value_or(call);
    if (v.where != Variable::Model || size > args::kIntArrayReserve)
        return c;
    const QString record = v.path.section(QLatin1Char('.'), 0, 0);
    for (const QString& list : members::lists(c.models, record))
        if (members::children(c.models, list).size() < size)
            members::resize(c.models, list, int(size));
    return c;
}

bool reachesAny(const Shape& shape, const QVector<Variable>& variables, int i, bool alone) {
    for (const PartShape& ps : shape.parts)
        for (const Piece& piece : ps.pieces)
            if (reaches(piece, variables, i, alone))
                return true;
    return false;
}

// One search: the call as it stands, and the values it reads.
struct Solver {
    Solver(const Call& start, const Target& target, int k)
        : call(start), target(target), k(k), variables(variablesOf(start)) {
        // A text or bytes value that is empty would land nowhere: give it something to show.
        for (const Variable& v : variables)
            if (v.where != Variable::Utility && !hintsOf(v.kind).filler.isEmpty() &&
                valueOf(call, v).isEmpty())
                call = changed(call, v, hintsOf(v.kind).filler).value_or(call);
    }

    // The record count and the lengths the target's record has.
    bool hasLengths(const Run& now) const {
        return lengthsOf(now, target, k) == lengthsOf(std::max(k + 1, now.count()), target.parts);
    }

    bool fixLengths() {
        Run now = runOf(call);
        if (!now.ok)
            return false;
        bool moved = false;
        for (const Variable& v : variables) {
            if (!isCount(v) || hasLengths(now))
                continue;
            const long long x0 = valueOf(call, v).toLongLong();
            // Each binary part's length on a line through three values of the count.
            QVector<QVector<int>> seen;
            for (long long x : {x0, x0 + 1, x0 + 2})
                seen << lengthsOf(runOf(withCount(call, v, x)), target, k);
            if (seen[0] == seen[1] && seen[1] == seen[2])
                continue;
            const QVector<int> goal = lengthsOf(k + 1, target.parts);
            for (int p = 1; p < goal.size() && p < seen[0].size(); ++p) {
                const int a = seen[1].value(p) - seen[0].value(p);
                if (a == 0 || seen[2].value(p) - seen[1].value(p) != a || goal[p] == seen[0][p])
                    continue;
                const long long rest = goal[p] - seen[0][p];
                if (rest % a)
                    continue;
                const long long x = x0 + rest / a;
                if (x < 0 || x > 100000 || !v.inRange(x))
                    continue;
                const Call c = withCount(call, v, x);
                const Run r = runOf(c);
                if (distance(r, target, k) < distance(now, target, k)) {
                    call = c;
                    now = r;
                    moved = true;
                }
            }
        }
        return moved;
    }

    // A list's length or a record's count, once the record has the target's lengths, is settled:
    // its probes would only blur the pieces of the values it counts.
    QVector<Variable> unsettled() const {
        const Run now = runOf(call);
        if (!hasLengths(now))
            return variables;
        const QVector<int> lengths = lengthsOf(now, target, k);
        // A count moves the lengths one step up and one down; a number written in digits moves
        // them only where it gains or loses one.
        auto counts = [&](const Variable& v) {
            const long long x = valueOf(call, v).toLongLong();
            int moved = 0, ran = 0;
            for (long long step : {x + 1, x - 1}) {
                const std::optional<Call> c = changed(call, v, QString::number(step));
                const Run r = c ? runOf(*c) : Run();
                ran += r.ok;
                moved += r.ok && lengthsOf(r, target, k) != lengths;
            }
            return ran > 0 && moved == ran;
        };
        QVector<Variable> kept;
        for (const Variable& v : variables)
            if (!((pastTheEnd(call, v) || (isCount(v) && v.where != Variable::Argument)) &&
                  counts(v)))
                kept << v;
        return kept;
    }

    bool solveRound() {
        bool moved = false;
        const QVector<Variable> variables = unsettled();
        const Shape shape = shapeOf(call, variables, k, target);
        if (shape.parts.isEmpty())
            return false;
        QVector<QStringList> pieces;
        const bool cutWhole = cut(shape, target.parts, pieces);
        // While the record keeps the shape's constants, how far it is counts the pieces that differ
        // from the target's, so that a checksum all values reach does not hide a value set right.
        auto measure = [&](const Run& r) {
            const long long bits = distance(r, target, k);
            QVector<QStringList> got;
            if (bits == 0 || bits >= kFar || !cutWhole)
                return bits;
            if (!cut(shape, *r.parts(k, target), got))
                return (kFar << 8) + bits; // farther than any record that keeps the constants
            // First the pieces that differ, then by how many bits. A piece that many values make
            // (a checksum) differs while any of them is wrong: it counts in the bits alone.
            long long differing = 0;
            for (int p = 0; p < got.size(); ++p)
                for (int j = 0; j < got[p].size(); ++j)
                    differing +=
                        got[p][j] != pieces[p][j] && shape.parts[p].pieces[j].owners.size() <= 2;
            return (std::max<long long>(differing, 1) << 32) + bits;
        };
        long long now = measure(runOf(call));
        // A call kept when it comes closer. A word read off the value's own pieces is kept unless
        // more pieces differ with it: a checksum that another value still spoils may differ in more
        // bits.
        auto keepIfCloser = [&](const std::optional<Call>& c, bool read) {
            if (!c)
                return false;
            const long long d = measure(runOf(*c));
            const bool asClose =
                read && d < kFar && now < kFar && (d >> 32) > 0 && (d >> 32) <= (now >> 32);
            if (d >= now && !asClose)
                return false;
            call = *c;
            now = d;
            return true;
        };
        auto tryWord = [&](int i, const QString& word, bool read) {
            return word != valueOf(call, variables[i]) &&
                   keepIfCloser(changed(call, variables[i], word), read);
        };
        // A value that no word of its own brings to the record is moved where the record comes
        // closest: another value may choose another command or form, or which value is read.
        auto closer = [&](int i) {
            const Variable& v = variables[i];
            QStringList words = probesOf(call, v) + hintsOf(v.kind).nearby;
            // A value compared with a device-type code (or the local address with its setting)
            // chooses by it.
            if (v.where == Variable::Utility)
                words << (v.kind == Kind::Integer ? deviceCodeWords()
                                                  : QStringList{kDefaultAddress});
            bool closer = false;
            for (const QString& word : words)
                closer |= tryWord(i, word, false);
            // Lists read in pairs count as the shorter: their lengths move together.
            for (int x = 0; v.where == Variable::Length && x <= 64; ++x) {
                Call c = call;
                for (const Variable& length : variables)
                    if (length.where == Variable::Length)
                        c = changed(c, length, QString::number(x)).value_or(c);
                closer |= keepIfCloser(c, false);
            }
            return closer;
        };
        for (bool alone : {true, false})
            for (int i = 0; i < variables.size() && now > 0; ++i) {
                // Where the constants differ, any value may be the one that chooses.
                if (!reachesAny(shape, variables, i, alone) && (cutWhole || alone))
                    continue;
                const std::optional<QString> word =
                    cutWhole ? solveVariable(call, shape, target, variables, i, alone)
                             : std::nullopt;
                // A word read that brings the record no closer was read off the wrong pieces.
                if (word && *word == valueOf(call, variables[i]))
                    continue;
                if (word && tryWord(i, *word, alone)) {
                    moved = true;
                    continue;
                }
                moved |= closer(i);
            }
        return moved;
    }

    Call call;
    const Target& target;
    int k;
    QVector<Variable> variables;
};

} // namespace

long long distance(const Parts& got, const Target& target) {
    long long d = 0;
    for (int p = 0; p < target.parts.size() && p < got.size(); ++p)
        if (got[p].value != target.parts[p].value)
            d += 1 + (target.parts[p].binary ? bitsApart(got[p].value, target.parts[p].value)
                                             : charsApart(got[p].value, target.parts[p].value));
    return d;
}

long long distance(const Run& run, const Target& target, int k) {
    const std::optional<Parts> parts = run.parts(k, target);
    return parts ? distance(*parts, target) : kFar;
}

Call solved(const Call& start, const Target& target, int k) {
    Solver s(start, target, k);
    for (int round = 0; round < kRounds && distance(runOf(s.call), target, k) > 0; ++round) {
        bool moved = s.fixLengths();
        s.variables = variablesOf(s.call); // a list's elements follow its length
        if (!s.call.op->modelRecords().isEmpty())
            s.variables += modelMembers(s.call, target);
        if (!(s.solveRound() || moved))
            break;
    }
    return s.call;
}

} // namespace engine::detail
