#pragma once

#include <exception>
#include <string>

namespace mvrtpfec {

/// The text of the exception that the operation throws, or "none".
template <class Operation>
std::string messageOf(Operation operation) {
    try {
        operation();
        return "none";
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace mvrtpfec
