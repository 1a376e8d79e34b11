#pragma once
#include "orvptp/iPTPTimekeeper.h"
#include "orvptp/iPortStateObserver.h"
#include "orvptp/iPropertyChangeObserver.h"
#include "orvptp/tPTPOrdinaryClock.h"
#include "tClientUdpNetworkInterface.h"
#include "tPropertyIdSet.h"
#include "tPtpClockAttributes.h"
#include "tPtpDeferredActions.h"
#include "tTimestampGenerator.h"
#include "tZelmarPluginBase.h"

#include <atomic>
#include <memory>

namespace nZelmarPtpPlugin_1_0
{

// The messaging and timestamps of a clock that does not run on the UDP
// network of the device its file names (a simulated network, say). Both are
// borrowed and outlive the plug-in; null members stand for the UDP network.
struct tPtpNetwork
{
    nOrvPTP000::iPTPPortMessaging* m_pMessaging = nullptr;
    nOrvPTP000::iPTPTimestampGenerator* m_pTimestampGenerator = nullptr;
};

// The PTP plug-in: one ordinary clock behind the plug-in core. It is the
// clock's time base (the host's time reference through the controller), its
// port state observer and its property change observer, and it turns:
//   - port states into deferred actions and the free-running flag: at
//     INITIALIZING the settings go into the clock, at UNCALIBRATED the port
//     may go on to SLAVE, MASTER and PASSIVE run free, SLAVE follows; FAULTY
//     or any failure here takes the whole plug-in down (goOffline), and the
//     controller builds a new one 2000 ms later;
//   - samples into the servo's time values, and the servo's time into
//     timestamps, with the master's UTC offset added when the file asks;
//   - changes made by management (context 1) into entries of the file.
//
// The clock's threads call the observer and time base operations; these
// never take the mutex, which the deferred actions and host calls hold while
// they wait for the clock.
class tZelmarPtpPlugin : public zelmarPluginCore_1_0::tZelmarPluginBase,
                         public nOrvPTP000::iPTPTimekeeper,
                         public nOrvPTP000::iPortStateObserver,
                         public nOrvPTP000::iPropertyChangeObserver,
                         public tPtpInitializeClockAction,
                         public tPtpCalibrateClockAction,
                         public tPtpPersistStateAction,
                         public tPtpUpdateUtcOffsetAction
{
public:
    // Plug-in error codes, latched before the constructor fails.
    enum : u32
    {
        kErrorNoDevice = 257,
        kErrorNoIpAddress = 258
    };
    enum : u32
    {
        kDefaultIntervalMs = 1000
    };
    // The source whose file holds the settings.
    static constexpr const char* kSourceName = "ptp";

    // Reads the settings and builds the clock on the network (without
    // starting it). No device with the file's MAC address: kErrorNoDevice
    // and -52005; one without an IPv4 address: kErrorNoIpAddress and -52010
    // (with the UDP network only). "MulticastMsgTTL" beyond 255: -52005.
    tZelmarPtpPlugin(const nOrvTarn000::tString& a_name,
                     zelmarPluginCore_1_0::iZelmarController* a_pController,
                     zelmarPluginCore_1_0::tStaticAttributes& a_rAttributes,
                     const tPtpNetwork& a_network, nOrvTarn000::tStatus& a_status);
    // Ends the clock and its threads, then takes the actions out of the queue:
    // on the deferred-action thread, or once it has ended.
    ~tZelmarPtpPlugin() override;

    tZelmarPtpPlugin(const tZelmarPtpPlugin&) = delete;
    tZelmarPtpPlugin& operator=(const tZelmarPtpPlugin&) = delete;

    void start(nOrvTarn000::tStatus& a_status) override;
    void stop() override;
    // 2 to the clock's logSyncInterval, in seconds.
    f64 getInterval(nOrvTarn000::tStatus& a_status) override;
    // The logSyncInterval nearest to a_seconds, in the clock and for the next
    // INITIALIZING; -52005 for a time that is not positive or a logarithm
    // beyond an i8.
    void setInterval(const f64& a_seconds, nOrvTarn000::tStatus& a_status) override;

    void getTime(nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status) override;
    void stepTime(const nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status) override;
    void addSample(const nOrvPTP000::tTimestamp& a_rMasterTime,
                   const nOrvPTP000::tTimestamp& a_rLocalTime,
                   nOrvTarn000::tStatus& a_status) override;
    bool isPortStateHeld() override { return false; }

    void portStateChanged(i32 a_newState, i32 a_oldState) override;
    void propertyChanged(i32 a_propertyId, i32 a_context) override;

    // The clock, for reads under the mutex (acquirePlugin); null only in a
    // plug-in whose construction failed.
    nOrvPTP000::tPTPOrdinaryClock* getPtpClock() { return m_pPtpClock.get(); }
    // The UDP device's IPv4 address in network byte order: 0 until the clock
    // has opened the network, and on any other network.
    u32 getIpAddress() const
    {
        return m_pNetworkInterface != nullptr ? m_pNetworkInterface->getIpAddress() : 0;
    }

protected:
    void initializeClock() override;
    void calibrateClock() override;
    void persistState() override;
    void updateUtcOffset() override;

private:
    zelmarPluginCore_1_0::iZelmarController& controller() { return *getController(); }
    void findDevice(nOrvTarn000::tStatus& a_status);
    // The port state as the clock holds it; 0 when it cannot be read.
    u8 readPortState(nOrvTarn000::tStatus& a_status);
    // The UTC offset in force: the master's, while the file asks for it and
    // the master says it is valid; else zero.
    zelmarPluginCore_1_0::tTimeValue getUtcOffset() const;
    // Reads one changed property from the clock into the attributes and the file.
    void persistProperty(i32 a_id, zelmarPluginCore_1_0::tStaticAttributes& a_rFile,
                         nOrvTarn000::tStatus& a_status);
    // Traces why, and asks the controller for a new plug-in.
    void fail(const char* a_pWhat, const nOrvTarn000::tStatus& a_status);

    tTimestampGenerator m_timestampGenerator;
    std::unique_ptr<tClientUdpNetworkInterface> m_pNetworkInterface;
    std::unique_ptr<nOrvPTP000::tPTPOrdinaryClock> m_pPtpClock;
    tPropertyIdSet m_changedProperties;
    tPtpClockAttributes m_clockAttributes;
    bool m_useUtcOffset;
    // Written by the UTC offset action, read by getTime on any thread.
    std::atomic<bool> m_utcOffsetValid;
    std::atomic<u32> m_utcOffsetSeconds;
};

} // namespace nZelmarPtpPlugin_1_0
