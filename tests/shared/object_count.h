#pragma once

#include <gtest/gtest.h>

#include "framework/base/unknown.h"

namespace mvrtpfec {

/// Finds every object gone that was made while it lives.
class ObjectCount {
public:
    ObjectCount() : before_(CBaseObject::ObjectsActive()) {}
    ~ObjectCount() { EXPECT_EQ(CBaseObject::ObjectsActive(), before_) << "something was leaked"; }

private:
    LONG before_;
};

}  // namespace mvrtpfec
