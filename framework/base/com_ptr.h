#pragma once

#include "platform/component/com_ptr.h"

namespace mvrtpfec {

using platform::CComPtr;
using platform::isSameObject;
using platform::queryFor;

}  // namespace mvrtpfec
