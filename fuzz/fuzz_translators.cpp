// Arbitrary records through every translator, the VM6S finisher, and the generic send for
// every routed device code.
// Input: 8 head bytes, 4 time-out bytes, 4 sub-type bytes, one byte choosing a translator or
// a device, then the data block; the text payload is the block read as Latin-1 up to its first
// zero byte.
#include "biz_cmdswork.h"
#include "dalTarsel.h"
#include "utility_manage.h"

#include <QLoggingCategory>

#include <cstdint>
#include <cstring>

namespace {

using Translator = model_Protocoldata (DalTarsel::*)(model_Protocoldata&);

const Translator kTranslators[] = {
    &DalTarsel::transformBufToQStringForT9,     &DalTarsel::transformBufToQStringForT3,
    &DalTarsel::transformBufToQStringForKR2,    &DalTarsel::transformBufToQStringForNV,
    &DalTarsel::transformBufToQStringForH40,    &DalTarsel::transformBufToQStringForH40B,
    &DalTarsel::transformBufToQStringForVM6S,   &DalTarsel::convertCheckSumForVMS,
    &DalTarsel::transformBufToQStringForVantaZ, &DalTarsel::transformBufToQStringForCadex,
};

const int kDevices[] = {0x250300, 0x250310, 0x250400, 0x250502, 0x2D0000, 0x900000,
                        0x900001, 0x2C0103, 0x2C0104, 0x260000, 0x2C0201, 0x700000};

void quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

int readInt(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return static_cast<int>(v);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool silenced = [] {
        qInstallMessageHandler(quiet);
        return true;
    }();
    (void)silenced;
    constexpr size_t kHeader = 8 + 4 + 4 + 1;
    if (size < kHeader)
        return 0;

    model_Protocoldata rec;
    std::memcpy(rec.cmdHead, data, 8);
    rec.timeout = readInt(data + 8);
    Utility_Manage::setDeviceSubType(readInt(data + 12));
    const uint8_t choice = data[16];
    rec.arryDatablock =
        QByteArray(reinterpret_cast<const char*>(data + kHeader), int(size - kHeader));
    rec.Datablock = QString::fromLatin1(
        rec.arryDatablock.constData(),
        int(qstrnlen(rec.arryDatablock.constData(), uint(rec.arryDatablock.size()))));

    DalTarsel dal;
    DalTarsel::isConnected = true;
    constexpr size_t kTranslatorCount = sizeof kTranslators / sizeof kTranslators[0];
    if (choice < kTranslatorCount) {
        (dal.*kTranslators[choice])(rec);
    } else {
        Utility_Manage::setDeviceType(kDevices[choice % (sizeof kDevices / sizeof kDevices[0])]);
        QByteArray block = rec.arryDatablock;
        dal.f_SendCmd(rec.timeout, rec.cmdHead[2], rec.cmdHead[3], rec.cmdHead[4], rec.cmdHead[5],
                      rec.cmdHead[6], reinterpret_cast<unsigned char*>(block.data()), block.size(),
                      rec.Datablock);
        std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
        biz_CMDSWork::queueHexCmd.clear();
    }
    return 0;
}
