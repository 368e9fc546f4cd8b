#include "dal_pommet.h"

#include "biz_cmdswork.h"
#include "bytes.h"
#include "families.h"
#include "pacing.h"
#include "utility_manage.h"

#include <QDebug>

#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>

bool Dal_Pommet::isConnected = false;
std::mutex Dal_Pommet::mute;

namespace {

std::atomic<long long> keyboardPause{10};
std::atomic<long long> probePause{500};

} // namespace

std::chrono::milliseconds dal::pacing::keyboard() {
    return std::chrono::milliseconds(keyboardPause.load());
}

std::chrono::milliseconds dal::pacing::probes() {
    return std::chrono::milliseconds(probePause.load());
}

void dal::pacing::set(std::chrono::milliseconds keyboard, std::chrono::milliseconds probes) {
    keyboardPause = keyboard.count();
    probePause = probes.count();
}

namespace {

constexpr int kKeysPerGroup = 16;
constexpr int kKeysOnModel605Kind2 = 13;
constexpr int kScratchSize = 2048; // the largest block the keyboard takes, checksum included

// Positions within a 101-byte key entry.
enum EntryField {
    Led = 8,
    Attributes = 11,
    Length1 = 13,
    Length2 = 14,
    Length3 = 15,
    Line1 = 16,
    Line2 = 47,
    Line3 = 78,
    EntrySize = 101
};

// The key tables by kind: the first key code and the number of groups. Other kinds share one
// flat table addressed by the key code alone.
struct KeyTable {
    int kind;
    int firstCode;
    int groups;
    QVector<_KeyParam> Model_PommetParam::*entries;
};

const KeyTable kKeyTables[] = {
    {1, 105, 5, &Model_PommetParam::keysKind1},  {2, 203, 5, &Model_PommetParam::keysKind2},
    {3, 313, 10, &Model_PommetParam::keysKind3}, {5, 505, 5, &Model_PommetParam::keysKind5},
    {6, 403, 5, &Model_PommetParam::keysKind6},
};

const KeyTable* tableOf(int kind) {
    for (const KeyTable& table : kKeyTables)
        if (table.kind == kind)
            return &table;
    return nullptr;
}

// Before the keyboard link is confirmed only these (CMD, DAT1) pairs may leave.
bool isLinkProbe(unsigned char cmd, unsigned char dat1) {
    const unsigned char probes[][2] = {
        {0x6A, 0x11}, {0xA2, 0x02}, {0xA2, 0x15}, {0xA2, 0x16}, {0x9A, 0xB1}};
    for (const auto& probe : probes)
        if (probe[0] == cmd && probe[1] == dat1)
            return true;
    return false;
}

unsigned char low(int value) { return static_cast<unsigned char>(value); }
unsigned char high(int value) { return static_cast<unsigned char>(value >> 8); }

QByteArray field(const _KeyParam& key, int position, int width) {
    return QByteArray(reinterpret_cast<const char*>(key.bytes + position), width);
}

void appendField(QByteArray& out, const _KeyParam& key, int position, int width) {
    out.append(reinterpret_cast<const char*>(key.bytes + position), width);
}

// Whether a label line of `length` bytes from `position` lies within the key's entry.
bool holds(int position, int length) { return length >= 0 && position + length <= EntrySize; }

// The entry a key addresses, or null (with a warning) when the kind's table does not hold it.
const _KeyParam* keyEntry(const Model_PommetParam& param, int kind, int group, int key,
                          const char* operation) {
    const KeyTable* table = tableOf(kind);
    const QVector<_KeyParam>& entries = table ? param.*(table->entries) : param.keysOther;
    // In 64 bits: a group or key near the int limits must not wrap into the table.
    const long long index =
        table ? static_cast<long long>(group) * kKeysPerGroup + key - table->firstCode : key;
    if (index < 0 || index >= entries.size()) {
        // Named by the key codes that reach the table from this group.
        const long long first =
            table ? table->firstCode - static_cast<long long>(group) * kKeysPerGroup : 0;
        qWarning("%s: key %d of kind %d, group %d is outside the table: its key codes run "
                 "%lld..%lld",
                 operation, key, kind, group, first, first + entries.size() - 1);
        return nullptr;
    }
    return &entries[index];
}

// A run of keys within a table.
struct Keys {
    const _KeyParam* first = nullptr;
    int count = 0;
    const _KeyParam* begin() const { return first; }
    const _KeyParam* end() const { return first + count; }
};

// The keys of a group in its kind's table: 16, or 13 for kind 2 on model 605. None (with a
// warning where the group lies outside the table) for kinds without a table.
Keys groupKeys(const Model_PommetParam& param, int kind, int group, const char* operation) {
    const KeyTable* table = tableOf(kind);
    if (!table)
        return {};
    const QVector<_KeyParam>& entries = param.*(table->entries);
    const int count =
        kind == 2 && param.keyboardModel == 605 ? kKeysOnModel605Kind2 : kKeysPerGroup;
    if (group < 0 || (static_cast<long long>(group) + 1) * kKeysPerGroup > entries.size()) {
        qWarning("%s: group %d of kind %d is outside the table of %d keys", operation, group, kind,
                 int(entries.size()));
        return {};
    }
    return {entries.constData() + group * kKeysPerGroup, count};
}

bool fitsScratch(const QByteArray& block, const char* operation) {
    if (block.size() + 1 <= kScratchSize)
        return true;
    qWarning("%s: a block of %d bytes exceeds the keyboard's %d", operation, int(block.size() + 1),
             kScratchSize);
    return false;
}

// Appends a key's label in the variable layout: attributes, the three lengths and the lines,
// line 3 from `line3At` (its own storage in the group form, line 2's in the single-key form).
// False, with a warning and nothing appended, when a length reaches past the key's entry.
bool appendVariableLabel(QByteArray& out, const _KeyParam& key, int line3At,
                         const char* operation) {
    const int one = key.bytes[Length1], two = key.bytes[Length2], three = key.bytes[Length3];
    if (!holds(Line1, one) || !holds(Line2, two) || !holds(line3At, three)) {
        qWarning("%s: a label length reaches past the key's entry", operation);
        return false;
    }
    appendField(out, key, Attributes, 2);
    appendField(out, key, Length1, 3);
    appendField(out, key, Line1, one);
    appendField(out, key, Line2, two);
    appendField(out, key, line3At, three);
    return true;
}

// Appends a key's label in the fixed layout: attributes, then G bytes of lines 1 and 2.
bool appendFixedLabel(QByteArray& out, const _KeyParam& key, const char* operation) {
    const int g = Model_PommetParam::gOledLength;
    if (!holds(Line1, g) || !holds(Line2, g)) {
        qWarning("%s: label length %d reaches past the key's entry", operation, g);
        return false;
    }
    appendField(out, key, Attributes, 2);
    appendField(out, key, Line1, g);
    appendField(out, key, Line2, g);
    return true;
}

QByteArray keyCode(int key) {
    QByteArray code;
    code.append(char(low(key))).append(char(high(key)));
    return code;
}

bool fixedLabelFirmware() {
    return QString::compare(Utility_Manage::getToneProcVer(), QStringLiteral("1.02"),
                            Qt::CaseInsensitive) <= 0;
}

} // namespace

Dal_Pommet::Dal_Pommet() : QObject(nullptr) {}

QByteArray Dal_Pommet::getBlock(unsigned char* data, int len) { return dal::bytesOf(data, len); }

void Dal_Pommet::setCheckSum(unsigned char* data, int len) { dal::writeCheckSum(data, len); }

void Dal_Pommet::f_SendCmd(int timeout, unsigned char cmd, unsigned char dat1, unsigned char dat2,
                           unsigned char dat3, unsigned char dat4, unsigned char* data, int len) {
    if (Utility_Manage::getConnectToneFlag() == 0 && !isLinkProbe(cmd, dat1))
        return;
    model_Protocoldata rec;
    rec.timeout = timeout;
    const unsigned char head[] = {0, cmd, dat1, dat2, dat3, dat4};
    std::copy(std::begin(head), std::end(head), rec.cmdHead + 1);
    if (data)
        rec.arryDatablock = getBlock(data, len);
    rec.statusByte = 0;
    rec.deviceType = family::keyboard;
    if (isConnected)
        addToQueue(rec);
}

// Operations listed with DAL_SEND send one command with no data block.
#pragma GCC diagnostic push
// A row's parameter that the command does not carry still has its name, for the reader.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#define DAL_SEND(name, params, timeout, cmd, dat1, dat2, dat3, dat4)                               \
    void Dal_Pommet::name params {                                                                 \
        f_SendCmd(timeout, cmd, low(dat1), low(dat2), low(dat3), low(dat4), nullptr, 0);           \
    }
#include "dal_pommet.def"
#pragma GCC diagnostic pop

// The pause is held inside the lock: it paces the keyboard against every producer.
void Dal_Pommet::addToQueue(model_Protocoldata rec) {
    std::lock_guard<std::mutex> lock(biz_CMDSWork::HexCmdlock);
    biz_CMDSWork::queueHexCmd.push_back(std::move(rec));
    std::this_thread::sleep_for(dal::pacing::keyboard());
}

namespace {

// Sends a data block, its checksum appended, with the head bytes the block's length decides.
template <class Head>
void sendBlock(Dal_Pommet& keyboard, int timeout, unsigned char cmd, unsigned char dat1,
               QByteArray block, Head head, const char* operation) {
    if (!fitsScratch(block, operation))
        return;
    block = dal::withCheckSum(std::move(block));
    const int n = block.size();
    const auto [dat2, dat3, dat4] = head(n);
    keyboard.f_SendCmd(timeout, cmd, dat1, dat2, dat3, dat4,
                       reinterpret_cast<unsigned char*>(block.data()), n);
}

} // namespace

void Dal_Pommet::setDevTypeLED(int type) {
    if (type > 0)
        f_SendCmd(5000, 0xA2, 0x19, low(type), 0, 0, nullptr, 0);
}
void Dal_Pommet::setKeyLed(int kind, int group, int key, Model_PommetParam param) {
    if (const _KeyParam* entry = keyEntry(param, kind, group, key, "setKeyLed"))
        sendBlock(
            *this, param.waitTime, 0xA2, 0x42, field(*entry, Led, 3),
            [key](int) { return std::make_tuple(0x04, low(key), high(key)); }, "setKeyLed");
}

void Dal_Pommet::getKeyLed_New(int key, Model_PommetParam param) {
    sendBlock(
        *this, param.waitTime, 0xF1, 0x42, keyCode(key),
        [](int) { return std::make_tuple(0, 0, 0); }, "getKeyLed_New");
}

void Dal_Pommet::setKeyLed_New(int kind, int group, int key, Model_PommetParam param) {
    if (const _KeyParam* entry = keyEntry(param, kind, group, key, "setKeyLed_New"))
        sendBlock(
            *this, 5000, 0xF0, 0x42, keyCode(key) + field(*entry, Led, 3),
            [](int n) { return std::make_tuple(0, n, 0); }, "setKeyLed_New");
}

void Dal_Pommet::setGroupKeyLed(int kind, int group, Model_PommetParam param) {
    const Keys keys = groupKeys(param, kind, group, "setGroupKeyLed");
    if (!keys.count)
        return;
    QByteArray block;
    block.reserve(3 * keys.count + 1);
    for (const _KeyParam& key : keys)
        appendField(block, key, Led, 3);
    sendBlock(
        *this, 8000, 0xF0, 0x40, block, [kind](int n) { return std::make_tuple(low(kind), n, 0); },
        "setGroupKeyLed");
}

// An input key whose label starts with "N" has no signal: state 2, otherwise 5.
void Dal_Pommet::setInputGropLed(int group, Model_PommetParam param) {
    const Keys keys = groupKeys(param, 6, group, "setInputGropLed");
    if (!keys.count)
        return;
    QByteArray block;
    block.reserve(3 * keys.count + 1);
    for (const _KeyParam& key : keys)
        block.append(char(key.bytes[Line1] == 'N' ? 2 : 5)).append('\x01').append('\x01');
    sendBlock(
        *this, 8000, 0xF0, 0x40, block, [](int n) { return std::make_tuple(0x06, n, 0); },
        "setInputGropLed");
}

void Dal_Pommet::getKeyOled_New(int key, Model_PommetParam param) {
    sendBlock(
        *this, param.waitTime, 0xF1, 0x43, keyCode(key),
        [](int) { return std::make_tuple(0, 0, 0); }, "getKeyOled_New");
}

// Line 3 comes from line 2's storage in this single-key form; DAT3 carries only the low byte
// of the length.
void Dal_Pommet::setKeyOled_P5(int kind, int group, int key, Model_PommetParam param) {
    const _KeyParam* entry = keyEntry(param, kind, group, key, "setKeyOled_P5");
    if (!entry)
        return;
    QByteArray block(1, 0x01);
    block += keyCode(key);
    if (appendVariableLabel(block, *entry, Line2, "setKeyOled_P5"))
        sendBlock(
            *this, 5000, 0xF0, 0x43, std::move(block),
            [](int n) { return std::make_tuple(0, low(n), 0); }, "setKeyOled_P5");
}

void Dal_Pommet::setKeyOled_New(int kind, int group, int key, Model_PommetParam param) {
    if (!fixedLabelFirmware()) {
        setKeyOled_P5(kind, group, key, param);
        return;
    }
    const _KeyParam* entry = keyEntry(param, kind, group, key, "setKeyOled_New");
    if (!entry)
        return;
    QByteArray block = keyCode(key);
    if (appendFixedLabel(block, *entry, "setKeyOled_New"))
        sendBlock(
            *this, 5000, 0xF0, 0x43, std::move(block),
            [](int n) { return std::make_tuple(0, low(n), high(n)); }, "setKeyOled_New");
}

namespace {

// A group's labels, one block per key in the given layout, then the checksum; built in one
// buffer of the keyboard's largest block.
template <class AppendLabel>
void sendGroupLabels(Dal_Pommet& keyboard, int kind, int group, const Model_PommetParam& param,
                     AppendLabel appendLabel, const char* operation) {
    const Keys keys = groupKeys(param, kind, group, operation);
    if (!keys.count)
        return;
    QByteArray block;
    block.reserve(kScratchSize);
    for (const _KeyParam& key : keys)
        if (!appendLabel(block, key))
            return;
    sendBlock(
        keyboard, 4000, 0xF0, 0x41, std::move(block),
        [kind](int n) { return std::make_tuple(low(kind), low(n), high(n)); }, operation);
}

} // namespace

void Dal_Pommet::setGroupKeyOled_P5(int kind, int group, Model_PommetParam param) {
    sendGroupLabels(
        *this, kind, group, param,
        [](QByteArray& out, const _KeyParam& key) {
            return appendVariableLabel(out, key, Line3, "setGroupKeyOled_P5");
        },
        "setGroupKeyOled_P5");
}

void Dal_Pommet::setGroupKeyOled(int kind, int group, Model_PommetParam param) {
    if (!fixedLabelFirmware()) {
        setGroupKeyOled_P5(kind, group, param);
        return;
    }
    sendGroupLabels(
        *this, kind, group, param,
        [](QByteArray& out, const _KeyParam& key) {
            return appendFixedLabel(out, key, "setGroupKeyOled");
        },
        "setGroupKeyOled");
}
