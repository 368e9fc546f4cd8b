#pragma once

#include "model_protocoldata.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

// Puts the library and the stand-ins back to a known state: empty queues, utility defaults,
// the link up.
void resetLibrary();
// Removes and returns everything queued for sending.
QVector<model_Protocoldata> takeQueued();
// The head bytes CMD, DAT1..DAT4 of a record.
QByteArray headOf(const model_Protocoldata& rec);

// Collects the debug lines written while it lives.
class TraceCapture {
public:
    TraceCapture();
    ~TraceCapture();
    QStringList lines() const;
};
