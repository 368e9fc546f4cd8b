// Turns the entries of an operation list into "<< signature" items; see completeness.h.
#define DAL_SEND(name, params, ...) << QStringLiteral(#name #params)
#define DAL_OP(ret, name, params) << QStringLiteral(#name #params)
#define DAL_STATIC(ret, name, params) << QStringLiteral(#name #params)
