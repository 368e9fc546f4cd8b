// Arbitrary input to decode and explain: the first byte picks the family decode reads it as
// (or none), the rest is what decode reads (hex, a text, printed records, JSON lines, trace
// lines) and, for explain, a log line.
#include "decode.h"
#include "explain.h"

#include <QString>

#include <cstdint>

namespace {

const int kDevices[] = {0,        0x700000, 0x250300, 0x250400, 0x250502, 0x2D0000,
                        0x900000, 0x900001, 0x2C0104, 0x260000, 0x400000};

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        return true;
    }();
    (void)silenced;
    if (size < 1)
        return 0;
    const int device = kDevices[data[0] % (sizeof kDevices / sizeof kDevices[0])];
    const QByteArray rest(reinterpret_cast<const char*>(data + 1), int(size - 1));
    decodeInput(rest, device ? std::optional<int>(device) : std::nullopt);
    explainLine(rest, device, data[0] & 0x80);
    return 0;
}
