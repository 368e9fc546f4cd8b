#include "block_builder.h"

#include "bytes.h"
#include "dalTarsel.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace blocks {

Block::Block(const char* operation, int capacity)
    : operation(operation), capacity(capacity), data(std::max(capacity, 0)) {}

Block& Block::bytes(const QByteArray& bytes) {
    for (char c : bytes)
        byte(static_cast<unsigned char>(c));
    return *this;
}

Block& Block::zerosUpTo(int size) {
    while (length < size)
        byte(0);
    return *this;
}

bool Block::seal() {
    if (length + 1 > capacity) {
        qWarning().noquote() << QStringLiteral("%1: block of %2 bytes exceeds the %3-byte buffer")
                                    .arg(QLatin1String(operation))
                                    .arg(length + 1)
                                    .arg(capacity);
        return false;
    }
    dal::writeCheckSum(reinterpret_cast<unsigned char*>(data.data()), length);
    ++length;
    return true;
}

void Block::sendSized(DalTarsel& dal, int timeout, int cmd, int dat1, int dat2) {
    const int total = length + 1;
    send(dal, timeout, cmd, dat1, dat2, total & 0xFF, (total >> 8) & 0xFF);
}

void Block::send(DalTarsel& dal, int timeout, int cmd, int dat1, int dat2, int dat3, int dat4) {
    if (!seal())
        return;
    dal.f_SendCmd(timeout, cmd, dat1, dat2, dat3, dat4,
                  reinterpret_cast<unsigned char*>(data.data()), length, QString());
}

bool holds(const char* operation, const char* what, int index, int size) {
    if (index >= 0 && index < size)
        return true;
    qWarning().noquote() << QStringLiteral("%1: %2 %3 outside the %4 the model holds")
                                .arg(QLatin1String(operation), QLatin1String(what))
                                .arg(index)
                                .arg(size);
    return false;
}

bool holdsCount(const char* operation, const char* what, int count, int size) {
    if (count >= 0 && count <= size)
        return true;
    qWarning().noquote() << QStringLiteral("%1: %2 count %3 outside 0..%4, what the model holds")
                                .arg(QLatin1String(operation), QLatin1String(what))
                                .arg(count)
                                .arg(size);
    return false;
}

int alphaMilliseconds(float seconds) {
    const double ms = static_cast<double>(seconds) * 1000.0;
    return static_cast<int>(std::isnan(ms) ? 0.0 : std::clamp(ms, -2147483648.0, 2147483647.0));
}

} // namespace blocks
