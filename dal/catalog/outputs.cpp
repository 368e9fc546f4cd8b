// Output formats, EDID, timing, test patterns and DE: the members written out by hand. The
// one-command rows are in catalog_rows.cpp.
#include "dalTarsel.h"
#include "utility_manage.h"

// Width and height travel in a block: each 16 bits, low byte first, then the checksum.
void DalTarsel::setOutCustomFormatWHForVM6S(int timeout, int width, int height) {
    constexpr int kValues = 4;
    unsigned char block[kValues + 1] = {};
    splitTwoByte(static_cast<short>(width), block[0], block[1]);
    splitTwoByte(static_cast<short>(height), block[2], block[3]);
    setCheckSum(block, kValues);
    f_SendCmd(timeout, 0x74, 0x16, 0x00, 0x00, 0x00, block, kValues + 1, QString());
}

// The attached device decides how a frequency is encoded in two bytes; the command carries no
// index.
void DalTarsel::setOutCustomFormatFreq(int timeout, [[maybe_unused]] int index, double freq) {
    unsigned char low = 0;
    unsigned char high = 0;
    Utility_Manage::setGlobalFreqByDevice(Utility_Manage::getDeviceType(), freq, low, high);
    f_SendCmd(timeout, 0x74, 0x16, 0x02, low, high, nullptr, 0, QString());
}
