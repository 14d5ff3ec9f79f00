#include "selftest/test.h"

namespace mvrtpfec {

bool ITest::run(std::ostream&) {
    return true;
}

std::string ITest::getExpectedError() {
    return {};
}

}  // namespace mvrtpfec
