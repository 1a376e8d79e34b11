#pragma once
// The outer face of the library zm_ptp: the six functions a host finds in it
// by their plain names. Everything the library does happens behind the time
// source that zm_ptp_getTimeSource returns; the session functions hold
// nothing, and the session argument of the property calls must be null.
//
// What the host process provides: the code of nZelmar::tTimeSourceImpl
// (exported by the host program, or a library it loaded globally), and for
// string properties the graphical runtime's handle functions (dgrt.h).
#include "iTimeSource.h"

#include <memory>
#include <stdint.h>

#define ZM_PTP_EXPORT extern "C" __attribute__((visibility("default")))

// Returns 0: there is no session to open.
ZM_PTP_EXPORT int32_t zm_ptp_openSession();
ZM_PTP_EXPORT void zm_ptp_closeSession();

// A new time source "ptp", which goes online once its first plug-in is built
// (on its own thread, after this returns): null when it cannot be made. The
// last reference destroys it. The source takes the slot that the property
// calls read; the end of any source empties it.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
ZM_PTP_EXPORT std::shared_ptr<nZelmar::iTimeSource> zm_ptp_getTimeSource();
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

// Reads the property a_key (see tZelmarPtpPropertyNode.h and
// tZelmarPropertyNode.h) into *a_pProperty: a u8 (0 or 1), u32 or f64, or for
// a string a variable that holds a graphical runtime handle or null. Returns
// 0 or a negative code: -52003 a session that is not null, -52005 a null
// a_pProperty, -52006 no source, -52010 the source is offline, -52002 an
// unknown key, -52000 the runtime has no room for the string.
ZM_PTP_EXPORT int32_t zm_ptp_getProperty(void* a_session, uint32_t a_key, void* a_pProperty);
// No property is writable: after the same checks, -52002.
ZM_PTP_EXPORT int32_t zm_ptp_setProperty(void* a_session, uint32_t a_key, void* a_pProperty);

// The module (a dlopen handle) that holds the graphical runtime; null lets
// the library look for it in the process.
ZM_PTP_EXPORT void SetDGRTModule(void* a_module);
