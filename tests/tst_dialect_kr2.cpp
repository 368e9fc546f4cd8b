#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

namespace {

const QByteArray kNativeBytes("\x01\x02\x03", 3);

model_Protocoldata routed(int cmd, int d1, int d2, int d3, int d4, QByteArray data = kNativeBytes) {
    Utility_Manage::setDeviceType(0x250502);
    DalTarsel().f_SendCmd(3000, cmd, d1, d2, d3, d4, reinterpret_cast<unsigned char*>(data.data()),
                          data.size(), QString());
    const QVector<model_Protocoldata> queued = takeQueued();
    return queued.size() == 1 ? queued.first() : model_Protocoldata();
}

QByteArray head(int cmd, int d1, int d2 = 0, int d3 = 0, int d4 = 0) {
    return QByteArray() + char(cmd) + char(d1) + char(d2) + char(d3) + char(d4);
}

} // namespace

class tst_dialect_kr2 : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void translation_data();
    void translation();
    void edidUploadDropsChecksum();
    void sender();
    void containerIndex();
    void gatedByConnection();
};

void tst_dialect_kr2::translation_data() {
    QTest::addColumn<int>("cmd");
    QTest::addColumn<int>("d1");
    QTest::addColumn<int>("d2");
    QTest::addColumn<int>("d3");
    QTest::addColumn<int>("d4");
    QTest::addColumn<QString>("text"); // empty: no row, the native bytes are dropped

    QTest::newRow("68/6") << 0x68 << 6 << 0 << 0 << 0 << "(CLEAR)";
    QTest::newRow("68/25") << 0x68 << 25 << 0 << 0 << 0 << "(sync,scegid)";
    QTest::newRow("68/42") << 0x68 << 42 << 5 << 0 << 9 << "(fan,1)";
    QTest::newRow("68/42 DAT3") << 0x68 << 42 << 0 << 49 << 0 << "(fan,50)";
    QTest::newRow("68/43") << 0x68 << 43 << 0 << 0 << 0 << "(info,dev)";
    QTest::newRow("6A/3") << 0x6A << 3 << 0 << 0 << 0 << "(ver)";
    QTest::newRow("6A/9 passes") << 0x6A << 9 << 0 << 0 << 0 << "";
    QTest::newRow("85/0") << 0x85 << 0 << 0 << 0 << 0 << "(ip)";
    QTest::newRow("89/0") << 0x89 << 0 << 0 << 0 << 0 << "(ip)";
    QTest::newRow("8D/0") << 0x8D << 0 << 0 << 0 << 0 << "(ip)";
    QTest::newRow("89/1 passes") << 0x89 << 1 << 0 << 0 << 0 << "";
    QTest::newRow("90/1") << 0x90 << 1 << 0 << 0 << 0 << "(ip)";
    QTest::newRow("90/2 passes") << 0x90 << 2 << 0 << 0 << 0 << "";
    QTest::newRow("90/3") << 0x90 << 3 << 0 << 0 << 0 << "(sync,incard)";
    QTest::newRow("90/4") << 0x90 << 4 << 2 << 8 << 9 << "(info,res,3)";
    QTest::newRow("92/5") << 0x92 << 5 << 0 << 0 << 0 << "(sync,scene)";
    QTest::newRow("F0/1/2") << 0xF0 << 1 << 2 << 6 << 3 << "(wnd,clear,4)";
    QTest::newRow("F0/1/1 passes") << 0xF0 << 1 << 1 << 6 << 3 << "";
    QTest::newRow("F0/2 passes") << 0xF0 << 2 << 2 << 0 << 0 << "";
    QTest::newRow("F1/4") << 0xF1 << 4 << 0 << 0 << 0 << "(sync,outcard)";
    QTest::newRow("F1/8") << 0xF1 << 8 << 7 << 3 << 0 << "(sync,scewnd,7)";
    QTest::newRow("F1/59") << 0xF1 << 59 << 0 << 0 << 0 << "(sync,omap)";
}

void tst_dialect_kr2::translation() {
    QFETCH(int, cmd);
    QFETCH(int, d1);
    QFETCH(int, d2);
    QFETCH(int, d3);
    QFETCH(int, d4);
    QFETCH(QString, text);

    const model_Protocoldata rec = routed(cmd, d1, d2, d3, d4);
    QCOMPARE(rec.Datablock, text);
    QCOMPARE(rec.arryDatablock, text.toLatin1());
    QCOMPARE(int(rec.dataType), 0);
    QCOMPARE(headOf(rec), head(cmd, d1, d2, d3, d4));
    QCOMPARE(rec.deviceType, 0x250502);
}

void tst_dialect_kr2::edidUploadDropsChecksum() {
    QByteArray block(129, '\0');
    for (int i = 0; i < block.size(); ++i)
        block[i] = char(i);
    const model_Protocoldata rec = routed(0xF0, 12, 0, 0x81, 0, block);
    QCOMPARE(rec.Datablock, QString("edid file"));
    QCOMPARE(rec.arryDatablock, block.left(128));

    QCOMPARE(routed(0xF0, 12, 0, 0, 0, QByteArray()).arryDatablock, QByteArray());
}

void tst_dialect_kr2::sender() {
    Utility_Manage::setConnectType(6);
    DalTarsel dal;
    dal.f_SendCmdForKR2(500, 0x168, 6, 1, 2, 3, "(x)", QByteArray());
    dal.f_SendCmdForKR2(500, 0x68, 6, 1, 2, 3, "(x)", QByteArray("raw"));
    dal.sendHeartbeatForKR2(800);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 3);
    QCOMPARE(int(q[0].connectType), 6);
    QCOMPARE(headOf(q[0]), head(0x68, 6, 1, 2, 3));
    QCOMPARE(q[0].arryDatablock, QByteArray("(x)"));
    QCOMPARE(q[0].deviceType, 0x250502);
    QCOMPARE(q[1].arryDatablock, QByteArray("raw"));
    QCOMPARE(headOf(q[2]), head(0x90, 0x1F));
    QCOMPARE(q[2].Datablock, QString("(ip)"));
    QCOMPARE(q[2].timeout, 800);
}

void tst_dialect_kr2::containerIndex() {
    DalTarsel dal;
    Utility_Manage::setDeviceType(0x250300);
    dal.setCurContainerIndexForT9(7);
    QCOMPARE(dal.curContainerIndex, 7);
    QVERIFY(takeQueued().isEmpty());

    Utility_Manage::setDeviceType(0x250502);
    dal.setCurContainerIndexForT9(-2);
    QCOMPARE(dal.curContainerIndex, -2);
    const QVector<model_Protocoldata> q = takeQueued();
    QCOMPARE(q.size(), 1);
    QCOMPARE(q[0].Datablock, QString("(setting,cgrp,-2)"));
    QCOMPARE(headOf(q[0]), head(0xF0, 0x3B, 0xFE));
    QCOMPARE(q[0].timeout, 3000);
}

void tst_dialect_kr2::gatedByConnection() {
    DalTarsel::isConnected = false;
    DalTarsel dal;
    dal.sendHeartbeatForKR2(100);
    Utility_Manage::setDeviceType(0x250502);
    dal.setCurContainerIndexForT9(3);
    routed(0x6A, 3, 0, 0, 0);
    QVERIFY(takeQueued().isEmpty());
    QCOMPARE(dal.curContainerIndex, 3);
}

QTEST_GUILESS_MAIN(tst_dialect_kr2)
#include "tst_dialect_kr2.moc"
