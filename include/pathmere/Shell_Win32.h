#pragma once

// The thin layer over the platform: bound entry points, the desktop folder, lists from paths, helper functions, texts,
// wildcards, guarded calls, the library's end. IS_INTRESOURCE is the platform's own.
#include <core/FileSystemBindData.h>
#include <core/IdListFromPath.h>
#include <core/NetworkObject.h>
#include <core/PathFunctions.h>
#include <core/ReparsePoint.h>
#include <core/ShellLibrary.h>
#include <core/SpecialFolderPath.h>
#include <framework/OwnerDrawState.h>
#include <framework/PostKey.h>
#include <platform/Apartment.h>
#include <platform/ComPtr.h>
#include <platform/DpiAwareness.h>
#include <platform/ErrorText.h>
#include <platform/Exception.h>
#include <platform/Execute.h>
#include <platform/FaultGuard.h>
#include <platform/FileFormats.h>
#include <platform/Lifecycle.h>
#include <platform/MainThread.h>
#include <platform/ShellApi.h>
#include <platform/SystemStrings.h>
#include <platform/TempPath.h>
#include <platform/Texts.h>
#include <platform/Wow64.h>
