#pragma once

#include <string>

#include "selftest/test.h"

namespace mvrtpfec {

/// The suite "LibRtp" over the files of a directory, whose path ends with a separator. The first file's name
/// has a separator of its own.
TestSuite libRtpSuite(const std::string& directory);

/// The same tests over the sample streams that come with the program.
TestSuite samplesSuite(const std::string& directory);

/// Runs one test and tells the outcome; true when it went as it should.
bool runTest(ITest& test, std::ostream& out);

}  // namespace mvrtpfec
