#include "dalTarsel.h"
#include "dialect_table.h"
#include "families.h"
#include "translators.h"

using namespace dialect;

namespace {

struct KR2Row {
    Key key;
    Text text;
};

// Words in brackets, comma-separated without blanks; "(CLEAR)" is the device's own spelling.
// clang-format off
const KR2Row kKR2Rows[] = {
    {{0x68, 6},     pat("(CLEAR)")},
    {{0x68, 25},    pat("(sync,scegid)")},
    {{0x68, 42},    pat("(fan,%1)", dat3Plus1)},
    {{0x68, 43},    pat("(info,dev)")},
    {{0x6A, 3},     pat("(ver)")},
    {{0x85, 0},     pat("(ip)")},
    {{0x89, 0},     pat("(ip)")},
    {{0x8D, 0},     pat("(ip)")},
    {{0x90, 1},     pat("(ip)")},
    {{0x90, 3},     pat("(sync,incard)")},
    {{0x90, 4},     pat("(info,res,%1)", dat2Plus1)},
    {{0x92, 5},     pat("(sync,scene)")},
    {{0xF0, 1, 2},  pat("(wnd,clear,%1)", dat4Plus1)},
    {{0xF1, 4},     pat("(sync,outcard)")},
    {{0xF1, 8},     pat("(sync,scewnd,%1)", dat2)},
    {{0xF1, 59},    pat("(sync,omap)")},
};
// clang-format on

bool isEdidUpload(const Rec& r) { return Key(0xF0, 12).matches(r); }

} // namespace

// Every KR2 command goes out as its text's bytes, except the EDID upload, which sends the
// native data without its trailing checksum under a plain label.
void translate::kr2(model_Protocoldata& rec) {
    if (isEdidUpload(rec)) {
        rec.Datablock = QStringLiteral("edid file");
        rec.arryDatablock.chop(1);
        return;
    }
    const KR2Row* row = findRow(kKR2Rows, rec);
    setTextAndBytes(rec, row ? &row->text : nullptr);
}

model_Protocoldata DalTarsel::transformBufToQStringForKR2(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::kr2(out);
    return out;
}

void DalTarsel::f_SendCmdForKR2(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                                QString text, QByteArray bytes) {
    if (isConnected)
        addToQueue(textRecord(family::KR2, timeout, cmd, dat1, dat2, dat3, dat4, text, bytes));
}

void DalTarsel::setCurContainerIndexForT9(int index) {
    curContainerIndex = index;
    if (Utility_Manage::getDeviceType() != family::KR2)
        return;
    f_SendCmdForKR2(3000, 0xF0, 0x3B, index, 0, 0, QStringLiteral("(setting,cgrp,%1)").arg(index),
                    QByteArray());
}

void DalTarsel::sendHeartbeatForKR2(int timeout) {
    f_SendCmdForKR2(timeout, 0x90, 0x1F, 0, 0, 0, QStringLiteral("(ip)"), QByteArray());
}
