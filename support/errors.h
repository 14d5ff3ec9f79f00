#pragma once

#include <exception>
#include <string>
#include <utility>

namespace mvn {

/// Base of the system's own failures.
class MorvaneException : public std::exception {
public:
    explicit MorvaneException(std::string message) : message_(std::move(message)) {}

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

/// One component's failures, told apart by type: Tag only names the component and may stay incomplete.
template <class Tag, class Base = MorvaneException>
class ExceptionTemplate : public Base {
public:
    explicit ExceptionTemplate(std::string message) : Base(message), message_(std::move(message)) {}

    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// The support library's own tags.
class Date;
class File;
class Drive;
class Text;

}  // namespace mvn
