#include "dal_pommet.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

#include <thread>

class tst_probes : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }
    void familyProbes();
    void queuedWhileDisconnected();
    void nvLocalAddress_data();
    void nvLocalAddress();
    void traceLabels();
    void concurrentSearchesKeepPairs();
};

void tst_probes::familyProbes() {
    Dal_Pommet k;
    k.searchDeviceForT9(700);
    k.searchDeviceForKR2(701, true);
    k.searchDeviceForT3(702, false);
    k.searchDeviceForVM6S(703, true);
    k.searchDeviceForVantaZ(704, false);
    const auto r = takeQueued();
    QCOMPARE(r.size(), 7);
    QCOMPARE(headOf(r[0]), QByteArray::fromHex("6801000000"));
    QCOMPARE(r[0].statusByte, 2);
    QCOMPARE(r[0].deviceType, 0x250300);
    QCOMPARE(r[0].timeout, 700);

    QCOMPARE(r[1].Datablock, QStringLiteral("(info,dev)"));
    QCOMPARE(r[1].arryDatablock, QByteArray("(info,dev)"));
    QCOMPARE(headOf(r[2]), QByteArray::fromHex("6a11000000"));
    QCOMPARE(r[2].arryDatablock, QByteArray("(ip)"));
    for (int i : {1, 2}) {
        QCOMPARE(r[i].deviceType, 0x250502);
        QCOMPARE(r[i].connectType, 1);
        QCOMPARE(r[i].statusByte, 1);
    }
    QCOMPARE(r[3].arryDatablock, QByteArray("<GBMG>"));
    QCOMPARE(r[4].Datablock, QStringLiteral("<GFTM>"));
    QCOMPARE(r[4].deviceType, 0x250400);
    QCOMPARE(r[4].connectType, 0);
    QCOMPARE(r[5].deviceType, 0x2C0104);
    QCOMPARE(r[5].connectType, 1);
    QCOMPARE(r[6].deviceType, 0x2C0202);
    QCOMPARE(r[6].statusByte, 1);
}

void tst_probes::queuedWhileDisconnected() {
    Dal_Pommet::isConnected = false;
    Utility_Manage::setConnectToneFlag(0);
    Dal_Pommet().searchDeviceForT9(100);
    QCOMPARE(takeQueued().size(), 1);
}

void tst_probes::nvLocalAddress_data() {
    QTest::addColumn<QString>("localIp");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("Default") << "Default" << QByteArray("FIND_NODE_UNI");
    QTest::newRow("default") << "default" << QByteArray("FIND_NODE_BOARD");
    QTest::newRow("address") << "192.168.0.10" << QByteArray("FIND_NODE_BOARD");
    QTest::newRow("empty") << "" << QByteArray("FIND_NODE_BOARD");
}

void tst_probes::nvLocalAddress() {
    QFETCH(QString, localIp);
    QFETCH(QByteArray, bytes);
    Utility_Manage::setLocalIP(localIp);
    Dal_Pommet().searchDeviceForNV(900, 0x107, QStringLiteral("Default"));
    const auto r = takeQueued();
    QCOMPARE(r.size(), 1);
    QCOMPARE(headOf(r[0]), QByteArray::fromHex("6801070000"));
    QCOMPARE(r[0].arryDatablock, bytes);
    QCOMPARE(r[0].strAux1, QStringLiteral("Default"));
    QCOMPARE(r[0].deviceType, 0x2D0000);
    QVERIFY(r[0].Datablock.isEmpty());
}

void tst_probes::traceLabels() {
    TraceCapture trace;
    Dal_Pommet k;
    k.searchDeviceForT3(1, true);
    k.searchDeviceForVM6S(1, false);
    k.searchDeviceForVantaZ(1, true);
    QCOMPARE(trace.lines(), QStringList({"-----------------searchDeviceForT3--isCom= true",
                                         "-----------------searchDeviceForVM6S--isCom= false",
                                         "-----------------searchDeviceForVM6S--isCom= true"}));
    takeQueued();
}

void tst_probes::concurrentSearchesKeepPairs() {
    std::thread first([] { Dal_Pommet().searchDeivce(10); });
    std::thread second([] { Dal_Pommet().searchDeivce(20); });
    first.join();
    second.join();
    const auto r = takeQueued();
    QCOMPARE(r.size(), 4);
    for (int pair = 0; pair < 2; ++pair) {
        QCOMPARE(headOf(r[2 * pair]), QByteArray::fromHex("6801000000"));
        QCOMPARE(headOf(r[2 * pair + 1]), QByteArray::fromHex("6a11000000"));
        QCOMPARE(r[2 * pair].timeout, r[2 * pair + 1].timeout); // one call's pair together
        QCOMPARE(r[2 * pair].statusByte, 1);
    }
}

QTEST_GUILESS_MAIN(tst_probes)
#include "tst_probes.moc"
