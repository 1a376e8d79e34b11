// Host strings in the graphical runtime's handles, and how the library finds
// the runtime: this program does not link it, so it has none until it loads
// the stand-in.
#include "tDiagraRuntime.h"
#include "nDiagraTools.h"
#include "tHostString.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>

namespace
{

// a_length: the text's own length unless given.
i32 copy(const std::string& a_text, DGHandle& a_rHandle, u32 a_length = 0)
{
    nOrvTarn000::tStatus status;
    nDiagraTools::copyToHostString(a_text.data(),
                                   a_length > 0 ? a_length : static_cast<u32>(a_text.size()),
                                   &a_rHandle, status);
    return status.getCode();
}

TEST(DiagraRuntimeTest, WithoutTheRuntimeOrItsFunctionTheProcessEnds)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    DGHandle handle = nullptr;
    EXPECT_EXIT(copy("ptp", handle), testing::ExitedWithCode(1),
                "Fatal Error: DIAGRA\\.LIB was not called from a Diagra process\\.");
    // The program itself, named as the runtime, lacks the functions.
    nDiagraTools::setRuntimeModule(dlopen(nullptr, RTLD_NOW));
    EXPECT_EXIT(copy("ptp", handle), testing::ExitedWithCode(1),
                "Fatal Error: DIAGRA\\.LIB could not locate \"DGNewHandleClear\"\\.");
    nDiagraTools::setRuntimeModule(nullptr);
}

TEST(DiagraRuntimeTest, AStringGoesIntoAHandleMadeOnceThenResized)
{
    // Loaded without its symbols for others: found by its library name.
    void* const pRuntime = dlopen(ZM_TEST_DGRT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, pRuntime) << dlerror();
    DGHandle handle = nullptr;
    ASSERT_EQ(0, copy("020000fffe000042", handle));
    const DGHandle made = handle;
    EXPECT_EQ("020000fffe000042", textOf(handle));
    for (const std::string text : {"ptp", "", "169.254.100.1"})
    {
        EXPECT_EQ(0, copy(text, handle));
        EXPECT_EQ(made, handle);
        EXPECT_EQ(text, textOf(handle));
    }
    // A string longer than a block may be: refused, and nothing copied.
    DGHandle none = nullptr;
    EXPECT_EQ(-52000, copy("ptp", none, 0x7FFFFFFF));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(-52000, copy("ptp", handle, 0x7FFFFFFF));
    EXPECT_EQ("169.254.100.1", textOf(handle));
    reinterpret_cast<void (*)(DGHandle)>(dlsym(pRuntime, "DGDisposeHandle"))(handle);
}

} // namespace
