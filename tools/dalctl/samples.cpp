#include "samples.h"

#include <algorithm>
#include <iterator>

namespace {

// Per kind of parameter type, the first that the type's name contains: the sample argument
// and a second one, of another length where the type has one.
struct Samples {
    const char* type;
    const char* first;
    const char* second;
};

const Samples kSamples[] = {
    {"int*", "1,2", "3,4,5"},
    {"*", "0102030405060708", "0a0b0c"},
    {"QByteArray", "0102030405060708", "0a0b0c"},
    {"bool", "true", "false"},
    {"double", "1.5", "2.25"},
    {"float", "1.5", "2.25"},
    {"QJsonObject", "{}", "{\"a\":2}"},
    {"QList", "1,2", "3,4,5"},
    {"QVector", "1,2", "3,4,5"},
    {"QStringList", "a,b", "c"},
    // Beyond ASCII, with a quote, so that encodings and the trace line's escaping are exercised.
    {"QString", "t\u00e9xt \"\u2713\"", "ab"},
    {"model_OsdParam", "{\"header\":\"0102030405060708090a0b\",\"tag\":\"t\",\"payload\":\"a1b2\"}",
     nullptr},
    {"model_Protocoldata", "{\"head\":\"00006a0300000000\",\"timeout\":3000}", nullptr},
    {"", "1", nullptr}, // the integers
};

const Samples& samplesOf(const QString& type) {
    return *std::find_if(std::begin(kSamples), std::end(kSamples),
                         [&](const Samples& s) { return type.contains(QLatin1String(s.type)); });
}

} // namespace

QString sampleArgument(const QString& type) { return QString::fromUtf8(samplesOf(type).first); }

QString otherArgument(const QString& type) {
    const Samples& samples = samplesOf(type);
    return QString::fromUtf8(samples.second ? samples.second : samples.first);
}

QStringList sampleCall(const Operation& op) {
    QStringList call{op.qualifiedName()};
    for (const QString& type : op.argumentTypes)
        call << sampleArgument(type);
    return call;
}
