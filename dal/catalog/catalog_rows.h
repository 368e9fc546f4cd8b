#pragma once

// Included by a catalog unit before its operation list: every DAL_SEND row becomes a DalTarsel
// member that sends its one native command, with no data block and no text. Operations
// listed with DAL_OP are written out by hand below the list.
#include "dalTarsel.h"

// A caller's time-out lengthened by `extra` ms; wraps rather than overflows near the int limit.
inline int lengthened(int timeout, int extra) {
    return static_cast<int>(static_cast<unsigned>(timeout) + static_cast<unsigned>(extra));
}

#define DAL_SEND(name, params, timeout, cmd, dat1, dat2, dat3, dat4)                               \
    void DalTarsel::name params {                                                                  \
        f_SendCmd(timeout, cmd, dat1, dat2, dat3, dat4, nullptr, 0, QString());                    \
    }
#define DAL_OP(ret, name, params)
#define DAL_STATIC(ret, name, params)
