#pragma once
// The public headers ask for the component model by the system's name for it.

#include "platform/component/component.h"
