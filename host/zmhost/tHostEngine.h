#pragma once
#include "tCommandLine.h"
#include "tExitCodes.h"
#include "tOutput.h"
#include "tPluginLibrary.h"

#include <signal.h>

namespace nZmHost
{

// The host's side of the time source, as the host engine plays it: opens a
// session, takes the library's time source, attaches the host clock each
// time the source comes online (told through the source's trigger, acted on
// by the host's own thread), watches the port state, the synchronized flag
// and the grandmaster every 100 ms and reads the whole status at each change
// and each second; at the end detaches, drops the source and closes the
// session.
class tHostEngine
{
public:
    tHostEngine(const tOptions& a_rOptions, tPluginLibrary& a_rLibrary, tOutput& a_rOutput)
        : m_rOptions(a_rOptions), m_rLibrary(a_rLibrary), m_rOutput(a_rOutput)
    {
    }

    // Runs until one of a_signals (blocked in every thread) other than
    // SIGUSR1 arrives, or until the duration is over: kExitStopped. SIGUSR1
    // writes a "resources" event. kExitRefused when the library gives no
    // source or the source is not online before the start timeout;
    // kExitFailure when the system's clocks or descriptors fail.
    tExitCode run(const sigset_t& a_signals);

private:
    const tOptions& m_rOptions;
    tPluginLibrary& m_rLibrary;
    tOutput& m_rOutput;
};

} // namespace nZmHost
