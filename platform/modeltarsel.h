#pragma once

#include "model_elements.h"

#include <QList>
#include <QString>
#include <QVector>

// The device model of one processor, as far as the data-access library reads it.
// Each count accessor is backed by a public member that the application sets.
class ModelTarsel {
public:
    virtual ~ModelTarsel() = default;

    int timeout = 0; // reply time-out of most commands, in milliseconds

    int maxOutputCount = 0;
    int maxSourceCount = 0;
    int maxOutPutBoardCount = 0;
    int maxLayerCount = 0;
    int maxInputBoardCount = 0;
    int maxContainerCount = 0;

    // System settings: setDeviceState, setDelay_Recall, setFanSpeed, setDelay_PowerON,
    // setLogoDisplayMode, setOperationMode, setH264InputWorkMode (indexed by input).
    int deviceState = 0;
    int recallDelaySwitch = 0;
    int recallDelayTime = 0;
    int fanMode = 0;
    int fanSpeed = 0;
    int powerOnDelay = 0;
    int logoDisplayMode = 0;
    int operationMode = 0;
    int operationAuxMode = 0;
    int operationModeParam = 0;
    QList<int> h264InputWorkModes;

    // Advanced output timing and split mode: setAdvancedTimingOut*, setTwoSpliteMode.
    int outHTotal = 0;
    int outVTotal = 0;
    int outHSize = 0;
    int outVSize = 0;
    int outHPos = 0;
    int outVPos = 0;
    int outPolarity = 0;
    int outSyncWidth = 0;
    int outColorSpace = 0;
    int twoSplitMode = 0;
    // USB playback settings (CMD 0x77, DAT1 0x24..0x32)
    int usbFileIndex = 0;
    int usbPlayTime = 0;
    int usbPlayType = 0;
    int usbPicPlayTotalTime = 0;
    int usbPlayMode = 0;
    int usbPlayState = 0;
    int usbBankInput = 0;
    int usbBankIndex = 0;
    int usbBankFileIndex = 0;
    // Per-input bypass mode and 3D state, by input port (CMD 0x77, DAT1 0x40 and 0x42)
    QList<unsigned char> byPassModes;
    QList<unsigned char> input3DStates;
    // Equipment clock item and its three values (CMD 0x8B, setEquipmentClock)
    int clockItem = 0;
    int clockValue1 = 0;
    int clockValue2 = 0;
    int clockValue3 = 0;
    // Preview OSD scroll, switch, colour and position (CMD 0xA0)
    int osdScrollSwitch = 0;
    int osdScrollSpeed = 0;
    int previewSwitch = 0;
    int previewRed = 0;
    int previewGreen = 0;
    int previewBlue = 0;
    int previewX = 0;
    int previewY = 0;
    // Network settings as dotted addresses, and the DHCP switch (CMD 0x82..0x8E)
    QString dns;
    QString maskIP;
    QString ip;
    QString gateWayIP;
    int dhcpSwitch = 0;
    // Read by the container, 4K60 input, output-port, LCD-border and DSK blocks.
    QList<_InProperty_4K_60> inProperty4K60;    // by input index
    QList<_DSKInfo> dskInfoList;                // setDskInfo
    QVector<_DSKInfo> layerDskInfos;            // per layer: setLayerDSKInfo, setMultiLayerDSKInfo
    QList<_OutPortParam_Desktop> outPortParams; // per output
    QList<_ContainerParam_Destktop> containerParams; // per container
    QList<_LcdBorderSetting> lcdBorders;             // per output
    QList<_DeInfo> deInfos; // per output, then one entry for all outputs together

    // Read by the test-pattern, brightness, 3D and preview-port commands (per output).
    QList<int> testPatternModes;
    QList<int> testPatternColor1;
    QList<int> testPatternColor2;
    QList<int> testPatternColor3;
    QList<int> outputBrightness;
    int allOutputsBrightness = 0;
    QList<unsigned char> output3DStates;
    QList<int> previewPorts;

    // Read by the data-block setters of CMD 0xF0 (setUserSetting, setLoopToSignal,
    // seth264inputip, setH265InputIpInfo, setH264InputDisplayPic, setHotBackup).
    unsigned char userSettingByte0 = 0;
    unsigned char userSettingByte1 = 0;
    int userSettingValue0 = 0;
    int userSettingValue1 = 0;
    unsigned char loopToSignal[16] = {}; // one signal per loop output
    QString streamInputIp;               // dotted IPv4 texts
    QString streamInputMask;
    QString streamInputGateway;
    int streamInputPort = 0;
    int h264DisplayPic = 0;
    QList<_HotBackData> hotBackups;

    int getMaxOutputCount() const { return maxOutputCount; }
    int getMaxSourceCount() const { return maxSourceCount; }
    int getMaxOutPutBoardCount() const { return maxOutPutBoardCount; }
    int getMaxLayerCount() const { return maxLayerCount; }
    int getMaxInputBoardCount() const { return maxInputBoardCount; }
    int getMaxContainerCount() const { return maxContainerCount; }

    // Read by setViClipForT9, setViPropertyForT9 and setH265InfoForT9 (T9 direct commands).
    int viClipLeft = 0;
    int viClipTop = 0;
    int viClipRight = 0;
    int viClipBottom = 0;
    int viBright = 0;
    int viContrast = 0;
    int viHue = 0;
    int viSat = 0;
    int decoderFrame = 0;
    int decoderCard = 0;
    int decoderSub = 0;
    QString decoderIp;
    QString decoderGateway;
    QString decoderMask;
    QString decoderDns1;
};
