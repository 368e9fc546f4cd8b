#include "dal_osd.h"

#include "biz_osd_cmdswork.h"
#include "bytes.h"

#include <algorithm>

namespace {

enum Command {
    ClearScreen = 2,
    CheckTime = 3,
    ShowText = 5,
    ScrollInfo = 10,
    ShowModel = 11,
    TextInfo = 17
};

unsigned char low(int value) { return static_cast<unsigned char>(value); }
unsigned char high(int value) { return static_cast<unsigned char>(value >> 8); }

// The frame header: marker, command, then the length `len` big-endian and CR LF.
model_OsdParam frame(int cmd, int len, QByteArray payload, const QString& tag, int timeout) {
    model_OsdParam rec;
    const unsigned char head[] = {0x00, 0xFE,      0xDC,     low(cmd), 0x00,
                                  0x00, high(len), low(len), 0x0D,     0x0A};
    std::copy(std::begin(head), std::end(head), rec.frameHead + 1);
    rec.tag = tag;
    rec.timeout = timeout;
    rec.payload = std::move(payload);
    return rec;
}

} // namespace

dal_Osd::dal_Osd() : QObject(nullptr) {}

QByteArray dal_Osd::getBlock(unsigned char* data, int len) { return dal::bytesOf(data, len); }

// Kept for callers that want it; OSD frames carry no checksum.
void dal_Osd::setCheckSum(unsigned char* buf, int len) { dal::writeCheckSum(buf, len); }

void dal_Osd::f_SendCmd(int cmd, unsigned char* data, int len, QString tag, int timeout) {
    addToQueue(frame(cmd, len, data ? getBlock(data, len) : QByteArray(), tag, timeout));
}

void dal_Osd::addToQueue(model_OsdParam rec) { biz_Osd_CMDSWork::addToSendQueue(std::move(rec)); }

void dal_Osd::clearScreen(QString tag) { f_SendCmd(ClearScreen, nullptr, 0, tag, 5000); }

void dal_Osd::checkTime(QString tag) { f_SendCmd(CheckTime, nullptr, 0, tag, 1000); }

// The fourth argument leads the payload, as the box expects.
void dal_Osd::sendShowText(int p1, int p2, int p3, int p4, int p5, int p6, QString tag) {
    unsigned char payload[] = {low(p4), low(p1), low(p2), low(p3), low(p5), low(p6)};
    f_SendCmd(ShowText, payload, sizeof payload, tag, 1000);
}

// p3 goes little-endian.
void dal_Osd::sendScrollInfo(int p1, int p2, int p3, QString tag) {
    unsigned char payload[] = {low(p1), low(p2), low(p3), high(p3)};
    f_SendCmd(ScrollInfo, payload, sizeof payload, tag, 1000);
}

void dal_Osd::setOsdShowModel(int mode, QString tag) {
    unsigned char payload[] = {static_cast<unsigned char>(mode == 1 ? 1 : 0)};
    f_SendCmd(ShowModel, payload, sizeof payload, tag, 2000);
}

// p2 then p1, both big-endian; the text's length byte wraps past 255; p11 is not sent.
void dal_Osd::sendTextInfo(int p1, int p2, int p3, int p4, int p5, int p6, int p7, int p8, int p9,
                           QString text, [[maybe_unused]] int p11, QString tag) {
    // ASCII, which every locale encoding writes as itself, goes straight into the payload.
    const bool ascii =
        std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x80; });
    const QByteArray encoded = ascii ? QByteArray() : text.toLocal8Bit();
    const int size = ascii ? text.size() : encoded.size();
    const unsigned char parameters[] = {high(p2), low(p2), high(p1), low(p1), low(p3), low(size),
                                        low(p4),  low(p5), low(p6),  low(p7), low(p8), low(p9)};
    QByteArray payload(int(sizeof parameters) + size, Qt::Uninitialized);
    char* at = std::copy(std::begin(parameters), std::end(parameters), payload.data());
    if (ascii)
        std::transform(text.cbegin(), text.cend(), at, [](QChar c) { return char(c.unicode()); });
    else
        std::copy(encoded.begin(), encoded.end(), at);
    const int len = payload.size();
    addToQueue(frame(TextInfo, len, std::move(payload), tag, 2000));
}
