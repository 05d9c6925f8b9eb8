#pragma once

// Small helpers of the system's: the mask of floating-point exceptions.
#include <framework/FloatingPoint.h>
