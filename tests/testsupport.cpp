#include "testsupport.h"

#include "biz_cmdswork.h"
#include "dalTarsel.h"
#include "dal_pommet.h"
#include "session.h"
#include "utility_manage.h"

#include <mutex>

namespace {

std::mutex messageLock;
QStringList debugLines;
QStringList warningLines;
QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtDebugMsg || type == QtWarningMsg) {
        std::lock_guard<std::mutex> lock(messageLock);
        (type == QtDebugMsg ? debugLines : warningLines) << message;
        return;
    }
    if (previousHandler)
        previousHandler(type, context, message);
}

} // namespace

void resetLibrary() {
    Utility_Manage::reset();
    DalTarsel::isConnected = true;
    Dal_Pommet::isConnected = true;
    takeQueued();
    std::lock_guard<std::mutex> lock(biz_CMDSWork::receiveHexCmdlock);
    biz_CMDSWork::receivequeueHexCmd.clear();
}

QVector<model_Protocoldata> takeQueued() {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    QVector<model_Protocoldata> records(biz_CMDSWork::queueHexCmd.begin(),
                                        biz_CMDSWork::queueHexCmd.end());
    biz_CMDSWork::queueHexCmd.clear();
    return records;
}

QByteArray headOf(const model_Protocoldata& rec) {
    return QByteArray(reinterpret_cast<const char*>(rec.cmdHead + 2), 5);
}

QString describe(const QVector<model_Protocoldata>& records) {
    QStringList shown;
    for (const model_Protocoldata& rec : records) {
        QString one = QString::fromLatin1(headOf(rec).toHex()) + ' ' + QString::number(rec.timeout);
        if (!rec.arryDatablock.isEmpty())
            one += ' ' + QString::fromLatin1(rec.arryDatablock.toHex());
        if (!rec.Datablock.isEmpty())
            one += " '" + rec.Datablock + '\'';
        shown << one;
    }
    return shown.join(QStringLiteral(" | "));
}

QString run(const QString& call, const QByteArray& modelJson, int device) {
    resetLibrary();
    const QStringList words = call.split(QLatin1Char(' '));
    Call c;
    c.models = Models::defaults();
    c.utility.deviceType = device;
    try {
        if (!modelJson.isEmpty())
            if (const QString error = c.models.apply(modelJson); !error.isEmpty())
                return QStringLiteral("refused: ") + error;
        c.op = &operationFor(words.first(), words.mid(1));
        c.words = words.mid(1);
        return describe(::run(c).records);
    } catch (const UsageError& error) {
        return QStringLiteral("refused: ") + QString::fromStdString(error.what());
    } catch (const ArgError& error) {
        return QStringLiteral("refused: ") + QString::fromStdString(error.what());
    }
}

model_Protocoldata sendTo(int device, const QByteArray& head, const QByteArray& block,
                          const QString& text, int timeout) {
    Utility_Manage::setDeviceType(device);
    QByteArray data = block;
    const auto at = [&](int i) { return int(static_cast<unsigned char>(head.at(i))); };
    DalTarsel().f_SendCmd(timeout, at(0), at(1), at(2), at(3), at(4),
                          data.isNull() ? nullptr : reinterpret_cast<unsigned char*>(data.data()),
                          data.size(), text);
    const QVector<model_Protocoldata> records = takeQueued();
    [&] { QCOMPARE(records.size(), 1); }();
    return records.value(0);
}

MessageCapture::MessageCapture() {
    std::lock_guard<std::mutex> lock(messageLock);
    debugLines.clear();
    warningLines.clear();
    previousHandler = qInstallMessageHandler(collect);
}

MessageCapture::~MessageCapture() { qInstallMessageHandler(previousHandler); }

QStringList MessageCapture::debug() const {
    std::lock_guard<std::mutex> lock(messageLock);
    return debugLines;
}

QStringList MessageCapture::warnings() const {
    std::lock_guard<std::mutex> lock(messageLock);
    return warningLines;
}

void verifyRefused(const std::function<void()>& call, const QString& operation,
                   const QString& limit) {
    QStringList lines;
    {
        MessageCapture messages;
        call();
        lines = messages.warnings();
    }
    QVERIFY2(takeQueued().isEmpty(), qPrintable(operation + QStringLiteral(" queued a record")));
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(operation + QLatin1Char(':')), qPrintable(lines.first()));
    QVERIFY2(lines.first().contains(limit), qPrintable(lines.first()));
}
