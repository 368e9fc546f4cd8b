#include "sweep.h"

#include "session.h"

namespace {

struct DemoRequest {
    const char* title;
    QStringList call; // an operation and its words, or "raw" and its bytes
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
    {"modal read", {"raw", "f1", "8", "4", "0", "0"}},
    {"board-level input query", {"raw", "90", "3", "2", "0", "0", "05"}},
};

} // namespace

void printDemo(QTextStream& out) {
    const Models models = Models::defaults();
    for (const DemoRequest& request : kRequests) {
        out << request.title << ": dalctl " << request.call.join(QLatin1Char(' ')) << '\n';
        for (const Family& family : families()) {
            if (!family.routed())
                continue;
            UtilityValues utility;
            utility.deviceType = family.code;
            Outcome outcome;
            if (request.call.first() == QLatin1String("raw")) {
                outcome = runRaw(request.call.mid(1), 3000, QString(), utility);
            } else {
                const QStringList words = request.call.mid(1);
                outcome =
                    run(Call{&operationFor(request.call.first(), words), words, models, utility});
            }
            const QString label = family.name.leftJustified(7);
            if (outcome.records.isEmpty())
                out << "  " << label << "(nothing queued)\n";
            for (const model_Protocoldata& rec : outcome.records)
                out << "  " << label << recordSummary(rec) << '\n';
        }
        out << '\n';
    }
    out.flush();
}
