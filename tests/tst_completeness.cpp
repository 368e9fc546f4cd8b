#include "completeness.h"

#include <QtTest>

class tst_completeness : public QObject {
    Q_OBJECT
private slots:
    void everyListedOperation_data();
    void everyListedOperation();
};

void tst_completeness::everyListedOperation_data() {
    QTest::addColumn<int>("index");
    const QVector<ListedOperation>& listed = listedOperations();
    for (int i = 0; i < listed.size(); ++i)
        QTest::addRow("%s::%s", listed[i].className, listed[i].signature) << i;
}

void tst_completeness::everyListedOperation() {
    QFETCH(int, index);
    verifyListed(listedOperations().at(index));
}

QTEST_GUILESS_MAIN(tst_completeness)
#include "tst_completeness.moc"
