// Arbitrary input to decode, explain and --model.
// Input: one byte, then what is read. The byte's low four bits pick the device the input went
// to (0: none given, else the device of that place among the families' own codes and the codes
// beside them); bits 4 and 5 pick the reader:
//   0  decode: hex heads and blocks, frames, printed records (escaped texts included), --json
//      lines, trace lines, a family's text; every answer written as text and as JSON;
//   1  explain: the input as a log, line by line and as a stream;
//   2  both of the above, on the input as one line;
//   3  --model: a second byte picks an operation that reads model records, the rest is the
//      JSON that --model reads, lists included; the records are applied to the operation's
//      call, which is run, and the members it reads are written back out as JSON and read in
//      again.
// Bit 7 asks explain for JSON.
#include "decode.h"
#include "explain.h"
#include "models.h"
#include "pacing.h"
#include "records.h"
#include "registry.h"
#include "session.h"

#include <QJsonDocument>
#include <QLoggingCategory>

#include <cstdint>
#include <cstdio>

namespace {

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

void decode(const QByteArray& input, const Device* device) {
    const Decoded decoded =
        decodeInput(input, device, false, [](const Decoding& record, int proven) {
            record.textAsProven(proven);
            if (proven == record.readings.size())
                QJsonDocument(record.json()).toJson(QJsonDocument::Compact);
        });
    for (const Decoding& record : decoded.records)
        for (const Reading& reading : record.readings)
            for (const engine::Answer& a : reading.result.answers) {
                a.replay();
                a.model();
                a.options();
            }
}

void explain(const QByteArray& input, const Device* device, bool json) {
    long long number = 0;
    for (const QByteArray& line : input.split('\n'))
        explainLine(line + '\n', device, json, ++number);
    static std::FILE* sink = std::fopen("/dev/null", "w");
    std::FILE* log = std::tmpfile();
    if (!log || !sink)
        return;
    std::fwrite(input.constData(), 1, std::size_t(input.size()), log);
    std::fflush(log);
    std::rewind(log);
    explainStream(fileno(log), sink, device, json);
    std::fclose(log);
}

// Up to `limit` paths of values at or below `root`, breadth first.
QStringList values(const Models& models, const QString& root, int limit) {
    QStringList found;
    QStringList next{root};
    for (int i = 0; i < next.size() && i < 16 * limit && found.size() < limit; ++i) {
        const members::Node node = members::at(models, next[i]).node;
        if (node == members::Node::Missing)
            continue;
        if (node == members::Node::Value)
            found << next[i];
        else
            next << members::children(models, next[i]);
    }
    return found;
}

const QVector<const Operation*>& modelReaders() {
    static const QVector<const Operation*> ops = [] {
        QVector<const Operation*> found;
        for (const Operation& op : operations())
            if (!op.modelRecords().isEmpty())
                found << &op;
        return found;
    }();
    return ops;
}

void applyModel(const QByteArray& input, const Device* device) {
    if (input.isEmpty())
        return;
    const Operation& op = *modelReaders()[uint8_t(input[0]) % modelReaders().size()];
    Call call;
    call.op = &op;
    call.words = op.sampleWords();
    call.models = Models::defaults();
    if (device && device->family->className == op.className)
        call.utility.deviceType = device->code;
    if (!call.models.apply(input.mid(1)).isEmpty())
        return;
    try {
        run(call);
    } catch (const ArgError&) {
    }
    // Some of the values of the records the call read, as --model JSON, read in again.
    QStringList paths;
    for (const QString& record : op.modelRecords())
        paths << values(call.models, record, 64);
    Models again = Models::defaults();
    again.apply(QJsonDocument(members::json(call.models, paths)).toJson(QJsonDocument::Compact));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        dal::pacing::set(std::chrono::milliseconds(0), std::chrono::milliseconds(0));
        return true;
    }();
    (void)silenced;
    if (size < 1)
        return 0;
    const int place = data[0] & 0x0F;
    static const QVector<Device> devices = devicesWhere([](const Family&) { return true; });
    const Device* device = place > 0 && place <= devices.size() ? &devices[place - 1] : nullptr;
    const bool json = data[0] & 0x80;
    const QByteArray rest(reinterpret_cast<const char*>(data + 1), int(size - 1));
    switch ((data[0] >> 4) & 3) {
    case 0:
        decode(rest, device);
        break;
    case 1:
        explain(rest, device, json);
        break;
    case 2:
        decode(QByteArray(rest).replace('\n', ' '), device);
        explain(QByteArray(rest).replace('\n', ' '), device, json);
        break;
    default:
        applyModel(rest, device);
        break;
    }
    return 0;
}
