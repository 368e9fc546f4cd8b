// Reading one value off the target: the pieces the value reaches hold what it became, and the
// word that gives them that is found from readings of the call at other words: texts and bytes
// from what the pieces copy, numbers on the line their readings follow, by their bits, by
// halving, or by trying each small value.
#include "engine_detail.h"

#include <bitset>
#include <cmath>

namespace engine::detail {

namespace {

// The texts of the pieces a variable reaches: alone (owned by it only) or with others.
struct Captures {
    QByteArray bytes;           // of binary pieces, in order
    QVector<QByteArray> pieces; // each binary piece
    QStringList texts;          // of text pieces, in order
    QStringList numbers;        // the numbers of each part's text pieces, joined by dots
    bool operator==(const Captures& o) const { return bytes == o.bytes && texts == o.texts; }
};

// The numbers a text holds, in order, a leading minus included: whole numbers only, or with
// their decimals.
QVector<double> numbersIn(const QString& text, bool decimals) {
    static const QRegularExpression whole(QStringLiteral("-?\\d+"));
    static const QRegularExpression decimal(QStringLiteral("-?\\d+(?:\\.\\d+)?"));
    QVector<double> found;
    for (auto m = (decimals ? decimal : whole).globalMatch(text); m.hasNext();)
        found << m.next().captured().toDouble();
    return found;
}

Captures capturesOf(const Shape& shape, const QVector<QStringList>& cutParts,
                    const QVector<Variable>& variables, int i, bool alone) {
    Captures c;
    for (int p = 0; p < shape.parts.size(); ++p) {
        QStringList numbers;
        for (int j = 0; j < shape.parts[p].pieces.size(); ++j) {
            if (!reaches(shape.parts[p].pieces[j], variables, i, alone))
                continue;
            // A block may hold a text (it prints as one), whose numbers are read as a text's.
            const QString& piece = cutParts[p][j];
            if (asText(shape.parts[p].part)) {
                c.texts << piece;
                for (double n : numbersIn(piece, false))
                    numbers << QString::number(n);
            } else {
                c.pieces << piece.toLatin1();
                c.bytes += c.pieces.last();
            }
        }
        if (numbers.size() > 1)
            c.numbers << numbers.join(QLatin1Char('.'));
    }
    return c;
}

// The number a text starts with.
std::optional<double> leadingNumber(const QString& text) {
    const QVector<double> n = numbersIn(text, true);
    static const QRegularExpression start(QStringLiteral("\\A-?\\d"));
    return n.isEmpty() || !start.match(text).hasMatch() ? std::nullopt
                                                        : std::optional<double>(n.first());
}

// What a reading says as numbers: its bytes read little- and big-endian (up to 4 bytes), and the
// number each text piece starts with (a number written out in a block too).
struct Numbers {
    std::optional<double> little, big;
    QVector<std::optional<double>> texts;

    explicit Numbers(const Captures& c) {
        if (!c.bytes.isEmpty() && c.bytes.size() <= 4) {
            little = double(numberOf(c.bytes, true));
            big = double(numberOf(c.bytes, false));
        }
        for (const QString& t : c.texts)
            texts << leadingNumber(t);
        for (const QByteArray& piece : c.pieces)
            if (const auto n = leadingNumber(latin1(piece)))
                texts << n;
    }
    // The reading as one number: its bytes little- or big-endian, or a text's number.
    std::optional<double> in(int order) const {
        return order == 0 ? little : order == 1 ? big : texts.value(order - 2);
    }
};

// One variable read off the target, the others kept.
class Reader {
public:
    Reader(const Call& call, const Shape& shape, const Target& target,
           const QVector<Variable>& variables, int i, bool alone)
        : call(call), shape(shape), target(target), variables(variables), v(variables[i]), i(i),
          alone(alone) {
        QVector<QStringList> pieces;
        cut(shape, target.parts, pieces);
        wanted = capturesOf(shape, pieces, variables, i, alone);
    }

    std::optional<QString> solve() {
        switch (v.kind) {
        case Kind::Text:
            return anyFitting(shortestFirst(textCandidates()));
        case Kind::Bytes:
            return anyFitting(shortestFirst(bytesCandidates()));
        case Kind::Boolean:
            return anyFitting({QStringLiteral("true"), QStringLiteral("false")});
        case Kind::Decimal:
            return decimal();
        default:
            return integer();
        }
    }

private:
    std::optional<Captures> readingAt(const QString& word) {
        const auto known = readings.constFind(word);
        if (known != readings.constEnd())
            return *known;
        std::optional<Captures> reading;
        QVector<QStringList> pieces;
        if (const auto parts = probe(call, v, word, shape.record, target);
            parts && cut(shape, *parts, pieces))
            reading = capturesOf(shape, pieces, variables, i, alone);
        readings.insert(word, reading);
        return reading;
    }

    bool fits(const QString& word) {
        const auto reading = readingAt(word);
        return reading && *reading == wanted;
    }

    std::optional<QString> anyFitting(const QStringList& words) {
        for (const QString& word : words)
            if (fits(word))
                return word;
        return std::nullopt;
    }

    // ---- texts and bytes -----------------------------------------------------------------------

    // Where several words give the record, the shortest says no more than it holds.
    static QStringList shortestFirst(QStringList words) {
        words.removeDuplicates();
        std::stable_sort(words.begin(), words.end(),
                         [](const QString& a, const QString& b) { return a.size() < b.size(); });
        return words;
    }

    // A binary piece as it may hold a value: whole, without its last byte or two (a checksum
    // the value's piece runs into), without the zeros that pad it.
    static QVector<QByteArray> trimmings(const QByteArray& piece) {
        QVector<QByteArray> all{piece, piece.left(piece.size() - 1), piece.left(piece.size() - 2)};
        for (int j = 0; j < 3; ++j) {
            QByteArray trimmed = all[j];
            while (trimmed.endsWith('\0'))
                trimmed.chop(1);
            all << trimmed;
        }
        return all;
    }

    // The value's binary pieces, and all of them together where it reaches several: a piece
    // others share (a checksum) may cut a value in two.
    QVector<QByteArray> runs() const {
        return wanted.pieces.size() > 1 ? wanted.pieces + QVector<QByteArray>{wanted.bytes}
                                        : wanted.pieces;
    }

    static bool latin1Only(const QString& t) {
        return std::all_of(t.begin(), t.end(), [](QChar c) { return c.unicode() < 0x100; });
    }

    QStringList textCandidates() const {
        QStringList words;
        for (const QString& t : wanted.texts) {
            QString unescaped;
            words << t
                  << (unquote(QLatin1Char('"') + t + QLatin1Char('"'), unescaped) ? unescaped : t);
            if (latin1Only(t)) {
                const QByteArray bytes = t.toLatin1();
                words << QString::fromUtf8(bytes.constData(), int(bytes.size()));
            }
        }
        for (const QByteArray& piece : runs()) {
            const QVector<QByteArray> ways = trimmings(piece);
            for (int way = 0; way < ways.size(); ++way) {
                const QByteArray& b = ways[way];
                // Sized, as Qt 5's overloads for a QByteArray stop at a NUL.
                words << QString::fromUtf8(b.constData(), int(b.size()))
                      << QString::fromLatin1(b.constData(), int(b.size()))
                      << QString::fromLocal8Bit(b.constData(), int(b.size()));
                // A colour, a number written as text; an address, whose zeros are its own.
                words << QLatin1Char('#') + QString::fromLatin1(b.toHex()).toUpper()
                      << QLatin1Char('#') + QString::fromLatin1(b.toHex());
                QStringList octets;
                for (char c : b)
                    octets << QString::number(static_cast<unsigned char>(c));
                if (way < 3)
                    words << octets.join(QLatin1Char('.'));
            }
        }
        // An address, written out as its numbers.
        words << wanted.numbers;
        for (int length : fillerLengths())
            words << QString(length, QLatin1Char('x'));
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

    QStringList bytesCandidates() const {
        QStringList words;
        for (const QByteArray& piece : runs())
            for (const QByteArray& b : trimmings(piece)) {
                words << QString::fromLatin1(b.toHex());
                // Bytes written into a text as its characters, the text then sent as UTF-8.
                const QString text = QString::fromUtf8(b.constData(), int(b.size()));
                if (latin1Only(text))
                    words << QString::fromLatin1(text.toLatin1().toHex());
            }
        for (const QString& t : wanted.texts) {
            words << QString::fromLatin1(t.toUtf8().toHex())
                  << QString::fromLatin1(t.toLatin1().toHex());
            // Bytes written as a list of numbers.
            QByteArray listed;
            for (double n : numbersIn(t, false))
                listed += char(std::abs(n) <= INT_MAX ? static_cast<int>(n) : 0);
            words << QString::fromLatin1(listed.toHex());
        }
        for (int length : fillerLengths())
            words << QString(2 * length, QLatin1Char('0'));
        return words;
    }

    // ---- numbers -------------------------------------------------------------------------------

    long long current() const { return valueOf(call, v).toLongLong(); }

    // The reading at x as one number (see Numbers::in); an integer out of range reads as none.
    std::optional<double> numberAt(double x, int order, bool integral) {
        const QString word =
            integral ? QString::number(static_cast<long long>(x)) : QString::number(x, 'g', 17);
        const auto reading =
            !integral || v.inRange(static_cast<long long>(x)) ? readingAt(word) : std::nullopt;
        return reading ? Numbers(*reading).in(order) : std::nullopt;
    }

    // Where the line through the readings at three values reaches what the target holds.
    QVector<double> alongLine(const double xs[3], int order, bool integral, int bits) {
        const std::optional<double> goal = Numbers(wanted).in(order);
        double ys[3];
        for (int j = 0; j < 3; ++j) {
            const auto y = goal ? numberAt(xs[j], order, integral) : std::nullopt;
            if (!y)
                return {};
            ys[j] = *y;
        }
        return onLine(xs, ys, *goal, bits);
    }

    std::optional<QString> integer() {
        // Three values near the current one, within range, and the line their readings follow.
        const long long x = current();
        const long long x0 = v.inRange(x + 2) ? x : x - 2;
        const double xs[] = {double(x0), double(x0 + 1), double(x0 + 2)};
        QStringList words;
        for (int order = 0; order < 2 + Numbers(wanted).texts.size(); ++order) {
            const bool text = order >= 2;
            for (double found : alongLine(xs, order, true, text ? 0 : 8 * int(wanted.bytes.size())))
                if (!text ? v.inRange(static_cast<long long>(found))
                          : std::abs(found - std::round(found)) <= 1e-6)
                    words << QString::number(static_cast<long long>(std::llround(found)));
        }
        if (const auto found = anyFitting(words))
            return found;
        if (const auto found = bitSlices())
            return found;
        for (int order = 0; order < 3; ++order)
            if (const auto found = halved(order, true))
                return found;
        return swept();
    }

    // Each piece follows a run of the value's bits: the runs are found by flipping one bit at a
    // time, and each piece's run read from it.
    std::optional<QString> bitSlices() {
        const long long x0 = current();
        const auto base = readingAt(QString::number(x0));
        if (!base)
            return std::nullopt;
        // The digits: each byte, and each number of each text piece.
        auto digits = [](const Captures& c) {
            QVector<double> d;
            for (char b : c.bytes)
                d << static_cast<unsigned char>(b);
            for (const QString& t : c.texts)
                d << numbersIn(t, true);
            return d;
        };
        const QVector<double> d0 = digits(*base), want = digits(wanted);
        if (d0.isEmpty() || d0.size() != want.size())
            return std::nullopt;
        const int bits = v.max > 0 && v.max < INT_MAX ? int(std::log2(double(v.max)) + 1) : 32;
        // A value's bits as a value in range, read as signed where the range takes one.
        auto wrapped = [&](long long x) -> std::optional<long long> {
            const long long low = x & ((1LL << bits) - 1);
            for (long long value : {x, low, low - (1LL << bits)})
                if (v.inRange(value))
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
                return std::nullopt;
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
                return std::nullopt;
            const long long width = high[j] - low[j] + 1;
            const long long field = (x0 >> low[j]) & ((1LL << width) - 1);
            const double goal = field + (want[j] - d0[j]) / step[j];
            if (std::abs(goal - std::round(goal)) > 1e-6)
                return std::nullopt;
            const long long value = std::llround(goal) & ((1LL << width) - 1);
            x = (x & ~(((1LL << width) - 1) << low[j])) | (value << low[j]);
        }
        const std::optional<long long> value = wrapped(x);
        return value && fits(QString::number(*value))
                   ? std::optional<QString>(QString::number(*value))
                   : std::nullopt;
    }

    // Halving between values whose readings lie on either side of the goal: steps away from the
    // current value, doubling, one way and then the other, until the goal lies between; then
    // halving down to one unit for an integer, to the double's precision for a decimal.
    std::optional<QString> halved(int order, bool integral) {
        const std::optional<double> goal = Numbers(wanted).in(order);
        if (!goal)
            return std::nullopt;
        auto key = [&](double x) { return numberAt(x, order, integral); };
        const double x0 = integral ? double(current()) : valueOf(call, v).toDouble();
        std::optional<double> kLo = key(x0);
        if (!kLo)
            return std::nullopt;
        for (int direction : {1, -1}) {
            double lo = x0, span = 1;
            kLo = key(x0);
            for (int tries = 0; tries < 40; ++tries, span *= 2) {
                const double hi = x0 + direction * span;
                const std::optional<double> kHi = key(hi);
                if (!kHi)
                    break;
                if (!((*kLo <= *goal && *goal <= *kHi) || (*kHi <= *goal && *goal <= *kLo))) {
                    lo = hi;
                    kLo = kHi;
                    continue;
                }
                double a = std::min(lo, hi), b = std::max(lo, hi);
                const auto ka = key(a), kb = key(b);
                if (!ka || !kb)
                    break;
                const bool rising = *kb >= *ka;
                for (int step = 0; step < 64 && (!integral || a < b); ++step) {
                    const double mid = integral ? a + std::floor((b - a) / 2) : (a + b) / 2;
                    const auto km = key(mid);
                    if (!km)
                        break;
                    if ((*km < *goal) == rising)
                        a = integral ? mid + 1 : mid;
                    else
                        b = mid;
                }
                if (integral && fits(QString::number(static_cast<long long>(a))))
                    return QString::number(static_cast<long long>(a));
                if (!integral)
                    if (const auto found = briefest((a + b) / 2))
                        return found;
                break;
            }
        }
        return std::nullopt;
    }

    // Every small value in turn, then the device-type codes the library tells apart: for lookups
    // and choices no line or slope describes.
    std::optional<QString> swept() {
        const long long from = std::max<long long>(v.max > v.min ? v.min : -16, -16);
        const long long to = std::min<long long>(v.max > v.min ? v.max : 300, 300);
        for (long long x = from; x <= to; ++x)
            if (fits(QString::number(x)))
                return QString::number(x);
        for (const QString& code : deviceCodeWords())
            if (v.inRange(code.toLongLong()) && fits(code))
                return code;
        return std::nullopt;
    }

    // A decimal: on the line the readings follow, or found by halving, written as briefly as
    // the record allows.
    std::optional<QString> decimal() {
        const double x0 = valueOf(call, v).toDouble();
        const double xs[] = {x0, x0 + 1.25, x0 + 2.5};
        for (int order = 0; order < 3; ++order) {
            for (double found : alongLine(xs, order, false, 0))
                if (const auto word = briefest(found))
                    return word;
            if (const auto found = halved(order, false))
                return found;
        }
        return split();
    }

    // A decimal sent as two bytes, its whole part in one and its hundredths (or tenths, or
    // thousandths) in the other, the whole part of a negative one below zero.
    std::optional<QString> split() {
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
                        if (const auto found = briefest(x))
                            return found;
                    }
            }
        }
        return std::nullopt;
    }

    // The shortest decimal near x that fits.
    std::optional<QString> briefest(double x) {
        for (int decimals = 0; decimals <= 9; ++decimals) {
            const double unit = std::pow(10.0, -decimals);
            for (double near : {x, x + unit, x - unit}) {
                const QString word = QString::number(near, 'f', decimals);
                if (fits(word))
                    return word;
            }
        }
        return std::nullopt;
    }

    const Call& call;
    const Shape& shape;
    const Target& target;
    const QVector<Variable>& variables;
    const Variable& v;
    const int i;
    const bool alone;
    Captures wanted;
    QHash<QString, std::optional<Captures>> readings;
};

} // namespace

QVector<double> onLine(const double xs[3], const double ys[3], double goal, int bits) {
    if (bits <= 0) {
        const double a = (ys[1] - ys[0]) / (xs[1] - xs[0]);
        const double c = ys[0] - a * xs[0];
        if (a == 0 || std::abs(a * xs[2] + c - ys[2]) > 1e-6 * std::max(1.0, std::abs(ys[2])))
            return {};
        return {(goal - c) / a};
    }
    using U = unsigned long long;
    const U mask = (U(1) << bits) - 1;
    const U a = (U(ys[1]) - U(ys[0])) & mask;
    const U c = (U(ys[0]) - a * U(static_cast<long long>(xs[0]))) & mask;
    if (a == 0 || ((a * U(static_cast<long long>(xs[2])) + c) & mask) != U(ys[2]))
        return {};
    // a = 2^s * odd: solvable when 2^s divides goal - c; then x is known modulo 2^(bits - s).
    int s = 0;
    while (!((a >> s) & 1))
        ++s;
    const U rest = (U(goal) - c) & mask;
    if (rest & ((U(1) << s) - 1))
        return {};
    const U period = (mask + 1) >> s, odd = a >> s;
    U inverse = 1; // Newton's iteration for the inverse modulo 2^64
    for (int step = 0; step < 6; ++step)
        inverse *= 2 - odd * inverse;
    const U x = ((rest >> s) * inverse) & (period - 1);
    return {double(x), double(x) - double(period)};
}

bool reaches(const Piece& piece, const QVector<Variable>& variables, int i, bool alone) {
    return piece.owners.contains(i) &&
           (!alone || std::all_of(piece.owners.begin(), piece.owners.end(), [&](int o) {
               return o == i || (variables[i].where == Variable::Model &&
                                 variables[o].where != Variable::Model);
           }));
}

std::optional<QString> solveVariable(const Call& call, const Shape& shape, const Target& target,
                                     const QVector<Variable>& variables, int i, bool alone) {
    return Reader(call, shape, target, variables, i, alone).solve();
}

} // namespace engine::detail
