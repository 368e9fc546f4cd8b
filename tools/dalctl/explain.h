#pragma once

#include "records.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

// What a trace line of the generic send carries: CMD and DAT1..DAT4, the data block and the
// text, as the record stood when it was queued.
struct TracedRecord {
    enum Status { NotTrace, Garbled, Read };
    Status status = NotTrace;
    QByteArray head;
    QByteArray block;
    QString text;
};
TracedRecord readTraceLine(const QByteArray& line);

// One line as explain writes it: a trace line with the operations proven to queue it, any other
// line as it came; in JSON, one object per trace line and nothing for other lines. The line's
// ending, if any, is kept. `device` null: every device is searched. Answers are kept per
// distinct trace line, so calls are not thread-safe.
QByteArray explainLine(const QByteArray& line, const Device* device, bool json,
                       long long number = 0);
// Annotates a log read from the descriptor `in`, line by line, writing each line as soon as it
// is read, so that a pipe from `tail -F` is followed as it grows. Returns how many trace lines
// it named an operation for, or -1 on a read error.
long long explainStream(int in, std::FILE* out, const Device* device, bool json);
