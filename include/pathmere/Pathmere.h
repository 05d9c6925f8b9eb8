#pragma once

// The namespace walker, and functions on paths, names, files and drives.
#include <core/DataObjectFiles.h>
#include <core/FileFunctions.h>
#include <core/ItemIdListFunctions.h>
#include <core/PathFunctions.h>
#include <walker/Pathmere.h>
