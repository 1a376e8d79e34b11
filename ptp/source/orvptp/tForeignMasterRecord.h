#pragma once
#include "orvptp/tAnnounceMessage.h"

#include <memory>

namespace nOrvPTP000
{

// What is known of one foreign master: its latest Announce, and how many
// Announce messages it sent in each slot of a sliding window. The aging timer
// moves the window on by one slot each time it fires; a slot lasts
// announceReceiptTimeout announce intervals. A record with at least
// kQualificationThreshold Announce messages in the window takes part in the
// best master selection.
class tForeignMasterRecord
{
public:
    enum : u16
    {
        kWindowSlots = 4,
        kQualificationThreshold = 2
    };

    // The record of the sender of a_pMessage, with that message counted in
    // the current slot.
    tForeignMasterRecord(std::unique_ptr<tAnnounceMessage> a_pMessage,
                         nOrvTarn000::tStatus& a_status);

    tForeignMasterRecord(const tForeignMasterRecord&) = delete;
    tForeignMasterRecord& operator=(const tForeignMasterRecord&) = delete;

    // Counts a newer Announce of the same sender and keeps it in place of the
    // stored one, which is deleted. With a fatal status a_pMessage is deleted
    // and nothing changes.
    void addAnnounce(std::unique_ptr<tAnnounceMessage> a_pMessage, nOrvTarn000::tStatus& a_status);

    // Drops the oldest slot and opens an empty current one.
    void advanceWindow(nOrvTarn000::tStatus& a_status);

    // The Announce messages in the window, summed in 16 bits.
    u16 getAnnounceCount() const;
    bool isQualified() const { return getAnnounceCount() >= kQualificationThreshold; }

    const tPortIdentity& getSender() const { return m_sender; }
    // Borrowed from the record; valid until the next addAnnounce or the
    // record's end.
    tAnnounceMessage* getLastAnnounce() const { return m_pLastAnnounce.get(); }

private:
    // The table links its records through them: it owns the next one.
    friend class tForeignMasterDS;
    std::unique_ptr<tForeignMasterRecord> m_pNext;
    tForeignMasterRecord* m_pPrevious = nullptr;

    // A ring of the window's slots; m_front indexes the current one, and the
    // older slots follow it.
    u16 m_announceCounts[kWindowSlots];
    u16 m_front;
    tPortIdentity m_sender;
    std::unique_ptr<tAnnounceMessage> m_pLastAnnounce;
};

} // namespace nOrvPTP000
