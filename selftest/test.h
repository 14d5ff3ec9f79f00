#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace mvrtpfec {

/// One self test.
class ITest {
public:
    virtual ~ITest() = default;

    /// Writes what it has to say to `out`; true when it passed.
    virtual bool run(std::ostream& out);
    virtual std::string getName() = 0;
    /// Names the failure that is expected of the test; empty when it should pass.
    virtual std::string getExpectedError();
};

using TestSuite = std::vector<std::unique_ptr<ITest>>;

}  // namespace mvrtpfec
