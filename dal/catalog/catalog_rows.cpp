// Every DAL_SEND row of the operation lists becomes a DalTarsel member that sends its one
// native command, with no data block and no text.
#include "catalog_rows.h"
#include "dalTarsel.h"

using namespace rows;

// A row's parameter that the command does not carry still has its name, for the reader.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"

#define DAL_SEND(name, params, timeout, cmd, dat1, dat2, dat3, dat4)                               \
    void DalTarsel::name params {                                                                  \
        f_SendCmd(timeout, cmd, dat1, dat2, dat3, dat4, nullptr, 0, QString());                    \
    }
#include "dalTarsel.def"
#pragma GCC diagnostic pop
