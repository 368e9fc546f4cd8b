// Inputs, USB media, HDR, preview, bank player and network: the members written out by hand.
// The one-command rows are in catalog_rows.cpp.
#include "catalog_rows.h"
#include "dalTarsel.h"

#include <QDebug>
#include <QStringList>

#include <algorithm>
#include <vector>

namespace {

// A decimal goes out as its integer part and its two rounded fraction digits: 2.2 sends 2, 20.
void decimalBytes(double value, int& whole, int& hundredths) {
    const QStringList parts = QStringLiteral("%1").arg(value, 0, 'f', 2).split(QLatin1Char('.'));
    whole = parts.value(0).toInt();
    hundredths = parts.value(1).toInt();
}

bool isHexDigit(QChar c) {
    const QChar lower = c.toLower();
    return c.isDigit() || (lower >= QLatin1Char('a') && lower <= QLatin1Char('f'));
}

// "#RRGGBB" gives its three components; anything else is refused before a character is read
// past its end.
bool colourBytes(const QString& colour, int& red, int& green, int& blue) {
    if (colour.size() != 7 || colour.at(0) != QLatin1Char('#') ||
        !std::all_of(colour.begin() + 1, colour.end(), isHexDigit))
        return false;
    red = colour.mid(1, 2).toInt(nullptr, 16);
    green = colour.mid(3, 2).toInt(nullptr, 16);
    blue = colour.mid(5, 2).toInt(nullptr, 16);
    return true;
}

} // namespace

void DalTarsel::setHdrGamma(int timeout, int index, double value) {
    int whole = 0, hundredths = 0;
    decimalBytes(value, whole, hundredths);
    f_SendCmd(timeout, 0x77, 0x52, index, whole, hundredths, nullptr, 0, QString());
}

void DalTarsel::setHdrBrightFactor(int timeout, int index, double value) {
    int whole = 0, hundredths = 0;
    decimalBytes(value, whole, hundredths);
    f_SendCmd(timeout, 0x77, 0x54, index, whole, hundredths, nullptr, 0, QString());
}

// The colour setters of the preview and H.265 monitors share one rule; a malformed colour
// sends nothing and leaves one warning line.
#define DAL_COLOUR_SETTER(name, dat1)                                                              \
    void DalTarsel::name(int timeout, QString const& color) {                                      \
        int red = 0, green = 0, blue = 0;                                                          \
        if (!colourBytes(color, red, green, blue)) {                                               \
            qWarning().noquote() << "---" #name "--bad colour=" << color;                          \
            return;                                                                                \
        }                                                                                          \
        f_SendCmd(timeout, 0x79, dat1, red, green, blue, nullptr, 0, QString());                   \
    }
DAL_COLOUR_SETTER(setPreviewFontColor, 0x1E)
DAL_COLOUR_SETTER(setPreviewFrameColor, 0x22)
DAL_COLOUR_SETTER(setH265FontColor, 0x26)
DAL_COLOUR_SETTER(setH265FrameColor, 0x2A)
#undef DAL_COLOUR_SETTER

void DalTarsel::setAutoLoopTimes(ModelBankPlayer player) {
    // One 16-bit loop count per bank, low byte first, then the checksum.
    std::vector<unsigned char> block;
    for (int times : player.autoLoopTimes) {
        block.push_back(static_cast<unsigned char>(times & 0xFF));
        block.push_back(static_cast<unsigned char>(rows::highByte(times)));
    }
    const int len = static_cast<int>(block.size());
    block.push_back(0);
    setCheckSum(block.data(), len);
    f_SendCmd(player.timeout, 0x8B, 0x20, 0x00, (len + 1) & 0xFF, rows::highByte(len + 1),
              block.data(), len + 1, QString());
}

void DalTarsel::getMac(int timeout) {
    f_SendCmd(timeout, 0x8E, 0x05, 0x00, 0x00, 0x00, nullptr, 0, QString());
    f_SendCmd(timeout, 0x8E, 0x07, 0x00, 0x00, 0x00, nullptr, 0, QString());
}
