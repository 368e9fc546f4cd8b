#pragma once

#include "model_elements.h"

#include <QList>
#include <QVector>

struct _Region {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

// One layer of a scene.
struct _LayerParam_Desktop {
    _Region regionA;
    _Region regionB;
    int layerParam8 = 0;
    int layerParam9 = 0;
    int layerParam10 = 0;
    int alpha = 0;
    int order = 0; // stacking order
    int containerIndex = 0;
    int spare = 0;
    unsigned char locked = 0;
    unsigned char groupNum = 0;
    // sent only to devices of type 0xA00000
    unsigned char extraByte0 = 0;
    unsigned char extraByte1 = 0;
    unsigned char extraByte2 = 0;
};

// One scene: its layers, one byte per bank and the background it keeps.
struct _Scene_Layer {
    QVector<_LayerParam_Desktop> layerList; // holds at least getMaxLayerCount() layers
    unsigned char bankValues[16] = {};
    unsigned char backgroundIndex = 0;
};

// The scene model of one processor.
class ModelScene {
public:
    int deviceType = 0;
    QVector<_Scene_Layer> sceneList; // indexed by scene index
    // Read by the container and geometry blocks.
    QVector<QVector<_OutProperty>> outProperties;     // by group, then item
    QList<_Take_Desktop> takes;                       // per container
    QList<_InPropertyCrop_4K_60> inPropertyCrops4K60; // by input index
    int timeout = 0; // reply time-out of most scene commands, in milliseconds

    // Whole-device transitions: setBlackSwitch, setTakeSwitch, setOutAlphaTime (milliseconds).
    int blackSwitch = 0;
    int takeSwitch = 0;
    int outAlphaTime = 0;

    int maxLayerCount = 0;
    int maxBankCount = 0; // at most 16, the size of bankValues
    int maxContainerCount = 0;

    int getMaxLayerCount() const { return maxLayerCount; }
    int getMaxBankCount() const { return maxBankCount; }
    int getMaxContainerCount() const { return maxContainerCount; }
};
