#include "registry.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

namespace {

// Names of the member functions declared by hand in the public sections of a class header,
// besides those generated from its operation list.
QStringList handDeclaredOperations(const QString& header, const QString& className) {
    QFile file(QStringLiteral(DAL_SOURCE_DIR "/") + header);
    if (!file.open(QIODevice::ReadOnly))
        return {QStringLiteral("<cannot read %1>").arg(header)};
    QString text = QString::fromUtf8(file.readAll());
    text.remove(QRegularExpression(QStringLiteral("//[^\n]*")));
    text.remove(
        QRegularExpression(QStringLiteral("^\\s*#[^\n]*"), QRegularExpression::MultilineOption));

    static const QRegularExpression section(
        QStringLiteral("(public|private|protected|signals|Q_SIGNALS)\\s*:"));
    static const QRegularExpression declaration(QStringLiteral(
        "(?:^|[;{}])\\s*(?:static\\s+|virtual\\s+)?[\\w:<>,*&\\s]*?\\b(\\w+)\\s*\\("));
    const int body = text.indexOf(QStringLiteral("class DAL_EXPORT ") + className);
    if (body < 0)
        return {QStringLiteral("<no class %1 in %2>").arg(className, header)};
    text = text.mid(body);
    text.truncate(text.indexOf(QStringLiteral("\n};")));

    QStringList names;
    QString access = QStringLiteral("private");
    int at = 0;
    while (at < text.size()) {
        const QRegularExpressionMatch next = section.match(text, at);
        const int end = next.hasMatch() ? next.capturedStart() : text.size();
        if (access == QLatin1String("public")) {
            auto it = declaration.globalMatch(text.mid(at, end - at));
            while (it.hasNext()) {
                const QString name = it.next().captured(1);
                if (name != className && name != QLatin1String("Q_OBJECT"))
                    names << name;
            }
        }
        if (!next.hasMatch())
            break;
        access = next.captured(1);
        at = next.capturedEnd();
    }
    return names;
}

} // namespace

class tst_registry : public QObject {
    Q_OBJECT
private slots:
    void everyPublicOperationRegistered_data();
    void everyPublicOperationRegistered();
    void listedOperationsRegistered();
    void namesUnique();
};

void tst_registry::everyPublicOperationRegistered_data() {
    QTest::addColumn<QString>("header");
    QTest::addColumn<QString>("className");
    QTest::newRow("DalTarsel") << "dalTarsel.h"
                               << "DalTarsel";
    QTest::newRow("Dal_Pommet") << "dal_pommet.h"
                                << "Dal_Pommet";
    QTest::newRow("dal_Osd") << "dal_osd.h"
                             << "dal_Osd";
}

void tst_registry::everyPublicOperationRegistered() {
    QFETCH(QString, header);
    QFETCH(QString, className);
    for (const QString& name : handDeclaredOperations(header, className))
        QVERIFY2(
            !findOperations(className + "::" + name).isEmpty(),
            qPrintable(QStringLiteral("%1::%2 is public but not registered").arg(className, name)));
}

void tst_registry::listedOperationsRegistered() {
    const QStringList signatures = QStringList()
#define DAL_SEND(name, params, ...) << QStringLiteral(CLASS_NAME "::" #name #params)
#define DAL_OP(ret, name, params) << QStringLiteral(CLASS_NAME "::" #name #params)
#define DAL_STATIC(ret, name, params) << QStringLiteral(CLASS_NAME "::" #name #params)
#define CLASS_NAME "DalTarsel"
#include "dalTarsel.def"
#undef CLASS_NAME
#define CLASS_NAME "Dal_Pommet"
#include "dal_pommet.def"
#undef CLASS_NAME
#define CLASS_NAME "dal_Osd"
#include "dal_osd.def"
#undef CLASS_NAME
#undef DAL_SEND
#undef DAL_OP
#undef DAL_STATIC
        ;
    QStringList registered;
    for (const Operation& op : operations())
        registered << op.usage();
    for (const QString& signature : signatures)
        QVERIFY2(registered.contains(signature), qPrintable(signature + " is not registered"));
    QVERIFY(registered.size() >= 10);
}

void tst_registry::namesUnique() {
    QStringList usages;
    for (const Operation& op : operations()) {
        QVERIFY2(!usages.contains(op.usage()), qPrintable(op.usage() + " registered twice"));
        usages << op.usage();
    }
}

QTEST_GUILESS_MAIN(tst_registry)
#include "tst_registry.moc"
