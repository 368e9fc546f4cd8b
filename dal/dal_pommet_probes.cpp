#include "dal_pommet.h"
#include "families.h"
#include "pacing.h"

#include "utility_manage.h"

#include <QDebug>

#include <chrono>
#include <thread>

namespace {

// A probe record: built directly, so neither the link filter nor the connection flag applies.
model_Protocoldata probe(int timeout, unsigned char cmd, unsigned char dat1, unsigned char status,
                         int deviceType) {
    model_Protocoldata rec;
    rec.timeout = timeout;
    rec.cmdHead[2] = cmd;
    rec.cmdHead[3] = dat1;
    rec.statusByte = status;
    rec.deviceType = deviceType;
    return rec;
}

model_Protocoldata familyProbe(int timeout, unsigned char cmd, unsigned char dat1, int deviceType,
                               bool isCom) {
    model_Protocoldata rec = probe(timeout, cmd, dat1, 1, deviceType);
    if (isCom)
        rec.connectType = 1;
    return rec;
}

// The text travels both as the payload text and as its 8-bit bytes.
model_Protocoldata withText(model_Protocoldata rec, const char* text) {
    rec.Datablock = QString::fromLatin1(text);
    rec.arryDatablock = rec.Datablock.toLocal8Bit();
    return rec;
}

} // namespace

void Dal_Pommet::searchDeviceType(int timeout) { addToQueue(probe(timeout, 0x68, 0x01, 1, 0)); }

void Dal_Pommet::searchSn(int timeout) { addToQueue(probe(timeout, 0x6A, 0x11, 1, 0)); }

void Dal_Pommet::searchDeivce(int timeout) {
    std::lock_guard<std::mutex> lock(mute);
    searchDeviceType(timeout);
    std::this_thread::sleep_for(dal::pacing::probes());
    searchSn(timeout);
}

void Dal_Pommet::searchDeviceForT9(int timeout) {
    std::lock_guard<std::mutex> lock(mute);
    addToQueue(probe(timeout, 0x68, 0x01, 2, family::T9));
}

void Dal_Pommet::searchDeviceForKR2(int timeout, bool isCom) {
    std::lock_guard<std::mutex> lock(mute);
    addToQueue(withText(familyProbe(timeout, 0x68, 0x01, family::KR2, isCom), "(info,dev)"));
    addToQueue(withText(familyProbe(timeout, 0x6A, 0x11, family::KR2, isCom), "(ip)"));
}

void Dal_Pommet::searchDeviceForT3(int timeout, bool isCom) {
    std::lock_guard<std::mutex> lock(mute);
    qDebug() << "-----------------searchDeviceForT3--isCom=" << isCom;
    addToQueue(withText(familyProbe(timeout, 0x68, 0x01, family::T3, isCom), "<GBMG>"));
    addToQueue(withText(familyProbe(timeout, 0x6A, 0x11, family::T3, isCom), "<GFTM>"));
}

void Dal_Pommet::searchDeviceForVM6S(int timeout, bool isCom) {
    std::lock_guard<std::mutex> lock(mute);
    qDebug() << "-----------------searchDeviceForVM6S--isCom=" << isCom;
    addToQueue(familyProbe(timeout, 0x68, 0x01, family::VM6S, isCom));
}

// Shares the VM6S probe's trace label.
void Dal_Pommet::searchDeviceForVantaZ(int timeout, bool isCom) {
    std::lock_guard<std::mutex> lock(mute);
    qDebug() << "-----------------searchDeviceForVM6S--isCom=" << isCom;
    addToQueue(familyProbe(timeout, 0x68, 0x01, family::VantaZ, isCom));
}

void Dal_Pommet::searchDeviceForNV(int timeout, int dat2, QString mode) {
    std::lock_guard<std::mutex> lock(mute);
    model_Protocoldata rec = probe(timeout, 0x68, 0x01, 1, family::NV);
    rec.cmdHead[4] = static_cast<unsigned char>(dat2);
    rec.strAux1 = mode;
    rec.arryDatablock = Utility_Manage::getLocalIP() == QLatin1String("Default")
                            ? QByteArrayLiteral("FIND_NODE_UNI")
                            : QByteArrayLiteral("FIND_NODE_BOARD");
    addToQueue(rec);
}
