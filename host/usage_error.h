#pragma once

#include <stdexcept>

namespace mvrtpfec {

/// Arguments that can't be meant; the program ends with status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace mvrtpfec
