#pragma once

// The thin layer over the platform: bound entry points, the desktop folder, error texts, guarded calls, wildcards, the
// library's end.
#include <core/PathFunctions.h>
#include <platform/Apartment.h>
#include <platform/ComPtr.h>
#include <platform/ErrorText.h>
#include <platform/Exception.h>
#include <platform/FaultGuard.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
