#include "dalTarsel.h"

#include "biz_cmdswork.h"
#include "bytes.h"
#include "dialects/translators.h"
#include "families.h"
#include "quoting.h"
#include "trace.h"
#include "utility_manage.h"

#include <QDebug>
#include <QLoggingCategory>

#include <algorithm>
#include <string_view>
#include <vector>

bool DalTarsel::isConnected = false;

namespace {

constexpr int kUntranslated = family::native;

using Translator = void (*)(model_Protocoldata&);

// The deviceType a family's records carry: its code, or the device's own.
enum Tag { Code, Own };

// What the generic send does for one device code: the family's translation of a command whose
// CMD is not 0x90 or 0x91 and of one whose CMD is, the tag, and the longest data block the
// tunnel's framing takes (0: any; a longer one is refused, not wrapped).
struct Route {
    Translator other;
    Translator tunnel;
    Tag tag;
    int code;
    int longest;
};

constexpr bool isTarsel(std::string_view className) { return className == "DalTarsel"; }

// The routes of the DalTarsel families by device code, so that a send looks its route up in a
// few steps: each row of the device table gets its family's route. A device without one keeps
// the native frame, tagged 0x700000.
class RouteIndex {
public:
    RouteIndex() {
        using namespace translate;
#define DAL_FAMILY(name, cls, form, tag, other, tunnel, longest)                                   \
    if (isTarsel(#cls))                                                                            \
        add(#name, Route{other, tunnel, tag, family::name, longest});
#include "families.def"
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.device < b.device; });
    }

    const Route* find(int device) const {
        const auto it = std::lower_bound(entries.begin(), entries.end(), device,
                                         [](const Entry& e, int code) { return e.device < code; });
        return it == entries.end() || it->device != device ? nullptr : &it->route;
    }

private:
    struct Entry {
        int device;
        Route route;
    };

    void add(std::string_view familyName, const Route& route) {
        for (const device::Row& row : device::kRows)
            if (familyName == row.family)
                entries.push_back({row.code, route});
    }

    std::vector<Entry> entries;
};

const RouteIndex kRouteIndex;

bool isTunnelled(const model_Protocoldata& rec) {
    return rec.cmdHead[2] == 0x90 || rec.cmdHead[2] == 0x91;
}

void applyRoute(const Route& route, model_Protocoldata& rec, int device) {
    if (const Translator translate = isTunnelled(rec) ? route.tunnel : route.other)
        translate(rec);
    rec.deviceType = route.tag == Own ? device : route.code;
}

// Writes the trace line into a buffer sized for the worst case, one character at a time.
class LineWriter {
public:
    explicit LineWriter(QChar* at) : at(at) {}
    QChar* end() const { return at; }

    void put(QChar c) { *at++ = c; }
    void put(char c) { *at++ = QLatin1Char(c); }
    void put(const char* text) {
        while (*text)
            put(*text++);
    }
    // Lowercase hexadecimal without leading zeros, as QString::number(value, 16) writes it.
    void hexByte(unsigned char value) {
        if (value > 0xF)
            hexDigit(value >> 4);
        hexDigit(value);
    }
    void hexDigit(unsigned value) { put("0123456789abcdef"[value & 0xF]); }
    void field(const char* label, unsigned char value) {
        put(label);
        put(" \"");
        hexByte(value);
        put("\" ");
    }
    void quoted(const QString& text) {
        dal::writeQuoted(text, [this](auto c) { put(c); });
    }

    // The most characters a record's line can take: each text character becomes at most six.
    static int maxLength(const model_Protocoldata& rec) {
        return 160 + 2 * int(rec.arryDatablock.size()) + 6 * int(rec.Datablock.size());
    }

private:
    QChar* at;
};

// The line qDebug() would write for the record's fields, built into a buffer each thread
// reuses, so that tracing a command allocates nothing once the buffer has grown.
void trace(const model_Protocoldata& rec) {
    if (!traceEnabled())
        return;
    thread_local QString line;
    line.resize(LineWriter::maxLength(rec));
    LineWriter out(line.data());
    const unsigned char* head = rec.cmdHead + 2; // CMD, DAT1 .. DAT4
    for (const char* label : dal::kTraceHeadLabels)
        out.field(label, *head++);
    out.put(dal::kTraceBlockLabel);
    out.put(" \"");
    for (char byte : rec.arryDatablock) {
        out.hexDigit(static_cast<unsigned char>(byte) >> 4);
        out.hexDigit(static_cast<unsigned char>(byte));
    }
    out.put("\" ");
    out.put(dal::kTraceTextLabel);
    out.put(' ');
    out.quoted(rec.Datablock);
    line.resize(int(out.end() - line.constData()));
    const QMessageLogContext context(QT_MESSAGELOG_FILE, QT_MESSAGELOG_LINE, QT_MESSAGELOG_FUNC,
                                     "default");
    // A shared copy: should the handler queue a command itself, the nested trace rebuilds the
    // buffer in fresh memory instead of under the text being handled.
    const QString message = line;
    qt_message_output(QtDebugMsg, context, message);
}

void fillHead(model_Protocoldata& rec, int cmd, int dat1, int dat2, int dat3, int dat4) {
    rec.cmdHead[1] = 0;
    rec.cmdHead[2] = static_cast<unsigned char>(cmd);
    rec.cmdHead[3] = static_cast<unsigned char>(dat1);
    rec.cmdHead[4] = static_cast<unsigned char>(dat2);
    rec.cmdHead[5] = static_cast<unsigned char>(dat3);
    rec.cmdHead[6] = static_cast<unsigned char>(dat4);
}

} // namespace

void translate::forDevice(model_Protocoldata& rec, int device) {
    if (const Route* route = kRouteIndex.find(device))
        applyRoute(*route, rec, device);
}

DalTarsel::DalTarsel() : QObject(nullptr) {}

void DalTarsel::addToQueue(model_Protocoldata rec) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::queueHexCmd.push_back(std::move(rec));
}

void DalTarsel::addToReceivedQueue(model_Protocoldata rec) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::receiveHexCmdlock);
    biz_CMDSWork::receivequeueHexCmd.push_back(std::move(rec));
}

void DalTarsel::setRetFlagStatus(bool flag) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::bRetFlag = flag;
}

QByteArray DalTarsel::getBlock(unsigned char* data, int len) { return dal::bytesOf(data, len); }

void DalTarsel::setCheckSum(unsigned char* buf, int len) { dal::writeCheckSum(buf, len); }

void DalTarsel::splitTwoByte(short value, unsigned char& low, unsigned char& high) {
    low = value & 0xFF;
    high = (value >> 8) & 0xFF;
}

// Unsigned arithmetic keeps the spill of oversized components well defined (modulo 2^32).
int DalTarsel::f_RGBtoInt(int red, int green, int blue) {
    return static_cast<int>((unsigned(red) << 16) + (unsigned(green) << 8) + unsigned(blue));
}

namespace {

// Room for the widest framing a tunnel family wraps a block in (VantaZ: 13 bytes before it, 2
// after), so that framing the block in place does not allocate again.
constexpr int kFramingRoom = 15;

QByteArray blockWithRoom(const unsigned char* data, int len) {
    QByteArray block;
    if (len < 1)
        return block;
    block.reserve(len + kFramingRoom);
    block.append(reinterpret_cast<const char*>(data), len);
    return block;
}

} // namespace

void DalTarsel::f_SendCmd(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                          unsigned char* data, int len, QString text) {
    model_Protocoldata rec;
    fillHead(rec, cmd, dat1, dat2, dat3, dat4);
    rec.deviceType = kUntranslated;
    rec.statusByte = 0;
    rec.timeout = timeout;
    rec.connectType = static_cast<unsigned char>(Utility_Manage::getConnectType());
    if (data)
        rec.arryDatablock = blockWithRoom(data, len);
    if (!text.isEmpty())
        rec.Datablock = text;

    const int device = Utility_Manage::getDeviceType();
    if (const Route* route = kRouteIndex.find(device)) {
        if (isTunnelled(rec) && route->longest && rec.arryDatablock.size() > route->longest) {
            qWarning().noquote() << QStringLiteral("---addToQueue----refused: data block of %1 "
                                                   "bytes, the frame takes at most %2")
                                        .arg(rec.arryDatablock.size())
                                        .arg(route->longest);
            return;
        }
        applyRoute(*route, rec, device);
    }

    trace(rec);
    if (isConnected)
        addToQueue(std::move(rec));
}

void DalTarsel::f_SendCmdForDebug(int timeout, int address, int cmd, int dat1, int dat2, int dat3,
                                  int dat4, unsigned char* data, int len) {
    model_Protocoldata rec;
    rec.cmdHead[0] = static_cast<unsigned char>(address);
    fillHead(rec, cmd, dat1, dat2, dat3, dat4);
    rec.timeout = timeout;
    rec.deviceType = kUntranslated;
    rec.statusByte = 0;
    if (data)
        rec.arryDatablock = getBlock(data, len);
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::resetOutPortFPGA(int timeout, int port) {
    // Four output ports per board; the two halves of a board reset separately.
    const int half = (port % 4 == 0 || port % 4 == 1) ? 0x00 : 0x20;
    f_SendCmdForDebug(timeout, 0x21 + port / 4, 0xF4, 2, half, 1, 0, nullptr, 0);
}
