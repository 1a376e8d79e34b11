#pragma once
#include "iZelmarController.h"

namespace zelmarPluginCore_1_0
{

class tZelmarSource;

// One host property call: a node lives on the stack of that call. It finds
// the source in the registry, turns a numeric key into one typed read and
// unlocks all it locked when it goes. This class serves the keys every
// plug-in has; a plug-in adds a range of its own with a derived class, whose
// operations leave a key they don't know to this one.
//
// Host key = key base + local key. Times are cut to whole nanoseconds. No
// property is writable.
//
// Locks, held from construction to destruction and both by the thread that
// made the node: the registry's, then (from the first getPlugin on) the
// controller's.
class tZelmarPropertyNode
{
public:
    // What a key holds.
    enum : u32
    {
        kKindUnknown = 0,
        kKindBool = 1,
        kKindU32 = 2,
        kKindF64 = 3,
        kKindString = 4
    };

    // The local keys of every plug-in, with their kinds.
    enum : i32
    {
        kKeyName = 0,                     // string
        kKeyErrorCode = 1,                // u32, cleared by the read
        kKeySynchronized = 2,             // bool
        kKeySynchronizationChanged = 3,   // bool, since the last read, cleared by it
        kKeySynchronizationThreshold = 4, // f64, s
        kKeyInterval = 5,                 // f64, s
        kKeyOffset = 6,                   // f64, s
        kKeyTimeReferenceCorrection = 7   // f64, s
    };

    // Enters the registry: kStatusNotAvailable without a source.
    explicit tZelmarPropertyNode(tStatus& a_status);
    // Releases the plug-in, if acquired, then the registry.
    virtual ~tZelmarPropertyNode();

    tZelmarPropertyNode(const tZelmarPropertyNode&) = delete;
    tZelmarPropertyNode& operator=(const tZelmarPropertyNode&) = delete;

    // Reads the key's value through a_pProperty: a u8 (0 or 1), u32 or f64,
    // or for a string the caller's host string handle variable
    // (nDiagraTools). An unknown key: kStatusNotSupported. A null
    // a_pProperty: kStatusInvalidArgument.
    void getProperty(u32 a_key, void* a_pProperty, tStatus& a_status);
    // Every key: kStatusNotSupported (after the same checks as a read).
    void setProperty(u32 a_key, void* a_pProperty, tStatus& a_status);

    // The plug-in, held with the controller's mutex until the node goes;
    // offline: null and kStatusInvalidState.
    iZelmarPlugin* getPlugin(tStatus& a_status);

protected:
    virtual u32 getKeyBase() { return 0; }
    virtual u32 getKeyKind(i32 a_localKey);
    // Each reads a key of its kind (kStatusNotSupported for any other) and
    // writes the value only on a clean status.
    virtual void getBool(i32 a_localKey, u8* a_pValue, tStatus& a_status);
    virtual void getU32(i32 a_localKey, u32* a_pValue, tStatus& a_status);
    virtual void getF64(i32 a_localKey, f64* a_pValue, tStatus& a_status);
    virtual void getString(i32 a_localKey, void* a_pValue, tStatus& a_status);

private:
    // The local key of a_key, for a call that may go on: false on a fatal
    // status or a null a_pProperty (kStatusInvalidArgument).
    bool findLocalKey(u32 a_key, void* a_pProperty, i32& a_rLocalKey, tStatus& a_status);

    tZelmarSource* m_pSource;
    iZelmarController* m_pController;
    iZelmarPlugin* m_pPlugin;
};

// Writes a_value through a_pValue when a_status is clean.
template <typename tValue>
void writeProperty(tValue* a_pValue, const tValue& a_value, const tStatus& a_status)
{
    if (a_status.isNotFatal())
    {
        *a_pValue = a_value;
    }
}

} // namespace zelmarPluginCore_1_0
