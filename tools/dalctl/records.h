#pragma once

#include "model_osdparam.h"
#include "model_protocoldata.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

// ---- device families, as the library's list names them -----------------------------------------

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

// Every family, in the list's order.
const QVector<Family>& families();
QStringList familyNames();
// The families `keep` keeps, in the list's order.
QVector<const Family*> familiesWhere(const std::function<bool(const Family&)>& keep);
// The families whose records `className` queues.
QVector<const Family*> familiesOf(const QString& className);
// The family of a name (any case) or a device-type code in decimal or 0x-hex; null when there
// is none.
const Family* familyOf(const QString& nameOrCode);
// The device type a --device word names for its family: the code it gives, else the family's.
int deviceCodeOf(const Family& family, const QString& nameOrCode);
// The family whose records carry `deviceType`; null for a code no family has.
const Family* familyOfCode(int deviceType);
// The family name of a record's device type, "unknown" for a code no family has.
QString familyName(int deviceType);
// A device-type code as dalctl prints it: "0x250400".
QString deviceCodeText(int deviceType);

// Whether `text` is hex digit pairs and nothing else.
bool isHexPairs(const QString& text);
// A text between double quotes, escaped as the trace line escapes it, and back; unquote is
// false when `quoted` is not such a text.
QString quote(const QString& text);
bool unquote(const QString& quoted, QString& text);

// ---- records: each field described once, for the printout, the JSON line and their readers -----

QString recordText(const model_Protocoldata& rec, int number);
QJsonObject recordJson(const model_Protocoldata& rec);
// One line for comparing the same request across families.
QString recordSummary(const model_Protocoldata& rec);
bool recordFromJson(const QJsonObject& json, model_Protocoldata& rec, QString& error);

QString osdRecordText(const model_OsdParam& rec, int number);
QJsonObject osdRecordJson(const model_OsdParam& rec);
bool osdRecordFromJson(const QJsonObject& json, model_OsdParam& rec, QString& error);

// A record read back from the printout, starting at `lines[at]`; `at` is left on its last line.
// Returns false with `error` set when the record is cut or garbled; `deviceKnown` tells whether
// its first line (with the device type) was there or only its head line.
struct PrintedRecord {
    int number = 0;
    bool deviceKnown = false;
    model_Protocoldata rec;
};
bool isRecordStart(const QString& line);    // "record N: ..." or a head line alone
bool isOsdRecordStart(const QString& line); // "OSD record N: ..."
bool readRecord(const QStringList& lines, int& at, PrintedRecord& read, QString& error);
bool readOsdRecord(const QStringList& lines, int& at, int& number, model_OsdParam& rec,
                   QString& error);
