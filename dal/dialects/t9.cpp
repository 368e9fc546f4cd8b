#include "dalTarsel.h"
#include "dialect_table.h"
#include "families.h"
#include "json_members.h"
#include "translators.h"

#include <QJsonArray>

using namespace dialect;

namespace {

constexpr unsigned char kQueryText = 2;
constexpr unsigned char kJsonText = 4;
constexpr unsigned char kDownload = 6;
constexpr unsigned char kUpload = 7;
struct T9Row {
    Key key;
    unsigned char kind;
    Text text;
};

// Only reads and two settings have a T9 form; everything else goes out native.
// clang-format off
const T9Row kT9Rows[] = {
    {{0x68, 6},     kJsonText,  built(removeAllSettings)},
    {{0x68, 25},    kQueryText, pat("Command=GetCurrModal&ScreenGroup=%1", dat4)},
    {{0x68, 42},    kJsonText,  built(setFanRpm)},
    {{0x68, 43},    kQueryText, pat("Command=GetFanRpm&FrameId=1")},
    {{0x6A, 3},     kQueryText, pat("Command=GetVersion")},
    {{0x6A, 9},     kQueryText, pat("Command=GetCardVersion")},
    {{0x6A, 11},    kQueryText, pat("Command=GetCardVersion")},
    {{0x74, 1},     kQueryText, pat("Command=GetDisplayModeList")},
    {{0x85, 0},     kQueryText, pat("Command=GetIpAddr")},
    {{0x89, 0},     kQueryText, pat("Command=GetIpAddr")},
    {{0x8D, 0},     kQueryText, pat("Command=GetIpAddr")},
    {{0x90, 1},     kQueryText, pat("Command=GetMacAddress")},
    {{0x90, 3},     kQueryText, pat("Command=GetViCustomWH")},
    {{0x90, 13},    kQueryText, pat("Command=GetAllIpEnc")},
    {{0x90, 21},    kQueryText, pat("Command=GetCardVersion")},
    {{0x90, 23},    kQueryText, pat("Command=GetCurrentOSD&ScreenGroup=%1", dat2)},
    {{0x90, 33},    kQueryText, pat("Command=GetLanguage")},
    {{0x92, 1},     kQueryText, pat("Command=GetAllModal&ScreenGroup=%1", dat2)},
    {{0x92, 3},     kQueryText, pat("Command=GetGroupsSettings")},
    {{0x92, 5},     kQueryText, pat("Command=GetAllModalGroup&ScreenGroup=%1", dat2)},
    {{0x92, 7},     kQueryText, pat("Command=GetAllIpEnc")},
    {{0x92, 15},    kQueryText, pat("Command=GetAllIpCam")},
    {{0x92, 21},    kQueryText, pat("Command=GetScrControl&ScrGroup=%1", dat2)},
    {{0xF1, 3},     kQueryText, pat("Command=GetActiveVideo")},
    {{0xF1, 4},     kQueryText, pat("Command=GetVOList")},
    // The group comes from DAT3 and the modal from DAT2, the reverse of the other rows.
    {{0xF1, 8},     kQueryText, pat("Command=GetOneModal&ScreenGroup=%1&ModalName=%2", dat3Plus1, dat2Plus1)},
    {{0xF1, 9},     kQueryText, pat("Command=GetViParam&VideoNo=%1", videoNumber)},
    {{0xF1, 10},    kQueryText, pat("Command=GetViSettings")},
    {{0xF1, 33},    kQueryText, pat("Command=GetAllDecoder")},
    {{0xF1, 59},    kQueryText, pat("Command=GetScrGroupSettings&GroupId=%1", dat2Plus1)},
};
// clang-format on

QString jsonText(const QJsonObject& obj) { return Utility_Manage::getStringFromJsonObject(obj); }

// Adds the frame, card, sub-card and port that an input number stands for.
QJsonObject withElement(QJsonObject obj, int id) {
    int frame = 0, card = 0, sub = 0, port = 0;
    Utility_Manage::getElementId_T9(id, frame, card, sub, port);
    obj.insert("Frame", frame);
    obj.insert("Card", card);
    obj.insert("Sub", sub);
    obj.insert("Port", port);
    return obj;
}

// Copies the caller's members under the device's names.
void copyMembers(const QJsonObject& from, QJsonObject& to, dal::json::Table members) {
    for (const dal::json::Member& m : members)
        to.insert(QLatin1String(m.sentAs),
                  m.kind == dal::json::Kind::Number
                      ? QJsonValue(from.value(QLatin1String(m.name)).toInt(0))
                      : QJsonValue(from.value(QLatin1String(m.name)).toString()));
}

} // namespace

void translate::t9(model_Protocoldata& rec) {
    if (const T9Row* row = findRow(kT9Rows, rec)) {
        rec.Datablock = row->text.render(rec);
        rec.dataType = row->kind;
    }
}

model_Protocoldata DalTarsel::transformBufToQStringForT9(model_Protocoldata& in) {
    model_Protocoldata out = in;
    translate::t9(out);
    return out;
}

void DalTarsel::f_SendCmdForT9(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                               QString text, unsigned char kind, QByteArray bytes) {
    model_Protocoldata rec = directRecord(3, family::T9, timeout, cmd, dat1, dat2, dat3, dat4);
    rec.Datablock = text;
    rec.dataType = kind;
    rec.arryDatablock = bytes;
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::setIPForT9(int timeout, const QString& text) {
    f_SendCmdForT9(timeout, 0x88, 0x00, 0, 0, 0, text, kJsonText, QByteArray());
}

void DalTarsel::setEDIDForT9(int timeout, int type, int width, int height) {
    const QJsonObject obj{
        {"Command", "SetViCustomWH"}, {"Type", type}, {"Width", width}, {"Height", height}};
    f_SendCmdForT9(timeout, 0x90, 0x04, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setViClipForT9(int timeout, int id, ModelTarsel model) {
    QJsonObject obj = withElement({{"Command", "SetViClip"}}, id);
    obj.insert("Left", model.viClipLeft);
    obj.insert("Top", model.viClipTop);
    obj.insert("Right", model.viClipRight);
    obj.insert("Bottom", model.viClipBottom);
    f_SendCmdForT9(timeout, 0x90, 0x06, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setViPropertyForT9(int timeout, int id, ModelTarsel model) {
    QJsonObject obj = withElement({{"Command", "SetViProperty"}}, id);
    obj.insert("Bright", model.viBright);
    obj.insert("Contrast", model.viContrast);
    obj.insert("Hue", model.viHue);
    obj.insert("Sat", model.viSat);
    f_SendCmdForT9(timeout, 0x90, 0x08, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setViPhaseForT9(int timeout, int id, int phase) {
    QJsonObject obj = withElement({{"Command", "SetViPhase"}}, id);
    obj.insert("Phase", phase);
    f_SendCmdForT9(timeout, 0x90, 0x0A, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setVgaParamForT9(int timeout, int id, int vert, int horz, int phase) {
    QJsonObject obj = withElement({{"Command", "SetVgaParam"}}, id);
    obj.insert("Vert", vert);
    obj.insert("Horz", horz);
    obj.insert("Phase", phase);
    f_SendCmdForT9(timeout, 0x90, 0x0C, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setAddrForT9(int timeout, QString& text) {
    f_SendCmdForT9(timeout, 0x90, 0x0E, 0, 0, 0, text, kJsonText, QByteArray());
}

// Two records: the sub-decoder list, then the network settings with DHCP off and a fixed DNS2.
void DalTarsel::setH265InfoForT9(int timeout, ModelTarsel model) {
    const QJsonObject list{{"Command", "SetSubDecoderList"},
                           {"Frame", model.decoderFrame},
                           {"Card", model.decoderCard},
                           {"Sub", model.decoderSub},
                           {"IP", model.decoderIp}};
    f_SendCmdForT9(timeout, 0x90, 0x12, 0, 0, 0, jsonText(list), kJsonText, QByteArray());
    const QJsonObject general{{"Command", "SetDecoderGeneral"},  {"DHCP", 0},
                              {"Gateway", model.decoderGateway}, {"Mask", model.decoderMask},
                              {"DNS1", model.decoderDns1},       {"DNS2", "0.0.0.0"}};
    f_SendCmdForT9(timeout, 0x90, 0x14, 0, 0, 0, jsonText(general), kJsonText, QByteArray());
}

void DalTarsel::setPortTypeForT9(int timeout, int card, int port, int isHdmi) {
    int frame = 0, cardNo = 0, sub = 0;
    Utility_Manage::getCardNum_T9(card, port, frame, cardNo, sub);
    const QJsonObject entry{{"Frame", frame}, {"Card", cardNo}, {"Sub", sub}, {"IsHDMI", isHdmi}};
    const QJsonObject obj{{"Command", "SetCardType"}, {"CardList", QJsonArray{entry}}};
    f_SendCmdForT9(timeout, 0x90, 0x16, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setOsdTextForT9(int timeout, QJsonObject& osd) {
    QJsonObject obj{{"Command", "SetOsdText"}};
    QJsonArray range;
    for (const dal::json::Member& m : dal::json::kOsdTextRange)
        range << osd.value(QLatin1String(m.name)).toInt(0);
    obj.insert("ScrRange", range);
    copyMembers(osd, obj, dal::json::table(dal::json::kOsdText));
    f_SendCmdForT9(timeout, 0x90, 0x18, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::clearGroupOSDForT9(int timeout, int group) {
    const QJsonObject obj{{"Command", "ClearOsdText"}, {"ScrGroup", group}};
    f_SendCmdForT9(timeout, 0x90, 0x1A, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::clearPortOSDForT9(int timeout, int group, QString& name) {
    const QJsonObject obj{{"Command", "CloseOsdText"}, {"ScrGroup", group}, {"Name", name}};
    f_SendCmdForT9(timeout, 0x90, 0x1C, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::uploadOSDFileForT9(int timeout, QString& name, QByteArray& file) {
    f_SendCmdForT9(timeout, 0x90, 0x1E, 0, 0, 0, name, kUpload, file);
}

void DalTarsel::sendHeartbeat(int timeout) {
    f_SendCmdForT9(timeout, 0x90, 0x1F, 0, 0, 0, QStringLiteral("Command=HeartBeat"), kQueryText,
                   QByteArray());
}

void DalTarsel::newModalGroup(int timeout, QString& text) {
    f_SendCmdForT9(timeout, 0x92, 0x04, 0, 0, 0, text, kJsonText, QByteArray());
}

void DalTarsel::removeModalGroup(int timeout, QString& text) {
    f_SendCmdForT9(timeout, 0x92, 0x06, 0, 0, 0, text, kJsonText, QByteArray());
}

void DalTarsel::findIPC(int timeout, QJsonObject& query) {
    QJsonObject obj{{"Command", "FindIpCam"}};
    copyMembers(query, obj, dal::json::table(dal::json::kFindIpc));
    f_SendCmdForT9(timeout, 0x92, 0x08, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::updateIPCInfo(int timeout, QJsonObject& cam) {
    QJsonObject obj{{"Command", "AddOneIpCam"}};
    copyMembers(cam, obj, dal::json::table(dal::json::kIpcInfo));
    f_SendCmdForT9(timeout, 0x92, 0x0A, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::deleteIPCInfo(int timeout, QString& name) {
    const QJsonObject obj{{"Command", "RemoveIpCam"}, {"CamList", QJsonArray{name}}};
    f_SendCmdForT9(timeout, 0x92, 0x0C, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::getIPCInfo(int timeout, QString& name) {
    f_SendCmdForT9(timeout, 0x92, 0x0D, 0, 0, 0, QStringLiteral("Command=GetOneIpCam&Name=") + name,
                   kQueryText, QByteArray());
}

void DalTarsel::uploadBGFileForT9(int timeout, QString& name, QByteArray& file) {
    f_SendCmdForT9(timeout, 0x92, 0x10, 0, 0, 0, name, kUpload, file);
}

void DalTarsel::loadBGFile(int timeout, int group) {
    const QJsonObject obj{{"Command", "LoadBGImage"}, {"ScreenGroup", group}};
    f_SendCmdForT9(timeout, 0x92, 0x12, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

// The three numbers travel in DAT2 to DAT4 beside the file name; their meaning is the device's.
void DalTarsel::downloadBGFile(int timeout, int dat2, int dat3, int dat4, QString& name) {
    f_SendCmdForT9(timeout, 0x92, 0x14, dat2, dat3, dat4, name, kDownload, QByteArray());
}

void DalTarsel::setBgOnStatusForT9(int timeout, int group, bool on) {
    const QJsonObject obj{
        {"Command", "ScreenCtrl"}, {"ScreenGroup", group}, {"Control", on ? "BgOn" : "BgOff"}};
    f_SendCmdForT9(timeout, 0x92, 0x16, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::refreshModal(int timeout, int group) {
    const QJsonObject obj{
        {"Command", "RefreshModal"}, {"IsCloudScreen", 0}, {"ScreenGroup", group}};
    f_SendCmdForT9(timeout, 0x92, 0x18, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

// Without the manual flag the device is put back to its automatic mode, 44.
void DalTarsel::setVideoFormat(int timeout, int id, int manual, int mode) {
    QJsonObject obj = withElement({{"Command", "SetViMode"}}, id);
    obj.insert("Manual", manual);
    obj.insert("Mode", manual != 0 ? mode : 44);
    f_SendCmdForT9(timeout, 0x92, 0x1A, 0, 0, 0, jsonText(obj), kJsonText, QByteArray());
}

void DalTarsel::setContainerParamForT9(int timeout, QString& text) {
    f_SendCmdForT9(timeout, 0xF0, 0x3B, 0, 0, 0, text, kJsonText, QByteArray());
}
