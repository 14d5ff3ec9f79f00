#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace mvrtpfec {

/// What was called, in order.
using Journal = std::vector<std::string>;

/// That these calls came in this order, whatever came between.
inline void expectOrder(const Journal& journal, const Journal& calls) {
    auto at = journal.begin();
    for (const std::string& call : calls) {
        at = std::find(at, journal.end(), call);
        ASSERT_NE(at, journal.end()) << call;
    }
}

}  // namespace mvrtpfec
