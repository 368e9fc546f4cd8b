#include "dalTarsel.h"
#include "dialect_table.h"
#include "families.h"
#include "translators.h"

using namespace dialect;

namespace {

struct H40Row {
    Key key;
    Text text;
};

// Verbs are lower case except "Torb" and "QIPR", which the device spells so. Parameters that
// do not fit a DAT byte ride in the time-out, 3000 above their value.
// clang-format off
const H40Row kH40Rows[] = {
    {{0x68, 26},    pat("<save, %1, %2>", dat2, dat3)},
    {{0x6A, 3},     pat("<reid, 0, 1>")},
    {{0x6A, 9},     pat("<reid, 1, %1>", dat2Plus1)},
    {{0x6A, 11},    pat("<reid, 2, %1>", dat2Plus1)},
    {{0x85, 0},     pat("<QIPR>")},
    {{0x89, 0},     pat("<QIPR>")},
    {{0x8D, 0},     pat("<QIPR>")},
    {{0x90, 1},     pat("<QIPR>")},
    {{0x90, 3},     pat("<rcpm, %1>", dat2Plus1)},
    {{0x90, 5},     pat("<vinf>")},
    {{0x92, 0},     pat("<call, %1, %2>", dat2, dat3)},
    {{0x92, 1},     pat("<winf, %1>", dat2)},
    {{0x92, 3},     pat("<winf, %1>", dat2)},
    {{0xF0, 1, 1},  pat("<shut, %1, %2>", timeoutMinus3000, dat4)},
    {{0xF0, 1, 2},  pat("<rset, %1>", dat3)},
    {{0xF0, 1, 5},  pat("<Torb, %1, 1>", timeoutMinus3000)},
    {{0xF0, 1, 6},  pat("<Torb, %1, 0>", timeoutMinus3000)},
    {{0xF1, 1},     pat("<widf, %1>", timeoutMinus3000)},
    {{0xF1, 3},     pat("<vinf>")},
    {{0xF1, 4},     pat("<vonf>")},
    {{0xF1, 8},     pat("<winf, %1>", dat3)},
    {{0xF1, 59},    pat("<winf, %1>", dat2)},
};
// clang-format on

} // namespace

void translate::h40(model_Protocoldata& rec) {
    if (const H40Row* row = findRow(kH40Rows, rec))
        rec.Datablock = row->text.render(rec);
}

model_Protocoldata DalTarsel::transformBufToQStringForH40(model_Protocoldata& in) {
    model_Protocoldata out = in;
    translate::h40(out);
    return out;
}

// The bytes sent are always the text's; the byte-array argument is not used.
void DalTarsel::f_SendCmdForH40(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                                QString text, [[maybe_unused]] QByteArray bytes) {
    model_Protocoldata rec = directRecord(4, family::H40, timeout, cmd, dat1, dat2, dat3, dat4);
    rec.Datablock = text;
    rec.arryDatablock = text.toLocal8Bit();
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::setContainerParamForH40(int timeout, QString& text) {
    f_SendCmdForH40(timeout, 0xF0, 0x3B, 0, 0, 0, text, QByteArray());
}

void DalTarsel::setContainerFomatForH40(int timeout, QString& text) {
    f_SendCmdForH40(timeout, 0x74, 0x00, 0, 0, 0, text, QByteArray());
}

void DalTarsel::setIPForH40(int timeout, const QString& text) {
    f_SendCmdForH40(timeout, 0x88, 0x00, 0, 0, 0, text, QByteArray());
}

void DalTarsel::setOutputTPForH40(int timeout, const QString& text) {
    f_SendCmdForH40(timeout, 0x90, 0x06, 0, 0, 0, text, QByteArray());
}

void DalTarsel::setMonitorIndexForH40(int timeout, const QString& text) {
    f_SendCmdForH40(timeout, 0xF0, 0x05, 0, 0, 0, text, QByteArray());
}

void DalTarsel::sendHeartbeatForH40(int timeout) {
    f_SendCmdForH40(timeout, 0x90, 0x1F, 0, 0, 0, QStringLiteral("<trea>"), QByteArray());
}
