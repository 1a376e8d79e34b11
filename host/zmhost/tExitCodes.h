#pragma once

namespace nZmHost
{

enum tExitCode : int
{
#define ZMHOST_EXIT_CODE(name, code, meaning) name = code,
#include "tExitCodes.def"
#undef ZMHOST_EXIT_CODE
};

} // namespace nZmHost
