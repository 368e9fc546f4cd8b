#pragma once

// The values a catalog row's cells compute from its parameters; the rows themselves become
// DalTarsel members in catalog_rows.cpp.
#include "modeltarsel.h"

#include <QString>

namespace rows {

// A caller's time-out lengthened by `extra` ms; wraps rather than overflows near the int limit.
inline int lengthened(int timeout, int extra) {
    return static_cast<int>(static_cast<unsigned>(timeout) + static_cast<unsigned>(extra));
}

inline int highByte(int value) { return (value >> 8) & 0xFF; }

// One octet of a dotted address such as "192.168.0.10"; a missing or non-numeric part is 0.
inline int octet(const QString& address, int index) {
    return address.section(QLatin1Char('.'), index, index).toInt();
}

// The stored work mode of an H.264 input; an input the model does not list reads as mode 0.
inline int h264InputWorkModeOf(const ModelTarsel& model, int input) {
    return model.h264InputWorkModes.value(input);
}

// DAT2 of the per-output reads: the index one past the last output means every output.
inline int outputSelector(int output, const ModelTarsel& model) {
    return output == model.getMaxOutputCount() ? 0xFF : output;
}

// The H.264 board reads of DAT1 0x20 other than IP and resolution: the board in the high
// nibble, the item read in the low one.
inline int boardItem(int board, int item) {
    return ((static_cast<unsigned>(board) << 4) | item) & 0xFF;
}

// A source's channel, as the stream reads address it: source times 8 plus channel 0..7.
inline int sourceChannel(int source, int channel) {
    return ((static_cast<unsigned>(source) * 8u) | (channel & 7)) & 0xFF;
}

} // namespace rows
