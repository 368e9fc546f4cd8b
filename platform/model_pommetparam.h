#pragma once

#include <QVector>

// One key of the control keyboard as its parameter record stores it: 101 bytes, of which the
// keyboard commands read the LED bytes, the label attributes, the three label lengths and the
// three label lines at fixed positions.
struct _KeyParam {
    unsigned char bytes[101] = {};
};

// The control keyboard's parameter record, as far as the keyboard commands read it.
class Model_PommetParam {
public:
    int waitTime = 0;            // reply time-out of simple commands, in milliseconds
    unsigned char lockValue = 0; // the state setLockStatus sends
    int keyboardModel = 0;       // 605: the kind-2 groups hold 13 keys instead of 16

    // One table per key kind, 16 entries per group; other kinds share one flat table.
    QVector<_KeyParam> keysKind1 = QVector<_KeyParam>(5 * 16);
    QVector<_KeyParam> keysKind2 = QVector<_KeyParam>(5 * 16);
    QVector<_KeyParam> keysKind3 = QVector<_KeyParam>(10 * 16);
    QVector<_KeyParam> keysKind5 = QVector<_KeyParam>(5 * 16);
    QVector<_KeyParam> keysKind6 = QVector<_KeyParam>(5 * 16);
    QVector<_KeyParam> keysOther = QVector<_KeyParam>(600);

    static int gOledLength; // label length of the fixed label layout
};
