#include "completeness.h"
#include "dalTarsel.h"
#include "testsupport.h"
#include "utility_manage.h"

#include <QtTest>

class tst_catalog_queries : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }

    void layerAlpha_data();
    void layerAlpha();
    void osd_data();
    void osd();
    void rtsp_data();
    void rtsp();
    void ptzBlocks_data();
    void ptzBlocks();
    void ptzTurnOutsideDirections();
    void derivedSelectors();
    void everyOperationRegistered();
};

void tst_catalog_queries::layerAlpha_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("records");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<int>("timeout");
    QTest::newRow("mode 0") << 0 << 1 << QByteArray::fromHex("f102000000") << 3000;
    QTest::newRow("mode 1") << 1 << 1 << QByteArray::fromHex("f102010000") << 3000;
    QTest::newRow("mode 2 reads the layer") << 2 << 1 << QByteArray::fromHex("f108070000") << 4000;
    QTest::newRow("mode 3") << 3 << 0 << QByteArray() << 0;
    QTest::newRow("mode -1") << -1 << 0 << QByteArray() << 0;
}

void tst_catalog_queries::layerAlpha() {
    QFETCH(int, mode);
    QFETCH(int, records);
    QFETCH(QByteArray, head);
    QFETCH(int, timeout);
    DalTarsel().getLayerAlpha(mode, 7);
    const auto queued = takeQueued();
    QCOMPARE(queued.size(), records);
    if (records) {
        QCOMPARE(headOf(queued[0]), head);
        QCOMPARE(queued[0].timeout, timeout);
    }
}

void tst_catalog_queries::osd_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("records");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("mode 0 reads one") << 0 << 1 << QByteArray::fromHex("f10f050000");
    QTest::newRow("mode 1 reads all") << 1 << 1 << QByteArray::fromHex("f10fff0000");
    QTest::newRow("mode 2") << 2 << 0 << QByteArray();
}

void tst_catalog_queries::osd() {
    QFETCH(int, mode);
    QFETCH(int, records);
    QFETCH(QByteArray, head);
    ModelTarsel model;
    model.timeout = 2200;
    DalTarsel().getOSD(5, mode, model);
    const auto queued = takeQueued();
    QCOMPARE(queued.size(), records);
    if (records) {
        QCOMPARE(headOf(queued[0]), head);
        QCOMPARE(queued[0].timeout, 2200);
    }
}

void tst_catalog_queries::rtsp_data() {
    QTest::addColumn<int>("device");
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("0x220000 sixteen channels")
        << 0x220000 << 5 << 9 << QByteArray::fromHex("f125590000");
    QTest::newRow("0x220000 source 16 wraps")
        << 0x220000 << 16 << 3 << QByteArray::fromHex("f125030000");
    QTest::newRow("0x220000 source 31")
        << 0x220000 << 31 << 15 << QByteArray::fromHex("f125ff0000");
    QTest::newRow("0x220000 source 32") << 0x220000 << 32 << 3 << QByteArray::fromHex("f128030000");
    QTest::newRow("other eight channels")
        << 0x700000 << 5 << 9 << QByteArray::fromHex("f125290000");
    QTest::newRow("other source 16") << 0x123456 << 16 << 3 << QByteArray::fromHex("f125830000");
    QTest::newRow("other source 31") << 0 << 31 << 7 << QByteArray::fromHex("f125ff0000");
    QTest::newRow("source 32") << 0 << 32 << 3 << QByteArray::fromHex("f128030000");
    QTest::newRow("source 33") << 0 << 33 << 10 << QByteArray::fromHex("f1280a0000");
    QTest::newRow("source 255") << 0 << 255 << 7 << QByteArray::fromHex("f128ff0000");
}

void tst_catalog_queries::rtsp() {
    QFETCH(int, device);
    QFETCH(int, source);
    QFETCH(int, channel);
    QFETCH(QByteArray, head);
    Utility_Manage::setDeviceType(device);
    ModelTarsel model;
    model.timeout = 1800;
    DalTarsel().geth264inputrtsp(model, source, channel);
    const auto queued = takeQueued();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(headOf(queued[0]), head);
    QCOMPARE(queued[0].timeout, 1800);
}

void tst_catalog_queries::ptzBlocks_data() {
    QTest::addColumn<QString>("op");
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("turn 0") << "ptzTurn" << 0 << QByteArray::fromHex("9210000000")
                            << QByteArray::fromHex("8101060108080301ff");
    QTest::newRow("turn 1") << "ptzTurn" << 1 << QByteArray::fromHex("9210000100")
                            << QByteArray::fromHex("8101060108080302ff");
    QTest::newRow("turn 2") << "ptzTurn" << 2 << QByteArray::fromHex("9210000200")
                            << QByteArray::fromHex("8101060108080103ff");
    QTest::newRow("turn 3") << "ptzTurn" << 3 << QByteArray::fromHex("9210000300")
                            << QByteArray::fromHex("8101060108080203ff");
    QTest::newRow("turn reset") << "ptzTurnReset" << 0 << QByteArray::fromHex("9212000000")
                                << QByteArray::fromHex("81010604ff");
    QTest::newRow("turn stop") << "ptzTurnStop" << 0 << QByteArray::fromHex("9214000000")
                               << QByteArray::fromHex("8101060102020303ff");
    QTest::newRow("zoom") << "ptzZoom" << 0x125 << QByteArray::fromHex("9216250000")
                          << QByteArray::fromHex("8101040725ff");
    QTest::newRow("zoom reset") << "ptzZoomReset" << 0 << QByteArray::fromHex("9218000000")
                                << QByteArray::fromHex("8101044700000000ff");
    QTest::newRow("focus") << "ptzFocus" << 0x02 << QByteArray::fromHex("921a020000")
                           << QByteArray::fromHex("8101040802ff");
    QTest::newRow("focus reset") << "ptzFocusReset" << 0 << QByteArray::fromHex("921c000000")
                                 << QByteArray::fromHex("8101044800000000ff");
    QTest::newRow("focus auto 1") << "ptzFocusAuto" << 1 << QByteArray::fromHex("921e010000")
                                  << QByteArray::fromHex("8101043802ff");
    QTest::newRow("focus auto 4 wraps") << "ptzFocusAuto" << 4 << QByteArray::fromHex("921e040000")
                                        << QByteArray::fromHex("81010438ffff");
    QTest::newRow("brightness") << "ptzBrightness" << 0x3C << QByteArray::fromHex("9220000000")
                                << QByteArray::fromHex("810104a10000003cff");
}

void tst_catalog_queries::ptzBlocks() {
    QFETCH(QString, op);
    QFETCH(int, value);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, block);
    DalTarsel dal;
    if (op == QLatin1String("ptzTurn"))
        dal.ptzTurn(2000, 8, value);
    else if (op == QLatin1String("ptzTurnReset"))
        dal.ptzTurnReset(2000);
    else if (op == QLatin1String("ptzTurnStop"))
        dal.ptzTurnStop(2000);
    else if (op == QLatin1String("ptzZoom"))
        dal.ptzZoom(2000, value);
    else if (op == QLatin1String("ptzZoomReset"))
        dal.ptzZoomReset(2000);
    else if (op == QLatin1String("ptzFocus"))
        dal.ptzFocus(2000, value);
    else if (op == QLatin1String("ptzFocusReset"))
        dal.ptzFocusReset(2000);
    else if (op == QLatin1String("ptzFocusAuto"))
        dal.ptzFocusAuto(2000, value);
    else
        dal.ptzBrightness(2000, value);
    const auto queued = takeQueued();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(headOf(queued[0]), head);
    QCOMPARE(queued[0].arryDatablock, block);
    QCOMPARE(queued[0].timeout, 2000);
}

void tst_catalog_queries::ptzTurnOutsideDirections() {
    DalTarsel dal;
    for (int direction : {-1, 4, 0x103})
        dal.ptzTurn(2000, 8, direction);
    QVERIFY(takeQueued().isEmpty());
}

void tst_catalog_queries::derivedSelectors() {
    ModelTarsel model;
    model.timeout = 900;
    DalTarsel dal;
    dal.getInProperty(3, model, 0x0512);
    dal.getWebAddress(model, 2);
    dal.getH264SoftVer(model, 2);
    dal.getH265InputUrl(700, 4, 9);
    const auto queued = takeQueued();
    QCOMPARE(queued.size(), 4);
    QCOMPARE(headOf(queued[0]), QByteArray::fromHex("f109031205"));
    QCOMPARE(headOf(queued[1]), QByteArray::fromHex("f120220000"));
    QCOMPARE(headOf(queued[2]), QByteArray::fromHex("f120230000"));
    QCOMPARE(headOf(queued[3]), QByteArray::fromHex("f162210000"));
    QCOMPARE(queued[3].timeout, 700);
}

void tst_catalog_queries::everyOperationRegistered() {
    // clang-format off
    const QStringList ops = QStringList()
#include "group_signatures_begin.h"
#include "catalog/queries.def"
#include "group_signatures_end.h"
        ;
    // clang-format on
    QCOMPARE(ops.size(), 121);
    verifyGroup(ops, QStringLiteral("queries.txt"));
}

QTEST_GUILESS_MAIN(tst_catalog_queries)
#include "tst_catalog_queries.moc"
