#pragma once

#include "engine.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>

// One way of reading a record (its 5-byte head, a record's 8-byte head, a frame, a text, a
// printed record) and the operations proven to send it read that way.
struct Reading {
    Reading(const QString& label, const engine::Target& target, const QVector<Device>& devices,
            const std::optional<engine::Target>& orElse = std::nullopt)
        : label(label), target(target), devices(devices), orElse(orElse) {}

    QString label;
    engine::Target target;
    QVector<Device> devices; // searched
    engine::Result result;
    std::optional<engine::Target> orElse; // read so where the target is not proven
    bool alternative = false; // another way of reading what reads otherwise: said when it finds
                              // what the others do not
};

// One record of the input: what it was read as, and its readings.
struct Decoding {
    QString what;
    QVector<Reading> readings;

    bool found() const;
    QString text() const; // `what`, then each reading's answers, or what came closest
    // What the text gains once `proven` readings are: that reading's lines, after `what` for
    // the first (`what` alone for a record of no readings).
    QString textAsProven(int proven) const;
    QJsonObject json() const;

private:
    QString readingText(const Reading& r) const;
};

struct Decoded {
    QString error; // what is wrong with the input; when it is set there are no records
    QVector<Decoding> records;
};

// Decodes every record of `input`, in order. The input is one of: records as dalctl prints
// them, or as its --json lines (several allowed; trace lines beside them are their echoes and
// are skipped); a printed head line with what follows it; trace lines of the generic send; or
// else one native head and block, record head and block, frame or OSD frame in hex, or one
// text that a family is sent; `asText`: the input is such a text, though it reads otherwise.
// `device`, when given, is where the records went. Input
// that cannot be read is refused before anything is run; then `each`, when given, is called
// with each record's decoding as each of its readings is proven, with the count proven so far
// (once, with 0, for a record of no readings): a count of all its readings says it is made.
Decoded decodeInput(const QByteArray& input, const Device* device, bool asText = false,
                    const std::function<void(const Decoding&, int proven)>& each = {});
