/*
 * TrovVersion.h - the library's version, and the names of its result codes.
 *
 * The version macros are the version a host compiled against; TROV_GetVersion
 * reports the version of the library actually loaded, so a host can check
 * the DLL or shared object it got. The macros below are the one place the
 * version is written: the build, the CMake package and the pkg-config file
 * take it from here. Plain C.
 */
#ifndef TROVVERSION_H
#define TROVVERSION_H

#include <stdint.h>

#include "TrovCodec.h"

#define TROV_VERSION_MAJOR 1
#define TROV_VERSION_MINOR 0
#define TROV_VERSION_PATCH 0
#define TROV_VERSION_STRING "1.0.0"
/* The three parts in one number: 0x00MMmmpp. */
#define TROV_VERSION ((TROV_VERSION_MAJOR << 16) | (TROV_VERSION_MINOR << 8) | TROV_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* The loaded library's TROV_VERSION. A host built against another major
 * version should not use the library. */
TROV_API uint32_t TROV_GetVersion(void);

/* The name of a result code, as its TROV_RESULT_ constant spells it without
 * the prefix ("SHORT_INPUT"); "UNKNOWN" for a value that is not one. The
 * strings are static and never freed. */
TROV_API const char *TROV_ResultName(TrovResult result);

/* A one-line meaning of a result code ("the packet ends before the item, or
 * a length disagrees"); for a value that is not one, a line saying so. */
TROV_API const char *TROV_ResultMeaning(TrovResult result);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* TROVVERSION_H */
