// libzm_ptp.so as a host uses it: opened at run time in a program that brings
// the host's time source base, its time reference and the graphical runtime,
// and reached only through its six exports.
#include "tAttributeRoot.h"
#include "tHostString.h"
#include "tMonotonicRawTickSource.h"
#include "tSoftwareTimeReference.h"
#include "zm_ptp.h"

#include <chrono>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{

struct tLibrary
{
    template <typename tFunction>
    tFunction* find(const char* a_pName)
    {
        return reinterpret_cast<tFunction*>(dlsym(m_pHandle, a_pName));
    }

    // Every symbol resolved now: the process provides all the library lacks.
    void* m_pHandle = dlopen(ZM_PTP_LIBRARY, RTLD_NOW | RTLD_LOCAL);
#define ZM_TEST_EXPORT(name) decltype(&::name) name = find<decltype(::name)>(#name)
    ZM_TEST_EXPORT(zm_ptp_openSession);
    ZM_TEST_EXPORT(zm_ptp_closeSession);
    ZM_TEST_EXPORT(zm_ptp_getTimeSource);
    ZM_TEST_EXPORT(zm_ptp_getProperty);
    ZM_TEST_EXPORT(zm_ptp_setProperty);
    ZM_TEST_EXPORT(SetDGRTModule);
#undef ZM_TEST_EXPORT
};

// Every key the library knows reads a_known, every other key a_unknown, and
// every set fails with a_set; nothing is written.
void expectCodes(tLibrary& a_rLibrary, i32 a_known, i32 a_unknown, i32 a_set)
{
    std::vector<std::pair<u32, i32>> keys = {{0, a_unknown},       {1, a_unknown},
                                             {0x10008, a_unknown}, {0x10FFF, a_unknown},
                                             {0x11011, a_unknown}, {0xFFFFFFFF, a_unknown}};
    for (u32 key = 0x10000; key <= 0x11010; key = key == 0x10007 ? 0x11000 : key + 1)
    {
        keys.emplace_back(key, a_known);
    }
    for (const auto& row : keys)
    {
        u64 value = 0;
        EXPECT_EQ(row.second, a_rLibrary.zm_ptp_getProperty(nullptr, row.first, &value))
            << std::hex << row.first;
        EXPECT_EQ(a_set, a_rLibrary.zm_ptp_setProperty(nullptr, row.first, &value));
        EXPECT_EQ(0u, value);
    }
}

TEST(ZmPtpLibraryTest, PropertyCallsFollowTheSourcesLife)
{
    nTestFiles::tAttributeRoot root;
    // No device has this address: a source stays offline.
    root.writeEntries("ptp", "source.ptp.EthernetMacAddress = 02-00-5e-7a-7a-01\r\n");
    tLibrary library;
    ASSERT_NE(nullptr, library.m_pHandle) << dlerror();
    EXPECT_EQ(0, library.zm_ptp_openSession());
    library.zm_ptp_closeSession();
    library.zm_ptp_closeSession();
    EXPECT_EQ(0, library.zm_ptp_openSession());
    library.SetDGRTModule(nullptr);

    int session = 0;
    u32 value = 0;
    EXPECT_EQ(-52003, library.zm_ptp_getProperty(&session, 0x11001, &value));
    EXPECT_EQ(-52005, library.zm_ptp_getProperty(nullptr, 0x11001, nullptr));
    EXPECT_EQ(-52003, library.zm_ptp_setProperty(&session, 0x11001, nullptr));
    expectCodes(library, -52006, -52006, -52006);
    {
        std::shared_ptr<nZelmar::iTimeSource> pFirst = library.zm_ptp_getTimeSource();
        ASSERT_NE(nullptr, pFirst);
        EXPECT_FALSE(pFirst->isOnline());
        expectCodes(library, -52010, -52002, -52002);
        // A second source takes the slot; the end of either empties it.
        std::shared_ptr<nZelmar::iTimeSource> pSecond = library.zm_ptp_getTimeSource();
        pFirst.reset();
        EXPECT_EQ(-52006, library.zm_ptp_getProperty(nullptr, 0x11001, &value));
    }
    expectCodes(library, -52006, -52006, -52006);
    std::shared_ptr<nZelmar::iTimeSource> pAgain = library.zm_ptp_getTimeSource();
    expectCodes(library, -52010, -52002, -52002);
}

template <typename tCondition>
bool waitFor(tCondition a_condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(40);
    while (!a_condition() && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return a_condition();
}

// Run by zm_ptp_library_netns_test.sh in a namespace, on the device ZM_TEST_MAC
// with ZM_TEST_ADDRESS, beside a better master of ZM_TEST_MASTER_IDENTITY.
TEST(ZmPtpLibraryTest, OnItsDeviceTheSourceFollowsAMasterAndReadsBack)
{
    const char* const pMac = getenv("ZM_TEST_MAC");
    const char* const pAddress = getenv("ZM_TEST_ADDRESS");
    const char* const pMasterIdentity = getenv("ZM_TEST_MASTER_IDENTITY");
    if (pMac == nullptr || pAddress == nullptr || pMasterIdentity == nullptr)
    {
        GTEST_SKIP() << "runs in the namespace that zm_ptp_library_netns_test.sh makes";
    }
    nTestFiles::tAttributeRoot root;
    root.writeEntries("ptp", std::string("source.ptp.EthernetMacAddress = ") + pMac + "\r\n");
    tLibrary library;
    nOrvTarn000::tStatus status;
    nZelmar::tMonotonicRawTickSource ticks(status);
    nZelmar::tSoftwareTimeReference reference(ticks, 0, status);
    std::shared_ptr<nZelmar::iTimeSource> pSource = library.zm_ptp_getTimeSource();
    ASSERT_TRUE(waitFor([&] { return pSource->isOnline(); }));
    pSource->attachTimeReference(&reference);
    u32 portState = 0;
    EXPECT_TRUE(waitFor(
        [&] {
            return library.zm_ptp_getProperty(nullptr, 0x11001, &portState) == 0 && portState == 8;
        }));
    // One host string variable for both.
    DGHandle handle = nullptr;
    EXPECT_EQ(0, library.zm_ptp_getProperty(nullptr, 0x11000, &handle));
    EXPECT_EQ(pAddress, textOf(handle));
    EXPECT_EQ(0, library.zm_ptp_getProperty(nullptr, 0x11007, &handle));
    EXPECT_EQ(pMasterIdentity, textOf(handle));
    DGDisposeHandle(handle);
    pSource->detachTimeReference();
    EXPECT_EQ(0, status.getCode());
}

} // namespace
