#pragma once

namespace mvrtpfec {

/// The program mvrtpfec. Returns its exit status: 0 done, 1 failed, 2 wrong usage.
int runProgram(int argc, char** argv);

}  // namespace mvrtpfec
