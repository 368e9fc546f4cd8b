#include "records.h"

#include <QJsonValue>

#include <algorithm>
#include <utility>

namespace {

const std::pair<const char*, int> kFamilies[] = {
    {"native", 0x700000}, {"T9", 0x250300},    {"T3", 0x250400},       {"KR2", 0x250502},
    {"NV", 0x2D0000},     {"H40", 0x900000},   {"H40B", 0x900001},     {"VM6S", 0x2C0104},
    {"VantaZ", 0x2C0202}, {"Cadex", 0x260000}, {"keyboard", 0x400000},
};

// Codes that share a family with the one the family name selects.
const std::pair<int, const char*> kAliases[] = {
    {0x250310, "T3"},    {0x2C0103, "VM6S"},  {0x230102, "Cadex"},  {0x230106, "Cadex"},
    {0x230107, "Cadex"}, {0x250000, "Cadex"}, {0x260002, "Cadex"},  {0x2C0100, "Cadex"},
    {0x2C0106, "Cadex"}, {0x2C0107, "Cadex"}, {0x2C0201, "VantaZ"},
};

bool bytesFromHex(const QJsonValue& value, QByteArray& bytes) {
    if (!value.isString() || !isHexPairs(value.toString()))
        return false;
    bytes = QByteArray::fromHex(value.toString().toLatin1());
    return true;
}

// A "length" member, when there is one, must count the bytes given.
bool lengthFits(const QJsonObject& json, const QByteArray& bytes) {
    return !json.contains(QLatin1String("length")) ||
           json.value(QLatin1String("length")).toInt(-1) == bytes.size();
}

QString headHex(const model_Protocoldata& rec) {
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(rec.cmdHead), sizeof rec.cmdHead).toHex(' '));
}

} // namespace

bool isHexPairs(const QString& text) {
    return text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](QChar c) {
               return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
                      (c.toLower() >= QLatin1Char('a') && c.toLower() <= QLatin1Char('f'));
           });
}

QStringList familyNames() {
    QStringList names;
    for (const auto& family : kFamilies)
        names << QString::fromLatin1(family.first);
    return names;
}

QVector<int> familyCodes() {
    QVector<int> codes;
    for (const auto& family : kFamilies)
        codes << family.second;
    return codes;
}

QString deviceCodeText(int code) {
    return QStringLiteral("0x") +
           QString::number(code, 16).toUpper().rightJustified(6, QLatin1Char('0'));
}

QString familyName(int deviceType) {
    for (const auto& family : kFamilies)
        if (family.second == deviceType)
            return QString::fromLatin1(family.first);
    for (const auto& alias : kAliases)
        if (alias.first == deviceType)
            return QString::fromLatin1(alias.second);
    return QStringLiteral("native");
}

bool deviceTypeFromText(const QString& text, int& deviceType) {
    for (const auto& family : kFamilies)
        if (text.compare(QLatin1String(family.first), Qt::CaseInsensitive) == 0) {
            deviceType = family.second;
            return true;
        }
    bool ok = false;
    const qlonglong code = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                               ? text.mid(2).toLongLong(&ok, 16)
                               : text.toLongLong(&ok, 10);
    if (!ok || code < 0 || code > 0x7FFFFFFF)
        return false;
    deviceType = static_cast<int>(code);
    return true;
}

QString recordText(const model_Protocoldata& rec, int number) {
    QString text = QStringLiteral("record %1: device %2 (%3), connect %4, dataType %5, msgCode %6, "
                                  "status %7, timeout %8\n")
                       .arg(number)
                       .arg(deviceCodeText(rec.deviceType), familyName(rec.deviceType))
                       .arg(rec.connectType)
                       .arg(rec.dataType)
                       .arg(rec.msgCode)
                       .arg(rec.statusByte)
                       .arg(rec.timeout);
    text += QStringLiteral("  head: %1\n").arg(headHex(rec));
    if (!rec.strAux1.isEmpty())
        text += QStringLiteral("  strAux1: \"%1\"\n").arg(rec.strAux1);
    text += QStringLiteral("  Datablock: \"%1\"\n").arg(rec.Datablock);
    text += QStringLiteral("  arryDatablock (%1 bytes):%2\n")
                .arg(rec.arryDatablock.size())
                .arg(rec.arryDatablock.isEmpty()
                         ? QString()
                         : QLatin1Char(' ') + QString::fromLatin1(rec.arryDatablock.toHex()));
    return text;
}

QJsonObject recordJson(const model_Protocoldata& rec) {
    return QJsonObject{
        {QStringLiteral("deviceType"), deviceCodeText(rec.deviceType)},
        {QStringLiteral("family"), familyName(rec.deviceType)},
        {QStringLiteral("connectType"), rec.connectType},
        {QStringLiteral("dataType"), rec.dataType},
        {QStringLiteral("msgCode"), rec.msgCode},
        {QStringLiteral("statusByte"), rec.statusByte},
        {QStringLiteral("timeout"), rec.timeout},
        {QStringLiteral("head"),
         QString::fromLatin1(
             QByteArray(reinterpret_cast<const char*>(rec.cmdHead), sizeof rec.cmdHead).toHex())},
        {QStringLiteral("strAux1"), rec.strAux1},
        {QStringLiteral("Datablock"), rec.Datablock},
        {QStringLiteral("arryDatablock"), QString::fromLatin1(rec.arryDatablock.toHex())},
        {QStringLiteral("length"), rec.arryDatablock.size()},
    };
}

QString recordSummary(const model_Protocoldata& rec) {
    constexpr int kShownBytes = 32;
    QString text = rec.Datablock;
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"));
    QString summary = QStringLiteral("%1 [%2] \"%3\" (%4)")
                          .arg(deviceCodeText(rec.deviceType), headHex(rec), text)
                          .arg(rec.arryDatablock.size());
    if (!rec.arryDatablock.isEmpty())
        summary +=
            QLatin1Char(' ') + QString::fromLatin1(rec.arryDatablock.left(kShownBytes).toHex());
    if (rec.arryDatablock.size() > kShownBytes)
        summary += QStringLiteral("...");
    return summary;
}

bool recordFromJson(const QJsonObject& json, model_Protocoldata& rec, QString& error) {
    rec = model_Protocoldata();
    for (auto it = json.begin(); it != json.end(); ++it) {
        const QString key = it.key();
        const QJsonValue value = it.value();
        if (key == QLatin1String("head")) {
            QByteArray head;
            if (!bytesFromHex(value, head) || head.size() != int(sizeof rec.cmdHead)) {
                error = QStringLiteral("record head must be 8 bytes of hex");
                return false;
            }
            std::copy(head.begin(), head.end(), rec.cmdHead);
        } else if (key == QLatin1String("deviceType")) {
            if (!deviceTypeFromText(value.isString() ? value.toString()
                                                     : QString::number(value.toInt()),
                                    rec.deviceType)) {
                error = QStringLiteral("record deviceType is not a device code");
                return false;
            }
        } else if (key == QLatin1String("connectType")) {
            rec.connectType = static_cast<unsigned char>(value.toInt());
        } else if (key == QLatin1String("dataType")) {
            rec.dataType = static_cast<unsigned char>(value.toInt());
        } else if (key == QLatin1String("msgCode")) {
            rec.msgCode = static_cast<unsigned short>(value.toInt());
        } else if (key == QLatin1String("statusByte")) {
            rec.statusByte = static_cast<unsigned char>(value.toInt());
        } else if (key == QLatin1String("timeout")) {
            rec.timeout = value.toInt();
        } else if (key == QLatin1String("strAux1")) {
            rec.strAux1 = value.toString();
        } else if (key == QLatin1String("Datablock")) {
            rec.Datablock = value.toString();
        } else if (key == QLatin1String("arryDatablock")) {
            if (!bytesFromHex(value, rec.arryDatablock)) {
                error = QStringLiteral("record arryDatablock must be hex");
                return false;
            }
        } else if (key != QLatin1String("family") && key != QLatin1String("length")) {
            error = QStringLiteral("a record has no field named %1").arg(key);
            return false;
        }
    }
    if (!lengthFits(json, rec.arryDatablock)) {
        error = QStringLiteral("record length does not count its arryDatablock: cut or garbled");
        return false;
    }
    return true;
}

namespace {

QString osdHeadHex(const model_OsdParam& rec) {
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(rec.frameHead), sizeof rec.frameHead).toHex(' '));
}

} // namespace

QString osdRecordText(const model_OsdParam& rec, int number) {
    return QStringLiteral("OSD record %1: tag \"%2\", timeout %3\n  header: %4\n"
                          "  payload (%5 bytes):%6\n")
        .arg(number)
        .arg(rec.tag)
        .arg(rec.timeout)
        .arg(osdHeadHex(rec))
        .arg(rec.payload.size())
        .arg(rec.payload.isEmpty() ? QString()
                                   : QLatin1Char(' ') + QString::fromLatin1(rec.payload.toHex()));
}

QJsonObject osdRecordJson(const model_OsdParam& rec) {
    return QJsonObject{
        {QStringLiteral("osd"), true},
        {QStringLiteral("header"),
         QString::fromLatin1(
             QByteArray(reinterpret_cast<const char*>(rec.frameHead), sizeof rec.frameHead)
                 .toHex())},
        {QStringLiteral("tag"), rec.tag},
        {QStringLiteral("timeout"), rec.timeout},
        {QStringLiteral("payload"), QString::fromLatin1(rec.payload.toHex())},
        {QStringLiteral("length"), rec.payload.size()},
    };
}

bool osdRecordFromJson(const QJsonObject& json, model_OsdParam& rec, QString& error) {
    rec = model_OsdParam();
    for (auto it = json.begin(); it != json.end(); ++it) {
        const QString key = it.key();
        if (key == QLatin1String("header")) {
            QByteArray head;
            if (!bytesFromHex(it.value(), head) || head.size() != int(sizeof rec.frameHead)) {
                error = QStringLiteral("OSD header must be 11 bytes of hex");
                return false;
            }
            std::copy(head.begin(), head.end(), rec.frameHead);
        } else if (key == QLatin1String("tag")) {
            rec.tag = it.value().toString();
        } else if (key == QLatin1String("timeout")) {
            rec.timeout = it.value().toInt();
        } else if (key == QLatin1String("payload")) {
            if (!bytesFromHex(it.value(), rec.payload)) {
                error = QStringLiteral("OSD payload must be hex");
                return false;
            }
        } else if (key != QLatin1String("osd") && key != QLatin1String("length")) {
            error = QStringLiteral("an OSD record has no field named %1").arg(key);
            return false;
        }
    }
    if (!lengthFits(json, rec.payload)) {
        error = QStringLiteral("OSD record length does not count its payload: cut or garbled");
        return false;
    }
    return true;
}
