#include "dalTarsel.h"
#include "dialect_table.h"
#include "families.h"
#include "translators.h"

using namespace dialect;

namespace {

// The device's parser accepts these exactly as they stand, the broken "</UserID\n>" and the
// empty "group=" of the scene save included.
const char kPlain[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Message>\n <UserID>%1</UserID>\n"
    "</Message>\n";
const char kAllCommands[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Message>\n <UserID>%1"
                            "</UserID>\n<Cmd type=\"all\">\n</Cmd>\n</Message>\n";
const char kSceneSave[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?><Message>\n<UserID>%1</UserID\n><Scene id=\"%2\" "
    "screenId=\"%3\" name=\"%4\" group=>\n<Scol>1</Scol>\n<osd>0</osd>\n<input>0</input>\n<Img "
    "w=\"0\" h=\"0\">666666</Img>\n</Scene>\n</Message>";

QString userId() { return Utility_Manage::getUserID(); }
QString decimal(int value) { return QString::number(value); }

// The screen counts ten thousands: screen 2, scene 5 is scene 20005.
int sceneId(const Rec& r) { return dat3(r) * 10000 + dat2(r); }

QString composed(const QString& body, const char* closing) {
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n") +
           QStringLiteral("<Message>\n") + QStringLiteral("<UserID>%1</UserID>\n").arg(userId()) +
           body + QLatin1String(closing);
}

QString plain(const Rec&) { return QString::fromLatin1(kPlain).arg(userId()); }
QString allCommands(const Rec&) { return QString::fromLatin1(kAllCommands).arg(userId()); }
QString keepText(const Rec& r) { return r.Datablock; }

QString sceneSave(const Rec& r) {
    return QString::fromLatin1(kSceneSave)
        .arg(userId(), decimal(sceneId(r)), decimal(dat3(r)), decimal(dat2(r) + 1));
}

QString sceneCall(const Rec& r) {
    const QString body = QStringLiteral("<Scene id=\"%1\" screenId=\"%2\">\n</Scene>\n")
                             .arg(decimal(sceneId(r)), decimal(dat3(r)));
    return composed(body, "</Message>");
}

// The EDID bytes travel inside the element as 8-bit characters, every one of them: an EDID
// starts with a zero byte, so the length is passed rather than found.
QString edidUpdate(const Rec& r) {
    const QByteArray& edid = r.arryDatablock;
    const QString body = QStringLiteral("<Edid port=\"%1\" cmd=\"update\">").arg(dat2(r)) +
                         QString::fromLatin1(edid.constData(), edid.size()) +
                         QStringLiteral("</Edid>\n");
    return composed(body, "</Message>\n");
}

QString screens(const Rec& r) {
    const QString body = QStringLiteral("<Screens>\n") +
                         QStringLiteral("<Screen id=\"%1\" />\n").arg(dat3(r)) +
                         QStringLiteral("</Screens>\n");
    return composed(body, "</Message>");
}

struct H40BRow {
    Key key;
    Text text;
    int msgCode;
};

// Replies are matched on msgCode, which follows the shape of the message sent: the plain
// message is answered alike whatever asked for it (20012), the all-command message by 20300,
// and the messages that carry an element of their own (EDID update, screen list) by 20332.
// clang-format off
const H40BRow kH40BRows[] = {
    {{0x68, 26},    built(sceneSave),   20400},
    {{0x6A, 3},     pat("<reid, 0, 1>"), kAsCame},
    {{0x6A, 9},     pat("<reid, 1, %1>", dat2Plus1), kAsCame},
    {{0x6A, 11},    pat("<reid, 2, %1>", dat2Plus1), kAsCame},
    {{0x85, 0},     built(plain),       20012},
    {{0x89, 0},     built(plain),       20012},
    {{0x8D, 0},     built(plain),       20012},
    {{0x90, 1},     built(plain),       20012},
    {{0x90, 5},     built(plain),       20012},
    {{0x90, 3},     built(allCommands), 20300},
    {{0x92, 0},     built(sceneCall),   20402},
    {{0x92, 1},     built(keepText),    0},
    {{0x92, 3},     built(keepText),    0},
    {{0xF0, 12},    built(edidUpdate),  20332},
    {{0xF1, 3},     built(allCommands), 20300},
    {{0xF1, 4},     built(plain),       20012},
    {{0xF1, 8},     built(screens),     20332},
};
// clang-format on

} // namespace

void translate::h40b(model_Protocoldata& rec) {
    const H40BRow* row = findRow(kH40BRows, rec);
    setTextAndBytes(rec, row ? &row->text : nullptr);
    if (row && row->msgCode != kAsCame)
        rec.msgCode = static_cast<unsigned short>(row->msgCode);
}

model_Protocoldata DalTarsel::transformBufToQStringForH40B(model_Protocoldata& in) {
    model_Protocoldata out = in;
    translate::h40b(out);
    return out;
}

void DalTarsel::f_SendCmdForH40B(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                                 int code, QByteArray bytes) {
    model_Protocoldata rec = directRecord(4, family::H40B, timeout, cmd, dat1, dat2, dat3, dat4);
    rec.msgCode = static_cast<unsigned short>(code);
    rec.arryDatablock = bytes;
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::sendHeartbeatForH40B(int timeout, QByteArray bytes) {
    f_SendCmdForH40B(timeout, 0x90, 0x1F, 0, 0, 0, 20004, bytes);
}
