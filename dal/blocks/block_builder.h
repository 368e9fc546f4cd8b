#pragma once

#include <QByteArray>
#include <QVarLengthArray>

class DalTarsel;

namespace blocks {

// Builds one data block: bytes appended in order, 16- and 32-bit values little-endian, the
// additive checksum appended last. The original builders worked in fixed buffers; `capacity`
// is that buffer, and a block that would not fit in it (checksum included) is refused:
// nothing is sent and one warning line names the operation and the limit.
class Block {
public:
    Block(const char* operation, int capacity);

    Block& byte(int value) {
        if (length < capacity - 1) // one byte stays free for the checksum
            data[length] = static_cast<char>(value);
        ++length;
        return *this;
    }
    // Low 16 bits, low byte first.
    Block& word(int value) { return byte(value).byte(value >> 8); }
    // 32 bits, least significant byte first.
    Block& dword(int value) { return word(value).word(value >> 16); }
    Block& bytes(const QByteArray& data);
    Block& zerosUpTo(int size); // zero bytes until the block holds `size` bytes

    int size() const { return length; }

    // Appends the checksum and sends with DAT3/DAT4 = the block length (low, high).
    void sendSized(DalTarsel& dal, int timeout, int cmd, int dat1, int dat2);
    // Appends the checksum and sends with the given DAT3 and DAT4.
    void send(DalTarsel& dal, int timeout, int cmd, int dat1, int dat2, int dat3, int dat4);

private:
    bool seal();

    const char* operation;
    int capacity;
    int length = 0; // bytes written or, past the capacity, that would have been
    // The whole buffer from the start, on the stack up to the largest buffer of the protocol,
    // so that building a block allocates nothing beyond the record's own copy.
    QVarLengthArray<char, 4096> data;
};

// True when `index` is one the model's list of `size` entries holds; otherwise one warning
// line naming the operation and the limit.
bool holds(const char* operation, const char* what, int index, int size);
// True when 0 <= `count` <= `size`; otherwise one warning line.
bool holdsCount(const char* operation, const char* what, int count, int size);

// Seconds to milliseconds, truncated toward zero (NaN reads as 0, values past 32 bits are
// clamped); only the low 16 bits travel.
int alphaMilliseconds(float seconds);

} // namespace blocks
