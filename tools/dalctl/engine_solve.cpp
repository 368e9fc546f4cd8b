// Reading a record's values back: where each value lands is learnt by running the call with
// other values; each value is then found from what the record holds there, and the call with
// the values found is run to see that it queues exactly the record.
#include "engine_detail.h"

#include <QtMath>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <numeric>
#include <optional>

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
    int from = 0, aEnd = int(a.size()), bEnd = int(b.size());
    while (from < aEnd && from < bEnd && a[from] == b[from])
        ++from;
    while (aEnd > from && bEnd > from && a[aEnd - 1] == b[bEnd - 1])
        --aEnd, --bEnd;
    const int n = aEnd - from, m = bEnd - from;
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

} // namespace

long long distance(const QVector<Part>& got, const Target& target) {
    long long d = 0;
    for (int p = 0; p < target.parts.size() && p < got.size(); ++p)
        if (got[p].value != target.parts[p].value)
            d += 1 + (target.parts[p].binary ? bitsApart(got[p].value, target.parts[p].value)
                                             : charsApart(got[p].value, target.parts[p].value));
    return d;
}

long long distance(const Run& run, const Target& target, int k) {
    if (!run.queued(target.osd, k))
        return kFar;
    return distance(run.parts(target.osd, k, target), target);
}

namespace {

// ---- what a variable's pieces hold
// ----------------------------------------------------------------

// The texts of the pieces a variable reaches: alone (owned by it only) or with others.
struct Captures {
    QByteArray bytes;           // of binary pieces, in order
    QVector<QByteArray> pieces; // each binary piece
    QStringList texts;          // of text pieces, in order
    bool operator==(const Captures& o) const { return bytes == o.bytes && texts == o.texts; }
};

bool reaches(const Piece& piece, int i, bool alone) {
    return alone ? piece.owners == QVector<int>{i} : piece.owners.contains(i);
}

Captures capturesOf(const Shape& shape, const QVector<QStringList>& cutParts, int i, bool alone) {
    Captures c;
    for (int p = 0; p < shape.parts.size(); ++p)
        for (int j = 0; j < shape.parts[p].pieces.size(); ++j) {
            if (!reaches(shape.parts[p].pieces[j], i, alone))
                continue;
            const QString& piece = cutParts[p][j];
            if (shape.parts[p].part.binary) {
                c.pieces << piece.toLatin1();
                c.bytes += c.pieces.last();
            }
            // A block may hold a text, and its numbers are read as a text's are.
            if (!shape.parts[p].part.binary || (piece.size() > 1 && printable(piece)))
                c.texts << piece;
        }
    return c;
}

bool reachesAny(const Shape& shape, int i, bool alone) {
    for (const PartShape& ps : shape.parts)
        for (const Piece& piece : ps.pieces)
            if (reaches(piece, i, alone))
                return true;
    return false;
}

// One variable solved against the target's pieces, the others kept.
class VariableSolver {
public:
    VariableSolver(const Call& call, const Shape& shape, const Target& target,
                   const QVector<Variable>& variables, int i, bool alone)
        : call(call), shape(shape), target(target), v(variables[i]), i(i), alone(alone) {
        QVector<QStringList> pieces;
        cut(shape, target.parts, pieces);
        wanted = capturesOf(shape, pieces, i, alone);
    }

    // A word that gives the variable's pieces what the target holds there, if one is found (a
    // text or bytes may be empty).
    std::optional<QString> solve() {
        QString number;
        switch (v.kind) {
        case args::Kind::Text:
            return anyFitting(shortestFirst(textCandidates()));
        case args::Kind::Bytes:
            return anyFitting(shortestFirst(bytesCandidates()));
        case args::Kind::Boolean:
            number = first({QStringLiteral("true"), QStringLiteral("false")});
            break;
        case args::Kind::Decimal:
            number = decimal();
            break;
        default:
            number = integer();
        }
        return number.isEmpty() ? std::nullopt : std::optional<QString>(number);
    }

private:
    std::optional<Captures> readingAt(const QString& word) {
        const auto known = readings.find(word);
        if (known != readings.end())
            return *known;
        Call changed = call;
        std::optional<Captures> reading;
        if (assign(changed, v, word)) {
            const Run r = runCall(changed);
            QVector<QStringList> pieces;
            if (r.ok && r.count(target.osd) > shape.record &&
                cut(shape, r.parts(target.osd, shape.record, target), pieces))
                reading = capturesOf(shape, pieces, i, alone);
        }
        readings.insert(word, reading);
        return reading;
    }

    bool fits(const QString& word) {
        const auto reading = readingAt(word);
        return reading && *reading == wanted;
    }

    QString first(const QStringList& words) { return anyFitting(words).value_or(QString()); }

    std::optional<QString> anyFitting(const QStringList& words) {
        for (const QString& word : words)
            if (fits(word))
                return word;
        return std::nullopt;
    }

    // ---- texts and bytes -----------------------------------------------------------------------

    // Where several words give the record, the shortest says no more than it holds.
    static QStringList shortestFirst(QStringList words) {
        std::stable_sort(words.begin(), words.end(),
                         [](const QString& a, const QString& b) { return a.size() < b.size(); });
        return words;
    }

    // A binary piece as it may hold a value: whole, without its last byte or two (a checksum
    // the value's piece runs into), without the zeros that pad it.
    static QVector<QByteArray> trimmings(const QByteArray& piece) {
        QVector<QByteArray> all{piece, piece.left(piece.size() - 1), piece.left(piece.size() - 2)};
        for (int i = 0; i < 3; ++i) {
            QByteArray trimmed = all[i];
            while (trimmed.endsWith('\0'))
                trimmed.chop(1);
            all << trimmed;
        }
        return all;
    }

    QStringList textCandidates() const {
        QStringList words;
        for (const QString& t : wanted.texts) {
            words << t << unescapedJson(t);
            if (std::all_of(t.begin(), t.end(), [](QChar c) { return c.unicode() < 0x100; })) {
                const QByteArray bytes = t.toLatin1();
                words << QString::fromUtf8(bytes.constData(), int(bytes.size()));
            }
        }
        for (const QByteArray& piece : wanted.pieces)
            for (const QByteArray& b : trimmings(piece)) {
                // Sized, as Qt 5's overloads for a QByteArray stop at a NUL.
                words << QString::fromUtf8(b.constData(), int(b.size()))
                      << QString::fromLatin1(b.constData(), int(b.size()))
                      << QString::fromLocal8Bit(b.constData(), int(b.size()));
                // A colour, an address, a number written as text.
                words << QLatin1Char('#') + QString::fromLatin1(b.toHex()).toUpper()
                      << QLatin1Char('#') + QString::fromLatin1(b.toHex());
                QStringList octets;
                for (char c : b)
                    octets << QString::number(static_cast<unsigned char>(c));
                words << octets.join(QLatin1Char('.'));
            }
        for (int length : fillerLengths())
            words << QString(length, QLatin1Char('x'));
        words.removeDuplicates();
        return words;
    }

    // A value whose content the record does not carry, only its length (in a head byte): any
    // value of that length, or one or two shorter (a checksum or an end byte counted with it).
    QVector<int> fillerLengths() const {
        QVector<int> lengths;
        for (const QByteArray& piece : wanted.pieces)
            if (piece.size() == 1)
                for (int less : {0, 1, 2})
                    lengths << std::max(0, static_cast<unsigned char>(piece[0]) - less);
        return lengths;
    }

    static QString unescapedJson(const QString& t) {
        QString text;
        return unquote(QLatin1Char('"') + t + QLatin1Char('"'), text) ? text : t;
    }

    QStringList bytesCandidates() const {
        QStringList words;
        for (const QByteArray& piece : wanted.pieces)
            for (const QByteArray& b : trimmings(piece)) {
                words << QString::fromLatin1(b.toHex());
                // Bytes written into a text as its characters, the text then sent as UTF-8.
                const QString text = QString::fromUtf8(b.constData(), int(b.size()));
                if (std::all_of(text.begin(), text.end(),
                                [](QChar c) { return c.unicode() < 0x100; }))
                    words << QString::fromLatin1(text.toLatin1().toHex());
            }
        static const QRegularExpression number(QStringLiteral("-?\\d+"));
        for (const QString& t : wanted.texts) {
            words << QString::fromLatin1(t.toUtf8().toHex())
                  << QString::fromLatin1(t.toLatin1().toHex());
            // Bytes written as a list of numbers.
            QByteArray listed;
            for (auto m = number.globalMatch(t); m.hasNext();)
                listed += char(m.next().captured().toInt());
            words << QString::fromLatin1(listed.toHex());
        }
        for (int length : fillerLengths())
            words << QString(2 * length, QLatin1Char('0'));
        words.removeDuplicates();
        return words;
    }

    // ---- numbers -------------------------------------------------------------------------------

    // The numbers a reading holds: its bytes read little- and big-endian (up to 4 bytes), and
    // the number each text piece starts with.
    struct Numbers {
        std::optional<unsigned long long> little, big;
        QVector<std::optional<double>> texts;
    };

    static std::optional<double> leadingNumber(const QString& text) {
        static const QRegularExpression number(QStringLiteral("^-?\\d+(?:\\.\\d+)?"));
        const QRegularExpressionMatch m = number.match(text);
        return m.hasMatch() ? std::optional<double>(m.captured().toDouble()) : std::nullopt;
    }

    static Numbers numbersOf(const Captures& c) {
        Numbers n;
        if (!c.bytes.isEmpty() && c.bytes.size() <= 4) {
            unsigned long long little = 0, big = 0;
            for (int b = 0; b < c.bytes.size(); ++b) {
                little |= static_cast<unsigned long long>(static_cast<unsigned char>(c.bytes[b]))
                          << (8 * b);
                big = big << 8 | static_cast<unsigned char>(c.bytes[b]);
            }
            n.little = little;
            n.big = big;
        }
        for (const QString& t : c.texts)
            n.texts << leadingNumber(t);
        // A number written out in a block: its digits as bytes.
        for (const QByteArray& piece : c.pieces)
            if (const auto number = leadingNumber(latin1(piece)))
                n.texts << number;
        return n;
    }

    long long current() const { return valueOf(call, v).toLongLong(); }

    bool inRange(long long x) const { return v.max <= v.min || (x >= v.min && x <= v.max); }

    // Three values near the current one, within range.
    QVector<long long> nearby() const {
        const long long x = current();
        if (inRange(x + 2))
            return {x, x + 1, x + 2};
        return {x - 2, x - 1, x};
    }

    QString integer() {
        QStringList words;
        const QVector<long long> xs = nearby();
        QVector<std::optional<Numbers>> at;
        for (long long x : xs) {
            const auto reading = readingAt(QString::number(x));
            at << (reading ? std::optional<Numbers>(numbersOf(*reading)) : std::nullopt);
        }
        const Numbers want = numbersOf(wanted);
        if (std::all_of(at.begin(), at.end(), [](const auto& n) { return bool(n); })) {
            const int width = int(wanted.bytes.size());
            for (bool little : {true, false}) {
                auto pick = [&](const Numbers& n) { return little ? n.little : n.big; };
                if (pick(want) && pick(*at[0]) && pick(*at[1]) && pick(*at[2]))
                    words << modular(xs, {*pick(*at[0]), *pick(*at[1]), *pick(*at[2])}, *pick(want),
                                     width);
            }
            for (int t = 0; t < want.texts.size(); ++t)
                if (want.texts[t] && at[0]->texts.value(t) && at[1]->texts.value(t) &&
                    at[2]->texts.value(t))
                    words << exact(xs, {*at[0]->texts[t], *at[1]->texts[t], *at[2]->texts[t]},
                                   *want.texts[t]);
        }
        if (const QString found = first(words); !found.isEmpty())
            return found;
        if (const QString found = bitSlices(); !found.isEmpty())
            return found;
        if (const QString found = bisected(); !found.isEmpty())
            return found;
        return swept();
    }

    // x with a*x + c == n (mod 2^(8 width)), from three readings that follow that line.
    QStringList modular(const QVector<long long>& xs, const QVector<unsigned long long>& ns,
                        unsigned long long n, int width) const {
        if (width < 1 || width > 4)
            return {};
        const unsigned long long m = 1ULL << (8 * width), mask = m - 1;
        const unsigned long long a = (ns[1] - ns[0]) & mask;
        const unsigned long long c = (ns[0] - a * static_cast<unsigned long long>(xs[0])) & mask;
        if (a == 0 || ((a * static_cast<unsigned long long>(xs[2]) + c) & mask) != ns[2])
            return {};
        // a = 2^s * odd: solvable when 2^s divides n - c; then x is known modulo m / 2^s.
        int s = 0;
        while (!((a >> s) & 1))
            ++s;
        const unsigned long long rest = (n - c) & mask;
        if (rest & ((1ULL << s) - 1))
            return {};
        const unsigned long long modulus = m >> s;
        const unsigned long long odd = a >> s;
        unsigned long long inverse = 1; // Newton's iteration for the inverse modulo 2^64
        for (int step = 0; step < 6; ++step)
            inverse *= 2 - odd * inverse;
        const unsigned long long x = ((rest >> s) * inverse) & (modulus - 1);
        QStringList words;
        for (long long candidate : {static_cast<long long>(x),
                                    static_cast<long long>(x) - static_cast<long long>(modulus)})
            if (inRange(candidate))
                words << QString::number(candidate);
        return words;
    }

    // x with a*x + c == n over the numbers, from three readings on that line.
    static QStringList exact(const QVector<long long>& xs, const QVector<double>& ns, double n) {
        const double a = ns[1] - ns[0];
        const double c = ns[0] - a * double(xs[0]);
        if (a == 0 || std::abs(a * double(xs[2]) + c - ns[2]) > 1e-6)
            return {};
        const double x = (n - c) / a;
        if (std::abs(x - std::round(x)) > 1e-6)
            return {};
        return {QString::number(static_cast<long long>(std::llround(x)))};
    }

    // Each piece follows a run of the value's bits: the runs are found by flipping one bit at a
    // time, and each piece's run read from it.
    QString bitSlices() {
        const long long x0 = current();
        const auto base = readingAt(QString::number(x0));
        if (!base)
            return QString();
        // The digits: each byte, and each text piece's number.
        auto digits = [](const Captures& c) {
            QVector<double> d;
            for (char b : c.bytes)
                d << static_cast<unsigned char>(b);
            for (const QString& t : c.texts)
                d << leadingNumber(t).value_or(std::nan(""));
            return d;
        };
        const QVector<double> d0 = digits(*base), want = digits(wanted);
        if (d0.isEmpty() || d0.size() != want.size())
            return QString();
        const int bits = v.max > 0 && v.max < INT_MAX ? int(std::log2(double(v.max)) + 1) : 32;
        // A value's bits as a value in range, read as signed where the range takes one.
        auto wrapped = [&](long long x) -> std::optional<long long> {
            const long long low = x & ((1LL << bits) - 1);
            for (long long value : {x, low, low - (1LL << bits)})
                if (inRange(value))
                    return value;
            return std::nullopt;
        };
        QVector<int> low(d0.size(), -1), high(d0.size(), -1);
        QVector<double> step(d0.size(), 0);
        for (int b = 0; b < bits; ++b) {
            const std::optional<long long> flipped = wrapped(x0 ^ (1LL << b));
            const auto reading = flipped ? readingAt(QString::number(*flipped)) : std::nullopt;
            if (!reading)
                continue;
            const QVector<double> d = digits(*reading);
            if (d.size() != d0.size())
                return QString();
            for (int j = 0; j < d.size(); ++j)
                if (d[j] != d0[j]) {
                    if (low[j] < 0) {
                        low[j] = b;
                        step[j] = (d[j] - d0[j]) * (((x0 >> b) & 1) ? -1 : 1);
                    }
                    high[j] = b;
                }
        }
        long long x = x0;
        for (int j = 0; j < d0.size(); ++j) {
            if (low[j] < 0)
                continue;
            if (step[j] == 0 || std::isnan(want[j]))
                return QString();
            const long long width = high[j] - low[j] + 1;
            const long long field = (x0 >> low[j]) & ((1LL << width) - 1);
            const double wanted = field + (want[j] - d0[j]) / step[j];
            if (std::abs(wanted - std::round(wanted)) > 1e-6)
                return QString();
            const long long value = std::llround(wanted) & ((1LL << width) - 1);
            x = (x & ~(((1LL << width) - 1) << low[j])) | (value << low[j]);
        }
        const std::optional<long long> value = wrapped(x);
        return value && fits(QString::number(*value)) ? QString::number(*value) : QString();
    }

    // The reading as one number: its bytes little- or big-endian, or its text's number.
    static std::optional<double> numberOf(const Numbers& n, int order) {
        if (order == 0)
            return n.little ? std::optional<double>(double(*n.little)) : std::nullopt;
        if (order == 1)
            return n.big ? std::optional<double>(double(*n.big)) : std::nullopt;
        return n.texts.isEmpty() ? std::nullopt : n.texts.first();
    }

    // The value found by halving, where the reading rises (or falls) with it.
    QString bisected() {
        for (int order = 0; order < 3; ++order) {
            const std::optional<double> wantedNumber = numberOf(numbersOf(wanted), order);
            if (!wantedNumber)
                continue;
            const double goal = *wantedNumber;
            auto key = [&](long long x) -> std::optional<double> {
                const auto reading = inRange(x) ? readingAt(QString::number(x)) : std::nullopt;
                return reading ? numberOf(numbersOf(*reading), order) : std::nullopt;
            };
            if (const QString found = halvedInteger(key, goal); !found.isEmpty())
                return found;
        }
        return QString();
    }

    template <class Key>
    QString halvedInteger(Key key, double goal) {
        const long long x0 = current();
        const std::optional<double> k0 = key(x0);
        if (!k0)
            return QString();
        // Widen steps away from the current value until the goal lies between.
        for (int direction : {1, -1}) {
            long long lo = x0, span = 1;
            double kLo = *k0;
            for (int tries = 0; tries < 40; ++tries, span *= 2) {
                const long long hi = x0 + direction * span;
                const std::optional<double> kHi = key(hi);
                if (!kHi)
                    break;
                if (!((kLo <= goal && goal <= *kHi) || (*kHi <= goal && goal <= kLo))) {
                    lo = hi;
                    kLo = *kHi;
                    continue;
                }
                long long a = std::min(lo, hi), b = std::max(lo, hi);
                const std::optional<double> ka = key(a), kb = key(b);
                if (!ka || !kb)
                    break;
                const bool rising = *kb >= *ka;
                while (a < b) {
                    const long long mid = a + (b - a) / 2;
                    const std::optional<double> km = key(mid);
                    if (!km)
                        break;
                    if ((*km < goal) == rising)
                        a = mid + 1;
                    else
                        b = mid;
                }
                const QString word = QString::number(a);
                if (fits(word))
                    return word;
                break;
            }
        }
        return QString();
    }

    // Every small value in turn, then the device-type codes the families have: for lookups
    // and choices no line or slope describes.
    QString swept() {
        const long long from = std::max<long long>(v.max > v.min ? v.min : -16, -16);
        const long long to = std::min<long long>(v.max > v.min ? v.max : 300, 300);
        for (long long x = from; x <= to; ++x)
            if (fits(QString::number(x)))
                return QString::number(x);
        for (const Family& family : families())
            for (int code : family.codes)
                if (inRange(code) && fits(QString::number(code)))
                    return QString::number(code);
        return QString();
    }

    // A decimal: on the line the readings follow, or found by halving, written as briefly as
    // the record allows.
    QString decimal() {
        const double x0 = valueOf(call, v).toDouble();
        const Numbers want = numbersOf(wanted);
        for (int order = 0; order < 3; ++order) {
            const std::optional<double> wantedNumber = numberOf(want, order);
            if (!wantedNumber)
                continue;
            const double goal = *wantedNumber;
            auto key = [&](double x) -> std::optional<double> {
                const auto reading = readingAt(QString::number(x, 'g', 17));
                return reading ? numberOf(numbersOf(*reading), order) : std::nullopt;
            };
            if (const QString found = onLine(x0, key, goal); !found.isEmpty())
                return found;
            if (const QString found = halved(x0, key, goal); !found.isEmpty())
                return found;
        }
        return split();
    }

    // A decimal sent as two bytes, its whole part in one and its hundredths (or tenths, or
    // thousandths) in the other, the whole part of a negative one below zero.
    QString split() {
        for (const QByteArray& piece : wanted.pieces) {
            if (piece.size() != 2)
                continue;
            for (int order = 0; order < 2; ++order) {
                const int whole = static_cast<unsigned char>(piece[order]);
                const int part = static_cast<unsigned char>(piece[1 - order]);
                for (int scale : {100, 10, 1000})
                    for (int signedWhole : {whole, whole - 256}) {
                        const double fraction = double(part) / scale;
                        const double x =
                            signedWhole < 0 ? signedWhole - fraction : signedWhole + fraction;
                        if (const QString found = briefest(x); !found.isEmpty())
                            return found;
                    }
            }
        }
        return QString();
    }

    // On the line through three readings.
    template <class Key>
    QString onLine(double x0, Key key, double goal) {
        const auto k0 = key(x0), k1 = key(x0 + 1.25), k2 = key(x0 + 2.5);
        if (!k0 || !k1 || !k2)
            return QString();
        const double a = (*k1 - *k0) / 1.25;
        const double c = *k0 - a * x0;
        if (a == 0 || std::abs(a * (x0 + 2.5) + c - *k2) > 1e-6 * std::max(1.0, std::abs(*k2)))
            return QString();
        return briefest((goal - c) / a);
    }

    // Between values whose readings lie on either side of the goal: away from the current
    // value in one direction, then in the other.
    template <class Key>
    QString halved(double x0, Key key, double goal) {
        const auto k0 = key(x0);
        if (!k0)
            return QString();
        for (int direction : {1, -1}) {
            double lo = x0, hi = x0;
            for (double span = 1; span < 1e9 && hi == x0; span *= 2) {
                const auto k = key(x0 + direction * span);
                if (k && ((*k0 <= goal) != (*k <= goal)))
                    hi = x0 + direction * span;
                else if (k)
                    lo = x0 + direction * span;
            }
            if (hi == x0)
                continue;
            for (int step = 0; step < 64; ++step) {
                const double mid = (lo + hi) / 2;
                const auto k = key(mid), kLo = key(lo);
                if (!k || !kLo)
                    break;
                if ((*k <= goal) == (*kLo <= goal))
                    lo = mid;
                else
                    hi = mid;
            }
            if (const QString found = briefest((lo + hi) / 2); !found.isEmpty())
                return found;
        }
        return QString();
    }

    // The shortest decimal near x that fits.
    QString briefest(double x) {
        for (int decimals = 0; decimals <= 9; ++decimals) {
            const double unit = std::pow(10.0, -decimals);
            for (double near : {x, x + unit, x - unit}) {
                const QString word = QString::number(near, 'f', decimals);
                if (fits(word))
                    return word;
            }
        }
        return QString();
    }

    const Call& call;
    const Shape& shape;
    const Target& target;
    const Variable& v;
    const int i;
    const bool alone;
    Captures wanted;
    QHash<QString, std::optional<Captures>> readings;
};

} // namespace

// ---- the search
// ------------------------------------------------------------------------------------

namespace {

// The lengths a call gives the target's binary parts of record k, and its record count.
QVector<int> lengthsOf(const Run& run, const Target& target, int k) {
    QVector<int> lengths{run.ok ? run.count(target.osd) : -1};
    if (run.queued(target.osd, k))
        for (const Part& p : run.parts(target.osd, k, target))
            lengths << (p.binary ? int(p.value.size()) : 0);
    return lengths;
}

QVector<int> lengthsOf(const Target& target, int records) {
    QVector<int> lengths{records};
    for (const Part& p : target.parts)
        lengths << (p.binary ? int(p.value.size()) : 0);
    return lengths;
}

// A value that may say how many entries a list or a block holds: a list's length, an integer
// argument, or an integer member of a model record itself (not of its entries).
bool isCount(const Variable& v) {
    const bool topMember = v.where == Variable::Model &&
                           !v.path.section(QLatin1Char('.'), 1).contains(QLatin1Char('.')) &&
                           !v.path.contains(QLatin1Char('['));
    return v.kind == args::Kind::Integer &&
           (v.where == Variable::Length || v.where == Variable::Argument || topMember);
}

// A count set on a model record: its lists hold at least that many entries (up to the most
// any block of the protocol has room for).
void growLists(Call& call, const Variable& v, long long size) {
    if (v.where != Variable::Model || size > args::kIntArrayReserve)
        return;
    const QString record = v.path.section(QLatin1Char('.'), 0, 0);
    for (const QString& list : members::lists(call.models, record))
        if (members::children(call.models, list).size() < size)
            members::resize(call.models, list, int(size));
}

} // namespace

bool Solver::fixLengths() {
    Run now = runCall(call);
    if (!now.ok)
        return false;
    bool changed = false;
    for (const Variable& v : variables) {
        if (!isCount(v) ||
            lengthsOf(now, target, k) == lengthsOf(target, std::max(k + 1, now.count(target.osd))))
            continue;
        const long long x0 = valueOf(call, v).toLongLong();
        // Each binary part's length on a line through three values of the count.
        QVector<QVector<int>> seen;
        for (long long x : {x0, x0 + 1, x0 + 2}) {
            Call c = call;
            assign(c, v, QString::number(x));
            growLists(c, v, x);
            seen << lengthsOf(runCall(c), target, k);
        }
        if (seen[0] == seen[1] && seen[1] == seen[2])
            continue;
        const QVector<int> goal = lengthsOf(target, k + 1);
        for (int p = 1; p < goal.size() && p < seen[0].size(); ++p) {
            const int a = seen[1].value(p) - seen[0].value(p);
            if (a == 0 || seen[2].value(p) - seen[1].value(p) != a || goal[p] == seen[0][p])
                continue;
            const long long rest = goal[p] - seen[0][p];
            if (rest % a)
                continue;
            const long long x = x0 + rest / a;
            if (x < 0 || x > 100000 || (v.max > v.min && (x < v.min || x > v.max)))
                continue;
            Call c = call;
            assign(c, v, QString::number(x));
            growLists(c, v, x);
            const Run r = runCall(c);
            if (distance(r, target, k) < distance(now, target, k)) {
                call = c;
                now = r;
                changed = true;
            }
        }
    }
    return changed;
}

QVector<Variable> modelMembers(const Call& call, const Target& target) {
    const Run base = runCall(call);
    auto rendering = [&](const Run& r) {
        QVector<QVector<Part>> all;
        for (int j = 0; r.ok && j < r.count(target.osd); ++j)
            all << r.parts(target.osd, j, target);
        return all;
    };
    const auto seen = rendering(base);
    auto affects = [&](const QStringList& paths) {
        Call c = call;
        for (const QString& path : paths)
            members::shift(c.models, path, 37);
        const Run r = runCall(c);
        return r.ok != base.ok || rendering(r) != seen;
    };
    QVector<Variable> found;
    std::function<void(const QStringList&)> search = [&](const QStringList& paths) {
        if (paths.isEmpty() || !affects(paths))
            return;
        if (paths.size() > 1) {
            search(paths.mid(0, paths.size() / 2));
            search(paths.mid(paths.size() / 2));
            return;
        }
        const members::Leaf leaf = members::at(call.models, paths.first());
        if (leaf.node == members::Node::Number || leaf.node == members::Node::Decimal ||
            leaf.node == members::Node::Text)
            found << Variable{Variable::Model,
                              -1,
                              -1,
                              paths.first(),
                              leaf.node == members::Node::Number    ? args::Kind::Integer
                              : leaf.node == members::Node::Decimal ? args::Kind::Decimal
                                                                    : args::Kind::Text,
                              leaf.min,
                              leaf.max};
        else
            search(members::children(call.models, paths.first()));
    };
    QStringList roots;
    for (const QString& record : call.op->modelRecords())
        roots << members::children(call.models, record);
    search(roots);
    return found;
}

// A list's length or a record's count, once the record has the target's lengths, is settled:
// its probes would only blur the pieces of the values it counts.
QVector<Variable> Solver::unsettled() const {
    const Run now = runCall(call);
    const QVector<int> lengths = lengthsOf(now, target, k);
    if (lengths != lengthsOf(target, std::max(k + 1, now.count(target.osd))))
        return variables;
    // A count moves the lengths one step up and one down; a number written in digits moves
    // them only where it gains or loses one.
    auto counts = [&](const Variable& v) {
        const long long x = valueOf(call, v).toLongLong();
        int moved = 0, ran = 0;
        for (long long step : {x + 1, x - 1}) {
            Call c = call;
            if (!assign(c, v, QString::number(step)))
                continue;
            const Run r = runCall(c);
            ran += r.ok;
            moved += r.ok && lengthsOf(r, target, k) != lengths;
        }
        return ran > 0 && moved == ran;
    };
    QVector<Variable> kept;
    for (const Variable& v : variables)
        if (!((pastTheEnd(call, v) || (isCount(v) && v.where != Variable::Argument)) && counts(v)))
            kept << v;
    return kept;
}

bool Solver::solveRound() {
    bool changed = false;
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
        if (!cut(shape, r.parts(target.osd, k, target), got))
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
    long long now = measure(runCall(call));
    // A word read off the value's own pieces is kept unless more pieces differ with it: a
    // checksum that another value still spoils may differ in more bits.
    auto tryWord = [&](int i, const QString& word, bool read = false) {
        if (word == valueOf(call, variables[i]))
            return false;
        Call c = call;
        if (!assign(c, variables[i], word))
            return false;
        const long long d = measure(runCall(c));
        const bool asClose =
            read && d < kFar && now < kFar && (d >> 32) > 0 && (d >> 32) <= (now >> 32);
        if (d >= now && !asClose)
            return false;
        call = c;
        now = d;
        return true;
    };
    // A value that no word of its own brings to the record is moved where the record comes
    // closest: another value may choose another command or form, or which value is read.
    auto closer = [&](int i) {
        QStringList words = probesOf(call, variables[i]);
        if (variables[i].kind == args::Kind::Integer || variables[i].kind == args::Kind::Boolean)
            for (int x = -1; x <= 16; ++x)
                words << QString::number(x);
        // A value compared with a device-type code (or the local address with its setting
        // "Default") chooses by it.
        if (variables[i].kind == args::Kind::Integer && variables[i].where == Variable::Utility)
            for (const Family& family : families())
                for (int code : family.codes)
                    words << QString::number(code);
        if (variables[i].kind == args::Kind::Text && variables[i].where == Variable::Utility)
            words << QStringLiteral("Default");
        bool moved = false;
        for (const QString& word : words)
            moved |= tryWord(i, word);
        // Lists read in pairs count as the shorter: their lengths move together.
        for (int x = 0; variables[i].where == Variable::Length && x <= 64; ++x) {
            Call c = call;
            for (const Variable& v : variables)
                if (v.where == Variable::Length)
                    assign(c, v, QString::number(x));
            const long long d = measure(runCall(c));
            if (d < now) {
                call = c;
                now = d;
                moved = true;
            }
        }
        return moved;
    };
    for (bool alone : {true, false})
        for (int i = 0; i < variables.size() && now > 0; ++i) {
            // Where the constants differ, any value may be the one that chooses.
            if (!reachesAny(shape, i, alone) && (cutWhole || alone))
                continue;
            const std::optional<QString> word =
                cutWhole ? VariableSolver(call, shape, target, variables, i, alone).solve()
                         : std::nullopt;
            // A word read that brings the record no closer was read off the wrong pieces.
            if (word && *word == valueOf(call, variables[i]))
                continue;
            if (word && tryWord(i, *word, alone)) {
                changed = true;
                continue;
            }
            changed |= closer(i);
        }
    return changed;
}

bool Solver::solve() {
    for (int round = 0; round < kRounds; ++round) {
        if (distance(runCall(call), target, k) == 0)
            return true;
        bool changed = fixLengths();
        variables = variablesOf(call); // a list's elements follow its length
        if (!call.op->modelRecords().isEmpty())
            variables += modelMembers(call, target);
        changed |= solveRound();
        if (!changed)
            break;
    }
    return distance(runCall(call), target, k) == 0;
}

Solver::Solver(const Call& start, const Target& target, int k)
    : call(start), target(target), k(k), variables(variablesOf(start)) {
    // A text or bytes value that is empty would land nowhere: give it something to show.
    for (const Variable& v : variables)
        if ((v.kind == args::Kind::Text || v.kind == args::Kind::Bytes) &&
            v.where != Variable::Utility && valueOf(call, v).isEmpty())
            assign(call, v,
                   v.kind == args::Kind::Text ? QStringLiteral("ab") : QStringLiteral("0a0b"));
}

long long Solver::distanceNow() const { return distance(runCall(call), target, k); }

} // namespace engine::detail
