// Structured reads, family queries, output logos and PTZ: the members written out by hand. The
// one-command rows are in catalog_rows.cpp.
#include "catalog_rows.h"
#include "dalTarsel.h"
#include "devices.h"
#include "utility_manage.h"

#include <vector>

void DalTarsel::getLayerAlpha(int mode, int layer) {
    switch (mode) {
    case 0:
    case 1:
        f_SendCmd(3000, 0xF1, 0x02, mode, 0x00, 0x00, nullptr, 0, QString());
        break;
    case 2:
        f_SendCmd(4000, 0xF1, 0x08, layer, 0x00, 0x00, nullptr, 0, QString());
        break;
    default:
        break;
    }
}

void DalTarsel::getOSD(int index, int mode, ModelTarsel model) {
    if (mode != 0 && mode != 1)
        return;
    const int which = mode == 0 ? index : 0xFF; // 0xFF reads every OSD
    f_SendCmd(model.timeout, 0xF1, 0x0F, which, 0x00, 0x00, nullptr, 0, QString());
}

void DalTarsel::geth264inputrtsp(ModelTarsel model, int source, int channel) {
    const unsigned s = static_cast<unsigned>(source);
    if (source >= 32) {
        const unsigned selector = ((s * 8u + 1792u) & 0x7F8u) | (channel & 7);
        f_SendCmd(model.timeout, 0xF1, 0x28, selector & 0xFF, 0x00, 0x00, nullptr, 0, QString());
        return;
    }
    // Some boards carry sixteen channels per source, the others eight.
    const int selector = device::has(Utility_Manage::getDeviceType(), device::SixteenChannels)
                             ? static_cast<int>(((s << 4) & 0xFF) | (channel & 15))
                             : rows::sourceChannel(source, channel);
    f_SendCmd(model.timeout, 0xF1, 0x25, selector, 0x00, 0x00, nullptr, 0, QString());
}

namespace {

// VISCA camera commands go out as built: they carry their own terminator 0xFF and no checksum.
void sendVisca(DalTarsel& dal, int timeout, int dat1, int dat2, int dat3,
               std::vector<unsigned char> block) {
    dal.f_SendCmd(timeout, 0x92, dat1, dat2, dat3, 0x00, block.data(),
                  static_cast<int>(block.size()), QString());
}

unsigned char low(unsigned value) { return static_cast<unsigned char>(value & 0xFFu); }

} // namespace

void DalTarsel::ptzTurn(int timeout, int speed, int direction) {
    // Pan and tilt bytes per direction: 0, 1, 2, 3.
    static const unsigned char kPanTilt[4][2] = {
        {0x03, 0x01}, {0x03, 0x02}, {0x01, 0x03}, {0x02, 0x03}};
    if (direction < 0 || direction > 3)
        return;
    sendVisca(*this, timeout, 0x10, 0x00, direction,
              {0x81, 0x01, 0x06, 0x01, low(speed), low(speed), kPanTilt[direction][0],
               kPanTilt[direction][1], 0xFF});
}

void DalTarsel::ptzTurnReset(int timeout) {
    sendVisca(*this, timeout, 0x12, 0x00, 0x00, {0x81, 0x01, 0x06, 0x04, 0xFF});
}

void DalTarsel::ptzTurnStop(int timeout) {
    sendVisca(*this, timeout, 0x14, 0x00, 0x00,
              {0x81, 0x01, 0x06, 0x01, 0x02, 0x02, 0x03, 0x03, 0xFF});
}

void DalTarsel::ptzZoom(int timeout, int value) {
    sendVisca(*this, timeout, 0x16, value, 0x00, {0x81, 0x01, 0x04, 0x07, low(value), 0xFF});
}

void DalTarsel::ptzZoomReset(int timeout) {
    sendVisca(*this, timeout, 0x18, 0x00, 0x00,
              {0x81, 0x01, 0x04, 0x47, 0x00, 0x00, 0x00, 0x00, 0xFF});
}

void DalTarsel::ptzFocus(int timeout, int value) {
    sendVisca(*this, timeout, 0x1A, value, 0x00, {0x81, 0x01, 0x04, 0x08, low(value), 0xFF});
}

void DalTarsel::ptzFocusReset(int timeout) {
    sendVisca(*this, timeout, 0x1C, 0x00, 0x00,
              {0x81, 0x01, 0x04, 0x48, 0x00, 0x00, 0x00, 0x00, 0xFF});
}

void DalTarsel::ptzFocusAuto(int timeout, int value) {
    sendVisca(*this, timeout, 0x1E, value, 0x00,
              {0x81, 0x01, 0x04, 0x38, low(3u - static_cast<unsigned>(value)), 0xFF});
}

void DalTarsel::ptzBrightness(int timeout, int value) {
    sendVisca(*this, timeout, 0x20, 0x00, 0x00,
              {0x81, 0x01, 0x04, 0xA1, 0x00, 0x00, 0x00, low(value), 0xFF});
}
