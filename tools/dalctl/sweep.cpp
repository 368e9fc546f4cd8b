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
            out << outcome.recordsText();
        }
    }
    out.flush();
}
