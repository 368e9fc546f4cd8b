#pragma once

#include "engine.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

// One operation found for a record, and the device families where it sends the record that
// way (empty when the family was known beforehand).
struct Found {
    Candidate candidate;
    QStringList families;
};

// One way of reading a record (its 5-byte head, a record's 8-byte head, a frame, a text) and
// the operations that send the record read that way.
struct Reading {
    QString label;
    QString native; // the native head read, as hex pairs; empty when each candidate has its own
    QVector<Found> found;
};

// One record of the input, what it was read as and its readings.
struct Answer {
    QString what;
    QVector<Reading> readings;

    bool found() const;
    QString text() const; // `what`, then one line per operation found, or per empty reading
};

struct Decoded {
    QString error; // what is wrong with the input; when it is set there are no answers
    QVector<Answer> answers;
};

// Decodes every record of `input`, in order. The input is one of: records as dalctl prints
// them, or as its --json lines (several allowed; trace lines beside them are their echoes and
// are skipped); a printed head line with what follows it; trace lines of the generic send; or
// else one native head and block, record head and block, frame or OSD frame in hex, or one
// text that a family is sent. `device`, when given, is the family the records went to. Input
// that cannot be read is refused before anything is decoded; then `each`, when given, is
// called with each answer as soon as it is made.
Decoded decodeInput(const QByteArray& input, std::optional<int> device,
                    const std::function<void(const Answer&)>& each = {});
