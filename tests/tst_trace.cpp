#include "dalTarsel.h"
#include "testsupport.h"

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QtTest>

// The trace line is built by hand for speed; it must stay what qDebug() itself writes.
class tst_trace : public QObject {
    Q_OBJECT
private slots:
    void init() { resetLibrary(); }
    void sameAsQDebug_data();
    void sameAsQDebug();
    void randomTextSameAsQDebug();
    void handlerMayQueueACommand();
    void filteredOutIsNotBuilt();
};

namespace {

QString viaQDebug(const model_Protocoldata& rec) {
    QString line;
    QDebug(&line) << "---addToQueue----CMD=" << QString::number(rec.cmdHead[2], 16)
                  << "---DAT1=" << QString::number(rec.cmdHead[3], 16)
                  << "---DAT2=" << QString::number(rec.cmdHead[4], 16)
                  << "---DAT3=" << QString::number(rec.cmdHead[5], 16)
                  << "---DAT4=" << QString::number(rec.cmdHead[6], 16)
                  << "---arryDatablock=" << QString::fromLatin1(rec.arryDatablock.toHex())
                  << "---Datablock=" << rec.Datablock;
    return line.chopped(1); // QDebug(QString*) keeps the separator after the last item
}

void compareWithQDebug(int cmd, int dat, const QByteArray& block, const QString& text) {
    MessageCapture capture;
    QByteArray data = block;
    DalTarsel().f_SendCmd(3000, cmd, dat, dat >> 4, 0xFF, 0,
                          reinterpret_cast<unsigned char*>(data.data()), data.size(), text);
    const QVector<model_Protocoldata> queued = takeQueued();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(capture.debug(), QStringList{viaQDebug(queued.first())});
}

} // namespace

void tst_trace::sameAsQDebug_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("quotes and backslashes") << QStringLiteral("a\"b\\c\"\"");
    QTest::newRow("control characters") << QStringLiteral("\b\f\n\r\t\x01\x1f\x7f");
    QTest::newRow("zero and Latin-1") << QString::fromLatin1("A\0\xa0\xad\xff", 5);
    QTest::newRow("BMP printable and not")
        << QStringLiteral("\u00e9\u2713\u200b\ufeff\uffff\u0378");
    QTest::newRow("pairs and lone surrogates")
        << QString::fromUtf16(u"\U0001F600\U000E0001\xd800x\xdc00\xdbff");
    QTest::newRow("hex digit after an escape") << QStringLiteral("\x01"
                                                                 "1\x7f"
                                                                 "a");
}

void tst_trace::sameAsQDebug() {
    QFETCH(QString, text);
    compareWithQDebug(0x1F4, 0x7A, QByteArray("\x00\x0f\xf0\xff", 4), text);
}

void tst_trace::randomTextSameAsQDebug() {
    QRandomGenerator random(20261123);
    for (int round = 0; round < 500; ++round) {
        QString text;
        const int length = random.bounded(12);
        for (int i = 0; i < length; ++i)
            text += QChar(
                char16_t(random.bounded(4) == 0 ? random.bounded(0x80) : random.bounded(0x10000)));
        QByteArray block(random.bounded(6), '\0');
        random.fillRange(reinterpret_cast<quint32*>(block.data()), block.size() / 4);
        compareWithQDebug(random.bounded(0x100), random.bounded(0x100), block, text);
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(QStringLiteral("round %1").arg(round)));
    }
}

// A handler that itself queues a command must still see its own line intact afterwards.
void tst_trace::handlerMayQueueACommand() {
    static QStringList handled;
    handled.clear();
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
            if (handled.isEmpty()) {
                handled << QString();
                DalTarsel().f_SendCmd(3000, 0x6A, 9, 0, 0, 0, nullptr, 0, QStringLiteral("inner"));
            }
            handled << message;
        });
    DalTarsel().f_SendCmd(3000, 0x68, 0x12, 3, 0, 0, nullptr, 0, QStringLiteral("outer"));
    qInstallMessageHandler(previous);
    const QVector<model_Protocoldata> queued = takeQueued();
    QCOMPARE(queued.size(), 2);
    // Qt hands a message written inside the handler to its default output, not to the handler.
    QCOMPARE(handled, (QStringList{QString(), viaQDebug(queued[1])}));
}

// With debug output filtered out the command still goes, untraced.
void tst_trace::filteredOutIsNotBuilt() {
    MessageCapture messages;
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    DalTarsel().f_SendCmd(3000, 0x78, 0, 0, 0, 0, nullptr, 0, QStringLiteral("x"));
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(messages.debug().isEmpty());
    QCOMPARE(takeQueued().size(), 1);
}

QTEST_GUILESS_MAIN(tst_trace)
#include "tst_trace.moc"
