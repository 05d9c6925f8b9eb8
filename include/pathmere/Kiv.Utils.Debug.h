#pragma once

// The diagnostic log.
#include <core/DebugLog.h>
#include <core/HasDebugInfo.h>
#include <platform/DebugOutput.h>
