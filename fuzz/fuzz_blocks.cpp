// Arbitrary model counts and list sizes through every data-block builder.
// Input: one byte choosing the operation, then bytes giving the model's counts, the number of
// scenes and layers it holds, and the operation's integer arguments.
#include "registry.h"
#include "session.h"

#include <QLoggingCategory>

#include <cstdint>

namespace {

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

class Input {
public:
    Input(const uint8_t* data, size_t size) : data(data), size(size) {}
    // A small signed value, so that counts and indexes land near the lists' edges.
    int next() { return at < size ? int(int8_t(data[at++])) * (at % 3 == 0 ? 3 : 1) : 0; }

private:
    const uint8_t* data;
    size_t size;
    size_t at = 0;
};

// The members written out by hand that read a model record or take a buffer: the data-block
// builders.
QVector<const Operation*> blockOperations() {
    const QStringList handWritten = QStringList()
#define DAL_SEND(...)
#define DAL_OP(ret, name, params) << QStringLiteral(#name #params)
#include "dalTarsel.def"
        ;
    QVector<const Operation*> ops;
    for (const Operation& op : operations())
        if (op.className == QLatin1String("DalTarsel") &&
            handWritten.contains(op.name + op.params) &&
            (op.params.contains(QLatin1String("Model")) || op.params.contains(QLatin1Char('*'))))
            ops << &op;
    return ops;
}

void resize(Models& m, Input& in) {
    m.tarsel.maxOutputCount = in.next();
    m.tarsel.maxSourceCount = in.next();
    m.tarsel.maxLayerCount = in.next();
    m.tarsel.maxContainerCount = in.next();
    m.scene.maxLayerCount = in.next();
    m.scene.maxBankCount = in.next();
    m.scene.maxContainerCount = in.next();
    m.scene.sceneList.resize(qBound(0, in.next(), 8));
    for (_Scene_Layer& scene : m.scene.sceneList)
        scene.layerList.resize(qBound(0, in.next() + 4, 260));
}

QString argumentFor(const QString& type, Input& in) {
    if (type.contains(QLatin1Char('*')) || type.contains(QLatin1String("QByteArray")))
        return QStringLiteral("0102030405");
    if (type.contains(QLatin1String("bool")))
        return in.next() & 1 ? QStringLiteral("true") : QStringLiteral("false");
    if (type.contains(QLatin1String("double")) || type.contains(QLatin1String("float")))
        return QString::number(in.next() / 7.0);
    if (type.contains(QLatin1String("QJsonObject")))
        return QStringLiteral("{\"a\":1}");
    if (type.contains(QLatin1String("QList")) || type.contains(QLatin1String("QVector")))
        return QStringLiteral("1,2,3");
    if (type.contains(QLatin1String("QString")))
        return QString(qBound(0, in.next() + 64, 2000), QLatin1Char('x'));
    return QString::number(in.next());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        return true;
    }();
    (void)silenced;
    static const QVector<const Operation*> ops = blockOperations();
    if (size < 1 || ops.isEmpty())
        return 0;

    const Operation& op = *ops[data[0] % ops.size()];
    Input in(data + 1, size - 1);
    Models models = Models::defaults();
    resize(models, in);
    QStringList call{op.qualifiedName()};
    for (const QString& type : op.argumentTypes)
        call << argumentFor(type, in);
    try {
        runRequest(call, DeviceSetting(), models);
    } catch (const UsageError&) {
    }
    return 0;
}
