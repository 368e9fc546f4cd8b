#include "completeness.h"

#include "registry.h"
#include "samples.h"
#include "session.h"
#include "testsupport.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QtTest>

namespace {

struct Row {
    int records = 0;
    int cmd = -1;
    int dat1 = -1;
};

QMap<QString, Row> readRows(const QString& file) {
    QMap<QString, Row> rows;
    QFile f(QStringLiteral(TESTS_DIR "/expected/") + file);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTest::qFail(qPrintable(QStringLiteral("cannot read %1").arg(f.fileName())), __FILE__,
                     __LINE__);
        return rows;
    }
    const QRegularExpression space(QStringLiteral("\\s+"));
    while (!f.atEnd()) {
        const QString line = QString::fromUtf8(f.readLine()).section(QLatin1Char('#'), 0, 0);
        const QStringList cells = line.split(space, Qt::SkipEmptyParts);
        if (cells.isEmpty())
            continue;
        Row row;
        row.records = cells.value(1).toInt();
        if (cells.size() >= 4) {
            row.cmd = cells[2].toInt(nullptr, 16);
            row.dat1 = cells[3].toInt(nullptr, 16);
        }
        rows.insert(cells[0], row);
    }
    return rows;
}

const Operation* operationOf(const QString& signature) {
    for (const Operation& op : operations())
        if (op.name + op.params == signature)
            return &op;
    return nullptr;
}

QString keyOf(const Operation& op) {
    return findOperations(op.qualifiedName()).size() > 1
               ? QStringLiteral("%1/%2").arg(op.name).arg(op.argumentTypes.size())
               : op.name;
}

} // namespace

void verifyGroup(const QStringList& signatures, const QString& expectationFile) {
    const QMap<QString, Row> rows = readRows(expectationFile);
    QStringList seen;
    for (const QString& signature : signatures) {
        const Operation* op = operationOf(signature);
        QVERIFY2(op, qPrintable(QStringLiteral("%1 is not registered").arg(signature)));
        const QString key = keyOf(*op);
        if (seen.contains(key))
            continue; // a signature listed twice is one operation
        seen << key;
        QVERIFY2(rows.contains(key), qPrintable(QStringLiteral("no expected row for %1").arg(key)));

        resetLibrary();
        const Outcome outcome = runRequest(sampleCall(*op), DeviceSetting(), Models::defaults());
        const Row row = rows.value(key);
        QVERIFY2(outcome.records.size() == row.records,
                 qPrintable(QStringLiteral("%1 queued %2 records, expected %3")
                                .arg(key)
                                .arg(outcome.records.size())
                                .arg(row.records)));
        if (row.cmd < 0 || outcome.records.isEmpty())
            continue;
        const model_Protocoldata& first = outcome.records.first();
        QVERIFY2(first.cmdHead[2] == row.cmd && first.cmdHead[3] == row.dat1,
                 qPrintable(QStringLiteral("%1 sent %2/%3, expected %4/%5")
                                .arg(key)
                                .arg(first.cmdHead[2], 2, 16, QLatin1Char('0'))
                                .arg(first.cmdHead[3], 2, 16, QLatin1Char('0'))
                                .arg(row.cmd, 2, 16, QLatin1Char('0'))
                                .arg(row.dat1, 2, 16, QLatin1Char('0'))));
    }
    for (auto it = rows.begin(); it != rows.end(); ++it)
        QVERIFY2(
            seen.contains(it.key()),
            qPrintable(QStringLiteral("row %1 names no operation of the group").arg(it.key())));
}
