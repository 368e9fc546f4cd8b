#pragma once

#include "registry.h"

#include <QByteArray>
#include <QJsonObject>
#include <QPair>
#include <QString>
#include <QVector>

#include <cstdio>

class model_Protocoldata;
class model_OsdParam;

// A record in the shape its family sends it: the native head CMD DAT1..DAT4 and data block
// (a Cadex tunnel unwrapped), a dialect text, a VM6S or VantaZ frame, or an OSD frame.
struct Form {
    enum Kind { Head, Text, Frame, Osd };
    Kind kind = Head;
    QByteArray bytes;
    QString text;
};
Form formOf(const model_Protocoldata& rec);
Form formOf(const model_OsdParam& rec);
// The native head and block of a record, a Cadex tunnel unwrapped.
QByteArray nativeBytes(const QByteArray& head, const QByteArray& block);

// One operation that sends a given record, and the arguments read off the record.
struct Candidate {
    const Operation* op = nullptr;
    int record = 1;  // which of the operation's records
    int records = 1; // how many it queues
    QVector<QPair<QString, long long>> args;
    QString native; // the native head as hex pairs, "??" where it is not known

    QString text() const; // "savePage(p1=3)", "setX(p1=1) record 2/3"
    QJsonObject json() const;
};

// Operations whose records can be explained: those that neither take a record (to queue or to
// translate) nor take its command byte as an argument (`cmd`).
bool explainable(const Operation& op);

// Annotates a log read from `in`, line by line: trace lines of the generic send get the
// operations that queue them, every other line passes unchanged. Returns false on a read error.
bool explainStream(std::FILE* in, std::FILE* out, int deviceType, bool json);
// One line as explainStream writes it; empty when the line is not a trace line (and json).
// Annotations are kept per head in a small cache, so calls are not thread-safe.
QByteArray explainLine(const QByteArray& line, int deviceType, bool json, long long number = 0);

// The result of decoding one record.
struct Decoded {
    enum Status { Found, NoOperation, BadInput };
    Status status = BadInput;
    QString message; // what the input was read as, or what is wrong with it
    QVector<Candidate> candidates;
};
// Decodes TEXT or HEX as sent to the given family (`deviceType` 0 reads every family).
Decoded decodeRecord(const QString& input, int deviceType);
