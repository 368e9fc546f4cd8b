#pragma once

// The engine's own record of what it learnt, shared by the learner and the cache.
#include "engine.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

namespace engine {

// How one byte follows an argument: byte = ((value + offset) >> 8 * high) & 0xFF, or for a
// boolean, one byte when true and another when false.
struct Rule {
    enum Kind { Low, High, Bool };
    Kind kind;
    int at;
    int arg;
    int offset;    // Low, High; Bool: the byte when true
    int falseByte; // Bool
};

// One of an operation's records in one shape (its native head, its family's form, or its
// head as the record holds it): the bytes or text of the call, which bytes any probe changed
// and the rules found.
struct Shape {
    Form form;
    QByteArray varies;
    QVector<Rule> rules;
    QVector<int> textArgs;    // arguments that change a text form
    QString skeleton;         // of a text form
    QVector<quint64> reached; // per byte: the arguments (one bit each) that changed it
};

struct Signature {
    const Operation* op;
    int device;
    QStringList base; // the call probed
    int record;
    int records;
    int tag;          // the device type the record carried, kOsdTag for an OSD record
    Shape head;       // the native head and block, on the device it was probed on
    Shape out;        // the form the family sends
    Shape raw;        // the head as the record holds it: 8 bytes, or an OSD header's 11
    QJsonObject json; // the record as `dalctl --json` prints it
};

struct Index {
    QVector<Signature> signatures;
    QVector<int> byCmd[256]; // signatures whose head starts with a fixed CMD
};

// Reads the index kept for `index` under the current identity; null when there is none or it
// does not read back whole.
std::unique_ptr<Index> loadKeptIndex(int index);
// Keeps the index for later runs; silently does nothing when the folder cannot be written.
void keepIndex(int index, const Index& learnt);

} // namespace engine
