#pragma once

#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "models.h"
#include "registry.h"

#include <QLoggingCategory>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QVector>

#include <stdexcept>

// A request that cannot be run as given; the text names the problem.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
    QString usage; // the usage lines of the operation concerned, if any
};

// The device the stand-ins report while a request runs.
struct DeviceSetting {
    int deviceType = 0x700000;
    int subType = 0;
    int connectType = 0;
    int toneFlag = 1;    // the keyboard link is confirmed
    QString toneVersion; // keyboard firmware; empty compares below "1.02"
    QString localIp;
};

// What one request left on the queues, and what the operation returned.
struct Outcome {
    QVector<model_Protocoldata> records;
    QVector<model_OsdParam> osdRecords;
    QString returned;
};

// Runs `call` (an operation name and its arguments, or "raw" and its arguments) against the
// library with the device set as given and the link up. Throws UsageError on bad input.
Outcome runRequest(const QStringList& call, const DeviceSetting& device, Models models);
// Runs one operation with its arguments (no name) the same way. Throws ArgError on bad input.
Outcome runOperation(const Operation& op, const QStringList& arguments, const DeviceSetting& device,
                     Models models);

// Keeps the library's trace and warnings off the log while it lives, as operations are run
// for what they send rather than for the user to watch.
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    QLoggingCategory* category;
    bool debug;
    bool warning;
};

// Prints the representative requests for every family.
void printDemo(QTextStream& out);
