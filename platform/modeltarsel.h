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
};
