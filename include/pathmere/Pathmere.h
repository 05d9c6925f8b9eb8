#pragma once

// Functions on paths, names, files and drives.
#include <core/FileFunctions.h>
#include <core/PathFunctions.h>
