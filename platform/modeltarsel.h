#pragma once

#include <QList>
#include <QString>

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

    int getMaxOutputCount() const { return maxOutputCount; }
    int getMaxSourceCount() const { return maxSourceCount; }
    int getMaxOutPutBoardCount() const { return maxOutPutBoardCount; }
    int getMaxLayerCount() const { return maxLayerCount; }
    int getMaxInputBoardCount() const { return maxInputBoardCount; }
    int getMaxContainerCount() const { return maxContainerCount; }
};
