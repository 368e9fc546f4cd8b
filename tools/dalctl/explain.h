#pragma once

#include <QByteArray>

#include <cstdio>

// Annotates a log read from the descriptor `in`, line by line: trace lines of the generic send
// get the operations that queue them, every other line passes unchanged. With `follow` it does
// not stop at the end but waits for the log to grow, as `tail -f` does, and writes each line as
// soon as it is whole. Returns false on a read error.
bool explainStream(int in, std::FILE* out, int deviceType, bool json, bool follow = false);
// One line as explainStream writes it; empty when the line is not a trace line (and json).
// Annotations are kept per head in a small cache, so calls are not thread-safe.
QByteArray explainLine(const QByteArray& line, int deviceType, bool json, long long number = 0);

// What a trace line of the generic send carries: its native head and block (a Cadex tunnel
// unwrapped).
struct TracedRecord {
    enum Status { NotTrace, Garbled, Read };
    Status status = NotTrace;
    QByteArray native;
    bool tunnel = false;
};
TracedRecord readTraceLine(const QByteArray& line);
