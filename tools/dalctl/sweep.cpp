#include "sweep.h"

#include "registry.h"
#include "session.h"

void printSweep(QTextStream& out, const Family* only) {
    for (const Family& family : families()) {
        if (only && &family != only)
            continue;
        for (const Operation& op : operations()) {
            if (op.className != family.className)
                continue;
            const Call call = sampleCall(op, family.code);
            out << "== " << family.name << ": " << op.qualifiedName() << ' '
                << call.words.join(QLatin1Char(' ')) << Qt::endl;
            Outcome outcome;
            try {
                outcome = run(call);
            } catch (const ArgError& e) {
                out << "refused: " << e.what() << '\n';
                continue;
            }
            if (!outcome.returned.isEmpty())
                out << outcome.returned << '\n';
            for (int i = 0; i < outcome.records.size(); ++i)
                out << recordText(outcome.records[i], i + 1);
            for (int i = 0; i < outcome.osdRecords.size(); ++i)
                out << osdRecordText(outcome.osdRecords[i], i + 1);
        }
    }
    out.flush();
}
