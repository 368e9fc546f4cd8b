#pragma once

#include "families.h"
#include "model_osdparam.h"
#include "model_protocoldata.h"
#include "models.h"
#include "records.h"
#include "registry.h"

#include <QHash>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>
#include <stdexcept>
#include <tuple>

// A request that cannot be run as given; the text names the problem.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
    QString usage; // the usage lines of the operation concerned, if any
};

// What the library reads from the utility library at each call.
struct UtilityValues {
    int deviceType = family::native;
    int subType = 0;
    int connectType = 0;
    int toneFlag = 1;    // the keyboard link is confirmed
    QString toneVersion; // keyboard firmware; empty compares below "1.02"
    QString localIp;
    QString userId;

    auto tied() const {
        return std::tie(deviceType, subType, connectType, toneFlag, toneVersion, localIp, userId);
    }
    bool operator==(const UtilityValues& o) const { return tied() == o.tied(); }
};

// Each utility value but the device type, with the dalctl option that sets it: the options,
// the values the engine varies and the options an answer replays all come from this table.
struct UtilityOption {
    const char* option;    // "user-id"
    const char* name;      // "userId", as an answer names the value
    const char* valueName; // "TEXT"
    const char* help;
    bool text; // a text, else an integer in [min, max]
    long long min;
    long long max;
    const char* byDefault;
    QString (*get)(const UtilityValues&);
    void (*set)(UtilityValues&, const QString&);
};
const QVector<UtilityOption>& utilityOptions();
// The utility option named `option` ("user-id"); null for none.
const UtilityOption* utilityOption(const QString& option);

// What one call left on the queues, and what the operation returned.
struct Outcome {
    QVector<model_Protocoldata> records;
    QVector<model_OsdParam> osdRecords;
    QString returned;

    bool empty() const { return records.isEmpty() && osdRecords.isEmpty(); }
    QString recordsText() const; // every record as dalctl prints it, numbered from 1
    // Record k of either kind (a call queues one kind): its count, the parts of it that `shape`
    // names (every field for an empty shape), its device type (an OSD record has none), its JSON.
    int count() const { return int(records.size() + osdRecords.size()); }
    std::optional<Parts> parts(int k, const Parts& shape) const;
    std::optional<int> deviceType(int k) const;
    QJsonObject json(int k) const;
};

// One call of an operation: its words, the model records it reads and the utility's values.
struct Call {
    const Operation* op = nullptr;
    QStringList words;
    Models models;
    UtilityValues utility;

    // What tells this call from another: calls with equal keys queue the same. The models are
    // told apart by their changes since the built-in ones.
    using Key = std::tuple<const Operation*, QStringList, UtilityValues, QString>;
    Key key() const { return {op, words, utility, models.changes}; }
};
// uint in Qt 5, size_t in Qt 6
decltype(qHash(0)) qHash(const Call::Key& key, decltype(qHash(0)) seed = 0);

// An operation's sample call on a device of `deviceType`: its sample words, the built-in models.
Call sampleCall(const Operation& op, int deviceType);

// Runs the call against the library with the link up. Throws ArgError on a bad word.
Outcome run(const Call& call);
// Sets what the utility library reports, as a call does before it runs.
void applyUtility(const UtilityValues& utility);
// The operation `name` ("op" or "Class::op", a short name looked up in `preferredClass` first)
// that takes `words`; throws UsageError, with the usage of the operations of that name, when
// there is none.
const Operation& operationFor(const QString& name, const QStringList& words,
                              const QString& preferredClass = QString());
// One native command through DalTarsel::f_SendCmd: CMD and DAT1..DAT4 as hex bytes, an
// optional hex data block. Throws UsageError on bad input.
Outcome runRaw(const QStringList& words, int timeout, const QString& text,
               const UtilityValues& utility);

// Keeps the library's trace and warnings off the log while it lives, as operations are run
// for what they send rather than for the user to watch.
class Quiet {
public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    QLoggingCategory* category = QLoggingCategory::defaultCategory();
    bool debug = category->isDebugEnabled();
    bool warning = category->isWarningEnabled();
};
