#include "session.h"

#include "biz_cmdswork.h"
#include "biz_osd_cmdswork.h"
#include "dalTarsel.h"
#include "dal_osd.h"
#include "dal_pommet.h"
#include "records.h"
#include "registry.h"
#include "utility_manage.h"

#include <QCommandLineParser>
#include <QTextStream>

namespace {

[[noreturn]] void refuse(const QString& message, const QString& usage = QString()) {
    UsageError error(message.toStdString());
    error.usage = usage;
    throw error;
}

QVector<model_Protocoldata> drainQueue() {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    QVector<model_Protocoldata> records(biz_CMDSWork::queueHexCmd.begin(),
                                        biz_CMDSWork::queueHexCmd.end());
    biz_CMDSWork::queueHexCmd.clear();
    return records;
}

QVector<model_OsdParam> drainOsdQueue() {
    std::lock_guard<std::mutex> lock(biz_Osd_CMDSWork::sendQueueLock);
    QVector<model_OsdParam> records(biz_Osd_CMDSWork::sendQueue.begin(),
                                    biz_Osd_CMDSWork::sendQueue.end());
    biz_Osd_CMDSWork::sendQueue.clear();
    return records;
}

QString usageOf(const QVector<const Operation*>& candidates) {
    QStringList lines;
    for (const Operation* op : candidates)
        lines << QStringLiteral("usage: dalctl [options] %1 %2")
                         .arg(op->name, op->argumentTypes.join(QLatin1Char(' ')))
                         .trimmed() +
                     QStringLiteral("    # ") + op->usage();
    return lines.join(QLatin1Char('\n'));
}

const QString kRawUsage =
    QStringLiteral("usage: dalctl [options] raw [--timeout MS] [--text TEXT] CMD DAT1 DAT2 DAT3 "
                   "DAT4 [HEX]");

void runRaw(const QStringList& call, Targets& targets) {
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"), QString(),
                                           QStringLiteral("MS"), QStringLiteral("3000"));
    const QCommandLineOption textOption(QStringLiteral("text"), QString(), QStringLiteral("TEXT"));
    parser.addOptions({timeoutOption, textOption});
    if (!parser.parse(call))
        refuse(parser.errorText(), kRawUsage);
    const QStringList values = parser.positionalArguments();
    if (values.size() != 5 && values.size() != 6)
        refuse(QStringLiteral("raw takes 5 or 6 arguments, %1 given").arg(values.size()),
               kRawUsage);
    try {
        int head[5];
        for (int i = 0; i < 5; ++i)
            head[i] = static_cast<int>(args::parseInteger(values[i], -0x80000000LL, 0xFFFFFFFFLL));
        const int timeout = static_cast<int>(
            args::parseInteger(parser.value(timeoutOption), -0x80000000LL, 0x7FFFFFFFLL));
        QByteArray block = values.size() == 6 ? args::parseHex(values[5]) : QByteArray();
        unsigned char* data =
            values.size() == 6 ? reinterpret_cast<unsigned char*>(block.data()) : nullptr;
        targets.tarsel.f_SendCmd(timeout, head[0], head[1], head[2], head[3], head[4], data,
                                 block.size(), parser.value(textOption));
    } catch (const ArgError& e) {
        refuse(QString::fromStdString(e.what()), kRawUsage);
    }
}

QString runOperation(const QStringList& call, Targets& targets, Models& models) {
    const QString name = call.first();
    const QStringList arguments = call.mid(1);
    const QVector<const Operation*> candidates = findOperations(name);
    if (candidates.isEmpty()) {
        const QStringList close = closestNames(name, 5);
        refuse(QStringLiteral("unknown operation %1%2")
                   .arg(name, close.isEmpty() ? QString()
                                              : QStringLiteral("; did you mean: ") +
                                                    close.join(QStringLiteral(", "))));
    }
    for (const Operation* op : candidates) {
        if (op->argumentTypes.size() != arguments.size())
            continue;
        try {
            return op->run(targets, arguments, models);
        } catch (const ArgError& e) {
            refuse(QStringLiteral("%1: %2").arg(op->name, QString::fromLatin1(e.what())),
                   usageOf({op}));
        }
    }
    refuse(QStringLiteral("%1 does not take %2 argument(s)").arg(name).arg(arguments.size()),
           usageOf(candidates));
}

} // namespace

namespace {

void setUp(const DeviceSetting& device) {
    Utility_Manage::setDeviceType(device.deviceType);
    Utility_Manage::setDeviceSubType(device.subType);
    Utility_Manage::setConnectType(device.connectType);
    Utility_Manage::setConnectToneFlag(device.toneFlag);
    Utility_Manage::setToneProcVer(device.toneVersion);
    Utility_Manage::setLocalIP(device.localIp);
    DalTarsel::isConnected = true;
    Dal_Pommet::isConnected = true;
    drainQueue();
    drainOsdQueue();
}

template <class Run>
Outcome collect(Run run) {
    DalTarsel tarsel;
    Dal_Pommet pommet;
    dal_Osd osd;
    Targets targets{tarsel, pommet, osd};
    Outcome outcome;
    outcome.returned = run(targets);
    outcome.records = drainQueue();
    outcome.osdRecords = drainOsdQueue();
    return outcome;
}

} // namespace

Outcome runRequest(const QStringList& call, const DeviceSetting& device, Models models) {
    if (call.isEmpty())
        refuse(QStringLiteral("no operation given"));
    setUp(device);
    return collect([&](Targets& targets) {
        if (call.first() != QLatin1String("raw"))
            return runOperation(call, targets, models);
        runRaw(call, targets);
        return QString();
    });
}

Outcome runOperation(const Operation& op, const QStringList& arguments, const DeviceSetting& device,
                     Models models) {
    setUp(device);
    return collect([&](Targets& targets) { return op.run(targets, arguments, models); });
}

Quiet::Quiet()
    : category(QLoggingCategory::defaultCategory()), debug(category->isDebugEnabled()),
      warning(category->isWarningEnabled()) {
    category->setEnabled(QtDebugMsg, false);
    category->setEnabled(QtWarningMsg, false);
}

Quiet::~Quiet() {
    category->setEnabled(QtDebugMsg, debug);
    category->setEnabled(QtWarningMsg, warning);
}
