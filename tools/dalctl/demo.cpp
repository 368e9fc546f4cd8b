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
    {"board-version read", {"raw", "0x6A", "3", "0", "0", "0"}},
    {"scene save", {"raw", "0x68", "0x1A", "1", "5", "0"}},
    {"take", {"raw", "0x78", "0", "1", "0", "0"}},
    {"IP read", {"raw", "0x73", "1", "0", "0", "0"}},
    {"layer write", {"setLayerDate", "0", "1"}},
    {"whole-scene write", {"setSceneDate", "0"}},
};

const char* const kFamilies[] = {"native", "T9",  "T3",   "KR2",  "NV",
                                 "H40",    "H40B", "VM6S", "Cadex"};

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
