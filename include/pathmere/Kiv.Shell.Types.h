#pragma once

// The types that everything passes around.
#include <core/HasDebugInfo.h>
#include <core/IItemIdList.h>
#include <core/ItemIdListTypes.h>
#include <core/ShellFolderKind.h>
