#pragma once

#include <string>
#include <vector>

namespace mvrtpfec {

/// The program mvrtpfec with its command line in UTF-8, its own name first. Returns its exit status: 0 done,
/// 1 failed, 2 wrong usage, 3 packets were lost for good.
int runProgram(const std::vector<std::string>& arguments);

}  // namespace mvrtpfec
