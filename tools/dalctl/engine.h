#pragma once

#include "registry.h"

#include <QByteArray>
#include <QJsonObject>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class model_Protocoldata;
class model_OsdParam;

// What dalctl knows about the bytes of every operation, learnt from the library itself: each
// operation of the registry is run with its sample arguments and again with other values for
// each integer or boolean argument, and the bytes and texts that change tell which argument
// travels where. explain, decode and doc all read this one engine.

constexpr int kHeadSize = 5;     // a native head: CMD DAT1 DAT2 DAT3 DAT4
constexpr int kOsdCommandAt = 4; // an OSD header's command byte
// VM6S and VantaZ frames start with these bytes.
inline const QByteArray kFrameStart = QByteArray::fromHex("680000000168");

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
// Whether `nativeBytes` unwrapped a tunnel: it returned fewer bytes than it was given.
bool isTunnel(const QByteArray& head, const QByteArray& block);

// One operation that sends a given record, and the arguments read off the record.
struct Candidate {
    const Operation* op = nullptr;
    int record = 1;  // which of the operation's records
    int records = 1; // how many it queues
    QVector<QPair<QString, long long>> args;
    QString native; // the native head as hex pairs, "??" where it is not known
    int tag = 0;    // the device type its record carries; kOsdTag for an OSD record

    QString text() const; // "savePage(p1=3)", "setX(p1=1) record 2/3"
    QJsonObject json() const;
};

// Operations whose records can be explained: those that neither take a record (to queue or to
// translate) nor take its command byte as an argument (`cmd`).
bool explainable(const Operation& op);

namespace engine {

// The index of DalTarsel's operations is learnt per device-type code; the keyboard's and the
// OSD box's operations do not depend on it and form one index of their own.
constexpr int kAccessories = -1;
constexpr int kOsdTag = -1; // the tag of an OSD record, which carries no device type

// The folder where learnt indexes are kept between runs (empty: none, the default). The
// keyboard paces its queue and the discovery probes pause, so learning their index takes
// seconds; a processor family takes a few hundredths, loading it a few thousandths.
void setCacheDirectory(const QString& folder);
QString cacheDirectory();
// The file that keeps the index learnt for `index` by a process of this identity.
QString keptFile(int index);
// The identity of everything the answers depend on: the build of every loaded object
// (dalctl, the library, the stand-ins, Qt) and the locale's encoding. A kept index is used
// only by a process of the same identity.
QByteArray identity();

// Which records of an index a search looks at, by the device type they carry.
using TagFilter = std::function<bool(int tag)>;
inline bool anyTag(int) { return true; }

// Candidates in one index whose records have the native head and block `native`.
QVector<Candidate> byHead(int index, const QByteArray& native, const TagFilter& keep = anyTag);
// Candidates in one index whose records went out as `bytes` of the given kind (frames, OSD).
QVector<Candidate> byForm(int index, Form::Kind kind, const QByteArray& bytes,
                          const TagFilter& keep = anyTag);
// Candidates in one index that send exactly `text`, their arguments found by running them;
// `shaped` becomes true when an operation of the index sends a text of that shape at all.
QVector<Candidate> byText(int index, const QString& text, bool& shaped,
                          const TagFilter& keep = anyTag);

// One record an operation queued when called with its sample arguments, as `dalctl --json`
// prints it, and per head byte (8 of a record, 11 of an OSD header) the names of the
// arguments that reach it.
struct SampleRecord {
    QJsonObject json;
    QVector<QStringList> marks;
};
// The records `op` (explainable) queues with its sample arguments on the index's device.
QVector<SampleRecord> sampleRecords(int index, const Operation& op);

// Learns the index now (or loads it from the cache folder); later calls return at once.
void learn(int index);

} // namespace engine
