#include "registry.h"
#include "session.h"
#include "testsupport.h"

#include <QtTest>

namespace {

// One operation as its list declares it: the class, "name(params)" and, for an operation that
// sends one fixed command, the CMD and DAT1 cells as written in its row.
struct ListedOperation {
    const char* className;
    const char* signature;
    const char* cmd = nullptr;
    const char* dat1 = nullptr;
};

// clang-format off
#define LISTED_SEND(name, params, timeout, cmd, dat1, ...) {CLASS_NAME, #name #params, #cmd, #dat1},
#define LISTED_OP(ret, name, params) {CLASS_NAME, #name #params},
const QVector<ListedOperation> kListed = {
#define CLASS_NAME "DalTarsel"
#define DAL_SEND LISTED_SEND
#define DAL_OP LISTED_OP
#include "dalTarsel.def"
#undef CLASS_NAME
#define CLASS_NAME "Dal_Pommet"
#define DAL_SEND LISTED_SEND
#define DAL_OP LISTED_OP
#include "dal_pommet.def"
#undef CLASS_NAME
#define CLASS_NAME "dal_Osd"
#define DAL_OP LISTED_OP
#include "dal_osd.def"
#undef CLASS_NAME
};
#undef LISTED_SEND
#undef LISTED_OP
// clang-format on

// Operations that queue nothing by design: byte helpers, translators that return the record
// they build, operations with nothing to send, and those whose sample argument is refused.
const QStringList kQueueNothing = {
    "DalTarsel::addToReceivedQueue",
    "DalTarsel::setRetFlagStatus",
    "DalTarsel::getBlock",
    "DalTarsel::setCheckSum",
    "DalTarsel::splitTwoByte",
    "DalTarsel::f_RGBtoInt",
    "DalTarsel::setOutPortEdid",
    "DalTarsel::getEquipmentClock",
    "DalTarsel::setLayerContainerIndex",    // not a device that takes it
    "DalTarsel::setCurContainerIndexForT9", // only a KR2 is told
    "Dal_Pommet::getBlock",
    "Dal_Pommet::setCheckSum",
    "dal_Osd::getBlock",
    "dal_Osd::setCheckSum",
};

int cell(const char* text) {
    bool ok = false;
    const int value = text ? QString::fromLatin1(text).toInt(&ok, 0) : -1;
    return ok ? value : -1;
}

} // namespace

// Each operation of every list is registered and, called once through the dalctl registry with
// sample arguments and the default models on a native device, queues at least one record (or
// is one of the few known to queue none); a fixed command's first record carries its row's CMD
// and DAT1.
class tst_completeness : public QObject {
    Q_OBJECT
private slots:
    void everyListedOperation_data();
    void everyListedOperation();
};

void tst_completeness::everyListedOperation_data() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < kListed.size(); ++i)
        QTest::addRow("%s::%s", kListed[i].className, kListed[i].signature) << i;
}

void tst_completeness::everyListedOperation() {
    QFETCH(int, index);
    const ListedOperation& listed = kListed.at(index);
    const QString className = QString::fromLatin1(listed.className);
    const Operation* op = nullptr;
    for (const Operation& candidate : operations())
        if (candidate.className == className &&
            candidate.name + candidate.params == QLatin1String(listed.signature))
            op = &candidate;
    QVERIFY2(op, "not registered");

    resetLibrary();
    Outcome outcome;
    try {
        outcome = run(Call{op, op->sampleWords(), Models::defaults(), UtilityValues()});
    } catch (const ArgError& error) {
        QFAIL(error.what());
    }
    const int queued = outcome.records.size() + outcome.osdRecords.size();
    const QString name = op->qualifiedName();
    const bool translator = name.contains(QLatin1String("::transformBufToQStringFor")) ||
                            name.contains(QLatin1String("::convertCheckSumFor"));
    QVERIFY2(queued > 0 || translator || kQueueNothing.contains(name), "queued nothing");
    if (kQueueNothing.contains(name))
        QVERIFY2(queued == 0, "listed as queueing nothing but queued a record");

    const int cmd = cell(listed.cmd), dat1 = cell(listed.dat1);
    if (cmd < 0 || dat1 < 0)
        return;
    QCOMPARE(outcome.records.size(), 1);
    QCOMPARE(int(outcome.records[0].cmdHead[2]), cmd);
    QCOMPARE(int(outcome.records[0].cmdHead[3]), dat1);
}

QTEST_GUILESS_MAIN(tst_completeness)
#include "tst_completeness.moc"
