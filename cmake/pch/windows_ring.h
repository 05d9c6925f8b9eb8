// Precompiled for the Windows ring: the platform's headers cost over two seconds a file without it.
// Sources include what they use all the same: one build goes without this file.
#pragma once

#include "logic_ring.h"

#include <windows.h>

#include <knownfolders.h>
#include <objbase.h>
#include <propsys.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <shobjidl.h>
