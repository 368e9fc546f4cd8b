#include "session.h"

#include "biz_cmdswork.h"
#include "biz_osd_cmdswork.h"
#include "dalTarsel.h"
#include "dal_osd.h"
#include "dal_pommet.h"
#include "records.h"
#include "utility_manage.h"

namespace {

[[noreturn]] void refuse(const QString& message, const QString& usage = QString()) {
    UsageError error(message.toStdString());
    error.usage = usage;
    throw error;
}

// Everything a send queue holds, taken off it.
template <class Queue>
auto drain(std::mutex& lock, Queue& queue) {
    std::lock_guard<std::mutex> locked(lock);
    QVector<typename Queue::value_type> records(queue.begin(), queue.end());
    queue.clear();
    return records;
}

template <class Run>
Outcome collect(const UtilityValues& utility, Run runOn) {
    applyUtility(utility);
    DalTarsel::isConnected = true;
    Dal_Pommet::isConnected = true;
    drain(biz_CMDSWork::HexCmdlock, biz_CMDSWork::queueHexCmd);
    drain(biz_Osd_CMDSWork::sendQueueLock, biz_Osd_CMDSWork::sendQueue);
    DalTarsel tarsel;
    Dal_Pommet pommet;
    dal_Osd osd;
    Targets targets{tarsel, pommet, osd};
    Outcome outcome;
    outcome.returned = runOn(targets);
    outcome.records = drain(biz_CMDSWork::HexCmdlock, biz_CMDSWork::queueHexCmd);
    outcome.osdRecords = drain(biz_Osd_CMDSWork::sendQueueLock, biz_Osd_CMDSWork::sendQueue);
    return outcome;
}

QString usageOf(const QVector<const Operation*>& candidates) {
    QStringList lines;
    for (const Operation* op : candidates) {
        QStringList written;
        for (const Parameter& p : op->arguments)
            written << p.name.toUpper();
        lines << QStringLiteral("usage: dalctl [options] %1 %2")
                         .arg(op->name, written.join(QLatin1Char(' ')))
                         .trimmed() +
                     QStringLiteral("    # ") + op->usage();
    }
    return lines.join(QLatin1Char('\n'));
}

// A utility value's getter and setter, for a number or a text member.
template <auto member>
QString get(const UtilityValues& u) {
    if constexpr (std::is_same_v<decltype(u.*member), const QString&>)
        return u.*member;
    else
        return QString::number(u.*member);
}
template <auto member>
void set(UtilityValues& u, const QString& word) {
    if constexpr (std::is_same_v<decltype(u.*member), QString&>)
        u.*member = word;
    else
        u.*member = word.toInt(nullptr, 0);
}

} // namespace

void applyUtility(const UtilityValues& u) {
    Utility_Manage::setDeviceType(u.deviceType);
    Utility_Manage::setDeviceSubType(u.subType);
    Utility_Manage::setConnectType(u.connectType);
    Utility_Manage::setConnectToneFlag(u.toneFlag);
    Utility_Manage::setToneProcVer(u.toneVersion);
    Utility_Manage::setLocalIP(u.localIp);
    Utility_Manage::setUserID(u.userId);
}

const UtilityOption* utilityOption(const QString& option) {
    for (const UtilityOption& o : utilityOptions())
        if (option == QLatin1String(o.option))
            return &o;
    return nullptr;
}

const QVector<UtilityOption>& utilityOptions() {
    using U = UtilityValues;
    static const QVector<UtilityOption> options = {
        {"subtype", "subType", "CODE", "Device sub-type code.", false, INT_MIN, INT_MAX, "0",
         get<&U::subType>, set<&U::subType>},
        {"connect-type", "connectType", "N", "Link kind reported by the utility.", false, 0, 0xFF,
         "0", get<&U::connectType>, set<&U::connectType>},
        {"tone-flag", "toneFlag", "N", "Keyboard link confirmed (1) or not (0).", false, INT_MIN,
         INT_MAX, "1", get<&U::toneFlag>, set<&U::toneFlag>},
        {"tone-ver", "toneVersion", "TEXT", "Keyboard firmware version.", true, 0, 0, "",
         get<&U::toneVersion>, set<&U::toneVersion>},
        {"local-ip", "localIp", "TEXT", "Local address setting.", true, 0, 0, "", get<&U::localIp>,
         set<&U::localIp>},
        {"user-id", "userId", "TEXT", "Logged-in user, as H40B messages carry it.", true, 0, 0, "",
         get<&U::userId>, set<&U::userId>},
    };
    return options;
}

QString Outcome::recordsText() const {
    QString text;
    for (int i = 0; i < records.size(); ++i)
        text += recordText(records[i], i + 1);
    for (int i = 0; i < osdRecords.size(); ++i)
        text += recordText(osdRecords[i], i + 1);
    return text;
}

std::optional<Parts> Outcome::parts(int k, const Parts& shape) const {
    if (k < records.size())
        return partsOf(records[k], shape);
    return k - records.size() < osdRecords.size() ? partsOf(osdRecords[k - records.size()], shape)
                                                  : std::nullopt;
}

std::optional<int> Outcome::deviceType(int k) const {
    return k < records.size() ? std::optional<int>(records[k].deviceType) : std::nullopt;
}

QJsonObject Outcome::json(int k) const {
    return k < records.size() ? recordJson(records[k]) : recordJson(osdRecords[k - records.size()]);
}

decltype(qHash(0)) qHash(const Call::Key& key, decltype(qHash(0)) seed) {
    const auto& [op, words, u, changes] = key;
    auto hash = qHash(op, seed);
    for (const auto part :
         {qHash(words), qHash(changes), qHash(u.deviceType), qHash(u.subType), qHash(u.connectType),
          qHash(u.toneFlag), qHash(u.toneVersion), qHash(u.localIp), qHash(u.userId)})
        hash = hash * 31 + part;
    return hash;
}

Call sampleCall(const Operation& op, int deviceType) {
    Call call{&op, op.sampleWords(), Models::defaults(), UtilityValues()};
    call.utility.deviceType = deviceType;
    return call;
}

Outcome run(const Call& call) {
    Models models = call.models;
    Model_PommetParam::gOledLength = models.oledLength;
    return collect(call.utility,
                   [&](Targets& targets) { return call.op->run(targets, call.words, models); });
}

const Operation& operationFor(const QString& name, const QStringList& words,
                              const QString& preferredClass) {
    const QVector<const Operation*> candidates = findOperations(name, preferredClass);
    if (candidates.isEmpty()) {
        const QStringList close = closestNames(name, 5);
        refuse(QStringLiteral("unknown operation %1%2")
                   .arg(name, close.isEmpty() ? QString()
                                              : QStringLiteral("; did you mean: ") +
                                                    close.join(QStringLiteral(", "))));
    }
    for (const Operation* op : candidates)
        if (op->arguments.size() == words.size())
            return *op;
    refuse(QStringLiteral("%1 does not take %2 argument(s)").arg(name).arg(words.size()),
           usageOf(candidates));
}

Outcome runRaw(const QStringList& words, int timeout, const QString& text,
               const UtilityValues& utility) {
    if (words.size() != 5 && words.size() != 6)
        refuse(QStringLiteral("raw takes 5 or 6 arguments, %1 given").arg(words.size()));
    int head[5];
    QByteArray block;
    try {
        // One or two hex digits, as the printouts and the trace line show a byte.
        for (int i = 0; i < 5; ++i) {
            QString digits = words[i];
            if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
                digits = digits.mid(2);
            bool ok = digits.size() <= 2;
            head[i] = ok ? digits.toInt(&ok, 16) : 0;
            if (!ok || digits.startsWith(QLatin1Char('-')) || digits.startsWith(QLatin1Char('+')))
                refuse(QStringLiteral("%1 is not one byte in hex (00 to ff)").arg(words[i]));
        }
        if (words.size() == 6)
            block = args::parseHex(words[5]);
    } catch (const ArgError& e) {
        refuse(QString::fromStdString(e.what()));
    }
    return collect(utility, [&](Targets& targets) {
        targets.tarsel.f_SendCmd(timeout, head[0], head[1], head[2], head[3], head[4],
                                 words.size() == 6 ? reinterpret_cast<unsigned char*>(block.data())
                                                   : nullptr,
                                 block.size(), text);
        return QString();
    });
}

Quiet::Quiet() {
    category->setEnabled(QtDebugMsg, false);
    category->setEnabled(QtWarningMsg, false);
}

Quiet::~Quiet() {
    category->setEnabled(QtDebugMsg, debug);
    category->setEnabled(QtWarningMsg, warning);
}
