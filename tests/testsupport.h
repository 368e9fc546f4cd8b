#pragma once

#include "model_protocoldata.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>
#include <QtTest>

#include <functional>

// Puts the library and the stand-ins back to a known state: empty queues, utility defaults,
// the link up.
void resetLibrary();
// Removes and returns everything queued for sending.
QVector<model_Protocoldata> takeQueued();
// The head bytes CMD, DAT1..DAT4 of a record.
QByteArray headOf(const model_Protocoldata& rec);
// Each record as "HEAD TIMEOUT[ BLOCK][ 'TEXT']" (hex bytes, time-out in ms), joined by " | ".
QString describe(const QVector<model_Protocoldata>& records);
// Runs "operation arg ..." (arguments separated by spaces) through the dalctl registry on
// `device`, with the default models and `modelJson` applied to them, and describes what it
// queued; a request the registry refuses reads "refused: " and the reason.
QString run(const QString& call, const QByteArray& modelJson = {}, int device = 0x700000);
// Sends one native command through DalTarsel::f_SendCmd to `device` and returns the one record
// queued (an empty record, after a failed check, when another number was queued).
model_Protocoldata sendTo(int device, const QByteArray& head, const QByteArray& block = {},
                          const QString& text = {}, int timeout = 3000);

// Collects the debug and warning lines written while it lives.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    QStringList debug() const;
    QStringList warnings() const;
};

// Runs `call` and verifies that it queued nothing and wrote one warning naming `operation`
// and mentioning `limit`.
void verifyRefused(const std::function<void()>& call, const QString& operation,
                   const QString& limit);
