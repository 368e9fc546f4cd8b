#include "models.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

// GCC 12 takes a write to a QVector's element, which lies after the array's header, for a
// write past the header: a false alarm with Qt 5's array data.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wstringop-overflow"
#endif

// ---- the members of each record and element type, written once --------------------------------

namespace {

#define MEMBERS(Type, ...)                                                                         \
    template <class T, class F>                                                                    \
    std::enable_if_t<std::is_same_v<std::remove_const_t<T>, Type>> forEach(T& m, F&& f) {          \
        __VA_ARGS__                                                                                \
    }
#define M(name) f(#name, m.name);

// clang-format off
MEMBERS(_Region, M(x) M(y) M(width) M(height))
MEMBERS(_LayerParam_Desktop, M(regionA) M(regionB) M(layerParam8) M(layerParam9) M(layerParam10)
        M(alpha) M(order) M(containerIndex) M(spare) M(locked) M(groupNum) M(extraByte0)
        M(extraByte1) M(extraByte2))
MEMBERS(_Scene_Layer, M(layerList) M(bankValues) M(backgroundIndex))
MEMBERS(_ContainerParam_Destktop, M(containerParam0) M(containerParam1) M(containerParam2)
        M(containerParam3) M(containerParam4) M(containerParam5) M(containerParam6)
        M(containerParam7) M(containerParam8) M(containerParam9) M(containerMode)
        M(containerParam11) M(containerParam12))
MEMBERS(_Take_Desktop, M(alphaTime) M(takeValue0) M(blackValue) M(takeValue1) M(takeValue2))
MEMBERS(_OutProperty, M(unread0to22) M(outProp23) M(outProp24) M(outProp25) M(outProp26)
        M(outProp27) M(outProp28) M(outProp29))
MEMBERS(_InProperty_4K_60, M(member))
MEMBERS(_InPropertyCrop_4K_60, M(member))
MEMBERS(_OutPortParam_Desktop, M(portParam0) M(portParam1) M(portParam2) M(portParam3)
        M(portParam4) M(portParam5) M(portParam6) M(portRotation))
MEMBERS(_LcdBorderSetting, M(border0) M(border1) M(border2) M(border3))
MEMBERS(_DSKInfo, M(member))
MEMBERS(_DeInfo, M(deSwitch) M(deX) M(deY) M(deWidth) M(deHeight) M(deOutputMode) M(deOutputSignal)
        M(deDataRange) M(deColorSpace) M(dePolarity1) M(dePolarity2))
MEMBERS(_HotBackData, M(source) M(backupSource) M(enabled))
MEMBERS(_KeyParam, M(bytes))
MEMBERS(ModelTarsel, M(timeout) M(maxOutputCount) M(maxSourceCount) M(maxOutPutBoardCount)
        M(maxLayerCount) M(maxInputBoardCount) M(maxContainerCount) M(deviceState)
        M(recallDelaySwitch) M(recallDelayTime) M(fanMode) M(fanSpeed) M(powerOnDelay)
        M(logoDisplayMode) M(operationMode) M(operationAuxMode) M(operationModeParam)
        M(h264InputWorkModes) M(outHTotal) M(outVTotal) M(outHSize) M(outVSize) M(outHPos)
        M(outVPos) M(outPolarity) M(outSyncWidth) M(outColorSpace) M(twoSplitMode) M(usbFileIndex)
        M(usbPlayTime) M(usbPlayType) M(usbPicPlayTotalTime) M(usbPlayMode) M(usbPlayState)
        M(usbBankInput) M(usbBankIndex) M(usbBankFileIndex) M(byPassModes) M(input3DStates)
        M(clockItem) M(clockValue1) M(clockValue2) M(clockValue3) M(osdScrollSwitch)
        M(osdScrollSpeed) M(previewSwitch) M(previewRed) M(previewGreen) M(previewBlue) M(previewX)
        M(previewY) M(dns) M(maskIP) M(ip) M(gateWayIP) M(dhcpSwitch) M(inProperty4K60)
        M(dskInfoList) M(layerDskInfos) M(outPortParams) M(containerParams) M(lcdBorders)
        M(deInfos) M(testPatternModes) M(testPatternColor1) M(testPatternColor2)
        M(testPatternColor3) M(outputBrightness) M(allOutputsBrightness) M(output3DStates)
        M(previewPorts) M(userSettingByte0) M(userSettingByte1) M(userSettingValue0)
        M(userSettingValue1) M(loopToSignal) M(streamInputIp) M(streamInputMask)
        M(streamInputGateway) M(streamInputPort) M(h264DisplayPic) M(hotBackups) M(viClipLeft)
        M(viClipTop) M(viClipRight) M(viClipBottom) M(viBright) M(viContrast) M(viHue) M(viSat)
        M(decoderFrame) M(decoderCard) M(decoderSub) M(decoderIp) M(decoderGateway) M(decoderMask)
        M(decoderDns1))
MEMBERS(ModelScene, M(deviceType) M(sceneList) M(outProperties) M(takes) M(inPropertyCrops4K60)
        M(timeout) M(blackSwitch) M(takeSwitch) M(outAlphaTime) M(maxLayerCount) M(maxBankCount)
        M(maxContainerCount))
MEMBERS(ModelBankPlayer, M(timeout) M(year) M(month) M(day) M(weekday) M(hours) M(minutes)
        M(seconds) M(clockSwitch) M(autoLoopTimes) M(loopTimings) M(loopTimes))
MEMBERS(Model_PommetParam, M(waitTime) M(lockValue) M(keyboardModel) M(keysKind1) M(keysKind2)
        M(keysKind3) M(keysKind5) M(keysKind6) M(keysOther))
// clang-format on

#undef M
#undef MEMBERS

// The keyboard's record with its static label length, which Models keeps beside it.
template <class P, class L>
struct KeyboardRecord {
    P& param;
    L& gOledLength;
};

template <class P, class L, class F>
void forEach(const KeyboardRecord<P, L>& k, F&& f) {
    forEach(k.param, f);
    f("gOledLength", k.gOledLength);
}

// Every record of Models under its class name.
template <class T, class F>
std::enable_if_t<std::is_same_v<std::remove_const_t<T>, Models>> forEach(T& m, F&& f) {
    f("ModelTarsel", m.tarsel);
    f("ModelScene", m.scene);
    f("ModelBankPlayer", m.bankPlayer);
    KeyboardRecord<std::remove_reference_t<decltype((m.keyboard))>,
                   std::remove_reference_t<decltype((m.oledLength))>>
        keyboard{m.keyboard, m.oledLength};
    f("Model_PommetParam", keyboard);
}

// ---- what kind of node a type is ---------------------------------------------------------------

// A node's own type, arrays kept as arrays.
template <class T>
using Bare = std::remove_cv_t<std::remove_reference_t<T>>;

template <class T>
struct ListOf : std::false_type {};
template <class E>
struct ListOf<QList<E>> : std::true_type {
    using Element = E;
};
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
template <class E>
struct ListOf<QVector<E>> : std::true_type {
    using Element = E;
};
#endif

using members::Node;

template <class T>
constexpr Node nodeOf() {
    using V = std::remove_const_t<T>;
    if constexpr (std::is_same_v<V, QString> || std::is_arithmetic_v<V>)
        return Node::Value;
    else if constexpr (ListOf<V>::value)
        return Node::List;
    else if constexpr (std::is_array_v<V>)
        return Node::Array;
    else
        return Node::Struct;
}

template <class T>
members::Leaf leafOf() {
    using V = std::remove_const_t<T>;
    using args::Kind;
    members::Leaf leaf{nodeOf<T>(), std::is_same_v<V, QString>    ? Kind::Text
                                    : std::is_floating_point_v<V> ? Kind::Decimal
                                                                  : Kind::Integer};
    if constexpr (std::is_integral_v<V>) {
        leaf.min = static_cast<long long>(std::numeric_limits<V>::min());
        leaf.max = static_cast<long long>(std::numeric_limits<V>::max());
    }
    return leaf;
}

// QList of Qt 5 has no resize; entries are added or dropped at the end.
template <class L, class E>
void resizeList(L& list, int size, const E& added) {
    while (list.size() > size)
        list.removeLast();
    while (list.size() < size)
        list.append(added);
}

template <class T>
int sizeOf(const T& list) {
    if constexpr (std::is_array_v<T>)
        return int(std::extent_v<T>);
    else
        return int(list.size());
}

// ---- reaching a node by its path ---------------------------------------------------------------

// The next step of a path: ".name" or "[index]"; the rest follows.
struct Step {
    QStringView name;
    int index = -1;
    QStringView rest;
    bool ok = false;
};

Step stepOf(QStringView path) {
    Step step;
    if (path.startsWith(QLatin1Char('['))) {
        const int close = int(path.indexOf(QLatin1Char(']')));
        long long index = 0;
        for (int at = 1; at < close && index <= INT_MAX; ++at)
            index = path[at].isDigit() ? index * 10 + path[at].digitValue() : LLONG_MAX;
        step.ok = close > 1 && index <= INT_MAX;
        step.index = step.ok ? int(index) : -1;
        step.rest = close > 0 ? path.mid(close + 1) : QStringView();
        return step;
    }
    const int start = path.startsWith(QLatin1Char('.')) ? 1 : 0;
    int end = start;
    while (end < path.size() && path[end] != QLatin1Char('.') && path[end] != QLatin1Char('['))
        ++end;
    step.name = path.mid(start, end - start);
    step.rest = path.mid(end);
    step.ok = !step.name.isEmpty();
    return step;
}

// Calls f(node) with the node at `path` below `value`; false when there is none.
template <class T, class F>
bool reach(T& value, QStringView path, F&& f) {
    if (path.isEmpty()) {
        f(value);
        return true;
    }
    const Step step = stepOf(path);
    if (!step.ok)
        return false;
    constexpr Node node = nodeOf<T>();
    if constexpr (node == Node::Struct) {
        bool found = false;
        forEach(value, [&](const char* name, auto& member) {
            if (!found && step.index < 0 && step.name == QLatin1String(name))
                found = reach(member, step.rest, f);
        });
        return found;
    } else if constexpr (node == Node::List || node == Node::Array) {
        if (step.index < 0 || step.index >= sizeOf(value))
            return false;
        return reach(value[step.index], step.rest, f);
    } else {
        return false;
    }
}

// Adds the path of every list at or below `value` to `found`; values hold none.
template <class T>
void listsBelow(const T& value, const QString& path, QStringList& found) {
    constexpr Node node = nodeOf<T>();
    if constexpr (node == Node::Struct) {
        forEach(value, [&](const char* name, const auto& member) {
            if constexpr (nodeOf<Bare<decltype(member)>>() <= Node::Array)
                listsBelow(member,
                           path.isEmpty() ? QString::fromLatin1(name)
                                          : path + QLatin1Char('.') + QLatin1String(name),
                           found);
        });
    } else if constexpr (node == Node::List || node == Node::Array) {
        if constexpr (node == Node::List)
            found << path;
        using Entry = Bare<decltype(value[0])>;
        if constexpr (nodeOf<Entry>() <= Node::Array)
            for (int i = 0; i < sizeOf(value); ++i)
                listsBelow(value[i], path + QStringLiteral("[%1]").arg(i), found);
    }
}

// Calls f(value) for every number, decimal and text at or below `value`.
template <class T, class F>
void forEachLeaf(T& value, F&& f) {
    constexpr Node node = nodeOf<T>();
    if constexpr (node == Node::Struct)
        forEach(value, [&](const char*, auto& member) { forEachLeaf(member, f); });
    else if constexpr (node == Node::List || node == Node::Array)
        for (int i = 0; i < sizeOf(value); ++i)
            forEachLeaf(value[i], f);
    else
        f(value);
}

template <class T>
QString wordOf(const T& value) {
    if constexpr (std::is_same_v<T, QString>)
        return value;
    else if constexpr (std::is_same_v<T, bool>)
        return value ? QStringLiteral("true") : QStringLiteral("false");
    else if constexpr (std::is_floating_point_v<T>)
        return QString::number(double(value), 'g', 9);
    else
        return QString::number(static_cast<long long>(value));
}

// ---- JSON
// ------------------------------------------------------------------------------------------

template <class T>
QString applyJson(T& value, const QJsonValue& json, const QString& path);

template <class T>
QString applyScalar(T& value, const QJsonValue& json, const QString& path) {
    const QString wrong = QStringLiteral("model member %1 has a value of the wrong kind").arg(path);
    if constexpr (std::is_same_v<T, QString>) {
        if (!json.isString())
            return wrong;
        value = json.toString();
    } else if constexpr (std::is_same_v<T, bool>) {
        if (!json.isBool())
            return wrong;
        value = json.toBool();
    } else {
        if (!json.isDouble())
            return wrong;
        const double number = json.toDouble();
        if constexpr (std::is_integral_v<T>) {
            if (number != std::floor(number))
                return QStringLiteral("model member %1 is %2, not an integer")
                    .arg(path)
                    .arg(number);
            // Within the member's type, as 2^digits bounds it (exclusive above).
            const double above = std::ldexp(1.0, std::numeric_limits<T>::digits);
            if (!(number >= (std::is_signed_v<T> ? -above : 0.0) && number < above))
                return QStringLiteral("model member %1 is %2, outside its range %3..%4")
                    .arg(path)
                    .arg(number)
                    .arg(std::numeric_limits<T>::min())
                    .arg(std::numeric_limits<T>::max());
        }
        value = static_cast<T>(number);
    }
    return QString();
}

// A value from its word, as --model would read it: true, false, 1 or 0 for a flag, a number in
// decimal for an integer or a decimal, anything for a text.
template <class T>
bool setWord(T& value, const QString& word) {
    QJsonValue json = word;
    bool ok = true;
    if constexpr (std::is_same_v<T, bool>) {
        ok = word == QLatin1String("true") || word == QLatin1String("false") ||
             word == QLatin1String("1") || word == QLatin1String("0");
        json = word == QLatin1String("true") || word == QLatin1String("1");
    } else if constexpr (std::is_arithmetic_v<T>) {
        json = word.toDouble(&ok);
    }
    return ok && applyScalar(value, json, QString()).isEmpty();
}

template <class T>
QString applyJson(T& value, const QJsonValue& json, const QString& path) {
    constexpr Node node = nodeOf<T>();
    if constexpr (node == Node::Struct) {
        if (!json.isObject())
            return QStringLiteral("%1 must hold a JSON object").arg(path);
        const QJsonObject object = json.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            QString error = QStringLiteral("%1 has no member named %2").arg(path, it.key());
            forEach(value, [&](const char* name, auto& member) {
                if (it.key() == QLatin1String(name))
                    error = applyJson(member, it.value(), path + QLatin1Char('.') + it.key());
            });
            if (!error.isEmpty())
                return error;
        }
        return QString();
    } else if constexpr (node == Node::List || node == Node::Array) {
        if (!json.isArray())
            return QStringLiteral("%1 must hold a JSON array").arg(path);
        const QJsonArray array = json.toArray();
        // The entries the array names change; the list's others stay as they are.
        if constexpr (node == Node::List)
            resizeList(value, std::max(int(array.size()), sizeOf(value)),
                       value.isEmpty() ? typename ListOf<T>::Element{} : value.last());
        else if (array.size() > sizeOf(value))
            return QStringLiteral("%1 holds %2 entries, not %3")
                .arg(path)
                .arg(sizeOf(value))
                .arg(array.size());
        for (int i = 0; i < array.size(); ++i) {
            const QString error =
                applyJson(value[i], array[i], path + QStringLiteral("[%1]").arg(i));
            if (!error.isEmpty())
                return error;
        }
        return QString();
    } else {
        return applyScalar(value, json, path);
    }
}

template <class T>
QJsonValue scalarJson(const T& value) {
    if constexpr (std::is_same_v<T, QString>)
        return value;
    else if constexpr (std::is_same_v<T, bool>)
        return value;
    else
        return double(value);
}

// The JSON of `value` holding only what lies on `paths` (relative to it); lists and arrays keep
// their length, their other entries as they are, or empty (a list's records, which --model then
// keeps as they are).
template <class T>
QJsonValue sparseJson(const T& value, const QStringList& paths) {
    constexpr Node node = nodeOf<T>();
    if constexpr (node == Node::Struct) {
        QJsonObject object;
        forEach(value, [&](const char* name, const auto& member) {
            QStringList below;
            for (const QString& path : paths) {
                const Step step = stepOf(path);
                if (step.ok && step.index < 0 && step.name == QLatin1String(name))
                    below << step.rest.toString();
            }
            if (!below.isEmpty())
                object.insert(QLatin1String(name), sparseJson(member, below));
        });
        return object;
    } else if constexpr (node == Node::List || node == Node::Array) {
        QJsonArray array;
        for (int i = 0; i < sizeOf(value); ++i) {
            QStringList below;
            for (const QString& path : paths) {
                const Step step = stepOf(path);
                if (step.ok && step.index == i)
                    below << step.rest.toString();
            }
            // A scalar entry is written whole; a record or a list only where the paths reach.
            using Entry = Bare<decltype(value[i])>;
            if constexpr (nodeOf<Entry>() == Node::Value)
                array << scalarJson(value[i]);
            else
                array << sparseJson(value[i], below);
        }
        return array;
    } else {
        return scalarJson(value);
    }
}

} // namespace

// ---- public ------------------------------------------------------------------------------------

namespace members {

Leaf at(const Models& m, const QString& path) {
    Leaf leaf;
    reach(m, path, [&](const auto& node) { leaf = leafOf<Bare<decltype(node)>>(); });
    return leaf;
}

QStringList children(const Models& m, const QString& path) {
    QStringList paths;
    reach(m, path, [&](const auto& value) {
        using T = Bare<decltype(value)>;
        constexpr Node node = nodeOf<T>();
        if constexpr (node == Node::Struct)
            forEach(value, [&](const char* name, const auto&) {
                paths << (path.isEmpty() ? QString::fromLatin1(name)
                                         : path + QLatin1Char('.') + QLatin1String(name));
            });
        else if constexpr (node == Node::List || node == Node::Array)
            for (int i = 0; i < sizeOf(value); ++i)
                paths << path + QStringLiteral("[%1]").arg(i);
    });
    return paths;
}

QString get(const Models& m, const QString& path) {
    QString word;
    reach(m, path, [&](const auto& value) {
        if constexpr (nodeOf<Bare<decltype(value)>>() == Node::Value)
            word = wordOf(value);
    });
    return word;
}

bool set(Models& m, const QString& path, const QString& word) {
    bool done = false;
    reach(m, path, [&](auto& value) {
        if constexpr (nodeOf<Bare<decltype(value)>>() == Node::Value)
            done = setWord(value, word);
    });
    if (done)
        m.changes += path + QLatin1Char('=') + word + QLatin1Char('\x1f');
    return done;
}

bool resize(Models& m, const QString& path, int size) {
    bool done = false;
    reach(m, path, [&](auto& value) {
        using T = Bare<decltype(value)>;
        if constexpr (nodeOf<T>() == Node::List) {
            resizeList(value, size, value.isEmpty() ? typename ListOf<T>::Element{} : value.last());
            done = true;
        }
    });
    if (done)
        m.changes += path + QStringLiteral("#%1\x1f").arg(size);
    return done;
}

namespace {

// A text gains a digit at its end, or for an even step is replaced by another text of digits
// and dots, so that what is read off its start changes too.
template <class T>
void shifted(T& value, int step) {
    if constexpr (std::is_same_v<T, QString>)
        value = step % 2 ? value + QString::number(step % 10)
                         : QStringLiteral("%1.%1.%1.%1").arg(step & 0xFF);
    else if constexpr (std::is_same_v<T, bool>)
        value = !value;
    else if constexpr (std::is_floating_point_v<T>)
        value = static_cast<T>(value + step / 8.0);
    else
        value = static_cast<T>(static_cast<long long>(value) + step);
}

} // namespace

void shift(Models& m, const QString& path, int step) {
    reach(m, path, [&](auto& node) {
        forEachLeaf(node, [&](auto& value) { shifted<Bare<decltype(value)>>(value, step); });
    });
    m.changes += path + QStringLiteral("+%1\x1f").arg(step);
}

QStringList lists(const Models& m, const QString& path) {
    QStringList found;
    reach(m, path, [&](const auto& node) { listsBelow(node, path, found); });
    return found;
}

QJsonObject json(const Models& m, const QStringList& paths) {
    return sparseJson(m, paths).toObject();
}

} // namespace members

// ---- the built-in records ---------------------------------------------------------------------

namespace {

// The built-in values that are not lists of distinct entries: a time-out of 3000 ms, small
// counts, a 1080p60 output timing, a one-second alpha time, addresses of every kind.
constexpr char kBuiltIn[] = R"({"timeout": 3000,
    "ModelTarsel": {"maxOutputCount": 4, "maxSourceCount": 4, "maxOutPutBoardCount": 2,
        "maxLayerCount": 4, "maxInputBoardCount": 2, "maxContainerCount": 4, "outHTotal": 2200,
        "outVTotal": 1125, "outHSize": 1920, "outVSize": 1080, "outHPos": 192, "outVPos": 41,
        "outSyncWidth": 44, "recallDelayTime": 5, "allOutputsBrightness": 80,
        "h264InputWorkModes": [1, 1, 1, 1], "byPassModes": [1, 1, 1, 1],
        "input3DStates": [1, 1, 1, 1], "dns": "192.168.0.1", "maskIP": "255.255.255.0",
        "ip": "192.168.0.10", "gateWayIP": "192.168.0.1", "streamInputIp": "192.168.1.20",
        "streamInputMask": "255.255.255.0", "streamInputGateway": "192.168.1.1",
        "streamInputPort": 554},
    "ModelScene": {"maxLayerCount": 4, "maxBankCount": 16, "maxContainerCount": 4,
        "outAlphaTime": 1000},
    "ModelBankPlayer": {"year": 2024, "month": 1, "day": 1, "weekday": 1, "hours": 12,
        "autoLoopTimes": [1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1]},
    "Model_PommetParam": {"waitTime": 3000, "lockValue": 1}})";

_LayerParam_Desktop defaultLayer(int scene, int layer) {
    _LayerParam_Desktop p;
    p.regionA = {layer * 100, layer * 50, 640, 360};
    p.regionB = {layer * 100 + 10, layer * 50 + 10, 320, 180};
    p.alpha = 0xFF;
    p.order = layer;
    p.containerIndex = layer;
    p.groupNum = static_cast<unsigned char>(scene);
    return p;
}

// Lists of the data-block commands: one entry per output (plus the all-outputs DE entry), per
// container, per layer and per input, with distinct values so that a swapped field shows.
void addBlockDefaults(Models& m, int count) {
    ModelTarsel& t = m.tarsel;
    for (int i = 0; i < count; ++i) {
        _InProperty_4K_60 in;
        _InPropertyCrop_4K_60 crop;
        for (int k = 0; k < 13; ++k)
            in.member[k] = 0x100 * i + k;
        for (int k = 0; k < 12; ++k)
            crop.member[k] = 0x100 * i + k;
        t.inProperty4K60.append(in);
        m.scene.inPropertyCrops4K60.append(crop);

        _DSKInfo dsk;
        for (int k = 0; k < 10; ++k)
            dsk.member[k] = 10 * i + k;
        t.dskInfoList.append(dsk);
        t.layerDskInfos.append(dsk);

        t.outPortParams.append({i, 1920, 1080, 10 * i, 20 * i, 0, 0, 90 * i});
        _ContainerParam_Destktop container;
        container.containerParam0 = 100 * i;
        container.containerParam2 = 1920;
        container.containerParam3 = 1080;
        container.containerMode = i;
        t.containerParams.append(container);
        t.lcdBorders.append({i, i + 1, i + 2, 300});
        t.testPatternModes.append(i);
        t.testPatternColor1.append(0x10 + i);
        t.testPatternColor2.append(0x20 + i);
        t.testPatternColor3.append(0x30 + i);
        t.outputBrightness.append(50 + i);
        t.output3DStates.append(static_cast<unsigned char>(i % 2));
        t.previewPorts.append(i);
        t.hotBackups.append({i, i + 1, 1});

        _Take_Desktop take;
        take.alphaTime = 0.5f * (i + 1);
        take.takeValue0 = static_cast<unsigned char>(i);
        take.blackValue = static_cast<unsigned char>(i % 2);
        take.takeValue1 = static_cast<unsigned char>(i + 1);
        take.takeValue2 = static_cast<unsigned char>(i + 2);
        m.scene.takes.append(take);

        QVector<_OutProperty> group(count);
        for (int item = 0; item < count; ++item) {
            group[item].outProp23 = item;
            group[item].outProp26 = 100 * item;
            group[item].outProp27 = 50 * item;
            group[item].outProp28 = 640;
            group[item].outProp24 = 360;
        }
        m.scene.outProperties.append(group);
    }
    for (int i = 0; i <= count; ++i) // the last entry stands for all outputs
        t.deInfos.append({1, 0, 0, 1920, 1080, i, 0, 0, 0, 0, 0});
    for (int i = 0; i < 144; ++i)
        m.bankPlayer.loopTimings.append(static_cast<unsigned char>(i));
    for (int i = 0; i < 128; ++i)
        m.bankPlayer.loopTimes.append(static_cast<unsigned char>(i));
}

// Every key gets distinct LED bytes and short labels, so that a key read from the wrong entry
// or a swapped field shows in the output.
void fillKeys(QVector<_KeyParam>& keys, int kind) {
    for (int i = 0; i < keys.size(); ++i) {
        _KeyParam key;
        const QByteArray fields =
            QByteArray(1, char(kind)) + char(i) + char(i >> 8) + QByteArray::fromHex("a0a1030204");
        const QByteArray line1 = QByteArray("K") + QByteArray::number(i);
        for (int at = 0; at < fields.size(); ++at)
            key.bytes[8 + at] = static_cast<unsigned char>(fields[at]);
        for (int at = 0; at < line1.size(); ++at)
            key.bytes[16 + at] = static_cast<unsigned char>(line1[at]);
        key.bytes[47] = 'L';
        key.bytes[48] = '2';
        key.bytes[78] = 'L';
        key.bytes[79] = '3';
        keys[i] = key;
    }
}

Models builtIn() {
    Models m;
    m.apply(kBuiltIn);
    m.changes.clear(); // the built-in records are where changes count from
    for (auto [keys, kind] : {std::pair{&m.keyboard.keysKind1, 1},
                              {&m.keyboard.keysKind2, 2},
                              {&m.keyboard.keysKind3, 3},
                              {&m.keyboard.keysKind5, 5},
                              {&m.keyboard.keysKind6, 6},
                              {&m.keyboard.keysOther, 0}})
        fillKeys(*keys, kind);
    const int count = m.tarsel.maxOutputCount; // outputs, sources, layers, containers, scenes
    for (int s = 0; s < count; ++s) {
        _Scene_Layer scene;
        for (int l = 0; l < count; ++l)
            scene.layerList.append(defaultLayer(s, l));
        for (int b = 0; b < m.scene.maxBankCount; ++b)
            scene.bankValues[b] = static_cast<unsigned char>(b);
        scene.backgroundIndex = static_cast<unsigned char>(s);
        m.scene.sceneList.append(scene);
    }
    addBlockDefaults(m, count);
    return m;
}

} // namespace

const Models& Models::defaults() {
    static const Models built = builtIn(); // building them costs more than a call
    return built;
}

QString Models::apply(const QByteArray& text) {
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return QStringLiteral("not JSON: %1 at offset %2")
            .arg(parseError.errorString())
            .arg(parseError.offset);
    if (!doc.isObject())
        return QStringLiteral("the models are a JSON object ({\"ModelScene\": {...}} or "
                              "{\"timeout\": 500}), not an array");
    const QJsonObject root = doc.object();
    changes += QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Compact)) + '\x1f';
    // One member of every record first, so that what a record's own object says wins.
    for (const bool wholeRecords : {false, true})
        for (auto it = root.begin(); it != root.end(); ++it) {
            QString error;
            bool found = false;
            forEach(*this, [&](const char* record, auto& model) {
                if (it.key() == QLatin1String(record)) {
                    found = true;
                    if (wholeRecords)
                        error = applyJson(model, it.value(), it.key());
                    return;
                }
                forEach(model, [&](const char* name, auto& member) {
                    if (error.isEmpty() && it.key() == QLatin1String(name)) {
                        found = true;
                        if (!wholeRecords)
                            error = applyJson(member, it.value(), it.key());
                    }
                });
            });
            if (error.isEmpty() && !found)
                error = QStringLiteral("no model record has a member named %1").arg(it.key());
            if (!error.isEmpty())
                return error;
        }
    return QString();
}
