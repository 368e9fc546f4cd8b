#include "sweep.h"

#include "records.h"
#include "registry.h"
#include "samples.h"
#include "session.h"

bool printSweep(QTextStream& out, const QString& family) {
    QStringList families = familyNames();
    if (!family.isEmpty()) {
        if (!families.contains(family, Qt::CaseInsensitive))
            return false;
        families = QStringList{family};
    }
    for (const QString& name : families) {
        DeviceSetting device;
        deviceTypeFromText(name, device.deviceType);
        for (const Operation& op : operations()) {
            const QStringList call = sampleCall(op);
            out << "== " << name << ": " << call.join(QLatin1Char(' ')) << Qt::endl;
            Outcome outcome;
            try {
                outcome = runRequest(call, device, Models::defaults());
            } catch (const UsageError& e) {
                out << "refused: " << e.what() << '\n';
                continue;
            }
            if (!outcome.returned.isEmpty())
                out << "returned: " << outcome.returned << '\n';
            for (int i = 0; i < outcome.records.size(); ++i)
                out << recordText(outcome.records[i], i + 1);
            for (int i = 0; i < outcome.osdRecords.size(); ++i)
                out << osdRecordText(outcome.osdRecords[i], i + 1);
        }
    }
    return true;
}
