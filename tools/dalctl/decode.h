#pragma once

#include "engine.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <functional>

// One way of reading a record (its 5-byte head, a record's 8-byte head, a frame, a text, a
// printed record) and the operations proven to send it read that way.
struct Reading {
    QString label;
    engine::Target target;
    QVector<const Family*> families; // searched
    engine::Result result;
};

// One record of the input: what it was read as, and its readings.
struct Decoding {
    QString what;
    QVector<Reading> readings;

    bool found() const;
    QString text() const; // `what`, then each reading's answers, or what came closest
    QJsonObject json() const;
};

struct Decoded {
    QString error; // what is wrong with the input; when it is set there are no records
    QVector<Decoding> records;
};

// Decodes every record of `input`, in order. The input is one of: records as dalctl prints
// them, or as its --json lines (several allowed; trace lines beside them are their echoes and
// are skipped); a printed head line with what follows it; trace lines of the generic send; or
// else one native head and block, record head and block, frame or OSD frame in hex, or one
// text that a family is sent. `device`, when given, is the family the records went to. Input
// that cannot be read is refused before anything is run; then `each`, when given, is called
// with each record's decoding as soon as it is made.
Decoded decodeInput(const QByteArray& input, const Family* device,
                    const std::function<void(const Decoding&)>& each = {});
