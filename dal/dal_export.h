#pragma once

// Marks what libDAL_Manage.so exports: the three classes of the installed headers. Everything
// else in the library is compiled with hidden visibility.
#include <QtGlobal>

#if defined(DAL_MANAGE_BUILD)
#define DAL_EXPORT Q_DECL_EXPORT
#else
#define DAL_EXPORT Q_DECL_IMPORT
#endif
