// Where each value a call reads lands in a record: the call is run with each value changed
// in turn, and the characters that change with it are that value's.
#include "engine_detail.h"

#include <QRegularExpression>

#include <algorithm>
#include <atomic>

namespace engine::detail {

namespace {

std::atomic<long long> runs{0};

// The ranges of `a` that differ from `b`, each as [from, to) in `a`, and whether the range has
// another width in `b`. Common ends are set aside; the middle is aligned by its longest common
// subsequence where it is small enough, else taken as changed whole.
struct Change {
    int from;
    int to;
    bool resized;
};

QVector<Change> changes(const QString& a, const QString& b, bool bytes) {
    QVector<Change> found;
    // Bytes of the same length are compared in place; a text may have moved within itself.
    if (bytes && a.size() == b.size()) {
        for (int i = 0; i < a.size();) {
            if (a[i] == b[i]) {
                ++i;
                continue;
            }
            int j = i;
            while (j < a.size() && a[j] != b[j])
                ++j;
            found << Change{i, j, false};
            i = j;
        }
        return found;
    }
    int prefix = 0;
    while (prefix < a.size() && prefix < b.size() && a[prefix] == b[prefix])
        ++prefix;
    int suffix = 0;
    while (suffix < a.size() - prefix && suffix < b.size() - prefix &&
           a[a.size() - 1 - suffix] == b[b.size() - 1 - suffix])
        ++suffix;
    const int n = int(a.size()) - prefix - suffix;
    const int m = int(b.size()) - prefix - suffix;
    constexpr long long kLargest = 200000;
    if (n == 0 && m == 0)
        return found;
    if (n == 0 || m == 0 || (long long)(n + 1) * (m + 1) > kLargest) {
        found << Change{prefix, prefix + n, true};
        return found;
    }
    // lcs[i][j]: the longest common subsequence of a's middle from i and b's from j.
    QVector<int> lcs((n + 1) * (m + 1), 0);
    auto at = [&](int i, int j) -> int& { return lcs[i * (m + 1) + j]; };
    for (int i = n - 1; i >= 0; --i)
        for (int j = m - 1; j >= 0; --j)
            at(i, j) = a[prefix + i] == b[prefix + j] ? at(i + 1, j + 1) + 1
                                                      : std::max(at(i + 1, j), at(i, j + 1));
    int i = 0, j = 0, start = -1, startB = -1;
    auto close = [&](int endA, int endB) {
        if (start >= 0)
            found << Change{prefix + start, prefix + endA, endA - start != endB - startB};
        start = -1;
    };
    while (i < n || j < m) {
        if (i < n && j < m && a[prefix + i] == b[prefix + j]) {
            close(i, j);
            ++i;
            ++j;
            continue;
        }
        if (start < 0) {
            start = i;
            startB = j;
        }
        if (j < m && (i == n || at(i, j + 1) >= at(i + 1, j)))
            ++j;
        else
            ++i;
    }
    close(n, m);
    return found;
}

QString withinRange(long long value, const Variable& v) {
    if (v.max > v.min)
        value = std::clamp(value, v.min, v.max);
    return QString::number(value);
}

} // namespace

Run runCall(const Call& call) {
    ++runs;
    Run run;
    try {
        run.outcome = ::run(call);
        run.ok = true;
    } catch (const std::exception&) {
    }
    return run;
}

QStringList probesOf(const Call& call, const Variable& v) {
    const QString now = valueOf(call, v);
    switch (v.kind) {
    case args::Kind::Boolean:
        return {now == QLatin1String("true") ? QStringLiteral("false") : QStringLiteral("true")};
    case args::Kind::Decimal: {
        const double x = now.toDouble();
        return {QString::number(x + 1.25), QString::number(x * 2 + 300.5)};
    }
    // A text or bytes changed at every place, and one grown longer.
    case args::Kind::Text: {
        QString other = now;
        for (QChar& c : other)
            c = c == QLatin1Char('Z') ? QLatin1Char('Y') : QLatin1Char('Z');
        // Long enough to fill a padded field to its end; and a colour, read as bytes.
        return {other.isEmpty() ? QStringLiteral("q") : other, now + QStringLiteral("Zq"),
                now + QStringLiteral("ZqZqZqZqZqZqZqZqZqZqZqZqZqZqZqZq"),
                QStringLiteral("#5a3c7e")};
    }
    case args::Kind::Bytes: {
        QByteArray other = QByteArray::fromHex(now.toLatin1());
        for (char& c : other)
            c = static_cast<char>(c ^ 0xA5);
        return {other.isEmpty() ? QStringLiteral("5a") : QString::fromLatin1(other.toHex()),
                now + QStringLiteral("a5c3"), now + QString(64, QLatin1Char('7'))};
    }
    default: {
        const long long x = now.toLongLong();
        // One change reaches every byte a value can, the others stay near it.
        const long long mask = v.max > 0 && v.max < 0x5A5A5A5ALL ? v.max : 0x5A5A5A5ALL;
        return {withinRange(x ^ (0x5A5A5A5ALL & mask), v), withinRange(x + 1, v),
                withinRange(x - 1, v)};
    }
    }
}

Shape shapeOf(const Call& call, const QVector<Variable>& variables, int k, const Target& target) {
    Shape shape;
    const Run base = runCall(call);
    if (!base.queued(target.osd, k))
        return shape;
    shape.record = k;
    shape.records = base.count(target.osd);
    const QVector<Part> parts = base.parts(target.osd, k, target);
    // Per part and character: the variables that changed it, and those that varied its width.
    QVector<QVector<QVector<int>>> owners(parts.size());
    QVector<QVector<QVector<int>>> resized(parts.size());
    // Per part and place between characters: the variables that inserted something there.
    QVector<QVector<QVector<int>>> inserted(parts.size());
    for (int p = 0; p < parts.size(); ++p) {
        owners[p].resize(parts[p].value.size());
        resized[p].resize(parts[p].value.size());
        inserted[p].resize(parts[p].value.size() + 1);
    }
    for (int i = 0; i < variables.size(); ++i) {
        for (const QString& probe : probesOf(call, variables[i])) {
            Call changed = call;
            if (probe == valueOf(call, variables[i]) || !assign(changed, variables[i], probe))
                continue;
            const Run other = runCall(changed);
            if (!other.queued(target.osd, k))
                continue;
            const QVector<Part> otherParts = other.parts(target.osd, k, target);
            for (int p = 0; p < parts.size(); ++p) {
                // A value that empties a part (or fills an empty one) chose another form, and
                // says nothing of where it lands.
                if (parts[p].value.isEmpty() != otherParts[p].value.isEmpty())
                    continue;
                const bool bytes = parts[p].binary && !printable(parts[p].value);
                for (const Change& c : changes(parts[p].value, otherParts[p].value, bytes)) {
                    if (c.from == c.to && !inserted[p][c.from].contains(i))
                        inserted[p][c.from] << i;
                    for (int at = c.from; at < c.to; ++at) {
                        if (!owners[p][at].contains(i))
                            owners[p][at] << i;
                        if (c.resized && !resized[p][at].contains(i))
                            resized[p][at] << i;
                    }
                }
            }
        }
    }
    // A number in a text belongs to its value whole, though a small change moves only its
    // last digits or puts digits before them.
    auto numeric = [](QChar c) {
        return c.isDigit() || c == QLatin1Char('.') || c == QLatin1Char('-');
    };
    for (int p = 0; p < parts.size(); ++p) {
        if (parts[p].binary && !printable(parts[p].value))
            continue;
        const QString& value = parts[p].value;
        for (int at = 0; at <= value.size(); ++at) {
            const int next = at < value.size() && numeric(value[at]) ? at
                             : at > 0 && numeric(value[at - 1])      ? at - 1
                                                                     : -1;
            if (next < 0 || inserted[p][at].isEmpty())
                continue;
            for (int v : inserted[p][at]) {
                if (!owners[p][next].contains(v))
                    owners[p][next] << v;
                if (!resized[p][next].contains(v))
                    resized[p][next] << v;
            }
            inserted[p][at].clear();
        }
        for (int at = 0; at < value.size(); ++at) {
            if (owners[p][at].isEmpty() || !numeric(value[at]))
                continue;
            for (int left = at - 1; left >= 0 && owners[p][left].isEmpty() && numeric(value[left]);
                 --left)
                owners[p][left] = owners[p][at];
            for (int right = at + 1;
                 right < value.size() && owners[p][right].isEmpty() && numeric(value[right]);
                 ++right)
                owners[p][right] = owners[p][at];
        }
    }
    // A byte of an element that a list's length also moves (the entry a shorter list drops)
    // is the element's own.
    auto withoutLengths = [&](QVector<int>& at, bool element) {
        QVector<int> own;
        for (int v : at)
            if (!element || variables[v].where != Variable::Length)
                own << v;
        at = own;
    };
    for (int p = 0; p < parts.size(); ++p)
        for (int at = 0; at < owners[p].size(); ++at) {
            const bool element =
                std::any_of(owners[p][at].begin(), owners[p][at].end(), [&](int v) {
                    return variables[v].where == Variable::Element &&
                           !pastTheEnd(call, variables[v]);
                });
            withoutLengths(owners[p][at], element);
            withoutLengths(resized[p][at], element);
        }
    for (int p = 0; p < parts.size(); ++p) {
        PartShape ps{parts[p], {}, QRegularExpression()};
        const int n = int(parts[p].value.size());
        // A text's numbers and words take any width; a binary value keeps its own unless a
        // probe gave it another.
        auto resizes = [&](int from, int to) {
            bool any = !parts[p].binary;
            for (int at = from; at < to; ++at)
                any = any || !resized[p][at].isEmpty();
            return any;
        };
        for (int at = 0; at < n;) {
            int end = at + 1;
            while (end < n && owners[p][end] == owners[p][at])
                ++end;
            ps.pieces << Piece{at, end, owners[p][at],
                               !owners[p][at].isEmpty() && resizes(at, end)};
            at = end;
        }
        // What a value inserts between characters widens the piece of its own before that
        // place, or else the one after it, or else is a piece of no width there.
        auto owns = [](const Piece& piece, const QVector<int>& values) {
            return !piece.owners.isEmpty() && std::all_of(values.begin(), values.end(), [&](int v) {
                return piece.owners.contains(v);
            });
        };
        for (int at = n; at >= 0; --at) {
            if (inserted[p][at].isEmpty())
                continue;
            const auto after = std::find_if(ps.pieces.begin(), ps.pieces.end(),
                                            [at](const Piece& piece) { return piece.from >= at; });
            if (after != ps.pieces.begin() && owns(*(after - 1), inserted[p][at]))
                (after - 1)->resizes = true;
            else if (after != ps.pieces.end() && after->from == at && owns(*after, inserted[p][at]))
                after->resizes = true;
            else {
                // Within a constant run: the run is cut there.
                auto into = after;
                if (after != ps.pieces.begin() && (after - 1)->to > at) {
                    const Piece whole = *(after - 1);
                    *(after - 1) = Piece{whole.from, at, whole.owners, whole.resizes};
                    into =
                        ps.pieces.insert(after, Piece{at, whole.to, whole.owners, whole.resizes});
                }
                ps.pieces.insert(into, Piece{at, at, inserted[p][at], true});
            }
        }
        // In a text, values side by side of which one takes any width cannot be told apart:
        // one piece.
        for (int j = int(ps.pieces.size()) - 1;
             j > 0 && (!parts[p].binary || printable(parts[p].value)); --j) {
            Piece& left = ps.pieces[j - 1];
            const Piece& right = ps.pieces[j];
            if (left.owners.isEmpty() || right.owners.isEmpty() || !(left.resizes || right.resizes))
                continue;
            for (int v : right.owners)
                if (!left.owners.contains(v))
                    left.owners << v;
            std::sort(left.owners.begin(), left.owners.end());
            left.to = right.to;
            left.resizes = true;
            ps.pieces.remove(j);
        }
        QString pattern = QStringLiteral("\\A");
        for (const Piece& piece : ps.pieces) {
            const QString text = ps.part.value.mid(piece.from, piece.to - piece.from);
            if (piece.owners.isEmpty())
                pattern += QRegularExpression::escape(text);
            else if (piece.resizes)
                pattern += QStringLiteral("(.*?)");
            else
                pattern += QStringLiteral("(.{%1})").arg(text.size());
        }
        ps.pattern = QRegularExpression(pattern + QStringLiteral("\\z"),
                                        QRegularExpression::DotMatchesEverythingOption);
        shape.parts << ps;
    }
    return shape;
}

bool cut(const Shape& shape, const QVector<Part>& parts, QVector<QStringList>& pieces) {
    pieces.clear();
    if (parts.size() != shape.parts.size())
        return false;
    for (int p = 0; p < shape.parts.size(); ++p) {
        const PartShape& ps = shape.parts[p];
        const QRegularExpressionMatch m = ps.pattern.match(parts[p].value);
        if (!m.hasMatch())
            return false;
        QStringList captured;
        int group = 1;
        for (const Piece& piece : ps.pieces)
            captured << (piece.owners.isEmpty() ? QString() : m.captured(group++));
        pieces << captured;
    }
    return true;
}

} // namespace engine::detail
