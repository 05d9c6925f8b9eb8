#pragma once

// What the library does to path text: canonical and long forms, and tests of paths and addresses.
#include <core/PathList.h>
#include <core/PathUtils.h>
#include <framework/FileNames.h>
