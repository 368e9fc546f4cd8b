#pragma once

#include <QString>
#include <QList>

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
