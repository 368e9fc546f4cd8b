#pragma once

#include <QtGlobal>

#if defined(DAL_MANAGE_BUILD)
#define DAL_EXPORT Q_DECL_EXPORT
#else
#define DAL_EXPORT Q_DECL_IMPORT
#endif
