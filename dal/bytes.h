#pragma once

#include <QByteArray>

// Byte helpers the three classes share.
namespace dal {

// The first len bytes of data; empty for len below 1.
inline QByteArray bytesOf(const unsigned char* data, int len) {
    return len < 1 ? QByteArray() : QByteArray(reinterpret_cast<const char*>(data), len);
}

// Stores the low 8 bits of the sum of the first len bytes just after them. A negative length
// writes nothing: its index would lie before the block.
inline void writeCheckSum(unsigned char* buf, int len) {
    if (len < 0)
        return;
    unsigned char sum = 0;
    for (int i = 0; i < len; ++i)
        sum += buf[i];
    buf[len] = sum;
}

// The block followed by its checksum.
inline QByteArray withCheckSum(QByteArray block) {
    unsigned char sum = 0;
    for (char byte : block)
        sum += static_cast<unsigned char>(byte);
    block.append(static_cast<char>(sum));
    return block;
}

} // namespace dal
