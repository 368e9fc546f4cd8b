#pragma once

// Element records of the model lists that the data-block commands read. Members keep the
// record order of the model library; positions that no command reads keep their slot so
// that the named members stay at their positions.

// One container of a processor (setContainerParam).
struct _ContainerParam_Destktop {
    int containerParam0 = 0;
    int containerParam1 = 0;
    int containerParam2 = 0;
    int containerParam3 = 0;
    int containerParam4 = 0;
    int containerParam5 = 0; // not sent
    int containerParam6 = 0; // not sent
    int containerParam7 = 0; // not sent
    int containerParam8 = 0; // not sent
    int containerParam9 = 0;
    int containerMode = 0;
    int containerParam11 = 0;
    int containerParam12 = 0;
};

// One container's transition settings in a scene (the per-container take commands).
struct _Take_Desktop {
    float alphaTime = 0.0f; // seconds
    unsigned char takeValue0 = 0;
    unsigned char blackValue = 0;
    unsigned char takeValue1 = 0;
    unsigned char takeValue2 = 0;
};

// Output property record; setCurrSceneLayerXYWHR reads members 23 to 28.
struct _OutProperty {
    int unread0to22[23] = {};
    int outProp23 = 0;
    int outProp24 = 0;
    int outProp25 = 0;
    int outProp26 = 0;
    int outProp27 = 0;
    int outProp28 = 0;
    int outProp29 = 0; // not sent
};

// Input property of a 4K60 input: members 0 to 12 (set4k60InputProperty).
struct _InProperty_4K_60 {
    int member[13] = {};
};

// Crop of a 4K60 input: members 0 to 11 (set4k60CropInfo).
struct _InPropertyCrop_4K_60 {
    int member[12] = {};
};

// Output port parameters (setOutPortCfgMs, setOutPortRotate).
struct _OutPortParam_Desktop {
    int portParam0 = 0;
    int portParam1 = 0;
    int portParam2 = 0;
    int portParam3 = 0;
    int portParam4 = 0;
    int portParam5 = 0; // not sent
    int portParam6 = 0; // not sent
    int portRotation = 0;
};

// Border compensation of an output (setLcdBorderSetting).
struct _LcdBorderSetting {
    int border0 = 0;
    int border1 = 0;
    int border2 = 0;
    int border3 = 0;
};

// One DSK entry: members 0 to 9, each sent as its low byte.
struct _DSKInfo {
    int member[10] = {};
};

// Data-enable timing and signal settings of one output (the DE commands).
struct _DeInfo {
    int deSwitch = 0;
    int deX = 0;
    int deY = 0;
    int deWidth = 0;
    int deHeight = 0;
    int deOutputMode = 0;
    int deOutputSignal = 0;
    int deDataRange = 0;
    int deColorSpace = 0;
    int dePolarity1 = 0;
    int dePolarity2 = 0;
};

// One hot-backup pair (setHotBackup): sent as three bytes in this order.
struct _HotBackData {
    int source = 0;
    int backupSource = 0;
    int enabled = 0;
};
