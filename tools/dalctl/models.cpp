#include "models.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <functional>
#include <map>

namespace {

constexpr int kDefaultTimeout = 3000;
constexpr int kCount = 4; // outputs, sources, layers, containers, scenes
constexpr int kBoards = 2;
constexpr int kBanks = 16;

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
void addBlockDefaults(Models& m) {
    ModelTarsel& t = m.tarsel;
    for (int i = 0; i < kCount; ++i) {
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

        QVector<_OutProperty> group(kCount);
        for (int item = 0; item < kCount; ++item) {
            group[item].outProp23 = item;
            group[item].outProp26 = 100 * item;
            group[item].outProp27 = 50 * item;
            group[item].outProp28 = 640;
            group[item].outProp24 = 360;
        }
        m.scene.outProperties.append(group);
    }
    for (int i = 0; i <= kCount; ++i) // the last entry stands for all outputs
        t.deInfos.append({1, 0, 0, 1920, 1080, i, 0, 0, 0, 0, 0});
    t.allOutputsBrightness = 80;
    t.streamInputIp = QStringLiteral("192.168.1.20");
    t.streamInputMask = QStringLiteral("255.255.255.0");
    t.streamInputGateway = QStringLiteral("192.168.1.1");
    t.streamInputPort = 554;

    m.bankPlayer.timeout = kDefaultTimeout;
    for (int i = 0; i < 144; ++i)
        m.bankPlayer.loopTimings.append(static_cast<unsigned char>(i));
    for (int i = 0; i < 128; ++i)
        m.bankPlayer.loopTimes.append(static_cast<unsigned char>(i));
}

// A setter of one scalar member from JSON; false when the value has the wrong kind.
template <class M>
using FieldSetter = std::function<bool(M&, const QJsonValue&)>;

template <class T>
bool assign(T& field, const QJsonValue& v) {
    if constexpr (std::is_same_v<T, bool>) {
        if (!v.isBool())
            return false;
        field = v.toBool();
    } else if constexpr (std::is_arithmetic_v<T>) {
        if (!v.isDouble())
            return false;
        field = static_cast<T>(v.toDouble());
    } else {
        if (!v.isString())
            return false;
        field = v.toString();
    }
    return true;
}

#define FIELD(Model, member)                                                                       \
    {                                                                                              \
#member, [](Model & m, const QJsonValue& v) { return assign(m.member, v); }                \
    }

// The scalar members that --model may override, by record.
const std::map<QString, FieldSetter<ModelTarsel>> kTarselFields = {
    FIELD(ModelTarsel, timeout),
    FIELD(ModelTarsel, maxOutputCount),
    FIELD(ModelTarsel, maxSourceCount),
    FIELD(ModelTarsel, maxOutPutBoardCount),
    FIELD(ModelTarsel, maxLayerCount),
    FIELD(ModelTarsel, maxInputBoardCount),
    FIELD(ModelTarsel, maxContainerCount),
    FIELD(ModelTarsel, viClipLeft),
    FIELD(ModelTarsel, viClipTop),
    FIELD(ModelTarsel, viClipRight),
    FIELD(ModelTarsel, viClipBottom),
    FIELD(ModelTarsel, viBright),
    FIELD(ModelTarsel, viContrast),
    FIELD(ModelTarsel, viHue),
    FIELD(ModelTarsel, viSat),
    FIELD(ModelTarsel, decoderFrame),
    FIELD(ModelTarsel, decoderCard),
    FIELD(ModelTarsel, decoderSub),
    FIELD(ModelTarsel, deviceState),
    FIELD(ModelTarsel, recallDelaySwitch),
    FIELD(ModelTarsel, recallDelayTime),
    FIELD(ModelTarsel, fanMode),
    FIELD(ModelTarsel, fanSpeed),
    FIELD(ModelTarsel, powerOnDelay),
    FIELD(ModelTarsel, logoDisplayMode),
    FIELD(ModelTarsel, operationMode),
    FIELD(ModelTarsel, operationAuxMode),
    FIELD(ModelTarsel, operationModeParam),
    FIELD(ModelTarsel, outHTotal),
    FIELD(ModelTarsel, outVTotal),
    FIELD(ModelTarsel, outHSize),
    FIELD(ModelTarsel, outVSize),
    FIELD(ModelTarsel, outHPos),
    FIELD(ModelTarsel, outVPos),
    FIELD(ModelTarsel, outPolarity),
    FIELD(ModelTarsel, outSyncWidth),
    FIELD(ModelTarsel, outColorSpace),
    FIELD(ModelTarsel, twoSplitMode),
    FIELD(ModelTarsel, usbFileIndex),
    FIELD(ModelTarsel, usbPlayTime),
    FIELD(ModelTarsel, usbPlayType),
    FIELD(ModelTarsel, usbPicPlayTotalTime),
    FIELD(ModelTarsel, usbPlayMode),
    FIELD(ModelTarsel, usbPlayState),
    FIELD(ModelTarsel, usbBankInput),
    FIELD(ModelTarsel, usbBankIndex),
    FIELD(ModelTarsel, usbBankFileIndex),
    FIELD(ModelTarsel, clockItem),
    FIELD(ModelTarsel, clockValue1),
    FIELD(ModelTarsel, clockValue2),
    FIELD(ModelTarsel, clockValue3),
    FIELD(ModelTarsel, osdScrollSwitch),
    FIELD(ModelTarsel, osdScrollSpeed),
    FIELD(ModelTarsel, previewSwitch),
    FIELD(ModelTarsel, previewRed),
    FIELD(ModelTarsel, previewGreen),
    FIELD(ModelTarsel, previewBlue),
    FIELD(ModelTarsel, previewX),
    FIELD(ModelTarsel, previewY),
    FIELD(ModelTarsel, dns),
    FIELD(ModelTarsel, maskIP),
    FIELD(ModelTarsel, ip),
    FIELD(ModelTarsel, gateWayIP),
    FIELD(ModelTarsel, dhcpSwitch),
    FIELD(ModelTarsel, allOutputsBrightness),
    FIELD(ModelTarsel, userSettingByte0),
    FIELD(ModelTarsel, userSettingByte1),
    FIELD(ModelTarsel, userSettingValue0),
    FIELD(ModelTarsel, userSettingValue1),
    FIELD(ModelTarsel, streamInputIp),
    FIELD(ModelTarsel, streamInputMask),
    FIELD(ModelTarsel, streamInputGateway),
    FIELD(ModelTarsel, streamInputPort),
    FIELD(ModelTarsel, h264DisplayPic),
};

const std::map<QString, FieldSetter<ModelScene>> kSceneFields = {
    FIELD(ModelScene, deviceType),        FIELD(ModelScene, timeout),
    FIELD(ModelScene, maxLayerCount),     FIELD(ModelScene, maxBankCount),
    FIELD(ModelScene, maxContainerCount), FIELD(ModelScene, blackSwitch),
    FIELD(ModelScene, takeSwitch),        FIELD(ModelScene, outAlphaTime),
};

const std::map<QString, FieldSetter<ModelBankPlayer>> kBankPlayerFields = {
    FIELD(ModelBankPlayer, timeout),     FIELD(ModelBankPlayer, year),
    FIELD(ModelBankPlayer, month),       FIELD(ModelBankPlayer, day),
    FIELD(ModelBankPlayer, weekday),     FIELD(ModelBankPlayer, hours),
    FIELD(ModelBankPlayer, minutes),     FIELD(ModelBankPlayer, seconds),
    FIELD(ModelBankPlayer, clockSwitch),
};

const std::map<QString, FieldSetter<Model_PommetParam>> kKeyboardFields = {
    FIELD(Model_PommetParam, waitTime),
    FIELD(Model_PommetParam, lockValue),
    FIELD(Model_PommetParam, keyboardModel),
};

#undef FIELD

template <class M>
QString applyOne(const std::map<QString, FieldSetter<M>>& fields, M& model, const QString& key,
                 const QJsonValue& value, bool& found) {
    const auto it = fields.find(key);
    if (it == fields.end())
        return QString();
    found = true;
    return it->second(model, value)
               ? QString()
               : QStringLiteral("model member %1 has a value of the wrong kind").arg(key);
}

template <class M>
QString applyAll(const std::map<QString, FieldSetter<M>>& fields, M& model,
                 const QJsonObject& values, const QString& record) {
    for (auto it = values.begin(); it != values.end(); ++it) {
        bool found = false;
        const QString error = applyOne(fields, model, it.key(), it.value(), found);
        if (!error.isEmpty())
            return error;
        if (!found)
            return QStringLiteral("%1 has no member named %2").arg(record, it.key());
    }
    return QString();
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

} // namespace

Models Models::defaults() {
    Models m;
    m.tarsel.timeout = kDefaultTimeout;
    m.tarsel.maxOutputCount = kCount;
    m.tarsel.maxSourceCount = kCount;
    m.tarsel.maxOutPutBoardCount = kBoards;
    m.tarsel.maxLayerCount = kCount;
    m.tarsel.maxInputBoardCount = kBoards;
    m.tarsel.maxContainerCount = kCount;
    // A 1080p60 output timing and a one-second alpha time, so that both DAT bytes carry data.
    m.tarsel.outHTotal = 2200;
    m.tarsel.outVTotal = 1125;
    m.tarsel.outHSize = 1920;
    m.tarsel.outVSize = 1080;
    m.tarsel.outHPos = 192;
    m.tarsel.outVPos = 41;
    m.tarsel.outSyncWidth = 44;
    m.tarsel.recallDelayTime = 5;
    for (int i = 0; i < kCount; ++i)
        m.tarsel.h264InputWorkModes.append(1);
    for (int port = 0; port < kCount; ++port) {
        m.tarsel.byPassModes.append(1);
        m.tarsel.input3DStates.append(1);
    }
    m.tarsel.dns = QStringLiteral("192.168.0.1");
    m.tarsel.maskIP = QStringLiteral("255.255.255.0");
    m.tarsel.ip = QStringLiteral("192.168.0.10");
    m.tarsel.gateWayIP = QStringLiteral("192.168.0.1");

    m.bankPlayer.timeout = kDefaultTimeout;
    m.bankPlayer.year = 2024;
    m.bankPlayer.month = 1;
    m.bankPlayer.day = 1;
    m.bankPlayer.weekday = 1;
    m.bankPlayer.hours = 12;
    for (int bank = 0; bank < kBanks; ++bank)
        m.bankPlayer.autoLoopTimes.append(1);

    m.scene.timeout = kDefaultTimeout;
    m.scene.maxLayerCount = kCount;
    m.scene.maxBankCount = kBanks;
    m.scene.maxContainerCount = kCount;
    m.keyboard.waitTime = kDefaultTimeout;
    m.keyboard.lockValue = 1;
    fillKeys(m.keyboard.keysKind1, 1);
    fillKeys(m.keyboard.keysKind2, 2);
    fillKeys(m.keyboard.keysKind3, 3);
    fillKeys(m.keyboard.keysKind5, 5);
    fillKeys(m.keyboard.keysKind6, 6);
    fillKeys(m.keyboard.keysOther, 0);
    Model_PommetParam::gOledLength = 4;

    m.scene.outAlphaTime = 1000;
    for (int s = 0; s < kCount; ++s) {
        _Scene_Layer scene;
        for (int l = 0; l < kCount; ++l)
            scene.layerList.append(defaultLayer(s, l));
        for (int b = 0; b < kBanks; ++b)
            scene.bankValues[b] = static_cast<unsigned char>(b);
        scene.backgroundIndex = static_cast<unsigned char>(s);
        m.scene.sceneList.append(scene);
    }
    addBlockDefaults(m);
    return m;
}

template <class M>
void setNumbers(const std::map<QString, FieldSetter<M>>& fields, M& model, int value) {
    for (const auto& field : fields)
        field.second(model, QJsonValue(value)); // text members refuse a number and stay
}

Models Models::withNumbers(int value) const {
    Models m = *this;
    setNumbers(kTarselFields, m.tarsel, value);
    setNumbers(kSceneFields, m.scene, value);
    setNumbers(kBankPlayerFields, m.bankPlayer, value);
    setNumbers(kKeyboardFields, m.keyboard, value);
    return m;
}

QString Models::override(const QByteArray& json) {
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &parseError);
    if (!doc.isObject())
        return QStringLiteral("model file is not a JSON object: %1").arg(parseError.errorString());
    const QJsonObject root = doc.object();
    for (auto it = root.begin(); it != root.end(); ++it) {
        QString error;
        const bool recordClass = it.key() == QLatin1String("ModelTarsel") ||
                                 it.key() == QLatin1String("ModelScene") ||
                                 it.key() == QLatin1String("ModelBankPlayer") ||
                                 it.key() == QLatin1String("Model_PommetParam");
        if (recordClass && !it.value().isObject())
            error = QStringLiteral("%1 must hold a JSON object").arg(it.key());
        else if (it.key() == QLatin1String("ModelTarsel"))
            error = applyAll(kTarselFields, tarsel, it.value().toObject(), it.key());
        else if (it.key() == QLatin1String("ModelScene"))
            error = applyAll(kSceneFields, scene, it.value().toObject(), it.key());
        else if (it.key() == QLatin1String("Model_PommetParam"))
            error = applyAll(kKeyboardFields, keyboard, it.value().toObject(), it.key());
        else if (it.key() == QLatin1String("ModelBankPlayer"))
            error = applyAll(kBankPlayerFields, bankPlayer, it.value().toObject(), it.key());
        else {
            bool found = false;
            error = applyOne(kTarselFields, tarsel, it.key(), it.value(), found);
            if (error.isEmpty())
                error = applyOne(kSceneFields, scene, it.key(), it.value(), found);
            if (error.isEmpty())
                error = applyOne(kBankPlayerFields, bankPlayer, it.key(), it.value(), found);
            if (error.isEmpty())
                error = applyOne(kKeyboardFields, keyboard, it.key(), it.value(), found);
            if (error.isEmpty() && !found)
                error = QStringLiteral("no model record has a member named %1").arg(it.key());
        }
        if (!error.isEmpty())
            return error;
    }
    return QString();
}
