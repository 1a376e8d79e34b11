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

// The builder's fields: type, name (setter and member), default.
// clang-format off
#define ANNOUNCE_BUILDER_FIELDS(field)                                    \
    field(u8, priority1, 128)                                             \
    field(u8, clockClass, 248)                                            \
    field(u8, clockAccuracy, tClockQuality::kAccuracyUnknown)             \
    field(u16, variance, tClockQuality::kDefaultOffsetScaledLogVariance)  \
    field(u8, priority2, 128)                                             \
    field(u16, stepsRemoved, 0)                                           \
    field(i16, utcOffset, 37)                                             \
    field(u8, timeSource, 0x20)
// clang-format on

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
#define ANNOUNCE_BUILDER_SETTER(type, name, initial)                                               \
    tAnnounceBuilder& name(type a_value)                                                           \
    {                                                                                              \
        m_##name = a_value;                                                                        \
        return *this;                                                                              \
    }
    ANNOUNCE_BUILDER_FIELDS(ANNOUNCE_BUILDER_SETTER)
#undef ANNOUNCE_BUILDER_SETTER

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
#define ANNOUNCE_BUILDER_MEMBER(type, name, initial) type m_##name = initial;
    ANNOUNCE_BUILDER_FIELDS(ANNOUNCE_BUILDER_MEMBER)
#undef ANNOUNCE_BUILDER_MEMBER
    bool m_utcOffsetValid = true;
    bool m_leap59 = false;
    bool m_leap61 = false;
    bool m_timeTraceable = false;
    bool m_frequencyTraceable = false;
    bool m_ptpTimescale = true;
};

#undef ANNOUNCE_BUILDER_FIELDS

} // namespace nAnnounceTest
