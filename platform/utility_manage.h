#pragma once

#include <QJsonObject>
#include <QString>

#include <functional>

// The application's utility library as the data-access library sees it: the attached
// device's identity and a few encoding rules. The state is settable so that callers
// (tests, dalctl) can stand in for a live link; every member is safe to call from any thread.
class Utility_Manage {
public:
    static int getDeviceType();
    static int getDeviceSubType();
    static int getConnectType();
    static int getConnectToneFlag();
    static QString getToneProcVer();
    static QString getUserID();
    static QString getLocalIP();

    // The first argument is the low byte, as DAT3 carries the low byte of a length.
    static int combineTwoByte(unsigned char low, unsigned char high);
    static void setGlobalFreqByDevice(int device, double freq, unsigned char& low,
                                      unsigned char& high);
    static QString getStringFromJsonObject(const QJsonObject& obj);
    static int getInputIndexForT3(int code, int a, int b);
    static void getElementId_T9(int id, int& frame, int& card, int& sub, int& port);
    static void getCardNum_T9(int card, int port, int& frame, int& cardOut, int& sub);

    static void setDeviceType(int type);
    static void setDeviceSubType(int subType);
    static void setConnectType(int type);
    static void setConnectToneFlag(int flag);
    static void setToneProcVer(const QString& version);
    static void setUserID(const QString& id);
    static void setLocalIP(const QString& ip);
    // An empty function restores the default, which returns the code unchanged.
    static void setInputIndexForT3Resolver(std::function<int(int, int, int)> resolver);
    static void reset();
};
