#include "testsupport.h"

#include "biz_cmdswork.h"
#include "dalTarsel.h"
#include "dal_pommet.h"
#include "utility_manage.h"

#include <QLoggingCategory>

#include <mutex>

namespace {

std::mutex traceLock;
QStringList traced;
QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtDebugMsg) {
        std::lock_guard<std::mutex> lock(traceLock);
        traced << message;
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

TraceCapture::TraceCapture() {
    std::lock_guard<std::mutex> lock(traceLock);
    traced.clear();
    previousHandler = qInstallMessageHandler(collect);
}

TraceCapture::~TraceCapture() { qInstallMessageHandler(previousHandler); }

QStringList TraceCapture::lines() const {
    std::lock_guard<std::mutex> lock(traceLock);
    return traced;
}
