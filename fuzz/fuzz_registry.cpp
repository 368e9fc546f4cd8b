// Arbitrary argument lists through dalctl's registry: every operation, every device family.
// Input: one byte choosing the device, then the operation's name and its arguments, one a
// line. A name that names no operation still picks one, so that mutations keep reaching the
// operations' argument parsing and bodies.
#include "records.h"
#include "registry.h"
#include "session.h"

#include <QLoggingCategory>

#include <cstddef>
#include <cstdint>

namespace {

const int kDevices[] = {0x700000, 0x250300, 0x250310, 0x250400, 0x250502, 0x2D0000, 0x900000,
                        0x900001, 0x2C0103, 0x2C0104, 0x260000, 0x2C0201, 0x400000};

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        return true;
    }();
    (void)silenced;
    if (size < 1)
        return 0;

    DeviceSetting device;
    device.deviceType = kDevices[data[0] % (sizeof kDevices / sizeof kDevices[0])];
    QStringList call = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), int(size - 1))
                           .split(QLatin1Char('\n'));
    const QVector<Operation>& ops = operations();
    if (findOperations(call.first()).isEmpty())
        call.first() = ops.at(int(qHash(call.first()) % uint(ops.size()))).qualifiedName();
    try {
        runRequest(call, device, Models::defaults());
    } catch (const UsageError&) {
    }
    return 0;
}
