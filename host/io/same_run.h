#pragma once

#include "core/serial_distance.h"
