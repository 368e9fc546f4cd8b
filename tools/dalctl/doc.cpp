#include "doc.h"

#include "engine.h"
#include "records.h"
#include "session.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

// The page template is a resource of this static library.
static void loadPageResource() { Q_INIT_RESOURCE(reference); }

namespace {

const char kPlaceholder[] = "@DAL_REFERENCE_JSON@";

QJsonArray marksOf(const QVector<QStringList>& marks) {
    QJsonArray all;
    for (const QStringList& names : marks)
        all << QJsonArray::fromStringList(names);
    return all;
}

// What the operation queues on one family with its sample words, each byte of a record's head
// and block marked with what produced it; an operation the engine does not read has its
// records without marks.
QJsonObject resultOf(const Operation& op, const Family& family) {
    QJsonArray records;
    QString returned, refused;
    if (engine::explainable(op)) {
        for (const engine::SampleRecord& r : engine::sampleRecords(op, family)) {
            QJsonObject record = r.json;
            record.insert(QStringLiteral("marks"), marksOf(r.marks));
            record.insert(QStringLiteral("blockMarks"), marksOf(r.blockMarks));
            records << record;
        }
    }
    const Call call = sampleCall(op, family.code);
    try {
        const Outcome outcome = run(call);
        returned = outcome.returned;
        if (!engine::explainable(op)) {
            for (const model_Protocoldata& rec : outcome.records)
                records << recordJson(rec);
            for (const model_OsdParam& rec : outcome.osdRecords)
                records << recordJson(rec);
        }
    } catch (const std::exception& e) {
        refused = QString::fromLocal8Bit(e.what());
    }
    return {{QStringLiteral("family"), family.name},
            {QStringLiteral("returned"), returned},
            {QStringLiteral("refused"), refused},
            {QStringLiteral("records"), records}};
}

QJsonObject operationOf(const Operation& op) {
    QJsonArray arguments;
    const QStringList sample = op.sampleWords();
    for (int i = 0; i < op.arguments.size(); ++i)
        arguments << QJsonObject{
            {QStringLiteral("name"), op.arguments[i].name},
            {QStringLiteral("type"), op.arguments[i].type},
            {QStringLiteral("written"), QLatin1String(args::infoOf(op.arguments[i].kind).written)},
            {QStringLiteral("sample"), sample[i]}};
    QJsonArray results;
    for (const Family* family : familiesOf(op.className))
        results << resultOf(op, *family);
    return {{QStringLiteral("class"), op.className},
            {QStringLiteral("name"), op.name},
            {QStringLiteral("signature"), op.usage()},
            {QStringLiteral("arguments"), arguments},
            {QStringLiteral("explained"), engine::explainable(op)},
            {QStringLiteral("results"), results}};
}

// The JSON as a script element's text: "</" would close the element, "<!--" open a comment.
QByteArray scriptText(const QByteArray& json) {
    return QByteArray(json).replace("</", "<\\/").replace("<!--", "<\\u0021--");
}

} // namespace

QJsonObject referenceData() {
    const Quiet quiet; // the library's warnings about sample arguments
    QJsonArray families_, ops;
    for (const Family& family : families())
        families_ << QJsonObject{
            {QStringLiteral("name"), family.name},
            {QStringLiteral("deviceType"), family.code ? deviceCodeText(family.code) : QString()},
            {QStringLiteral("class"), family.className}};
    for (const Operation& op : operations())
        ops << operationOf(op);
    return {{QStringLiteral("format"), 2},
            {QStringLiteral("library"), QStringLiteral("libDAL_Manage " DAL_MANAGE_VERSION)},
            {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("families"), families_},
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
    if (file.open(QIODevice::WriteOnly)) {
        file.write(referencePage());
        if (file.commit())
            return true;
    }
    error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}
