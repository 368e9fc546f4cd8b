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
// one engine. It keeps what it learns in memory; calls are not thread-safe.
namespace engine {

// What an input says of one record: the parts it names; the parts it does not name are not
// compared.
struct Target {
    Parts parts;
};

// Targets of a record as it was printed (every field), of its head and block alone (5 or 8
// head bytes), of a trace line (CMD..DAT4, block and text), of a text, of a frame.
template <class Rec>
Target wholeRecord(const Rec& rec) {
    return {fieldParts(rec)};
}
inline Target headAndBlock(const QByteArray& head, const QByteArray& block) {
    return {{bytesPart(head.size() == 8 ? "head" : "command", head), bytesPart("block", block)}};
}
inline Target traceLine(const QByteArray& head, const QByteArray& block, const QString& text) {
    return {{bytesPart("command", head), bytesPart("block", block), Part{"text", false, text}}};
}
inline Target textAlone(const QString& text) { return {{Part{"text", false, text}}}; }
inline Target frameAlone(const QByteArray& frame) { return {{bytesPart("block", frame)}}; }
inline Target osdFrame(const QByteArray& frame) {
    return {{bytesPart("header", frame.left(11)), bytesPart("payload", frame.mid(11))}};
}

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
    Device device{nullptr, 0, {}}; // where it holds
    Call call;
    int record = 1;
    int records = 1;
    QStringList values;      // "name = value" of every value the record carries
    QStringList notCarried;  // the arguments the record leaves no trace of
    QStringList lowBytes;    // the values the record carries only the low bits of
    QStringList modelPaths;  // the model members the record carries
    QStringList utilityRead; // the options of the utility's values the record carries
    QVector<ByteName> bytes;
    bool anyText = false; // the record is a text the call copies, whatever the text

    QString deviceWord() const;  // the --device word that runs the call
    QStringList options() const; // the dalctl options that set the utility values read
    QJsonObject model() const;   // the --model JSON of the members read
    QString text() const;        // "saveScene(timeout=3000, scene=5)"
    QString replay() const;      // the dalctl command line that queues the record again
    QJsonObject json() const;
};

// What came closest when nothing was proven.
struct Closest {
    QString operation;
    QString device;     // as answers name it
    QString difference; // "which sends no block; 4 more bytes here"

    QString text() const {
        return QStringLiteral("closest: %1 on %2, %3").arg(operation, device, difference);
    }
    QJsonObject json() const;
};

struct Result {
    QVector<Answer> answers;
    std::optional<Closest> closest;
};

// Every operation, on each of the given devices, that queues the target, with its values.
Result prove(const Target& target, const QVector<Device>& devices);

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
