#include "dalTarsel.h"
#include "dialect_table.h"
#include "families.h"
#include "translators.h"

using namespace dialect;

namespace {

constexpr int kQueryText = 2;
constexpr int kJsonText = 4;

// The scene name may arrive with a NUL and padding behind it; only what precedes counts.
QString saveScene(const Rec& r) {
    const QString name = r.Datablock.left(r.Datablock.indexOf(QChar(0)));
    return QStringLiteral("{SaveScene;%1;%2,%3}")
        .arg(QString::number(dat3(r) + 600001), QString::number(dat2(r)), name);
}

struct NVRow {
    Key key;
    int kind; // or kAsCame
    Text text;
    bool keepBytes; // the camera words travel beside the native data bytes
};

#define SYSTEM_QUERY(key)                                                                          \
    "{\"Function\":\"getSystemMsg\",\"Type\":\"System\",\"Value\":{\"" key "\":\"echo\"}}"

// clang-format off
const NVRow kNVRows[] = {
    {{0x68, 6},     kJsonText,  built(removeAllSettings), false},
    {{0x68, 26},    kAsCame,    built(saveScene), false},
    {{0x68, 42},    kJsonText,  built(setFanRpm), false},
    {{0x68, 43},    kQueryText, pat("Command=GetFanRpm&FrameId=1"), false},
    {{0x6A, 3},     kQueryText, pat("Command=GetVersion"), false},
    {{0x6A, 9},     kQueryText, pat("Command=GetCardVersion"), false},
    {{0x6A, 11},    kQueryText, pat("Command=GetCardVersion"), false},
    {{0x74, 1},     kQueryText, pat("Command=GetDisplayModeList"), false},
    {{0x85, 0},     kQueryText, pat("Command=GetIpAddr"), false},
    {{0x8D, 0},     kQueryText, pat("Command=GetIpAddr"), false},
    {{0x89, 0},     kAsCame,    pat(SYSTEM_QUERY("get_net_config")), false},
    {{0x90, 1},     kAsCame,    pat(SYSTEM_QUERY("get_venc_config")), false},
    {{0x90, 5},     kAsCame,    pat("reply:"), false},
    {{0x90, 37},    kAsCame,    pat("reply:"), false},
    {{0x90, 7},     kAsCame,    pat("replyoled"), false},
    {{0x90, 39},    kAsCame,    pat("replyoled"), false},
    {{0x90, 9},     kAsCame,    pat("getKvmInfo"), false},
    {{0x90, 13},    kQueryText, pat("Command=GetAllIpEnc"), false},
    {{0x90, 21},    kQueryText, pat("Command=GetCardVersion"), false},
    {{0x90, 23},    kQueryText, pat("Command=GetCurrentOSD&ScreenGroup=%1", dat2), false},
    {{0x90, 33},    kAsCame,    pat(SYSTEM_QUERY("get_software_config")), false},
    {{0x92, 1},     kQueryText, pat("Command=GetAllModal&ScreenGroup=%1", dat2), false},
    {{0x92, 3},     kQueryText, pat("Command=GetGroupsSettings"), false},
    {{0x92, 5},     kQueryText, pat("Command=GetAllModalGroup&ScreenGroup=%1", dat2), false},
    {{0x92, 16},    kAsCame,    pat("turn"), true},
    {{0x92, 18},    kAsCame,    pat("turnReset"), true},
    {{0x92, 20},    kAsCame,    pat("turnStop"), true},
    {{0x92, 22},    kAsCame,    pat("zoom"), true},
    {{0x92, 24},    kAsCame,    pat("zoomReset"), true},
    {{0x92, 26},    kAsCame,    pat("focus"), true},
    {{0x92, 28},    kAsCame,    pat("focusReset"), true},
    {{0x92, 30},    kAsCame,    pat("focusAuto"), true},
    {{0x92, 32},    kAsCame,    pat("brightness"), true},
    {{0xF1, 3},     kQueryText, pat("Command=GetActiveVideo"), false},
    {{0xF1, 4},     kQueryText, pat("Command=GetVOList"), false},
    {{0xF1, 8},     kQueryText, pat("Command=GetOneModal&ScreenGroup=%1&ModalName=%2", dat3Plus1, dat2Plus1), false},
    {{0xF1, 9},     kQueryText, pat("Command=GetViParam&VideoNo=%1", videoNumber), false},
    {{0xF1, 10},    kQueryText, pat("Command=GetViSettings"), false},
    {{0xF1, 33},    kQueryText, pat("Command=GetAllDecoder"), false},
    {{0xF1, 59},    kQueryText, pat("Command=GetScrGroupSettings&GroupId=%1", dat2Plus1), false},
};
// clang-format on

#undef SYSTEM_QUERY

} // namespace

void translate::nv(model_Protocoldata& rec) {
    const NVRow* row = findRow(kNVRows, rec);
    if (row && row->keepBytes)
        rec.Datablock = row->text.render(rec);
    else
        setTextAndBytes(rec, row ? &row->text : nullptr);
    if (row && row->kind != kAsCame)
        rec.dataType = static_cast<unsigned char>(row->kind);
}

model_Protocoldata DalTarsel::transformBufToQStringForNV(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::nv(out);
    return out;
}

void DalTarsel::f_SendCmdFoNV(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                              QString text, QByteArray bytes) {
    if (isConnected)
        addToQueue(textRecord(family::NV, timeout, cmd, dat1, dat2, dat3, dat4, text, bytes));
}

// The flag picks the second form of each query, 0x20 above the first.
void DalTarsel::getNvInfo(int timeout, int index, int flag) {
    f_SendCmd(timeout, 0x90, flag == 0 ? 0x01 : 0x21, index, 0, 0, nullptr, 0, QString());
}

void DalTarsel::getComInfoForNV(int timeout, int flag) {
    f_SendCmd(timeout, 0x90, flag == 0 ? 0x05 : 0x25, 0, 0, 0, nullptr, 0, QString());
}

void DalTarsel::getLCDInfoForNV(int timeout, int flag) {
    f_SendCmd(timeout, 0x90, flag == 0 ? 0x07 : 0x27, 0, 0, 0, nullptr, 0, QString());
}

void DalTarsel::getKVMInfoForNV(int timeout, int flag) {
    f_SendCmd(timeout, 0x90, flag == 0 ? 0x09 : 0x29, 0, 0, 0, nullptr, 0, QString());
}
