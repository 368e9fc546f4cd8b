#pragma once

#include "model_osdparam.h"
#include "model_protocoldata.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <variant>

// ---- device families and devices, as the library's lists name them ----------------------------

// What a family's records carry: the native head and block, a dialect text, VM6S frames, or
// the OSD box's frames.
enum class Form { Head, Text, Frame, Osd };

struct Family {
    QString name;
    QString className; // the class whose records it receives
    Form form;
    int code;           // the device type dalctl sets for it and shows
    QVector<int> codes; // every device type of the family, `code` first

    // Whether the generic send routes to it: DalTarsel's families.
    bool routed() const { return className == QLatin1String("DalTarsel"); }
};

// A device dalctl runs operations on, or searches records of: one of a family's codes, or a code
// of no family, whose records are the native family's.
struct Device {
    const Family* family; // whose routing its records get: the native family for a code of none
    int code;
    QVector<int> alike;  // further codes whose records are the same, searched with it
    bool beside = false; // searched beside its family's own code: only where its records differ

    // Whether the library treats the code apart from its family's own code by what it compares
    // with the utility's device type, so that its records are searched apart.
    bool apart() const;
    QString name() const; // as answers name it: the family, for a code of its own, else the codes
    QString word() const; // the --device word that runs it
    bool ofFamily() const { return code == family->code || family->codes.contains(code); }
};

// Every family, in the list's order.
const QVector<Family>& families();
QStringList familyNames();
// The families whose records `className` queues.
QVector<const Family*> familiesOf(const QString& className);
// The family of a name, in any case; null when there is none.
const Family* familyOf(const QString& name);
// The family whose records carry `deviceType`; null for a code no family has.
const Family* familyOfCode(int deviceType);
// The family name of a record's device type, "unknown" for a code no family has.
QString familyName(int deviceType);
// A device-type code as dalctl prints it: "0x250400".
QString deviceCodeText(int deviceType);
// The device a --device word names: a family (its own code), "unknown" (a code of no family,
// 0x000000), or any 32-bit code in decimal or 0x-hex; nothing for another word.
std::optional<Device> deviceNamed(const QString& word);
Device deviceOfCode(int code);
// The devices a record may have gone to, for the families `keep` keeps: each family's own code,
// then each run of codes the library treats apart from it.
QVector<Device> devicesWhere(const std::function<bool(const Family&)>& keep);
// The devices whose records carry the device type `tag`: its own code's, and the codes the
// library treats apart beside a family's own code, whose records carry that code.
QVector<Device> devicesTagged(int tag);
// What the library does with a code no family has ("0x240000: no family's code; native records,
// with the layers' container indexes sent (setLayerContainerIndex)"); empty for a family's code.
QString describeCode(int code);

// Whether `text` is hex digit pairs and nothing else.
bool isHexPairs(const QString& text);
// A text between double quotes, escaped as the trace line escapes it, and back; unquote is
// false when `quoted` is not such a text.
QString quote(const QString& text);
bool unquote(const QString& quoted, QString& text);
// A word as dalctl shows it among others: as it stands, or quoted and escaped where it could
// read as more than one word, or where it holds a character no line should.
QString shownWord(const QString& word);

// ---- records: each field described once, for the printout, the JSON line, their readers and
// ---- the parts decode compares ------------------------------------------------------------------

// Every byte, NULs included: Qt 5's overload for a QByteArray stops at the first NUL.
inline QString latin1(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.constData(), int(bytes.size()));
}

// One thing a record says, as decode compares it: a field, by the name of its part, or the
// "command" (the head's CMD and DAT1..DAT4).
struct Part {
    QString name;  // "head", "block", "text", "timeout"...
    bool binary;   // bytes (one character per byte, Latin-1), else a text or a number
    QString value; // as compared

    bool operator==(const Part& o) const {
        return name == o.name && binary == o.binary && value == o.value;
    }
};
using Parts = QVector<Part>;

inline Part bytesPart(const char* name, const QByteArray& bytes) {
    return {QLatin1String(name), true, latin1(bytes)};
}

// A record of either kind: the processors' and keyboard's, or the OSD box's.
using AnyRecord = std::variant<model_Protocoldata, model_OsdParam>;

// Every field of a record as a part, in the field table's order.
Parts fieldParts(const model_Protocoldata& rec);
Parts fieldParts(const model_OsdParam& rec);
Parts fieldParts(const AnyRecord& rec);
// The parts of a record that `shape` names, in its order (every field for an empty shape);
// nothing when the record has one of them not.
std::optional<Parts> partsOf(const model_Protocoldata& rec, const Parts& shape);
std::optional<Parts> partsOf(const model_OsdParam& rec, const Parts& shape);
// Whether two records' fields are the same, but for those named (by part).
bool sameFields(const model_Protocoldata& a, const model_Protocoldata& b,
                const QStringList& ignoring = {});
// Whether a part is compared by its ends (a text or bytes), rather than whole (a number).
bool comparedByEnds(const QString& part);
// Where a head part holds its command (CMD and DAT1, or the OSD marker and command), and how many
// bytes of it: the bytes that tell one command from another. Nothing for a part that is no head.
struct CommandBytes {
    int at;
    int held;
};
std::optional<CommandBytes> commandBytesOf(const QString& part);

// As dalctl prints a record: its first line numbered, then each field of its own line.
QString recordText(const model_Protocoldata& rec, int number);
QString recordText(const model_OsdParam& rec, int number);
// As its JSON line (an OSD record's says "osd": true).
QJsonObject recordJson(const model_Protocoldata& rec);
QJsonObject recordJson(const model_OsdParam& rec);
// One line for comparing the same request across families.
QString recordSummary(const model_Protocoldata& rec);
// A record read back from its JSON line; false with `error` set when it is not one.
bool recordFromJson(const QJsonObject& json, model_Protocoldata& rec, QString& error);
bool recordFromJson(const QJsonObject& json, model_OsdParam& rec, QString& error);
bool recordFromJson(const QJsonObject& json, AnyRecord& rec, QString& error);

// A record read back from the printout, starting at `lines[at]`: its first line and the lines
// after it, or a head line alone (with what follows it). `at` is left on its last line.
struct PrintedRecord {
    QString what;             // "record 1 (line 3)", "OSD record 2 (line 9)", "head (line 5)"
    bool deviceKnown = false; // its first line, with the device type, was there
    AnyRecord rec;
    QStringList parts; // the parts the printout holds
    QByteArray head;   // the bytes of its head line, as many as it holds
};
// Whether a line starts a printed record: "record N: ...", "OSD record N: ..." or a head line.
bool isRecordStart(const QString& line);
// Returns false with `error` set when the record is cut or garbled.
bool readRecord(const QStringList& lines, int& at, PrintedRecord& read, QString& error);
