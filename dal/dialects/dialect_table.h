#pragma once

#include "model_protocoldata.h"
#include "utility_manage.h"

#include <QJsonObject>
#include <QString>
#include <QVarLengthArray>

#include <charconv>
#include <cstddef>
#include <unordered_map>

// Building blocks of the text dialects' translation tables: a row matches a native
// (CMD, DAT1[, DAT2]) and names the text to send, either a pattern whose %1..%3 are filled
// from record fields or a function that builds the whole text.
namespace dialect {

using Rec = model_Protocoldata;
using Field = int (*)(const Rec&);
using Build = QString (*)(const Rec&);

constexpr int kAny = -1;    // DAT2 column left open
constexpr int kAsCame = -1; // dataType or msgCode column left as it came

inline int dat1(const Rec& r) { return r.cmdHead[3]; }
inline int dat2(const Rec& r) { return r.cmdHead[4]; }
inline int dat3(const Rec& r) { return r.cmdHead[5]; }
inline int dat4(const Rec& r) { return r.cmdHead[6]; }
// The device numbers groups, modals and cards from 1 where the native set starts at 0.
inline int dat2Plus1(const Rec& r) { return dat2(r) + 1; }
inline int dat3Plus1(const Rec& r) { return dat3(r) + 1; }
inline int dat4Plus1(const Rec& r) { return dat4(r) + 1; }
// Parameters that ride in the time-out, offset by 3000 by the business layer.
// Wraps rather than overflows for time-outs near the int limits.
inline int timeoutMinus3000(const Rec& r) {
    return static_cast<int>(static_cast<unsigned>(r.timeout) - 3000u);
}
inline int videoNumber(const Rec& r) {
    return Utility_Manage::combineTwoByte(r.cmdHead[5], r.cmdHead[6]) & 0xFFFF;
}

// A fixed text and its local 8-bit bytes, built once per thread and then shared: most commands
// send one, and sharing spares building both for every record.
struct FixedText {
    QString text;
    QByteArray bytes;
};

inline const FixedText& fixedText(const char* pattern) {
    thread_local std::unordered_map<const char*, FixedText> cache;
    const auto found = cache.find(pattern);
    if (found != cache.end())
        return found->second;
    const QString text = QString::fromLatin1(pattern);
    return cache[pattern] = FixedText{text, text.toLocal8Bit()};
}

struct Text {
    const char* pattern;
    Field args[3];
    Build build; // when set, replaces the pattern

    bool isFixed() const { return !build && !args[0] && !args[1] && !args[2]; }

    QString render(const Rec& r) const {
        if (build)
            return build(r);
        if (isFixed())
            return fixedText(pattern).text;
        return filled(r);
    }

private:
    // %1..%3 replaced by the fields' decimal values, in one pass over the pattern.
    QString filled(const Rec& r) const {
        int values[3];
        int count = 0;
        for (Field arg : args)
            if (arg)
                values[count++] = arg(r);
        QVarLengthArray<char, 256> text;
        for (const char* c = pattern; *c; ++c) {
            const int number = c[0] == '%' ? c[1] - '0' : 0;
            if (number < 1 || number > count) {
                text.append(*c);
                continue;
            }
            char digits[12];
            const auto end = std::to_chars(digits, digits + sizeof digits, values[number - 1]).ptr;
            text.append(digits, int(end - digits));
            ++c;
        }
        return QString::fromLatin1(text.constData(), text.size());
    }
};

// Gives the record a fixed text and its bytes, both shared.
inline void setFixedText(Rec& rec, const char* pattern) {
    const FixedText& fixed = fixedText(pattern);
    rec.Datablock = fixed.text;
    rec.arryDatablock = fixed.bytes;
}

// Sets the record's text from its row (keeps the text it came with when no row matched) and its
// bytes to the text's local 8-bit encoding.
inline void setTextAndBytes(Rec& rec, const Text* text) {
    if (text && text->isFixed()) {
        setFixedText(rec, text->pattern);
        return;
    }
    if (text)
        rec.Datablock = text->render(rec);
    rec.arryDatablock = rec.Datablock.toLocal8Bit();
}

inline Text pat(const char* pattern, Field a = nullptr, Field b = nullptr, Field c = nullptr) {
    return {pattern, {a, b, c}, nullptr};
}
inline Text built(Build build) { return {nullptr, {nullptr, nullptr, nullptr}, build}; }

// The native command a row answers: CMD, DAT1 and, where the row names it, DAT2.
struct Key {
    Key(int cmd, int dat1, int dat2 = kAny) : cmd(cmd), dat1(dat1), dat2(dat2) {}
    bool matches(const Rec& r) const {
        return cmd == r.cmdHead[2] && dat1 == r.cmdHead[3] &&
               (dat2 == kAny || dat2 == r.cmdHead[4]);
    }
    int cmd;
    int dat1;
    int dat2;
};

// The first row whose key matches the record, or null.
template <class Row, std::size_t N>
const Row* findRow(const Row (&rows)[N], const Rec& r) {
    for (const Row& row : rows)
        if (row.key.matches(r))
            return &row;
    return nullptr;
}

// The head, time-out and tags of a record that a family's direct sender builds itself.
inline Rec directRecord(int connectType, int device, int timeout, int cmd, int d1, int d2, int d3,
                        int d4) {
    Rec rec;
    rec.connectType = static_cast<unsigned char>(connectType);
    rec.cmdHead[1] = 0;
    rec.cmdHead[2] = static_cast<unsigned char>(cmd);
    rec.cmdHead[3] = static_cast<unsigned char>(d1);
    rec.cmdHead[4] = static_cast<unsigned char>(d2);
    rec.cmdHead[5] = static_cast<unsigned char>(d3);
    rec.cmdHead[6] = static_cast<unsigned char>(d4);
    rec.timeout = timeout;
    rec.statusByte = 0;
    rec.deviceType = device;
    return rec;
}

// A direct record of a text family on the utility's link: the text, and as bytes either those
// given or the text's local 8-bit encoding.
inline Rec textRecord(int device, int timeout, int cmd, int d1, int d2, int d3, int d4,
                      const QString& text, const QByteArray& bytes) {
    Rec rec = directRecord(Utility_Manage::getConnectType(), device, timeout, cmd, d1, d2, d3, d4);
    rec.Datablock = text;
    rec.arryDatablock = bytes.isEmpty() ? text.toLocal8Bit() : bytes;
    return rec;
}

// JSON texts shared by the T9 and NV families.
inline QString removeAllSettings(const Rec&) {
    return Utility_Manage::getStringFromJsonObject({{"Command", "RemoveAllSettings"}});
}
// The fan speed travels inverted, unclamped.
inline QString setFanRpm(const Rec& r) {
    return Utility_Manage::getStringFromJsonObject(
        {{"Command", "SetFanRpm"}, {"FrameId", 1}, {"Rpm", 100 - dat3(r)}});
}

} // namespace dialect
