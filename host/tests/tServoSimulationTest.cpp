#include "tServoSimulation.h"

#include <gtest/gtest.h>

using namespace nZelmar;

namespace
{

// Bounds measured over 1200 samples with a margin: the source synchronises
// after about 205 samples and the error settles below 10 us after about 405
// (noise 0 and 1 us) or below 50 us after about 320 (noise 20 us). Steady
// state p95 and maximum were 0.06 and 0.15 us, 0.44 and 0.63 us, 8.8 and
// 10.7 us for the three noises.
struct tNoiseBounds
{
    f64 m_noise;
    f64 m_settleBound;
    u32 m_settleSamples;
    f64 m_p95;
    f64 m_maximum;
};

const tNoiseBounds kNoises[] = {
    {0.0, 10e-6, 480, 0.5e-6, 1e-6},
    {1e-6, 10e-6, 480, 1.5e-6, 3e-6},
    {20e-6, 50e-6, 400, 15e-6, 25e-6},
};

TEST(ServoSimulation, ConvergesFromFiftyMillisecondsAndAHundredPpmAndStaysSynchronized)
{
    for (const tNoiseBounds& bounds : kNoises)
    {
        for (const f64 offset : {0.05, -0.05})
        {
            for (const f64 frequencyError : {100e-6, -100e-6})
            {
                SCOPED_TRACE(testing::Message() << "offset " << offset << " error "
                                                << frequencyError << " noise " << bounds.m_noise);
                const tServoRun run =
                    simulateServo({offset, frequencyError, bounds.m_noise, 1200, 1});
                EXPECT_EQ(0u, run.m_failedSamples) << run.m_firstFailure;
                EXPECT_LE(samplesUntilSynchronized(run), 260u);
                EXPECT_LE(samplesUntilWithin(run, bounds.m_settleBound), bounds.m_settleSamples);
                EXPECT_LE(steadyStateQuantile(run, 0.95), bounds.m_p95);
                EXPECT_LE(steadyStateQuantile(run, 1.0), bounds.m_maximum);
            }
        }
    }
}

} // namespace
