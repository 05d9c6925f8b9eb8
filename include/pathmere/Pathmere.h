#pragma once

// Functions on paths, names, files and drives.
#include <core/DataObjectFiles.h>
#include <core/FileFunctions.h>
#include <core/ItemIdListFunctions.h>
#include <core/PathFunctions.h>
