#include "arguments.h"

#include "records.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace args {

namespace {

[[noreturn]] void fail(const QString& message) { throw ArgError(message.toStdString()); }

} // namespace

long long parseInteger(const QString& text, long long min, long long max) {
    const QString t = text.trimmed();
    const bool negative = t.startsWith(QLatin1Char('-'));
    const QString digits = negative ? t.mid(1) : t;
    bool ok = false;
    const qulonglong magnitude = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                                     ? digits.mid(2).toULongLong(&ok, 16)
                                     : digits.toULongLong(&ok, 10);
    if (!ok || digits.startsWith(QLatin1Char('+')) || digits.startsWith(QLatin1Char('-')))
        fail(QStringLiteral("\"%1\" is not an integer").arg(text));
    const bool fits =
        negative ? magnitude <= qulonglong(-(min + 1)) + 1 : magnitude <= qulonglong(max);
    if (!fits)
        fail(QStringLiteral("%1 is outside %2..%3").arg(text).arg(min).arg(max));
    return negative ? -static_cast<long long>(magnitude - 1) - 1
                    : static_cast<long long>(magnitude);
}

double parseDecimal(const QString& text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        fail(QStringLiteral("\"%1\" is not a decimal number").arg(text));
    return value;
}

bool parseBool(const QString& text) {
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("1"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("0"))
        return false;
    fail(QStringLiteral("\"%1\" is not a boolean (true, false, 1 or 0)").arg(text));
}

QByteArray parseHex(const QString& text) {
    QString digits = text;
    digits.remove(QLatin1Char(' ')).remove(QLatin1Char(':'));
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        digits = digits.mid(2);
    if (!isHexPairs(digits))
        fail(QStringLiteral("\"%1\" is not hex bytes (pairs of hex digits)").arg(text));
    return QByteArray::fromHex(digits.toLatin1());
}

QJsonObject parseJsonObject(const QString& text) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (!doc.isObject())
        fail(QStringLiteral("\"%1\" is not a JSON object").arg(text));
    return doc.object();
}

// Numbers between separators; an empty text is no numbers. A dash list has no room for a
// minus sign, so its numbers are whole and not negative.
QVector<int> parseNumbers(const QString& text, Kind kind) {
    QVector<int> numbers;
    if (text.isEmpty())
        return numbers;
    const bool dashes = kind == Kind::DashNumbers;
    for (const QString& item : text.split(QLatin1Char(separatorOf(kind)))) {
        try {
            numbers << static_cast<int>(
                parseInteger(item.trimmed(), dashes ? 0 : INT_MIN, INT_MAX));
        } catch (const ArgError&) {
            fail(QStringLiteral("\"%1\" is not numbers written %2")
                     .arg(text, QLatin1String(dashes ? "1-0-1" : "1,2,3")));
        }
    }
    return numbers;
}

model_Protocoldata parseRecord(const QString& text) {
    model_Protocoldata rec;
    QString error;
    if (!recordFromJson(parseJsonObject(text), rec, error))
        fail(error);
    return rec;
}

model_OsdParam parseOsdRecord(const QString& text) {
    model_OsdParam rec;
    QString error;
    if (!recordFromJson(parseJsonObject(text), rec, error))
        fail(error);
    return rec;
}

} // namespace args
