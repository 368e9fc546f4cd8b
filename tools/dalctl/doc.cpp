#include "doc.h"

#include "engine.h"
#include "records.h"
#include "samples.h"
#include "session.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

// The page template is a resource of this static library.
static void loadPageResource() { Q_INIT_RESOURCE(reference); }

namespace {

const char kPlaceholder[] = "@DAL_REFERENCE_JSON@";

struct Column {
    QString family;
    int code;   // the family's device type; 0 for the OSD box, which has none
    int device; // the index the engine learnt the family's records in
    QString className;
};

QVector<Column> columns() {
    QVector<Column> all;
    const QStringList names = familyNames();
    const QVector<int> codes = familyCodes();
    for (int i = 0; i < names.size(); ++i)
        if (names[i] == QLatin1String("keyboard"))
            all << Column{names[i], codes[i], engine::kAccessories, QStringLiteral("Dal_Pommet")};
        else
            all << Column{names[i], codes[i], codes[i], QStringLiteral("DalTarsel")};
    all << Column{QStringLiteral("OSD"), 0, engine::kAccessories, QStringLiteral("dal_Osd")};
    return all;
}

QJsonArray marksOf(const QVector<QStringList>& marks) {
    QJsonArray all;
    for (const QStringList& names : marks)
        all << QJsonArray::fromStringList(names);
    return all;
}

// What the operation queues on one family: as the engine learnt it, or, for what the engine
// does not learn (and a call that queues nothing), from a call of its own.
QJsonObject resultOf(const Operation& op, const Column& column) {
    QJsonArray records;
    if (explainable(op))
        for (const engine::SampleRecord& r : engine::sampleRecords(column.device, op)) {
            QJsonObject record = r.json;
            record.insert(QStringLiteral("marks"), marksOf(r.marks));
            records << record;
        }
    QString returned, refused;
    if (records.isEmpty()) {
        DeviceSetting device;
        if (column.device != engine::kAccessories)
            device.deviceType = column.device;
        try {
            const Outcome outcome =
                runOperation(op, sampleCall(op).mid(1), device, Models::defaults());
            returned = outcome.returned;
            for (const model_Protocoldata& rec : outcome.records) {
                QJsonObject record = recordJson(rec);
                record.insert(QStringLiteral("marks"),
                              marksOf(QVector<QStringList>(sizeof rec.cmdHead)));
                records << record;
            }
            for (const model_OsdParam& rec : outcome.osdRecords) {
                QJsonObject record = osdRecordJson(rec);
                record.insert(QStringLiteral("marks"),
                              marksOf(QVector<QStringList>(sizeof rec.frameHead)));
                records << record;
            }
        } catch (const std::exception& e) {
            refused = QString::fromLocal8Bit(e.what());
        }
    }
    return {{QStringLiteral("family"), column.family},
            {QStringLiteral("returned"), returned},
            {QStringLiteral("refused"), refused},
            {QStringLiteral("records"), records}};
}

QJsonObject operationOf(const Operation& op, const QVector<Column>& all) {
    QJsonArray arguments;
    const QStringList sample = sampleCall(op).mid(1);
    for (int i = 0; i < op.argumentTypes.size(); ++i)
        arguments << QJsonObject{{QStringLiteral("name"), op.argumentNames.value(i)},
                                 {QStringLiteral("type"), op.argumentTypes[i]},
                                 {QStringLiteral("sample"), sample[i]}};
    QJsonArray results;
    for (const Column& column : all)
        if (column.className == op.className)
            results << resultOf(op, column);
    return {
        {QStringLiteral("class"), op.className},        {QStringLiteral("name"), op.name},
        {QStringLiteral("signature"), op.usage()},      {QStringLiteral("arguments"), arguments},
        {QStringLiteral("explained"), explainable(op)}, {QStringLiteral("results"), results}};
}

// The JSON as a script element's text: "</" would close the element, "<!--" open a comment.
QByteArray scriptText(const QByteArray& json) {
    return QByteArray(json).replace("</", "<\\/").replace("<!--", "<\\u0021--");
}

} // namespace

QJsonObject referenceData() {
    const Quiet quiet; // the library's warnings about sample arguments
    const QVector<Column> all = columns();
    QJsonArray families, ops;
    for (const Column& column : all)
        families << QJsonObject{
            {QStringLiteral("name"), column.family},
            {QStringLiteral("deviceType"), column.code ? deviceCodeText(column.code) : QString()},
            {QStringLiteral("class"), column.className}};
    for (const Operation& op : operations())
        ops << operationOf(op, all);
    return {{QStringLiteral("format"), 1},
            {QStringLiteral("library"), QStringLiteral("libDAL_Manage " DAL_MANAGE_VERSION)},
            {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("families"), families},
            {QStringLiteral("operations"), ops}};
}

QByteArray referencePage() {
    loadPageResource();
    QFile page(QStringLiteral(":/reference/reference.html"));
    if (!page.open(QIODevice::ReadOnly))
        return QByteArray();
    return page.readAll().replace(
        kPlaceholder, scriptText(QJsonDocument(referenceData()).toJson(QJsonDocument::Compact)));
}

bool writeReferencePage(const QString& path, QString& error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.write(referencePage());
    if (!file.commit()) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}
