#include "utility_manage.h"

#include <QJsonDocument>
#include <QtMath>

#include <atomic>
#include <mutex>

namespace {

std::atomic<int> deviceType{0};
std::atomic<int> deviceSubType{0};
std::atomic<int> connectType{0};
std::atomic<int> connectToneFlag{0};

// Guards the members that are not single words.
std::mutex textLock;
QString toneProcVer;
QString userId;
QString localIp;
std::function<int(int, int, int)> t3Resolver;

QString readText(const QString& text) {
    std::lock_guard<std::mutex> lock(textLock);
    return text;
}

void writeText(QString& text, const QString& value) {
    std::lock_guard<std::mutex> lock(textLock);
    text = value;
}

} // namespace

int Utility_Manage::getDeviceType() { return deviceType; }
int Utility_Manage::getDeviceSubType() { return deviceSubType; }
int Utility_Manage::getConnectType() { return connectType; }
int Utility_Manage::getConnectToneFlag() { return connectToneFlag; }
QString Utility_Manage::getToneProcVer() { return readText(toneProcVer); }
QString Utility_Manage::getUserID() { return readText(userId); }
QString Utility_Manage::getLocalIP() { return readText(localIp); }

int Utility_Manage::combineTwoByte(unsigned char low, unsigned char high) {
    return low | (high << 8);
}

void Utility_Manage::setGlobalFreqByDevice(int, double freq, unsigned char& low,
                                           unsigned char& high) {
    const int value = qRound(freq * 100);
    low = value & 0xFF;
    high = (value >> 8) & 0xFF;
}

QString Utility_Manage::getStringFromJsonObject(const QJsonObject& obj) {
    return QString::fromUtf8(QJsonDocument(obj).toJson(QJsonDocument::Compact));
}

int Utility_Manage::getInputIndexForT3(int code, int a, int b) {
    std::function<int(int, int, int)> resolver;
    {
        std::lock_guard<std::mutex> lock(textLock);
        resolver = t3Resolver;
    }
    return resolver ? resolver(code, a, b) : code;
}

void Utility_Manage::getElementId_T9(int id, int& frame, int& card, int& sub, int& port) {
    frame = (id >> 24) & 0xFF;
    card = (id >> 16) & 0xFF;
    sub = (id >> 8) & 0xFF;
    port = id & 0xFF;
}

void Utility_Manage::getCardNum_T9(int card, int port, int& frame, int& cardOut, int& sub) {
    frame = card >> 8;
    cardOut = card & 0xFF;
    sub = port;
}

void Utility_Manage::setDeviceType(int type) { deviceType = type; }
void Utility_Manage::setDeviceSubType(int subType) { deviceSubType = subType; }
void Utility_Manage::setConnectType(int type) { connectType = type; }
void Utility_Manage::setConnectToneFlag(int flag) { connectToneFlag = flag; }
void Utility_Manage::setToneProcVer(const QString& version) { writeText(toneProcVer, version); }
void Utility_Manage::setUserID(const QString& id) { writeText(userId, id); }
void Utility_Manage::setLocalIP(const QString& ip) { writeText(localIp, ip); }

void Utility_Manage::setInputIndexForT3Resolver(std::function<int(int, int, int)> resolver) {
    std::lock_guard<std::mutex> lock(textLock);
    t3Resolver = std::move(resolver);
}

void Utility_Manage::reset() {
    setDeviceType(0);
    setDeviceSubType(0);
    setConnectType(0);
    setConnectToneFlag(0);
    std::lock_guard<std::mutex> lock(textLock);
    toneProcVer.clear();
    userId.clear();
    localIp.clear();
    t3Resolver = nullptr;
}
