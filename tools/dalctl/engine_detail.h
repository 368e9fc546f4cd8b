#pragma once

// The engine's own parts, shared by its units: values, shapes, solving and the survey.
#include "engine.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <functional>

namespace engine::detail {

// Every byte, NULs included: Qt 5's overload for a QByteArray stops at the first NUL.
inline QString latin1(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.constData(), int(bytes.size()));
}

// Characters that read as a text: printable ASCII only.
inline bool printable(const QString& text) {
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0x7f; });
}

// Everything a call queued, in the order of its records.
struct Run {
    bool ok = false; // false: the call refused its words
    Outcome outcome;

    int count(bool osd) const {
        return osd ? int(outcome.osdRecords.size()) : int(outcome.records.size());
    }
    // Whether the call queued a record k.
    bool queued(bool osd, int k) const { return ok && count(osd) > k; }
    QVector<Part> parts(bool osd, int k, const Target& shape) const {
        return osd ? partsOf(outcome.osdRecords[k], shape) : partsOf(outcome.records[k], shape);
    }
};

// Runs a call, quietly; counts the runs for the benchmarks.
Run runCall(const Call& call);

// The values a call reads besides model members: its arguments (list arguments element by
// element, JSON arguments member by member) and the utility's values.
QVector<Variable> variablesOf(const Call& call);
// An element of a list argument past the list's end, which reads as zero.
bool pastTheEnd(const Call& call, const Variable& v);

// ---- shapes: where each value lands in one record
// -------------------------------------------------

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
    int record = 0;  // which record of the call
    int records = 0; // how many it queues
    QVector<PartShape> parts;
};

// Renders record k of `call` with each variable changed in turn and cuts its parts into the
// pieces the variables reach. Empty parts when the call does not queue record k.
Shape shapeOf(const Call& call, const QVector<Variable>& variables, int k, const Target& target);
// Values for a variable to probe with, beside its current one.
QStringList probesOf(const Call& call, const Variable& v);

// Parts (the target's, or another call's) cut like the shape's: each piece's text, per part;
// false when the constants do not match.
bool cut(const Shape& shape, const QVector<Part>& parts, QVector<QStringList>& pieces);

// ---- which operations to try
// ---------------------------------------------------------------------

// An operation that may queue the target on a family, and the call to start from.
struct Candidate {
    const Operation* op;
    Call start;
    int record; // which of its records, from 0
};
QVector<Candidate> candidatesFor(const Target& target, const Family& family);
// Where the command (CMD, or the OSD marker) starts in a head part: "command", "head" or
// "header"; -1 for a part that is no head.
int commandStart(const QString& part);
// Whether a record with this device type went to the family.
bool sentTo(int deviceType, const Family& family);

// ---- solving
// ---------------------------------------------------------------------------------------

// How far a record is from the target: 0 when they match.
long long distance(const QVector<Part>& got, const Target& target);
long long distance(const Run& run, const Target& target, int k);

// The members of the call's model records that reach its records.
QVector<Variable> modelMembers(const Call& call, const Target& target);

// Finds the values with which a call queues the target as its record k: the counts that give
// the record its length first, then each value from where it lands, round after round until
// the record matches or nothing changes.
class Solver {
public:
    Solver(const Call& start, const Target& target, int k);
    bool solve();
    long long distanceNow() const;
    const Call& result() const { return call; }

private:
    bool fixLengths();
    QVector<Variable> unsettled() const;
    bool solveRound();

    Call call;
    const Target& target;
    int k;
    QVector<Variable> variables;
};

} // namespace engine::detail
