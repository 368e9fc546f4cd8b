// Data-block setters of CMD 0xF0: the members written out by hand.
#include "../blocks/block_builder.h"
#include "dalTarsel.h"
#include "json_members.h"

#include <QStringList>

#include <algorithm>

using blocks::Block;

namespace {

constexpr int kUserBuffer = 1024;
constexpr int kFreeBlockBuffer = 1024;     // blocks whose length the caller's data decides
constexpr int kSupplierBuffer = 0xFFFF;    // the length travels in 16 bits
constexpr int kOneByteLengthBuffer = 0xFF; // DAT4 stays 0, so the length must fit DAT3
constexpr int kUrlChannels = 16;

// The four numbers of a dotted IPv4 text, one byte each; missing numbers read as 0.
void appendIpv4(Block& block, const QString& text) {
    const QStringList parts = text.split(QLatin1Char('.'));
    for (int i = 0; i < 4; ++i)
        block.byte(parts.value(i).toInt());
}

// The numbers of a text such as "1-2-3".
QList<int> dashNumbers(const DashNumbers& text) {
    QList<int> numbers;
    if (text.isEmpty())
        return numbers;
    for (const QString& part : text.split(QLatin1Char('-')))
        numbers << part.toInt();
    return numbers;
}

int colourPair(const QString& colour, int pair) {
    bool ok = false;
    const int value = colour.mid(1 + 2 * pair, 2).toInt(&ok, 16);
    return ok ? value : 0;
}

// One byte per member of the table, in its order; a colour text gives its three components.
void sendJsonBytes(DalTarsel& dal, const char* operation, int timeout, int dat1, int index,
                   const QJsonObject& obj, dal::json::Table members) {
    Block block(operation, kFreeBlockBuffer);
    for (const dal::json::Member& m : members) {
        const QJsonValue value = obj.value(QLatin1String(m.name));
        if (m.kind == dal::json::Kind::Number)
            block.byte(value.toInt());
        else
            for (int pair = 0; pair < 3; ++pair)
                block.byte(colourPair(value.toString(), pair));
    }
    const int length = block.size() + 1;
    block.send(dal, timeout, 0xF0, dat1, index, length, 0);
}

void sendBytesWithChecksum(DalTarsel& dal, const char* operation, int capacity, int timeout,
                           int dat1, int dat2, const QByteArray& bytes) {
    Block block(operation, capacity);
    block.bytes(bytes);
    block.sendSized(dal, timeout, 0xF0, dat1, dat2);
}

} // namespace

// Two user-setting bytes, then two 32-bit user-setting values, least significant byte first.
void DalTarsel::setUserSetting(ModelTarsel model) {
    Block block("setUserSetting", 11);
    block.byte(model.userSettingByte0).byte(model.userSettingByte1);
    block.dword(model.userSettingValue0).dword(model.userSettingValue1);
    block.send(*this, model.timeout, 0xF0, 0x07, 0x00, 0x0B, 0x00);
}

// The `len` EDID bytes as given, then the checksum.
void DalTarsel::setInputPortEdid(unsigned char* data, int port, int len, ModelTarsel model) {
    if (len < 0 || len >= kFreeBlockBuffer || (len > 0 && !data)) {
        blocks::holdsCount("setInputPortEdid", "EDID byte", len, data ? kFreeBlockBuffer - 1 : 0);
        return;
    }
    sendBytesWithChecksum(*this, "setInputPortEdid", kFreeBlockBuffer, model.timeout, 0x0C, port,
                          QByteArray(reinterpret_cast<const char*>(data), len));
}

// One signal byte per loop output (16), then the checksum.
void DalTarsel::setLoopToSignal(ModelTarsel model) {
    Block block("setLoopToSignal", 17);
    for (unsigned char signal : model.loopToSignal)
        block.byte(signal);
    block.send(*this, model.timeout, 0xF0, 0x12, 0x00, 0x11, 0x00);
}

// Width, height and frequency as 16-bit values, the enable byte, then the name's first 13
// Latin-1 bytes zero-padded, then the checksum. The time-out is a fixed 30 s, not the model's.
void DalTarsel::setEDIDParm_4k([[maybe_unused]] ModelTarsel model, int input, int width, int height,
                               int frequency, bool enabled, QString const& name) {
    Block block("setEDIDParm_4k", 21);
    block.word(width).word(height).word(frequency).byte(enabled ? 1 : 0);
    block.bytes(name.toLatin1().left(13)).zerosUpTo(20);
    block.send(*this, 30000, 0xF0, 0x19, input, 0x15, 0x00);
}

// The address bytes as given, then the checksum; DAT4 stays 0, so at most 255 bytes.
void DalTarsel::setPreviewHip(ModelTarsel model, QByteArray address) {
    Block block("setPreviewHip", kOneByteLengthBuffer);
    block.bytes(address);
    const int length = block.size() + 1;
    block.send(*this, model.timeout, 0xF0, 0x20, 0x00, length, 0x00);
}

// The resolution bytes as given, then the checksum.
void DalTarsel::setPreviewHCodeResolute(ModelTarsel model, QByteArray resolution) {
    sendBytesWithChecksum(*this, "setPreviewHCodeResolute", kFreeBlockBuffer, model.timeout, 0x20,
                          0x01, resolution);
}

// Address, mask and gateway (4 bytes each), the port (16-bit), 8 zero bytes, checksum.
void DalTarsel::seth264inputip(ModelTarsel model, int source) {
    Block block("seth264inputip", 23);
    appendIpv4(block, model.streamInputIp);
    appendIpv4(block, model.streamInputMask);
    appendIpv4(block, model.streamInputGateway);
    block.word(model.streamInputPort).zerosUpTo(22);
    block.send(*this, model.timeout, 0xF0, 0x21, source, 0x17, 0x00);
}

// DAT2 is the source, or 0xFF when `source` is the source count (all sources); the block is
// the picture byte and its checksum.
void DalTarsel::setH264InputDisplayPic(ModelTarsel model, int source) {
    const int selector = source == model.getMaxSourceCount() ? 0xFF : source;
    Block block("setH264InputDisplayPic", 2);
    block.byte(model.h264DisplayPic);
    block.send(*this, model.timeout, 0xF0, 0x23, selector, 0x02, 0x00);
}

// Three bytes per backup pair (source, backup source, enable), then the checksum.
void DalTarsel::setHotBackup(ModelTarsel model) {
    Block block("setHotBackup", kFreeBlockBuffer);
    for (const _HotBackData& pair : model.hotBackups)
        block.byte(pair.source).byte(pair.backupSource).byte(pair.enabled);
    block.sendSized(*this, model.timeout, 0xF0, 0x24, 0x00);
}

// Per container: the caller's take flag (byte), then the alpha time in ms (16-bit). The
// time-out is the scene's, lengthened by the longest alpha time of a flagged container.
void DalTarsel::setTakeAlphaDuetoContainer(ModelScene scene, int* takeFlags) {
    const int c = scene.getMaxContainerCount();
    if (!blocks::holdsCount("setTakeAlphaDuetoContainer", "container", c, scene.takes.size()) ||
        (c > 0 && !takeFlags))
        return;
    Block block("setTakeAlphaDuetoContainer", kFreeBlockBuffer);
    int longest = 0;
    for (int k = 0; k < c; ++k) {
        const int ms = blocks::alphaMilliseconds(scene.takes.at(k).alphaTime);
        block.byte(takeFlags[k]).word(ms);
        if (takeFlags[k])
            longest = std::max(longest, ms);
    }
    block.sendSized(*this, scene.timeout + longest, 0xF0, 0x3C, 0x00);
}

void DalTarsel::setUserFileData(int timeout, int index, char* data, int len) {
    if (len == 0) {
        f_SendCmd(timeout, 0xF0, 0x40, index, 0, 0, nullptr, 0, QString());
        return;
    }
    if (len < 0 || !data || len >= kUserBuffer) {
        blocks::holdsCount("setUserFileData", "byte", len, data ? kUserBuffer - 1 : 0);
        return;
    }
    sendBytesWithChecksum(*this, "setUserFileData", kUserBuffer, timeout, 0x40, index,
                          QByteArray(data, len));
}

// Pairs of layer (byte) and blending width (16-bit) from the two "-" lists, as many as
// both hold, then the checksum.
void DalTarsel::setLayerMultiBlendingWidth(DashNumbers layers, DashNumbers widths) {
    const QList<int> l = dashNumbers(layers);
    const QList<int> w = dashNumbers(widths);
    Block block("setLayerMultiBlendingWidth", kFreeBlockBuffer);
    for (int i = 0; i < std::min(l.size(), w.size()); ++i)
        block.byte(l.at(i)).word(w.at(i));
    block.sendSized(*this, 3000, 0xF0, 0x42, 0x00);
}

// One byte per number of the "-" list, then the checksum.
void DalTarsel::setLayerBlackWhiteEffect(DashNumbers effects) {
    Block block("setLayerBlackWhiteEffect", kFreeBlockBuffer);
    for (int value : dashNumbers(effects))
        block.byte(value);
    block.sendSized(*this, 3000, 0xF0, 0x43, 0x00);
}

// Bytes 0-15 the numbers of `modes`, bytes 16-31 those of `signal` (each "-" list zero-padded
// to 16), then the checksum. A list of more than 16 numbers does not fit and is refused.
void DalTarsel::setPreviewModeSignal(int timeout, int port, DashNumbers modes, DashNumbers signal) {
    const QList<int> m = dashNumbers(modes);
    const QList<int> s = dashNumbers(signal);
    if (!blocks::holdsCount("setPreviewModeSignal", "mode", m.size(), 16) ||
        !blocks::holdsCount("setPreviewModeSignal", "signal", s.size(), 16))
        return;
    Block block("setPreviewModeSignal", 33);
    for (int value : m)
        block.byte(value);
    block.zerosUpTo(16);
    for (int value : s)
        block.byte(value);
    block.zerosUpTo(32);
    block.send(*this, timeout, 0xF0, 0x46, port, 0x21, 0x00);
}

// Mode (byte), red, green, blue, brightness and gamma (16-bit each), enable and curve
// (byte each), then the checksum.
void DalTarsel::setBrightAndGamma(int timeout, int port, int mode, int red, int green, int blue,
                                  int brightness, int gamma, bool enabled, int curve) {
    Block block("setBrightAndGamma", 14);
    block.byte(mode).word(red).word(green).word(blue).word(brightness).word(gamma);
    block.byte(enabled ? 1 : 0).byte(curve);
    block.send(*this, timeout, 0xF0, 0x50, port, 0x0E, 0x00);
}

// Width and height (16-bit each), then the checksum.
void DalTarsel::setSendCardSizeAndPos(int timeout, int card, int width, int height) {
    Block block("setSendCardSizeAndPos", 5);
    block.word(width).word(height);
    block.send(*this, timeout, 0xF0, 0x51, card, 0x05, 0x00);
}

// X, y, width, height and frequency (16-bit each), one zero byte, then the checksum.
void DalTarsel::setSendCardParams(int timeout, int card, int x, int y, int width, int height,
                                  int frequency) {
    Block block("setSendCardParams", 12);
    block.word(x).word(y).word(width).word(height).word(frequency).zerosUpTo(11);
    block.send(*this, timeout, 0xF0, 0x52, card, 0x0C, 0x00);
}

// The bytes as given, then the checksum.
void DalTarsel::setR4Reset(int timeout, int card, QByteArray data) {
    sendBytesWithChecksum(*this, "setR4Reset", kFreeBlockBuffer, timeout, 0x54, card, data);
}

void DalTarsel::setSupplierName(int timeout, int index, QByteArray name) {
    sendBytesWithChecksum(*this, "setSupplierName", kSupplierBuffer, timeout, 0x58, index, name);
}

// Rows, columns, scan and pixel pitch (byte each), then the checksum.
void DalTarsel::setLEDProductSpec(int timeout, int card, int rows, int columns, int scan,
                                  int pixel) {
    Block block("setLEDProductSpec", 5);
    block.byte(rows).byte(columns).byte(scan).byte(pixel);
    block.send(*this, timeout, 0xF0, 0x59, card, 0x05, 0x00);
}

// One byte: the channel in the high nibble, the mode in the low nibble; then the checksum.
void DalTarsel::setH265InputMode(ModelTarsel model, int source, int channel, int mode) {
    Block block("setH265InputMode", 2);
    block.byte(((channel & 0x0F) << 4) | (mode & 0x0F));
    block.send(*this, model.timeout, 0xF0, 0x60, source, 0x02, 0x00);
}

// The channel (byte), address, mask and gateway (4 bytes each), the port (16-bit), one zero
// byte, then the checksum.
void DalTarsel::setH265InputIpInfo(ModelTarsel model, int source, int channel) {
    Block block("setH265InputIpInfo", 17);
    block.byte(channel);
    appendIpv4(block, model.streamInputIp);
    appendIpv4(block, model.streamInputMask);
    appendIpv4(block, model.streamInputGateway);
    block.word(model.streamInputPort).zerosUpTo(16);
    block.send(*this, model.timeout, 0xF0, 0x61, source, 0x11, 0x00);
}

// DAT2 carries the source in the high nibble and the channel in the low one; an empty url
// sends nothing.
void DalTarsel::setH265InputUrl(ModelTarsel model, int source, int channel, QString const& url) {
    if (source < 0 || source >= model.getMaxSourceCount() ||
        static_cast<unsigned>(channel) >= kUrlChannels || url.isEmpty())
        return;
    Block block("setH265InputUrl", kFreeBlockBuffer);
    block.bytes(url.toLatin1()).byte(0);
    block.sendSized(*this, model.timeout, 0xF0, 0x62, (source << 4) | channel);
}

void DalTarsel::setUserInfos(int timeout, int index, QByteArray info) {
    Block block("setUserInfos", kUserBuffer);
    block.bytes(info.left(kUserBuffer - 1)).zerosUpTo(kUserBuffer - 1);
    block.send(*this, timeout, 0xF0, 0x63, index, 0x00, 0x04);
}

void DalTarsel::setLoginType(int timeout, int type) {
    Block block("setLoginType", kUserBuffer);
    block.bytes(QString::number(type).toUtf8()).zerosUpTo(kUserBuffer - 1);
    block.send(*this, timeout, 0xF0, 0x64, 0x00, 0x00, 0x04);
}

void DalTarsel::setSourceFrameInfo(int timeout, int index, QJsonObject obj) {
    sendJsonBytes(*this, "setSourceFrameInfo", timeout, 0x65, index, obj,
                  dal::json::table(dal::json::kSourceFrame));
}

void DalTarsel::setDanteAudioInfo(int timeout, int index, QJsonObject obj) {
    sendJsonBytes(*this, "setDanteAudioInfo", timeout, 0x66, index, obj,
                  dal::json::table(dal::json::kDanteAudio));
}

void DalTarsel::setOutBoardAudioInfo(int timeout, int index, QJsonObject obj) {
    sendJsonBytes(*this, "setOutBoardAudioInfo", timeout, 0x67, index, obj,
                  dal::json::table(dal::json::kOutBoardAudio));
}

// The container (byte), the first four bank values of `banks` (byte each), then the checksum.
void DalTarsel::setContainerAndBankArr(int timeout, int container, int* banks) {
    if (!banks) {
        blocks::holdsCount("setContainerAndBankArr", "bank", 4, 0);
        return;
    }
    Block block("setContainerAndBankArr", 6);
    block.byte(container);
    for (int i = 0; i < 4; ++i)
        block.byte(banks[i]);
    block.send(*this, timeout, 0xF0, 0x68, 0x00, 0x06, 0x00);
}

// The bytes as given, then the checksum.
void DalTarsel::setStreamIpInfo(int timeout, int index, QByteArray const& info) {
    sendBytesWithChecksum(*this, "setStreamIpInfo", kFreeBlockBuffer, timeout, 0x71, index, info);
}

void DalTarsel::setSupplierInfo(int timeout, int sub, int index, QByteArray info) {
    sendBytesWithChecksum(*this, "setSupplierInfo", kSupplierBuffer, timeout, sub, index, info);
}
