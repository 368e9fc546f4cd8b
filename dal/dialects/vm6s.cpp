#include "bytes.h"
#include "dalTarsel.h"
#include "devices.h"
#include "t3_notation.h"
#include "translators.h"

#include "utility_manage.h"

#include <QVector>

#include <algorithm>

namespace {

using namespace t3;

constexpr int kAnyDat2 = -1;
constexpr int kFrameSize = 23;
constexpr int kStampAt = 10;
constexpr int kCheckSumAt = 21;
constexpr int kParamsAt = 13;

// Writes the filled-in bytes of one command into its decoded template.
using Fill = void (*)(const model_Protocoldata& rec, QByteArray& frame);

void put(QByteArray& frame, int at, int value) { frame[at] = static_cast<char>(value); }

// Copies block bytes [from, from + count) to the parameters; bytes past the block's end
// leave the template's zeros.
void copyBlock(const model_Protocoldata& rec, QByteArray& frame, int from, int count) {
    for (int i = 0; i < count && from + i < rec.arryDatablock.size(); ++i)
        frame[kParamsAt + i] = rec.arryDatablock[from + i];
}

void sceneOfDat3(const model_Protocoldata& rec, QByteArray& frame) {
    put(frame, kParamsAt, dat3Of(rec) + 1);
}
void valueOfDat2(const model_Protocoldata& rec, QByteArray& frame) {
    put(frame, kParamsAt, dat2Of(rec));
}
void outputOfDat2(const model_Protocoldata& rec, QByteArray& frame) {
    put(frame, kParamsAt, dat2Of(rec) + 1);
}
void valueOfDat3(const model_Protocoldata& rec, QByteArray& frame) {
    put(frame, kParamsAt, dat3Of(rec));
}
void customFormat(const model_Protocoldata& rec, QByteArray& frame) { copyBlock(rec, frame, 0, 4); }
void inputPropertyFirst(const model_Protocoldata& rec, QByteArray& frame) {
    copyBlock(rec, frame, 38, 4);
}
void inputPropertySecond(const model_Protocoldata& rec, QByteArray& frame) {
    copyBlock(rec, frame, 42, 2);
}

// Four comma-separated numbers of the text, each as two bytes, quotient by 256 first; a part
// that is missing or not a number counts as 0.
void fourNumbers(const model_Protocoldata& rec, QByteArray& frame) {
    const QStringList parts = rec.Datablock.split(QLatin1Char(','));
    for (int i = 0; i < 4; ++i) {
        const int value = i < parts.size() ? parts[i].toInt(nullptr, 10) : 0;
        put(frame, kParamsAt + 2 * i, value / 256);
        put(frame, kParamsAt + 2 * i + 1, value % 256);
    }
}

std::optional<QStringList> outputBoardOfDat2(const model_Protocoldata& rec) {
    return QStringList{QString::number(dat2Of(rec) + 1)};
}

struct Vm6sRow {
    int cmd;
    int dat1;
    int dat2;          // kAnyDat2 when the row does not look at DAT2
    const char* frame; // template of a frame row, else null
    Fill fill;         // bytes a frame row fills in, or null
    const char* text;  // T3-style text of a text row, else null
    Values values;     // the text's values
};

// Templates as the device documentation gives them; their checksums are restamped.
const Vm6sRow kVm6sRows[] = {
    {0x68, 0x06, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 00 05 00 00 00 00 00 00 00 00 F0 16",
     nullptr, nullptr, nullptr},
    {0x68, 0x1A, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 00 08 01 00 00 00 00 00 00 00 F4 16",
     sceneOfDat3, nullptr, nullptr},
    {0x6A, 0x03, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 00 00 00 02 00 00 00 00 00 00 00 00 EC 16",
     nullptr, nullptr, nullptr},
    {0x6A, 0x09, kAnyDat2, nullptr, nullptr, "<%1P,GVER>", boardInputOfDat2},
    {0x6A, 0x0B, kAnyDat2, nullptr, nullptr, "<%1Q,GVER>", outputBoardOfDat2},
    {0x70, 0x11, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 01 01 00 00 00 00 00 00 00 00 EE 16",
     nullptr, nullptr, nullptr},
    {0x70, 0x13, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 00 08 00 00 00 00 00 00 00 00 F4 16",
     nullptr, nullptr, nullptr},
    {0x74, 0x16, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 81 06 00 00 00 00 00 00 00 00 EF 16",
     customFormat, nullptr, nullptr},
    {0x74, 0x17, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 81 06 00 00 00 00 00 00 00 00 73 16",
     nullptr, nullptr, nullptr},
    {0x78, 0x06, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 00 02 01 00 00 00 00 00 00 00 EE 16",
     valueOfDat2, nullptr, nullptr},
    {0x78, 0x07, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 00 02 00 00 00 00 00 00 00 00 EE 16",
     nullptr, nullptr, nullptr},
    {0x90, 0x02, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 00 04 00 00 00 00 00 00 00 00 EF 16",
     nullptr, nullptr, nullptr},
    {0x90, 0x03, kAnyDat2, nullptr, nullptr, "<%1X,RDID>", inputOfDat2},
    {0x90, 0x04, kAnyDat2, nullptr, nullptr, "<%1X,GETR>", inputOfDat2},
    {0x90, 0x07, kAnyDat2, nullptr, nullptr, "<%1Y,ROUT>", dat2PlusOne},
    {0x90, 0x09, kAnyDat2, nullptr, nullptr, "<%1X,GPM3>", dat2PlusOne},
    {0x90, 0x0B, kAnyDat2, nullptr, nullptr, "<GTLP,%1>", tallyOfDat2},
    {0x92, 0x00, kAnyDat2, "68 00 00 00 01 68 0C 00 0C 01 01 00 09 01 00 00 00 00 00 00 00 F5 16",
     outputOfDat2, nullptr, nullptr},
    {0xF0, 0x01, 3, "68 00 00 00 01 68 0C 00 0C 01 01 81 08 00 00 00 00 07 80 04 38 37 16",
     fourNumbers, nullptr, nullptr},
    {0xF0, 0x01, 4, "68 00 00 00 01 68 0C 00 0C 01 01 01 01 01 00 00 00 00 00 00 00 EE 16",
     valueOfDat3, nullptr, nullptr},
    {0xF0, 0x01, 5, "68 00 00 00 01 68 0C 00 0C 01 01 01 04 00 00 00 00 07 80 04 38 B3 16",
     fourNumbers, nullptr, nullptr},
    {0xF0, 0x09, 0, "68 00 00 00 01 68 0c 00 0c 01 01 01 02 00 00 00 00 00 00 00 00 EF 16",
     inputPropertyFirst, nullptr, nullptr},
    {0xF0, 0x09, 1, "68 00 00 00 01 68 0c 00 0c 01 01 01 03 00 00 00 00 00 00 00 00 EF 16",
     inputPropertySecond, nullptr, nullptr},
    {0xF1, 0x01, 5, "68 00 00 00 01 68 0D 00 0C 01 01 01 04 00 00 00 00 00 00 00 00 F1 16", nullptr,
     nullptr, nullptr},
    {0xF1, 0x08, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 81 08 00 00 00 00 00 00 00 00 75 16",
     nullptr, nullptr, nullptr},
    {0xF1, 0x09, 0, "68 00 00 00 01 68 0D 00 0C 01 01 01 02 00 00 00 00 00 00 00 00 EF 16", nullptr,
     nullptr, nullptr},
    {0xF1, 0x09, 1, "68 00 00 00 01 68 0D 00 0C 01 01 01 03 00 00 00 00 00 00 00 00 F0 16", nullptr,
     nullptr, nullptr},
    {0xF1, 0x3B, kAnyDat2, "68 00 00 00 01 68 0D 00 0C 01 01 81 06 00 00 00 00 00 00 00 00 73 16",
     nullptr, nullptr, nullptr},
};

constexpr int kRowCount = int(sizeof kVm6sRows / sizeof kVm6sRows[0]);

// The templates decoded once, in row order (empty for text rows).
const QVector<QByteArray>& decodedFrames() {
    static const QVector<QByteArray> frames = [] {
        QVector<QByteArray> decoded;
        for (const Vm6sRow& row : kVm6sRows)
            decoded << (row.frame ? QByteArray::fromHex(QByteArray(row.frame).trimmed())
                                  : QByteArray());
        return decoded;
    }();
    return frames;
}

int vm6sRowFor(const model_Protocoldata& rec) {
    for (int i = 0; i < kRowCount; ++i) {
        const Vm6sRow& row = kVm6sRows[i];
        if (row.cmd == cmdOf(rec) && row.dat1 == dat1Of(rec) &&
            (row.dat2 == kAnyDat2 || row.dat2 == dat2Of(rec)))
            return i;
    }
    return -1;
}

// Byte 10 carries the sub-type: 1 or 8; the named sub-types keep 0 for the board-version query.
int subTypeStamp(const model_Protocoldata& rec) {
    const int subType = Utility_Manage::getDeviceSubType();
    if (device::has(subType, device::NamedSubType) && cmdOf(rec) == 0x6A && dat1Of(rec) == 0x03)
        return 0;
    return device::has(subType, device::SubTypeOne) ? 1 : 8;
}

} // namespace

void translate::vm6s(model_Protocoldata& rec) {
    const int index = vm6sRowFor(rec);
    if (index < 0) {
        rec.arryDatablock.clear();
        return;
    }
    const Vm6sRow& row = kVm6sRows[index];
    if (row.frame) {
        QByteArray frame = decodedFrames()[index];
        if (row.fill)
            row.fill(rec, frame);
        rec.arryDatablock = std::move(frame);
        return;
    }
    const auto values = row.values(rec);
    rec.arryDatablock.clear();
    if (values)
        rec.Datablock = fill(QString::fromLatin1(row.text), *values);
}

// A shorter array is padded with zeros, a longer one cut: the frame is always 23 bytes. A frame
// of that size is stamped where it is.
void translate::vm6sFinish(model_Protocoldata& rec) {
    QByteArray& frame = rec.arryDatablock;
    if (frame.isEmpty())
        return;
    if (frame.size() != kFrameSize) {
        QByteArray sized(kFrameSize, '\0');
        std::copy(frame.cbegin(), frame.cbegin() + std::min(int(frame.size()), kFrameSize),
                  sized.data());
        frame = std::move(sized);
    }
    put(frame, kStampAt, subTypeStamp(rec));
    dal::writeCheckSum(reinterpret_cast<unsigned char*>(frame.data()), kCheckSumAt);
}

void translate::vm6sFramed(model_Protocoldata& rec) {
    vm6s(rec);
    vm6sFinish(rec);
}

model_Protocoldata DalTarsel::transformBufToQStringForVM6S(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::vm6s(out);
    return out;
}

model_Protocoldata DalTarsel::convertCheckSumForVMS(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::vm6sFinish(out);
    return out;
}
