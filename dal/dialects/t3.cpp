#include "dalTarsel.h"
#include "dialect_table.h"
#include "t3_notation.h"
#include "translators.h"

#include "utility_manage.h"

#include <iterator>

namespace t3 {

QString fill(const QString& pattern, const QStringList& values) {
    QString text;
    for (int i = 0; i < pattern.size(); ++i) {
        const int digits = (i + 1 < pattern.size() && pattern[i + 1].isDigit())
                               ? ((i + 2 < pattern.size() && pattern[i + 2].isDigit()) ? 2 : 1)
                               : 0;
        const int number = pattern.mid(i + 1, digits).toInt();
        if (pattern[i] != QLatin1Char('%') || digits == 0 || number < 1 || number > values.size()) {
            text += pattern[i];
            continue;
        }
        text += values[number - 1];
        i += digits;
    }
    return text;
}

int inputNumber(int code, int kind) {
    return Utility_Manage::getInputIndexForT3(code, kind, 1) + 1;
}

std::optional<QString> letter(int index) {
    static const char* const kLetters[] = {"A", "B", "C", "D", "E", "F"};
    if (index < 0 || index >= int(std::size(kLetters)))
        return std::nullopt;
    return QString::fromLatin1(kLetters[index]);
}

std::optional<QStringList> inputOfDat2(const model_Protocoldata& rec) {
    return QStringList{QString::number(inputNumber(dat2Of(rec), 1))};
}

std::optional<QStringList> boardInputOfDat2(const model_Protocoldata& rec) {
    return QStringList{QString::number(inputNumber(dat2Of(rec), 0))};
}

std::optional<QStringList> dat2PlusOne(const model_Protocoldata& rec) {
    return QStringList{QString::number(dat2Of(rec) + 1)};
}

std::optional<QStringList> tallyOfDat2(const model_Protocoldata& rec) {
    const auto l = letter(dat2Of(rec));
    if (!l)
        return std::nullopt;
    return QStringList{QStringLiteral("1") + *l};
}

} // namespace t3

namespace {

using namespace t3;

constexpr int kAnyDat2 = -1;

// A port as the device names it: the number followed by the letter, e.g. "3B".
std::optional<QString> port(qint64 number, int letterIndex) {
    const auto l = letter(letterIndex);
    if (!l)
        return std::nullopt;
    return QString::number(number) + *l;
}

std::optional<QStringList> one(const std::optional<QString>& value) {
    if (!value)
        return std::nullopt;
    return QStringList{*value};
}

// The general format with six significant digits and no trailing zeros.
QString general(double value) { return QString::number(value, 'g', 6); }

std::optional<double> fraction(const double* list, int size, int index) {
    if (index < 0 || index >= size)
        return std::nullopt;
    return list[index];
}

const double kTenths[] = {0.1, 0.2, 0.3, 0.4};
const double kHundredths[] = {0.0, 0.01, 0.02, 0.03, 0.04};

std::optional<double> tenth(int index) { return fraction(kTenths, 4, index); }
std::optional<double> hundredth(int index) { return fraction(kHundredths, 5, index); }

int byteAt(const QByteArray& block, int index) {
    return index < block.size() ? static_cast<unsigned char>(block[index]) : 0;
}

std::optional<QStringList> dat2(const model_Protocoldata& rec) {
    return QStringList{QString::number(dat2Of(rec))};
}

std::optional<QStringList> outputOfDat4(const model_Protocoldata& rec) {
    return QStringList{QString::number(dat4Of(rec) * 4 + 1)};
}

std::optional<QStringList> portOfDat2Dat3(const model_Protocoldata& rec) {
    return one(port(dat2Of(rec) + 1, dat3Of(rec)));
}

std::optional<QStringList> backgroundOfDat2(const model_Protocoldata& rec) {
    const auto l = letter(dat2Of(rec) - 1); // the background letters start at DAT2 1
    if (!l)
        return std::nullopt;
    return QStringList{QStringLiteral("1") + *l};
}

std::optional<QStringList> rtspChannel(const model_Protocoldata& rec) {
    const auto major = tenth(dat3Of(rec));
    const auto minor = hundredth(dat4Of(rec));
    if (!major || !minor)
        return std::nullopt;
    return QStringList{general(inputNumber(dat2Of(rec), 1) + *major + *minor)};
}

std::optional<QStringList> cvbsChannel(const model_Protocoldata& rec) {
    return QStringList{general(inputNumber(dat2Of(rec), 1) + (dat3Of(rec) + 1) * 0.1)};
}

std::optional<QStringList> ipSecondChannel(const model_Protocoldata& rec) {
    const auto major = tenth(dat3Of(rec));
    if (!major)
        return std::nullopt;
    return QStringList{general(inputNumber(dat2Of(rec), 1) + *major)};
}

std::optional<QStringList> shutterOfDat3(const model_Protocoldata& rec) {
    return one(port(dat3Of(rec) + 1, dat4Of(rec)));
}

std::optional<QStringList> shutterAll(const model_Protocoldata& rec) {
    return one(port(0, dat4Of(rec)));
}

// The window number rides in the time-out, offset by 2999 here and by 3000 in "widf".
std::optional<QStringList> moveWindow(const model_Protocoldata& rec) {
    const auto target = port(qint64(rec.timeout) - 2999, dat4Of(rec));
    if (!target)
        return std::nullopt;
    return QStringList{*target, QString::number(dat3Of(rec))};
}

std::optional<QStringList> windowOfTimeout(const model_Protocoldata& rec) {
    return QStringList{QString::number(qint64(rec.timeout) - 3000)};
}

// Four 16-bit little-endian values whose high byte is signed; missing bytes read as 0.
std::optional<QStringList> inputProperty(const model_Protocoldata& rec) {
    QStringList values{QString::number(inputNumber(dat2Of(rec), 1))};
    for (int i = 0; i < 8; i += 2) {
        const int high = static_cast<signed char>(byteAt(rec.arryDatablock, i + 1));
        values << QString::number(byteAt(rec.arryDatablock, i) + 256 * high);
    }
    return values;
}

QByteArray edidExtension() {
    // Bytes 128..255 of a 256-byte EDID: a CEA-861 extension whose bytes sum to 0.
    static const QByteArray block =
        QByteArray::fromHex("02 03 2E 01 4F 90 5F 61 66 65 64 63 3F 5F 05 14"
                            "07 06 16 15 E2 00 2B 6E 03 0C 00 10 00 30 78 20"
                            "80 80 01 02 03 04 67 D8 5D C4 01 78 80 00 04 74"
                            "00 30 F2 70 5A 80 B0 58 8A 00 B6 1C 32 00 00 1A"
                            "34 E9 00 30 F2 70 5A 80 B0 58 8A 00 FF FF FF 00"
                            "00 1E 02 3A 80 18 71 38 2D 40 58 2C 45 00 C4 8E"
                            "21 00 00 1E 56 5E 00 A0 A0 A0 29 50 30 20 35 00"
                            "C4 8F 21 00 00 1E 00 00 00 00 00 00 00 00 00 B5");
    return block;
}

std::optional<QStringList> edidWrite(const model_Protocoldata& rec) {
    const int length =
        static_cast<unsigned short>(Utility_Manage::combineTwoByte(rec.cmdHead[5], rec.cmdHead[6]));
    const int count = length - 1;
    QByteArray block = rec.arryDatablock;
    block.chop(1); // the trailing checksum is not part of the EDID
    if (count == 256) {
        if (block.size() < 256)
            block.append(QByteArray(256 - block.size(), '\0'));
        block.replace(128, 128, edidExtension());
    }
    QStringList bytes;
    for (int i = 0; i < count; ++i)
        bytes << QString::number(static_cast<signed char>(byteAt(block, i)));
    return QStringList{QString::number(inputNumber(dat2Of(rec), 1)), bytes.join(QLatin1Char(','))};
}

// The six bytes at the end of the block travel first, then the twelve at its start.
std::optional<QStringList> networkWrite(const model_Protocoldata& rec) {
    QStringList values{QString::number(inputNumber(dat2Of(rec), 1))};
    for (int i = 12; i < 18; ++i)
        values << QString::number(byteAt(rec.arryDatablock, i));
    for (int i = 0; i < 12; ++i)
        values << QString::number(byteAt(rec.arryDatablock, i));
    return values;
}

struct T3Row {
    int cmd;
    int dat1;
    int dat2; // kAnyDat2 when the row does not look at DAT2
    const char* text;
    Values values; // null for a fixed text
};

const T3Row kT3Rows[] = {
    {0x68, 0x06, kAnyDat2, "<RSTF>", nullptr},
    {0x68, 0x10, kAnyDat2, "<WPWR,%1>", dat2},
    {0x68, 0x1A, kAnyDat2, "<SVCN, %1>", portOfDat2Dat3},
    {0x6A, 0x03, kAnyDat2, "<GVER>", nullptr},
    {0x6A, 0x09, kAnyDat2, "<%1P,GVER>", boardInputOfDat2},
    {0x74, 0x33, kAnyDat2, "<%1Y,ROUT>", outputOfDat4},
    {0x85, 0x00, kAnyDat2, "<RDIP>", nullptr},
    {0x89, 0x00, kAnyDat2, "<RDIP>", nullptr},
    {0x8D, 0x00, kAnyDat2, "<RDIP>", nullptr},
    {0x90, 0x01, kAnyDat2, "<RMAC>", nullptr},
    {0x90, 0x03, kAnyDat2, "<%1X,RDID>", inputOfDat2},
    {0x90, 0x04, kAnyDat2, "<%1X,GETR>", inputOfDat2},
    {0x90, 0x07, kAnyDat2, "<%1Y,ROUT>", dat2PlusOne},
    {0x90, 0x09, kAnyDat2, "<%1X,GPM3>", inputOfDat2},
    {0x90, 0x0B, kAnyDat2, "<GTLP,%1>", tallyOfDat2},
    {0x90, 0x0D, kAnyDat2, "<%1X,RIIP>", rtspChannel},
    {0x90, 0x11, kAnyDat2, "<GBGP,%1>", backgroundOfDat2},
    {0x90, 0x1B, kAnyDat2, "<GCHN,0x10>", nullptr},
    {0x90, 0x1F, kAnyDat2, "<%1X,GPTX>", inputOfDat2},
    {0x90, 0x21, kAnyDat2, "<%1X,GETR>", cvbsChannel},
    {0x90, 0x23, kAnyDat2, "<GACT,%1>", dat2PlusOne},
    {0x90, 0x29, kAnyDat2, "<GYNC,1>", nullptr},
    {0x90, 0x2B, kAnyDat2, "<%1X,GPMD>", ipSecondChannel},
    {0x90, 0x2D, kAnyDat2, "<%1Y,GOST>", dat2PlusOne},
    {0x92, 0x00, kAnyDat2, "<CLCN, %1>", portOfDat2Dat3},
    {0x92, 0x03, kAnyDat2, "<winf, %1>", dat2},
    {0xF0, 0x01, 1, "<SHUT, %1>", shutterOfDat3},
    {0xF0, 0x01, 2, "<SHUT, %1>", shutterAll},
    {0xF0, 0x01, 5, "<MOVZ, %1, %2>", moveWindow},
    {0xF0, 0x09, kAnyDat2, "<%1X,WPM1,%2,%3,%4,%5>", inputProperty},
    {0xF0, 0x0C, kAnyDat2, "<%1X,WEDI,%2>", edidWrite},
    {0xF0, 0x21, kAnyDat2,
     "<%1X,WNET,%2,%3,%4,%5,%6,%7,%8,%9,%10,%11,%12,%13,%14,%15,%16,%17,%18,%19>", networkWrite},
    {0xF1, 0x01, kAnyDat2, "<widf, %1>", windowOfTimeout},
    {0xF1, 0x04, kAnyDat2, "<GCHN,2>", nullptr},
    {0xF1, 0x06, kAnyDat2, "<CLCN, %1, 1>", portOfDat2Dat3},
    {0xF1, 0x08, kAnyDat2, "<CLCN, %1, 1>", portOfDat2Dat3},
    {0xF1, 0x09, kAnyDat2, "<%1X,RPM1>", inputOfDat2},
    {0xF1, 0x0C, kAnyDat2, "<%1X,REDI>", inputOfDat2},
    {0xF1, 0x21, kAnyDat2, "<%1X,RNET>", inputOfDat2},
    {0xF1, 0x3B, kAnyDat2, "<RCN%1>", dat2PlusOne},
};

const T3Row* t3RowFor(const model_Protocoldata& rec) {
    for (const T3Row& row : kT3Rows)
        if (row.cmd == cmdOf(rec) && row.dat1 == dat1Of(rec) &&
            (row.dat2 == kAnyDat2 || row.dat2 == dat2Of(rec)))
            return &row;
    return nullptr;
}

} // namespace

void translate::t3(model_Protocoldata& rec) {
    const T3Row* row = t3RowFor(rec);
    if (row && !row->values) {
        dialect::setFixedText(rec, row->text);
        return;
    }
    if (row)
        if (const auto values = row->values(rec))
            rec.Datablock = fill(QString::fromLatin1(row->text), *values);
    rec.arryDatablock = rec.Datablock.toLocal8Bit();
}

model_Protocoldata DalTarsel::transformBufToQStringForT3(model_Protocoldata& rec) {
    model_Protocoldata out = rec;
    translate::t3(out);
    return out;
}

void DalTarsel::f_SendCmdForT3(int timeout, int cmd, int dat1, int dat2, int dat3, int dat4,
                               QString text, QByteArray data) {
    model_Protocoldata rec;
    rec.cmdHead[1] = 0;
    rec.cmdHead[2] = static_cast<unsigned char>(cmd);
    rec.cmdHead[3] = static_cast<unsigned char>(dat1);
    rec.cmdHead[4] = static_cast<unsigned char>(dat2);
    rec.cmdHead[5] = static_cast<unsigned char>(dat3);
    rec.cmdHead[6] = static_cast<unsigned char>(dat4);
    rec.timeout = timeout;
    rec.connectType = static_cast<unsigned char>(Utility_Manage::getConnectType());
    rec.deviceType = Utility_Manage::getDeviceType();
    rec.statusByte = 0;
    rec.Datablock = text;
    rec.arryDatablock = data.isEmpty() ? text.toLocal8Bit() : data;
    if (isConnected)
        addToQueue(rec);
}

void DalTarsel::setContainerParamForT3(int timeout, QString& text) {
    f_SendCmdForT3(timeout, 0xF0, 0x3B, 0, 0, 0, text, QByteArray());
}
