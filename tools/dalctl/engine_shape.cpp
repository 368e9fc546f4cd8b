// Where each value a call reads lands in a record: the call is run with each value changed
// in turn, and the characters that change with it are that value's.
#include "engine_detail.h"

namespace engine::detail {

namespace {

QVector<Change> changesInPlace(const QString& a, const QString& b) {
    QVector<Change> found;
    for (int i = 0; i < a.size();) {
        int j = i;
        while (j < a.size() && a[j] != b[j])
            ++j;
        if (j > i)
            found << Change{i, j, false};
        i = std::max(j, i + 1);
    }
    return found;
}

// Texts that differ only in their numbers differ number by number: "192,168,1,20" against
// "211,211,2,11" in its four numbers, the commas between them kept.
std::optional<QVector<Change>> changesInNumbers(const QString& a, const QString& b) {
    static const QRegularExpression runs(QStringLiteral("\\d+|\\D+"));
    QVector<QRegularExpressionMatch> x, y;
    for (auto m = runs.globalMatch(a); m.hasNext();)
        x << m.next();
    for (auto m = runs.globalMatch(b); m.hasNext();)
        y << m.next();
    if (x.size() != y.size())
        return std::nullopt;
    QVector<Change> found;
    for (int i = 0; i < x.size(); ++i) {
        const bool digits = x[i].captured().front().isDigit();
        if (digits != y[i].captured().front().isDigit() ||
            (!digits && x[i].captured() != y[i].captured()))
            return std::nullopt;
        if (x[i].captured() != y[i].captured())
            found << Change{int(x[i].capturedStart()), int(x[i].capturedEnd()),
                            x[i].capturedLength() != y[i].capturedLength()};
    }
    return found;
}

} // namespace

QVector<Change> changes(const QString& a, const QString& b, bool bytes) {
    // Bytes of the same length are compared in place; a text may have moved within itself.
    if (bytes && a.size() == b.size())
        return changesInPlace(a, b);
    if (!bytes)
        if (const std::optional<QVector<Change>> inNumbers = changesInNumbers(a, b))
            return *inNumbers;
    QVector<Change> found;
    const auto ends = commonEnds(a, b);
    const int prefix = ends.first, suffix = ends.second;
    const int n = int(a.size()) - prefix - suffix;
    const int m = int(b.size()) - prefix - suffix;
    constexpr long long kLargest = 200000;
    if (n == 0 && m == 0)
        return found;
    if (n == 0 || m == 0 || (long long)(n + 1) * (m + 1) > kLargest)
        return {Change{prefix, prefix + n, true}};
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

namespace {

using Owners = QVector<int>; // the variables behind one character, or one place between two

void add(Owners& owners, int v) {
    if (!owners.contains(v))
        owners << v;
}

// Per character of one part: the variables that changed it and those that varied its width;
// per place between characters, the variables that inserted something there.
struct Marks {
    explicit Marks(int size = 0) : owners(size), resized(size), inserted(size + 1) {}
    QVector<Owners> owners, resized, inserted;
};

// Phase one: each variable probed in turn, each change it makes marked.
QVector<Marks> marksOf(const Call& call, const QVector<Variable>& variables, int k,
                       const Target& target, const Parts& parts) {
    QVector<Marks> marks;
    for (const Part& part : parts)
        marks << Marks(int(part.value.size()));
    for (int i = 0; i < variables.size(); ++i) {
        for (const QString& word : probesOf(call, variables[i])) {
            if (word == valueOf(call, variables[i]))
                continue;
            const std::optional<Parts> other = probe(call, variables[i], word, k, target);
            for (int p = 0; other && p < parts.size(); ++p) {
                // A value that empties a part (or fills an empty one) chose another form, and
                // says nothing of where it lands.
                if (parts[p].value.isEmpty() != (*other)[p].value.isEmpty())
                    continue;
                Marks& m = marks[p];
                for (const Change& c :
                     changes(parts[p].value, (*other)[p].value, !asText(parts[p]))) {
                    if (c.from == c.to)
                        add(m.inserted[c.from], i);
                    for (int at = c.from; at < c.to; ++at) {
                        add(m.owners[at], i);
                        if (c.resized)
                            add(m.resized[at], i);
                    }
                }
            }
        }
    }
    return marks;
}

// Phase two: a number in a text belongs to its value whole, though a small change moves only
// its last digits or puts digits before them.
void wholeNumbers(const QString& value, Marks& m) {
    auto numeric = [](QChar c) {
        return c.isDigit() || c == QLatin1Char('.') || c == QLatin1Char('-');
    };
    for (int at = 0; at <= value.size(); ++at) {
        const int next = at < value.size() && numeric(value[at]) ? at
                         : at > 0 && numeric(value[at - 1])      ? at - 1
                                                                 : -1;
        if (next < 0 || m.inserted[at].isEmpty())
            continue;
        for (int v : m.inserted[at]) {
            add(m.owners[next], v);
            add(m.resized[next], v);
        }
        m.inserted[at].clear();
    }
    for (int at = 0; at < value.size(); ++at) {
        if (m.owners[at].isEmpty() || !numeric(value[at]))
            continue;
        for (int left = at - 1; left >= 0 && m.owners[left].isEmpty() && numeric(value[left]);
             --left)
            m.owners[left] = m.owners[at];
        for (int right = at + 1;
             right < value.size() && m.owners[right].isEmpty() && numeric(value[right]); ++right)
            m.owners[right] = m.owners[at];
    }
}

// Phase three: a byte of an element that a list's length also moves (the entry a shorter list
// drops) is the element's own.
void elementsOwnTheirBytes(const Call& call, const QVector<Variable>& variables, Marks& m) {
    auto withoutLengths = [&](Owners& at, bool element) {
        Owners own;
        for (int v : at)
            if (!element || variables[v].where != Variable::Length)
                own << v;
        at = own;
    };
    for (int at = 0; at < m.owners.size(); ++at) {
        const bool element = std::any_of(m.owners[at].begin(), m.owners[at].end(), [&](int v) {
            return variables[v].where == Variable::Element && !pastTheEnd(call, variables[v]);
        });
        withoutLengths(m.owners[at], element);
        withoutLengths(m.resized[at], element);
    }
}

// Phase four: the part cut into runs of characters the same values made.
QVector<Piece> piecesOf(const Part& part, const Marks& m) {
    QVector<Piece> pieces;
    const int n = int(part.value.size());
    // A text's numbers and words take any width (a block may hold a text); a binary value keeps
    // its own unless a probe gave it another.
    auto resizes = [&](int from, int to) {
        bool any = asText(part);
        for (int at = from; at < to; ++at)
            any = any || !m.resized[at].isEmpty();
        return any;
    };
    for (int at = 0; at < n;) {
        int end = at + 1;
        while (end < n && m.owners[end] == m.owners[at])
            ++end;
        pieces << Piece{at, end, m.owners[at], !m.owners[at].isEmpty() && resizes(at, end)};
        at = end;
    }
    return pieces;
}

// Phase five: what a value inserts between characters widens the piece of its own before that
// place, or else the one after it, or else is a piece of no width there.
void placeInsertions(QVector<Piece>& pieces, const Marks& m) {
    auto owns = [](const Piece& piece, const Owners& values) {
        return !piece.owners.isEmpty() && std::all_of(values.begin(), values.end(), [&](int v) {
            return piece.owners.contains(v);
        });
    };
    for (int at = int(m.inserted.size()) - 1; at >= 0; --at) {
        const Owners& values = m.inserted[at];
        if (values.isEmpty())
            continue;
        const auto after = std::find_if(pieces.begin(), pieces.end(),
                                        [at](const Piece& piece) { return piece.from >= at; });
        if (after != pieces.begin() && owns(*(after - 1), values)) {
            (after - 1)->resizes = true;
        } else if (after != pieces.end() && after->from == at && owns(*after, values)) {
            after->resizes = true;
        } else {
            // Within a constant run: the run is cut there.
            auto into = after;
            if (after != pieces.begin() && (after - 1)->to > at) {
                const Piece whole = *(after - 1);
                *(after - 1) = Piece{whole.from, at, whole.owners, whole.resizes};
                into = pieces.insert(after, Piece{at, whole.to, whole.owners, whole.resizes});
            }
            pieces.insert(into, Piece{at, at, values, true});
        }
    }
}

// Phase six: in a text, values side by side of which one takes any width cannot be told apart:
// one piece.
void joinInText(QVector<Piece>& pieces) {
    for (int j = int(pieces.size()) - 1; j > 0; --j) {
        Piece& left = pieces[j - 1];
        const Piece& right = pieces[j];
        if (left.owners.isEmpty() || right.owners.isEmpty() || !(left.resizes || right.resizes))
            continue;
        for (int v : right.owners)
            add(left.owners, v);
        std::sort(left.owners.begin(), left.owners.end());
        left.to = right.to;
        left.resizes = true;
        pieces.remove(j);
    }
}

QRegularExpression patternOf(const PartShape& ps) {
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
    return QRegularExpression(pattern + QStringLiteral("\\z"),
                              QRegularExpression::DotMatchesEverythingOption);
}

} // namespace

Shape shapeOf(const Call& call, const QVector<Variable>& variables, int k, const Target& target) {
    Shape shape;
    const Run base = runOf(call);
    const std::optional<Parts> parts = base.parts(k, target);
    if (!parts)
        return shape;
    shape.record = k;
    QVector<Marks> marks = marksOf(call, variables, k, target, *parts);
    for (int p = 0; p < parts->size(); ++p) {
        const Part& part = (*parts)[p];
        if (asText(part))
            wholeNumbers(part.value, marks[p]);
        elementsOwnTheirBytes(call, variables, marks[p]);
        PartShape ps{part, piecesOf(part, marks[p]), QRegularExpression()};
        placeInsertions(ps.pieces, marks[p]);
        if (asText(part))
            joinInText(ps.pieces);
        ps.pattern = patternOf(ps);
        shape.parts << ps;
    }
    return shape;
}

bool cut(const Shape& shape, const Parts& parts, QVector<QStringList>& pieces) {
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
