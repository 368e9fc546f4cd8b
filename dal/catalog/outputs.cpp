// Output formats, EDID, timing, test patterns and DE: the members written out by hand. The
// one-command rows are in catalog_rows.cpp.
#include "dalTarsel.h"
#include "utility_manage.h"

// Width and height travel in a block: each 16 bits, low byte first, then the checksum.
void DalTarsel::setOutCustomFormatWHForVM6S(int p1, int p2, int p3) {
    constexpr int kValues = 4;
    unsigned char block[kValues + 1] = {};
    splitTwoByte(static_cast<short>(p2), block[0], block[1]);
    splitTwoByte(static_cast<short>(p3), block[2], block[3]);
    setCheckSum(block, kValues);
    f_SendCmd(p1, 0x74, 0x16, 0x00, 0x00, 0x00, block, kValues + 1, QString());
}

// The attached device decides how a frequency is encoded in two bytes.
void DalTarsel::setOutCustomFormatFreq(int p1, int, double p3) {
    unsigned char low = 0;
    unsigned char high = 0;
    Utility_Manage::setGlobalFreqByDevice(Utility_Manage::getDeviceType(), p3, low, high);
    f_SendCmd(p1, 0x74, 0x16, 0x02, low, high, nullptr, 0, QString());
}
