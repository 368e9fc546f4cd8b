#include "records.h"
#include "session.h"

#include <QTextStream>

namespace {

struct DemoRequest {
    const char* title;
    QStringList call;
};

// Representative requests, each shown for every family.
const DemoRequest kRequests[] = {
    {"board-version read", {"getComBoardVer"}},
    {"scene save", {"saveScene", "3000", "5"}},
    {"take", {"doTake", "1"}},
    {"IP read", {"getIP", "3000"}},
    {"layer write", {"setLayerDate", "0", "1"}},
    {"whole-scene write", {"setSceneDate", "0"}},
    {"fan speed", {"setFanSpeed"}},
    {"modal read", {"raw", "0xF1", "8", "4", "0", "0"}},
    {"board-level input query", {"raw", "0x90", "0x03", "2", "0", "0", "05"}},
};

const char* const kFamilies[] = {"native", "T9",   "T3",   "KR2",    "NV",
                                 "H40",    "H40B", "VM6S", "VantaZ", "Cadex"};

} // namespace

void printDemo(QTextStream& out) {
    for (const DemoRequest& request : kRequests) {
        out << request.title << ": dalctl " << request.call.join(QLatin1Char(' ')) << '\n';
        for (const char* family : kFamilies) {
            DeviceSetting device;
            deviceTypeFromText(QString::fromLatin1(family), device.deviceType);
            const Outcome outcome = runRequest(request.call, device, Models::defaults());
            const QString label = QString::fromLatin1(family).leftJustified(7);
            if (outcome.records.isEmpty())
                out << "  " << label << "(nothing queued)\n";
            for (const model_Protocoldata& rec : outcome.records)
                out << "  " << label << recordSummary(rec) << '\n';
        }
        out << '\n';
    }
}
