#pragma once
#include "orvptp/tForeignMasterRecord.h"
#include "orvtarn/quarks/tMutex.h"

#include <memory>

namespace nOrvPTP000
{

// The clocks from which the port receives Announce messages: one record per
// sender, in the order in which they first appeared. The table owns its
// records, and each record its latest Announce.
//
// Every operation holds the table's lock for its own length; begin and end
// release it again at once, so a walk over the table is not atomic. All users
// run on the dispatcher thread, which makes that safe.
class tForeignMasterDS
{
public:
    // Walks the records in order; erase moves it to the next one. Stays
    // valid while other records come and go.
    class tIterator
    {
    public:
        explicit tIterator(tForeignMasterRecord* a_pRecord = nullptr) : m_pRecord(a_pRecord) {}
        tForeignMasterRecord* operator*() const { return m_pRecord; }
        tIterator& operator++()
        {
            m_pRecord = m_pRecord->m_pNext.get();
            return *this;
        }
        bool operator==(const tIterator& a_other) const { return m_pRecord == a_other.m_pRecord; }
        bool operator!=(const tIterator& a_other) const { return m_pRecord != a_other.m_pRecord; }

    private:
        friend class tForeignMasterDS;
        tForeignMasterRecord* m_pRecord;
    };

    // Far more masters than one domain on one network ever has, and few
    // enough that the linear searches, the per-record aging timers and the
    // selection stay cheap when a peer announces from thousands of made-up
    // identities.
    enum : u32
    {
        kMaximumRecords = 64
    };

    // a_maximumRecords is for tests of the limit; the clock keeps the default.
    explicit tForeignMasterDS(nOrvTarn000::tStatus& a_status,
                              u32 a_maximumRecords = kMaximumRecords);
    ~tForeignMasterDS();
    tForeignMasterDS(const tForeignMasterDS&) = delete;
    tForeignMasterDS& operator=(const tForeignMasterDS&) = delete;

    // Counts a_pMessage in the record of its sender, or makes a new record for
    // it. 1 when a record was made, else 0. A full table refuses a new sender
    // with kStatusMemoryFull, and still counts the known ones, so that
    // strangers cannot starve the present master's record. Takes ownership of
    // the message: what is not stored is deleted. A record is linked into the
    // table through itself: only the record is allocated.
    i32 addAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, nOrvTarn000::tStatus& a_status);

    // The window count of a_sender's record; 0 for an unknown sender.
    u16 getAnnounceCount(const tPortIdentity& a_sender, nOrvTarn000::tStatus& a_status);
    // Slides the window of a_sender's record; an unknown sender is no failure.
    void advanceWindow(const tPortIdentity& a_sender, nOrvTarn000::tStatus& a_status);
    // Deletes a_sender's record; an unknown sender is no failure.
    void removeRecord(const tPortIdentity& a_sender, nOrvTarn000::tStatus& a_status);
    // Deletes every record, from the front.
    void clear(nOrvTarn000::tStatus& a_status);
    u32 getRecordCount(nOrvTarn000::tStatus& a_status);

    // Deletes the record at a_rIterator and moves the iterator to the next one.
    void erase(tIterator& a_rIterator, nOrvTarn000::tStatus& a_status);
    tIterator begin();
    tIterator end() { return tIterator(); }

private:
    tIterator find(const tPortIdentity& a_sender);
    void eraseLocked(tIterator& a_rIterator);

    std::unique_ptr<tForeignMasterRecord> m_pFirst;
    tForeignMasterRecord* m_pLast;
    u32 m_count;
    u32 m_maximumRecords;
    nOrvTarn000::tMutex m_mutex;
};

} // namespace nOrvPTP000
