#pragma once
#include "orvptp/iPTPOrdinaryClock.h"
#include "orvptp/tPTPNode.h"

namespace nOrvPTP000
{

class iPropertyChangeObserver;

// The thread-safe front of the PTP engine: one node, reached only through
// its dispatcher. The order of use that keeps a user's settings: construct;
// add the observers and switch the external checks on (they survive a
// start); start; at each INITIALIZING write the settings (a start puts the
// data sets back to their initial values), then postInitializedCheck; at
// UNCALIBRATED postMasterClockSelectedCheck; stop; destroy.
class tPTPOrdinaryClock : public iPTPOrdinaryClock
{
public:
    tPTPOrdinaryClock(iPTPPortMessaging* a_pMessaging,
                      iPTPTimestampGenerator* a_pTimestampGenerator, iPTPTimekeeper* a_pTimekeeper,
                      const u8* a_pClockIdentity, tStatus& a_status);
    // The same on a given time base for the timers and the engine's waits.
    tPTPOrdinaryClock(iPTPPortMessaging* a_pMessaging,
                      iPTPTimestampGenerator* a_pTimestampGenerator, iPTPTimekeeper* a_pTimekeeper,
                      const u8* a_pClockIdentity, nOrvTarn000::iClock& a_rClock, tStatus& a_status);
    // Stops the clock, then its node goes with its threads.
    ~tPTPOrdinaryClock() override;
    tPTPOrdinaryClock(const tPTPOrdinaryClock&) = delete;
    tPTPOrdinaryClock& operator=(const tPTPOrdinaryClock&) = delete;

    void startClock(tStatus& a_status) override;
    void stopClock(tStatus& a_status) override;

#define ORVPTP_CLOCK_GETTER(Name, id)                                                              \
    typename tNodeProperty<id>::tValue get##Name() override                                        \
    {                                                                                              \
        tStatus getStatus;                                                                         \
        return m_node.readProperty<id>(getStatus);                                                 \
    }
#define ORVPTP_CLOCK_SETTER(Name, id)                                                              \
    void set##Name(typename tNodeProperty<id>::tValue a_value, tStatus& a_status) override         \
    {                                                                                              \
        m_node.writeProperty<id>(a_value, a_status);                                               \
    }
    ORVPTP_CLOCK_GETTERS(ORVPTP_CLOCK_GETTER)
    ORVPTP_CLOCK_SETTERS(ORVPTP_CLOCK_SETTER)
#undef ORVPTP_CLOCK_GETTER
#undef ORVPTP_CLOCK_SETTER

    void getUserDescription(char* a_pName, char* a_pLocation, tStatus& a_status) override;
    void setUserDescription(const char* a_pName, const char* a_pLocation,
                            tStatus& a_status) override;
    void getManufacturerIdentity(u8* a_pBytes, tStatus& a_status) override;
    void setManufacturerIdentity(const u8* a_pBytes, tStatus& a_status) override;
    void getPortAddress(u16* a_pProtocol, u16* a_pLength, u8* a_pBytes, tStatus& a_status) override;
    void setPortAddress(u16 a_protocol, u16 a_length, const u8* a_pBytes,
                        tStatus& a_status) override;
    void addPortStateObserver(iPortStateObserver* a_pObserver) override;
    void removePortStateObserver(iPortStateObserver* a_pObserver) override;
    void designatePortDisabled(tStatus& a_status) override;
    void designatePortEnabled(tStatus& a_status) override;
    void signalFaultDetected(tStatus& a_status) override;
    void signalFaultCleared(tStatus& a_status) override;
    void signalSyncFault(tStatus& a_status) override;
    void initializePort(tStatus& a_status) override;

    // For the plug-in that holds the clock.
    void setClockClass(u8 a_value, tStatus& a_status);
    void setPhysicalAddress(const u8* a_pBytes, u16 a_length, tStatus& a_status);
    void setProductDescription(const char* a_pManufacturerName, const char* a_pModelNumber,
                               const char* a_pInstanceIdentifier, tStatus& a_status);
    void addPropertyChangeObserver(iPropertyChangeObserver* a_pObserver);
    void setExternalChecks(bool a_on, tStatus& a_status);
    void postInitializedCheck(tStatus& a_status);
    void postMasterClockSelectedCheck(tStatus& a_status);

    // The node, for code that already runs on its dispatcher thread.
    tPTPNode& getNode()
    {
        return m_node;
    }

private:
    void initialize(tStatus& a_status);

    tPTPNode m_node;
};

} // namespace nOrvPTP000
