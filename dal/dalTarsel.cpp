#include "dalTarsel.h"

#include "biz_cmdswork.h"
#include "utility_manage.h"

#include <QDebug>
#include <QLoggingCategory>

#include <vector>

bool DalTarsel::isConnected = false;

namespace {

constexpr int kUntranslated = 0x700000;
constexpr int kOwnCode = -1; // tag the record with the device's own code

using Translator = model_Protocoldata (DalTarsel::*)(model_Protocoldata&);

enum class Cmds { Any, Tunnel, Other }; // Tunnel: CMD 0x90 or 0x91

struct Route {
    std::vector<int> devices;
    Cmds cmds;
    Translator first;
    Translator second;
    int tag;
};

const std::vector<int> kCadexDevices = {0x230102, 0x230106, 0x230107, 0x250000, 0x260000,
                                        0x260002, 0x2C0100, 0x2C0106, 0x2C0107};

// First matching row wins; a device without a row keeps the native frame, tagged 0x700000.
const Route kRoutes[] = {
    {{0x250300}, Cmds::Any, &DalTarsel::transformBufToQStringForT9, nullptr, 0x250300}, // T9
    {{0x250310}, Cmds::Any, nullptr, nullptr, 0x250310},                     // T3
    {{0x250400}, Cmds::Any, nullptr, nullptr, 0x250400},                     // T3
    {{0x250502}, Cmds::Any, &DalTarsel::transformBufToQStringForKR2, nullptr, 0x250502}, // KR2
    {{0x2D0000}, Cmds::Any, &DalTarsel::transformBufToQStringForNV, nullptr, 0x2D0000}, // NV
    {{0x900000}, Cmds::Any, &DalTarsel::transformBufToQStringForH40, nullptr, 0x900000}, // H40
    {{0x900001}, Cmds::Any, &DalTarsel::transformBufToQStringForH40B, nullptr, 0x900001}, // H40B
    {{0x2C0103, 0x2C0104}, Cmds::Tunnel, nullptr, nullptr, 0x2C0104},        // VantaZ
    {{0x2C0103, 0x2C0104}, Cmds::Other, nullptr, nullptr, 0x2C0104},         // VM6S
    {kCadexDevices, Cmds::Tunnel, nullptr, nullptr, kOwnCode},               // Cadex
    {kCadexDevices, Cmds::Other, nullptr, nullptr, kOwnCode},                // native
    {{0x2C0201, 0x2C0202}, Cmds::Any, nullptr, nullptr, 0x2C0202},           // native
};

bool matches(const Route& route, int device, unsigned char cmd) {
    const bool tunnel = cmd == 0x90 || cmd == 0x91;
    if ((route.cmds == Cmds::Tunnel && !tunnel) || (route.cmds == Cmds::Other && tunnel))
        return false;
    for (int code : route.devices)
        if (code == device)
            return true;
    return false;
}

QString hexByte(unsigned char value) { return QString::number(value, 16); }

void trace(const model_Protocoldata& rec) {
    if (!QLoggingCategory::defaultCategory()->isDebugEnabled())
        return;
    qDebug() << "---addToQueue----CMD=" << hexByte(rec.cmdHead[2]) << "---DAT1="
             << hexByte(rec.cmdHead[3]) << "---DAT2=" << hexByte(rec.cmdHead[4]) << "---DAT3="
             << hexByte(rec.cmdHead[5]) << "---DAT4=" << hexByte(rec.cmdHead[6])
             << "---arryDatablock=" << QString::fromLatin1(rec.arryDatablock.toHex())
             << "---Datablock=" << rec.Datablock;
}

void fillHead(model_Protocoldata& rec, int cmd, int dat1, int dat2, int dat3, int dat4) {
    rec.cmdHead[1] = 0;
    rec.cmdHead[2] = static_cast<unsigned char>(cmd);
    rec.cmdHead[3] = static_cast<unsigned char>(dat1);
    rec.cmdHead[4] = static_cast<unsigned char>(dat2);
    rec.cmdHead[5] = static_cast<unsigned char>(dat3);
    rec.cmdHead[6] = static_cast<unsigned char>(dat4);
}

} // namespace

DalTarsel::DalTarsel() : QObject(nullptr) {}

void DalTarsel::addToQueue(model_Protocoldata rec) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::queueHexCmd.push_back(std::move(rec));
}

void DalTarsel::addToReceivedQueue(model_Protocoldata rec) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::receiveHexCmdlock);
    biz_CMDSWork::receivequeueHexCmd.push_back(std::move(rec));
}

void DalTarsel::setRetFlagStatus(bool flag) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::bRetFlag = flag;
}

QByteArray DalTarsel::getBlock(unsigned char* data, int len) {
    if (len <= 0)
        return QByteArray();
    return QByteArray(reinterpret_cast<const char*>(data), len);
}

void DalTarsel::setCheckSum(unsigned char* buf, int len) {
    unsigned char sum = 0;
    for (int i = 0; i < len; ++i)
        sum += buf[i];
    buf[len] = sum;
}

void DalTarsel::splitTwoByte(short value, unsigned char& low, unsigned char& high) {
    low = value & 0xFF;
    high = (value >> 8) & 0xFF;
}

int DalTarsel::f_RGBtoInt(int r, int g, int b) { return (r << 16) + (g << 8) + b; }

void DalTarsel::f_SendCmd(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                          unsigned char* data, int len, QString text) {
    model_Protocoldata rec;
    fillHead(rec, cmd, dat1, dat2, dat3, dat4);
    rec.deviceType = kUntranslated;
    rec.statusByte = 0;
    rec.timeout = timeout;
    rec.connectType = static_cast<unsigned char>(Utility_Manage::getConnectType());
    if (data)
        rec.arryDatablock = getBlock(data, len);
    if (!text.isEmpty())
        rec.Datablock = text;

    const int device = Utility_Manage::getDeviceType();
    for (const Route& route : kRoutes) {
        if (!matches(route, device, rec.cmdHead[2]))
            continue;
        if (route.first)
            rec = (this->*route.first)(rec);
        if (route.second)
            rec = (this->*route.second)(rec);
        rec.deviceType = route.tag == kOwnCode ? device : route.tag;
        break;
    }

    trace(rec);
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::f_SendCmdForDebug(int timeout, int address, int cmd, int dat1, int dat2, int dat3,
                                  int dat4, unsigned char* data, int len) {
    model_Protocoldata rec;
    rec.cmdHead[0] = static_cast<unsigned char>(address);
    fillHead(rec, cmd, dat1, dat2, dat3, dat4);
    rec.timeout = timeout;
    rec.deviceType = kUntranslated;
    rec.statusByte = 0;
    if (data)
        rec.arryDatablock = getBlock(data, len);
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::resetOutPortFPGA(int timeout, int port) {
    // Four output ports per board; the two halves of a board reset separately.
    const int half = (port % 4 == 0 || port % 4 == 1) ? 0x00 : 0x20;
    f_SendCmdForDebug(timeout, 0x21 + port / 4, 0xF4, 2, half, 1, 0, nullptr, 0);
}
