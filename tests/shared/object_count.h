#pragma once

#include <gtest/gtest.h>

#include "framework/base/unknown.h"

namespace mvrtpfec {

/// Finds every object gone that was made while it lives.
class ObjectCount {
public:
    ~ObjectCount() { EXPECT_EQ(CBaseObject::ObjectsActive(), before_) << "something was leaked"; }

private:
    LONG before_ = CBaseObject::ObjectsActive();
};

}  // namespace mvrtpfec
