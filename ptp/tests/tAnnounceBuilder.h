#pragma once
// Announce messages as a foreign master would send them, for the best master
// tests and benchmarks. A builder starts from a default grandmaster (class
// 248, accuracy 0xFE, variance 0xFFFF, priorities 128) sending directly
// (stepsRemoved 0) from port 1, and each setter changes one field.
#include "orvptp/tAnnounceMessage.h"

#include <memory>

namespace nAnnounceTest
{

using nOrvPTP000::tAnnounceMessage;
using nOrvPTP000::tClockIdentity;
using nOrvPTP000::tClockQuality;
using nOrvPTP000::tPortIdentity;

// A clock identity whose last octet is a_last and whose first is a_first.
inline tClockIdentity clockId(u8 a_last, u8 a_first = 0x10)
{
    const u8 bytes[tClockIdentity::kLength] = {a_first, 0, 0, 0xFF, 0xFE, 0, 0, a_last};
    return tClockIdentity(bytes);
}

class tAnnounceBuilder
{
public:
    // A grandmaster a_clock that sends its own Announce from port 1.
    explicit tAnnounceBuilder(const tClockIdentity& a_clock)
        : m_sender(a_clock, 1), m_grandmaster(a_clock)
    {
    }

    tAnnounceBuilder& sender(const tPortIdentity& a_sender)
    {
        m_sender = a_sender;
        return *this;
    }
    tAnnounceBuilder& grandmaster(const tClockIdentity& a_grandmaster)
    {
        m_grandmaster = a_grandmaster;
        return *this;
    }
    tAnnounceBuilder& priority1(u8 a_value)
    {
        m_priority1 = a_value;
        return *this;
    }
    tAnnounceBuilder& clockClass(u8 a_value)
    {
        m_clockClass = a_value;
        return *this;
    }
    tAnnounceBuilder& clockAccuracy(u8 a_value)
    {
        m_clockAccuracy = a_value;
        return *this;
    }
    tAnnounceBuilder& variance(u16 a_value)
    {
        m_variance = a_value;
        return *this;
    }
    tAnnounceBuilder& priority2(u8 a_value)
    {
        m_priority2 = a_value;
        return *this;
    }
    tAnnounceBuilder& stepsRemoved(u16 a_value)
    {
        m_stepsRemoved = a_value;
        return *this;
    }
    tAnnounceBuilder& utcOffset(i16 a_value)
    {
        m_utcOffset = a_value;
        return *this;
    }
    tAnnounceBuilder& timeSource(u8 a_value)
    {
        m_timeSource = a_value;
        return *this;
    }
    // The header's time-property flags, all at once.
    tAnnounceBuilder& flags(bool a_utcOffsetValid, bool a_leap59, bool a_leap61,
                            bool a_timeTraceable, bool a_frequencyTraceable, bool a_ptpTimescale)
    {
        m_utcOffsetValid = a_utcOffsetValid;
        m_leap59 = a_leap59;
        m_leap61 = a_leap61;
        m_timeTraceable = a_timeTraceable;
        m_frequencyTraceable = a_frequencyTraceable;
        m_ptpTimescale = a_ptpTimescale;
        return *this;
    }

    // A new message; null only when memory runs out.
    std::unique_ptr<tAnnounceMessage> make() const
    {
        nOrvTarn000::tStatus status;
        std::unique_ptr<tAnnounceMessage> pMessage =
            nOrvTarn000::makeOwned<tAnnounceMessage>(status, status);
        if (status.isFatal())
        {
            return nullptr;
        }
        nOrvPTP000::tMessageHeader& header = *pMessage->getHeader();
        header.setSourcePortIdentity(m_sender, status);
        header.setCurrentUTCOffsetValid(m_utcOffsetValid, status);
        header.setLeap59(m_leap59, status);
        header.setLeap61(m_leap61, status);
        header.setTimeTraceable(m_timeTraceable, status);
        header.setFrequencyTraceable(m_frequencyTraceable, status);
        header.setPtpTimescale(m_ptpTimescale, status);
        pMessage->setGrandmasterIdentity(m_grandmaster, status);
        pMessage->setGrandmasterPriority1(m_priority1, status);
        pMessage->setGrandmasterClockQuality(
            tClockQuality(m_clockClass, m_clockAccuracy, m_variance), status);
        pMessage->setGrandmasterPriority2(m_priority2, status);
        pMessage->setStepsRemoved(m_stepsRemoved, status);
        pMessage->setCurrentUTCOffset(m_utcOffset, status);
        pMessage->setTimeSource(m_timeSource, status);
        return pMessage;
    }

private:
    tPortIdentity m_sender;
    tClockIdentity m_grandmaster;
    u8 m_priority1 = 128;
    u8 m_clockClass = 248;
    u8 m_clockAccuracy = tClockQuality::kAccuracyUnknown;
    u16 m_variance = tClockQuality::kDefaultOffsetScaledLogVariance;
    u8 m_priority2 = 128;
    u16 m_stepsRemoved = 0;
    i16 m_utcOffset = 37;
    u8 m_timeSource = 0x20;
    bool m_utcOffsetValid = true;
    bool m_leap59 = false;
    bool m_leap61 = false;
    bool m_timeTraceable = false;
    bool m_frequencyTraceable = false;
    bool m_ptpTimescale = true;
};

} // namespace nAnnounceTest
