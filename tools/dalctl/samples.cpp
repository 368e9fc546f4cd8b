#include "samples.h"

QString sampleArgument(const QString& type) {
    if (type.contains(QLatin1String("int*")))
        return QStringLiteral("1,2");
    if (type.contains(QLatin1String("*")) || type.contains(QLatin1String("QByteArray")))
        return QStringLiteral("0102030405060708");
    if (type.contains(QLatin1String("bool")))
        return QStringLiteral("true");
    if (type.contains(QLatin1String("double")) || type.contains(QLatin1String("float")))
        return QStringLiteral("1.5");
    if (type.contains(QLatin1String("QJsonObject")))
        return QStringLiteral("{}");
    if (type.contains(QLatin1String("QList")) || type.contains(QLatin1String("QVector")))
        return QStringLiteral("1,2");
    if (type.contains(QLatin1String("QStringList")))
        return QStringLiteral("a,b");
    // Beyond ASCII, with a quote, so that encodings and the trace line's escaping are exercised.
    if (type.contains(QLatin1String("QString")))
        return QStringLiteral("t\u00e9xt \"\u2713\"");
    if (type.contains(QLatin1String("model_OsdParam")))
        return QStringLiteral(
            "{\"header\":\"0102030405060708090a0b\",\"tag\":\"t\",\"payload\":\"a1b2\"}");
    if (type.contains(QLatin1String("model_Protocoldata")))
        return QStringLiteral("{\"head\":\"00006a0300000000\",\"timeout\":3000}");
    return QStringLiteral("1");
}

QStringList sampleCall(const Operation& op) {
    QStringList call{op.qualifiedName()};
    for (const QString& type : op.argumentTypes)
        call << sampleArgument(type);
    return call;
}

QString otherArgument(const QString& type) {
    if (type.contains(QLatin1String("*")) && !type.contains(QLatin1String("int*")))
        return QStringLiteral("0a0b0c");
    if (type.contains(QLatin1String("QByteArray")))
        return QStringLiteral("0a0b0c");
    if (type.contains(QLatin1String("double")) || type.contains(QLatin1String("float")))
        return QStringLiteral("2.25");
    if (type.contains(QLatin1String("QJsonObject")))
        return QStringLiteral("{\"a\":2}");
    if (type.contains(QLatin1String("QStringList")))
        return QStringLiteral("c");
    if (type.contains(QLatin1String("QString")))
        return QStringLiteral("ab");
    if (type.contains(QLatin1String("int*")) || type.contains(QLatin1String("QList")) ||
        type.contains(QLatin1String("QVector")))
        return QStringLiteral("3,4,5");
    return sampleArgument(type);
}
