#pragma once

// The engine's own parts, shared by its units: values and the one probe, layouts, solving, the
// survey and answers.
#include "engine.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <functional>
#include <map>

namespace engine::detail {

using args::Kind;

// A part read as a text: a text, or a block that prints as one (printable ASCII only).
inline bool asText(const Part& part) {
    return !part.binary || std::all_of(part.value.begin(), part.value.end(), [](QChar c) {
        return c.unicode() >= 0x20 && c.unicode() < 0x7f;
    });
}

// Bytes as one number, little-endian or big-endian.
inline unsigned long long numberOf(QByteArray bytes, bool little) {
    if (little)
        std::reverse(bytes.begin(), bytes.end());
    unsigned long long n = 0;
    for (char b : bytes)
        n = n << 8 | static_cast<unsigned char>(b);
    return n;
}

// How many characters two texts share at their start, and then, past those, at their end.
inline std::pair<int, int> commonEnds(const QString& a, const QString& b) {
    int prefix = 0, suffix = 0;
    while (prefix < a.size() && prefix < b.size() && a[prefix] == b[prefix])
        ++prefix;
    while (suffix < a.size() - prefix && suffix < b.size() - prefix &&
           a[a.size() - 1 - suffix] == b[b.size() - 1 - suffix])
        ++suffix;
    return {prefix, suffix};
}

// ---- values
// ----------------------------------------------------------------------------------------

// A value a call reads: an argument, an element of a list argument or its length, a member of
// a JSON argument, a member of a model record, or a value of the utility library.
struct Variable {
    enum Where { Argument, Element, Length, Member, Model, Utility };
    Where where = Argument;
    int argument = -1; // Argument, Element, Length, Member
    int index = -1;    // Element
    QString path;      // Member: the JSON member; Model: the member's path; Utility: the option
    Kind kind = Kind::Integer;
    long long min = 0;
    long long max = 0;

    // As an answer names it: "scene", "banks[2]", "obj.status", "scene.sceneList[1]...",
    // "userId".
    QString name(const Operation& op) const;
    bool inRange(long long x) const { return max <= min || (x >= min && x <= max); }
};
QString valueOf(const Call& call, const Variable& v);
// The call with the value changed; nothing when the value cannot take the word.
std::optional<Call> changed(const Call& call, const Variable& v, const QString& word);

// The values a call reads besides model members: its arguments (list arguments element by
// element, JSON arguments member by member) and the utility's values.
QVector<Variable> variablesOf(const Call& call);
// The members of the call's model records that reach its records, as the target compares them.
QVector<Variable> modelMembers(const Call& call, const Target& target);
// An element of a list argument past the list's end, which reads as zero.
bool pastTheEnd(const Call& call, const Variable& v);

// ---- the one probe
// ----------------------------------------------------------------------------------

// Everything a call queued; `ok` false when it refused its words.
struct Run {
    bool ok = false;
    Outcome outcome;

    int count() const { return outcome.count(); }
    // The parts of record k that the target names; nothing when there is no such record.
    std::optional<Parts> parts(int k, const Target& shape) const {
        return ok && count() > k ? outcome.parts(k, shape.parts) : std::nullopt;
    }
};

// What a call queues. The engine's one question, what parts a call gives with a value set to
// another, is asked through this: every run is kept by the call's key, so asking again costs a
// lookup.
Run runOf(const Call& call);
// The parts record k gives with `v` set to `word`; nothing when the value cannot take it, the
// call refuses it or queues no record k.
std::optional<Parts> probe(const Call& call, const Variable& v, const QString& word, int k,
                           const Target& shape);

// ---- the values the engine tries
// --------------------------------------------------------------------

// What the engine tries for one kind of value.
struct Hints {
    QStringList surveyed; // by a survey, beside the sample: small values, a byte's edges, large
    QStringList nearby;   // where no reading brings a value to the record: the values tried
    QString filler;       // what an empty value starts from, so that it lands somewhere
    QString longer;       // appended to see whether the record holds more of the value
};
const Hints& hintsOf(Kind kind);
// Values for a variable to probe with, beside its current one: one reaches every place the
// value can, the others stay near it.
QStringList probesOf(const Call& call, const Variable& v);
// How far model members move to see whether they reach a record, and the steps a survey moves
// the built-in models by (a little, a lot).
constexpr int kMemberStep = 37;
constexpr int kModelSteps[] = {kMemberStep, 0x5A5A};
// A number and a text the utility's values are set to in a survey, beside the device-type codes
// and the local address setting that some values are compared with.
const QString kUtilityNumber = QStringLiteral("37");
const QString kUtilityText = QStringLiteral("Zq1.0");
const QString kDefaultAddress = QStringLiteral("Default");
// Every device-type code the library tells apart, as words.
QStringList deviceCodeWords();

// ---- layouts: where each value lands in one record
// -------------------------------------------------------------------------------

// One run of characters of a part that the same values produced; no owners: a constant.
struct Piece {
    int from;
    int to;              // one past the last
    QVector<int> owners; // indexes into the variables
    bool resizes;        // other values give it another width
};

// A part of one record as a call rendered it, cut into constants and the values' pieces.
struct PartShape {
    Part part;
    QVector<Piece> pieces;
    QRegularExpression pattern; // matches a part cut alike, a group per owned piece
};

struct Shape {
    int record = 0; // which record of the call
    QVector<PartShape> parts;
};

// Renders record k of `call` with each variable changed in turn and cuts its parts into the
// pieces the variables reach. Empty parts when the call does not queue record k.
Shape shapeOf(const Call& call, const QVector<Variable>& variables, int k, const Target& target);
// Parts (the target's, or another call's) cut like the shape's: each piece's text, per part;
// false when the constants do not match.
bool cut(const Shape& shape, const Parts& parts, QVector<QStringList>& pieces);
// The ranges of `a` that differ from `b`, each as [from, to) in `a`, and whether the range has
// another width in `b`. Common ends are set aside; the middle is aligned by its longest common
// subsequence where it is small enough, else taken as changed whole. Bytes of one length are
// compared in place, texts that differ only in their numbers number by number.
struct Change {
    int from;
    int to;
    bool resized;
};
QVector<Change> changes(const QString& a, const QString& b, bool bytes);

// ---- the fixed ends
// ----------------------------------------------------------------------------------

// What every run of a branch renders alike in one part: of a head, only the command (CMD and
// DAT1, or the OSD marker and command) where no run changed it, as a value that no run changed
// may still reach the other bytes; of other parts, the start and end every run shares.
struct Ends {
    bool none = true;   // no run queued the record
    bool empty = true;  // every run left the part empty
    int size = -1;      // a head's size, the same in every run (-2: sizes differ)
    QString fixed;      // a head's command bytes as the first run renders them...
    QVector<bool> held; // ...and where every run agrees
    QString prefix, suffix;
    std::optional<CommandBytes> command; // of a head: where its command bytes are
};
Ends endsOf(const QStringList& renderings, const QString& part);
// Whether the target's part starts and ends as every run of the branch renders it.
bool endsFit(const Ends& e, const Part& part);

// ---- which operations to try
// ---------------------------------------------------------------------

// An operation that may queue the target on a device, and the calls to start from, the one
// whose record comes closest first.
struct Candidate {
    const Operation* op;
    QVector<Call> starts;
    int record; // which of its records, from 0
};
QVector<Candidate> candidatesFor(const Target& target, const Device& device);
// How many runs of a branch a search may start from, and how near a record must come from the
// first for the next to be tried: a value that chooses the form may hide the others.
constexpr int kStarts = 3;
constexpr long long kNearMiss = 16;
// Whether a record with this device type went to the family (an OSD record has none).
bool sentTo(std::optional<int> deviceType, const Family& family);

// ---- solving
// ---------------------------------------------------------------------------------------

// How far a record is from the target: 0 when they match.
long long distance(const Parts& got, const Target& target);
long long distance(const Run& run, const Target& target, int k);

// Finds the values with which a call queues the target as its record k: the counts that give
// the record its length first, then each value from where it lands, round after round until
// the record matches or nothing changes. The call it came to: the target's at distance 0.
Call solved(const Call& start, const Target& target, int k);

// The x where the line through three readings reaches `goal`: over the numbers, or, for `bits`
// above 0, modulo 2^bits, where several x may (each period apart; the first two are given).
// Nothing when the readings lie on no line.
QVector<double> onLine(const double xs[3], const double ys[3], double goal, int bits);
// Whether a piece is variable i's: alone, one it makes by itself (a model member: with no other
// member, though an argument may have chosen which member it is), else one it helps make.
bool reaches(const Piece& piece, const QVector<Variable>& variables, int i, bool alone);
// A word that gives variable `i`'s pieces what the target holds there (alone: the pieces it
// alone makes), if one is found.
std::optional<QString> solveVariable(const Call& call, const Shape& shape, const Target& target,
                                     const QVector<Variable>& variables, int i, bool alone);

} // namespace engine::detail
