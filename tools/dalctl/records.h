#pragma once

#include "model_osdparam.h"
#include "model_protocoldata.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

// The family names dalctl accepts, in order.
QStringList familyNames();
// Their device-type codes, in the same order.
QVector<int> familyCodes();
// The family name of a device-type code, as dalctl prints and accepts it.
QString familyName(int deviceType);
// A device-type code as dalctl prints it: "0x250400".
QString deviceCodeText(int deviceType);
// Parses a family name or a device-type code (decimal or 0x-hex); false when it is neither.
bool deviceTypeFromText(const QString& text, int& deviceType);

// Whether `text` is hex digit pairs and nothing else (QByteArray::fromHex skips anything else
// silently).
bool isHexPairs(const QString& text);

QString recordText(const model_Protocoldata& rec, int number);
QJsonObject recordJson(const model_Protocoldata& rec);
// One line for comparing the same request across families.
QString recordSummary(const model_Protocoldata& rec);
bool recordFromJson(const QJsonObject& json, model_Protocoldata& rec, QString& error);

// The OSD box's records: header, tag, time-out and payload.
QString osdRecordText(const model_OsdParam& rec, int number);
QJsonObject osdRecordJson(const model_OsdParam& rec);
bool osdRecordFromJson(const QJsonObject& json, model_OsdParam& rec, QString& error);
