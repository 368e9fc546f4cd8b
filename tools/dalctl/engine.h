#pragma once

#include "records.h"
#include "session.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

// What dalctl knows of the bytes of every operation, with the library as the oracle: an
// operation is taken to send a record only when calling it, on the record's family, with the
// values read off the record queues exactly that record. Values are read by running the
// operation with other values and seeing where they land. explain, decode and doc read this
// one engine.
namespace engine {

// One thing a record says: a field, its head, its block, its text.
struct Part {
    QString name;  // "head", "block", "text", "timeout"...
    bool binary;   // bytes (one character per byte, Latin-1), else a text or a number
    QString value; // as compared

    bool operator==(const Part& o) const {
        return name == o.name && binary == o.binary && value == o.value;
    }
    bool operator!=(const Part& o) const { return !(*this == o); }
};

// What an input says of one record; the parts it does not say are not compared.
struct Target {
    bool osd = false;
    QVector<Part> parts;
};

// The parts of a record that a target of the same shape compares.
QVector<Part> partsOf(const model_Protocoldata& rec, const Target& shape);
QVector<Part> partsOf(const model_OsdParam& rec, const Target& shape);

// Targets of a record as it was printed (every field), of its head and block alone (5 or 8
// head bytes), of a trace line (CMD..DAT4, block and text), of a text, of a frame.
Target wholeRecord(const model_Protocoldata& rec);
Target wholeRecord(const model_OsdParam& rec);
Target headAndBlock(const QByteArray& head, const QByteArray& block);
Target traceLine(const QByteArray& head, const QByteArray& block, const QString& text);
Target textAlone(const QString& text);
Target frameAlone(const QByteArray& frame);
Target osdFrame(const QByteArray& frame);

// A value a call reads: an argument, an element of a list argument or its length, a member of
// a JSON argument, a member of a model record, or a value of the utility library.
struct Variable {
    enum Where { Argument, Element, Length, Member, Model, Utility };
    Where where = Argument;
    int argument = -1; // Argument, Element, Length, Member
    int index = -1;    // Element
    QString path;      // Member: the JSON member; Model: the member's path; Utility: the option
    args::Kind kind = args::Kind::Integer;
    long long min = 0;
    long long max = 0;

    // As an answer names it: "scene", "banks[2]", "obj.status", "scene.sceneList[1]...",
    // "userId".
    QString name(const Operation& op) const;
    bool operator==(const Variable& o) const {
        return where == o.where && argument == o.argument && index == o.index && path == o.path;
    }
};
QString valueOf(const Call& call, const Variable& v);
bool assign(Call& call, const Variable& v, const QString& word);

// What produced one run of bytes of a record's head or block.
struct ByteName {
    QString part;  // "head", "block", "header", "payload"
    int from;      // the first byte
    int to;        // the last
    QString what;  // "constant", "length", "checksum", or the values' names
    QString value; // the values, as "name = value"
};

// One proven answer: the call that queues the input, its record among the call's records.
struct Answer {
    const Family* family = nullptr;
    Call call;
    int record = 1;
    int records = 1;
    QStringList values;      // "name = value" of every value the record carries
    QStringList notCarried;  // the arguments the record leaves no trace of
    QStringList lowBytes;    // the values the record carries only the low bits of
    QStringList modelPaths;  // the model members the record carries
    QStringList utilityRead; // the options of the utility's values the record carries
    QVector<ByteName> bytes;

    QString device() const;      // the --device word that runs the call
    QStringList options() const; // the dalctl options that set the utility values read
    QJsonObject model() const;   // the --model JSON of the members read
    QString text() const;        // "saveScene(timeout=3000, scene=5)"
    QString replay() const;      // the dalctl command line that queues the record again
    QJsonObject json() const;

private:
    bool replayed(const UtilityOption& o) const;
};

// What came closest when nothing was proven.
struct Closest {
    QString operation;
    QString family;
    QString difference; // "which sends no block; 4 more bytes here"

    QString text() const; // "closest: OPERATION on FAMILY, DIFFERENCE"
    QJsonObject json() const;
};

struct Result {
    QVector<Answer> answers;
    std::optional<Closest> closest;
};

// Every operation, on each of the given families, that queues the target, with its values.
Result prove(const Target& target, const QVector<const Family*>& families);

// The records `op` queues with its sample words on a family, each with the names of what
// produced each byte of its head and block (as the reference page marks them).
struct SampleRecord {
    QJsonObject json;
    QVector<QStringList> marks; // per head byte
    QVector<QStringList> blockMarks;
};
QVector<SampleRecord> sampleRecords(const Operation& op, const Family& family);

// Operations the engine reads: neither taking a record nor the command byte itself.
bool explainable(const Operation& op);

} // namespace engine
