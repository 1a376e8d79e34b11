// Loading and saving a source's settings file that holds every key of the
// system: the common attributes, the PTP plug-in's table, the MAC address,
// the TTL and the UTC offset flag (19 entries).
//
//   BM_IniRead           the file into an ini text
//   BM_LoadEveryKey      tStaticAttributes made (one read) and every key got
//   BM_ReadClockAttributes  tPtpClockAttributes::read, with orv_emb loaded
//                        and the device list walked for the default address
//   BM_IniWrite          an ini text written: temporary file, fsync, rename
//   BM_SaveEveryKey      tStaticAttributes made, every key put, saved
//
// The files lie below TMPDIR (ctest sets it to the build directory, on the
// disk the product would use, so that fsync costs what it costs there).
// "heap_bytes" is what the loaded text holds on the heap.
#include "tAttributeRoot.h"
#include "tIniText.h"
#include "tPtpClockAttributes.h"
#include "tStaticAttributes.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <string>

using nOrvTarn000::tStatus;
using nZelmarPtpPlugin_1_0::tPtpClockAttributes;
using zelmarPluginCore_1_0::tStaticAttributes;

namespace
{

// The value each key has in the file, as its text there.
std::string fileText(u32 a_value)
{
    return std::to_string(a_value);
}
std::string fileText(i32 a_value)
{
    return std::to_string(static_cast<u32>(a_value));
}
std::string fileText(double a_value)
{
    return std::to_string(a_value);
}
std::string fileText(bool a_value)
{
    return a_value ? "True" : "False";
}
std::string fileText(const char* a_pValue)
{
    return std::string("\"") + a_pValue + "\"";
}

std::string settingsFile()
{
    std::string lines = "[ZELMAR]\r\n";
    const auto add = [&lines](const char* a_pKey, const std::string& a_text)
    { lines += std::string("source.ptp.") + a_pKey + " = " + a_text + "\r\n"; };
#define ZM_COMMON_ATTRIBUTE(name, key, default) add(key, fileText(default));
#include "tCommonAttributes.def"
#undef ZM_COMMON_ATTRIBUTE
#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default) add(key, fileText(default));
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
    add(nZelmarPtpPlugin_1_0::kEthernetMacAddressKey, fileText("00-1B-21-AB-CD-EF"));
    add(nZelmarPtpPlugin_1_0::kMulticastMsgTTLKey, fileText(1u));
    add(nZelmarPtpPlugin_1_0::kUseUtcOffsetKey, fileText(false));
    return lines + "\r\n";
}

size_t heapInUse()
{
    return mallinfo2().uordblks;
}

// Each key read as its type, folded into a number that the optimiser must keep.
u32 readAs(tStaticAttributes& a_rFile, const char* a_pKey, u8 a_default, tStatus& a_status)
{
    return a_rFile.getU32(a_pKey, a_default, a_status);
}
u32 readAs(tStaticAttributes& a_rFile, const char* a_pKey, i8 a_default, tStatus& a_status)
{
    return static_cast<u32>(a_rFile.getI32(a_pKey, a_default, a_status));
}
u32 readAs(tStaticAttributes& a_rFile, const char* a_pKey, bool a_default, tStatus& a_status)
{
    return a_rFile.getBool(a_pKey, a_default, a_status) ? 1 : 0;
}
u32 readAs(tStaticAttributes& a_rFile, const char* a_pKey, const nOrvTarn000::tString& a_default,
           tStatus& a_status)
{
    return static_cast<u32>(a_rFile.getString(a_pKey, a_default, a_status).size());
}
u32 readAs(tStaticAttributes& a_rFile, const char* a_pKey, f64 a_default, tStatus& a_status)
{
    return static_cast<u32>(a_rFile.getF64(a_pKey, a_default, a_status) * 1000.0);
}

// Reads every key as the plug-in does, without the device walk.
u32 readEveryKey(tStaticAttributes& a_rFile, tStatus& a_status)
{
    u32 sum = 0;
#define ZM_COMMON_ATTRIBUTE(name, key, default) sum += readAs(a_rFile, key, default, a_status);
#include "tCommonAttributes.def"
#undef ZM_COMMON_ATTRIBUTE
#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default)                               \
    sum += readAs(a_rFile, key, type(default), a_status);
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
    sum += readAs(a_rFile, nZelmarPtpPlugin_1_0::kEthernetMacAddressKey, nOrvTarn000::tString(),
                  a_status);
    sum += nZelmarPtpPlugin_1_0::readMulticastMsgTTL(a_rFile, a_status);
    return sum + (nZelmarPtpPlugin_1_0::readUseUtcOffset(a_rFile, a_status) ? 1 : 0);
}

struct tFixture
{
    nTestFiles::tAttributeRoot m_root;
    std::string m_path = m_root.file("ptp");
    tFixture() { nTestFiles::writeFile(m_path, settingsFile()); }
};

void BM_IniRead(benchmark::State& a_state)
{
    tFixture fixture;
    tIniText* pText = iniNew();
    for (auto _ : a_state)
    {
        if (iniReadFromFile(pText, fixture.m_path.c_str()) != kIniSuccess)
        {
            a_state.SkipWithError("the file does not read");
            break;
        }
    }
    iniDispose(pText);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * settingsFile().size()));
}
BENCHMARK(BM_IniRead);

void BM_LoadEveryKey(benchmark::State& a_state)
{
    tFixture fixture;
    tStatus status;
    size_t heapBytes = 0;
    for (auto _ : a_state)
    {
        const size_t before = heapInUse();
        tStaticAttributes file("ptp", status);
        heapBytes = heapInUse() - before;
        benchmark::DoNotOptimize(readEveryKey(file, status));
    }
    if (status.isFatal())
    {
        a_state.SkipWithError("a key did not read");
    }
    a_state.counters["heap_bytes"] = static_cast<double>(heapBytes);
}
BENCHMARK(BM_LoadEveryKey);

void BM_ReadClockAttributes(benchmark::State& a_state)
{
    tFixture fixture;
    tStatus status;
    for (auto _ : a_state)
    {
        tStaticAttributes file("ptp", status);
        tPtpClockAttributes attributes;
        attributes.read(file, status);
        benchmark::DoNotOptimize(attributes.m_clockIdentity[0]);
    }
    if (status.isFatal())
    {
        a_state.SkipWithError("the attributes did not read");
    }
}
BENCHMARK(BM_ReadClockAttributes);

void BM_IniWrite(benchmark::State& a_state)
{
    tFixture fixture;
    tIniText* pText = iniNew();
    if (iniReadFromFile(pText, fixture.m_path.c_str()) != kIniSuccess)
    {
        a_state.SkipWithError("the file does not read");
    }
    for (auto _ : a_state)
    {
        if (iniWriteToFile(pText, fixture.m_path.c_str()) != kIniSuccess)
        {
            a_state.SkipWithError("the file does not write");
            break;
        }
    }
    iniDispose(pText);
}
BENCHMARK(BM_IniWrite)->Unit(benchmark::kMicrosecond);

void BM_SaveEveryKey(benchmark::State& a_state)
{
    tFixture fixture;
    tStatus status;
    u32 round = 0;
    for (auto _ : a_state)
    {
        tStaticAttributes file("ptp", status);
        ++round;
#define ZM_PTP_CLOCK_ATTRIBUTE(field, type, key, treatment, default)                               \
    file.putU32(key, round, status);
#include "tPtpClockAttributes.def"
#undef ZM_PTP_CLOCK_ATTRIBUTE
        file.putString(nZelmarPtpPlugin_1_0::kEthernetMacAddressKey, "00-1B-21-AB-CD-EF", status);
        file.save(status);
    }
    if (status.isFatal())
    {
        a_state.SkipWithError("the file did not save");
    }
}
BENCHMARK(BM_SaveEveryKey)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
